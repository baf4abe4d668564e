// Every step of a rollover fails in its turn, or the process is killed before it.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "LogClientRollingFile.h"
#include "Support/ClientAmongOthers.h"
#include "Support/Descriptors.h"
#include "Support/Events.h"
#include "Support/FileCalls.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using Answers = std::vector<bool>;
using Files = std::map<std::string, std::string>;

constexpr long kLimit = 8;  // The file has exactly so many bytes: the next event crosses it.
constexpr int kBackups = 3;

// The steps of a rollover, and the write before it.
const std::vector<std::string> kSteps{"write app.log",    "remove app.log.3", "rename app.log.2",
                                      "rename app.log.1", "close app.log",    "rename app.log",
                                      "open app.log"};

/// Lets the calls that are a step fail, all or the first ones.
FileCalls::Fault Failing(const std::string& step, int error, int times = 1000) {
  return [=](FileCall& call) mutable {
    const std::string name = std::filesystem::path(call.path).filename().string();
    return call.function + " " + name == step && times-- > 0 ? error : 0;
  };
}

class RolloverFaultsTest : public testing::Test {
 protected:
  RolloverFaultsTest() {
    WriteFile(folder_.Path("app.log"), "current\n");
    WriteFile(folder_.Path("app.log.1"), "newest\n");
    WriteFile(folder_.Path("app.log.2"), "middle\n");
    WriteFile(folder_.Path("app.log.3"), "oldest\n");
  }

  /// Logs "one" while a fault lasts, and the others afterwards.
  Answers LogWhile(const FileCalls::Fault& fault, const std::vector<std::string>& others) {
    LogClientRollingFile client(folder_.Path("app.log"), kLimit, kBackups);
    client.SetLayout("LogLayoutMessage");
    ClientAmongOthers among(client);
    Answers answers;
    const long descriptors = OpenDescriptors();
    CaptureStderr();
    {
      const FileCalls calls(folder_.Path(), fault);
      answers.push_back(among.Log("one"));
    }
    for (const std::string& other : others) answers.push_back(among.Log(other));
    errors_ = GetCapturedStderr();
    EXPECT_GE(descriptors, OpenDescriptors());
    return answers;
  }

  Files Found() const {
    Files files;
    for (const auto& entry : std::filesystem::directory_iterator(folder_.Path())) {
      files[entry.path().filename().string()] = Content(entry.path().string());
    }
    return files;
  }

  TemporaryFolder folder_;
  std::string errors_;
};

TEST_F(RolloverFaultsTest, AreThoseOfTheStepsInTheirOrder) {
  LogClientRollingFile client(folder_.Path("app.log"), kLimit, kBackups);
  client.SetLayout("LogLayoutMessage");
  const FileCalls calls(folder_.Path(), [](FileCall&) { return 0; });

  EXPECT_TRUE(client.Publish(EventWith("one")));

  EXPECT_EQ(kSteps, calls.made);
}

TEST_F(RolloverFaultsTest, KeepAllFilesWhenTheEventIsNotWritten) {
  EXPECT_EQ((Answers{true, false, false}), LogWhile(Failing("write app.log", EIO), {"two", "six"}));

  EXPECT_EQ("", errors_);
  EXPECT_EQ((Files{{"app.log", "current\n"},
                   {"app.log.1", "newest\n"},
                   {"app.log.2", "middle\n"},
                   {"app.log.3", "oldest\n"}}),
            Found());
}

TEST_F(RolloverFaultsTest, ChangeNothingWhenTheOldestCannotBeRemoved) {
  EXPECT_EQ((Answers{true, true}), LogWhile(Failing("remove app.log.3", EPERM), {"two"}));

  EXPECT_EQ("", errors_);
  EXPECT_EQ((Files{{"app.log", "two\n"},
                   {"app.log.1", "current\none\n"},
                   {"app.log.2", "newest\n"},
                   {"app.log.3", "middle\n"}}),
            Found());
}

TEST_F(RolloverFaultsTest, CostABackupThatCannotBeMovedUp) {
  EXPECT_EQ((Answers{true, true}), LogWhile(Failing("rename app.log.2", EPERM), {"two"}));

  EXPECT_EQ("", errors_);
  EXPECT_EQ(
      (Files{{"app.log", "two\n"}, {"app.log.1", "current\none\n"}, {"app.log.2", "newest\n"}}),
      Found());
}

TEST_F(RolloverFaultsTest, CostTheNewestBackupWhenItCannotBeMovedUp) {
  EXPECT_EQ((Answers{true, true}), LogWhile(Failing("rename app.log.1", EACCES), {"two"}));

  EXPECT_EQ("", errors_);
  EXPECT_EQ(
      (Files{{"app.log", "two\n"}, {"app.log.1", "current\none\n"}, {"app.log.3", "middle\n"}}),
      Found());
}

TEST_F(RolloverFaultsTest, CostNothingWhenClosingReportsAnError) {
  EXPECT_EQ((Answers{true, true}), LogWhile(Failing("close app.log", EIO), {"two"}));

  EXPECT_EQ("", errors_);
  EXPECT_EQ((Files{{"app.log", "two\n"},
                   {"app.log.1", "current\none\n"},
                   {"app.log.2", "newest\n"},
                   {"app.log.3", "middle\n"}}),
            Found());
}

TEST_F(RolloverFaultsTest, CostNothingWhenTheFileCanBeMovedAtTheThirdAttempt) {
  EXPECT_EQ((Answers{true, true}), LogWhile(Failing("rename app.log", EACCES, 2), {"two"}));

  EXPECT_EQ(
      "LOGGER ERROR at Rollover [72]: 'Rename failed EACCES'\n"
      "LOGGER ERROR at Rollover [72]: 'Rename failed EACCES'\n",
      errors_);
  EXPECT_EQ((Files{{"app.log", "two\n"},
                   {"app.log.1", "current\none\n"},
                   {"app.log.2", "newest\n"},
                   {"app.log.3", "middle\n"}}),
            Found());
}

TEST_F(RolloverFaultsTest, CostAnotherBackupWhenTheFileCanOnlyBeMovedAtTheNextEvent) {
  EXPECT_EQ((Answers{false, true, true}),
            LogWhile(Failing("rename app.log", EACCES), {"two", "six"}));

  EXPECT_EQ(
      "LOGGER ERROR at Rollover [72]: 'Rename failed EACCES'\n"
      "LOGGER ERROR at Rollover [72]: 'Rename failed EACCES'\n"
      "LOGGER ERROR at Rollover [72]: 'Rename failed EACCES'\n",
      errors_);
  EXPECT_EQ(
      (Files{
          {"app.log", "six\n"}, {"app.log.1", "current\none\ntwo\n"}, {"app.log.3", "newest\n"}}),
      Found());
}

TEST_F(RolloverFaultsTest, CostEveryBackupButNoEventWhileTheFileCannotBeMoved) {
  LogClientRollingFile client(folder_.Path("app.log"), kLimit, kBackups);
  client.SetLayout("LogLayoutMessage");
  ClientAmongOthers among(client);
  CaptureStderr();
  {
    const FileCalls calls(folder_.Path(), Failing("rename app.log", EBUSY));

    EXPECT_EQ((Answers{false, false, false, false}), among.LogAll({"one", "two", "six", "ten"}));
  }
  EXPECT_EQ("", GetCapturedStderr());

  EXPECT_EQ((Files{{"app.log", "current\none\ntwo\nsix\nten\n"}}), Found());
}

TEST_F(RolloverFaultsTest, CostTheEventsAfterwardsWhenTheNewFileCannotBeOpened) {
  EXPECT_EQ((Answers{true, false, false}),
            LogWhile(Failing("open app.log", EMFILE), {"two", "six"}));

  EXPECT_EQ("", errors_);
  EXPECT_EQ(
      (Files{
          {"app.log.1", "current\none\n"}, {"app.log.2", "newest\n"}, {"app.log.3", "middle\n"}}),
      Found());
}

TEST_F(RolloverFaultsTest, CostTheEventsAfterwardsWhenTheOldFileCannotBeOpenedAgain) {
  const auto notMoved = Failing("rename app.log", ENOENT);
  const auto notOpened = Failing("open app.log", EMFILE);

  EXPECT_EQ((Answers{false, false}), LogWhile(
                                         [=](FileCall& call) mutable {
                                           const int error = notMoved(call);
                                           return error != 0 ? error : notOpened(call);
                                         },
                                         {"two"}));

  EXPECT_EQ(
      "LOGGER ERROR at Rollover [74]: 'Rename failed ENOENT\n'\n"
      "LOGGER ERROR at Rollover [74]: 'Rename failed ENOENT\n'\n"
      "LOGGER ERROR at Rollover [74]: 'Rename failed ENOENT\n'\n",
      errors_);
  EXPECT_EQ(
      (Files{{"app.log", "current\none\n"}, {"app.log.2", "newest\n"}, {"app.log.3", "middle\n"}}),
      Found());
}

TEST_F(RolloverFaultsTest, CostTheWholeFileButNoLaterEventWithoutBackupsWhenClosingFails) {
  LogClientRollingFile client(folder_.Path("app.log"), kLimit, 0);
  client.SetLayout("LogLayoutMessage");
  ClientAmongOthers among(client);
  {
    const FileCalls calls(folder_.Path(), Failing("close app.log", EIO));

    EXPECT_TRUE(among.Log("one"));
    EXPECT_EQ((std::vector<std::string>{"write app.log", "close app.log", "open app.log"}),
              calls.made);
  }
  EXPECT_TRUE(among.Log("two"));

  EXPECT_EQ("two\n", Content(folder_.Path("app.log")));
}

/// The process is killed before a step of a rollover, and another goes on with its files. Lost is
/// the event that was not written yet, and a backup more than otherwise: the next rollover begins
/// anew, and removes the oldest backup that there is.
class KilledRolloverTest : public RolloverFaultsTest {
 protected:
  void KillBefore(const std::string& step) {
    const pid_t child = fork();
    if (child == 0) {
      LogClientRollingFile client(folder_.Path("app.log"), kLimit, kBackups);
      client.SetLayout("LogLayoutMessage");
      const FileCalls calls(folder_.Path(), [step](FileCall& call) {
        const std::string name = std::filesystem::path(call.path).filename().string();
        return call.function + " " + name == step ? raise(SIGKILL) : 0;
      });
      client.Publish(EventWith("one"));
      _exit(1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
  }
  void GoOn() {
    LogClientRollingFile client(folder_.Path("app.log"), kLimit, kBackups);
    client.SetLayout("LogLayoutMessage");
    CaptureStderr();
    EXPECT_TRUE(client.Publish(EventWith("two")));
    EXPECT_EQ("", GetCapturedStderr());
  }
};

TEST_F(KilledRolloverTest, LosesTheEventThatWasNotWritten) {
  KillBefore("write app.log");
  EXPECT_EQ((Files{{"app.log", "current\n"},
                   {"app.log.1", "newest\n"},
                   {"app.log.2", "middle\n"},
                   {"app.log.3", "oldest\n"}}),
            Found());

  GoOn();

  EXPECT_EQ((Files{{"app.log", ""},
                   {"app.log.1", "current\ntwo\n"},
                   {"app.log.2", "newest\n"},
                   {"app.log.3", "middle\n"}}),
            Found());
}

TEST_F(KilledRolloverTest, LosesNothingBeforeABackupWasRemoved) {
  KillBefore("remove app.log.3");
  EXPECT_EQ((Files{{"app.log", "current\none\n"},
                   {"app.log.1", "newest\n"},
                   {"app.log.2", "middle\n"},
                   {"app.log.3", "oldest\n"}}),
            Found());

  GoOn();

  EXPECT_EQ((Files{{"app.log", ""},
                   {"app.log.1", "current\none\ntwo\n"},
                   {"app.log.2", "newest\n"},
                   {"app.log.3", "middle\n"}}),
            Found());
}

TEST_F(KilledRolloverTest, LosesNothingBeforeABackupWasMoved) {
  KillBefore("rename app.log.2");
  EXPECT_EQ(
      (Files{{"app.log", "current\none\n"}, {"app.log.1", "newest\n"}, {"app.log.2", "middle\n"}}),
      Found());

  GoOn();

  EXPECT_EQ((Files{{"app.log", ""},
                   {"app.log.1", "current\none\ntwo\n"},
                   {"app.log.2", "newest\n"},
                   {"app.log.3", "middle\n"}}),
            Found());
}

TEST_F(KilledRolloverTest, LosesABackupOnceOneWasMoved) {
  KillBefore("rename app.log.1");
  EXPECT_EQ(
      (Files{{"app.log", "current\none\n"}, {"app.log.1", "newest\n"}, {"app.log.3", "middle\n"}}),
      Found());

  GoOn();

  EXPECT_EQ(
      (Files{{"app.log", ""}, {"app.log.1", "current\none\ntwo\n"}, {"app.log.2", "newest\n"}}),
      Found());
}

TEST_F(KilledRolloverTest, LosesABackupOnceAllWereMoved) {
  for (const char* const step : {"close app.log", "rename app.log"}) {
    SCOPED_TRACE(step);
    WriteFile(folder_.Path("app.log"), "current\n");
    WriteFile(folder_.Path("app.log.1"), "newest\n");
    WriteFile(folder_.Path("app.log.2"), "middle\n");
    WriteFile(folder_.Path("app.log.3"), "oldest\n");

    KillBefore(step);
    EXPECT_EQ(
        (Files{
            {"app.log", "current\none\n"}, {"app.log.2", "newest\n"}, {"app.log.3", "middle\n"}}),
        Found());

    GoOn();

    EXPECT_EQ(
        (Files{{"app.log", ""}, {"app.log.1", "current\none\ntwo\n"}, {"app.log.3", "newest\n"}}),
        Found());
  }
}

TEST_F(KilledRolloverTest, LosesNothingOnceTheFileWasMoved) {
  KillBefore("open app.log");
  EXPECT_EQ(
      (Files{
          {"app.log.1", "current\none\n"}, {"app.log.2", "newest\n"}, {"app.log.3", "middle\n"}}),
      Found());

  GoOn();

  EXPECT_EQ((Files{{"app.log", "two\n"},
                   {"app.log.1", "current\none\n"},
                   {"app.log.2", "newest\n"},
                   {"app.log.3", "middle\n"}}),
            Found());
}

}  // namespace

// Every step of a rollover fails in its turn, or the process is killed before it.

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <csignal>
#include <filesystem>
#include <functional>
#include <ostream>
#include <string>
#include <vector>

#include "LogClientRollingFile.h"
#include "Support/Backups.h"
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

constexpr long kLimit = 8;  // The file has exactly so many bytes: the next event crosses it.
constexpr int kBackups = 3;

// The steps of a rollover, and the write before it.
const std::vector<std::string> kSteps{"write app.log",    "remove app.log.3", "rename app.log.2",
                                      "rename app.log.1", "close app.log",    "rename app.log",
                                      "open app.log"};

constexpr int kAlways = 1000;

/// Calls the action for the calls that are a step; its result is the errno with which they fail.
FileCalls::Fault Failing(const std::string& step, const std::function<int()>& action) {
  return [=](FileCall& call) {
    const std::string name = std::filesystem::path(call.path).filename().string();
    return call.function + " " + name == step ? action() : 0;
  };
}
/// Lets them fail, all or the first ones.
FileCalls::Fault Failing(const std::string& step, int error, int times = kAlways) {
  return Failing(step, [=]() mutable { return times-- > 0 ? error : 0; });
}

class RolloverFaultsTest : public testing::Test {
 protected:
  RolloverFaultsTest() {
    WriteBackups(folder_.Path("app.log"), "current; | newest; | middle; | oldest;");
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

  std::string Found() const { return BackupsText(folder_.Path("app.log")); }

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

/// A step that fails, and what it costs.
struct Fault {
  const char* name;
  const char* step;
  int error;
  int times;
  std::string answers;  ///< Of the event during which it fails, "one", then of "two" and "six".
  std::string errors;
  std::string files;

  friend std::ostream& operator<<(std::ostream& out, const Fault& row) { return out << row.name; }
};

const std::string kDenied = "LOGGER ERROR at Rollover [72]: 'Rename failed EACCES'\n";

const Fault kFaults[] = {
    {"WriteCostsTheEventsButNoFile", "write app.log", EIO, kAlways, "yes no no ", "",
     "current; | newest; | middle; | oldest;"},
    {"RemoveOfTheOldestChangesNothing", "remove app.log.3", EPERM, kAlways, "yes yes yes ", "",
     "two;six; | current;one; | newest; | middle;"},
    {"RenameOfABackupCostsABackup", "rename app.log.2", EPERM, kAlways, "yes yes yes ", "",
     "two;six; | current;one; | newest;"},
    {"RenameOfTheNewestBackupCostsIt", "rename app.log.1", EACCES, kAlways, "yes yes yes ", "",
     "two;six; | current;one; | - | middle;"},
    {"CloseCostsNothing", "close app.log", EIO, kAlways, "yes yes yes ", "",
     "two;six; | current;one; | newest; | middle;"},
    {"RenameUntilTheThirdAttemptCostsNothing", "rename app.log", EACCES, 2, "yes yes yes ",
     kDenied + kDenied, "two;six; | current;one; | newest; | middle;"},
    {"RenameUntilTheNextEventCostsAnotherBackup", "rename app.log", EACCES, kAlways, "no yes yes ",
     kDenied + kDenied + kDenied, "six; | current;one;two; | - | newest;"},
    {"OpenCostsTheEventsAfterwards", "open app.log", EMFILE, kAlways, "yes no no ", "",
     "- | current;one; | newest; | middle;"},
};

class RolloverStepTest : public RolloverFaultsTest, public testing::WithParamInterface<Fault> {};

TEST_P(RolloverStepTest, Fails) {
  std::string answers;
  for (const bool answer :
       LogWhile(Failing(GetParam().step, GetParam().error, GetParam().times), {"two", "six"})) {
    answers += answer ? "yes " : "no ";
  }

  EXPECT_EQ(GetParam().answers, answers);

  EXPECT_EQ(GetParam().errors, errors_);
  EXPECT_EQ(GetParam().files, Found());
}

INSTANTIATE_TEST_SUITE_P(, RolloverStepTest, testing::ValuesIn(kFaults));

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

  EXPECT_EQ("current;one;two;six;ten;", Found());
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
  EXPECT_EQ("current;one; | - | newest; | middle;", Found());
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

/// The process is killed before a step of a rollover, and another goes on with its files: with
/// "two", which crosses the limit unless the file is new.
struct Kill {
  const char* name;
  const char* step;
  std::string left;
  std::string afterwards;

  friend std::ostream& operator<<(std::ostream& out, const Kill& row) { return out << row.name; }
};

class KilledRolloverTest : public RolloverFaultsTest, public testing::WithParamInterface<Kill> {
 protected:
  void KillBefore(const std::string& step) const {
    const pid_t child = fork();
    if (child == 0) {
      LogClientRollingFile client(folder_.Path("app.log"), kLimit, kBackups);
      client.SetLayout("LogLayoutMessage");
      const FileCalls calls(folder_.Path(), Failing(step, [] { return raise(SIGKILL); }));
      client.Publish(EventWith("one"));
      _exit(1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
  }
};

// The next rollover begins from the start and removes the oldest backup that there is: one more is
// lost when the killed one had moved some.
const Kill kKills[] = {
    {"BeforeTheWrite", "write app.log", "current; | newest; | middle; | oldest;",
     "empty | current;two; | newest; | middle;"},
    {"BeforeTheOldestIsRemoved", "remove app.log.3", "current;one; | newest; | middle; | oldest;",
     "empty | current;one;two; | newest; | middle;"},
    {"BeforeABackupIsMoved", "rename app.log.2", "current;one; | newest; | middle;",
     "empty | current;one;two; | newest; | middle;"},
    {"BeforeTheNewestBackupIsMoved", "rename app.log.1", "current;one; | newest; | - | middle;",
     "empty | current;one;two; | newest;"},
    {"BeforeTheFileIsClosed", "close app.log", "current;one; | - | newest; | middle;",
     "empty | current;one;two; | - | newest;"},
    {"BeforeTheFileIsMoved", "rename app.log", "current;one; | - | newest; | middle;",
     "empty | current;one;two; | - | newest;"},
    {"BeforeTheNewFileIsOpened", "open app.log", "- | current;one; | newest; | middle;",
     "two; | current;one; | newest; | middle;"},
};

TEST_P(KilledRolloverTest, LosesABackupAtMost) {
  KillBefore(GetParam().step);
  EXPECT_EQ(GetParam().left, Found());

  LogClientRollingFile client(folder_.Path("app.log"), kLimit, kBackups);
  client.SetLayout("LogLayoutMessage");
  CaptureStderr();
  EXPECT_TRUE(client.Publish(EventWith("two")));

  EXPECT_EQ("", GetCapturedStderr());
  EXPECT_EQ(GetParam().afterwards, Found());
}

INSTANTIATE_TEST_SUITE_P(, KilledRolloverTest, testing::ValuesIn(kKills));

}  // namespace

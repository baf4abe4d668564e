#include "LogClientRollingFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

#include "LogProperties.h"
#include "Support/Backups.h"
#include "Support/Descriptors.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/GroupedNumbers.h"
#include "Support/Layouts.h"
#include "Support/TemporaryFolder.h"

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace {

const std::string kMissing = "LOGGER ERROR at Rollover [74]: 'Rename failed ENOENT\n'\n";

void AppendToFile(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary | std::ios::app);
  file << text;
  if (!file.flush()) throw std::runtime_error("cannot append to " + path);
}

/// A message of which nothing is written.
const char* const kUnwritten = "(unwritten)";

/// The messages of a text, each of which ends in a semicolon.
std::vector<std::string> Messages(const std::string& text) {
  std::vector<std::string> messages;
  std::istringstream in(text);
  for (std::string message; std::getline(in, message, ';');) messages.push_back(message);
  return messages;
}

/// Publishes a bare message, which is one character longer in the file.
bool Write(LogClientRollingFile& client, const std::string& message) {
  client.SetLayout("LogLayoutMessage");
  if (message == kUnwritten) {
    client.SetLayout(new FunctionLayout([](std::ostream&, const LogEvent&) {}));
  }
  return client.Publish(EventWith(message));
}

class LogClientRollingFileTest : public testing::Test {
 protected:
  std::string Backup(int number) const { return file_ + "." + std::to_string(number); }

  TemporaryFolder folder_;
  const std::string file_ = folder_.Path("app.log");
  LogProperties properties_;
};

// The limit and the backups.

TEST_F(LogClientRollingFileTest, MovesItsFileAsideOnceItIsLargerThanTheLimit) {
  const struct {
    const char* name;
    std::string before;
    long limit;
    int backups;
    std::string messages;    ///< Each ends in a semicolon.
    std::string afterwards;  ///< The file and its backups, as of BackupsText.
  } rows[] = {
      {"exactly the limit", "-", 5, 3, "abcd;", "abcd;"},
      {"one byte more", "-", 5, 3, "abcde;", "empty | abcde;"},
      {"the event that crosses the limit is the last one of the backup", "-", 10, 3,
       "one;two;three;four;", "four; | one;two;three;"},
      {"limit of zero", "-", 0, 3, ";two;", "empty | two; | ;"},
      {"limit of zero, empty file", "-", 0, 3, "(unwritten);", "empty"},
      {"negative limit", "-", -1, 3, "(unwritten);", "empty | empty"},
      {"what the file had before counts", "0123456789", 13, 3, "abc;", "empty | 0123456789abc;"},
      {"also when an event writes nothing", "0123456789", 9, 3, "(unwritten);",
       "empty | 0123456789"},
      {"exactly the limit before", "0123456789", 10, 3, "(unwritten);", "0123456789"},
      {"no event", "0123456789", 5, 3, "", "0123456789"},
      {"backups move up", "now; | 1st | 2nd | 3rd", 5, 3, "last;", "empty | now;last; | 1st | 2nd"},
      {"as many backups as allowed", "-", 0, 3, "one;two;three;four;five;",
       "empty | five; | four; | three;"},
      {"only one backup", "-", 0, 1, "one;two;", "empty | two;"},
      {"missing backups", "- | 1st | - | 3rd", 0, 4, "new;", "empty | new; | 1st | - | 3rd"},
      {"backups past the last", "- | - | - | 3rd", 0, 2, "new;", "empty | new; | - | 3rd"},
      {"no backups, limit crossed", "- | 1st", 5, 0, "abc;lost;", "empty | 1st"},
      {"no backups, next event", "- | 1st", 5, 0, "abc;lost;def;", "def; | 1st"},
      {"negative number of backups", "-", 0, -3, "lost;", "empty"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.name);
    const TemporaryFolder folder;
    const std::string file = folder.Path("app.log");
    WriteBackups(file, row.before);
    CaptureStderr();
    {
      LogClientRollingFile client(file, row.limit, row.backups);
      EXPECT_TRUE(client.IsInitialize());
      for (const std::string& message : Messages(row.messages)) EXPECT_TRUE(Write(client, message));
    }
    EXPECT_EQ("", GetCapturedStderr());
    EXPECT_EQ(row.afterwards, BackupsText(file));
    EXPECT_FALSE(Exists(file + ".0"));
  }
}

TEST_F(LogClientRollingFileTest, ReadsItsLimitsFromProperties) {
  const struct {
    const char* append;
    const char* size;
    const char* backups;
    std::string messages;    ///< Each ends in a semicolon.
    std::string afterwards;  ///< Of a file that had "old;" before.
  } rows[] = {
      {"", "", "", "", "old;"},
      {"", "", "", "lost;", "empty"},
      {"false", "", "", "", "empty"},
      {"false", "5", "2", "abcd;", "abcd;"},
      {"false", "5", "2", "abcd;;second;third;", "empty | third; | second;"},
      {"", "9", "2", "abcd;", "old;abcd;"},
      // A size is read up to its first character that is no digit.
      {"false", "10k", "1", "012345678;", "012345678;"},
      {"false", "10k", "1", "012345678;;", "empty | 012345678;;"},
      {"false", " 10", "1", "012345678;", "012345678;"},
      {"false", " 10", "1", "012345678;;", "empty | 012345678;;"},
      {"false", "\t+10", "1", "012345678;", "012345678;"},
      {"false", "\t+10", "1", "012345678;;", "empty | 012345678;;"},
      {"false", "010", "1", "012345678;", "012345678;"},
      {"false", "010", "1", "012345678;;", "empty | 012345678;;"},
      {"false", "10.9", "1", "012345678;;", "empty | 012345678;;"},
      {"false", "10 000", "1", "012345678;;", "empty | 012345678;;"},
      // Without digits it is zero.
      {"false", "", "1", ";", "empty | ;"},
      {"false", "k", "1", ";", "empty | ;"},
      {"false", "0x10", "1", ";", "empty | ;"},
      {"false", "-", "1", ";", "empty | ;"},
      {"false", "k10", "1", ";", "empty | ;"},
      {"false", "-1", "1", "(unwritten);", "empty | empty"},
      {"false", "4294967296", "1", "abcd;", "abcd;"},  // 0 in its lower 32 bits.
      // The same for the number of backups.
      {"false", "", " 2x3", "one;two;three;", "empty | three; | two;"},
      {"false", "", "-2", "lost;", "empty"},
      {"false", "", "two", "lost;", "empty"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.size) + ", " + row.backups);
    const TemporaryFolder folder;
    const std::string file = folder.Path("app.log");
    WriteBackups(file, "old;");
    LogProperties properties;
    properties.AddProperty("filename", file);
    properties.AddProperty("fileappend", row.append);
    properties.AddProperty("filesize", row.size);
    properties.AddProperty("maxbackup", row.backups);

    LogClientRollingFile client(properties);
    EXPECT_TRUE(client.IsInitialize());
    for (const std::string& message : Messages(row.messages)) EXPECT_TRUE(Write(client, message));

    EXPECT_EQ(row.afterwards, BackupsText(file));
  }
}

TEST_F(LogClientRollingFileTest, CountsWhatOthersAppend) {
  LogClientRollingFile client(file_, 13, 3);
  Write(client, "abc");
  AppendToFile(file_, "012345\n");

  EXPECT_TRUE(Write(client, "de"));

  EXPECT_EQ("abc\n012345\nde\n", Content(Backup(1)));
  EXPECT_EQ("", Content(file_));
}

TEST_F(LogClientRollingFileTest, CountsAFileThatOthersEmptiedFromItsStart) {
  LogClientRollingFile client(file_, 5, 3);
  Write(client, "abcd");
  std::filesystem::resize_file(file_, 0);

  EXPECT_TRUE(Write(client, "efgh"));

  EXPECT_EQ("efgh\n", Content(file_));
  EXPECT_FALSE(Exists(Backup(1)));
}

TEST_F(LogClientRollingFileTest, GoesByItsOwnPlaceInAFileThatItEmptiedItself) {
  properties_.AddProperty("filename", file_);
  properties_.AddProperty("fileappend", "false");
  properties_.AddProperty("filesize", "8");
  properties_.AddProperty("maxbackup", "1");
  LogClientRollingFile client(properties_);
  Write(client, "abcd");
  std::filesystem::resize_file(file_, 0);

  EXPECT_TRUE(Write(client, "efg"));

  EXPECT_EQ(std::string("\0\0\0\0\0efg\n", 9), Content(Backup(1)));
}

TEST_F(LogClientRollingFileTest, GoesByItsOwnPlaceAfterARollover) {
  LogClientRollingFile client(file_, 5, 3);
  Write(client, "first");
  AppendToFile(file_, "0123456789");

  EXPECT_TRUE(Write(client, "abcd"));

  EXPECT_EQ("abcd\n56789", Content(file_));
  EXPECT_FALSE(Exists(Backup(2)));
}

TEST_F(LogClientRollingFileTest, CountsWhatAFileHasThatItOpensAgain) {
  LogClientRollingFile client(file_, 10, 3);
  EXPECT_TRUE(Write(client, "one"));
  std::filesystem::remove(file_);
  AppendToFile(file_, "12345678\n");

  client.ReopenAtNextEvent();
  EXPECT_TRUE(Write(client, "two"));

  EXPECT_EQ("12345678\ntwo\n", Content(Backup(1)));
  EXPECT_EQ("", Content(file_));
}

TEST_F(LogClientRollingFileTest, NeverRollsOverAFileThatHasNoPosition) {
  ASSERT_EQ(0, mkfifo(file_.c_str(), 0600));
  const int reader = open(file_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
  LogClientRollingFile client(file_, 0, 1);

  EXPECT_TRUE(Write(client, "abcd"));
  EXPECT_TRUE(Write(client, "efgh"));

  std::array<char, 100> text{};
  const ssize_t length = read(reader, text.data(), text.size());
  close(reader);
  EXPECT_EQ("abcd\nefgh\n", std::string(text.data(), static_cast<std::size_t>(length)));
  EXPECT_FALSE(Exists(Backup(1)));
}

TEST_F(LogClientRollingFileTest, NumbersBackupsWithoutTheGroupsOfTheGlobalLocale) {
  const GroupedNumbers grouped;
  WriteFile(file_ + ".1233", "old");
  WriteFile(file_ + ".1234", "oldest");
  LogClientRollingFile client(file_, 0, 1234);

  EXPECT_TRUE(Write(client, "new"));

  EXPECT_EQ("new\n", Content(file_ + ".1"));
  EXPECT_EQ("old", Content(file_ + ".1234"));
  EXPECT_FALSE(Exists(file_ + ".1233"));
}

TEST_F(LogClientRollingFileTest, KeepsItsNewDescriptorFromOtherPrograms) {
  LogClientRollingFile client(file_, 0, 1);

  Write(client, "abcd");

  const int descriptor = DescriptorOf(file_);
  ASSERT_NE(-1, descriptor);
  EXPECT_EQ(FD_CLOEXEC, fcntl(descriptor, F_GETFD) & FD_CLOEXEC);
  EXPECT_EQ(-1, DescriptorOf(Backup(1)));
}

TEST_F(LogClientRollingFileTest, FormatsInTheClassicLocaleAlsoAfterARollover) {
  const GroupedNumbers grouped;
  LogClientRollingFile client(file_, 9, 1);
  client.SetLayout(new FunctionLayout([](std::ostream& out, const LogEvent&) { out << 1234567; }));

  client.Publish(EventWith("x"));
  client.Publish(EventWith("x"));
  client.Publish(EventWith("x"));

  EXPECT_EQ("12345671234567", Content(Backup(1)));
  EXPECT_EQ("1234567", Content(file_));
}

// Failures.

TEST_F(LogClientRollingFileTest, ReportsEachFailedAttemptWhenItsFileWasDeletedAndAppendsToANewOne) {
  LogClientRollingFile client(file_, 8, 1);
  Write(client, "lost");
  std::filesystem::remove(file_);
  CaptureStderr();
  EXPECT_FALSE(Write(client, "lost"));
  EXPECT_EQ(kMissing + kMissing + kMissing, GetCapturedStderr());
  EXPECT_EQ("", Content(file_));

  EXPECT_TRUE(Write(client, "abc"));
  AppendToFile(file_, "def\n");
  EXPECT_TRUE(Write(client, ""));

  EXPECT_EQ("abc\ndef\n\n", Content(Backup(1)));
}

TEST_F(LogClientRollingFileTest, StopsWritingWhenItsFolderWasDeleted) {
  const std::string subfolder = folder_.Path("logs");
  std::filesystem::create_directory(subfolder);
  LogClientRollingFile client(subfolder + "/app.log", 0, 1);
  std::filesystem::remove_all(subfolder);

  CaptureStderr();
  EXPECT_FALSE(Write(client, "lost"));
  EXPECT_EQ(kMissing + kMissing + kMissing, GetCapturedStderr());
  std::filesystem::create_directory(subfolder);
  CaptureStderr();
  EXPECT_FALSE(Write(client, "lost"));

  EXPECT_EQ("", GetCapturedStderr());
  EXPECT_FALSE(Exists(subfolder + "/app.log"));
}

TEST_F(LogClientRollingFileTest, GoesOnInTheLargeFileUntilItCanBeMoved) {
  std::filesystem::create_directories(Backup(1) + "/occupied");
  LogClientRollingFile client(file_, 5, 1);
  CaptureStderr();

  EXPECT_FALSE(Write(client, "first"));
  EXPECT_FALSE(Write(client, "second"));
  EXPECT_EQ("", GetCapturedStderr());
  EXPECT_EQ("first\nsecond\n", Content(file_));
  std::filesystem::remove_all(Backup(1));
  EXPECT_TRUE(Write(client, "x"));

  EXPECT_EQ("first\nsecond\nx\n", Content(Backup(1)));
  EXPECT_EQ("", Content(file_));
}

TEST_F(LogClientRollingFileTest, DropsEventsOnceOneCouldNotBeWrittenUntilItIsRolledOver) {
  std::filesystem::create_symlink("/dev/full", file_);
  LogClientRollingFile client(file_, -1, 1);

  EXPECT_TRUE(Write(client, "lost"));
  EXPECT_FALSE(Write(client, "lost"));
  EXPECT_FALSE(Exists(Backup(1)));
  EXPECT_TRUE(client.Rollover());

  EXPECT_TRUE(Write(client, "abcd"));
  EXPECT_EQ("abcd\n", Content(Backup(1)));
}

TEST_F(LogClientRollingFileTest, RollsOverAFailedFileWhenTheLimitIsBelowMinusOne) {
  std::filesystem::create_symlink("/dev/full", file_);
  LogClientRollingFile client(file_, -2, 1);

  EXPECT_TRUE(Write(client, "lost"));

  EXPECT_TRUE(std::filesystem::is_symlink(Backup(1)));
  EXPECT_TRUE(std::filesystem::is_regular_file(file_));
}

TEST_F(LogClientRollingFileTest, DoesNotRollOverWithoutALayout) {
  WriteFile(file_, "0123456789");
  LogClientRollingFile client(file_, -1, 1);
  client.SetLayout(nullptr);

  EXPECT_FALSE(client.Publish(EventWith("lost")));

  EXPECT_FALSE(Exists(Backup(1)));
}

TEST_F(LogClientRollingFileTest, IsNotInitialisedWhenTheNamedFileCannotBeOpened) {
  for (const std::string& name : {folder_.Path("missing/app.log"), std::string()}) {
    LogClientRollingFile client(name, 100, 1);

    EXPECT_FALSE(client.IsInitialize());
    EXPECT_FALSE(Write(client, "lost"));
  }
}

TEST_F(LogClientRollingFileTest, HasFailedWhenNoNewFileCouldBeOpenedAfterARollover) {
  const std::string subfolder = folder_.Path("logs");
  std::filesystem::create_directory(subfolder);
  LogClientRollingFile client(subfolder + "/app.log", 0, 0);
  EXPECT_FALSE(client.HasFailed());
  std::filesystem::remove_all(subfolder);

  client.Publish(EventWith("one"));

  EXPECT_TRUE(client.HasFailed());
}

TEST_F(LogClientRollingFileTest, IsInitialisedFromPropertiesAlsoWhenTheFileCannotBeOpened) {
  for (const std::string& name : {folder_.Path("missing/app.log"), std::string()}) {
    LogProperties properties;
    properties.AddProperty("filename", name);
    LogClientRollingFile client(properties);
    CaptureStderr();

    EXPECT_TRUE(client.IsInitialize());
    EXPECT_TRUE(client.HasFailed());
    EXPECT_FALSE(Write(client, "lost"));
    EXPECT_FALSE(Write(client, "lost"));

    EXPECT_TRUE(client.IsInitialize());
    EXPECT_FALSE(Exists(folder_.Path("missing")));
    EXPECT_EQ("", GetCapturedStderr());
  }
}

// Rollovers by the application's own call, or in its own way.

TEST_F(LogClientRollingFileTest, RollsOverWhenAsked) {
  for (const int backups : {2, 0}) {
    SCOPED_TRACE(backups);
    std::filesystem::remove(file_);
    LogClientRollingFile client(file_, 1000, backups);
    Write(client, "one");

    EXPECT_TRUE(client.Rollover());
    EXPECT_TRUE(client.Rollover());
    EXPECT_TRUE(Write(client, "two"));

    EXPECT_EQ("two; | empty | one;", BackupsText(file_));  // Without backups they are left alone.
  }
}

TEST_F(LogClientRollingFileTest, WritesWhatALayoutThatThrewLeftIntoTheBackup) {
  LogClientRollingFile client(file_, 1000, 1);
  client.SetLayout(new FunctionLayout([](std::ostream& out, const LogEvent& event) {
    out << event.GetLogMessage();
    throw std::runtime_error("no");
  }));
  EXPECT_THROW(client.Publish(EventWith("half")), std::runtime_error);

  EXPECT_TRUE(client.Rollover());

  EXPECT_EQ("half", Content(Backup(1)));
  EXPECT_EQ("", Content(file_));
}

TEST_F(LogClientRollingFileTest, OpensAFileThatCouldNotBeOpenedBeforeWhenRolledOver) {
  for (const char* const backups : {"0", "1"}) {
    SCOPED_TRACE(backups);
    LogProperties properties;
    properties.AddProperty("filename", folder_.Path(backups) + "/app.log");
    properties.AddProperty("filesize", "1000");
    properties.AddProperty("maxbackup", backups);
    LogClientRollingFile client(properties);
    const bool hasBackups = properties.GetProperty("maxbackup") == "1";
    std::filesystem::create_directory(folder_.Path(backups));
    CaptureStderr();

    EXPECT_EQ(!hasBackups, client.Rollover());  // There is no file to move.

    EXPECT_EQ(hasBackups ? kMissing + kMissing + kMissing : "", GetCapturedStderr());
    EXPECT_TRUE(Write(client, "abcd"));
    EXPECT_EQ("abcd\n", Content(folder_.Path(backups) + "/app.log"));
  }
}

TEST_F(LogClientRollingFileTest, MakesRoomForABackupWhenAsked) {
  WriteBackups(file_, "- | first | second");
  LogClientRollingFile client(file_, 1000, 2);
  Write(client, "current");

  EXPECT_TRUE(client.RolloverFiles());

  EXPECT_EQ("current; | - | first", BackupsText(file_));
}

TEST_F(LogClientRollingFileTest, RemovesOnlyTheBackupOfItsLastNumberWithoutBackups) {
  WriteFile(Backup(0), "zeroth");
  WriteFile(Backup(1), "first");
  LogClientRollingFile client(file_, 1000, 0);

  EXPECT_TRUE(client.RolloverFiles());

  EXPECT_FALSE(Exists(Backup(0)));
  EXPECT_EQ("first", Content(Backup(1)));
}

/// Counts what is asked of it, and lets the library do it.
class WatchedClient : public LogClientRollingFile {
 public:
  using LogClientRollingFile::LogClientRollingFile;

  bool Rollover() override {
    calls.emplace_back("Rollover");
    return LogClientRollingFile::Rollover();
  }
  bool RolloverFiles() override {
    calls.emplace_back("RolloverFiles");
    return LogClientRollingFile::RolloverFiles();
  }

  std::vector<std::string> calls;
};

TEST_F(LogClientRollingFileTest, AsksADerivedClassToRollOver) {
  WatchedClient client(file_, 5, 1);

  Write(client, "abcd");
  EXPECT_TRUE(client.calls.empty());
  Write(client, "");

  EXPECT_EQ((std::vector<std::string>{"Rollover", "RolloverFiles"}), client.calls);
}

TEST_F(LogClientRollingFileTest, AsksADerivedClassForNoRoomWithoutBackups) {
  WatchedClient client(file_, 0, 0);

  Write(client, "abcd");

  EXPECT_EQ(std::vector<std::string>{"Rollover"}, client.calls);
}

/// Answers for itself, and moves nothing.
class UnmovingClient : public LogClientRollingFile {
 public:
  UnmovingClient(const std::string& filename, bool answer)
      : LogClientRollingFile(filename, 0, 1), answer_(answer) {}
  bool Rollover() override { return answer_; }

 private:
  bool answer_;
};

TEST_F(LogClientRollingFileTest, AnswersWhatADerivedClassAnswers) {
  UnmovingClient agreeing(file_, true);
  UnmovingClient refusing(folder_.Path("other.log"), false);

  EXPECT_TRUE(Write(agreeing, "abcd"));
  EXPECT_FALSE(Write(refusing, "abcd"));

  EXPECT_EQ("abcd\n", Content(file_));
  EXPECT_EQ("abcd\n", Content(folder_.Path("other.log")));
}

/// Keeps the backups elsewhere, and makes its own room badly.
class RoomlessClient : public LogClientRollingFile {
 public:
  using LogClientRollingFile::LogClientRollingFile;
  bool RolloverFiles() override { return false; }
};

TEST_F(LogClientRollingFileTest, RollsOverWhateverMakingRoomAnswered) {
  WriteFile(Backup(1), "first");
  RoomlessClient client(file_, 0, 3);

  EXPECT_TRUE(Write(client, "abcd"));

  EXPECT_EQ("abcd\n", Content(Backup(1)));
  EXPECT_FALSE(Exists(Backup(2)));
}

TEST_F(LogClientRollingFileTest, GoesOnInANewFileAfterItsOwnWasMovedAside) {
  LogClientRollingFile client(file_, 100, 3);
  EXPECT_TRUE(Write(client, "one"));
  std::filesystem::rename(file_, Backup(9));

  client.ReopenAtNextEvent();
  EXPECT_TRUE(Write(client, "two"));

  EXPECT_EQ("one\n", Content(Backup(9)));
  EXPECT_EQ("two\n", Content(file_));
}

/// A class of a user's, with what the public headers offer.
class OwnRollingFile : public LogClientRollingFile {
 public:
  using LogClientRollingFile::LogClientRollingFile;

  bool Rollover() override {
    sizes.push_back(GetStream().tellp());
    CloseFile();
    const bool isMoved = std::rename(GetFileName().c_str(), (GetFileName() + ".own").c_str()) == 0;
    const bool isOpen = OpenFile(false);
    GetStream() << "limit " << GetMaxFileSize() << ", backups " << GetMaxBackup() << "\n";
    return isMoved && isOpen;
  }

  std::vector<std::streamoff> sizes;
};

TEST_F(LogClientRollingFileTest, CanBeRolledOverByAClassOfYourOwn) {
  OwnRollingFile client(file_, 5, 3);
  client.SetLayout("LogLayoutMessage");

  EXPECT_TRUE(client.Publish(EventWith("abcd")));
  EXPECT_TRUE(client.Publish(EventWith("efgh")));
  EXPECT_EQ("abcd\nefgh\n", Content(file_ + ".own"));
  EXPECT_EQ("", Content(file_));  // Inserted text is written with the next event.
  EXPECT_TRUE(client.Publish(EventWith("i")));

  EXPECT_EQ("limit 5, backups 3\ni\n", Content(file_ + ".own"));
  EXPECT_EQ((std::vector<std::streamoff>{10, 21}), client.sizes);
}

}  // namespace

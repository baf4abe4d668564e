#include "LogClientRollingFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <fstream>
#include <ostream>
#include <stdexcept>
#include <string>
#include <vector>

#include "LogProperties.h"
#include "Support/Descriptors.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/GroupedNumbers.h"
#include "Support/Layouts.h"
#include "Support/TemporaryFolder.h"

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;

namespace {

void AppendToFile(const std::string& path, const std::string& text) {
  std::ofstream file(path, std::ios::binary | std::ios::app);
  file << text;
  if (!file.flush()) throw std::runtime_error("cannot append to " + path);
}

class LogClientRollingFileTest : public testing::Test {
 protected:
  /// Publishes a bare message, which is one character longer in the file.
  static bool Write(LogClientRollingFile& client, const std::string& message) {
    client.SetLayout("LogLayoutMessage");
    return client.Publish(EventWith(message));
  }

  std::string Backup(int number) const { return file_ + "." + std::to_string(number); }

  TemporaryFolder folder_;
  const std::string file_ = folder_.Path("app.log");
  LogProperties properties_;
};

// The limit.

TEST_F(LogClientRollingFileTest, KeepsAFileOfExactlyTheLimit) {
  LogClientRollingFile client(file_, 5, 3);

  EXPECT_TRUE(Write(client, "abcd"));

  EXPECT_EQ("abcd\n", Content(file_));
  EXPECT_FALSE(Exists(Backup(1)));
}

TEST_F(LogClientRollingFileTest, MovesAFileOfOneByteMoreThanTheLimit) {
  LogClientRollingFile client(file_, 5, 3);

  EXPECT_TRUE(Write(client, "abcde"));

  EXPECT_EQ("", Content(file_));
  EXPECT_EQ("abcde\n", Content(Backup(1)));
}

TEST_F(LogClientRollingFileTest, PutsTheEventThatCrossesTheLimitLastInTheBackup) {
  LogClientRollingFile client(file_, 10, 3);

  EXPECT_TRUE(Write(client, "one"));
  EXPECT_TRUE(Write(client, "two"));
  EXPECT_TRUE(Write(client, "three"));
  EXPECT_TRUE(Write(client, "four"));

  EXPECT_EQ("one\ntwo\nthree\n", Content(Backup(1)));
  EXPECT_EQ("four\n", Content(file_));
  EXPECT_FALSE(Exists(Backup(2)));
}

TEST_F(LogClientRollingFileTest, RollsOverAfterEveryWriteWithALimitOfZero) {
  LogClientRollingFile client(file_, 0, 3);

  EXPECT_TRUE(Write(client, ""));
  EXPECT_TRUE(Write(client, "two"));

  EXPECT_EQ("\n", Content(Backup(2)));
  EXPECT_EQ("two\n", Content(Backup(1)));
  EXPECT_EQ("", Content(file_));
}

TEST_F(LogClientRollingFileTest, KeepsAnEmptyFileWithALimitOfZero) {
  LogClientRollingFile client(file_, 0, 3);
  client.SetLayout(new FunctionLayout([](std::ostream&, const LogEvent&) {}));

  EXPECT_TRUE(client.Publish(EventWith("unwritten")));

  EXPECT_FALSE(Exists(Backup(1)));
}

TEST_F(LogClientRollingFileTest, MovesEvenAnEmptyFileWithANegativeLimit) {
  LogClientRollingFile client(file_, -1, 3);
  client.SetLayout(new FunctionLayout([](std::ostream&, const LogEvent&) {}));

  EXPECT_TRUE(client.Publish(EventWith("unwritten")));

  EXPECT_EQ("", Content(Backup(1)));
  EXPECT_EQ("", Content(file_));
}

TEST_F(LogClientRollingFileTest, CountsWhatTheFileHadBefore) {
  WriteFile(file_, "0123456789");
  LogClientRollingFile client(file_, 13, 3);

  EXPECT_TRUE(Write(client, "abc"));

  EXPECT_EQ("0123456789abc\n", Content(Backup(1)));
  EXPECT_EQ("", Content(file_));
}

TEST_F(LogClientRollingFileTest, CountsWhatTheFileHadBeforeAlsoWhenAnEventWritesNothing) {
  WriteFile(file_, "0123456789");
  LogClientRollingFile client(file_, 9, 3);
  client.SetLayout(new FunctionLayout([](std::ostream&, const LogEvent&) {}));

  EXPECT_TRUE(client.Publish(EventWith("unwritten")));

  EXPECT_EQ("0123456789", Content(Backup(1)));
  EXPECT_EQ("", Content(file_));
}

TEST_F(LogClientRollingFileTest, KeepsAFileThatHadExactlyTheLimitBefore) {
  WriteFile(file_, "0123456789");
  LogClientRollingFile client(file_, 10, 3);
  client.SetLayout(new FunctionLayout([](std::ostream&, const LogEvent&) {}));

  EXPECT_TRUE(client.Publish(EventWith("unwritten")));

  EXPECT_EQ("0123456789", Content(file_));
  EXPECT_FALSE(Exists(Backup(1)));
}

TEST_F(LogClientRollingFileTest, KeepsALargeFileUntilAnEventComes) {
  WriteFile(file_, "0123456789");

  const LogClientRollingFile client(file_, 5, 3);

  EXPECT_EQ("0123456789", Content(file_));
  EXPECT_FALSE(Exists(Backup(1)));
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

// Backups.

TEST_F(LogClientRollingFileTest, MovesBackupsUpAndRemovesTheOldest) {
  WriteFile(file_, "current\n");
  WriteFile(Backup(1), "first");
  WriteFile(Backup(2), "second");
  WriteFile(Backup(3), "third");
  LogClientRollingFile client(file_, 5, 3);
  CaptureStderr();

  EXPECT_TRUE(Write(client, "last"));

  EXPECT_EQ("", Content(file_));
  EXPECT_EQ("current\nlast\n", Content(Backup(1)));
  EXPECT_EQ("first", Content(Backup(2)));
  EXPECT_EQ("second", Content(Backup(3)));
  EXPECT_FALSE(Exists(Backup(4)));
  EXPECT_EQ("", GetCapturedStderr());
}

TEST_F(LogClientRollingFileTest, KeepsAsManyBackupsAsAllowed) {
  LogClientRollingFile client(file_, 0, 3);

  for (const char* message : {"one", "two", "three", "four", "five"}) {
    EXPECT_TRUE(Write(client, message));
  }

  EXPECT_EQ("", Content(file_));
  EXPECT_EQ("five\n", Content(Backup(1)));
  EXPECT_EQ("four\n", Content(Backup(2)));
  EXPECT_EQ("three\n", Content(Backup(3)));
  EXPECT_FALSE(Exists(Backup(4)));
}

TEST_F(LogClientRollingFileTest, ReplacesItsOnlyBackup) {
  LogClientRollingFile client(file_, 0, 1);

  EXPECT_TRUE(Write(client, "one"));
  EXPECT_TRUE(Write(client, "two"));

  EXPECT_EQ("", Content(file_));
  EXPECT_EQ("two\n", Content(Backup(1)));
  EXPECT_FALSE(Exists(Backup(2)));
}

TEST_F(LogClientRollingFileTest, PassesOverBackupsThatAreMissing) {
  WriteFile(Backup(1), "first");
  WriteFile(Backup(3), "third");
  LogClientRollingFile client(file_, 0, 4);

  EXPECT_TRUE(Write(client, "new"));

  EXPECT_EQ("new\n", Content(Backup(1)));
  EXPECT_EQ("first", Content(Backup(2)));
  EXPECT_FALSE(Exists(Backup(3)));
  EXPECT_EQ("third", Content(Backup(4)));
}

TEST_F(LogClientRollingFileTest, LeavesBackupsPastTheLastAlone) {
  WriteFile(Backup(3), "third");
  LogClientRollingFile client(file_, 0, 2);

  EXPECT_TRUE(Write(client, "new"));

  EXPECT_EQ("third", Content(Backup(3)));
}

TEST_F(LogClientRollingFileTest, EmptiesTheFileWithoutBackups) {
  WriteFile(Backup(1), "first");
  LogClientRollingFile client(file_, 5, 0);

  EXPECT_TRUE(Write(client, "abc"));
  EXPECT_EQ("abc\n", Content(file_));
  EXPECT_TRUE(Write(client, "lost"));
  EXPECT_EQ("", Content(file_));
  EXPECT_TRUE(Write(client, "def"));

  EXPECT_EQ("def\n", Content(file_));
  EXPECT_EQ("first", Content(Backup(1)));
  EXPECT_FALSE(Exists(Backup(0)));
}

TEST_F(LogClientRollingFileTest, TakesANegativeNumberOfBackupsForNone) {
  LogClientRollingFile client(file_, 0, -3);

  EXPECT_TRUE(Write(client, "lost"));

  EXPECT_EQ("", Content(file_));
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

TEST_F(LogClientRollingFileTest, ReportsEachFailedAttemptWhenItsFileWasDeleted) {
  LogClientRollingFile client(file_, 0, 1);
  std::filesystem::remove(file_);

  CaptureStderr();
  EXPECT_FALSE(Write(client, "lost"));

  EXPECT_EQ(
      "LOGGER ERROR at Rollover [74]: 'Rename failed ENOENT\n'\n"
      "LOGGER ERROR at Rollover [74]: 'Rename failed ENOENT\n'\n"
      "LOGGER ERROR at Rollover [74]: 'Rename failed ENOENT\n'\n",
      GetCapturedStderr());
}

TEST_F(LogClientRollingFileTest, AppendsToANewFileWhenItsOwnWasDeleted) {
  LogClientRollingFile client(file_, 8, 1);
  Write(client, "lost");
  std::filesystem::remove(file_);
  CaptureStderr();
  EXPECT_FALSE(Write(client, "lost"));
  GetCapturedStderr();
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
  EXPECT_EQ(
      "LOGGER ERROR at Rollover [74]: 'Rename failed ENOENT\n'\n"
      "LOGGER ERROR at Rollover [74]: 'Rename failed ENOENT\n'\n"
      "LOGGER ERROR at Rollover [74]: 'Rename failed ENOENT\n'\n",
      GetCapturedStderr());
  std::filesystem::create_directory(subfolder);
  CaptureStderr();
  EXPECT_FALSE(Write(client, "lost"));

  EXPECT_EQ("", GetCapturedStderr());
  EXPECT_FALSE(Exists(subfolder + "/app.log"));
}

TEST_F(LogClientRollingFileTest, GoesOnInTheLargeFileWhileItCannotBeMoved) {
  std::filesystem::create_directories(Backup(1) + "/occupied");
  LogClientRollingFile client(file_, 5, 1);
  CaptureStderr();

  EXPECT_FALSE(Write(client, "first"));
  EXPECT_FALSE(Write(client, "second"));

  EXPECT_EQ("", GetCapturedStderr());
  EXPECT_EQ("first\nsecond\n", Content(file_));
}

TEST_F(LogClientRollingFileTest, TriesToMoveTheFileAgainAtTheNextEvent) {
  std::filesystem::create_directories(Backup(1) + "/occupied");
  LogClientRollingFile client(file_, 5, 1);
  EXPECT_FALSE(Write(client, "first"));
  std::filesystem::remove_all(Backup(1));

  EXPECT_TRUE(Write(client, "x"));

  EXPECT_EQ("first\nx\n", Content(Backup(1)));
  EXPECT_EQ("", Content(file_));
}

TEST_F(LogClientRollingFileTest, DropsEventsOnceOneCouldNotBeWritten) {
  std::filesystem::create_symlink("/dev/full", file_);
  LogClientRollingFile client(file_, -1, 1);

  EXPECT_TRUE(Write(client, "lost"));
  EXPECT_FALSE(Write(client, "lost"));

  EXPECT_FALSE(Exists(Backup(1)));
}

TEST_F(LogClientRollingFileTest, RollsOverAFailedFileWhenTheLimitIsBelowMinusOne) {
  std::filesystem::create_symlink("/dev/full", file_);
  LogClientRollingFile client(file_, -2, 1);

  EXPECT_TRUE(Write(client, "lost"));

  EXPECT_TRUE(std::filesystem::is_symlink(Backup(1)));
  EXPECT_TRUE(std::filesystem::is_regular_file(file_));
}

TEST_F(LogClientRollingFileTest, WritesAgainWhenAFailedFileIsRolledOver) {
  std::filesystem::create_symlink("/dev/full", file_);
  LogClientRollingFile client(file_, 100, 1);
  Write(client, "lost");
  EXPECT_FALSE(Write(client, "lost"));

  EXPECT_TRUE(client.Rollover());

  EXPECT_TRUE(Write(client, "abcd"));
  EXPECT_EQ("abcd\n", Content(file_));
}

TEST_F(LogClientRollingFileTest, DoesNotRollOverWithoutALayout) {
  WriteFile(file_, "0123456789");
  LogClientRollingFile client(file_, -1, 1);
  client.SetLayout(nullptr);

  EXPECT_FALSE(client.Publish(EventWith("lost")));

  EXPECT_FALSE(Exists(Backup(1)));
}

// Construction.

TEST_F(LogClientRollingFileTest, AppendsToAnExistingFile) {
  WriteFile(file_, "old\n");
  LogClientRollingFile client(file_, 100, 1);

  EXPECT_TRUE(client.IsInitialize());
  EXPECT_TRUE(Write(client, "new"));

  EXPECT_EQ("old\nnew\n", Content(file_));
}

TEST_F(LogClientRollingFileTest, IsNotInitialisedWhenTheNamedFileCannotBeOpened) {
  LogClientRollingFile unopened(folder_.Path("missing/app.log"), 100, 1);
  LogClientRollingFile unnamed("", 100, 1);

  EXPECT_FALSE(unopened.IsInitialize());
  EXPECT_FALSE(Write(unopened, "lost"));
  EXPECT_FALSE(unnamed.IsInitialize());
  EXPECT_FALSE(Write(unnamed, "lost"));
}

TEST_F(LogClientRollingFileTest, IsInitialisedFromPropertiesAlsoWhenTheFileCannotBeOpened) {
  properties_.AddProperty("filename", folder_.Path("missing/app.log"));
  LogClientRollingFile client(properties_);
  CaptureStderr();

  EXPECT_TRUE(client.IsInitialize());
  EXPECT_FALSE(Write(client, "lost"));
  EXPECT_FALSE(Write(client, "lost"));

  EXPECT_TRUE(client.IsInitialize());
  EXPECT_FALSE(Exists(folder_.Path("missing")));
  EXPECT_EQ("", GetCapturedStderr());
}

TEST_F(LogClientRollingFileTest, IsInitialisedFromPropertiesAlsoWithoutAFileName) {
  LogClientRollingFile client(properties_);

  EXPECT_TRUE(client.IsInitialize());
  EXPECT_FALSE(Write(client, "lost"));
}

TEST_F(LogClientRollingFileTest, ReadsItsLimitsFromProperties) {
  properties_.AddProperty("filename", file_);
  properties_.AddProperty("filesize", "5");
  properties_.AddProperty("maxbackup", "2");
  LogClientRollingFile client(properties_);

  EXPECT_TRUE(client.IsInitialize());
  EXPECT_TRUE(Write(client, "abcd"));
  EXPECT_EQ("abcd\n", Content(file_));
  EXPECT_TRUE(Write(client, ""));
  EXPECT_TRUE(Write(client, "second"));
  EXPECT_TRUE(Write(client, "third"));

  EXPECT_EQ("third\n", Content(Backup(1)));
  EXPECT_EQ("second\n", Content(Backup(2)));
  EXPECT_FALSE(Exists(Backup(3)));
}

TEST_F(LogClientRollingFileTest, EmptiesItsFileAfterEveryEventWithoutLimits) {
  WriteFile(file_, "old\n");
  properties_.AddProperty("filename", file_);
  LogClientRollingFile client(properties_);
  EXPECT_EQ("old\n", Content(file_));

  EXPECT_TRUE(Write(client, "lost"));

  EXPECT_EQ("", Content(file_));
  EXPECT_FALSE(Exists(Backup(1)));
}

TEST_F(LogClientRollingFileTest, EmptiesItsFileAtFirstWhenThePropertyIsFalse) {
  WriteFile(file_, "old\n");
  properties_.AddProperty("filename", file_);
  properties_.AddProperty("fileappend", "false");

  const LogClientRollingFile client(properties_);

  EXPECT_EQ("", Content(file_));
}

TEST_F(LogClientRollingFileTest, ReadsTheLimitAsADecimalNumberUpToTheFirstOtherCharacter) {
  properties_.AddProperty("filename", file_);
  properties_.AddProperty("fileappend", "false");
  properties_.AddProperty("maxbackup", "1");
  for (const char* limit : {"10", "10k", " 10", "\t+10", "010", "10.9", "10 000"}) {
    SCOPED_TRACE(limit);
    std::filesystem::remove(Backup(1));
    properties_.RemoveProperty("filesize");
    properties_.AddProperty("filesize", limit);
    LogClientRollingFile client(properties_);

    Write(client, "012345678");
    EXPECT_FALSE(Exists(Backup(1)));
    Write(client, "");

    EXPECT_EQ("012345678\n\n", Content(Backup(1)));
  }
}

TEST_F(LogClientRollingFileTest, TakesALimitWithoutDigitsForZero) {
  properties_.AddProperty("filename", file_);
  properties_.AddProperty("maxbackup", "1");
  for (const char* limit : {"", "k", "0x10", "-", "k10"}) {
    SCOPED_TRACE(limit);
    std::filesystem::remove(Backup(1));
    properties_.RemoveProperty("filesize");
    properties_.AddProperty("filesize", limit);
    LogClientRollingFile client(properties_);

    Write(client, "");

    EXPECT_EQ("\n", Content(Backup(1)));
  }
}

TEST_F(LogClientRollingFileTest, ReadsANegativeLimit) {
  properties_.AddProperty("filename", file_);
  properties_.AddProperty("filesize", "-1");
  properties_.AddProperty("maxbackup", "1");
  LogClientRollingFile client(properties_);
  client.SetLayout(new FunctionLayout([](std::ostream&, const LogEvent&) {}));

  EXPECT_TRUE(client.Publish(EventWith("unwritten")));

  EXPECT_TRUE(Exists(Backup(1)));
}

TEST_F(LogClientRollingFileTest, TakesAHugeLimitForTheLargestThereIs) {
  properties_.AddProperty("filename", file_);
  properties_.AddProperty("filesize", "4294967296");  // 0 in its lower 32 bits.
  LogClientRollingFile client(properties_);

  EXPECT_TRUE(Write(client, "abcd"));

  EXPECT_EQ("abcd\n", Content(file_));
}

TEST_F(LogClientRollingFileTest, ReadsTheNumberOfBackupsUpToTheFirstOtherCharacter) {
  properties_.AddProperty("filename", file_);
  properties_.AddProperty("maxbackup", " 2x3");
  LogClientRollingFile client(properties_);

  Write(client, "one");
  Write(client, "two");
  Write(client, "three");

  EXPECT_EQ("three\n", Content(Backup(1)));
  EXPECT_EQ("two\n", Content(Backup(2)));
  EXPECT_FALSE(Exists(Backup(3)));
}

TEST_F(LogClientRollingFileTest, TakesANegativeNumberOfBackupsInItsPropertiesForNone) {
  properties_.AddProperty("filename", file_);
  properties_.AddProperty("maxbackup", "-2");
  LogClientRollingFile client(properties_);

  EXPECT_TRUE(Write(client, "lost"));

  EXPECT_EQ("", Content(file_));
  EXPECT_FALSE(Exists(Backup(1)));
}

// Rolling over by the application's own call, or in its own way.

TEST_F(LogClientRollingFileTest, RollsOverWhenTold) {
  LogClientRollingFile client(file_, 1000, 2);
  Write(client, "one");

  EXPECT_TRUE(client.Rollover());
  EXPECT_TRUE(client.Rollover());

  EXPECT_EQ("", Content(file_));
  EXPECT_EQ("", Content(Backup(1)));
  EXPECT_EQ("one\n", Content(Backup(2)));
}

TEST_F(LogClientRollingFileTest, EmptiesTheFileWhenToldToRollOverWithoutBackups) {
  LogClientRollingFile client(file_, 1000, 0);
  Write(client, "lost");

  EXPECT_TRUE(client.Rollover());

  EXPECT_EQ("", Content(file_));
  EXPECT_TRUE(Write(client, "two"));
  EXPECT_EQ("two\n", Content(file_));
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
  properties_.AddProperty("filename", folder_.Path("missing/app.log"));
  properties_.AddProperty("filesize", "1000");
  LogClientRollingFile client(properties_);
  std::filesystem::create_directory(folder_.Path("missing"));

  EXPECT_TRUE(client.Rollover());

  EXPECT_TRUE(Write(client, "abcd"));
  EXPECT_EQ("abcd\n", Content(folder_.Path("missing/app.log")));
}

TEST_F(LogClientRollingFileTest, ReportsARolloverThatHasNoFileToMove) {
  properties_.AddProperty("filename", folder_.Path("missing/app.log"));
  properties_.AddProperty("maxbackup", "1");
  LogClientRollingFile client(properties_);
  CaptureStderr();

  EXPECT_FALSE(client.Rollover());

  EXPECT_EQ(
      "LOGGER ERROR at Rollover [74]: 'Rename failed ENOENT\n'\n"
      "LOGGER ERROR at Rollover [74]: 'Rename failed ENOENT\n'\n"
      "LOGGER ERROR at Rollover [74]: 'Rename failed ENOENT\n'\n",
      GetCapturedStderr());
}

TEST_F(LogClientRollingFileTest, MakesRoomForABackupWhenTold) {
  WriteFile(Backup(1), "first");
  WriteFile(Backup(2), "second");
  LogClientRollingFile client(file_, 1000, 2);
  Write(client, "current");

  EXPECT_TRUE(client.RolloverFiles());

  EXPECT_EQ("current\n", Content(file_));
  EXPECT_FALSE(Exists(Backup(1)));
  EXPECT_EQ("first", Content(Backup(2)));
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

TEST_F(LogClientRollingFileTest, GoesOnInANewFileAfterItsOwnWasMovedAside) {
  LogClientRollingFile client(file_, 100, 3);
  EXPECT_TRUE(Write(client, "one"));
  std::filesystem::rename(file_, Backup(9));

  client.ReopenAtNextEvent();
  EXPECT_TRUE(Write(client, "two"));

  EXPECT_EQ("one\n", Content(Backup(9)));
  EXPECT_EQ("two\n", Content(file_));
}

// Whether it can take the next event.

TEST_F(LogClientRollingFileTest, HasFailedWithoutAnOpenFileAlthoughItIsInitialised) {
  properties_.AddProperty("filename", folder_.Path("missing/app.log"));
  LogClientRollingFile client(properties_);

  EXPECT_TRUE(client.IsInitialize());
  EXPECT_TRUE(client.HasFailed());
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

}  // namespace

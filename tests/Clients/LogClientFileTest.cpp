#include "LogClientFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <iomanip>
#include <locale>
#include <ostream>
#include <stdexcept>
#include <string>

#include "LogLevelManager.h"
#include "LogProperties.h"
#include "Logger.h"
#include "Support/Descriptors.h"
#include "Support/Events.h"
#include "Support/FileSizeLimit.h"
#include "Support/Files.h"
#include "Support/GroupedNumbers.h"
#include "Support/Layouts.h"
#include "Support/TemporaryFolder.h"
#include "Support/TimeZone.h"

namespace {

class LogClientFileTest : public testing::Test {
 protected:
  TemporaryFolder folder_;
  const std::string file_ = folder_.Path("app.log");
  LogProperties properties_;
};

TEST_F(LogClientFileTest, WritesStandardLines) {
  SetTimeZone("UTC0");
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  LogClientFile client(file_, true);

  EXPECT_TRUE(client.Publish(EventWith("disk full")));

  EXPECT_EQ("2024-03-05T14:07:09 |ERROR| disk full\n", Content(file_));
}

TEST_F(LogClientFileTest, WritesTheLineOfEachLayout) {
  SetTimeZone("UTC0");
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  LogClientFile client(file_, true);

  for (const char* layout :
       {"LogLayoutMessage", "LogLayoutSimple", "LogLayoutStandard", "LogLayoutExtended"}) {
    EXPECT_TRUE(client.SetLayout(layout));
    EXPECT_TRUE(client.Publish(EventWith("disk full")));
  }

  EXPECT_EQ(
      "disk full\n"
      "ERROR - disk full\n"
      "2024-03-05T14:07:09 |ERROR| disk full\n"
      "2024-03-05T14:07:09 |ERROR| file.cpp 42 disk full\n",
      Content(file_));
}

TEST_F(LogClientFileTest, HasEveryEventOnDiskWhenPublishReturns) {
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");

  EXPECT_TRUE(client.Publish(EventWith("one")));
  EXPECT_EQ("one\n", Content(file_));
  EXPECT_TRUE(client.Publish(EventWith("two")));

  EXPECT_EQ("one\ntwo\n", Content(file_));
}

TEST_F(LogClientFileTest, WritesTextThatEndsInNoLineFeedAtOnce) {
  LogClientFile client(file_, true);
  client.SetLayout(new FunctionLayout([](std::ostream& out, const LogEvent&) { out << "half"; }));

  EXPECT_TRUE(client.Publish(EventWith("x")));

  EXPECT_EQ("half", Content(file_));
}

TEST_F(LogClientFileTest, WritesLargeMessagesWhole) {
  const std::string message(std::size_t{16} * 1024 * 1024, 'm');
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");

  EXPECT_TRUE(client.Publish(EventWith(message)));

  EXPECT_TRUE(message + "\n" == Content(file_));  // Not EXPECT_EQ, which would print them.
}

TEST_F(LogClientFileTest, WritesAnyByte) {
  const std::string message("a\0b\xff\r\n", 6);
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");

  EXPECT_TRUE(client.Publish(EventWith(message)));

  EXPECT_EQ(message + "\n", Content(file_));
}

TEST_F(LogClientFileTest, AppendsWhenToldTo) {
  WriteFile(file_, "old\n");
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");

  client.Publish(EventWith("new"));

  EXPECT_EQ("old\nnew\n", Content(file_));
}

TEST_F(LogClientFileTest, EmptiesTheFileAtOnceWhenNotToAppend) {
  WriteFile(file_, "old\n");

  LogClientFile client(file_, false);

  EXPECT_EQ("", Content(file_));
}

TEST_F(LogClientFileTest, MakesTheFileAtOnce) {
  LogClientFile appending(file_, true);
  LogClientFile emptying(folder_.Path("other.log"), false);

  EXPECT_TRUE(appending.IsInitialize());
  EXPECT_TRUE(emptying.IsInitialize());
  EXPECT_EQ("", Content(file_));
  EXPECT_EQ("", Content(folder_.Path("other.log")));
}

TEST_F(LogClientFileTest, AppendsUnlessToldOtherwise) {
  WriteFile(file_, "old\n");
  properties_.AddProperty("filename", file_);
  LogClientFile client(properties_);
  client.SetLayout("LogLayoutMessage");

  EXPECT_TRUE(client.IsInitialize());
  EXPECT_TRUE(client.Publish(EventWith("new")));

  EXPECT_EQ("old\nnew\n", Content(file_));
}

TEST_F(LogClientFileTest, EmptiesTheFileWhenThePropertyIsFalse) {
  WriteFile(file_, "old\n");
  properties_.AddProperty("filename", file_);
  properties_.AddProperty("fileappend", "false");

  LogClientFile client(properties_);

  EXPECT_TRUE(client.IsInitialize());
  EXPECT_EQ("", Content(file_));
}

TEST_F(LogClientFileTest, AppendsForAnyOtherWordThanFalse) {
  WriteFile(file_, "old\n");
  properties_.AddProperty("filename", file_);
  for (const char* word :
       {"", "true", "FALSE", "False", "0", "no", "false ", " false", "falsely"}) {
    SCOPED_TRACE(word);
    properties_.RemoveProperty("fileappend");
    properties_.AddProperty("fileappend", word);

    const LogClientFile client(properties_);

    EXPECT_EQ("old\n", Content(file_));
  }
}

TEST_F(LogClientFileTest, ComparesItsKeysExactly) {
  properties_.AddProperty("Filename", file_);
  LogClientFile client(properties_);

  EXPECT_FALSE(client.IsInitialize());
  EXPECT_FALSE(Exists(file_));
}

TEST_F(LogClientFileTest, IsNotInitialisedWithoutAFileName) {
  properties_.AddProperty("fileappend", "false");
  LogClientFile configured(properties_);
  LogClientFile unnamed("", true);

  EXPECT_FALSE(configured.IsInitialize());
  EXPECT_FALSE(configured.Publish(EventWith("lost")));
  EXPECT_FALSE(unnamed.IsInitialize());
  EXPECT_FALSE(unnamed.Publish(EventWith("lost")));
  EXPECT_FALSE(unnamed.Init());
}

TEST_F(LogClientFileTest, IsNotInitialisedWhenTheFolderDoesNotExist) {
  LogClientFile client(folder_.Path("missing/app.log"), true);

  EXPECT_FALSE(client.IsInitialize());
  EXPECT_FALSE(client.Publish(EventWith("lost")));
  EXPECT_FALSE(Exists(folder_.Path("missing")));
}

TEST_F(LogClientFileTest, IsNotInitialisedWhenItsPropertiesNameAFileThatCannotBeOpened) {
  properties_.AddProperty("filename", folder_.Path());  // A folder.
  LogClientFile client(properties_);

  EXPECT_FALSE(client.IsInitialize());
  EXPECT_FALSE(client.Publish(EventWith("lost")));
}

TEST_F(LogClientFileTest, SaysNothingWhenItsFileCannotBeOpened) {
  testing::internal::CaptureStderr();
  LogClientFile client(folder_.Path("missing/app.log"), true);
  client.Publish(EventWith("lost"));

  EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST_F(LogClientFileTest, OpensItsFileLaterWhenInitialisedAgain) {
  LogClientFile client(folder_.Path("missing/app.log"), true);
  client.SetLayout("LogLayoutMessage");
  std::filesystem::create_directory(folder_.Path("missing"));

  EXPECT_TRUE(client.Init());

  EXPECT_TRUE(client.IsInitialize());
  EXPECT_TRUE(client.Publish(EventWith("disk full")));
  EXPECT_EQ("disk full\n", Content(folder_.Path("missing/app.log")));
}

TEST_F(LogClientFileTest, FailsWhenItsOpenFileIsOpenedAgain) {
  LogClientFile client(file_, false);
  client.SetLayout("LogLayoutMessage");
  client.Publish(EventWith("one"));

  EXPECT_TRUE(client.Init());

  EXPECT_TRUE(client.IsInitialize());
  EXPECT_FALSE(client.Publish(EventWith("lost")));
  EXPECT_EQ("one\n", Content(file_));
}

TEST_F(LogClientFileTest, GoesOnInTheFileThatItOpenedFromARelativePath) {
  const std::filesystem::path former = std::filesystem::current_path();
  std::filesystem::current_path(folder_.Path());
  LogClientFile client("app.log", true);
  client.SetLayout("LogLayoutMessage");
  std::filesystem::current_path(former);

  EXPECT_TRUE(client.Publish(EventWith("disk full")));

  EXPECT_EQ("disk full\n", Content(file_));
}

TEST_F(LogClientFileTest, WritesBehindWhatOthersAppended) {
  LogClientFile first(file_, true);
  LogClientFile second(file_, true);
  first.SetLayout("LogLayoutMessage");
  second.SetLayout("LogLayoutMessage");

  first.Publish(EventWith("one"));
  second.Publish(EventWith("two"));
  first.Publish(EventWith("three"));

  EXPECT_EQ("one\ntwo\nthree\n", Content(file_));
}

TEST_F(LogClientFileTest, WritesAtItsOwnPlaceWhenNotToAppend) {
  LogClientFile client(file_, false);
  client.SetLayout("LogLayoutMessage");
  client.Publish(EventWith("one"));
  std::filesystem::resize_file(file_, 0);

  EXPECT_TRUE(client.Publish(EventWith("two")));

  EXPECT_EQ(std::string("\0\0\0\0two\n", 8), Content(file_));
}

TEST_F(LogClientFileTest, WritesNothingWithoutALayout) {
  LogClientFile client(file_, true);

  EXPECT_TRUE(client.SetLayout(nullptr));

  EXPECT_TRUE(client.IsInitialize());
  EXPECT_FALSE(client.Publish(EventWith("lost")));
  EXPECT_EQ("", Content(file_));
}

TEST_F(LogClientFileTest, WritesNothingAfterAnUnknownLayoutName) {
  LogClientFile client(file_, true);

  EXPECT_FALSE(client.SetLayout("unknown"));
  EXPECT_FALSE(client.Publish(EventWith("lost")));
  EXPECT_TRUE(client.SetLayout("LogLayoutMessage"));
  EXPECT_TRUE(client.Publish(EventWith("disk full")));

  EXPECT_EQ("disk full\n", Content(file_));
}

TEST_F(LogClientFileTest, GoesOnAfterALayoutThatThrew) {
  LogClientFile client(file_, true);
  client.SetLayout(new FunctionLayout([](std::ostream& out, const LogEvent& event) {
    out << event.GetLogMessage();
    throw std::runtime_error("no");
  }));

  EXPECT_THROW(client.Publish(EventWith("half ")), std::runtime_error);
  client.SetLayout("LogLayoutMessage");
  EXPECT_TRUE(client.Publish(EventWith("next")));

  EXPECT_EQ("half next\n", Content(file_));
}

TEST_F(LogClientFileTest, WritesWhatALayoutThatThrewLeftAtItsEnd) {
  {
    LogClientFile client(file_, true);
    client.SetLayout(new FunctionLayout([](std::ostream& out, const LogEvent& event) {
      out << event.GetLogMessage();
      throw std::runtime_error("no");
    }));
    EXPECT_THROW(client.Publish(EventWith("half")), std::runtime_error);
  }

  EXPECT_EQ("half", Content(file_));
}

TEST_F(LogClientFileTest, DropsEventsOnceALayoutSetAnErrorState) {
  for (const auto state : {std::ios_base::failbit, std::ios_base::badbit, std::ios_base::eofbit}) {
    SCOPED_TRACE(state);
    LogClientFile client(file_, false);
    client.SetLayout(
        new FunctionLayout([=](std::ostream& out, const LogEvent&) { out.setstate(state); }));

    EXPECT_TRUE(client.Publish(EventWith("x")));
    client.SetLayout("LogLayoutMessage");
    EXPECT_FALSE(client.Publish(EventWith("lost")));

    EXPECT_TRUE(client.IsInitialize());
    EXPECT_EQ("", Content(file_));
  }
}

TEST_F(LogClientFileTest, DropsEventsOnceOneCouldNotBeWritten) {
  testing::internal::CaptureStderr();
  LogClientFile client("/dev/full", true);

  EXPECT_TRUE(client.IsInitialize());
  EXPECT_TRUE(client.Publish(EventWith("lost")));
  EXPECT_FALSE(client.Publish(EventWith("lost")));
  EXPECT_FALSE(client.Publish(EventWith("lost")));

  EXPECT_TRUE(client.IsInitialize());
  EXPECT_EQ("", testing::internal::GetCapturedStderr());
}

TEST_F(LogClientFileTest, DoesNotWriteTheRestOfAFailedEventLater) {
  {
    LogClientFile client(file_, true);
    client.SetLayout("LogLayoutMessage");
    bool isPublished = false;
    {
      const FileSizeLimit limit(100);
      isPublished = client.Publish(EventWith(std::string(150, 'a')));
    }
    EXPECT_TRUE(isPublished);
    EXPECT_FALSE(client.Publish(EventWith("lost")));
  }

  EXPECT_EQ(std::string(100, 'a'), Content(file_));
}

TEST_F(LogClientFileTest, WritesNumbersWithoutTheGroupsOfTheGlobalLocale) {
  SetTimeZone("UTC0");
  const GroupedNumbers grouped;
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutExtended");

  client.Publish(LogEvent(99, "m", "handler", "a.cpp", 1234567, timeval{1709647629, 42}, 7));

  EXPECT_EQ("2024-03-05T14:07:09 || a.cpp 1234567 m\n", Content(file_));
}

TEST_F(LogClientFileTest, WritesNumbersAsALayoutSetTheStreamTo) {
  SetTimeZone("UTC0");
  LogClientFile client(file_, true);
  client.SetLayout(new FunctionLayout([](std::ostream& out, const LogEvent&) {
    const GroupedNumbers grouped;
    out.imbue(std::locale());
  }));
  client.Publish(EventWith("none"));
  client.SetLayout("LogLayoutExtended");

  client.Publish(LogEvent(99, "m", "handler", "a.cpp", 1234567, timeval{1709647629, 42}, 7));

  EXPECT_EQ("2024-03-05T14:07:09 || a.cpp 1,234,567 m\n", Content(file_));
}

TEST_F(LogClientFileTest, FillsTheWidthThatALayoutLeft) {
  LogClientFile client(file_, true);
  client.SetLayout(
      new FunctionLayout([](std::ostream& out, const LogEvent&) { out << std::setw(6); }));
  client.Publish(EventWith("none"));
  client.SetLayout("LogLayoutMessage");

  client.Publish(EventWith("m"));
  client.Publish(EventWith("m"));

  EXPECT_EQ("     m\nm\n", Content(file_));
}

TEST_F(LogClientFileTest, FollowsNoChangeOfTheGlobalLocale) {
  SetTimeZone("UTC0");
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutExtended");
  const GroupedNumbers grouped;

  client.Publish(LogEvent(99, "m", "handler", "a.cpp", 1234567, timeval{1709647629, 42}, 7));

  EXPECT_EQ("2024-03-05T14:07:09 || a.cpp 1234567 m\n", Content(file_));
}

TEST_F(LogClientFileTest, KeepsItsDescriptorFromOtherPrograms) {
  const LogClientFile appending(file_, true);
  const LogClientFile emptying(folder_.Path("other.log"), false);

  const int first = DescriptorOf(file_);
  const int second = DescriptorOf(folder_.Path("other.log"));

  ASSERT_NE(-1, first);
  ASSERT_NE(-1, second);
  EXPECT_EQ(FD_CLOEXEC, fcntl(first, F_GETFD) & FD_CLOEXEC);
  EXPECT_EQ(FD_CLOEXEC, fcntl(second, F_GETFD) & FD_CLOEXEC);
}

TEST_F(LogClientFileTest, ClosesItsFileAtItsEnd) {
  {
    const LogClientFile client(file_, true);
    EXPECT_NE(-1, DescriptorOf(file_));
  }

  EXPECT_EQ(-1, DescriptorOf(file_));
}

// Whether it can take the next event.

TEST_F(LogClientFileTest, HasNotFailedAsLongAsItsFileTakesEvents) {
  LogClientFile client(file_, true);
  EXPECT_FALSE(client.HasFailed());

  client.Publish(EventWith("one"));

  EXPECT_FALSE(client.HasFailed());
}

TEST_F(LogClientFileTest, HasFailedFromTheStartWhenItsFileCannotBeOpened) {
  EXPECT_TRUE(LogClientFile(folder_.Path("missing/app.log"), true).HasFailed());
  EXPECT_TRUE(LogClientFile("", true).HasFailed());
}

TEST_F(LogClientFileTest, HasFailedAfterTheVeryEventThatCouldNotBeWritten) {
  LogClientFile client("/dev/full", true);
  EXPECT_FALSE(client.HasFailed());

  EXPECT_TRUE(client.Publish(EventWith("lost")));

  EXPECT_TRUE(client.HasFailed());
}

TEST_F(LogClientFileTest, HasFailedUntilItsFileIsOpenAgain) {
  std::filesystem::create_symlink("/dev/full", file_);
  LogClientFile client(file_, true);
  client.Publish(EventWith("lost"));
  std::filesystem::remove(file_);

  client.ReopenAtNextEvent();
  EXPECT_TRUE(client.HasFailed());
  client.Publish(EventWith("one"));

  EXPECT_FALSE(client.HasFailed());
}

// Opening the file again.

class LogClientFileReopenTest : public LogClientFileTest {
 protected:
  void MoveAside() const { std::filesystem::rename(file_, moved_); }

  const std::string moved_ = folder_.Path("app.log.moved");
};

TEST_F(LogClientFileReopenTest, WritesOnIntoAMovedFileUnlessToldToOpenItsOwnAgain) {
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");
  client.Publish(EventWith("one"));
  MoveAside();

  EXPECT_TRUE(client.Publish(EventWith("two")));

  EXPECT_EQ("one\ntwo\n", Content(moved_));
  EXPECT_FALSE(Exists(file_));
}

TEST_F(LogClientFileReopenTest, WritesTheNextEventIntoANewFile) {
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");
  client.Publish(EventWith("one"));
  MoveAside();

  client.ReopenAtNextEvent();
  EXPECT_FALSE(Exists(file_));
  EXPECT_TRUE(client.Publish(EventWith("two")));
  EXPECT_TRUE(client.Publish(EventWith("three")));

  EXPECT_EQ("one\n", Content(moved_));
  EXPECT_EQ("two\nthree\n", Content(file_));
  EXPECT_EQ(-1, DescriptorOf(moved_));
}

TEST_F(LogClientFileReopenTest, AppendsAlsoWhereItEmptiedTheFileAtFirst) {
  LogClientFile client(file_, false);
  client.SetLayout("LogLayoutMessage");
  client.Publish(EventWith("one"));

  client.ReopenAtNextEvent();
  EXPECT_TRUE(client.Publish(EventWith("two")));

  EXPECT_EQ("one\ntwo\n", Content(file_));
}

TEST_F(LogClientFileReopenTest, OpensOnceForEachTimeItIsAsked) {
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");
  client.ReopenAtNextEvent();
  client.Publish(EventWith("one"));
  MoveAside();

  EXPECT_TRUE(client.Publish(EventWith("two")));

  EXPECT_EQ("one\ntwo\n", Content(moved_));
  EXPECT_FALSE(Exists(file_));
}

TEST_F(LogClientFileReopenTest, GoesOnAfterTheDiskWasFull) {
  std::filesystem::create_symlink("/dev/full", file_);
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");
  EXPECT_TRUE(client.Publish(EventWith("lost")));
  EXPECT_FALSE(client.Publish(EventWith("lost")));
  std::filesystem::remove(file_);

  client.ReopenAtNextEvent();
  EXPECT_TRUE(client.Publish(EventWith("one")));

  EXPECT_EQ("one\n", Content(file_));
}

TEST_F(LogClientFileReopenTest, DropsEventsWhileTheFileCannotBeOpened) {
  const std::string subfolder = folder_.Path("logs");
  std::filesystem::create_directory(subfolder);
  LogClientFile client(subfolder + "/app.log", true);
  client.SetLayout("LogLayoutMessage");
  std::filesystem::remove_all(subfolder);

  client.ReopenAtNextEvent();
  EXPECT_FALSE(client.Publish(EventWith("lost")));
  EXPECT_FALSE(client.Publish(EventWith("lost")));
  std::filesystem::create_directory(subfolder);
  EXPECT_TRUE(client.Publish(EventWith("one")));

  EXPECT_EQ("one\n", Content(subfolder + "/app.log"));
}

TEST_F(LogClientFileReopenTest, OpensAFileThatCouldNotBeOpenedAtFirst) {
  const std::string subfolder = folder_.Path("logs");
  LogClientFile client(subfolder + "/app.log", true);
  client.SetLayout("LogLayoutMessage");
  EXPECT_FALSE(client.IsInitialize());
  std::filesystem::create_directory(subfolder);

  client.ReopenAtNextEvent();
  EXPECT_TRUE(client.Publish(EventWith("one")));

  EXPECT_TRUE(client.IsInitialize());
  EXPECT_EQ("one\n", Content(subfolder + "/app.log"));
}

TEST_F(LogClientFileReopenTest, HasNothingToOpenWithoutAName) {
  LogClientFile client("", true);

  client.ReopenAtNextEvent();

  EXPECT_FALSE(client.Publish(EventWith("lost")));
  EXPECT_FALSE(client.IsInitialize());
}

LogClientFile* clientOfTheSignalHandler = nullptr;

TEST_F(LogClientFileReopenTest, IsAskedByASignalHandler) {
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");
  client.Publish(EventWith("one"));
  MoveAside();
  clientOfTheSignalHandler = &client;
  std::signal(SIGUSR1, [](int) { clientOfTheSignalHandler->ReopenAtNextEvent(); });

  std::raise(SIGUSR1);
  EXPECT_TRUE(client.Publish(EventWith("two")));

  EXPECT_EQ("two\n", Content(file_));
}

}  // namespace

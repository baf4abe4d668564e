#include "LogClientFile.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>

#include <csignal>
#include <filesystem>
#include <iomanip>
#include <locale>
#include <memory>
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

TEST_F(LogClientFileTest, HasTheLineOfEachLayoutOnDiskWhenPublishReturns) {
  SetTimeZone("UTC0");
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  LogClientFile client(file_, true);
  EXPECT_EQ("", Content(file_));

  EXPECT_TRUE(client.Publish(EventWith("disk full")));
  std::string expected = "2024-03-05T14:07:09 |ERROR| disk full\n";
  EXPECT_EQ(expected, Content(file_));
  const struct {
    const char* layout;
    const char* line;
  } rows[] = {{"LogLayoutMessage", "disk full\n"},
              {"LogLayoutSimple", "ERROR - disk full\n"},
              {"LogLayoutStandard", "2024-03-05T14:07:09 |ERROR| disk full\n"},
              {"LogLayoutExtended", "2024-03-05T14:07:09 |ERROR| file.cpp 42 disk full\n"}};
  for (const auto& row : rows) {
    EXPECT_TRUE(client.SetLayout(row.layout));
    EXPECT_TRUE(client.Publish(EventWith("disk full")));
    expected += row.line;
    EXPECT_EQ(expected, Content(file_));
  }
}

TEST_F(LogClientFileTest, WritesTextThatEndsInNoLineFeedAtOnce) {
  LogClientFile client(file_, true);
  client.SetLayout(new FunctionLayout([](std::ostream& out, const LogEvent&) { out << "half"; }));

  EXPECT_TRUE(client.Publish(EventWith("x")));

  EXPECT_EQ("half", Content(file_));
}

TEST_F(LogClientFileTest, WritesAnyMessageWhole) {
  const std::string large(std::size_t{16} * 1024 * 1024, 'm');
  const std::string bytes("a\0b\xff\r\n", 6);
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");

  EXPECT_TRUE(client.Publish(EventWith(bytes)));
  EXPECT_TRUE(client.Publish(EventWith(large)));

  // Not EXPECT_EQ, which would print them.
  EXPECT_TRUE(bytes + "\n" + large + "\n" == Content(file_));
}

TEST_F(LogClientFileTest, AppendsOrEmptiesTheFileAtOnce) {
  for (const bool append : {true, false}) {
    SCOPED_TRACE(append);
    WriteFile(file_, "old\n");
    LogClientFile client(file_, append);
    client.SetLayout("LogLayoutMessage");
    const std::string former = append ? "old\n" : "";

    EXPECT_TRUE(client.IsInitialize());
    EXPECT_EQ(former, Content(file_));
    client.Publish(EventWith("new"));

    EXPECT_EQ(former + "new\n", Content(file_));
  }
}

TEST_F(LogClientFileTest, AppendsUnlessThePropertyIsExactlyFalse) {
  for (const std::string word :
       {"", "true", "FALSE", "False", "0", "no", "false ", " false", "falsely", "false"}) {
    SCOPED_TRACE(word);
    WriteFile(file_, "old\n");
    LogProperties properties;
    properties.AddProperty("filename", file_);
    if (!word.empty()) properties.AddProperty("fileappend", word);
    LogClientFile client(properties);
    client.SetLayout("LogLayoutMessage");

    EXPECT_TRUE(client.IsInitialize());
    EXPECT_TRUE(client.Publish(EventWith("new")));

    EXPECT_EQ(word == "false" ? "new\n" : "old\nnew\n", Content(file_));
  }
}

TEST_F(LogClientFileTest, IsNotInitialisedWithoutAFile) {
  testing::internal::CaptureStderr();
  properties_.AddProperty("Filename", file_);  // Not its key.
  LogClientFile unnamed(properties_);
  LogClientFile empty("", true);
  LogClientFile homeless(folder_.Path("missing/app.log"), true);
  properties_.AddProperty("filename", folder_.Path());
  LogClientFile folder(properties_);

  for (LogClientFile* const client : {&unnamed, &empty, &homeless, &folder}) {
    EXPECT_FALSE(client->IsInitialize());
    EXPECT_FALSE(client->Publish(EventWith("lost")));
    EXPECT_FALSE(client->Init());
  }

  EXPECT_FALSE(Exists(file_));
  EXPECT_FALSE(Exists(folder_.Path("missing")));
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

TEST_F(LogClientFileTest, WritesAfterWhatOthersAppended) {
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
  EXPECT_FALSE(client.SetLayout("unknown"));
  EXPECT_FALSE(client.Publish(EventWith("lost")));
  EXPECT_EQ("", Content(file_));
  EXPECT_TRUE(client.SetLayout("LogLayoutMessage"));
  EXPECT_TRUE(client.Publish(EventWith("disk full")));

  EXPECT_EQ("disk full\n", Content(file_));
}

TEST_F(LogClientFileTest, WritesWhatALayoutThatThrewLeft) {
  {
    LogClientFile client(file_, true);
    LogLayout* const half = new FunctionLayout([](std::ostream& out, const LogEvent& event) {
      out << event.GetLogMessage();
      if (event.GetLogMessage() != "next\n") throw std::runtime_error("no");
    });
    client.SetLayout(half);

    EXPECT_THROW(client.Publish(EventWith("half ")), std::runtime_error);
    EXPECT_TRUE(client.Publish(EventWith("next\n")));
    EXPECT_EQ("half next\n", Content(file_));
    EXPECT_THROW(client.Publish(EventWith("at the end")), std::runtime_error);
  }

  EXPECT_EQ("half next\nat the end", Content(file_));
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
  const auto former = std::make_unique<LogClientFile>(file_, true);  // Of another locale.
  const GroupedNumbers grouped;
  LogClientFile later(file_, true);

  for (LogClientFile* const client : {former.get(), &later}) {
    client->SetLayout("LogLayoutExtended");
    client->Publish(LogEvent(99, "m", "handler", "a.cpp", 1234567, timeval{1709647629, 42}, 7));
  }

  const std::string line = "2024-03-05T14:07:09 || a.cpp 1234567 m\n";
  EXPECT_EQ(line + line, Content(file_));
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

TEST_F(LogClientFileTest, KeepsItsDescriptorFromOtherProgramsAndClosesIt) {
  for (const bool append : {true, false}) {
    {
      const LogClientFile client(file_, append);
      const int descriptor = DescriptorOf(file_);
      ASSERT_NE(-1, descriptor);
      EXPECT_EQ(FD_CLOEXEC, fcntl(descriptor, F_GETFD) & FD_CLOEXEC);
    }

    EXPECT_EQ(-1, DescriptorOf(file_));
  }
}

// Whether it can take the next event.

TEST_F(LogClientFileTest, HasFailedFromTheStartWhenItsFileCannotBeOpened) {
  EXPECT_TRUE(LogClientFile(folder_.Path("missing/app.log"), true).HasFailed());
  EXPECT_TRUE(LogClientFile("", true).HasFailed());
}

TEST_F(LogClientFileTest, HasFailedAfterTheVeryEventThatCouldNotBeWrittenUntilItsFileIsOpenAgain) {
  std::filesystem::create_symlink("/dev/full", file_);
  LogClientFile client(file_, true);
  EXPECT_FALSE(client.HasFailed());

  EXPECT_TRUE(client.Publish(EventWith("lost")));
  EXPECT_TRUE(client.HasFailed());
  std::filesystem::remove(file_);
  client.ReopenAtNextEvent();
  EXPECT_TRUE(client.HasFailed());
  client.Publish(EventWith("one"));
  EXPECT_FALSE(client.HasFailed());
  client.Publish(EventWith("two"));

  EXPECT_FALSE(client.HasFailed());
}

// Opening the file again.

class LogClientFileReopenTest : public LogClientFileTest {
 protected:
  void MoveAside() const { std::filesystem::rename(file_, moved_); }

  const std::string moved_ = folder_.Path("app.log.moved");
};

TEST_F(LogClientFileReopenTest, OpensItsFileOnceForEachTimeItIsAsked) {
  for (const bool append : {true, false}) {
    SCOPED_TRACE(append);
    std::filesystem::remove(file_);
    LogClientFile client(file_, append);
    client.SetLayout("LogLayoutMessage");
    client.ReopenAtNextEvent();
    client.Publish(EventWith("one"));
    MoveAside();

    EXPECT_TRUE(client.Publish(EventWith("two")));
    EXPECT_EQ("one\ntwo\n", Content(moved_));
    client.ReopenAtNextEvent();
    EXPECT_FALSE(Exists(file_));
    EXPECT_TRUE(client.Publish(EventWith("three")));
    client.ReopenAtNextEvent();  // Appends also where it emptied the file at first.
    EXPECT_TRUE(client.Publish(EventWith("four")));

    EXPECT_EQ("one\ntwo\n", Content(moved_));
    EXPECT_EQ("three\nfour\n", Content(file_));
    EXPECT_EQ(-1, DescriptorOf(moved_));
  }
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
  LogClientFile client(subfolder + "/app.log", true);
  client.SetLayout("LogLayoutMessage");
  EXPECT_FALSE(client.IsInitialize());
  std::filesystem::create_directory(subfolder);

  client.ReopenAtNextEvent();
  EXPECT_TRUE(client.Publish(EventWith("moved with its folder")));
  EXPECT_TRUE(client.IsInitialize());
  std::filesystem::rename(subfolder, moved_);
  client.ReopenAtNextEvent();
  EXPECT_FALSE(client.Publish(EventWith("lost")));
  EXPECT_FALSE(client.Publish(EventWith("lost")));
  std::filesystem::create_directory(subfolder);
  EXPECT_TRUE(client.Publish(EventWith("one")));

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

/// A class of a user's, with what the public headers offer.
class OwnFile : public LogClientFile {
 public:
  using LogClientFile::CloseFile;
  using LogClientFile::GetFileName;
  using LogClientFile::GetStream;
  using LogClientFile::LogClientFile;
  using LogClientFile::OpenFile;
};

TEST_F(LogClientFileTest, CanBeClosedAndOpenedByAClassOfYourOwn) {
  OwnFile client(file_, true);
  client.SetLayout("LogLayoutMessage");
  EXPECT_EQ(file_, client.GetFileName());
  client.GetStream() << "before ";

  client.CloseFile();
  EXPECT_EQ("before ", Content(file_));
  EXPECT_TRUE(client.HasFailed());
  EXPECT_TRUE(client.OpenFile(true));
  EXPECT_TRUE(client.Publish(EventWith("appended")));
  EXPECT_EQ("before appended\n", Content(file_));

  client.CloseFile();
  EXPECT_TRUE(client.OpenFile(false));
  EXPECT_TRUE(client.Publish(EventWith("first")));
  EXPECT_EQ("first\n", Content(file_));
}

TEST_F(LogClientFileTest, IsInitialisedOnceAClassOfYourOwnHasOpenedItsFile) {
  const std::string folder = folder_.Path("later");
  OwnFile client(folder + "/app.log", true);
  client.SetLayout("LogLayoutMessage");
  client.CloseFile();
  EXPECT_FALSE(client.OpenFile(true));
  EXPECT_FALSE(client.IsInitialize());
  EXPECT_FALSE(client.Publish(EventWith("lost")));

  std::filesystem::create_directory(folder);
  EXPECT_TRUE(client.OpenFile(true));

  EXPECT_TRUE(client.IsInitialize());
  EXPECT_TRUE(client.Publish(EventWith("written")));
  EXPECT_EQ("written\n", Content(folder + "/app.log"));
}

}  // namespace

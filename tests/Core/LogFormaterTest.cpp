#include "LogFormater.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/RecordingClient.h"

namespace {

using Texts = std::vector<std::string>;

class LogFormaterTest : public testing::Test {
 protected:
  LogFormaterTest() {
    Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
    handler_.AddLogClient(&client_);
  }

  RecordingClient client_;
  LogHandler handler_{"net"};
};

TEST_F(LogFormaterTest, LogsWithItsLevelAndSourcePosition) {
  LogFormater(1, "src/a.cpp", 142).Log(&handler_, "%s %d", "answer", 42);

  const std::vector<LogEvent> events = client_.Events();
  ASSERT_EQ(1U, events.size());
  EXPECT_EQ(1U, events[0].GetLogLevel());
  EXPECT_EQ("answer 42", events[0].GetLogMessage());
  EXPECT_EQ("net", events[0].GetLogHandlerName());
  EXPECT_EQ("src/a.cpp", events[0].GetFullFileName());
  EXPECT_EQ(142, events[0].GetLine());
}

TEST_F(LogFormaterTest, KeepsItsOwnCopyOfTheFileName) {
  std::string file = "a file name that is too long for a short string.cpp";
  LogFormater formater(1, file, 142);
  file.assign("changed");

  formater.Log(&handler_, "text");

  EXPECT_EQ("a file name that is too long for a short string.cpp",
            client_.Events().at(0).GetFullFileName());
}

TEST_F(LogFormaterTest, LogsAnyNumberOfTimes) {
  LogFormater formater(1, "a.cpp", 142);
  LogHandler other("other");
  other.AddLogClient(&client_);

  formater.Log(&handler_, "%d", 1);
  formater.Log(&other, "%d", 2);

  EXPECT_EQ((Texts{"1", "2"}), client_.Messages());
  EXPECT_EQ("other", client_.Events().at(1).GetLogHandlerName());
}

TEST_F(LogFormaterTest, DoesNotFormatTheTextASecondTime) {
  LogFormater(1, "a.cpp", 142).Log(&handler_, "%s", "100%s %d %n");

  EXPECT_EQ(Texts{"100%s %d %n"}, client_.Messages());
}

TEST_F(LogFormaterTest, LogsMessagesOfAnyLengthWhole) {
  for (const std::size_t length :
       {0U, 4094U, 4095U, 4096U, 4097U, 8190U, 8191U, 8192U, 10000U, 100000U}) {
    SCOPED_TRACE(length);
    const std::string text(length, 'x');

    LogFormater(1, "a.cpp", 142).Log(&handler_, "%s", text.c_str());

    EXPECT_EQ(text, client_.Messages().back());
  }
}

TEST_F(LogFormaterTest, EndsTheMessageAtAZeroByte) {
  LogFormater(1, "a.cpp", 142).Log(&handler_, "a%cb", '\0');

  EXPECT_EQ(Texts{"a"}, client_.Messages());
}

TEST_F(LogFormaterTest, LogsNothingThatTheHandlerFiltersOut) {
  handler_.SetLogLevel(1, false);

  LogFormater(1, "a.cpp", 142).Log(&handler_, "off");
  LogFormater(9, "a.cpp", 142).Log(&handler_, "not registered");

  EXPECT_TRUE(client_.Events().empty());
}

TEST_F(LogFormaterTest, FormatsWhatTheHandlerThenFiltersOut) {
  handler_.SetLogLevel(1, false);
  int written = -1;

  LogFormater(1, "a.cpp", 142).Log(&handler_, "text%n", &written);

  EXPECT_EQ(4, written);
  EXPECT_TRUE(client_.Events().empty());
}

TEST_F(LogFormaterTest, LeavesErrnoAsItWas) {
  client_.whenPublished = [](const LogEvent&) { errno = EIO; };
  errno = EINTR;

  LogFormater(1, "a.cpp", 142).Log(&handler_, "%s", std::string(10000, 'x').c_str());

  EXPECT_EQ(EINTR, errno);
  EXPECT_EQ(1U, client_.Events().size());
}

TEST_F(LogFormaterTest, FormatsTheCallersErrno) {
  // Standard C++ does not know %m: the compiler must not check the format.
  void (LogFormater::*const log)(LogHandler*, const char*, ...) = &LogFormater::Log;
  LogFormater formater(1, "a.cpp", 142);
  errno = ENOENT;

  (formater.*log)(&handler_, "%m");

  EXPECT_EQ(Texts{"No such file or directory"}, client_.Messages());
}

using LogFormaterDeathTest = LogFormaterTest;

TEST_F(LogFormaterDeathTest, EndsTheProcessWithoutAHandler) {
  EXPECT_DEATH(LogFormater(1, "a.cpp", 142).Log(nullptr, "text"),
               "Src/LogFormater:59: void LogFormater::Log\\(LogHandler\\*, const char\\*, "
               "\\.\\.\\.\\): Assertion `logger' failed\\.");
}

}  // namespace

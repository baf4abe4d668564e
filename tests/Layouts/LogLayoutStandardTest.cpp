#include "LogLayoutStandard.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <ostream>
#include <sstream>
#include <string>
#include <thread>
#include <vector>

#include "LogClientFile.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Events.h"
#include "Support/Layouts.h"
#include "Support/TemporaryFolder.h"
#include "Support/TimeZone.h"

namespace {

class LogLayoutStandardTest : public testing::Test {
 protected:
  LogLayoutStandardTest() {
    SetTimeZone("UTC0");
    Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  }

  LogLayoutStandard layout_;
};

TEST_F(LogLayoutStandardTest, WritesTimeLevelAndMessage) {
  EXPECT_EQ("2024-03-05T14:07:09 |ERROR| disk full\n", Formatted(layout_, EventWith("disk full")));
}

TEST_F(LogLayoutStandardTest, WritesTheLocalTime) {
  SetTimeZone("EAST-5:30");

  EXPECT_EQ("2024-03-05T19:37:09 |ERROR| disk full\n", Formatted(layout_, EventWith("disk full")));
}

TEST_F(LogLayoutStandardTest, KeepsTheTrailingBlankOfAnEmptyMessage) {
  EXPECT_EQ("2024-03-05T14:07:09 |ERROR| \n", Formatted(layout_, EventWith("")));
}

TEST_F(LogLayoutStandardTest, LeavesTheMessageAsItIs) {
  const std::string message("a\n\n\"b\" \\ <c>\t%s\0\xff", 18);

  EXPECT_EQ("2024-03-05T14:07:09 |ERROR| " + message + "\n",
            Formatted(layout_, EventWith(message)));
}

TEST_F(LogLayoutStandardTest, WritesNoNameForALevelThatIsNotRegistered) {
  EXPECT_EQ("2024-03-05T14:07:09 || disk full\n", Formatted(layout_, EventWith("disk full", 99)));
}

TEST_F(LogLayoutStandardTest, AppliesTheStreamsWidthToTheTimeOnly) {
  std::ostringstream out;
  out << std::setw(22) << std::setfill('.');

  layout_.FormatAndAppend(out, EventWith("disk full"));
  layout_.FormatAndAppend(out, EventWith("again"));

  EXPECT_EQ("...2024-03-05T14:07:09 |ERROR| disk full\n2024-03-05T14:07:09 |ERROR| again\n",
            out.str());
}

TEST_F(LogLayoutStandardTest, KeepsTheTimeWhenTheStreamLogsAnEventItself) {
  const TemporaryFolder folder;
  LogClientFile file(folder.Path("app.log"), true);
  LogHandler handler("net");
  handler.AddLogClient(&file);
  CallingBuffer buffer([&] { handler.Log(1, "sending"); });
  std::ostream out(&buffer);

  layout_.FormatAndAppend(out, EventWith("disk full"));

  EXPECT_EQ("2024-03-05T14:07:09 |ERROR| disk full\n", buffer.str());
}

TEST_F(LogLayoutStandardTest, DoesNotFlush) {
  FlushCounter buffer;
  std::ostream out(&buffer);

  layout_.FormatAndAppend(out, EventWith("disk full"));

  EXPECT_EQ("2024-03-05T14:07:09 |ERROR| disk full\n", buffer.str());
  EXPECT_EQ(0, buffer.flushes);
}

TEST_F(LogLayoutStandardTest, LeavesErrorsInTheStreamsState) {
  ShortBuffer buffer(24);
  std::ostream out(&buffer);

  layout_.FormatAndAppend(out, EventWith("disk full"));

  EXPECT_EQ("2024-03-05T14:07:09 |ERR", buffer.text);
  EXPECT_TRUE(out.bad());
}

TEST_F(LogLayoutStandardTest, LetsTheStreamsExceptionPass) {
  ShortBuffer buffer(24);
  std::ostream out(&buffer);
  out.exceptions(std::ios_base::badbit);

  EXPECT_THROW(layout_.FormatAndAppend(out, EventWith("disk full")), std::ios_base::failure);

  EXPECT_EQ("2024-03-05T14:07:09 |ERR", buffer.text);
}

TEST_F(LogLayoutStandardTest, WritesNothingToAStreamThatHasFailed) {
  std::ostringstream out;
  out.setstate(std::ios_base::failbit);

  layout_.FormatAndAppend(out, EventWith("disk full"));

  EXPECT_EQ("", out.str());
  EXPECT_EQ(std::ios_base::failbit, out.rdstate());
}

TEST_F(LogLayoutStandardTest, ServesSeveralThreadsWithStreamsOfTheirOwn) {
  constexpr int kThreads = 4;
  constexpr int kEvents = 200;
  std::vector<std::ostringstream> outs(kThreads);

  std::vector<std::thread> threads;
  for (std::ostringstream& out : outs) {
    threads.emplace_back([&] {
      for (int i = 0; i < kEvents; ++i) layout_.FormatAndAppend(out, EventWith("disk full"));
    });
  }
  for (std::thread& thread : threads) thread.join();

  std::string expected;
  for (int i = 0; i < kEvents; ++i) expected += "2024-03-05T14:07:09 |ERROR| disk full\n";
  for (const std::ostringstream& out : outs) EXPECT_EQ(expected, out.str());
}

}  // namespace

#include "LogLayoutExtended.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <ostream>
#include <sstream>
#include <string>

#include "LogClientFile.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Events.h"
#include "Support/Layouts.h"
#include "Support/TemporaryFolder.h"
#include "Support/TimeZone.h"

namespace {

LogEvent EventFrom(const std::string& fileName, int line) {
  return LogEvent(1, "disk full", "handler", fileName, line, timeval{1709647629, 42}, 7);
}

class LogLayoutExtendedTest : public testing::Test {
 protected:
  LogLayoutExtendedTest() {
    SetTimeZone("UTC0");
    Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  }

  LogLayoutExtended layout_;
};

TEST_F(LogLayoutExtendedTest, WritesTimeLevelPositionAndMessage) {
  EXPECT_EQ("2024-03-05T14:07:09 |ERROR| main.cpp 42 disk full\n",
            Formatted(layout_, EventFrom("main.cpp", 42)));
}

TEST_F(LogLayoutExtendedTest, WritesTheFileNameBehindTheLastBackslash) {
  EXPECT_EQ("2024-03-05T14:07:09 |ERROR| main.cpp 42 disk full\n",
            Formatted(layout_, EventFrom("C:\\src\\main.cpp", 42)));
}

TEST_F(LogLayoutExtendedTest, WritesAFileNameWithSlashesWhole) {
  EXPECT_EQ("2024-03-05T14:07:09 |ERROR| src/main.cpp 42 disk full\n",
            Formatted(layout_, EventFrom("src/main.cpp", 42)));
}

TEST_F(LogLayoutExtendedTest, WritesAnEventWithoutPosition) {
  EXPECT_EQ("2024-03-05T14:07:09 |ERROR|  0 disk full\n", Formatted(layout_, EventFrom("", 0)));
}

TEST_F(LogLayoutExtendedTest, WritesTheLineAsASignedNumber) {
  EXPECT_EQ("2024-03-05T14:07:09 |ERROR| a 2147483647 disk full\n",
            Formatted(layout_, EventFrom("a", 2147483647)));
  EXPECT_EQ("2024-03-05T14:07:09 |ERROR| a -1 disk full\n", Formatted(layout_, EventFrom("a", -1)));
}

TEST_F(LogLayoutExtendedTest, WritesTheLineInTheStreamsBase) {
  std::ostringstream out;

  out << std::hex;
  layout_.FormatAndAppend(out, EventFrom("a", 42));
  layout_.FormatAndAppend(out, EventFrom("a", -1));
  out << std::oct;
  layout_.FormatAndAppend(out, EventFrom("a", 42));

  EXPECT_EQ(
      "2024-03-05T14:07:09 |ERROR| a 2a disk full\n"
      "2024-03-05T14:07:09 |ERROR| a ffffffff disk full\n"
      "2024-03-05T14:07:09 |ERROR| a 52 disk full\n",
      out.str());
}

TEST_F(LogLayoutExtendedTest, KeepsTheTrailingBlankOfAnEmptyMessage) {
  EXPECT_EQ("2024-03-05T14:07:09 |ERROR| file.cpp 42 \n", Formatted(layout_, EventWith("")));
}

TEST_F(LogLayoutExtendedTest, LeavesTheMessageAsItIs) {
  const std::string message("a\n\n\"b\" \\ <c>\t%s\0\xff", 18);

  EXPECT_EQ("2024-03-05T14:07:09 |ERROR| file.cpp 42 " + message + "\n",
            Formatted(layout_, EventWith(message)));
}

TEST_F(LogLayoutExtendedTest, WritesNoNameForALevelThatIsNotRegistered) {
  EXPECT_EQ("2024-03-05T14:07:09 || file.cpp 42 disk full\n",
            Formatted(layout_, EventWith("disk full", 99)));
}

TEST_F(LogLayoutExtendedTest, AppliesTheStreamsWidthToTheTimeOnly) {
  std::ostringstream out;
  out << std::setw(22) << std::setfill('.');

  layout_.FormatAndAppend(out, EventFrom("main.cpp", 7));

  EXPECT_EQ("...2024-03-05T14:07:09 |ERROR| main.cpp 7 disk full\n", out.str());
}

TEST_F(LogLayoutExtendedTest, KeepsTheTimeWhenTheStreamLogsAnEventItself) {
  const TemporaryFolder folder;
  LogClientFile file(folder.Path("app.log"), true);
  LogHandler handler("net");
  handler.AddLogClient(&file);
  CallingBuffer buffer([&] { handler.Log(1, "sending"); });
  std::ostream out(&buffer);

  layout_.FormatAndAppend(out, EventFrom("main.cpp", 42));

  EXPECT_EQ("2024-03-05T14:07:09 |ERROR| main.cpp 42 disk full\n", buffer.str());
}

TEST_F(LogLayoutExtendedTest, DoesNotFlush) {
  FlushCounter buffer;
  std::ostream out(&buffer);

  layout_.FormatAndAppend(out, EventFrom("main.cpp", 42));

  EXPECT_EQ("2024-03-05T14:07:09 |ERROR| main.cpp 42 disk full\n", buffer.str());
  EXPECT_EQ(0, buffer.flushes);
}

TEST_F(LogLayoutExtendedTest, LeavesErrorsInTheStreamsState) {
  ShortBuffer buffer(32);
  std::ostream out(&buffer);

  layout_.FormatAndAppend(out, EventFrom("main.cpp", 42));

  EXPECT_EQ("2024-03-05T14:07:09 |ERROR| main", buffer.text);
  EXPECT_TRUE(out.bad());
}

}  // namespace

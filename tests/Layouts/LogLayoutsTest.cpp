// The output of the four built-in layouts.

#include <gtest/gtest.h>

#include <iomanip>
#include <memory>
#include <ostream>
#include <sstream>
#include <string>

#include "LogClientFile.h"
#include "LogHandler.h"
#include "LogLayoutFactory.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Events.h"
#include "Support/Layouts.h"
#include "Support/TemporaryFolder.h"
#include "Support/Threads.h"
#include "Support/TimeZone.h"

namespace {

std::unique_ptr<LogLayout> Layout(const std::string& name) {
  return std::unique_ptr<LogLayout>(
      Logger::GetLogManager()->GetLogLayoutFactory()->CreateLogLayout(name));
}

LogEvent EventFrom(const std::string& fileName, int line) {
  return LogEvent(1, "disk full", "handler", fileName, line, timeval{1709647629, 42}, 7);
}

struct Case {
  const char* layout;
  std::string before;         ///< The text before the message of an event of level 1.
  std::string beforeUnnamed;  ///< The same for a level without a name.
  std::string widened;        ///< The line with a width of 22; the message is "disk full".

  friend std::ostream& operator<<(std::ostream& out, const Case& row) { return out << row.layout; }
};

class LogLayoutsTest : public testing::TestWithParam<Case> {
 protected:
  LogLayoutsTest() {
    SetTimeZone("UTC0");
    Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  }

  const std::unique_ptr<LogLayout> layout_ = Layout(GetParam().layout);
  const std::string line_ = GetParam().before + "disk full\n";
};

INSTANTIATE_TEST_SUITE_P(
    , LogLayoutsTest,
    testing::Values(Case{"LogLayoutMessage", "", "", ".............disk full\n"},
                    Case{"LogLayoutSimple", "ERROR - ", " - ",
                         ".................ERROR - disk full\n"},
                    Case{"LogLayoutStandard", "2024-03-05T14:07:09 |ERROR| ",
                         "2024-03-05T14:07:09 || ", "...2024-03-05T14:07:09 |ERROR| disk full\n"},
                    Case{"LogLayoutExtended", "2024-03-05T14:07:09 |ERROR| file.cpp 42 ",
                         "2024-03-05T14:07:09 || file.cpp 42 ",
                         "...2024-03-05T14:07:09 |ERROR| file.cpp 42 disk full\n"}));

TEST_P(LogLayoutsTest, WriteTheirPiecesAndTheMessageAsItIs) {
  for (const std::string& message :
       {std::string("disk full"), std::string(), std::string("a\n\n\"b\" \\ <c>\t%s\0\xff", 18)}) {
    EXPECT_EQ(GetParam().before + message + "\n", Formatted(*layout_, EventWith(message)));
    EXPECT_EQ(GetParam().beforeUnnamed + message + "\n",
              Formatted(*layout_, EventWith(message, 99)));
  }
}

TEST_P(LogLayoutsTest, ApplyTheStreamsWidthToTheFirstPieceOnly) {
  std::ostringstream out;
  out << std::setw(22) << std::setfill('.');

  layout_->FormatAndAppend(out, EventWith("disk full"));
  layout_->FormatAndAppend(out, EventWith("disk full"));

  EXPECT_EQ(GetParam().widened + line_, out.str());
}

TEST_P(LogLayoutsTest, KeepTheTimeWhenTheStreamLogsAnEventItself) {
  const TemporaryFolder folder;
  LogClientFile file(folder.Path("app.log"), true);
  LogHandler handler("net");
  handler.AddLogClient(&file);
  CallingBuffer buffer([&] { handler.Log(1, "sending"); });
  std::ostream out(&buffer);

  layout_->FormatAndAppend(out, EventWith("disk full"));

  EXPECT_EQ(line_, buffer.str());
}

TEST_P(LogLayoutsTest, DoNotFlush) {
  FlushCounter buffer;
  std::ostream out(&buffer);

  layout_->FormatAndAppend(out, EventWith("disk full"));

  EXPECT_EQ(line_, buffer.str());
  EXPECT_EQ(0, buffer.flushes);
}

TEST_P(LogLayoutsTest, LeaveErrorsToTheStream) {
  for (std::size_t room = 0; room < line_.size(); ++room) {
    ShortBuffer buffer(room);
    std::ostream out(&buffer);
    layout_->FormatAndAppend(out, EventWith("disk full"));
    EXPECT_EQ(line_.substr(0, room), buffer.text);
    EXPECT_TRUE(out.bad());

    ShortBuffer throwing(room);
    std::ostream strict(&throwing);
    strict.exceptions(std::ios_base::badbit);
    EXPECT_THROW(layout_->FormatAndAppend(strict, EventWith("disk full")), std::ios_base::failure);
    EXPECT_EQ(line_.substr(0, room), throwing.text);
  }
}

TEST_P(LogLayoutsTest, WriteNothingToAStreamThatHasFailed) {
  std::ostringstream out;
  out.setstate(std::ios_base::failbit);

  layout_->FormatAndAppend(out, EventWith("disk full"));

  EXPECT_EQ("", out.str());
  EXPECT_EQ(std::ios_base::failbit, out.rdstate());
}

TEST_P(LogLayoutsTest, ServeSeveralThreadsWithStreamsOfTheirOwn) {
  constexpr int kEvents = 200;
  std::ostringstream outs[4];

  RunInThreads(4, [&](int thread) {
    for (int i = 0; i < kEvents; ++i) {
      layout_->FormatAndAppend(outs[thread], EventWith("disk full"));
    }
  });

  std::string expected;
  for (int i = 0; i < kEvents; ++i) expected += line_;
  for (const std::ostringstream& out : outs) EXPECT_EQ(expected, out.str());
}

TEST(LogLayoutSimpleTest, WritesTheNameThatTheLevelHasAtTheTime) {
  const LogEvent event = EventWith("disk full", 98);
  Logger::GetLogLevelManager()->AddLogLevel(98, "a - b");

  EXPECT_EQ("a - b - disk full\n", Formatted(*Layout("LogLayoutSimple"), event));
}

TEST(LogLayoutStandardTest, WritesTheLocalTime) {
  SetTimeZone("EAST-5:30");

  EXPECT_EQ("2024-03-05T19:37:09 || disk full\n",
            Formatted(*Layout("LogLayoutStandard"), EventWith("disk full")));
}

TEST(LogLayoutExtendedTest, WritesTheSourcePosition) {
  SetTimeZone("UTC0");
  const struct {
    LogEvent event;
    std::string position;
  } rows[] = {
      {EventFrom("main.cpp", 42), "main.cpp 42"},
      {EventFrom("C:\\src\\main.cpp", 42), "main.cpp 42"},
      {EventFrom("src/main.cpp", 42), "src/main.cpp 42"},
      {EventFrom("", 0), " 0"},
      {EventFrom("a", 2147483647), "a 2147483647"},
      {EventFrom("a", -1), "a -1"},
  };
  for (const auto& row : rows) {
    EXPECT_EQ("2024-03-05T14:07:09 || " + row.position + " disk full\n",
              Formatted(*Layout("LogLayoutExtended"), row.event));
  }
}

TEST(LogLayoutExtendedTest, WritesTheLineInTheStreamsBase) {
  SetTimeZone("UTC0");
  const auto layout = Layout("LogLayoutExtended");
  std::ostringstream out;

  out << std::hex;
  layout->FormatAndAppend(out, EventFrom("a", 42));
  layout->FormatAndAppend(out, EventFrom("a", -1));
  out << std::oct;
  layout->FormatAndAppend(out, EventFrom("a", 42));

  EXPECT_EQ(
      "2024-03-05T14:07:09 || a 2a disk full\n"
      "2024-03-05T14:07:09 || a ffffffff disk full\n"
      "2024-03-05T14:07:09 || a 52 disk full\n",
      out.str());
}

}  // namespace

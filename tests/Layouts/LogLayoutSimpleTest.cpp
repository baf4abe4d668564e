#include "LogLayoutSimple.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <ostream>
#include <sstream>
#include <string>

#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Events.h"
#include "Support/Layouts.h"

namespace {

class LogLayoutSimpleTest : public testing::Test {
 protected:
  LogLayoutSimpleTest() { Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR"); }

  LogLayoutSimple layout_;
};

TEST_F(LogLayoutSimpleTest, WritesLevelAndMessage) {
  EXPECT_EQ("ERROR - disk full\n", Formatted(layout_, EventWith("disk full")));
}

TEST_F(LogLayoutSimpleTest, KeepsTheTrailingBlankOfAnEmptyMessage) {
  EXPECT_EQ("ERROR - \n", Formatted(layout_, EventWith("")));
}

TEST_F(LogLayoutSimpleTest, LeavesTheMessageAsItIs) {
  const std::string message("a\n\n\"b\" \\ <c>\t%s\0\xff", 18);

  EXPECT_EQ("ERROR - " + message + "\n", Formatted(layout_, EventWith(message)));
}

TEST_F(LogLayoutSimpleTest, WritesNoNameForALevelThatIsNotRegistered) {
  EXPECT_EQ(" - disk full\n", Formatted(layout_, EventWith("disk full", 99)));
}

TEST_F(LogLayoutSimpleTest, WritesTheNameThatTheLevelHasAtTheTime) {
  const LogEvent event = EventWith("disk full", 98);
  Logger::GetLogLevelManager()->AddLogLevel(98, "a - b");

  EXPECT_EQ("a - b - disk full\n", Formatted(layout_, event));
}

TEST_F(LogLayoutSimpleTest, AppliesTheStreamsWidthToTheLevelOnly) {
  std::ostringstream out;
  out << std::left << std::setw(8) << std::setfill('.');

  layout_.FormatAndAppend(out, EventWith("disk full"));
  layout_.FormatAndAppend(out, EventWith("again"));

  EXPECT_EQ("ERROR... - disk full\nERROR - again\n", out.str());
}

TEST_F(LogLayoutSimpleTest, DoesNotFlush) {
  FlushCounter buffer;
  std::ostream out(&buffer);

  layout_.FormatAndAppend(out, EventWith("disk full"));

  EXPECT_EQ("ERROR - disk full\n", buffer.str());
  EXPECT_EQ(0, buffer.flushes);
}

TEST_F(LogLayoutSimpleTest, LeavesErrorsInTheStreamsState) {
  ShortBuffer buffer(6);
  std::ostream out(&buffer);

  layout_.FormatAndAppend(out, EventWith("disk full"));

  EXPECT_EQ("ERROR ", buffer.text);
  EXPECT_TRUE(out.bad());
}

TEST_F(LogLayoutSimpleTest, WritesNothingToAStreamThatHasFailed) {
  std::ostringstream out;
  out.setstate(std::ios_base::failbit);

  layout_.FormatAndAppend(out, EventWith("disk full"));

  EXPECT_EQ("", out.str());
  EXPECT_EQ(std::ios_base::failbit, out.rdstate());
}

}  // namespace

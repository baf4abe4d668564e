#include "LogLayoutMessage.h"

#include <gtest/gtest.h>

#include <iomanip>
#include <ostream>
#include <sstream>
#include <string>

#include "Support/Events.h"
#include "Support/Layouts.h"

namespace {

TEST(LogLayoutMessageTest, WritesTheMessageAndALineFeed) {
  LogLayoutMessage layout;

  EXPECT_EQ("disk full\n", Formatted(layout, EventWith("disk full")));
}

TEST(LogLayoutMessageTest, WritesALineFeedForAnEmptyMessage) {
  LogLayoutMessage layout;

  EXPECT_EQ("\n", Formatted(layout, EventWith("")));
}

TEST(LogLayoutMessageTest, LeavesTheMessageAsItIs) {
  const std::string message("a\n\n\"b\" \\ <c>\t%s\0\xff", 18);
  LogLayoutMessage layout;

  EXPECT_EQ(message + "\n", Formatted(layout, EventWith(message)));
}

TEST(LogLayoutMessageTest, WritesOneEventAfterTheOther) {
  LogLayoutMessage layout;
  std::ostringstream out;

  layout.FormatAndAppend(out, EventWith("one"));
  layout.FormatAndAppend(out, EventWith("two"));

  EXPECT_EQ("one\ntwo\n", out.str());
}

TEST(LogLayoutMessageTest, AppliesTheStreamsWidthToTheMessageOnly) {
  LogLayoutMessage layout;
  std::ostringstream out;
  out << std::setw(12) << std::setfill('.');

  layout.FormatAndAppend(out, EventWith("disk full"));
  layout.FormatAndAppend(out, EventWith("again"));

  EXPECT_EQ("...disk full\nagain\n", out.str());
}

TEST(LogLayoutMessageTest, DoesNotFlush) {
  LogLayoutMessage layout;
  FlushCounter buffer;
  std::ostream out(&buffer);

  layout.FormatAndAppend(out, EventWith("disk full"));

  EXPECT_EQ("disk full\n", buffer.str());
  EXPECT_EQ(0, buffer.flushes);
}

TEST(LogLayoutMessageTest, LeavesErrorsInTheStreamsState) {
  LogLayoutMessage layout;
  ShortBuffer buffer(9);
  std::ostream out(&buffer);

  layout.FormatAndAppend(out, EventWith("disk full"));

  EXPECT_EQ("disk full", buffer.text);
  EXPECT_TRUE(out.bad());
}

TEST(LogLayoutMessageTest, WritesNothingToAStreamThatHasFailed) {
  LogLayoutMessage layout;
  std::ostringstream out;
  out.setstate(std::ios_base::failbit);

  layout.FormatAndAppend(out, EventWith("disk full"));

  EXPECT_EQ("", out.str());
  EXPECT_EQ(std::ios_base::failbit, out.rdstate());
}

}  // namespace

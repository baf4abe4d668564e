#include "LogLevel.h"

#include <gtest/gtest.h>

namespace {

TEST(LogLevelTest, KeepsItsNumberAndItsName) {
  const LogLevel level(3, "WARNING");

  EXPECT_EQ(3U, level.GetLogLevel());
  EXPECT_EQ("WARNING", level.GetLogLevelName());
}

TEST(LogLevelTest, TakesTheSmallestAndTheLargestNumber) {
  EXPECT_EQ(0U, LogLevel(0, "none").GetLogLevel());
  EXPECT_EQ(4294967295U, LogLevel(4294967295U, "all").GetLogLevel());
}

TEST(LogLevelTest, MayHaveAnEmptyName) { EXPECT_EQ("", LogLevel(3, "").GetLogLevelName()); }

TEST(LogLevelTest, GivesItsNameAsACopy) {
  const LogLevel level(3, "WARNING");

  level.GetLogLevelName().clear();

  EXPECT_EQ("WARNING", level.GetLogLevelName());
}

TEST(LogLevelTest, IsCopiedWithBothFields) {
  const LogLevel level(3, "WARNING");

  const LogLevel copy(level);

  EXPECT_EQ(3U, copy.GetLogLevel());
  EXPECT_EQ("WARNING", copy.GetLogLevelName());
}

TEST(LogLevelTest, IsAssignedBothFields) {
  const LogLevel level(3, "WARNING");
  LogLevel other(1, "ERROR");

  LogLevel& result = other = level;

  EXPECT_EQ(&other, &result);
  EXPECT_EQ(3U, other.GetLogLevel());
  EXPECT_EQ("WARNING", other.GetLogLevelName());
  EXPECT_EQ(3U, level.GetLogLevel());
  EXPECT_EQ("WARNING", level.GetLogLevelName());
}

TEST(LogLevelTest, StaysAsItIsWhenAssignedToItself) {
  LogLevel level(3, "WARNING");
  const LogLevel& same = level;

  LogLevel& result = level = same;

  EXPECT_EQ(&level, &result);
  EXPECT_EQ(3U, level.GetLogLevel());
  EXPECT_EQ("WARNING", level.GetLogLevelName());
}

TEST(LogLevelTest, TakesBothFieldsByAssign) {
  const LogLevel level(3, "WARNING");
  LogLevel other(1, "ERROR");

  other.Assign(level);

  EXPECT_EQ(3U, other.GetLogLevel());
  EXPECT_EQ("WARNING", other.GetLogLevelName());
}

TEST(LogLevelTest, IsIndependentOfItsCopy) {
  LogLevel level(3, "WARNING");
  const LogLevel copy(level);

  level = LogLevel(1, "ERROR");

  EXPECT_EQ(3U, copy.GetLogLevel());
  EXPECT_EQ("WARNING", copy.GetLogLevelName());
}

}  // namespace

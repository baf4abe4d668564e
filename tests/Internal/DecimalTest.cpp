#include "Internal/Decimal.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using Logger::Internal::ParseDecimal;

TEST(DecimalTest, ReadsDigits) {
  EXPECT_EQ(0, ParseDecimal("0"));
  EXPECT_EQ(7, ParseDecimal("7"));
  EXPECT_EQ(1234567890, ParseDecimal("1234567890"));
}

TEST(DecimalTest, ReadsASign) {
  EXPECT_EQ(-42, ParseDecimal("-42"));
  EXPECT_EQ(42, ParseDecimal("+42"));
  EXPECT_EQ(0, ParseDecimal("-0"));
}

TEST(DecimalTest, SkipsLeadingBlanks) {
  EXPECT_EQ(42, ParseDecimal("  42"));
  EXPECT_EQ(-42, ParseDecimal(" \t\n\v\f\r-42"));
}

TEST(DecimalTest, StopsAtTheFirstOtherCharacter) {
  EXPECT_EQ(42, ParseDecimal("42 "));
  EXPECT_EQ(42, ParseDecimal("42kB"));
  EXPECT_EQ(4, ParseDecimal("4 2"));
  EXPECT_EQ(1, ParseDecimal("1.9"));
  EXPECT_EQ(1, ParseDecimal("1e3"));
  EXPECT_EQ(4, ParseDecimal(std::string("4\0002", 3)));
}

TEST(DecimalTest, IsAlwaysDecimal) {
  EXPECT_EQ(0, ParseDecimal("0x1F"));
  EXPECT_EQ(10, ParseDecimal("010"));
}

TEST(DecimalTest, IsZeroWithoutDigits) {
  EXPECT_EQ(0, ParseDecimal(""));
  EXPECT_EQ(0, ParseDecimal("   "));
  EXPECT_EQ(0, ParseDecimal("-"));
  EXPECT_EQ(0, ParseDecimal("x42"));
  EXPECT_EQ(0, ParseDecimal("- 42"));
  EXPECT_EQ(0, ParseDecimal("--42"));
  EXPECT_EQ(0, ParseDecimal("+-42"));
}

TEST(DecimalTest, StaysAtTheLargestNumber) {
  EXPECT_EQ(2147483646, ParseDecimal("2147483646"));
  EXPECT_EQ(2147483647, ParseDecimal("2147483647"));
  EXPECT_EQ(2147483647, ParseDecimal("2147483648"));
  EXPECT_EQ(2147483647, ParseDecimal("4294967296"));
  EXPECT_EQ(2147483647, ParseDecimal("9223372036854775808"));
  EXPECT_EQ(2147483647, ParseDecimal(std::string(1000, '9')));
}

TEST(DecimalTest, StaysAtTheSmallestNumber) {
  EXPECT_EQ(-2147483647, ParseDecimal("-2147483647"));
  EXPECT_EQ(-2147483647 - 1, ParseDecimal("-2147483648"));
  EXPECT_EQ(-2147483647 - 1, ParseDecimal("-2147483649"));
  EXPECT_EQ(-2147483647 - 1, ParseDecimal("-9223372036854775809"));
  EXPECT_EQ(-2147483647 - 1, ParseDecimal("-" + std::string(1000, '9')));
}

}  // namespace

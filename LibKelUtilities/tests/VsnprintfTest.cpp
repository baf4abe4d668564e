#include "LibKelUtilities/Vsnprintf.h"

#include <gtest/gtest.h>

#include <array>
#include <string>

namespace {

/// The result of one call on a buffer of ten x.
struct Formatted {
  int length;
  std::string buffer;
};

__attribute__((format(printf, 2, 3))) Formatted Format(unsigned int size, const char* format, ...) {
  Formatted result{0, std::string(10, 'x')};
  va_list arguments;
  va_start(arguments, format);
  result.length = LibKelUtilities::Vsnprintf(result.buffer.data(), size, format, arguments);
  va_end(arguments);
  return result;
}

__attribute__((format(printf, 1, 2))) int Measure(const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  const int length = LibKelUtilities::Vsnprintf(nullptr, 0, format, arguments);
  va_end(arguments);
  return length;
}

TEST(VsnprintfTest, FormatsATextWithRoomToSpare) {
  const Formatted result = Format(10, "%d %s", 42, "abc");

  EXPECT_EQ(6, result.length);
  EXPECT_EQ(std::string("42 abc\0xxx", 10), result.buffer);
}

TEST(VsnprintfTest, FormatsATextThatJustFits) {
  const Formatted result = Format(7, "%d %s", 42, "abc");

  EXPECT_EQ(6, result.length);
  EXPECT_EQ(std::string("42 abc\0xxx", 10), result.buffer);
}

TEST(VsnprintfTest, CutsATextThatIsOneTooLongAndReturnsItsLength) {
  const Formatted result = Format(6, "%d %s", 42, "abc");

  EXPECT_EQ(6, result.length);
  EXPECT_EQ(std::string("42 ab\0xxxx", 10), result.buffer);
}

TEST(VsnprintfTest, CutsALongTextAndReturnsItsLength) {
  const Formatted result = Format(4, "%05000d", 7);

  EXPECT_EQ(5000, result.length);
  EXPECT_EQ(std::string("000\0xxxxxx", 10), result.buffer);
}

TEST(VsnprintfTest, TerminatesABufferOfOneByte) {
  const Formatted result = Format(1, "%s", "abc");

  EXPECT_EQ(3, result.length);
  EXPECT_EQ(std::string("\0xxxxxxxxx", 10), result.buffer);
}

TEST(VsnprintfTest, WritesNothingToABufferOfNoSize) {
  const Formatted result = Format(0, "%s", "abc");

  EXPECT_EQ(3, result.length);
  EXPECT_EQ("xxxxxxxxxx", result.buffer);
}

TEST(VsnprintfTest, MeasuresWithoutABuffer) { EXPECT_EQ(6, Measure("%d %s", 42, "abc")); }

TEST(VsnprintfTest, FormatsAnEmptyText) {
  const Formatted result = Format(10, "%s", "");

  EXPECT_EQ(0, result.length);
  EXPECT_EQ(std::string("\0xxxxxxxxx", 10), result.buffer);
}

TEST(VsnprintfTest, IsNegativeForAFailedConversion) {
  const std::array<wchar_t, 2> noCharacter{static_cast<wchar_t>(0x7FFFFFFF), L'\0'};

  EXPECT_EQ(-1, Format(10, "%ls", noCharacter.data()).length);
}

}  // namespace

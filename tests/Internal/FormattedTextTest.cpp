#include "Internal/FormattedText.h"

#include <gtest/gtest.h>

#include <cerrno>
#include <cstdarg>
#include <memory>
#include <string>

namespace {

using Logger::Internal::FormattedText;

__attribute__((format(printf, 1, 2))) std::unique_ptr<FormattedText> Format(const char* format,
                                                                            ...) {
  va_list arguments;
  va_start(arguments, format);
  std::unique_ptr<FormattedText> text(new FormattedText(format, arguments));
  va_end(arguments);
  return text;
}

TEST(FormattedTextTest, FormatsItsArguments) {
  const auto text = Format("%s %d", "answer", 42);

  EXPECT_STREQ("answer 42", text->Text());
  EXPECT_EQ(9U, text->Length());
}

TEST(FormattedTextTest, MayBeEmpty) {
  const auto text = Format("%s", "");

  EXPECT_STREQ("", text->Text());
  EXPECT_EQ(0U, text->Length());
}

TEST(FormattedTextTest, HasRoomForAnyLength) {
  for (const std::size_t length :
       {4093U, 4094U, 4095U, 4096U, 4097U, 8190U, 8191U, 8192U, 8193U, 10000U, 100000U}) {
    SCOPED_TRACE(length);
    const std::string expected(length, 'x');

    const auto text = Format("%s", expected.c_str());

    EXPECT_EQ(expected, text->Text());
    EXPECT_EQ(length, text->Length());
  }
}

TEST(FormattedTextTest, CountsZeroBytesWithinIt) {
  const auto text = Format("a%cb", '\0');

  ASSERT_EQ(3U, text->Length());
  EXPECT_EQ(std::string("a\0b", 4), std::string(text->Text(), 4));
}

TEST(FormattedTextTest, FormatsErrnoAsItWasInEveryPass) {
  // Standard C++ does not know %m: the compiler must not check the format.
  std::unique_ptr<FormattedText> (*const formatUnchecked)(const char*, ...) = Format;
  const std::string filling(10000, 'x');
  errno = ENOENT;

  const auto text = formatUnchecked("%s: %m", filling.c_str());

  EXPECT_EQ(filling + ": No such file or directory", text->Text());
}

TEST(FormattedTextTest, IsCompleteWithTwoBytesToSpare) {
  EXPECT_EQ(FormattedText::kComplete, FormattedText::NextCapacity(0, 4096));
  EXPECT_EQ(FormattedText::kComplete, FormattedText::NextCapacity(4094, 4096));
  EXPECT_EQ(FormattedText::kComplete, FormattedText::NextCapacity(8190, 8192));
  EXPECT_EQ(FormattedText::kComplete, FormattedText::NextCapacity(10000, 10002));
}

TEST(FormattedTextTest, IsNotTrustedWhenItFillsTheBufferExactly) {
  EXPECT_EQ(8192U, FormattedText::NextCapacity(4095, 4096));
  EXPECT_EQ(16384U, FormattedText::NextCapacity(8191, 8192));
  EXPECT_EQ(20004U, FormattedText::NextCapacity(10001, 10002));
}

TEST(FormattedTextTest, DoublesWhenTheLengthEqualsTheCapacity) {
  EXPECT_EQ(8192U, FormattedText::NextCapacity(4096, 4096));
  EXPECT_EQ(16384U, FormattedText::NextCapacity(8192, 8192));
}

TEST(FormattedTextTest, TakesTheNeededLengthAndTwoMore) {
  EXPECT_EQ(4099U, FormattedText::NextCapacity(4097, 4096));
  EXPECT_EQ(10002U, FormattedText::NextCapacity(10000, 4096));
  EXPECT_EQ(2147483649U, FormattedText::NextCapacity(2147483647, 4096));
}

TEST(FormattedTextTest, DoublesUntilItFitsWhenTheNeededLengthIsNotReturned) {
  EXPECT_EQ(8192U, FormattedText::NextCapacity(-1, 4096));
  EXPECT_EQ(16384U, FormattedText::NextCapacity(-1, 8192));
  EXPECT_EQ(8192U, FormattedText::NextCapacity(-2, 4096));
  EXPECT_EQ(FormattedText::kComplete, FormattedText::NextCapacity(10000, 16384));
}

}  // namespace

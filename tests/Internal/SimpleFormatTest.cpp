#include "Internal/SimpleFormat.h"

#include <gtest/gtest.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

// The formats here are made at run time.
#pragma GCC diagnostic ignored "-Wformat-nonliteral"
#pragma GCC diagnostic ignored "-Wformat-security"

namespace {

using Logger::Internal::FormatSimply;

/// The results of both ways for the same format and arguments, in a buffer of some size.
struct Outcome {
  bool isSimple;
  std::string simple;
  std::string printed;
};

Outcome Format(std::size_t size, const char* format, ...) {
  std::vector<char> buffer(size);
  std::size_t length = 0;
  va_list arguments;
  va_start(arguments, format);
  const bool isSimple = FormatSimply(buffer.data(), size, format, arguments, length);
  va_end(arguments);
  Outcome outcome{isSimple, "", ""};
  if (isSimple) {
    EXPECT_EQ('\0', buffer.at(length));
    outcome.simple.assign(buffer.data(), length);
  }

  std::vector<char> printed(4096);
  va_start(arguments, format);
  const int count = vsnprintf(printed.data(), printed.size(), format, arguments);
  va_end(arguments);
  outcome.printed.assign(printed.data(), static_cast<std::size_t>(count));
  return outcome;
}

TEST(SimpleFormatTest, FormatsWhatMostMessagesConsistOf) {
  const Outcome outcome = Format(200, "%s: %d%% of %u, %ld %lu %lld %llu %zu %x %c", "text", -5, 5U,
                                 -6L, 6UL, -7LL, 7ULL, std::size_t{8}, 255, 'c');

  EXPECT_TRUE(outcome.isSimple);
  EXPECT_EQ("text: -5% of 5, -6 6 -7 7 8 ff c", outcome.simple);
}

TEST(SimpleFormatTest, LeavesEverythingElseToPrintf) {
  for (const char* const format :
       {"%5d", "%-d", "%+d", "% d", "%05d", "%.3d", "%#x", "%'d",  "%*d", "%hd", "%hhd",
        "%jd", "%td", "%X",  "%o",  "%lo",  "%llo", "%zo", "%1$d", "%",   "%l"}) {
    char buffer[100];
    std::size_t length = 0;
    const auto isSimple = [&](const char* text, ...) {
      va_list arguments;
      va_start(arguments, text);
      const bool result = FormatSimply(buffer, sizeof buffer, text, arguments, length);
      va_end(arguments);
      return result;
    };
    EXPECT_FALSE(isSimple(format, 1, 2)) << format;
  }
  EXPECT_FALSE(Format(100, "%f", 1.5).isSimple);
  EXPECT_FALSE(Format(100, "%p", static_cast<void*>(nullptr)).isSimple);
  EXPECT_FALSE(Format(100, "%ls", L"wide").isSimple);
  EXPECT_FALSE(Format(100, "%lc", L'w').isSimple);
  EXPECT_FALSE(Format(100, "%s", static_cast<const char*>(nullptr)).isSimple);
  EXPECT_FALSE(Format(100, "%m").isSimple);
}

TEST(SimpleFormatTest, KeepsRoomForTheTerminator) {
  EXPECT_TRUE(Format(6, "%s", "12345").isSimple);
  EXPECT_FALSE(Format(5, "%s", "12345").isSimple);
  EXPECT_TRUE(Format(6, "%d", 12345).isSimple);
  EXPECT_FALSE(Format(5, "%d", 12345).isSimple);
  EXPECT_TRUE(Format(6, "12345").isSimple);
  EXPECT_FALSE(Format(5, "12345").isSimple);
  EXPECT_FALSE(Format(1, "%c", 'x').isSimple);
  EXPECT_TRUE(Format(1, "%s", "").isSimple);
}

TEST(SimpleFormatTest, WritesAZeroByteThatIsACharacter) {
  const Outcome outcome = Format(100, "a%cb", '\0');

  EXPECT_TRUE(outcome.isSimple);
  EXPECT_EQ(std::string("a\0b", 3), outcome.simple);
}

/// Makes random formats with fitting arguments, and compares the two ways.
class RandomFormats {
 public:
  explicit RandomFormats(unsigned int seed) : random_(seed) {}

  void RunOne() {
    Run(Literal(), static_cast<int>(Below(4)));
    ++tried;
  }

  long tried = 0;
  long simple = 0;

 private:
  std::mt19937 random_;

  std::size_t Below(std::size_t limit) { return random_() % limit; }

  template <typename Value>
  Value Pick(std::initializer_list<Value> values) {
    return *(values.begin() + static_cast<std::ptrdiff_t>(Below(values.size())));
  }

  template <typename Number>
  Number AnyNumber() {
    using Limits = std::numeric_limits<Number>;
    const auto any =
        static_cast<Number>(static_cast<unsigned long long>(random_()) << 32 | random_());
    return Pick<Number>({any, static_cast<Number>(any % 1000), 0, 1, static_cast<Number>(-1),
                         Limits::min(), Limits::max(), 10, 99, 100});
  }

  std::string Literal() {
    static const std::string kBytes = "abc xyz:,.-\t\n\"'\\/0123\xC3\xA4\xFF\x01$#*+";
    std::string text;
    for (std::size_t left = Below(12); left > 0; --left) {
      const bool isPercent = Below(20) == 0;
      text += isPercent ? "%%" : std::string(1, kBytes[Below(kBytes.size())]);
    }
    return text;
  }

  const char* AnyText() {
    static const std::string kLong(300, 'L');
    return Pick<const char*>({"", "a", "text", "%d", "\xC3\xA4\xFF",
                              "a longer text, of 33 bytes in all", kLong.c_str()});
  }

  template <typename... Arguments>
  void Run(const std::string& format, int left, Arguments... arguments) {
    if constexpr (sizeof...(arguments) < 3) {
      if (left > 0) {
        AddConversion(format, left - 1, arguments...);
        return;
      }
    }
    Compare(format, arguments...);
  }

  template <typename... Arguments>
  void AddConversion(const std::string& format, int left, Arguments... arguments) {
    const std::string rest = Literal();
    switch (Below(5)) {
      case 0:
        Run(format +
                Pick<const char*>(
                    {"%d", "%i", "%u", "%x", "%d", "%5d", "%05d", "%+d", "%hd", "%X"}) +
                rest,
            left, arguments..., AnyNumber<int>());
        break;
      case 1:
        Run(format + Pick<const char*>({"%ld", "%li", "%lu", "%lx", "%zd", "%zu", "%zx", "%-9ld"}) +
                rest,
            left, arguments..., AnyNumber<long>());
        break;
      case 2:
        Run(format + Pick<const char*>({"%lld", "%lli", "%llu", "%llx", "%lld", "%.3lld"}) + rest,
            left, arguments..., AnyNumber<long long>());
        break;
      case 3:
        Run(format + Pick<const char*>({"%s", "%s", "%s", "%s", "%7s", "%.2s"}) + rest, left,
            arguments..., AnyText());
        break;
      default:
        Run(format + Pick<const char*>({"%c", "%c", "%3c"}) + rest, left, arguments...,
            static_cast<int>(Below(256)));
    }
  }

  template <typename... Arguments>
  void Compare(const std::string& format, Arguments... arguments) {
    const std::size_t size = Below(4) == 0 ? 1 + Below(60) : 4095;
    const Outcome outcome = Format(size, format.c_str(), arguments...);
    if (!outcome.isSimple) return;
    ++simple;
    ASSERT_EQ(outcome.printed, outcome.simple) << "format: " << format;
  }
};

TEST(SimpleFormatTest, WritesWhatPrintfWritesForAnyFormat) {
  const char* const asked = std::getenv("SIMPLE_FORMAT_ROUNDS");
  const long rounds = asked != nullptr ? std::atol(asked) : 200000;
  RandomFormats formats(4711);

  while (formats.tried < rounds && !HasFailure()) formats.RunOne();

  EXPECT_LT(rounds / 2, formats.simple);  // And most are done by itself.
}

}  // namespace

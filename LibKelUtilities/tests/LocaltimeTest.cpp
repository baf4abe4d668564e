#include "LibKelUtilities/Localtime.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <array>
#include <atomic>
#include <cstring>
#include <limits>
#include <string>

#include "Support/Threads.h"

namespace {

using LibKelUtilities::Localtime;

constexpr long kWinter = 1709647629;  // 2024-03-05T14:07:09 UTC.
constexpr long kSummer = 1720000000;  // 2024-07-03T09:46:40 UTC.

void UseZone(const char* zone) {
  setenv("TZ", zone, 1);
  tzset();
}

std::string Text(const struct tm& time) {
  std::array<char, 64> text{};
  strftime(text.data(), text.size(), "%Y-%m-%dT%H:%M:%S", &time);
  return text.data();
}

/// The local time as text, or "none".
std::string LocalTime(long seconds) {
  struct tm result {};
  return Localtime(&result, &seconds) ? Text(result) : "none";
}

TEST(LocaltimeTest, ConvertsToTheProcessesZone) {
  UseZone("UTC0");
  EXPECT_EQ("2024-03-05T14:07:09", LocalTime(kWinter));
  UseZone("EST5EDT,M3.2.0,M11.1.0");
  EXPECT_EQ("2024-03-05T09:07:09", LocalTime(kWinter));
  UseZone("<+0545>-5:45");
  EXPECT_EQ("2024-03-05T19:52:09", LocalTime(kWinter));
  UseZone("<+14>-14");
  EXPECT_EQ("2024-03-06T04:07:09", LocalTime(kWinter));
}

TEST(LocaltimeTest, FollowsDaylightSavingTime) {
  UseZone("CET-1CEST,M3.5.0,M10.5.0/3");
  struct tm winter {};
  struct tm summer {};

  EXPECT_TRUE(Localtime(&winter, &kWinter));
  EXPECT_TRUE(Localtime(&summer, &kSummer));

  EXPECT_EQ("2024-03-05T15:07:09", Text(winter));
  EXPECT_EQ(0, winter.tm_isdst);
  EXPECT_EQ("2024-07-03T11:46:40", Text(summer));
  EXPECT_EQ(1, summer.tm_isdst);
}

TEST(LocaltimeTest, ChangesToDaylightSavingTimeAtTheVerySecond) {
  UseZone("CET-1CEST,M3.5.0,M10.5.0/3");

  EXPECT_EQ("2024-03-31T01:59:59", LocalTime(1711846799));
  EXPECT_EQ("2024-03-31T03:00:00", LocalTime(1711846800));
}

TEST(LocaltimeTest, FillsInEveryField) {
  UseZone("CET-1CEST,M3.5.0,M10.5.0/3");
  struct tm result {};

  EXPECT_TRUE(Localtime(&result, &kSummer));

  EXPECT_EQ(124, result.tm_year);
  EXPECT_EQ(6, result.tm_mon);
  EXPECT_EQ(3, result.tm_mday);
  EXPECT_EQ(11, result.tm_hour);
  EXPECT_EQ(46, result.tm_min);
  EXPECT_EQ(40, result.tm_sec);
  EXPECT_EQ(3, result.tm_wday);
  EXPECT_EQ(184, result.tm_yday);
  EXPECT_EQ(7200, result.tm_gmtoff);
  EXPECT_STREQ("CEST", result.tm_zone);
}

TEST(LocaltimeTest, ConvertsTimesBeforeAndFarAfterTheEpoch) {
  UseZone("UTC0");

  EXPECT_EQ("1969-12-31T23:59:59", LocalTime(-1));
  EXPECT_EQ("1970-01-01T00:00:00", LocalTime(0));
  EXPECT_EQ("2038-01-19T03:14:08", LocalTime(2147483648));
  EXPECT_EQ("2100-01-01T00:00:00", LocalTime(4102444800));
}

TEST(LocaltimeTest, KeepsTheZoneUntilItIsSetAgain) {
  UseZone("UTC0");
  EXPECT_EQ("2024-03-05T14:07:09", LocalTime(kWinter));

  setenv("TZ", "<+14>-14", 1);
  EXPECT_EQ("2024-03-05T14:07:09", LocalTime(kWinter));

  tzset();
  EXPECT_EQ("2024-03-06T04:07:09", LocalTime(kWinter));
}

TEST(LocaltimeTest, ConvertsUpToTheLastYearThatFits) {
  UseZone("UTC0");
  const long last = 67768036191676799;
  const long first = -67768040609740800;
  struct tm result {};

  EXPECT_TRUE(Localtime(&result, &last));
  EXPECT_EQ(std::numeric_limits<int>::max(), result.tm_year);
  EXPECT_EQ(59, result.tm_sec);
  EXPECT_TRUE(Localtime(&result, &first));
  EXPECT_EQ(std::numeric_limits<int>::min(), result.tm_year);
  EXPECT_EQ(0, result.tm_sec);
}

TEST(LocaltimeTest, LeavesTheResultAloneWhenTheYearDoesNotFit) {
  UseZone("UTC0");
  struct tm untouched {};
  memset(&untouched, 0x5A, sizeof untouched);

  for (const long seconds : {67768036191676800L, -67768040609740801L,
                             std::numeric_limits<long>::max(), std::numeric_limits<long>::min()}) {
    struct tm result;
    memcpy(&result, &untouched, sizeof result);

    EXPECT_FALSE(Localtime(&result, &seconds)) << seconds;

    EXPECT_EQ(0, memcmp(&result, &untouched, sizeof result)) << seconds;
  }
}

TEST(LocaltimeTest, LeavesTheSharedResultOfTheCLibraryAlone) {
  UseZone("UTC0");
  const time_t winter = kWinter;
  const struct tm* const shared = localtime(&winter);
  struct tm own {};

  EXPECT_TRUE(Localtime(&own, &kSummer));

  EXPECT_EQ("2024-03-05T14:07:09", Text(*shared));
  EXPECT_EQ("2024-07-03T09:46:40", Text(own));
}

TEST(LocaltimeTest, ConvertsOnSeveralThreadsAtOnce) {
  UseZone("CET-1CEST,M3.5.0,M10.5.0/3");
  std::atomic<int> wrong{0};

  RunInThreads(4, [&wrong](int index) {
    const bool isSummer = index % 2 == 0;
    const long seconds = isSummer ? kSummer : kWinter;
    const std::string expected = isSummer ? "2024-07-03T11:46:40" : "2024-03-05T15:07:09";
    for (int round = 0; round < 500; ++round) {
      if (LocalTime(seconds) != expected) ++wrong;
    }
  });

  EXPECT_EQ(0, wrong);
}

}  // namespace

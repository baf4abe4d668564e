#include "LogEvent.h"

#include <gtest/gtest.h>

#include <future>
#include <limits>
#include <string>
#include <thread>

#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Events.h"
#include "Support/TimeZone.h"

namespace {

constexpr long kSummer2024 = 1719835200;      // 2024-07-01T12:00:00 UTC.
constexpr long kWinter2024 = 1705320000;      // 2024-01-15T12:00:00 UTC.
constexpr long kYear10000 = 253402300800;     // Its first second, UTC.
constexpr long kYear1e9 = 31556889832780800;  // The first second of the year 1000000000, UTC.

LogEvent EventAt(long seconds, long microseconds = 0) {
  return LogEvent(1, "message", "handler", "file.cpp", 42, timeval{seconds, microseconds}, 7);
}

LogEvent EventOf(const std::string& fileName) {
  return LogEvent(1, "message", "handler", fileName, 42, timeval{0, 0}, 7);
}

/// All that distinguishes this event is still there.
void ExpectSample(const LogEvent& event) {
  EXPECT_EQ(3U, event.GetLogLevel());
  EXPECT_EQ("disk full", event.GetLogMessage());
  EXPECT_EQ("storage", event.GetLogHandlerName());
  EXPECT_EQ("C:\\src\\disk.cpp", event.GetFullFileName());
  EXPECT_EQ(142, event.GetLine());
  EXPECT_EQ(1078146309, event.GetTimeSec());
  EXPECT_EQ(42, event.GetTimeUsec());
  EXPECT_EQ(4711, event.GetThreadId());
}

LogEvent Sample() {
  return LogEvent(3, "disk full", "storage", "C:\\src\\disk.cpp", 142, timeval{1078146309, 42},
                  4711);
}

TEST(LogEventTest, KeepsWhatItIsMadeOf) { ExpectSample(Sample()); }

TEST(LogEventTest, TakesTheLimitsOfItsNumbers) {
  const LogEvent largest(4294967295U, "", "", "", 2147483647, timeval{0, 0}, 2147483647);
  const LogEvent smallest(0, "", "", "", -2147483647 - 1, timeval{0, 0}, -2147483647 - 1);

  EXPECT_EQ(4294967295U, largest.GetLogLevel());
  EXPECT_EQ(2147483647, largest.GetLine());
  EXPECT_EQ(2147483647, largest.GetThreadId());
  EXPECT_EQ(0U, smallest.GetLogLevel());
  EXPECT_EQ(-2147483647 - 1, smallest.GetLine());
  EXPECT_EQ(-2147483647 - 1, smallest.GetThreadId());
}

TEST(LogEventTest, KeepsZeroBytesOfItsTexts) {
  const std::string text("a\0b", 3);

  const LogEvent event(1, text, text, text, 42, timeval{0, 0}, 7);

  EXPECT_EQ(text, event.GetLogMessage());
  EXPECT_EQ(text, event.GetLogHandlerName());
  EXPECT_EQ(text, event.GetFullFileName());
}

TEST(LogEventTest, OwnsItsTexts) {
  std::string message = "as it was when the event was made";

  const LogEvent event(1, message, "handler", "file.cpp", 42, timeval{0, 0}, 7);
  message.assign("changed");
  event.GetLogMessage().clear();

  EXPECT_EQ("as it was when the event was made", event.GetLogMessage());
}

TEST(LogEventTest, NamesItsLevelAsTheRegistryDoesNow) {
  const LogEvent event = EventWith("message", 700);

  EXPECT_EQ("", event.GetLogLevelName());
  Logger::GetLogLevelManager()->AddLogLevel(700, "NOTICE");

  EXPECT_EQ("NOTICE", event.GetLogLevelName());
}

TEST(LogEventTest, CutsTheFolderOffItsFileNameAtTheLastBackslash) {
  const LogEvent event = EventOf("C:\\src\\a.cpp");

  EXPECT_EQ("a.cpp", event.GetFileName());
  EXPECT_EQ("C:\\src\\a.cpp", event.GetFullFileName());
}

TEST(LogEventTest, KeepsAFileNameWithForwardSlashesWhole) {
  EXPECT_EQ("src/a.cpp", EventOf("src/a.cpp").GetFileName());
  EXPECT_EQ("/src/a.cpp", EventOf("/src/a.cpp").GetFileName());
  EXPECT_EQ("b/a.cpp", EventOf("src/c\\b/a.cpp").GetFileName());
}

TEST(LogEventTest, HasNoFileNameBehindABackslashAtTheEnd) {
  EXPECT_EQ("", EventOf("C:\\src\\").GetFileName());
  EXPECT_EQ("", EventOf("\\").GetFileName());
}

TEST(LogEventTest, HasNoFileNameWhenItWasGivenNone) {
  EXPECT_EQ("", EventOf("").GetFileName());
  EXPECT_EQ("", EventOf("").GetFullFileName());
}

TEST(LogEventTest, ShowsItsTimeAsText) {
  SetTimeZone("UTC0");
  const LogEvent event = EventAt(1078146309, 42);

  EXPECT_EQ("2004-03-01T13:05:09", event.GetDateTime());
  EXPECT_EQ("2004-03-01T13:05:09.000042", event.GetDateTimeUsec());
  EXPECT_EQ("2004-03-01", event.GetDate());
  EXPECT_EQ("13:05:09", event.GetTime());
}

TEST(LogEventTest, ShowsSixDigitsOfMicrosecondsAtLeast) {
  SetTimeZone("UTC0");

  EXPECT_EQ("1970-01-01T00:00:00.000000", EventAt(0, 0).GetDateTimeUsec());
  EXPECT_EQ("1970-01-01T00:00:00.000042", EventAt(0, 42).GetDateTimeUsec());
  EXPECT_EQ("1970-01-01T00:00:00.999999", EventAt(0, 999999).GetDateTimeUsec());
  EXPECT_EQ("1970-01-01T00:00:00.1000000", EventAt(0, 1000000).GetDateTimeUsec());
}

// Another process's event may say so.
TEST(LogEventTest, ShowsNegativeMicrosecondsAsTheStartOfALargeNumber) {
  SetTimeZone("UTC0");

  EXPECT_EQ("1970-01-01T00:00:00.18446744073709", EventAt(0, -1).GetDateTimeUsec());
}

TEST(LogEventTest, ShowsTheLocalTime) {
  SetTimeZone("CET-1CEST,M3.5.0,M10.5.0/3");

  EXPECT_EQ("2024-07-01T14:00:00", EventAt(kSummer2024).GetDateTime());
  EXPECT_EQ("2024-01-15T13:00:00", EventAt(kWinter2024).GetDateTime());
  EXPECT_EQ("14:00:00", EventAt(kSummer2024).GetTime());
}

TEST(LogEventTest, ShowsTheLocalDate) {
  SetTimeZone("AHEAD-13");

  EXPECT_EQ("2024-07-02", EventAt(kSummer2024).GetDate());
  EXPECT_EQ("2024-07-02T01:00:00", EventAt(kSummer2024).GetDateTime());
}

TEST(LogEventTest, TellsSecondsApart) {
  SetTimeZone("UTC0");

  EXPECT_EQ("1970-01-01T00:00:59", EventAt(59).GetDateTime());
  EXPECT_EQ("1970-01-01T00:01:00", EventAt(60).GetDateTime());
  EXPECT_EQ("1970-01-01T00:00:59", EventAt(59).GetDateTime());
}

TEST(LogEventTest, ShowsATimeBefore1970) {
  SetTimeZone("UTC0");
  const LogEvent event = EventAt(-1);

  EXPECT_EQ("1969-12-31T23:59:59", event.GetDateTime());
  EXPECT_EQ("1969-12-31", event.GetDate());
  EXPECT_EQ("23:59:59", event.GetTime());
}

TEST(LogEventTest, HasNoRoomForAYearOfFiveDigitsInItsDateAndTime) {
  SetTimeZone("UTC0");
  const LogEvent last = EventAt(kYear10000 - 1, 42);
  const LogEvent first = EventAt(kYear10000, 42);

  EXPECT_EQ("9999-12-31T23:59:59", last.GetDateTime());
  EXPECT_EQ("9999-12-31T23:59:59.000042", last.GetDateTimeUsec());
  EXPECT_EQ("", first.GetDateTime());
  EXPECT_EQ(".000042", first.GetDateTimeUsec());
  EXPECT_EQ("10000-01-01", first.GetDate());
  EXPECT_EQ("00:00:00", first.GetTime());
}

TEST(LogEventTest, HasRoomForAYearOfNineDigitsInItsDate) {
  SetTimeZone("UTC0");

  EXPECT_EQ("999999999-12-31", EventAt(kYear1e9 - 1).GetDate());
  EXPECT_EQ("", EventAt(kYear1e9).GetDate());
  EXPECT_EQ("00:00:00", EventAt(kYear1e9).GetTime());
}

TEST(LogEventTest, ShowsNoTextOfATimeThatCannotBeConverted) {
  SetTimeZone("UTC0");
  EXPECT_EQ("1970-01-01T00:00:00", EventAt(0).GetDateTime());

  for (const long seconds : {std::numeric_limits<long>::max(), std::numeric_limits<long>::min()}) {
    const LogEvent event = EventAt(seconds, 42);
    EXPECT_EQ("", event.GetDateTime());
    EXPECT_EQ(".000042", event.GetDateTimeUsec());
    EXPECT_EQ("", event.GetDate());
    EXPECT_EQ("", event.GetTime());
    EXPECT_EQ(seconds, event.GetTimeSec());
  }

  EXPECT_EQ("1970-01-01T00:00:00", EventAt(0).GetDateTime());
}

TEST(LogEventTest, ShowsAChangedTimeZoneAtOnce) {
  const LogEvent event = EventAt(kSummer2024);
  SetTimeZone("UTC0");
  EXPECT_EQ("2024-07-01T12:00:00", event.GetDateTime());

  SetTimeZone("AHEAD-13");

  EXPECT_EQ("2024-07-02T01:00:00", event.GetDateTime());
  EXPECT_EQ("2024-07-02", event.GetDate());
  EXPECT_EQ("01:00:00", event.GetTime());
  EXPECT_EQ("2024-07-02T01:00:00", EventAt(kSummer2024, 1).GetDateTime());
}

TEST(LogEventTest, ShowsAChangedSummerTimeAtOnce) {
  const LogEvent event = EventAt(kSummer2024);
  SetTimeZone("CET-1");
  EXPECT_EQ("13:00:00", event.GetTime());

  SetTimeZone("CET-1CEST,M3.5.0,M10.5.0/3");

  EXPECT_EQ("14:00:00", event.GetTime());
}

TEST(LogEventTest, ShowsATimeZoneThatDiffersOnlyInWhenSummerTimeIsWithTheNextSecond) {
  const LogEvent event = EventAt(kSummer2024);
  SetTimeZone("CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ("14:00:00", event.GetTime());

  // Nothing that tzset() leaves behind tells this zone from the other.
  SetTimeZone("CET-1CEST,M1.1.0,M2.1.0");
  const time_t changedAt = time(nullptr);
  while (time(nullptr) == changedAt) std::this_thread::yield();

  EXPECT_EQ("13:00:00", event.GetTime());
}

TEST(LogEventTest, ShowsAChangedTimeZoneInAThreadThatHasShownTheSameSecond) {
  const LogEvent event = EventAt(kSummer2024);
  SetTimeZone("UTC0");
  std::promise<void> hasShown;
  std::promise<void> hasChanged;
  std::string before;
  std::string after;

  std::thread thread([&] {
    before = event.GetDateTime();
    hasShown.set_value();
    hasChanged.get_future().wait();
    after = event.GetDateTime();
  });
  hasShown.get_future().wait();
  SetTimeZone("AHEAD-13");
  hasChanged.set_value();
  thread.join();

  EXPECT_EQ("2024-07-01T12:00:00", before);
  EXPECT_EQ("2024-07-02T01:00:00", after);
}

TEST(LogEventTest, GivesItsTextsAsCopies) {
  SetTimeZone("UTC0");
  const std::string first = EventAt(59).GetDateTime();

  const std::string second = EventAt(60).GetDateTime();

  EXPECT_EQ("1970-01-01T00:00:59", first);
  EXPECT_EQ("1970-01-01T00:01:00", second);
}

TEST(LogEventTest, TakesAnotherThreadId) {
  LogEvent event = Sample();

  event.SetThreadId(12);

  EXPECT_EQ(12, event.GetThreadId());
}

TEST(LogEventTest, IsCopiedWithEveryField) {
  const LogEvent event = Sample();

  const LogEvent copy(event);

  ExpectSample(copy);
  ExpectSample(event);
}

TEST(LogEventTest, IsAssignedEveryField) {
  const LogEvent event = Sample();
  LogEvent other = EventWith("other");

  LogEvent& result = other = event;

  EXPECT_EQ(&other, &result);
  ExpectSample(other);
  ExpectSample(event);
}

TEST(LogEventTest, StaysAsItIsWhenAssignedToItself) {
  LogEvent event = Sample();
  const LogEvent& same = event;

  LogEvent& result = event = same;

  EXPECT_EQ(&event, &result);
  ExpectSample(event);
}

TEST(LogEventTest, TakesEveryFieldByAssign) {
  LogEvent event = EventWith("other");

  event.Assign(Sample());

  ExpectSample(event);
}

TEST(LogEventTest, IsIndependentOfItsCopy) {
  const LogEvent event = Sample();
  LogEvent copy(event);

  copy.SetThreadId(12);

  EXPECT_EQ(12, copy.GetThreadId());
  ExpectSample(event);
}

}  // namespace

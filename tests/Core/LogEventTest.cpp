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

TEST(LogEventTest, KeepsWhatItIsMadeOfAlsoInACopy) {
  const LogEvent event = Sample();
  ExpectSample(event);

  LogEvent copy(event);
  ExpectSample(copy);
  copy.SetThreadId(12);
  EXPECT_EQ(12, copy.GetThreadId());
  LogEvent assigned = EventWith("other");
  LogEvent& result = assigned = event;
  EXPECT_EQ(&assigned, &result);
  ExpectSample(assigned);
  const LogEvent& same = assigned;
  LogEvent& itself = assigned = same;
  EXPECT_EQ(&assigned, &itself);
  ExpectSample(assigned);
  copy.Assign(event);
  ExpectSample(copy);

  ExpectSample(event);
}

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
  const struct {
    const char* path;
    const char* name;
  } rows[] = {{"C:\\src\\a.cpp", "a.cpp"},
              {"src/a.cpp", "src/a.cpp"},
              {"/src/a.cpp", "/src/a.cpp"},
              {"src/c\\b/a.cpp", "b/a.cpp"},
              {"C:\\src\\", ""},
              {"\\", ""},
              {"", ""}};
  for (const auto& row : rows) {
    const LogEvent event(1, "message", "handler", row.path, 42, timeval{0, 0}, 7);

    EXPECT_EQ(row.name, event.GetFileName());
    EXPECT_EQ(row.path, event.GetFullFileName());
  }
}

TEST(LogEventTest, ShowsItsTimeAsText) {
  const char* const summerTime = "CET-1CEST,M3.5.0,M10.5.0/3";
  const struct {
    const char* zone;
    long seconds;
    long microseconds;
    const char* dateTime;
    const char* fraction;
    const char* date;
    const char* time;
  } rows[] = {
      {"UTC0", 1078146309, 42, "2004-03-01T13:05:09", ".000042", "2004-03-01", "13:05:09"},
      {"UTC0", 0, 0, "1970-01-01T00:00:00", ".000000", "1970-01-01", "00:00:00"},
      {"UTC0", 59, 999999, "1970-01-01T00:00:59", ".999999", "1970-01-01", "00:00:59"},
      {"UTC0", 60, 1000000, "1970-01-01T00:01:00", ".1000000", "1970-01-01", "00:01:00"},
      {"UTC0", 59, 999999, "1970-01-01T00:00:59", ".999999", "1970-01-01", "00:00:59"},
      {"UTC0", -1, 0, "1969-12-31T23:59:59", ".000000", "1969-12-31", "23:59:59"},
      // Another process's event may say so.
      {"UTC0", 0, -1, "1970-01-01T00:00:00", ".18446744073709", "1970-01-01", "00:00:00"},
      {summerTime, kSummer2024, 0, "2024-07-01T14:00:00", ".000000", "2024-07-01", "14:00:00"},
      {summerTime, kWinter2024, 0, "2024-01-15T13:00:00", ".000000", "2024-01-15", "13:00:00"},
      {"AHEAD-13", kSummer2024, 0, "2024-07-02T01:00:00", ".000000", "2024-07-02", "01:00:00"},
      // A date and time has room for a year of four digits, a date for nine.
      {"UTC0", kYear10000 - 1, 42, "9999-12-31T23:59:59", ".000042", "9999-12-31", "23:59:59"},
      {"UTC0", kYear10000, 42, "", ".000042", "10000-01-01", "00:00:00"},
      {"UTC0", kYear1e9 - 1, 0, "", ".000000", "999999999-12-31", "23:59:59"},
      {"UTC0", kYear1e9, 0, "", ".000000", "", "00:00:00"},
      // Times that cannot be converted.
      {"UTC0", std::numeric_limits<long>::max(), 42, "", ".000042", "", ""},
      {"UTC0", std::numeric_limits<long>::min(), 42, "", ".000042", "", ""},
      {"UTC0", 0, 0, "1970-01-01T00:00:00", ".000000", "1970-01-01", "00:00:00"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(std::string(row.zone) + " " + std::to_string(row.seconds));
    SetTimeZone(row.zone);
    const LogEvent event = EventAt(row.seconds, row.microseconds);

    EXPECT_EQ(row.dateTime, event.GetDateTime());
    EXPECT_EQ(std::string(row.dateTime) + row.fraction, event.GetDateTimeUsec());
    EXPECT_EQ(row.date, event.GetDate());
    EXPECT_EQ(row.time, event.GetTime());
    EXPECT_EQ(row.seconds, event.GetTimeSec());
  }
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
  SetTimeZone("CET-1");
  EXPECT_EQ("13:00:00", event.GetTime());
  SetTimeZone("CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ("14:00:00", event.GetTime());
}

TEST(LogEventTest, ShowsATimeZoneThatDiffersOnlyInWhenSummerTimeIsWithTheNextSecond) {
  const LogEvent event = EventAt(kSummer2024);
  SetTimeZone("CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ("14:00:00", event.GetTime());

  // Nothing that tzset() sets distinguishes this zone from the other.
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

}  // namespace

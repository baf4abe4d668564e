// Events have the time that the system's clock shows when they are logged, also after it was set
// back or far ahead. The test replaces the clock.

#include <gtest/gtest.h>
#include <sys/time.h>
#include <time.h>

#include <string>
#include <vector>

#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "LogClientXml.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"
#include "Support/TimeZone.h"
#include "Support/XmlEntries.h"

namespace {

time_t clockSeconds = 0;

}  // namespace

// In the place of the C library's.
extern "C" int gettimeofday(timeval* now, void*) noexcept {
  *now = {clockSeconds, 42};
  return 0;
}
extern "C" time_t time(time_t* now) noexcept {
  if (now != nullptr) *now = clockSeconds;
  return clockSeconds;
}

namespace {

typedef std::vector<std::string> Words;

class ClockTest : public testing::Test {
 protected:
  ClockTest() {
    SetTimeZone("UTC0");
    Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
    handler_->AddLogClient(new LogClientFile(folder_.Path("file"), true));
    handler_->AddLogClient(new LogClientRollingFile(folder_.Path("rolling"), 80, 1));
    handler_->AddLogClient(new LogClientXml(folder_.Path("xml"), ""));
  }

  void LogAt(time_t seconds, const char* message) {
    clockSeconds = seconds;
    EXPECT_TRUE(handler_->Log(1, "%s", message));
  }

  TemporaryFolder folder_;
  LogHandler* const handler_ = Logger::GetLogHandler("handler");
};

TEST_F(ClockTest, MayBeSetBack) {
  LogAt(1709647629, "one");
  LogAt(1709647628, "two");
  LogAt(1709644029, "three");
  LogAt(1709647629, "four");

  const Words lines{"2024-03-05T14:07:09 |ERROR| one", "2024-03-05T14:07:08 |ERROR| two",
                    "2024-03-05T13:07:09 |ERROR| three", "2024-03-05T14:07:09 |ERROR| four"};
  EXPECT_EQ(lines, Lines(folder_.Path("file")));
  EXPECT_EQ((Words{lines[0], lines[1], lines[2]}), Lines(folder_.Path("rolling.1")));
  EXPECT_EQ(Words{lines[3]}, Lines(folder_.Path("rolling")));
  EXPECT_EQ((std::vector<XmlEntry>{{"ERROR", "2024-03-05", "14:07:09", "one"},
                                   {"ERROR", "2024-03-05", "14:07:08", "two"},
                                   {"ERROR", "2024-03-05", "13:07:09", "three"},
                                   {"ERROR", "2024-03-05", "14:07:09", "four"}}),
            XmlLog(folder_.Path("xml")).Entries());
}

TEST_F(ClockTest, MayPassTheYears2038And2106) {
  LogAt(2147483647, "one");
  LogAt(2147483648, "two");
  LogAt(4294967296, "three");
  LogAt(0, "four");

  EXPECT_EQ((Words{"2038-01-19T03:14:07 |ERROR| one", "2038-01-19T03:14:08 |ERROR| two",
                   "2106-02-07T06:28:16 |ERROR| three", "1970-01-01T00:00:00 |ERROR| four"}),
            Lines(folder_.Path("file")));
}

}  // namespace

#include "Clients/XmlEntry.h"

#include <gtest/gtest.h>

#include "LogEvent.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Events.h"
#include "Support/TimeZone.h"

using Logger::Internal::XmlEntry;

namespace {

TEST(XmlEntryTest, HasTheTextsOfAnEvent) {
  SetTimeZone("UTC0");
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  const LogEvent event = EventWith("disk full");

  const XmlEntry entry = XmlEntry::Of(event);

  EXPECT_EQ("ERROR", entry.level);
  EXPECT_EQ(event.GetDate(), entry.date);
  EXPECT_EQ(event.GetTime(), entry.time);
  EXPECT_EQ("disk full", entry.log);
}

TEST(XmlEntryTest, HasNoDateOfATimeThatHasNoText) {
  const LogEvent event(1, "far", "handler", "", 0, timeval{4611686018427387904, 0}, 7);

  const XmlEntry entry = XmlEntry::Of(event);

  EXPECT_EQ("", entry.date);
  EXPECT_EQ("", entry.time);
  EXPECT_EQ("far", entry.log);
}

}  // namespace

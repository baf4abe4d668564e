// Layouts of a program that is built with -fno-rtti.

#include <gtest/gtest.h>

#include <ostream>

#include "LogClientFile.h"
#include "LogLayoutMessage.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"

namespace {

class QuotedLayout : public LogLayout {
 public:
  void FormatAndAppend(std::ostream& out, const LogEvent& event) override {
    out << '"' << event.GetLogMessage() << "\"\n";
  }
};

class MarkedLayout : public LogLayoutMessage {
 public:
  void FormatAndAppend(std::ostream& out, const LogEvent& event) override {
    out << "* ";
    LogLayoutMessage::FormatAndAppend(out, event);
  }
};

TEST(LayoutWithoutRttiTest, FormatsTheEventsOfAFile) {
  const TemporaryFolder folder;
  LogClientFile client(folder.Path("app.log"), true);

  client.SetLayout(new QuotedLayout);
  EXPECT_TRUE(client.Publish(EventWith("one")));
  client.SetLayout(new MarkedLayout);
  EXPECT_TRUE(client.Publish(EventWith("two")));
  client.SetLayout(new LogLayoutMessage);
  EXPECT_TRUE(client.Publish(EventWith("three")));

  EXPECT_EQ("\"one\"\n* two\nthree\n", Content(folder.Path("app.log")));
}

}  // namespace

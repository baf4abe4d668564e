// Unusual messages, times and time zones through every layout and every kind of client; the output
// is compared byte by byte.

#include <gtest/gtest.h>
#include <sys/time.h>
#include <time.h>

#include <climits>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "LogClientConsole.h"
#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "LogClientSocket.h"
#include "LogClientXml.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "LogProperties.h"
#include "Logger.h"
#include "SocketLogServer.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/RecordingClient.h"
#include "Support/TemporaryFolder.h"
#include "Support/TimeZone.h"

namespace {

using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStdout;

/// The texts of an event in the different kinds of output.
struct Output {
  std::string dateTime;    ///< Of the layouts.
  std::string position;    ///< Of the extended layout.
  std::string message;     ///< In text.
  std::string xml;         ///< The element of the message in a document,
  std::string escapedXml;  ///< and with "escapetext".
  std::string servedLine;  ///< Of the extended layout, after a log server.
};

/// The output of an event of which only the message is unusual.
Output OutputOf(const std::string& message, const std::string& xml, const std::string& escapedXml) {
  return {"2024-03-05T14:07:09",
          "file.cpp 42",
          message,
          xml,
          escapedXml,
          "2024-03-05T14:07:09 |ERROR| file.cpp 42 " + message + "\n"};
}
Output OutputOf(const std::string& message, const std::string& xml) {
  return OutputOf(message, xml, xml);
}

/// The output of an event of which only the time is unusual; it is different after a log server.
Output OutputAt(const std::string& dateTime, const std::string& servedDateTime) {
  return {dateTime,
          "file.cpp 42",
          "message",
          "<log>message</log>",
          "<log>message</log>",
          servedDateTime + " |ERROR| file.cpp 42 message\n"};
}

/// Expects the same, without a page of it when it is not.
void ExpectSame(const std::string& expected, const std::string& actual, const std::string& where) {
  EXPECT_TRUE(expected == actual) << where << ": " << actual.substr(0, 1000) << "\ninstead of "
                                  << expected.substr(0, 1000);
}

/// A client of each kind, and a file with each layout, below one handler.
class BadInputTest : public testing::Test {
 protected:
  BadInputTest() {
    SetTimeZone("UTC0");
    Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
    for (const std::string layout : {"Message", "Simple", "Standard", "Extended"}) {
      AddFile(*handler_, layout, "LogLayout" + layout);
    }
    AddFile(*Logger::GetLogHandler("served"), "served", "LogLayoutExtended");
    handler_->AddLogClient(new LogClientConsole);
    handler_->AddLogClient(new LogClientRollingFile(Path("rolling"), 0, 1));
    handler_->AddLogClient(new LogClientXml(Path("xml"), ""));
    LogProperties escaping;
    escaping.AddProperty("filename", Path("escaped"));
    escaping.AddProperty("escapetext", "true");
    handler_->AddLogClient(new LogClientXml(escaping));
    EXPECT_TRUE(server_.Start(Logger::GetLogHandler("served"), "127.0.0.1", 0, 0));
    socket_ = new LogClientSocket("127.0.0.1", server_.GetPort(), false, 0);
    handler_->AddLogClient(socket_);
  }

  /// Publishes the event, and compares the output of every client.
  void ExpectWritten(const Output& output, const LogEvent& event) {
    CaptureStdout();
    EXPECT_TRUE(handler_->Publish(event));
    EXPECT_TRUE(socket_->SendToServer(true));
    const std::string standardLine = output.dateTime + " |ERROR| " + output.message + "\n";
    ExpectSame(standardLine, GetCapturedStdout(), "console");
    ExpectSame(output.message + "\n", Taken("Message"), "message layout");
    ExpectSame("ERROR - " + output.message + "\n", Taken("Simple"), "simple layout");
    ExpectSame(standardLine, Taken("Standard"), "standard layout");
    ExpectSame(output.dateTime + " |ERROR| " + output.position + " " + output.message + "\n",
               Taken("Extended"), "extended layout");
    ExpectSame(standardLine, Content(Path("rolling.1")), "rolling file");
    ExpectSame(output.servedLine, Taken("served"), "log server");
    ExpectLastEntry(output, output.xml, "xml");
    ExpectLastEntry(output, output.escapedXml, "escaped");
  }
  void ExpectWritten(const Output& output) { ExpectWritten(output, EventWith(output.message)); }

  /// The message of the event that a call with these arguments logs.
  template <typename... Arguments>
  static std::string Logged(Arguments... arguments) {
    RecordingClient client;
    LogHandler* const handler = Logger::GetLogHandler("formatting");
    handler->AddLogClient(&client);
    // By a pointer, without the promise of a checked format.
    bool (LogHandler::*const log)(unsigned int, const char*, ...) = &LogHandler::Log;
    EXPECT_TRUE((handler->*log)(1, arguments...));
    handler->RemoveLogClient(&client);
    EXPECT_EQ(1U, client.Events().size());
    return client.Messages().at(0);
  }

 private:
  TemporaryFolder folder_;
  LogHandler* const handler_ = Logger::GetLogHandler("handler");
  SocketLogServer server_;
  LogClientSocket* socket_ = nullptr;

  std::string Path(const std::string& name) const { return folder_.Path(name); }

  void AddFile(LogHandler& handler, const std::string& name, const std::string& layout) const {
    auto* const client = new LogClientFile(Path(name), true);
    client->SetLayout(layout);
    handler.AddLogClient(client);
  }

  /// The text written to a file since the last call.
  std::string Taken(const std::string& name) const {
    const std::string content = Content(Path(name));
    std::filesystem::resize_file(Path(name), 0);
    return content;
  }

  void ExpectLastEntry(const Output& output, const std::string& log,
                       const std::string& name) const {
    const std::string content = Content(Path(name));
    const std::size_t entry = content.rfind("<entry level=\"ERROR\">");
    const std::size_t separator = output.dateTime.find('T');
    ExpectSame("<entry level=\"ERROR\"><date>" + output.dateTime.substr(0, separator) +
                   "</date><time>" + output.dateTime.substr(separator + 1) + "</time>" + log +
                   "</entry></apitestlog>\n",
               content.substr(entry), name);
  }
};

std::string Repeated(int count, const std::string& text) {
  std::string result;
  for (int i = 0; i < count; ++i) result += text;
  return result;
}

std::string BytesFrom(int first, int last) {
  std::string bytes;
  for (int byte = first; byte <= last; ++byte) bytes.push_back(static_cast<char>(byte));
  return bytes;
}

const std::string kReplacement = "\xEF\xBF\xBD";  // U+FFFD.

// Messages.

TEST_F(BadInputTest, MayHoldEveryByte) {
  const std::string every = BytesFrom(1, 255);
  const std::string start = "<log>" + Repeated(8, kReplacement) + "\t\n" +
                            Repeated(2, kReplacement) + "&#13;" + Repeated(18, kReplacement) +
                            " !\"#$%";
  const std::string end =
      "'()*+,-./0123456789:;&lt;=&gt;?@ABCDEFGHIJKLMNOPQRSTUVWXYZ[\\]^_`"
      "abcdefghijklmnopqrstuvwxyz{|}~\x7F" +
      Repeated(128, kReplacement) + "</log>";

  EXPECT_EQ(every, Logged("%s", every.c_str()));
  EXPECT_EQ(every, Logged("%.*s", INT_MAX, every.c_str()));
  // In a message that is XML, what stands between an ampersand and a semicolon is a reference.
  ExpectWritten(OutputOf(every, start + "&" + end, start + "&amp;" + end));
}

TEST_F(BadInputTest, MayBeInvalidUtf8) {
  const std::string text =
      "\xC3( \xE2\x82 \xED\xA0\x80 \xC0\xAF \xF4\x90\x80\x80 \xEF\xBF\xBE \xC3\xA9 \xF0\x9F\x98";
  const std::string& r = kReplacement;

  ExpectWritten(OutputOf(text, "<log>" + r + "( " + r + r + " " + r + r + r + " " + r + r + " " +
                                   r + r + r + r + " " + r + " \xC3\xA9 " + r + r + r + "</log>"));
}

TEST_F(BadInputTest, MayBeEmpty) {
  EXPECT_EQ("", Logged("%s", ""));
  ExpectWritten(OutputOf("", "<log/>", "<log></log>"));
}

TEST_F(BadInputTest, MayConsistOfLineFeeds) {
  ExpectWritten(OutputOf("\n\n\r\n", "<log>\n\n&#13;\n</log>"));
}

TEST_F(BadInputTest, MayHoldMarkup) {
  ExpectWritten(OutputOf("</log></entry></apitestlog>",
                         "<log>&lt;/log&gt;&lt;/entry&gt;&lt;/apitestlog&gt;</log>"));
}

TEST_F(BadInputTest, MayHaveSixteenMegabytes) {
  const std::string text = "first " + std::string(std::size_t{16} * 1024 * 1024, 'x') + " last";

  EXPECT_TRUE(text == Logged("%s last", text.substr(0, text.size() - 5).c_str()));
  ExpectWritten(OutputOf(text, "<log>" + text + "</log>"));
}

TEST_F(BadInputTest, MayHoldAZeroByteButOnItsWayToAServer) {
  const std::string text = Logged("a%cb", '\0');

  EXPECT_EQ(std::string("a\0b", 3), text);
  Output output = OutputOf(text, "<log>a" + kReplacement + "b</log>");
  output.servedLine = "2024-03-05T14:07:09 |ERROR| le.cpp00 42 a00\n";
  ExpectWritten(output);
  ExpectWritten(OutputOf("next", "<log>next</log>"));
}

TEST_F(BadInputTest, MayHaveAPositionOfAnyBytes) {
  const std::string every = BytesFrom(1, 255);
  Output output = OutputOf("message", "<log>message</log>");
  output.position = BytesFrom('\\' + 1, 255) + " -2147483648";
  output.servedLine = "2024-03-05T14:07:09 |ERROR| " + output.position + " message\n";

  ExpectWritten(output, LogEvent(1, "message", every, every, INT_MIN, timeval{1709647629, 0}, 7));
}

// Formats.

TEST_F(BadInputTest, MayBeFormattedInUnusualWays) {
  int written = 0;
  EXPECT_EQ("abcd", Logged("ab%ncd", &written));
  EXPECT_EQ(2, written);
  EXPECT_EQ("%y 7", Logged("%y %d", 7));
  EXPECT_EQ("b a b", Logged("%2$s %1$s %2$s", "a", "b"));
  EXPECT_EQ("(null)", Logged("%s", static_cast<const char*>(nullptr)));
  EXPECT_EQ("7   |", Logged("%*d|", -4, 7));
  EXPECT_EQ("text", Logged("%.*s", -1, "text"));
  EXPECT_EQ("%s%s%n", Logged("%s", "%s%s%n"));
}

TEST_F(BadInputTest, MayBeFormattedVeryWide) {
  const std::string blanks(1000000, ' ');
  EXPECT_TRUE(blanks + "7" == Logged("%*d", 1000001, 7));
  EXPECT_TRUE("7" + blanks == Logged("%-1000001d", 7));
  EXPECT_TRUE("0." + std::string(1000000, '0') == Logged("%.1000000f", 0.0));
  EXPECT_TRUE(std::string(1000000, '0') + "7" == Logged("%.*d", 1000001, 7));

  const std::string text = Logged("%1000001s", "7");
  ExpectWritten(OutputOf(text, "<log>" + blanks + "7</log>"));
}

// Times.

LogEvent EventAt(long seconds, long microseconds = 0) {
  return {1, "message", "handler", "file.cpp", 42, timeval{seconds, microseconds}, 7};
}

TEST_F(BadInputTest, MayBeOfTheYear2038AndGoesBackTo1901OnItsWayToAServer) {
  ExpectWritten(OutputAt("2038-01-19T03:14:07", "2038-01-19T03:14:07"), EventAt(2147483647));
  ExpectWritten(OutputAt("2038-01-19T03:14:08", "1901-12-13T20:45:52"), EventAt(2147483648));
}

TEST_F(BadInputTest, MayBeOfTheYear2106AndGoesBackTo1970OnItsWayToAServer) {
  ExpectWritten(OutputAt("2106-02-07T06:28:15", "1969-12-31T23:59:59"), EventAt(4294967295));
  ExpectWritten(OutputAt("2106-02-07T06:28:16", "1970-01-01T00:00:00"), EventAt(4294967296));
}

TEST_F(BadInputTest, MayBeOlderThanTheOneBefore) {
  ExpectWritten(OutputAt("2024-03-05T14:07:09", "2024-03-05T14:07:09"), EventAt(1709647629, 1));
  ExpectWritten(OutputAt("2024-03-05T14:07:08", "2024-03-05T14:07:08"), EventAt(1709647628));
  ExpectWritten(OutputAt("2024-03-05T14:07:09", "2024-03-05T14:07:09"), EventAt(1709647629));
  ExpectWritten(OutputAt("1969-12-31T23:59:59", "1969-12-31T23:59:59"), EventAt(-1));
}

// Time zones.

TEST_F(BadInputTest, IsShownInUniversalTimeWhenTheTimeZoneIsNonsense) {
  const std::string length(100000, 'A');
  for (const std::string& zone :
       {std::string(), std::string("nonsense"), std::string(":"), std::string(":/no/such/zone"),
        std::string("../../no/such/zone"), std::string("<"), std::string("\xFF\x01%s%n"), length}) {
    SetTimeZone("AHEAD-13");
    ExpectWritten(OutputAt("2024-03-06T03:07:09", "2024-03-06T03:07:09"), EventAt(1709647629));
    SetTimeZone(zone.c_str());
    ExpectWritten(OutputAt("2024-03-05T14:07:09", "2024-03-05T14:07:09"), EventAt(1709647629));
  }
}

TEST_F(BadInputTest, IsShownInTheSystemsTimeWhenNoTimeZoneIsSet) {
  unsetenv("TZ");
  tzset();

  const time_t seconds = 1709647629;
  tm local{};
  std::string dateTime(19, ' ');
  strftime(dateTime.data(), dateTime.size() + 1, "%Y-%m-%dT%H:%M:%S",
           localtime_r(&seconds, &local));
  ExpectWritten(OutputAt(dateTime, dateTime), EventAt(seconds));
}

TEST_F(BadInputTest, IsShownInATimeZoneThatHasChanged) {
  const auto expect = [this](const std::string& dateTime) {
    ExpectWritten(OutputAt(dateTime, dateTime), EventAt(1720188429));
  };
  expect("2024-07-05T14:07:09");
  SetTimeZone("CET-1CEST,M3.5.0,M10.5.0/3");
  expect("2024-07-05T16:07:09");
  SetTimeZone("BEHIND+12");
  expect("2024-07-05T02:07:09");
  SetTimeZone("UTC0");
  expect("2024-07-05T14:07:09");
}

}  // namespace

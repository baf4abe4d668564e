// The dissector's output for captured connections, as tshark prints it.

#include <gtest/gtest.h>

#include <climits>
#include <random>
#include <string>
#include <vector>

#include "LogClientSocket.h"
#include "LogEvent.h"
#include "Support/Capture.h"
#include "Support/Conversation.h"
#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/ServingProgram.h"
#include "Support/Sockets.h"
#include "Support/TemporaryFolder.h"
#include "Support/WireBytes.h"

namespace {

using Words = std::vector<std::string>;

Words operator+(Words first, const Words& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

LogEvent Event(const std::string& message) {
  return {3, message, "net", "src/f.cpp", 42, timeval{1709647629, 999999}, 7};
}

class WiresharkTest : public testing::Test {
 protected:
  /// The bytes that a client and a log server exchange.
  template <typename Client>
  Conversation RecordWith(const Client& client) const {
    WriteFile(folder_.Path("serve.ini"),
              "loglevel = 3\nlogclient = file\nlogclient.file.type = LogClientFile\n"
              "logclient.file.handler = default\nlogclient.file.layout = LogLayoutMessage\n"
              "logclient.file.parameter.0.name = filename\n"
              "logclient.file.parameter.0.value = " +
                  Served() + "\n");
    ServingProgram server(LOGGERCTL, {"--config", folder_.Path("serve.ini")});
    RecordingRelay relay(server.Port());
    client(relay.Port());
    return relay.Recorded();
  }

  /// The lines that tshark prints with these options.
  Words Shown(const Capture& capture, const Words& options) const {
    capture.Write(folder_.Path("capture"));
    const ProcessResult result =
        RunProgram(Words{"env", "HOME=" + folder_.Path(), "XDG_CONFIG_HOME=" + folder_.Path(),
                         "tshark", "-r", folder_.Path("capture"), "-X",
                         std::string("lua_script:") + PROJECT_FOLDER +
                             "/share/liblogger/wireshark/liblogger.lua"} +
                   options);
    EXPECT_EQ(0, result.exitCode) << result.errors;
    WriteFile(folder_.Path("shown"), result.output);
    return Lines(folder_.Path("shown"));
  }
  /// A line for each packet with data that passes the filter, with these fields.
  Words Fields(const Capture& capture, const std::string& filter, const Words& fields,
               const Words& options = {}) const {
    Words words{"-Y", filter, "-T", "fields", "-E", "separator=|"};
    for (const std::string& field : fields) words = words + Words{"-e", field};
    return Shown(capture, words + options);
  }

  /// The file in which the server writes the messages.
  std::string Served() const { return folder_.Path("served.log"); }

  TemporaryFolder folder_;
};

/// A client's bytes after the opening exchange.
Conversation Said(const std::string& bytes) {
  Conversation conversation;
  conversation.Add(Side::Client, kVersionOne);
  conversation.Add(Side::Server, kVersionOne);
  conversation.Add(Side::Client, bytes);
  return conversation;
}

TEST_F(WiresharkTest, ShowsEachFieldOfAnEvent) {
  Capture capture;
  capture.Add(RecordWith([](int port) {
    LogClientSocket client("127.0.0.1", port, false, 0);
    client.Publish(Event("caf\xC3\xA9"));
    client.Publish(LogEvent(UINT_MAX, "", "", "", -1, timeval{-2, -3}, -4));
  }));

  EXPECT_EQ(
      (Words{"51,34|01,01|3,4294967295|5,0|caf\xC3\xA9|3,0|net|9,0|src/f.cpp|42,-1|"
             "1709647629,-2|999999,-3|Mar  5, 2024 14:07:09.999999000 UTC|7,-4"}),
      Fields(capture, "liblogger.level",
             {"liblogger.length", "liblogger.mark", "liblogger.level", "liblogger.message.length",
              "liblogger.message", "liblogger.handler.length", "liblogger.handler",
              "liblogger.file.length", "liblogger.file", "liblogger.line", "liblogger.seconds",
              "liblogger.microseconds", "liblogger.time", "liblogger.thread"}));
}

TEST_F(WiresharkTest, SummarisesWhatEachSegmentHas) {
  Capture capture;
  capture.Add(RecordWith([](int port) {
    LogClientSocket client("127.0.0.1", port, true, 0);
    client.Publish(Event("one"));
    EXPECT_TRUE(client.SendToServer(true));
    for (const char* const message : {"two", "three", "four"}) client.Publish(Event(message));
    EXPECT_TRUE(client.SendToServer(true));
  }));

  EXPECT_EQ((Words{"50000|Version 1", "4711|Version 1",
                   "50000|Event, level 3, net: one (and 1 more)", "4711|Flush answer",
                   "50000|Event, level 3, net: two (and 3 more)", "4711|Flush answer"}),
            Fields(capture, "liblogger", {"tcp.srcport", "_ws.col.Info"}));
  EXPECT_EQ((Words{"1,2|one", "1,1,1,2|two,three,four"}),
            Fields(capture, "liblogger.type", {"liblogger.type", "liblogger.message"}));
}

TEST_F(WiresharkTest, PutsEventsTogetherFromSegmentsOfAnySize) {
  const Conversation conversation = RecordWith([](int port) {
    LogClientSocket client("127.0.0.1", port, true, 0);
    for (const char* const message : {"a", "b", "c"}) client.Publish(Event(message));
    EXPECT_TRUE(client.SendToServer(true));
  });
  Capture capture;
  Words expected;
  for (unsigned int size = 1; size <= 100; ++size) {
    capture.Add(conversation, size);
    const std::string stream = std::to_string(size - 1);
    expected = expected + Words{stream + "|a|3", stream + "|b|3", stream + "|c|3"};
  }

  for (const Words& passes : {Words{}, Words{"-2"}}) {
    Words shown;
    for (const std::string& line :
         Fields(capture, "liblogger.message",
                {"tcp.stream", "liblogger.message", "liblogger.level"}, passes)) {
      const std::string stream = line.substr(0, line.find('|'));
      for (std::size_t place = stream.size() + 1; line[place] != '|'; place += 2) {
        shown.push_back(stream + "|" + line[place] + "|3");
        if (line[place + 1] == '|') break;
      }
    }
    EXPECT_EQ(expected, shown);
  }
}

TEST_F(WiresharkTest, PutsALargeEventTogether) {
  Capture capture;
  capture.Add(RecordWith([](int port) {
                LogClientSocket client("127.0.0.1", port, false, 0);
                client.Publish(Event(std::string(1024 * 1024, 'x')));
                client.Publish(Event("next"));
              }),
              1460);

  EXPECT_EQ((Words{"1048622,50|1048576,4"}),
            Fields(capture, "liblogger.message", {"liblogger.length", "liblogger.message.length"}));
}

TEST_F(WiresharkTest, ShowsConnectionsToTheGivenPort) {
  Capture capture(5000);
  capture.Add(Said(kSmallFrame));

  EXPECT_EQ(Words{}, Fields(capture, "liblogger.message", {"liblogger.message"}));
  EXPECT_EQ(Words{"abc"}, Fields(capture, "liblogger.message", {"liblogger.message"},
                                 {"-d", "tcp.port==5000,liblogger"}));
}

TEST_F(WiresharkTest, UnderstandsACaptureThatBeginsAmidAConnection) {
  Conversation conversation;
  conversation.Add(Side::Client, "the end of a message");
  conversation.Add(Side::Server, "!");
  conversation.Add(Side::Client, kSmallFrame + kFlushRequest);
  conversation.Add(Side::Server, "!");
  Capture capture;
  capture.AddWithoutOpening(conversation);

  EXPECT_EQ((Words{"Amid a connection", "Amid a connection", "Event, level 3, h: abc (and 1 more)",
                   "Flush answer"}),
            Fields(capture, "liblogger", {"_ws.col.Info"}));
}

TEST_F(WiresharkTest, ShowsWhatIsInSegmentsThatAreNotPutTogether) {
  Capture capture;
  capture.Add(Said(kSmallFrame), 20);
  capture.Add(Said(kSmallFrame));

  EXPECT_EQ(
      (Words{"Version 1", "Version 1", "Part of an event", "Amid a connection", "Amid a connection",
             "Version 1", "Version 1", "Event, level 3, h: abc"}),
      Fields(capture, "liblogger", {"_ws.col.Info"}, {"-o", "tcp.desegment_tcp_streams:FALSE"}));
}

TEST_F(WiresharkTest, ShowsHowAServerTreatsFramesThatAreNoEvents) {
  const std::string outside = "A field is outside of the record: the server drops the event";
  const std::string refused = "The server ends the connection at such a length";
  Capture capture;
  for (const std::string& bytes :
       {std::string("\0\3\xFF", 3) + kSmallFrame, Frame("x") + kSmallFrame,
        Frame(kSmallRecord + "more"), std::string("\1\0\0\0\0\0\0\0\0", 9) + kSmallFrame.substr(1),
        "\1" + Number(-1) + kSmallFrame, "\1" + Number(64 * 1024 * 1024 + 1) + kSmallFrame,
        Frame("01" + Number(3) + Number(INT_MAX) + std::string(26, 'x')),
        Frame("01" + Number(3) + Number(INT_MIN) + std::string(26, 'x')),
        Frame("01" + Number(3) + Number(-10) + std::string(26, 'x')),
        Frame("01" + Number(3) + Number(0) + Number(-7) + std::string(22, 'x'))}) {
    capture.Add(Said(bytes));
  }

  EXPECT_EQ((Words{"Skipped bytes (and 1 more)|abc|", "Rejected event (and 1 more)|abc|" + outside,
                   "Event, level 3, h: abc|abc|The record goes on after its last field",
                   "Length 0 (and 2 more)|abc|No frame: the next four bytes are the length "
                   "instead,No frame: the next four bytes are the length instead",
                   "Length -1 (and 1 more)||" + refused, "Length 67108865 (and 1 more)||" + refused,
                   "Rejected event||" + outside, "Rejected event||" + outside,
                   "Rejected event||" + outside, "Rejected event||" + outside}),
            Fields(capture, "tcp.srcport != 4711 && liblogger && tcp.seq > 1",
                   {"_ws.col.Info", "liblogger.message", "_ws.expert.message"}));
}

TEST_F(WiresharkTest, ShowsTheEventsThatAServerTakes) {
  const std::string later = FrameOf(Event("later"));
  const Conversation conversation = RecordWith([&later](int port) {
    PlainConnection client = PlainConnection::To(port);
    client.Send(kVersionOne + kSmallFrame + Frame("x") + "\3" + later + kFlushRequest + "\1" +
                Number(-1) + kSmallFrame);
    EXPECT_EQ(5U, client.ReceiveToEnd().size());
  });
  Capture capture;
  capture.Add(conversation);

  EXPECT_EQ((Words{"abc", "later"}), Lines(Served()));
  EXPECT_EQ((Words{"abc,later"}), Fields(capture, "liblogger.message", {"liblogger.message"}));
}

/// Events, of which some bytes are others.
std::string Damaged(std::mt19937& random) {
  std::string bytes;
  for (int count = 0; count < 5; ++count) {
    std::string frame = kSmallFrame;
    for (unsigned int damage = random() % 4; damage > 0; --damage) {
      frame[random() % frame.size()] = "\0\1\2\x7F\x80\xFF*"[random() % 7];
    }
    bytes += frame;
  }
  return bytes;
}

TEST_F(WiresharkTest, TakesAnyBytes) {
  std::mt19937 random(1);
  Capture capture;
  for (unsigned int count = 0; count < 300; ++count) {
    capture.Add(Said(Damaged(random)), 1 + count % 60);
    capture.AddWithoutOpening(Said(Damaged(random)), 1 + count % 60);
  }

  EXPECT_EQ(Words{}, Fields(capture, "_ws.lua.error", {"frame.number"}));
  EXPECT_LT(500U, Fields(capture, "liblogger.message", {"frame.number"}).size());
}

}  // namespace

// Both ends speak with a peer that was written apart from this library, in another language.

#include <gtest/gtest.h>

#include <climits>
#include <string>
#include <vector>

#include "LogClientSocket.h"
#include "LogEvent.h"
#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/ServingProgram.h"
#include "Support/TemporaryFolder.h"

namespace {

using Words = std::vector<std::string>;

std::string Script(const std::string& name) {
  return std::string(PROJECT_FOLDER) + "/tests/EndToEnd/peers/" + name;
}

LogEvent Event(const std::string& message) {
  return {3, message, "net", "src/f.cpp", 42, timeval{1709647629, 999999}, 7};
}

/// The client speaks with a server that takes at most so many bytes at once.
class ClientPeerTest : public testing::Test {
 protected:
  /// The server's record, once the client has ended.
  std::string WrittenDown() {
    const ProcessResult result = server_.Wait();
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("", result.errors);
    return result.output;
  }

  RunningProgram server_{{"python3", Script("fake_server.py"), "1000"}};
  const int port_ = std::stoi(server_.ReadLine());
};

TEST_F(ClientPeerTest, UnderstandsEachEvent) {
  {
    LogClientSocket client("127.0.0.1", port_, false, 0);
    ASSERT_TRUE(client.IsInitialize());
    EXPECT_TRUE(client.Publish(Event("abc")));
    EXPECT_TRUE(client.Publish(LogEvent(UINT_MAX, "", "", "", -1, timeval{-2, -3}, -4)));
    EXPECT_TRUE(client.Publish(LogEvent(0, "\xFF\xE9", "h", "C:\\f", 0, timeval{}, 0)));
  }

  EXPECT_EQ(
      "3|abc|net|src/f.cpp|42|1709647629|999999|7\n"
      "4294967295||||-1|-2|-3|-4\n"
      "0|\xC3\xBF\xC3\xA9|h|C:\\f|0|0|0|0\n",
      WrittenDown());
}

TEST_F(ClientPeerTest, UnderstandsAQueueAndItsFlushRequest) {
  std::string expected;
  {
    LogClientSocket client("127.0.0.1", port_, true, 0);
    for (int number = 0; number < 3000; ++number) {
      client.Publish(Event(std::to_string(number)));
      expected += "3|" + std::to_string(number) + "|net|src/f.cpp|42|1709647629|999999|7\n";
    }
    EXPECT_TRUE(client.SendToServer(true));
    EXPECT_TRUE(client.SendToServer(true));
  }

  EXPECT_EQ(expected + "flush\nflush\n", WrittenDown());
}

TEST_F(ClientPeerTest, UnderstandsALargeEvent) {
  {
    LogClientSocket client("127.0.0.1", port_, false, 0);
    EXPECT_TRUE(client.Publish(Event(std::string(3 * 1024 * 1024, 'x'))));
    EXPECT_TRUE(client.SendToServer(true));
  }

  EXPECT_EQ("3|3145728*x|net|src/f.cpp|42|1709647629|999999|7\nflush\n", WrittenDown());
}

/// The server speaks with a client.
class ServerPeerTest : public testing::Test {
 protected:
  ServerPeerTest() {
    WriteFile(folder_.Path("serve.ini"),
              "loglevel = 1 2 3\n"
              "loglevel.1.name = ERROR\nloglevel.2.name = INFO\nloglevel.3.name = DEBUG\n"
              "logclient = file\n"
              "logclient.file.type = LogClientFile\n"
              "logclient.file.handler = default\n"
              "logclient.file.layout = LogLayoutExtended\n"
              "logclient.file.parameter.0.name = filename\n"
              "logclient.file.parameter.0.value = " +
                  folder_.Path("served.log") + "\n");
  }

  /// Runs a client that does all this.
  ProcessResult RunClient(const ServingProgram& server, const Words& words) const {
    Words command{"python3", Script("fake_client.py"), std::to_string(server.Port())};
    command.insert(command.end(), words.begin(), words.end());
    return RunProgram(command);
  }

  void ExpectSatisfied(const ProcessResult& result) const {
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("", result.errors);
  }

  Words Options() const { return {"--config", folder_.Path("serve.ini")}; }
  Words Served() const { return Lines(folder_.Path("served.log")); }

  TemporaryFolder folder_;
};

/// The part of an extended layout's line after its date and time.
std::string AfterTheTime(const std::string& line) { return line.substr(line.find('|')); }

TEST_F(ServerPeerTest, UnderstandsEachEvent) {
  ServingProgram server(LOGGERCTL, Options());

  ExpectSatisfied(RunClient(server, {"1", "1", "event:1|disk full|net|src/f.cpp|42|1|2|7", "flush",
                                     "event:2||||-3|1|2|7", "flush"}));

  ASSERT_EQ(2U, Served().size());
  EXPECT_EQ("|ERROR| src/f.cpp 42 disk full", AfterTheTime(Served()[0]));
  EXPECT_EQ("|INFO|  -3 ", AfterTheTime(Served()[1]));
  const ProcessResult result = server.Stop();
  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("served 1 connection and 2 events, rejected 0 frames\n", result.output);
}

TEST_F(ServerPeerTest, AnswersVersions) {
  ServingProgram server(LOGGERCTL, Options());

  ExpectSatisfied(RunClient(server, {"7", "1", "flush"}));
  ExpectSatisfied(RunClient(server, {"0", "0", "flush"}));
  ExpectSatisfied(RunClient(server, {"-5", "-5", "flush"}));

  EXPECT_EQ("served 3 connections and 0 events, rejected 0 frames\n", server.Stop().output);
}

TEST_F(ServerPeerTest, UnderstandsEventsInAnyPieces) {
  ServingProgram server(LOGGERCTL, Options());

  ExpectSatisfied(RunClient(server, {"1", "1", "pieces:1", "many:20", "flush", "pieces:7",
                                     "many:200", "flush", "pieces:0", "many:2000", "flush"}));

  EXPECT_EQ(2220U, Served().size());
  EXPECT_EQ("|ERROR| fake_client.py 1 1999", AfterTheTime(Served().back()));
}

TEST_F(ServerPeerTest, UnderstandsALargeEvent) {
  ServingProgram server(LOGGERCTL, Options());

  ExpectSatisfied(RunClient(server, {"1", "1", "large:3145728", "flush"}));

  ASSERT_EQ(1U, Served().size());
  EXPECT_EQ("|ERROR| fake_client.py 1 " + std::string(3145728, 'x'), AfterTheTime(Served()[0]));
}

TEST_F(ServerPeerTest, SkipsWhatIsNoFrameAndRejectsWhatIsNoRecord) {
  ServingProgram server(LOGGERCTL, Options());

  ExpectSatisfied(RunClient(
      server, {"1", "1", "bytes:0003ff", "event:1|one|h|f|1|1|1|1", "bytes:010000000178",
               "bytes:0100000000", "bytes:000000023031", "event:1|two|h|f|1|1|1|1", "flush"}));

  ASSERT_EQ(2U, Served().size());
  EXPECT_EQ("|ERROR| f 1 one", AfterTheTime(Served()[0]));
  EXPECT_EQ("|ERROR| f 1 two", AfterTheTime(Served()[1]));
  EXPECT_EQ("served 1 connection and 2 events, rejected 2 frames\n", server.Stop().output);
}

}  // namespace

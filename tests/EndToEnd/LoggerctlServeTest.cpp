#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "LogClientSocket.h"
#include "Support/Events.h"
#include "Support/Eventually.h"
#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/ServingProgram.h"
#include "Support/Sockets.h"
#include "Support/TemporaryFolder.h"
#include "Support/WireBytes.h"

namespace {

typedef std::vector<std::string> Words;

Words operator+(Words first, const Words& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

/// The handlers "default" and "net" write messages into files of their own; "lonely" has no client.
class LoggerctlServeTest : public testing::Test {
 protected:
  LoggerctlServeTest()
      : ini_(File("serve.ini",
                  "loglevel = 1\nloglevel.1.name = ERROR\n"
                  "loghandler = default net lonely\n"
                  "logclient = plain net\n" +
                      FileClient("plain", "default") + FileClient("net", "net"))) {}

  std::string File(const std::string& name, const std::string& content) const {
    const std::string path = folder_.Path(name);
    WriteFile(path, content);
    return path;
  }
  std::string FileClient(const std::string& name, const std::string& handler) const {
    const std::string client = "logclient." + name;
    return client + ".type = LogClientFile\n" + client + ".handler = " + handler + "\n" + client +
           ".layout = LogLayoutMessage\n" + client + ".parameter.0.name = filename\n" + client +
           ".parameter.0.value = " + folder_.Path(handler + ".log") + "\n";
  }

  Words Config() const { return {"--config", ini_}; }
  Words Served(const std::string& handler = "default") const {
    return Lines(folder_.Path(handler + ".log"));
  }

  /// The command with words that it cannot use.
  ProcessResult Run(const Words& words) const {
    return RunProgram(Words{LOGGERCTL, "serve"} + words);
  }

  TemporaryFolder folder_;
  const std::string ini_;
};

/// Sends events, and waits until the server has taken them.
void Send(int port, const Words& messages, const std::string& address = "127.0.0.1") {
  LogClientSocket client(address, port, true, 0);
  for (const std::string& message : messages) client.Publish(EventWith(message));
  EXPECT_TRUE(client.SendToServer(true));
}

void ExpectUnusable(const std::string& errors, const ProcessResult& result) {
  EXPECT_EQ(2, result.exitCode);
  EXPECT_EQ("", result.output);
  EXPECT_EQ(errors, result.errors);
}

TEST_F(LoggerctlServeTest, PrintsWhereItListens) {
  ServingProgram server(LOGGERCTL, Config());

  EXPECT_GT(server.Port(), 0);
  EXPECT_EQ("listening on 127.0.0.1 port " + std::to_string(server.Port()), server.Greeting());
}

TEST_F(LoggerctlServeTest, LogsWhatItReceivesAndReportsIt) {
  ServingProgram server(LOGGERCTL, Config());
  Send(server.Port(), {"one", "two"});
  Send(server.Port(), {"three"});

  const ProcessResult result = server.Stop();

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("served 2 connections and 3 events, rejected 0 frames\n", result.output);
  EXPECT_EQ("", result.errors);
  EXPECT_EQ((Words{"one", "two", "three"}), Served());
}

TEST_F(LoggerctlServeTest, StopsOnEitherSignal) {
  for (const int signal : {SIGINT, SIGTERM}) {
    ServingProgram server(LOGGERCTL, Config());

    const ProcessResult result = server.Stop(signal);

    EXPECT_EQ(0, result.exitCode) << signal;
    EXPECT_EQ(0, result.signal) << signal;
    EXPECT_EQ("served 0 connections and 0 events, rejected 0 frames\n", result.output);
    EXPECT_EQ("", result.errors);
  }
}

TEST_F(LoggerctlServeTest, CountsOneOfEachAsOne) {
  ServingProgram server(LOGGERCTL, Config());
  PlainConnection client = PlainConnection::To(server.Port());
  client.Send(kVersionOne + Frame("no record") + FrameOf(EventWith("one")) + kFlushRequest);
  EXPECT_EQ(5U, client.Receive(5).size());

  EXPECT_EQ("served 1 connection and 1 event, rejected 1 frame\n", server.Stop().output);
}

TEST_F(LoggerctlServeTest, HasWrittenAllThatWasFlushedWhenItIsStoppedAmongIdleConnections) {
  ServingProgram server(LOGGERCTL, Config());
  Words messages;
  for (int number = 0; number < 5000; ++number) messages.push_back(std::to_string(number));
  LogClientSocket client("127.0.0.1", server.Port(), true, 0);
  const PlainConnection idle = PlainConnection::To(server.Port());
  for (const std::string& message : messages) client.Publish(EventWith(message));
  EXPECT_TRUE(client.SendToServer(true));

  const ProcessResult result = server.Stop(SIGINT);

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ(messages, Served());
}

TEST_F(LoggerctlServeTest, LogsThroughTheNamedHandler) {
  ServingProgram server(LOGGERCTL, Config() + Words{"--handler", "net"});
  Send(server.Port(), {"one"});

  EXPECT_EQ(0, server.Stop().exitCode);

  EXPECT_EQ(Words{"one"}, Served("net"));
  EXPECT_EQ(Words{}, Served());
}

TEST_F(LoggerctlServeTest, ReadsAnXmlConfiguration) {
  const std::string xml = File(
      "serve.xml",
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<configlogger>\n<logging enable=\"true\"/>\n"
      "<loglevel id=\"1\" name=\"ERROR\"/>\n<loghandler name=\"default\"/>\n"
      "<logclient><type type=\"LogClientFile\"/><clientloghandler handlername=\"default\"/>"
      "<parameter name=\"filename\" value=\"" +
          folder_.Path("xml.log") +
          "\"/><layout layout=\"LogLayoutMessage\"/></logclient>\n"
          "<logtree><loghandler name=\"default\"/></logtree>\n</configlogger>\n");
  ServingProgram server(LOGGERCTL, {"--config", xml});
  Send(server.Port(), {"one"});

  const ProcessResult result = server.Stop();

  EXPECT_EQ("", result.errors);
  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ(Words{"one"}, Served("xml"));
}

TEST_F(LoggerctlServeTest, ListensOnTheGivenAddress) {
  ServingProgram server(LOGGERCTL, Config() + Words{"--address", "::1"});
  EXPECT_EQ("listening on ::1 port " + std::to_string(server.Port()), server.Greeting());
  Send(server.Port(), {"one"}, "::1");

  EXPECT_EQ("served 1 connection and 1 event, rejected 0 frames\n", server.Stop().output);

  EXPECT_EQ(Words{"one"}, Served());
}

TEST_F(LoggerctlServeTest, ListensOnTheGivenPort) {
  int port = 0;
  {
    ServingProgram first(LOGGERCTL, Config());
    port = first.Port();
    Send(port, {"one"});
    first.Stop();
  }

  ServingProgram second(LOGGERCTL, Config() + Words{"--port", std::to_string(port)});

  EXPECT_EQ("listening on 127.0.0.1 port " + std::to_string(port), second.Greeting());
  Send(port, {"two"});
}

TEST_F(LoggerctlServeTest, StampsTheThreadId) {
  // No layout shows it: the event goes on to another server.
  PlainListener listener;
  const std::string config =
      File("forward.ini",
           "loglevel = 1\nloglevel.1.name = ERROR\nlogclient = s\n"
           "logclient.s.type = LogClientSocket\nlogclient.s.handler = default\n"
           "logclient.s.parameter.0.name = serverip\nlogclient.s.parameter.0.value = 127.0.0.1\n"
           "logclient.s.parameter.1.name = serverport\nlogclient.s.parameter.1.value = " +
               std::to_string(listener.Port()) + "\n");
  PlainConnection forwarded{-1};
  std::thread acceptor([&] {
    forwarded = listener.Accept();
    EXPECT_EQ(kVersionOne, forwarded.Receive(4));
    forwarded.Send(kVersionOne);
  });
  ServingProgram server(LOGGERCTL, {"--config", config, "--stamp-thread-id", "5"});
  acceptor.join();

  Send(server.Port(), {"one"});

  LogEvent stamped = EventWith("one");
  stamped.SetThreadId(5);
  EXPECT_EQ(FrameOf(stamped), forwarded.Receive(FrameOf(stamped).size()));
}

TEST_F(LoggerctlServeTest, WarnsWhenNothingIsWritten) {
  ServingProgram server(LOGGERCTL, Config() + Words{"--handler", "lonely"});

  const ProcessResult result = server.Stop();

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ(
      "loggerctl serve: warning: handler 'lonely' reaches no client; nothing will be written\n",
      result.errors);
}

TEST_F(LoggerctlServeTest, CountsFilteredEventsApart) {
  ServingProgram server(LOGGERCTL, Config());
  {
    LogClientSocket client("127.0.0.1", server.Port(), true, 0);
    client.Publish(EventWith("one"));
    for (int count = 0; count < 2; ++count) {
      client.Publish(LogEvent(7, "filtered", "handler", "file.cpp", 42, timeval{1, 0}, 1));
    }
    EXPECT_TRUE(client.SendToServer(true));
  }

  const ProcessResult result = server.Stop();

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("served 1 connection and 1 event, rejected 0 frames, filtered out 2 events\n",
            result.output);
  EXPECT_EQ(Words{"one"}, Served());
}

TEST_F(LoggerctlServeTest, CountsTheEventsThatDidNotReachEveryClient) {
  const std::string config = File(
      "full.ini", "loglevel = 1\nlogclient = plain full left\n" + FileClient("plain", "default") +
                      "logclient.full.type = LogClientFile\nlogclient.full.handler = default\n"
                      "logclient.full.parameter.0.name = filename\n"
                      "logclient.full.parameter.0.value = /dev/full\n"
                      "logclient.left.type = LogClientFiel\nlogclient.left.handler = default\n");
  ServingProgram server(LOGGERCTL, {"--config", config});
  Send(server.Port(), {"one", "two"});

  const ProcessResult result = server.Stop();

  EXPECT_EQ(3, result.exitCode);
  EXPECT_EQ("served 1 connection and 2 events, rejected 0 frames\n", result.output);
  EXPECT_EQ(
      "loggerctl serve: client 'left' (LogClientFiel) takes no events: "
      "there is no kind of client 'LogClientFiel'\n"
      "loggerctl serve: client 'full' (LogClientFile, /dev/full) takes no events: "
      "No space left on device\n"
      "loggerctl serve: 2 of 2 events did not reach client 'full'\n"
      "loggerctl serve: 2 of 2 events did not reach client 'left'\n",
      result.errors);
  EXPECT_EQ((Words{"one", "two"}), Served());
}

TEST_F(LoggerctlServeTest, SaysWhichServerItCannotReach) {
  PlainListener listener;
  const std::string port = std::to_string(listener.Port());
  listener.Close();
  const std::string config =
      File("forward.ini",
           "loglevel = 1\nlogclient = s\n"
           "logclient.s.type = LogClientSocket\nlogclient.s.handler = default\n"
           "logclient.s.parameter.0.name = serverip\nlogclient.s.parameter.0.value = localhost\n"
           "logclient.s.parameter.1.name = serverport\nlogclient.s.parameter.1.value = " +
               port + "\n");
  ServingProgram server(LOGGERCTL, {"--config", config});

  const ProcessResult result = server.Stop();

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ(
      "LOGGER ERROR at Init [61]: 'Connection refused'\n"
      "loggerctl serve: client 's' (LogClientSocket, localhost port " +
          port + ") takes no events: Connection refused\n",
      result.errors);
}

TEST_F(LoggerctlServeTest, EndsAConnectionAtAFrameAboveTheLimit) {
  const std::string fitting(400, 'x');
  ServingProgram server(LOGGERCTL, Config() + Words{"--max-frame", "500"});
  Send(server.Port(), {fitting});
  PlainConnection client = PlainConnection::To(server.Port());
  client.Send(kVersionOne + FrameOf(EventWith(std::string(500, 'x'))));
  EXPECT_EQ(kVersionOne, client.ReceiveToEnd());

  EXPECT_EQ("served 2 connections and 1 event, rejected 1 frame\n", server.Stop().output);
  EXPECT_EQ(Words{fitting}, Served());
}

TEST_F(LoggerctlServeTest, DoesNotTakeWhatIsNoLength) {
  for (const std::string length : {"0", "-1", "1k", "", "2147483648"}) {
    const ProcessResult result = Run(Config() + Words{"--max-frame", length});

    EXPECT_EQ(2, result.exitCode) << length;
    EXPECT_NE(std::string::npos, result.errors.find("--max-frame")) << result.errors;
  }
}

TEST_F(LoggerctlServeTest, DoesNotKnowAnUnknownHandler) {
  const ProcessResult result = Run(Config() + Words{"--handler", "Net"});

  EXPECT_EQ(2, result.exitCode);
  EXPECT_EQ("", result.output);
  EXPECT_EQ(0U,
            result.errors.find("loggerctl: unknown handler 'Net'; did you mean 'net'? There are "))
      << result.errors;
}

TEST_F(LoggerctlServeTest, DoesNotListenOnAPortThatIsTaken) {
  const PlainListener listener;
  const std::string port = std::to_string(listener.Port());

  ExpectUnusable(
      "loggerctl: cannot listen on 127.0.0.1 port " + port + ": Address already in use\n",
      Run(Config() + Words{"--port", port}));
}

TEST_F(LoggerctlServeTest, DoesNotListenOnAnAddressItCannotHave) {
  ExpectUnusable("loggerctl: cannot listen on 192.0.2.1 port 0: Cannot assign requested address\n",
                 Run(Config() + Words{"--port", "0", "--address", "192.0.2.1"}));
  ExpectUnusable("loggerctl: cannot listen on no host port 0: Name or service not known\n",
                 Run(Config() + Words{"--port", "0", "--address", "no host"}));
}

TEST_F(LoggerctlServeTest, ListensOnPort4711UnlessAnotherIsGiven) {
  // An address that nobody can listen on shows the port without taking it.
  ExpectUnusable(
      "loggerctl: cannot listen on 192.0.2.1 port 4711: Cannot assign requested address\n",
      Run(Config() + Words{"--address", "192.0.2.1"}));
}

TEST_F(LoggerctlServeTest, SaysWhatAPortIs) {
  ExpectUnusable(
      "loggerctl: --port: 'http' is no port: a port is a number from 1 to 65535, or 0, with which "
      "the system chooses one; see loggerctl serve --help\n",
      Run(Config() + Words{"--port", "http"}));
}

TEST_F(LoggerctlServeTest, DoesNotTakeWhatIsNoPort) {
  for (const std::string port : {"-1", "65536", "http", "", "80x"}) {
    const ProcessResult result = Run(Config() + Words{"--port", port});

    EXPECT_EQ(2, result.exitCode) << port;
    EXPECT_EQ("", result.output) << port;
    EXPECT_NE(std::string::npos, result.errors.find("--port")) << result.errors;
  }
}

TEST_F(LoggerctlServeTest, OpensEveryFileAgainOnSighup) {
  ServingProgram server(LOGGERCTL, Config());
  Send(server.Port(), {"one"});
  const std::string moved = folder_.Path("default.log.1");
  std::filesystem::rename(folder_.Path("default.log"), moved);
  std::filesystem::rename(folder_.Path("net.log"), folder_.Path("net.log.1"));

  server.Signal(SIGHUP);
  int sent = 0;
  EXPECT_TRUE(Eventually([&] {
    Send(server.Port(), {"event " + std::to_string(++sent)});
    return Exists(folder_.Path("default.log"));
  }));
  const ProcessResult result = server.Stop();

  EXPECT_EQ(0, result.exitCode);
  Words lines = Lines(moved);
  EXPECT_EQ("one", lines.front());
  lines.erase(lines.begin());
  Words all;
  for (int number = 1; number <= sent; ++number) all.push_back("event " + std::to_string(number));
  EXPECT_EQ(all, lines + Served());
  EXPECT_FALSE(Exists(folder_.Path("net.log")));  // Nothing was written to it.
}

TEST_F(LoggerctlServeTest, DoesNotTakeWhatIsNoThreadId) {
  for (const std::string id : {"-1", "x", "2147483648"}) {
    const ProcessResult result = Run(Config() + Words{"--stamp-thread-id", id});

    EXPECT_EQ(2, result.exitCode) << id;
    EXPECT_EQ("", result.output) << id;
    EXPECT_NE(std::string::npos, result.errors.find("--stamp-thread-id")) << result.errors;
  }
}

TEST_F(LoggerctlServeTest, NeedsAConfigurationThatCanBeRead) {
  const std::string missing = folder_.Path("missing.ini");

  ExpectUnusable("loggerctl: " + missing + ": No such file or directory\n",
                 Run({"--config", missing}));
  EXPECT_EQ(2, Run({}).exitCode);
}

TEST_F(LoggerctlServeTest, HelpsOnStandardOutput) {
  const ProcessResult result = Run({"--help"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.errors);
  for (const char* const part :
       {"--config", "--handler", "--address", "--port", "--max-frame", "--stamp-thread-id"}) {
    EXPECT_NE(std::string::npos, result.output.find(part)) << part;
  }
}

}  // namespace

// The library leaves the process's signals alone, and raises none.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <atomic>
#include <csignal>
#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "LogClientConsole.h"
#include "LogClientFile.h"
#include "LogClientManager.h"
#include "LogClientRollingFile.h"
#include "LogClientSocket.h"
#include "LogClientXml.h"
#include "LogConfiguratorIni.h"
#include "LogConfiguratorXml.h"
#include "LogFormater.h"
#include "SocketLogServer.h"
#include "Support/ClientAmongOthers.h"
#include "Support/Events.h"
#include "Support/Eventually.h"
#include "Support/Files.h"
#include "Support/SignalState.h"
#include "Support/Sockets.h"
#include "Support/TemporaryFolder.h"
#include "Support/Threads.h"
#include "Support/WireBytes.h"
#include "Support/XmlConfiguration.h"

namespace {

using Answers = std::vector<bool>;

/// All that the library does: it sets up systems from files, logs through all kinds of clients and
/// to a log server, rolls over, and fails in several ways.
class FullUse {
 public:
  FullUse() {
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    WriteFile(folder_.Path("app.ini"), "loglevel = 1\nloghandler = default served\n");
    WriteFile(folder_.Path("app.xml"), XmlConfiguration().Text());
    EXPECT_TRUE(LogConfiguratorIni().ReadConfiguration(folder_.Path("app.ini")));
    EXPECT_TRUE(LogConfiguratorXml().ReadConfiguration(folder_.Path("app.xml")));
    EXPECT_TRUE(server_.Start(Logger::GetLogHandler("served"), "127.0.0.1", 0, 0));
    queue_ = new LogClientSocket("127.0.0.1", server_.GetPort(), true, 0);
    Attach(queue_);
    Attach(new LogClientSocket("127.0.0.1", server_.GetPort(), false, 0));
    const int portOfNobody = PlainListener().Port();
    Attach(new LogClientSocket("127.0.0.1", portOfNobody, false, 0));
    Attach(new LogClientConsole);
    Attach(new LogClientFile(folder_.Path("app.log"), true));
    Attach(new LogClientFile(folder_.Path("missing/app.log"), true));
    Attach(new LogClientFile("/dev/full", true));
    Attach(new LogClientRollingFile(folder_.Path("rolling.log"), 0, 2));
    Attach(new LogClientXml(folder_.Path("log.xml"), "log.xsl"));
  }
  ~FullUse() {
    server_.Stop();
    handler_->Log(1, "refused");
    delete handler_;
    Logger::GetLogManager()->GetLogClientManager()->Clear();
    testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
  }
  FullUse(const FullUse&) = delete;
  FullUse& operator=(const FullUse&) = delete;

  void Log() {
    EXPECT_TRUE(handler_->Log(1, "%s", std::string(5000, 'x').c_str()));
    EXPECT_TRUE(handler_->DebugLogForce(1, "a.cpp", 42, "text"));
    LogFormater(1, "a.cpp", 42).Log(handler_, "%d", 42);
    EXPECT_FALSE(handler_->Log(99, "rejected"));
    EXPECT_TRUE(queue_->SendToServer(true));
  }

 private:
  const TemporaryFolder folder_;
  SocketLogServer server_;
  LogHandler* const handler_ = Logger::GetLogHandler("full use");
  LogClientSocket* queue_ = nullptr;

  void Attach(LogClient* client) { handler_->AddLogClient(client); }
};

class SignalsTest : public testing::Test {
 protected:
  SignalsTest() { RunFirstThread(); }
};

TEST_F(SignalsTest, KeepTheirActionsAndMasksInEveryThreadOfTheApplication) {
  std::signal(SIGTERM, SIG_IGN);
  std::signal(SIGUSR2, [](int) {});
  std::signal(SIGPIPE, SIG_DFL);
  const BlockedSignal own(SIGUSR1);
  std::atomic<int> step{0};
  std::unique_ptr<FullUse> use;
  std::thread other([&] {
    const BlockedSignal another(SIGHUP);
    step = 1;
    EXPECT_TRUE(Eventually([&] { return step == 2; }));
    use->Log();
    step = 3;
    EXPECT_TRUE(Eventually([&] { return step == 4; }));
  });
  EXPECT_TRUE(Eventually([&] { return step == 1; }));
  const std::string actions = SignalActions();
  const auto masks = BlockedSignalsOfThreads();
  EXPECT_GE(masks.size(), 2U);

  use = std::make_unique<FullUse>();
  use->Log();
  step = 2;
  EXPECT_TRUE(Eventually([&] { return step == 3; }));

  EXPECT_EQ(actions, SignalActions());
  auto masksNow = BlockedSignalsOfThreads();
  for (const auto& [thread, mask] : masks) EXPECT_EQ(mask, masksNow[thread]);
  use.reset();
  EXPECT_EQ(actions, SignalActions());
  // The threads of the log server may take a moment to go.
  EXPECT_TRUE(Eventually([&] { return masks == BlockedSignalsOfThreads(); }));
  step = 4;
  other.join();
}

TEST_F(SignalsTest, AreBlockedInTheThreadsOfALogServerButForTheirOwnErrors) {
  std::uint64_t expected = ~std::uint64_t{0};
  for (const int signal : {SIGKILL, SIGSTOP, __SIGRTMIN, __SIGRTMIN + 1,  // Which nobody can block.
                           SIGSEGV, SIGBUS, SIGFPE, SIGILL, SIGTRAP, SIGSYS, SIGABRT}) {
    expected &= ~SignalBit(signal);
  }
  const auto masks = BlockedSignalsOfThreads();
  RecordingClient target;
  SocketLogServer server;
  ASSERT_TRUE(server.Start(&target, "127.0.0.1", 0, 0));
  PlainConnection client = PlainConnection::To(server.GetPort());
  client.Send(kVersionOne);
  EXPECT_EQ(kVersionOne, client.Receive(4));

  int ofTheServer = 0;
  for (const auto& [thread, mask] : BlockedSignalsOfThreads()) {
    if (masks.count(thread) > 0) continue;
    EXPECT_EQ(expected, mask);
    ++ofTheServer;
  }

  EXPECT_EQ(2, ofTheServer);
}

TEST_F(SignalsTest, AreNotRaisedByAConnectionThatWasReset) {
  std::signal(SIGPIPE, SIG_DFL);
  PlainListener listener;
  PlainConnection peer{-1};
  std::thread accepting([&] {
    peer = listener.Accept();
    peer.Send(kVersionOne);
  });
  LogClientSocket client("127.0.0.1", listener.Port(), false, 0);
  accepting.join();
  ClientAmongOthers among(client);
  EXPECT_TRUE(among.Log("one"));

  peer.Reset();
  EXPECT_TRUE(Eventually([&] { return !among.Log("refused"); }));

  EXPECT_EQ(Answers(10, false), among.LogAll(std::vector<std::string>(10, "refused")));
}

/// A pipe or FIFO whose reader has gone is the application's affair: it set what SIGPIPE does.
class BrokenPipeTest : public SignalsTest {
 protected:
  /// Writes to standard output, of which nobody reads, and returns what Publish did.
  static Answers LogToTheConsole() {
    std::array<int, 2> ends{};
    EXPECT_EQ(0, pipe(ends.data()));
    const int former = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    close(ends[0]);
    close(ends[1]);
    LogClientConsole client;
    const Answers answers = ClientAmongOthers(client).LogAll({"one", "two"});
    dup2(former, STDOUT_FILENO);
    close(former);
    return answers;
  }
  Answers LogToTheFifo() const {
    const std::string fifo = folder_.Path("fifo");
    mkfifo(fifo.c_str(), 0600);
    const int reader = open(fifo.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    LogClientFile client(fifo, true);
    close(reader);
    return ClientAmongOthers(client).LogAll({"one", "two", "three"});
  }

  const TemporaryFolder folder_;
};

TEST_F(BrokenPipeTest, EndsTheProcessUnlessItSetSomethingElse) {
  std::signal(SIGPIPE, SIG_DFL);

  EXPECT_EXIT(LogToTheConsole(), testing::KilledBySignal(SIGPIPE), "^$");
  EXPECT_EXIT(LogToTheFifo(), testing::KilledBySignal(SIGPIPE), "^$");
}

TEST_F(BrokenPipeTest, IsAFailedWriteWhenTheSignalIsIgnored) {
  std::signal(SIGPIPE, SIG_IGN);

  EXPECT_EQ((Answers{true, true}), LogToTheConsole());
  EXPECT_EQ((Answers{true, false, false}), LogToTheFifo());
}

}  // namespace

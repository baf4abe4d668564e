#include "Process/ForkGuard.h"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <filesystem>
#include <string>
#include <thread>
#include <vector>

#include "LogClient.h"
#include "LogClientFile.h"
#include "LogClientManager.h"
#include "LogClientSocket.h"
#include "LogClientXml.h"
#include "LogForkListener.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "SocketLogServer.h"
#include "Support/BlockingCall.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/ForkedChild.h"
#include "Support/RecordingClient.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlEntries.h"

namespace {

using Texts = std::vector<std::string>;

class ForkGuardTest : public testing::Test {
 protected:
  ForkGuardTest() { Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR"); }

  LogClientFile* FileClient(const std::string& name) const {
    auto* const client = new LogClientFile(folder_.Path(name), true);
    client->SetLayout("LogLayoutMessage");
    return client;
  }
  std::string Written(const std::string& name) const { return Content(folder_.Path(name)); }

  TemporaryFolder folder_;
  LogHandler* const handler_ = Logger::GetLogHandler("forking");
};

TEST_F(ForkGuardTest, LetsBothSidesGoOnInTheSameFile) {
  handler_->AddLogClient(FileClient("app.log"));
  handler_->Log(1, "before");

  const ForkedChild child([this] { return handler_->Log(1, "child"); });
  EXPECT_TRUE(child.IsWell());
  EXPECT_TRUE(handler_->Log(1, "parent"));

  EXPECT_EQ("before\nchild\nparent\n", Written("app.log"));
}

TEST_F(ForkGuardTest, GivesTheChildAThreadIdOfItsOwn) {
  RecordingClient client;
  handler_->AddLogClient(&client);
  handler_->Log(1, "before");

  const ForkedChild child([&] {
    return handler_->Log(1, "child") && client.Events().back().GetThreadId() == getpid();
  });

  EXPECT_TRUE(child.IsWell());
  EXPECT_EQ(getpid(), client.Events().back().GetThreadId());
}

TEST_F(ForkGuardTest, LetsTheChildMakeAndDeleteHandlersAndLevels) {
  LogHandler own("own");
  handler_->AddLogClient(&own);

  const ForkedChild child([this] {
    Logger::GetLogLevelManager()->AddLogLevel(70, "SPECIAL");
    Logger::GetLogHandler("child")->SetLogLevel(1, false);
    delete Logger::GetLogHandler("child");
    delete handler_;
    return Logger::GetExistingLogHandler("forking") == nullptr &&
           Logger::GetExistingLogHandler("child") == nullptr;
  });

  EXPECT_TRUE(child.IsWell());
}

TEST_F(ForkGuardTest, LetsAReceiverForkWhileItsHandlerIsLocked) {
  RecordingClient client;
  pid_t child = -1;
  client.whenPublished = [&](const LogEvent& event) {
    if (event.GetLogMessage() == "fork") child = fork();
  };
  handler_->AddLogClient(&client);

  handler_->Log(1, "fork");
  if (child == 0) {
    ForkedChild::End([this] {
      bool isLogged = false;
      std::thread([&] { isLogged = handler_->Log(1, "from another thread"); }).join();
      return isLogged && handler_->Log(1, "after");
    });
  }

  EXPECT_TRUE(ForkedChild::HasEndedWell(child));
  EXPECT_TRUE(handler_->Log(1, "after"));
  EXPECT_EQ((Texts{"fork", "after"}), client.Messages());
}

TEST_F(ForkGuardTest, GivesTheChildAConnectionOfItsOwnAndLeavesQueuedEventsToTheParent) {
  RecordingClient target;
  SocketLogServer server;
  ASSERT_TRUE(server.Start(&target, "127.0.0.1", 0, 0));
  auto* const client = new LogClientSocket("127.0.0.1", server.GetPort(), true, 0);
  handler_->AddLogClient(client);
  handler_->Log(1, "queued");

  const ForkedChild child([&] { return handler_->Log(1, "child") && client->SendToServer(true); });
  EXPECT_TRUE(child.IsWell());
  EXPECT_TRUE(client->SendToServer(true));

  EXPECT_EQ((Texts{"child", "queued"}), target.Messages());
  EXPECT_EQ(2U, server.GetConnectionCount());
}

TEST_F(ForkGuardTest, KeepsTheChildFromWritingTheParentsXmlFile) {
  const std::string file = folder_.Path("log.xml");
  auto* const client = new LogClientXml(file, "");
  handler_->AddLogClient(client);
  for (int number = 0; number < 3; ++number) handler_->Log(1, "parent %d", number);
  const std::string before = Content(file);

  const ForkedChild child([&] {
    const bool isPublished = client->Publish(EventWith("child"));
    client->Init("");
    const bool isPublishedAfterInit = client->Publish(EventWith("child"));
    handler_->RemoveLogClient(client);
    delete client;
    return isPublished && isPublishedAfterInit;  // It collects them.
  });

  EXPECT_TRUE(child.IsWell());
  EXPECT_EQ(before, Content(file));
  EXPECT_TRUE(client->Publish(EventWith("again")));
  EXPECT_EQ((Texts{"parent 0", "parent 1", "parent 2", "again"}), XmlLog(file).Messages());
}

TEST_F(ForkGuardTest, LeavesAServerToTheParent) {
  RecordingClient target;
  auto* const server = new SocketLogServer;
  ASSERT_TRUE(server->Start(&target, "127.0.0.1", 0, 0));
  LogClientSocket client("127.0.0.1", server->GetPort(), false, 0);
  EXPECT_TRUE(client.Publish(EventWith("one")));
  EXPECT_TRUE(client.SendToServer(true));

  const ForkedChild child([&] {
    const bool isStopped = server->Stop();
    const bool isStarted = server->Start(&target, "127.0.0.1", 0, 0);
    delete server;
    return isStopped && isStarted;
  });
  EXPECT_TRUE(child.IsWell());
  EXPECT_TRUE(client.Publish(EventWith("two")));
  EXPECT_TRUE(client.SendToServer(true));

  EXPECT_EQ((Texts{"one", "two"}), target.Messages());
  EXPECT_EQ(1U, server->GetConnectionCount());
  EXPECT_TRUE(server->Stop());
  delete server;
}

/// A client of the application's own that notes what it is asked for in a child.
class ListeningClient : public LogClient, public LogForkListener {
 public:
  ListeningClient() {
    initialized_ = true;
    SetForkListener(this);
  }
  ~ListeningClient() override { SetForkListener(nullptr); }

  bool Publish(const LogEvent&) override { return true; }
  void ContinueInChild(bool wasBusy) override { calls.push_back(wasBusy); }

  std::vector<bool> calls;
};

TEST_F(ForkGuardTest, CallsAClientsOwnListenerInTheChild) {
  ListeningClient client;
  { ListeningClient deletedBefore; }

  const ForkedChild child(
      [&] { return client.calls == std::vector<bool>{false} && client.IsInitialize(); });

  EXPECT_TRUE(child.IsWell());
  EXPECT_TRUE(client.calls.empty());
}

class CountingClient : public LogClient {
 public:
  static inline std::atomic<int> deleted{0};

  ~CountingClient() override { ++deleted; }
  bool Publish(const LogEvent&) override { return true; }
};

/// It may be half made at the fork.
TEST_F(ForkGuardTest, LetsTheChildForgetAnUnattachedClientOfAnotherThread) {
  const auto* const own = new CountingClient;
  std::thread([&] {
    const auto* const unattached = new CountingClient;
    static_cast<void>(unattached);
    handler_->AddLogClient(new CountingClient);
  }).join();
  static_cast<void>(own);

  const ForkedChild child([&] {
    Logger::GetLogManager()->GetLogClientManager()->Clear();
    return CountingClient::deleted == 2;
  });

  EXPECT_TRUE(child.IsWell());
  Logger::GetLogManager()->GetLogClientManager()->Clear();
  EXPECT_EQ(3, CountingClient::deleted);
}

TEST_F(ForkGuardTest, LetsTheChildExitInTheUsualWay) {
  RecordingClient target;
  static SocketLogServer server;
  ASSERT_TRUE(server.Start(&target, "127.0.0.1", 0, 0));
  handler_->AddLogClient(FileClient("app.log"));

  const pid_t child = fork();
  if (child == 0) {
    alarm(60);
    handler_->Log(1, "child");
    std::exit(0);
  }

  EXPECT_TRUE(ForkedChild::HasEndedWell(child));
  EXPECT_EQ("child\n", Written("app.log"));
  EXPECT_TRUE(server.Stop());
}

/// A handler whose one receiver, a file, no other process reads from: a thread hangs in it.
class StuckHandlerTest : public ForkGuardTest {
 protected:
  StuckHandlerTest() {
    mkfifo(pipe_.c_str(), 0600);
    reader_ = open(pipe_.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC);
    client_ = new LogClientFile(pipe_, true);
    client_->SetLayout("LogLayoutMessage");
    handler_->AddLogClient(client_);
    handler_->AddLogClient(FileClient("app.log"));
    call_.Begin();
    call_.WaitUntilBlocked();
  }
  ~StuckHandlerTest() override {
    std::string all(std::size_t{1} << 16, ' ');
    while (isStuck_) {
      if (read(reader_, all.data(), all.size()) < 0) std::this_thread::yield();
    }
    call_.Result();
    close(reader_);
  }

  const std::string pipe_ = folder_.Path("pipe");
  int reader_ = -1;
  LogClientFile* client_ = nullptr;
  std::atomic<bool> isStuck_{true};
  BlockingCall call_{[this] {
    handler_->Log(1, "%s", std::string(std::size_t{1} << 20, 'x').c_str());
    isStuck_ = false;
    return 0;
  }};
};

TEST_F(StuckHandlerTest, LetsTheChildGoOnWithTheOthers) {
  LogHandler* const other = Logger::GetLogHandler("other");
  other->AddLogClient(FileClient("other.log"));

  const ForkedChild child([&] { return other->Log(1, "child") && handler_->Log(1, "child"); });

  EXPECT_TRUE(child.IsWell());
  EXPECT_EQ("child\n", Written("other.log"));
}

TEST_F(StuckHandlerTest, CostsNoClientOfHandlersThatAreMerelyBusy) {
  constexpr int kBusy = 2;
  std::vector<LogHandler*> handlers;
  for (int number = 0; number < kBusy; ++number) {
    handlers.push_back(Logger::GetLogHandler("busy " + std::to_string(number)));
    handlers.back()->AddLogClient(FileClient("busy" + std::to_string(number)));
  }
  std::atomic<bool> isOver{false};
  std::vector<std::thread> threads;
  for (LogHandler* const busy : handlers) {
    threads.emplace_back([&, busy] {
      while (!isOver) {
        busy->Log(1, "parent");
        std::this_thread::yield();  // Its processor to others, without the handler's lock.
      }
    });
  }

  const ForkedChild child([&] {
    return std::all_of(handlers.begin(), handlers.end(), [](LogHandler* handler) {
      return handler->GetLogClientAt(0)->IsInitialize() && handler->Log(1, "child");
    });
  });

  EXPECT_TRUE(child.IsWell());
  isOver = true;
  for (std::thread& thread : threads) thread.join();
}

TEST_F(StuckHandlerTest, HasNoInitializedClientsInTheChild) {
  const ForkedChild child(
      [this] { return !client_->IsInitialize() && !client_->Publish(EventWith("lost")); });

  EXPECT_TRUE(child.IsWell());
  EXPECT_TRUE(client_->IsInitialize());
}

TEST_F(StuckHandlerTest, LetsTheChildOpenItsFilesAgain) {
  const ForkedChild child([this] {
    std::filesystem::remove(pipe_);
    client_->ReopenAtNextEvent();
    return client_->Publish(EventWith("child"));
  });

  EXPECT_TRUE(child.IsWell());
  EXPECT_EQ("child\n", Written("pipe"));
}

}  // namespace

#include "LogClientManager.h"

#include <gtest/gtest.h>

#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>
#include <vector>

#include "LibKelUtilities/MutexWrapper.h"
#include "LogClientFile.h"
#include "Logger.h"
#include "Support/CountedClient.h"
#include "Support/Descriptors.h"
#include "Support/TemporaryFolder.h"

namespace {

LogClientManager& ProcessClients() { return *Logger::GetLogManager()->GetLogClientManager(); }

static_assert(std::is_base_of_v<LibKelUtilities::MutexWrapper, LogClientManager>);
static_assert(std::has_virtual_destructor_v<LogClientManager>);

TEST(LogClientManagerTest, EndsTheProcessForANullClient) {
  EXPECT_DEATH(ProcessClients().AddLogClient(nullptr),
               "LogClientManagerTest: Src/LogClientManager:39: "
               "void LogClientManager::AddLogClient\\(LogClient\\*\\): "
               "Assertion `lc' failed\\.");
  EXPECT_DEATH(ProcessClients().RemoveLogClient(nullptr),
               "LogClientManagerTest: Src/LogClientManager:56: "
               "void LogClientManager::RemoveLogClient\\(LogClient\\*\\): "
               "Assertion `lc' failed\\.");
}

TEST(LogClientManagerTest, DeletesEachClientOnceInTheOrderOfAddition) {
  std::atomic<int> destroyed{0};
  std::string order;
  std::vector<CountedClient*> clients;
  for (const char name : {'a', 'b', 'c', 'd'}) {
    clients.push_back(new CountedClient(destroyed));
    clients.back()->whenDestroyed = [&order, name] { order += name; };
  }
  const std::unique_ptr<CountedClient> removed(clients[3]);

  ProcessClients().AddLogClient(clients[1]);  // Which keeps its place.
  ProcessClients().RemoveLogClient(clients[0]);
  ProcessClients().AddLogClient(clients[0]);
  ProcessClients().AddLogClient(removed.get());
  ProcessClients().RemoveLogClient(removed.get());
  ProcessClients().RemoveLogClient(removed.get());
  ProcessClients().Clear();
  EXPECT_EQ("bca", order);
  ProcessClients().Clear();

  EXPECT_EQ("bca", order);
  EXPECT_EQ(3, destroyed);
}

TEST(LogClientManagerTest, LeavesItsClientsAloneAtItsEnd) {
  std::atomic<int> destroyed{0};
  const auto client = std::make_unique<CountedClient>(destroyed);

  {
    LogClientManager manager;
    manager.AddLogClient(client.get());
  }

  EXPECT_EQ(0, destroyed);
}

TEST(LogClientManagerTest, DeletesAClientOnceThatAnotherDeletesAtItsEnd) {
  std::atomic<int> destroyed{0};
  const auto first = new CountedClient(destroyed);
  const auto second = new CountedClient(destroyed);
  new CountedClient(destroyed);
  first->whenDestroyed = [second] { delete second; };

  ProcessClients().Clear();

  EXPECT_EQ(3, destroyed);
}

TEST(LogClientManagerTest, ForgetsAClientThatIsMadeWhileItClears) {
  std::atomic<int> destroyed{0};
  std::unique_ptr<CountedClient> late;
  (new CountedClient(destroyed))->whenDestroyed = [&] {
    late = std::make_unique<CountedClient>(destroyed);
  };

  ProcessClients().Clear();
  ProcessClients().Clear();

  EXPECT_EQ(1, destroyed);
}

TEST(LogClientManagerTest, ClosesTheFilesOfItsClients) {
  const TemporaryFolder folder;
  const std::string file = folder.Path("app.log");
  new LogClientFile(file, true);
  ASSERT_NE(-1, DescriptorOf(file));

  ProcessClients().Clear();

  EXPECT_EQ(-1, DescriptorOf(file));
}

TEST(LogClientManagerTest, KeepsEachClientOnceForSeveralThreads) {
  constexpr int kThreads = 4;
  constexpr int kClients = 100;
  std::atomic<int> destroyed{0};

  std::vector<std::thread> threads;
  for (int i = 0; i < kThreads; ++i) {
    threads.emplace_back([&] {
      for (int client = 0; client < kClients; ++client) {
        new CountedClient(destroyed);
        delete new CountedClient(destroyed);
      }
    });
  }
  for (std::thread& thread : threads) thread.join();

  EXPECT_EQ(kThreads * kClients, destroyed);
  ProcessClients().Clear();
  EXPECT_EQ(2 * kThreads * kClients, destroyed);
}

}  // namespace

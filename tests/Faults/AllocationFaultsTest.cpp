// One allocation of an object fails, whichever it is, while an event is logged.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <new>
#include <string>
#include <thread>
#include <vector>

#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "LogClientSocket.h"
#include "LogClientXml.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "SocketLogServer.h"
#include "Support/Files.h"
#include "Support/RecordingClient.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlEntries.h"

namespace {

// So many allocations of the thread still succeed; below 0 all do.
thread_local int allocationsLeft = -1;

}  // namespace

void* operator new(std::size_t size) {
  if (allocationsLeft == 0) throw std::bad_alloc();
  if (allocationsLeft > 0) --allocationsLeft;
  void* const block = std::malloc(size);
  if (block == nullptr) throw std::bad_alloc();
  return block;
}
// A compiler that looked inside would miss the new that goes with it.
__attribute__((noinline)) void operator delete(void* block) noexcept { std::free(block); }
void operator delete(void* block, std::size_t) noexcept { operator delete(block); }

namespace {

using Texts = std::vector<std::string>;

constexpr int kMost = 40;  // More than an event takes.

class AllocationFaultsTest : public testing::Test {
 protected:
  AllocationFaultsTest() { Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR"); }

  /// Logs an event while all allocations past the first ones fail. False when that ended it.
  bool LogWith(int allocations, const std::string& message) {
    allocationsLeft = allocations;
    try {
      EXPECT_TRUE(handler_.Log(1, "%s", message.c_str()));
      allocationsLeft = -1;
      return true;
    } catch (const std::bad_alloc&) {
      allocationsLeft = -1;
      return false;
    }
  }
  /// Logs from another thread, which blocks if a lock was not released.
  void LogElsewhere(const std::string& message) {
    std::thread([&] { EXPECT_TRUE(handler_.Log(1, "%s", message.c_str())); }).join();
  }

  /// Logs with ever more allocations until they suffice, each time followed by an event for which
  /// there is memory. Returns the events that must be there, and keeps those that may be.
  Texts LogWithMoreAndMore() {
    Texts taken;
    for (int allocations = 0; allocations < kMost; ++allocations) {
      const std::string number = std::to_string(allocations);
      const std::string larger(100 * static_cast<std::size_t>(allocations + 1), 'x');
      const std::string message = "short of memory " + number + larger;
      const bool isLogged = LogWith(allocations, message);
      (isLogged ? taken : doubtful_).push_back(message);
      LogElsewhere("with memory " + number);
      taken.push_back("with memory " + number);
      if (isLogged) break;
    }
    EXPECT_FALSE(doubtful_.empty());
    return taken;
  }
  /// Whether all that was taken is there in its order, and nothing but what may be there.
  void ExpectAllOf(const Texts& taken, const Texts& found) {
    std::size_t next = 0;
    for (const std::string& text : found) {
      if (next < taken.size() && text == taken[next]) {
        ++next;
      } else {
        EXPECT_EQ(1, std::count(doubtful_.begin(), doubtful_.end(), text)) << text;
      }
    }
    EXPECT_EQ(taken.size(), next);
  }

  const TemporaryFolder folder_;
  LogHandler handler_{"short of memory"};
  Texts doubtful_;
};

TEST_F(AllocationFaultsTest, LoseNoOtherEventOfAFile) {
  LogClientFile client(folder_.Path("app.log"), true);
  client.SetLayout("LogLayoutMessage");
  handler_.AddLogClient(&client);

  const Texts taken = LogWithMoreAndMore();

  ExpectAllOf(taken, Lines(folder_.Path("app.log")));
}

TEST_F(AllocationFaultsTest, LoseNoOtherEventOfARollingFile) {
  LogClientRollingFile client(folder_.Path("app.log"), 0, 2 * kMost);
  client.SetLayout("LogLayoutMessage");
  handler_.AddLogClient(&client);

  const Texts taken = LogWithMoreAndMore();

  Texts found;
  for (int number = 2 * kMost; number >= 1; --number) {
    const std::string backup = folder_.Path("app.log." + std::to_string(number));
    if (!Exists(backup)) continue;
    for (const std::string& line : Lines(backup)) found.push_back(line);
  }
  for (const std::string& line : Lines(folder_.Path("app.log"))) found.push_back(line);
  ExpectAllOf(taken, found);
}

TEST_F(AllocationFaultsTest, LoseNoOtherEventOfAnXmlFile) {
  Texts taken;
  {
    LogClientXml client(folder_.Path("log.xml"), "");
    handler_.AddLogClient(&client);

    taken = LogWithMoreAndMore();

    ExpectAllOf(taken, XmlLog(folder_.Path("log.xml")).Messages());
    handler_.RemoveLogClient(&client);
  }
  ExpectAllOf(taken, XmlLog(folder_.Path("log.xml")).Messages());
}

TEST_F(AllocationFaultsTest, LoseNoOtherEventOfASocketClient) {
  RecordingClient target;
  SocketLogServer server;
  ASSERT_TRUE(server.Start(&target, "127.0.0.1", 0, 0));
  LogClientSocket client("127.0.0.1", server.GetPort(), false, 0);
  handler_.AddLogClient(&client);

  const Texts taken = LogWithMoreAndMore();

  EXPECT_TRUE(client.SendToServer(true));
  ExpectAllOf(taken, target.Messages());
}

TEST_F(AllocationFaultsTest, LoseNoOtherEventOfAQueue) {
  RecordingClient target;
  SocketLogServer server;
  ASSERT_TRUE(server.Start(&target, "127.0.0.1", 0, 0));
  LogClientSocket client("127.0.0.1", server.GetPort(), true, 0);
  handler_.AddLogClient(&client);

  const Texts taken = LogWithMoreAndMore();

  EXPECT_TRUE(client.SendToServer(true));
  ExpectAllOf(taken, target.Messages());
}

}  // namespace

// Signals that interrupt the logging threads all the time lose nothing.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <iterator>
#include <memory>
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
#include "Support/Events.h"
#include "Support/Eventually.h"
#include "Support/Files.h"
#include "Support/ForkedChild.h"
#include "Support/RecordingClient.h"
#include "Support/SignalStorm.h"
#include "Support/TemporaryFolder.h"
#include "Support/Threads.h"
#include "Support/XmlEntries.h"

namespace {

using Texts = std::vector<std::string>;

constexpr std::size_t kEnoughEvents = 500;
constexpr int kEnoughInterruptions = 100;

/// Calls `log` with numbered messages until the thread was interrupted often enough. Returns them.
template <typename Log>
Texts LogInAStorm(const std::string& name, const Log& log) {
  const SignalStorm storm;
  Texts messages;
  while (messages.size() < kEnoughEvents || storm.Interruptions() < kEnoughInterruptions) {
    messages.push_back(name + " " + std::to_string(messages.size()));
    EXPECT_TRUE(log(messages.back()));
  }
  return messages;
}

/// Those of the texts that begin with the name, in their order.
Texts Named(const std::string& name, const Texts& texts) {
  Texts named;
  std::copy_if(texts.begin(), texts.end(), std::back_inserter(named),
               [&](const std::string& text) { return text.rfind(name + " ", 0) == 0; });
  return named;
}

class SignalStormTest : public testing::Test {
 protected:
  SignalStormTest() { Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR"); }

  const TemporaryFolder folder_;
  const std::string file_ = folder_.Path("app.log");
};

TEST_F(SignalStormTest, LosesNothingOfAFile) {
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");

  const Texts messages =
      LogInAStorm("file", [&](const std::string& text) { return client.Publish(EventWith(text)); });

  EXPECT_EQ(messages, Lines(file_));
}

TEST_F(SignalStormTest, LosesNothingOfARollingFile) {
  LogClientRollingFile client(file_, 1000, 3);
  client.SetLayout("LogLayoutMessage");

  const Texts messages = LogInAStorm(
      "rolling", [&](const std::string& text) { return client.Publish(EventWith(text)); });

  std::string kept;
  for (const char* const number : {".3", ".2", ".1"}) {
    EXPECT_LT(1000U, Content(file_ + number).size());
    kept += Content(file_ + number);
  }
  kept += Content(file_);
  std::string all;
  for (const std::string& message : messages) all += message + "\n";
  EXPECT_EQ(all.substr(all.size() - std::min(all.size(), kept.size())), kept);
}

TEST_F(SignalStormTest, LosesNothingOfAnXmlFile) {
  auto client = std::make_unique<LogClientXml>(file_, "");

  const Texts messages =
      LogInAStorm("xml", [&](const std::string& text) { return client->Publish(EventWith(text)); });

  EXPECT_EQ(messages, XmlLog(file_).Messages());
  {
    const SignalStorm storm;
    client.reset();
  }
  EXPECT_EQ(messages, XmlLog(file_).Messages());
}

TEST_F(SignalStormTest, LosesNothingOfAFifoWhoseReaderIsSlow) {
  const std::string large(20000, 'x');  // A few fill it.
  const std::string fifo = folder_.Path("fifo");
  ASSERT_EQ(0, mkfifo(fifo.c_str(), 0600));
  std::atomic<const SignalStorm*> storm{nullptr};
  std::string expected;
  for (int i = 0; i < 20; ++i) expected += large + "\n";
  std::thread writer([&] {
    const SignalStorm itsStorm;
    storm = &itsStorm;
    LogClientFile client(fifo, true);
    EXPECT_TRUE(client.IsInitialize());
    client.SetLayout("LogLayoutMessage");
    for (int i = 0; i < 20; ++i) EXPECT_TRUE(client.Publish(EventWith(large)));
  });
  const auto awaitInterruptions = [&](int count) {
    const int former = storm.load()->Interruptions();
    return Eventually([&] { return storm.load()->Interruptions() >= former + count; });
  };

  EXPECT_TRUE(Eventually([&] { return storm != nullptr; }));
  EXPECT_TRUE(awaitInterruptions(10));  // While it waits for a reader.
  const int reader = open(fifo.c_str(), O_RDONLY | O_CLOEXEC);
  std::string found;
  std::array<char, 10000> piece{};
  for (ssize_t count = 1; count > 0;) {
    // While it waits for room.
    if (found.size() + 100000 < expected.size()) {
      EXPECT_TRUE(awaitInterruptions(2));
    }
    count = read(reader, piece.data(), piece.size());
    found.append(piece.data(), static_cast<std::size_t>(std::max<ssize_t>(count, 0)));
  }
  writer.join();
  close(reader);

  EXPECT_TRUE(expected == found);
}

TEST_F(SignalStormTest, LosesNothingOnTheWayToALogServer) {
  constexpr int kClients = 4;  // Half of them collect events.
  RecordingClient target;
  SocketLogServer server;
  ASSERT_TRUE(server.Start(&target, "127.0.0.1", 0, 0));
  std::array<Texts, kClients> messages;

  RunInThreads(kClients, [&](int index) {
    const bool isAsynchronous = index % 2 == 1;
    LogClientSocket client("127.0.0.1", server.GetPort(), isAsynchronous, 0);
    int count = 0;
    messages[static_cast<std::size_t>(index)] =
        LogInAStorm("client" + std::to_string(index), [&](const std::string& text) {
          const bool isPublished = client.Publish(EventWith(text));
          return isPublished && (++count % 20 != 0 || client.SendToServer(true));
        });
    EXPECT_TRUE(client.SendToServer(true));
  });

  EXPECT_TRUE(server.Stop());
  const Texts received = target.Messages();
  std::size_t count = 0;
  for (int index = 0; index < kClients; ++index) {
    const Texts& sent = messages[static_cast<std::size_t>(index)];
    EXPECT_EQ(sent, Named("client" + std::to_string(index), received));
    count += sent.size();
  }
  EXPECT_EQ(count, received.size());
}

TEST_F(SignalStormTest, LosesNothingOfThreadsThatShareAHandlerOfAllKinds) {
  constexpr int kThreads = 3;
  RecordingClient target;
  SocketLogServer server;
  ASSERT_TRUE(server.Start(&target, "127.0.0.1", 0, 0));
  LogClientFile file(file_, true);
  LogClientRollingFile rolling(folder_.Path("rolling.log"), 100000000, 1);
  LogClientXml xml(folder_.Path("log.xml"), "");
  LogClientSocket sender("127.0.0.1", server.GetPort(), false, 0);
  file.SetLayout("LogLayoutMessage");
  rolling.SetLayout("LogLayoutMessage");
  LogHandler handler("shared");
  for (LogClient* const client :
       {static_cast<LogClient*>(&file), static_cast<LogClient*>(&rolling),
        static_cast<LogClient*>(&xml), static_cast<LogClient*>(&sender)}) {
    handler.AddLogClient(client);
  }
  std::array<Texts, kThreads> messages;

  RunInThreads(kThreads, [&](int index) {
    messages[static_cast<std::size_t>(index)] =
        LogInAStorm("thread" + std::to_string(index),
                    [&](const std::string& text) { return handler.Log(1, "%s", text.c_str()); });
  });

  EXPECT_TRUE(sender.SendToServer(true));
  const Texts lines = Lines(file_);
  std::size_t count = 0;
  for (int index = 0; index < kThreads; ++index) {
    const Texts& logged = messages[static_cast<std::size_t>(index)];
    EXPECT_EQ(logged, Named("thread" + std::to_string(index), lines));
    count += logged.size();
  }
  EXPECT_EQ(count, lines.size());
  EXPECT_EQ(lines, Lines(folder_.Path("rolling.log")));
  EXPECT_EQ(lines, XmlLog(folder_.Path("log.xml")).Messages());
  EXPECT_EQ(lines, target.Messages());
}

LogHandler* switched = nullptr;

/// Interrupted at any point of what takes the library's locks, among them forks.
TEST_F(SignalStormTest, MaySwitchAHandlerInItsSignalHandler) {
  LogHandler handler("switched");
  RecordingClient client;
  switched = &handler;
  {
    const SignalStorm storm([] {
      static bool isOn = false;
      isOn = !isOn;
      switched->SetLogHandlerActive(isOn);
    });
    for (unsigned int round = 0; storm.Interruptions() < 10 * kEnoughInterruptions; ++round) {
      Logger::GetLogLevelManager()->AddLogLevel(2 + round % 60, "another");
      LogHandler other("other");
      other.AddLogClient(&handler);
      handler.SetLogLevel(1, round % 2 == 0);
      handler.SetLogHandlerActive(round % 3 == 0);
      handler.AddLogClient(&client);
      handler.Log(1, "%u", round);
      handler.RemoveLogClient(&client);
      if (round % 10 == 0) {
        EXPECT_TRUE(ForkedChild([] { return true; }).IsWell());
      }
    }
  }

  handler.SetLogLevel(1, true);
  handler.SetLogHandlerActive(true);
  EXPECT_TRUE(handler.HandleLogEvent(1));
  handler.SetLogHandlerActive(false);
  EXPECT_FALSE(handler.HandleLogEvent(1));
}

}  // namespace

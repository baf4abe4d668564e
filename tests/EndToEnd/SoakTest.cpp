// All kinds of clients at once, for as long as one likes, while what they write to fails.
// SOAK_SECONDS says for how long; scripts/soak sets it.
//
// In each round four threads log through a tree of twenty handlers to new clients while a fault is
// injected. Then the content of each file is compared, byte by byte, with the results of Log and of
// the clients' Publish and SendToServer.

#include <gtest/gtest.h>
#include <malloc.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <condition_variable>
#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <iostream>
#include <memory>
#include <mutex>
#include <optional>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "LogClientConsole.h"
#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "LogClientSocket.h"
#include "LogClientXml.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Eventually.h"
#include "Support/Files.h"
#include "Support/NoDescriptorsLeft.h"
#include "Support/ProcessFigures.h"
#include "Support/ResettableLink.h"
#include "Support/ServingProgram.h"
#include "Support/TemporaryFolder.h"
#include "Support/Threads.h"
#include "Support/XmlEntries.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::CaptureStdout;
using testing::internal::GetCapturedStderr;
using testing::internal::GetCapturedStdout;

typedef std::vector<std::string> Messages;

constexpr int kThreads = 4;
constexpr int kHandlers = 20;
constexpr int kEvents = 2000;  // Of each thread, in a round.
constexpr int kBatch = 50;     // Of a socket client, between two requests for an answer.
constexpr int kBackups = 50;   // More than a round needs.
constexpr unsigned int kError = 1;
constexpr unsigned int kDebug = 2;

// Of the round after which everything has its size: each fault has occurred some times by then.
constexpr int kWarmUpRounds = 40;

// The heap of a quiet moment is as large as that of any other, except for what the allocator keeps
// at hand for each thread that has just ended; a leak of one byte in every event would be
// megabytes.
constexpr long kHeapGrowth = 256L * 1024;
// How much of its heap the allocator touches depends on how threads meet, and changes rarely.
constexpr long kResidentGrowth = 4L * 1024;  // Kilobytes.

std::string Joined(const Messages& messages, std::size_t count) {
  std::string lines;
  for (std::size_t index = 0; index < count; ++index) lines += messages[index] + "\n";
  return lines;
}

bool StartsWith(const std::string& text, const std::string& start) {
  return text.compare(0, start.size(), start) == 0;
}

/// Stands between a handler and a client, and keeps account of what the client answers.
class Account : public LogHandlerClient {
 public:
  explicit Account(LogClient* client) : client_(client) {}

  bool Publish(const LogEvent& event) override {
    published_.push_back(event.GetLogMessage());
    if (!client_->Publish(event)) return false;
    EXPECT_EQ(published_.size(), ++accepted_);  // After one refusal all that follow are refused.
    return true;
  }
  bool IsInitialize() override { return client_->IsInitialize(); }
  bool IsLogClient() const override { return true; }

  LogClient& Client() const { return *client_; }
  void EndClient() { client_.reset(); }

  const Messages& Published() const { return published_; }
  /// How many of them were answered with true, from the first on.
  std::size_t Accepted() const { return accepted_; }
  /// The lines that must be somewhere.
  std::string AcceptedLines() const { return Joined(published_, accepted_); }

 private:
  std::unique_ptr<LogClient> client_;
  Messages published_;
  std::size_t accepted_ = 0;
};

/// The account of a socket client, which asks its server for an answer every now and then.
class SocketAccount : public Account {
 public:
  /// `isBroken` says whether the connection was broken, or is just being broken.
  SocketAccount(LogClientSocket* client, const std::atomic<bool>& isBroken)
      : Account(client), socket_(*client), isBroken_(isBroken) {}

  bool Publish(const LogEvent& event) override {
    const bool isAccepted = Account::Publish(event);
    if (Published().size() % kBatch == 0) Confirm();
    return isAccepted;
  }

  void Confirm() {
    if (socket_.SendToServer(true) && !isBroken_) confirmed_ = Published().size();
  }
  /// How many of its first events the server has certainly logged.
  std::size_t Confirmed() const { return confirmed_; }

 private:
  LogClientSocket& socket_;
  const std::atomic<bool>& isBroken_;
  std::size_t confirmed_ = 0;
};

/// A log server in a process of its own, which writes messages into a file.
class Server {
 public:
  Server(const TemporaryFolder& folder, const std::string& name)
      : file_(folder.Path(name + ".log")), configuration_(folder.Path(name + ".ini")) {
    WriteFile(configuration_,
              "loglevel = 1 2\nlogclient = file\nlogclient.file.type = LogClientFile\n"
              "logclient.file.handler = default\nlogclient.file.layout = LogLayoutMessage\n"
              "logclient.file.parameter.0.name = filename\n"
              "logclient.file.parameter.0.value = " +
                  file_ + "\n");
    Start();
  }

  void Start() {
    program_.emplace(LOGGERCTL, std::vector<std::string>{"--config", configuration_});
    idle_ = Figures();
  }
  void Kill() {
    EXPECT_EQ(SIGKILL, program_->Stop(SIGKILL).signal);
    program_.reset();
  }

  int Port() const { return program_->Port(); }
  ProcessFigures Figures() const { return ProcessFigures::Of(std::to_string(program_->Id())); }

  /// The text written since the last call. No client is connected any more.
  std::string TakeWritten() const {
    EXPECT_TRUE(Eventually([this] { return Figures().threads == idle_.threads; }));
    const std::string written = Content(file_);
    std::filesystem::resize_file(file_, 0);
    return written;
  }
  /// Returns when it has closed all connections.
  void AwaitRest() const {
    EXPECT_TRUE(Eventually([this] { return Figures().descriptors == idle_.descriptors; }));
  }

 private:
  const std::string file_;
  const std::string configuration_;
  std::optional<ServingProgram> program_;
  ProcessFigures idle_{};
};

/// Twenty handlers: a root, four below it, and the others below these.
class Tree {
 public:
  Tree() {
    for (int index = 0; index < kHandlers; ++index) Make(index);
  }

  LogHandler& At(int index) const { return *handlers_[static_cast<std::size_t>(index)]; }

  /// Replaces one that has none below it.
  void Remake(int leaf) {
    delete &At(leaf);
    Make(leaf);
  }
  /// Switches the debug level of one.
  void Switch(int index) {
    bool& isQuiet = isQuiet_[static_cast<std::size_t>(index)];
    isQuiet = !isQuiet;
    At(index).SetLogLevel(kDebug, !isQuiet);
  }
  /// Whether an event that is logged on one handler reaches the receivers of another.
  bool LeadsTo(int from, int to, unsigned int level) const {
    if (to < 0 || (level == kDebug && isQuiet_[static_cast<std::size_t>(to)])) return false;
    return from == to || LeadsTo(from, Parent(to), level);
  }

 private:
  static int Parent(int index) {
    if (index == 0) return -1;
    return index <= 4 ? 0 : 1 + (index - 5) % 4;
  }
  void Make(int index) {
    handlers_[static_cast<std::size_t>(index)] =
        Logger::GetLogHandler("handler " + std::to_string(index));
    isQuiet_[static_cast<std::size_t>(index)] = false;
    if (Parent(index) >= 0) At(Parent(index)).AddLogClient(&At(index));
  }

  std::array<LogHandler*, kHandlers> handlers_{};
  std::array<bool, kHandlers> isQuiet_{};
};

/// An event that a handler has accepted.
struct LoggedEvent {
  int handler;
  unsigned int level;
  std::string message;
};

/// The events of a round's four threads, "<round> <thread> <number> xxx...", on random handlers.
class Logging {
 public:
  Logging(const Tree& tree, int round) : tree_(tree), round_(round) {}

  void Run(int thread) {
    std::minstd_rand random(static_cast<unsigned int>(round_ * kThreads + thread + 1));
    for (int number = 0; number < kEvents; ++number) {
      const auto handler = static_cast<int>(random() % kHandlers);
      const unsigned int level = random() % 4 == 0 ? kDebug : kError;
      const std::string message = std::to_string(round_) + " " + std::to_string(thread) + " " +
                                  std::to_string(number) + " " + std::string(random() % 90, 'x');
      const bool isLogged = tree_.At(handler).Log(level, "%s", message.c_str());
      EXPECT_EQ(tree_.LeadsTo(handler, handler, level), isLogged);
      if (isLogged) Of(thread).push_back({handler, level, message});
      if (++calls_ == awaitedCalls_) {
        const std::lock_guard<std::mutex> guard(mutex_);
        reached_.notify_one();
      }
    }
  }
  /// Waits until so many events were logged.
  void Await(int calls) {
    std::unique_lock<std::mutex> lock(mutex_);
    awaitedCalls_ = calls;
    reached_.wait(lock, [this, calls] { return calls_ >= calls; });
  }

  /// The text that a thread's events add at a handler's receivers.
  Messages Expected(int thread, int handler) const {
    Messages messages;
    for (const LoggedEvent& event : logged_[static_cast<std::size_t>(thread)]) {
      if (tree_.LeadsTo(event.handler, handler, event.level)) messages.push_back(event.message);
    }
    return messages;
  }

 private:
  std::vector<LoggedEvent>& Of(int thread) { return logged_[static_cast<std::size_t>(thread)]; }

  const Tree& tree_;
  const int round_;
  std::array<std::vector<LoggedEvent>, kThreads> logged_;
  std::atomic<int> calls_{0};
  std::atomic<int> awaitedCalls_{0};
  std::mutex mutex_;
  std::condition_variable reached_;
};

/// Expects that a receiver got every event of every thread once, each thread's in its order.
void ExpectAll(const Logging& logging, int handler, const Messages& published) {
  std::size_t count = 0;
  for (int thread = 0; thread < kThreads; ++thread) {
    const Messages expected = logging.Expected(thread, handler);
    auto next = published.begin();
    for (const std::string& message : expected) {
      next = std::find(next, published.end(), message);
      ASSERT_NE(published.end(), next) << message;
    }
    count += expected.size();
  }
  EXPECT_EQ(count, published.size());
}

enum class Fault { None, ServerKilled, ConnectionReset, NoDescriptors };
constexpr int kFaults = 4;

/// Counts of faults and their effects, over all rounds.
struct Totals {
  long rounds = 0;
  long logged = 0;
  long delivered = 0;
  long lostWithServer = 0;
  long lostWithConnection = 0;
  long lostWithDescriptors = 0;
  long lostWithDiskSpace = 0;
  long kills = 0;
  long resets = 0;
  long shortages = 0;

  long Lost() const {
    return lostWithServer + lostWithConnection + lostWithDescriptors + lostWithDiskSpace;
  }
};

class Soak {
 public:
  Soak() {
    Logger::GetLogLevelManager()->AddLogLevel(kError, "ERROR");
    Logger::GetLogLevelManager()->AddLogLevel(kDebug, "DEBUG");
    tree_ = std::make_unique<Tree>();
  }

  void RunRound() {
    const int round = static_cast<int>(totals_.rounds++);
    fault_ = static_cast<Fault>(round % kFaults);
    tree_->Remake(5 + round % 15);
    tree_->Switch(static_cast<int>(random_() % kHandlers));
    CaptureStdout();
    CaptureStderr();
    AttachClients();
    Logging logging(*tree_, round);
    RunInThreads(kThreads + 1, [&](int index) {
      if (index < kThreads) {
        logging.Run(index);
      } else {
        Break(logging);
      }
    });
    DetachClients(logging);
    ExpectAllWritten(GetCapturedStdout());
    ExpectReported(GetCapturedStderr());
    EndRound();
  }

  bool IsWarm() const { return totals_.rounds >= kWarmUpRounds; }
  const Totals& Result() const { return totals_; }

  struct Size {
    long heap;
    ProcessFigures own;
    ProcessFigures server;
  };
  /// How large everything is while nothing is going on.
  Size CurrentSize() const {
    steadyServer_.AwaitRest();
    return {static_cast<long>(mallinfo2().uordblks), ProcessFigures::Of("self"),
            steadyServer_.Figures()};
  }

 private:
  TemporaryFolder folder_;
  Server steadyServer_{folder_, "steady"};
  Server mortalServer_{folder_, "mortal"};
  std::unique_ptr<Tree> tree_;
  std::minstd_rand random_{1};
  Totals totals_;

  // Of the present round.
  Fault fault_ = Fault::None;
  std::atomic<bool> isLinkBroken_{false};
  std::atomic<bool> isServerBroken_{false};
  std::string expectedErrors_;
  std::optional<ResettableLink> link_;
  std::vector<std::pair<int, Account*>> attached_;
  std::optional<Account> console_;
  std::optional<Account> file_;
  std::optional<Account> rolling_;
  std::optional<Account> xml_;
  std::optional<Account> fullDisk_;
  std::optional<SocketAccount> atOnce_;
  std::optional<SocketAccount> queued_;

  std::string Path(const std::string& name) const { return folder_.Path(name); }

  void Attach(int handler, Account& account) {
    EXPECT_TRUE(account.IsInitialize());
    account.Client().SetLayout("LogLayoutMessage");
    tree_->At(handler).AddLogClient(&account);
    attached_.emplace_back(handler, &account);
  }

  void AttachClients() {
    link_.emplace(steadyServer_.Port());
    Attach(1, console_.emplace(new LogClientConsole));
    Attach(2, file_.emplace(new LogClientFile(Path("file.log"), false)));
    Attach(3, rolling_.emplace(new LogClientRollingFile(Path("rolling.log"), 4096, kBackups)));
    Attach(4, xml_.emplace(new LogClientXml(Path("log.xml"), "log.xsl")));
    Attach(5, atOnce_.emplace(new LogClientSocket("127.0.0.1", link_->Port(), false, 0),
                              isLinkBroken_));
    Attach(6, queued_.emplace(new LogClientSocket("127.0.0.1", mortalServer_.Port(), true, 0),
                              isServerBroken_));
    Attach(7, fullDisk_.emplace(new LogClientFile("/dev/full", true)));
  }

  /// Breaks something at any moment of the round.
  void Break(Logging& logging) {
    constexpr int kAll = kThreads * kEvents;
    logging.Await(static_cast<int>(random_() % (kAll * 9 / 10)));
    if (fault_ == Fault::ServerKilled) KillServer();
    if (fault_ == Fault::ConnectionReset) {
      ++totals_.resets;
      isLinkBroken_ = true;
      link_->Reset();
    }
    if (fault_ == Fault::NoDescriptors) {
      ++totals_.shortages;
      const NoDescriptorsLeft shortage;
      // One of them may get the descriptor that the rolling file client has between two files.
      const LogClientSocket socket("127.0.0.1", steadyServer_.Port(), false, 0);
      const LogClientFile file(Path("another.log"), true);
      logging.Await(kAll * 95 / 100);
    }
  }

  void KillServer() {
    ++totals_.kills;
    isServerBroken_ = true;
    const int port = mortalServer_.Port();
    mortalServer_.Kill();
    EXPECT_FALSE(LogClientSocket("127.0.0.1", port, false, 0).IsInitialize());
    expectedErrors_ = "LOGGER ERROR at Init [61]: 'Connection refused'\n";
    mortalServer_.Start();
  }

  void DetachClients(const Logging& logging) {
    atOnce_->Confirm();
    queued_->Confirm();
    for (const auto& [handler, account] : attached_) {
      tree_->At(handler).RemoveLogClient(account);
      ExpectAll(logging, handler, account->Published());
      account->EndClient();
      totals_.logged += static_cast<long>(account->Published().size());
    }
    link_.reset();
  }

  void ExpectAllWritten(const std::string& standardOutput) {
    const auto expectAll = [this](const Account& account, const std::string& written) {
      EXPECT_EQ(account.AcceptedLines(), written);
      totals_.delivered += static_cast<long>(account.Accepted());
    };
    expectAll(*console_, standardOutput);
    expectAll(*file_, Content(Path("file.log")));
    expectAll(*rolling_, RolledContent());
    expectAll(*xml_, Joined(XmlLog(Path("log.xml")).Messages(), xml_->Published().size()));
    totals_.lostWithDescriptors +=
        static_cast<long>(rolling_->Published().size() - rolling_->Accepted());
    for (const Account* account : {&*console_, &*file_, &*xml_}) {
      EXPECT_EQ(account->Published().size(), account->Accepted());
    }
    // The event that shows that the disk is full is the last one that is answered with true.
    EXPECT_EQ(1U, fullDisk_->Accepted());
    totals_.lostWithDiskSpace += static_cast<long>(fullDisk_->Published().size());
    totals_.lostWithConnection +=
        ExpectArrived(*atOnce_, steadyServer_.TakeWritten(), isLinkBroken_);
    totals_.lostWithServer += ExpectArrived(*queued_, mortalServer_.TakeWritten(), isServerBroken_);
  }

  void ExpectReported(const std::string& errors) const {
    // A socket client that happened to get a descriptor may lack the next one.
    const bool isShort = fault_ == Fault::NoDescriptors &&
                         errors == "LOGGER ERROR at Init [61]: 'Too many open files'\n";
    if (!isShort) {
      EXPECT_EQ(expectedErrors_, errors);
    }
  }

  /// The files of the rolling file client, the oldest first. Without a descriptor for a new file
  /// it stops with a backup as its last file.
  std::string RolledContent() const {
    std::string content;
    for (int number = kBackups; number >= 0; --number) {
      const std::string file =
          Path("rolling.log") + (number > 0 ? "." + std::to_string(number) : "");
      if (!Exists(file)) continue;
      content += Content(file);
      std::filesystem::remove(file);
    }
    return content;
  }

  /// Expects everything, or with a broken connection everything up to some event that is not before
  /// one that the server has confirmed. Returns how many were lost.
  long ExpectArrived(const SocketAccount& account, const std::string& arrived, bool isBroken) {
    const auto lines = static_cast<std::size_t>(std::count(arrived.begin(), arrived.end(), '\n'));
    EXPECT_GE(lines, account.Confirmed());
    EXPECT_TRUE(StartsWith(account.AcceptedLines(), arrived));
    if (!isBroken) {
      EXPECT_EQ(account.Published().size(), account.Confirmed());
      EXPECT_EQ(account.Published().size(), account.Accepted());
    }
    totals_.delivered += static_cast<long>(lines);
    return static_cast<long>(account.Published().size() - lines);
  }

  void EndRound() {
    attached_.clear();
    for (std::optional<Account>* account : {&console_, &file_, &rolling_, &xml_, &fullDisk_}) {
      account->reset();
    }
    atOnce_.reset();
    queued_.reset();
    isLinkBroken_ = false;
    isServerBroken_ = false;
    expectedErrors_.clear();
  }
};

void ExpectNoGrowth(const Soak::Size& first, const Soak::Size& last) {
  EXPECT_LT(last.heap - first.heap, kHeapGrowth);
  EXPECT_LT(last.own.residentKilobytes - first.own.residentKilobytes, kResidentGrowth);
  EXPECT_EQ(first.own.descriptors, last.own.descriptors);
  EXPECT_EQ(first.own.threads, last.own.threads);
  EXPECT_LT(last.server.residentKilobytes - first.server.residentKilobytes, kResidentGrowth);
  EXPECT_EQ(first.server.descriptors, last.server.descriptors);
  EXPECT_EQ(first.server.threads, last.server.threads);
}

std::string FromTo(long first, long last) {
  return std::to_string(first) + " to " + std::to_string(last);
}

void Report(const Totals& totals, const Soak::Size& first, const Soak::Size& last) {
  std::cout << totals.rounds << " rounds, " << totals.logged << " events for clients, "
            << totals.delivered << " written or received\n"
            << totals.kills << " servers killed, " << totals.lostWithServer
            << " unconfirmed or queued events lost with them\n"
            << totals.resets << " connections reset, " << totals.lostWithConnection
            << " events refused or lost with them\n"
            << totals.shortages << " times without descriptors, " << totals.lostWithDescriptors
            << " events refused then\n"
            << totals.lostWithDiskSpace << " events for a full disk\n"
            << "process: heap " << FromTo(first.heap, last.heap) << " bytes, resident "
            << FromTo(first.own.residentKilobytes, last.own.residentKilobytes)
            << " kB, descriptors " << FromTo(first.own.descriptors, last.own.descriptors)
            << ", threads " << FromTo(first.own.threads, last.own.threads) << "\n"
            << "server: resident "
            << FromTo(first.server.residentKilobytes, last.server.residentKilobytes)
            << " kB, descriptors " << FromTo(first.server.descriptors, last.server.descriptors)
            << ", threads " << FromTo(first.server.threads, last.server.threads) << "\n";
}

TEST(SoakTest, LosesNothingAndGrowsByNothingWhileThingsFail) {
  const char* const duration = std::getenv("SOAK_SECONDS");
  const std::chrono::seconds seconds(duration == nullptr ? 5 : std::stoi(duration));
  const auto end = std::chrono::steady_clock::now() + seconds;
  Soak soak;

  while (!soak.IsWarm() && !testing::Test::HasFailure()) soak.RunRound();
  const Soak::Size first = soak.CurrentSize();
  do {
    soak.RunRound();
  } while (std::chrono::steady_clock::now() < end && !testing::Test::HasFailure());
  const Soak::Size last = soak.CurrentSize();

  Report(soak.Result(), first, last);
  EXPECT_EQ(soak.Result().logged, soak.Result().delivered + soak.Result().Lost());
  ExpectNoGrowth(first, last);
}

}  // namespace

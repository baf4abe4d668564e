#include "SocketLogServer.h"

#include <sched.h>
#include <sys/ioctl.h>
#include <sys/socket.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <limits>
#include <memory>
#include <new>
#include <vector>

#include "Core/EventAccess.h"
#include "Core/EventRecord.h"
#include "Internal/ReportError.h"
#include "Internal/WireFormat.h"
#include "LogEvent.h"
#include "LogHandlerClient.h"
#include "Server/FrameParser.h"

namespace WireFormat = Logger::Internal::WireFormat;
using LibKelUtilities::ThreadWrapper;
using Logger::Internal::EventAccess;
using Logger::Internal::FrameParser;
using Logger::Internal::ReadRecord;
using Logger::Internal::ReportError;

namespace {

constexpr int kBacklog = 128;
constexpr int kNoFrameLimit =
    std::numeric_limits<int>::max();  // The longest that can be announced.
constexpr std::size_t kPieceSize = std::size_t{32} * 1024;

// Milliseconds.
constexpr int kWaitForConnection = 1000;
constexpr int kWaitForReceivers = 3000;
constexpr int kWaitForWaitingThread = 1000;
constexpr int kWithoutLimit = -1;

constexpr int kPeerAddressSize = 32;

int WaitingBytes(int descriptor) {
  int count = 0;
  return ioctl(descriptor, FIONREAD, &count) == 0 ? count : 0;
}

// The server of this receiving thread, which does not wait for itself when its target stops the
// server.
thread_local const SocketLogServer* receivingFor = nullptr;

}  // namespace

struct SocketLogServer::RecvThreadData {
  RecvThreadData(int itsDescriptor, LogHandlerClient* itsTarget, SocketLogServer* itsServer)
      : descriptor(itsDescriptor), target(itsTarget), server(itsServer), hasEnded(false) {}
  ~RecvThreadData() { close(descriptor); }

  RecvThreadData(const RecvThreadData&) = delete;
  RecvThreadData& operator=(const RecvThreadData&) = delete;

  const int descriptor;  // Owned.
  LogHandlerClient* const target;
  SocketLogServer* const server;
  std::atomic<bool> hasEnded;  // The thread has nothing more to do.
};

/// Turns the records of one connection into events, and hands them to the target.
class SocketLogServer::FrameReceiver : public FrameParser::Receiver {
 public:
  explicit FrameReceiver(RecvThreadData& data)
      : data_(data), server_(*data.server), event_(0, "", "", "", 0, timeval(), 0) {}

  void ReceiveRecord(const char* record, std::size_t size) override {
    if (!ReadRecord(record, size, event_)) {
      ++server_.rejectedFrameCount_;
      return;
    }
    if (server_.stampThreadId_ > 0) event_.SetThreadId(server_.stampThreadId_);
    ++server_.eventCount_;
    data_.target->Publish(event_);
    EventAccess::GiveBackMuchMemory(event_);
  }

  void ReceiveFlushRequest() override {
    const char answer = 0;
    // A peer that takes no answer is noticed by the next receive.
    static_cast<void>(server_.Send(&answer, 1, data_.descriptor));
  }

 private:
  RecvThreadData& data_;
  SocketLogServer& server_;
  LogEvent event_;
};

SocketLogServer::SocketLogServer()
    : SocketWrapper(kStream),
      target_(nullptr),
      address_("127.0.0.1"),
      port_(0),
      isRunning_(false),
      isTakingConnections_(false),
      protocolVersion_(0),
      stampThreadId_(0),
      maxFrameLength_(kNoFrameLimit),
      endedConnections_(0),
      connectionCount_(0),
      eventCount_(0),
      rejectedFrameCount_(0),
      process_(getpid()) {}

SocketLogServer::~SocketLogServer() {
  static_cast<void>(Stop());
  AwaitEnd();
}

/// In a forked child, drops what a running server has: its threads and its peers are the parent's.
/// Nothing is shut down, which would end the parent's connections.
void SocketLogServer::LeaveToParent() {
  if (process_ == getpid()) return;
  process_ = getpid();
  for (const auto& [thread, data] : connections_) {
    delete thread;
    delete data;
  }
  connections_.clear();
  endedConnections_ = 0;
  isRunning_ = false;
  isTakingConnections_ = false;
  if (Open(kStream) != 0) Close();
}

bool SocketLogServer::Start(LogHandlerClient* target, std::string address, int port,
                            int stampThreadId) {
  LeaveToParent();
  if (!IsValid() || target == nullptr) return false;
  // A running server has its thread, unless it could not be started. The thread of a stopped one
  // may still wait for its target, and this run for the thread.
  if (waitingThread_.FinishThread(isRunning_ ? 0 : kWaitForWaitingThread) != 0) return false;
  // The reason is not reported, on purpose.
  if (Open(kStream) != 0 || Bind(address, static_cast<unsigned short>(port)) != 0 ||
      Listen(kBacklog) != 0) {
    return false;
  }
  target_ = target;
  address_ = std::move(address);
  port_ = GetPort();
  isTakingConnections_ = true;
  isRunning_ = true;
  stampThreadId_ = stampThreadId;
  const int result =
      waitingThread_.StartThread(WaitForConnectionThread, this, nullptr, nullptr, false);
  if (result == 0) return true;
  ReportError("Start", 48, ThreadWrapper::GetErrorCodeText(result).c_str());
  return false;
}

bool SocketLogServer::Stop() {
  LeaveToParent();
  if (!isRunning_.exchange(false)) return true;
  const bool isWoken = WakeWaitingThread();
  if (!isWoken) Shutdown();
  const bool isWaiter = receivingFor != this;
  const bool hasEnded = isWaiter && waitingThread_.FinishThread(kWaitForWaitingThread) == 0;
  if (hasEnded) Shutdown();  // As the thread itself does, unless it could not even be started.
  return isWoken;
}

void SocketLogServer::AwaitEnd() { static_cast<void>(waitingThread_.FinishThread(kWithoutLimit)); }

/// Connects to the server itself, so that the wait for a connection returns.
bool SocketLogServer::WakeWaitingThread() {
  SocketWrapper visitor;
  if (visitor.Connect(address_, static_cast<unsigned short>(port_)) == 0) return true;
  if (!isTakingConnections_) return true;  // The thread has already ended.
  ReportError("Stop", 61, visitor.GetLastErrorStr().c_str());
  return false;
}

void SocketLogServer::SetMaxFrameLength(int bytes) { maxFrameLength_ = bytes; }

unsigned long SocketLogServer::GetConnectionCount() const { return connectionCount_; }

unsigned long SocketLogServer::GetEventCount() const { return eventCount_; }

unsigned long SocketLogServer::GetRejectedFrameCount() const { return rejectedFrameCount_; }

void* SocketLogServer::WaitForConnectionThread(void* server) {
  static_cast<SocketLogServer*>(server)->WaitForConnections();
  return nullptr;
}

void SocketLogServer::WaitForConnections() {
  while (isRunning_) {
    DropEndedConnections();
    char peerAddress[kPeerAddressSize];
    const int descriptor = AcceptWithin(peerAddress, kPeerAddressSize, kWaitForConnection);
    if (descriptor == kNothingCame) continue;
    if (descriptor < 0) break;
    if (isRunning_) {
      StartReceiving(descriptor);
    } else {
      close(descriptor);  // The connection that woke this thread.
    }
  }
  isTakingConnections_ = false;
  Shutdown();  // New connections are refused, instead of waiting to be accepted.
  DropAllConnections();
}

void SocketLogServer::StartReceiving(int descriptor) {
  std::unique_ptr<RecvThreadData> data;
  try {
    data = std::make_unique<RecvThreadData>(descriptor, target_, this);
    auto thread = std::make_unique<ThreadWrapper>();
    const auto entry = connections_.emplace(thread.get(), data.get()).first;
    ++connectionCount_;  // Before anything of it can be seen.
    if (thread->StartThread(RecvThread, data.get(), nullptr, nullptr, false) == 0) {
      static_cast<void>(thread.release());  // The table owns them now.
      static_cast<void>(data.release());
    } else {
      --connectionCount_;
      connections_.erase(entry);
    }
  } catch (const std::bad_alloc&) {
    // The connection is lost, the server goes on.
    if (data == nullptr) close(descriptor);
  }
}

void* SocketLogServer::RecvThread(void* data) {
  auto& connection = *static_cast<RecvThreadData*>(data);
  receivingFor = connection.server;
  if (connection.server->isRunning_) connection.server->Receive(connection);
  connection.hasEnded = true;
  ++connection.server->endedConnections_;
  return nullptr;
}

void SocketLogServer::Receive(RecvThreadData& data) {
  if (!ExchangeVersions(data.descriptor)) return;
  AcknowledgeQuickly(data.descriptor);
  try {
    FrameReceiver receiver(data);
    FrameParser parser(receiver);
    std::vector<char> piece(kPieceSize);
    int received = 1;
    while (isRunning_ && received > 0) {
      received = ReceivePiece(data, parser, piece);
      // Lets a sender on the same CPU run first: its events then arrive in one piece, instead of
      // with a context switch for each.
      sched_yield();
    }
    // Data that has arrived by now is still received, and no more: a peer may send without end.
    for (int left = WaitingBytes(data.descriptor); left > 0 && received > 0; left -= received) {
      received = ReceivePiece(data, parser, piece);
    }
  } catch (const std::bad_alloc&) {
    ++rejectedFrameCount_;  // No memory for this peer's frame: only its connection ends.
  }
}

/// Receives and parses what is there. Returns how many bytes, or 0 when nothing more is to be
/// received.
int SocketLogServer::ReceivePiece(RecvThreadData& data, FrameParser& parser,
                                  std::vector<char>& piece) {
  const int count = Recv(piece.data(), static_cast<int>(piece.size()), data.descriptor);
  if (count <= 0) return 0;
  if (parser.Parse(piece.data(), static_cast<std::size_t>(count), maxFrameLength_)) return count;
  ++rejectedFrameCount_;
  return 0;
}

bool SocketLogServer::ExchangeVersions(int descriptor) {
  constexpr int kVersionSize = WireFormat::kIntegerSize;
  unsigned char buffer[kVersionSize];
  if (RecvAtLeast(kVersionSize, buffer, kVersionSize, descriptor) != kVersionSize) return false;
  int version = 0;
  BufToInt(buffer, &version);
  version = std::min(version, WireFormat::kProtocolVersion);
  protocolVersion_ = version;
  IntToBuf(buffer, version);
  return Send(buffer, kVersionSize, descriptor) == kVersionSize;
}

void SocketLogServer::DropEndedConnections() {
  if (endedConnections_ == 0) return;
  for (auto entry = connections_.begin(); entry != connections_.end();) {
    const auto [thread, data] = *entry;
    if (data->hasEnded) {
      static_cast<void>(thread->FinishThread(kWithoutLimit));
      --endedConnections_;
      delete thread;
      delete data;
      entry = connections_.erase(entry);
    } else {
      ++entry;
    }
  }
}

/// Ends all connections in three steps: ends receiving, so that the threads finish what they have;
/// after a time ends sending too, for threads that wait for peers that take no answers; then waits
/// for the targets without a limit.
void SocketLogServer::DropAllConnections() {
  using Clock = std::chrono::steady_clock;
  const auto deadline = Clock::now() + std::chrono::milliseconds(kWaitForReceivers);
  for (const auto& [thread, data] : connections_) shutdown(data->descriptor, SHUT_RD);
  for (const auto& [thread, data] : connections_) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(deadline - Clock::now()).count();
    static_cast<void>(thread->FinishThread(static_cast<int>(std::max<decltype(left)>(left, 0))));
  }
  for (const auto& [thread, data] : connections_) shutdown(data->descriptor, SHUT_RDWR);
  for (const auto& [thread, data] : connections_) {
    static_cast<void>(thread->FinishThread(kWithoutLimit));
    delete thread;
    delete data;
  }
  connections_.clear();
  endedConnections_ = 0;
}

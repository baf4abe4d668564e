#include "LogClientSocket.h"

#include <cstddef>
#include <iterator>
#include <new>
#include <utility>

#include "Clients/ForkListenerOf.h"
#include "Clients/FrameBatch.h"
#include "Internal/Decimal.h"
#include "Internal/ReportError.h"
#include "Internal/WireFormat.h"
#include "LogProperties.h"

namespace WireFormat = Logger::Internal::WireFormat;
using LibKelUtilities::SocketWrapper;
using Logger::Internal::ForkListenerOf;
using Logger::Internal::FrameBatch;
using Logger::Internal::ParseDecimal;
using Logger::Internal::ReportError;

namespace {

constexpr std::size_t kBatchSize = std::size_t{64} * 1024;

/// The timeout of a configuration: none unless the text is a number above 0.
int TimeoutOf(const logstring& text) {
  const int milliseconds = ParseDecimal(text);
  return milliseconds > 0 ? milliseconds : SocketWrapper::kNoTimeout;
}

/// Marks queue and batch as being changed during its scope, for a child that another thread forks
/// in that time.
class ChangeMark {
 public:
  explicit ChangeMark(std::atomic<bool>& isChanging) : isChanging_(isChanging) {
    isChanging_.exchange(true, std::memory_order_acquire);  // No change is reordered before it.
  }
  ~ChangeMark() { isChanging_.store(false, std::memory_order_release); }

  ChangeMark(const ChangeMark&) = delete;
  ChangeMark& operator=(const ChangeMark&) = delete;

 private:
  std::atomic<bool>& isChanging_;
};

/// Ends a connection at the end of the scope if a frame was sent in part: the server would read the
/// next bytes as the rest of it. Also when the sending thread is cancelled.
class DisconnectInMidFrame {
 public:
  DisconnectInMidFrame(SocketWrapper& socket, const FrameBatch& batch, const std::size_t& sent)
      : socket_(socket), batch_(batch), sent_(sent) {}
  ~DisconnectInMidFrame() {
    if (sent_ < batch_.Size() && batch_.PositionAfter(sent_).offset > 0) socket_.Disconnect();
  }

  DisconnectInMidFrame(const DisconnectInMidFrame&) = delete;
  DisconnectInMidFrame& operator=(const DisconnectInMidFrame&) = delete;

 private:
  SocketWrapper& socket_;
  const FrameBatch& batch_;
  const std::size_t& sent_;
};

/// Ends a connection at the end of the scope unless the answer has arrived: a late answer would be
/// read as the next one. Also when the waiting thread is cancelled.
class DisconnectUnlessAnswered {
 public:
  explicit DisconnectUnlessAnswered(SocketWrapper& socket) : socket_(socket) {}
  ~DisconnectUnlessAnswered() {
    if (!isAnswered_) socket_.Disconnect();
  }

  DisconnectUnlessAnswered(const DisconnectUnlessAnswered&) = delete;
  DisconnectUnlessAnswered& operator=(const DisconnectUnlessAnswered&) = delete;

  void SetAnswered() { isAnswered_ = true; }

 private:
  SocketWrapper& socket_;
  bool isAnswered_ = false;
};

}  // namespace

LogClientSocket::LogClientSocket(std::string serverAddress, int serverPort, bool asynchronous,
                                 int ignoredThreadId)
    : serverAddress_(std::move(serverAddress)),
      serverPort_(serverPort),
      asynchronous_(asynchronous),
      ignoredThreadId_(ignoredThreadId),
      timeout_(SocketWrapper::kNoTimeout),
      batch_(new FrameBatch),
      isConnectionDue_(false),
      isChanging_(false) {
  Init();
  forkListener_ = std::make_unique<ForkListenerOf<LogClientSocket>>(*this);
}

LogClientSocket::LogClientSocket(const LogProperties& properties)
    : serverAddress_(properties.GetProperty("serverip")),
      serverPort_(ParseDecimal(properties.GetProperty("serverport"))),
      asynchronous_(properties.GetProperty("socketasynchron") == "1"),  // Off unless exactly this.
      ignoredThreadId_(0),
      timeout_(TimeoutOf(properties.GetProperty("timeout"))),
      batch_(new FrameBatch),
      isConnectionDue_(false),
      isChanging_(false) {
  if (!serverAddress_.empty() && serverPort_ != 0) Init();
  forkListener_ = std::make_unique<ForkListenerOf<LogClientSocket>>(*this);
}

LogClientSocket::~LogClientSocket() { forkListener_.reset(); }

void LogClientSocket::Init() {
  // In a forked child, the flag was the parent's until now.
  if (std::exchange(isConnectionDue_, false)) initialized_ = false;
  if (!socket_.IsValid()) return;
  if (socket_.Connect(serverAddress_, static_cast<unsigned short>(serverPort_), timeout_) != 0) {
    ReportError("Init", 61, socket_.GetLastErrorStr().c_str());
    return;
  }
  if (ExchangeVersions()) initialized_ = true;
}

bool LogClientSocket::ExchangeVersions() {
  constexpr int kVersionSize = WireFormat::kIntegerSize;
  constexpr int kLongestAnswer = 256;
  unsigned char buffer[kLongestAnswer];
  IntToBuf(buffer, WireFormat::kProtocolVersion);
  DisconnectUnlessAnswered disconnect(socket_);
  std::size_t sent = 0;
  if (!socket_.SendAll(buffer, kVersionSize, sent, timeout_)) {
    ReportError("Init", 71, socket_.GetLastErrorStr().c_str());
    return false;
  }
  const int count = socket_.RecvAtLeast(kVersionSize, buffer, kLongestAnswer,
                                        SocketWrapper::kOwnDescriptor, timeout_);
  if (count < kVersionSize) return false;
  disconnect.SetAnswered();
  int answer = 0;
  BufToInt(buffer, &answer);
  return answer <= WireFormat::kProtocolVersion;
}

bool LogClientSocket::Publish(const LogEvent& event) {
  if (ignoredThreadId_ > 0 && event.GetThreadId() == ignoredThreadId_) return true;
  if (isConnectionDue_) Init();
  {
    const ChangeMark mark(isChanging_);
    if (!asynchronous_ && queue_.empty() && CanSend()) return SendNow(event);
    queue_.push_back(event);
  }
  return asynchronous_ || SendToServer(false);
}

bool LogClientSocket::CanSend() const { return initialized_ && socket_.IsValid(); }

/// Has the effect of queueing the event and sending the queue; the event enters the queue only when
/// it would stay there.
bool LogClientSocket::SendNow(const LogEvent& event) {
  batch_->Clear();
  batch_->Append(event);
  const Sent sent = SendBatch().sent;
  if (sent == Sent::NotEvenAHeader) queue_.push_back(event);
  return sent == Sent::Everything;
}

bool LogClientSocket::SendToServer(bool wait) {
  if (isConnectionDue_) Init();
  if (!CanSend()) return false;
  const ChangeMark mark(isChanging_);
  bool allSent = true;
  bool isFlushRequestDue = wait;
  position_ = queue_.begin();
  while (position_ != queue_.end() || isFlushRequestDue) {
    const auto firstOfBatch = position_;
    FillBatch();
    if (isFlushRequestDue && position_ == queue_.end()) {
      batch_->AppendFlushRequest();
      isFlushRequestDue = false;
    }
    const BatchResult result = SendBatch();
    if (result.sent == Sent::NotEvenAHeader) return false;
    if (result.sent == Sent::PartOfARecord) {
      allSent = false;
      position_ = std::next(firstOfBatch, static_cast<std::ptrdiff_t>(result.frame) + 1);
    }
  }
  queue_.clear();
  if (wait) AwaitAnswer();
  return allSent;
}

bool LogClientSocket::IsConnected() {
  if (!initialized_) return false;
  char unexpected = 0;  // A server sends nothing by itself.
  const int count = socket_.Recv(&unexpected, 1, SocketWrapper::kOwnDescriptor, 0);
  return count > 0 || (count < 0 && socket_.HasTimedOut());
}

/// Replaces the batch by the next events of the queue.
void LogClientSocket::FillBatch() {
  batch_->Clear();
  for (; position_ != queue_.end() && batch_->Size() < kBatchSize; ++position_) {
    batch_->Append(*position_);
  }
}

/// Sends the batch. A flush request at its end may be missing: without a connection there is no
/// answer either.
LogClientSocket::BatchResult LogClientSocket::SendBatch() {
  std::size_t sent = 0;
  {
    const DisconnectInMidFrame disconnect(socket_, *batch_, sent);
    if (socket_.SendAll(batch_->Data(), batch_->Size(), sent, timeout_)) {
      return {Sent::Everything, batch_->FrameCount()};
    }
  }
  const auto [frame, offset] = batch_->PositionAfter(sent);
  if (frame == batch_->FrameCount()) return {Sent::Everything, frame};
  return {offset < WireFormat::kFrameHeaderSize ? Sent::NotEvenAHeader : Sent::PartOfARecord,
          frame};
}

/// Waits for the byte by which the server confirms that it has received everything. Its value does
/// not matter.
void LogClientSocket::AwaitAnswer() {
  socket_.PushPending();
  DisconnectUnlessAnswered disconnect(socket_);
  char answer = 0;
  const int count = socket_.Recv(&answer, 1, SocketWrapper::kOwnDescriptor, timeout_);
  if (count >= 0) disconnect.SetAnswered();
}

void LogClientSocket::ContinueInChild(bool wasBusy) {
  isConnectionDue_ = initialized_;
  // The connection is the parent's: this descriptor is closed without a shutdown, before a fresh
  // socket is opened.
  socket_.Close();
  static_cast<void>(socket_.Open(SocketWrapper::kStream));
  if (wasBusy || isChanging_.exchange(false)) {  // In any state: they cannot be destroyed.
    new (&queue_) std::list<LogEvent>;
    static_cast<void>(batch_.release());
    batch_ = std::make_unique<FrameBatch>();
  } else {
    queue_.clear();
    batch_->Clear();
  }
}

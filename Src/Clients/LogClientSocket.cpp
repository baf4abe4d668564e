#include "LogClientSocket.h"

#include <cstring>
#include <iterator>
#include <new>

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

/// What a timeout's text means: none unless it is a number above 0.
int TimeoutOf(const logstring& text) {
  const int milliseconds = ParseDecimal(text);
  return milliseconds > 0 ? milliseconds : SocketWrapper::kNoTimeout;
}

/// Closes a connection at the end of its scope, unless what was being sent ended with a whole
/// frame: the server would take what comes next for the rest. Also for a thread that is cancelled
/// while it sends.
class WholeFramesOnly {
 public:
  WholeFramesOnly(SocketWrapper& socket, const FrameBatch& batch, const std::size_t& sent)
      : socket_(socket), batch_(batch), sent_(sent) {}
  ~WholeFramesOnly() {
    std::size_t frame = 0;
    if (sent_ < batch_.Size() && batch_.PartSent(sent_, frame) > 0) socket_.Close();
  }

  WholeFramesOnly(const WholeFramesOnly&) = delete;
  WholeFramesOnly& operator=(const WholeFramesOnly&) = delete;

 private:
  SocketWrapper& socket_;
  const FrameBatch& batch_;
  const std::size_t& sent_;
};

/// Closes a connection at the end of its scope, unless the answer came: one that comes too late
/// would be taken for that to the next question. Also for a thread that is cancelled while it
/// waits.
class AnsweredOnly {
 public:
  explicit AnsweredOnly(SocketWrapper& socket) : socket_(socket) {}
  ~AnsweredOnly() {
    if (!isAnswered_) socket_.Close();
  }

  AnsweredOnly(const AnsweredOnly&) = delete;
  AnsweredOnly& operator=(const AnsweredOnly&) = delete;

  void IsAnswered() { isAnswered_ = true; }

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
      batch_(new FrameBatch) {
  Init();
  forkListener_ = std::make_unique<ForkListenerOf<LogClientSocket>>(*this);
}

LogClientSocket::LogClientSocket(const LogProperties& properties)
    : serverAddress_(properties.GetProperty("serverip")),
      serverPort_(ParseDecimal(properties.GetProperty("serverport"))),
      asynchronous_(properties.GetProperty("socketasynchron") == "1"),  // Off unless exactly this.
      ignoredThreadId_(0),
      timeout_(TimeoutOf(properties.GetProperty("timeout"))),
      batch_(new FrameBatch) {
  if (!serverAddress_.empty() && serverPort_ != 0) Init();
  forkListener_ = std::make_unique<ForkListenerOf<LogClientSocket>>(*this);
}

LogClientSocket::~LogClientSocket() { forkListener_.reset(); }

void LogClientSocket::Init() {
  if (!socket_.IsValid()) return;
  if (socket_.Connect(serverAddress_, static_cast<unsigned short>(serverPort_), timeout_) != 0) {
    ReportError("Init", 61, socket_.GetLastErrorStr().c_str());
    return;
  }
  initialized_ = ExchangeVersions();
}

bool LogClientSocket::ExchangeVersions() {
  constexpr int kVersionSize = WireFormat::kIntegerSize;
  constexpr int kLongestAnswer = 256;
  unsigned char buffer[kLongestAnswer];
  IntToBuf(buffer, WireFormat::kProtocolVersion);
  std::size_t sent = 0;
  if (!socket_.SendAll(buffer, kVersionSize, sent, timeout_)) {
    ReportError("Init", 71, socket_.GetLastErrorStr().c_str());
    return false;
  }
  const int count = socket_.RecvAtLeast(kVersionSize, buffer, kLongestAnswer,
                                        SocketWrapper::kOwnDescriptor, timeout_);
  if (count < kVersionSize) return false;
  int answer = 0;
  BufToInt(buffer, &answer);
  return answer <= WireFormat::kProtocolVersion;
}

bool LogClientSocket::Publish(const LogEvent& event) {
  if (ignoredThreadId_ > 0 && event.GetThreadId() == ignoredThreadId_) return true;
  if (!asynchronous_ && queue_.empty() && CanSend()) return SendNow(event);
  queue_.push_back(event);
  return asynchronous_ || SendToServer(false);
}

bool LogClientSocket::CanSend() const { return initialized_ && socket_.IsValid(); }

/// What queueing the event and sending the queue comes to, without the queue: the event enters it
/// only when it stays there.
bool LogClientSocket::SendNow(const LogEvent& event) {
  batch_->Clear();
  batch_->Append(event);
  std::size_t failedFrame = 0;
  const Sent sent = SendBatch(failedFrame);
  if (sent == Sent::NotEvenAHeader) queue_.push_back(event);
  return sent == Sent::Everything;
}

bool LogClientSocket::SendToServer(bool wait) {
  if (!CanSend()) return false;
  bool allSent = true;
  bool isConfirmationAsked = !wait;
  position_ = queue_.begin();
  while (position_ != queue_.end() || !isConfirmationAsked) {
    const auto firstOfBatch = position_;
    batch_->Clear();
    for (; position_ != queue_.end() && batch_->Size() < kBatchSize; ++position_) {
      batch_->Append(*position_);
    }
    if (position_ == queue_.end() && !isConfirmationAsked) {
      batch_->AppendFlushRequest();
      isConfirmationAsked = true;
    }
    std::size_t failedFrame = 0;
    const Sent sent = SendBatch(failedFrame);
    if (sent == Sent::NotEvenAHeader) return false;
    if (sent == Sent::PartOfARecord) {
      allSent = false;
      position_ = std::next(firstOfBatch, static_cast<std::ptrdiff_t>(failedFrame) + 1);
    }
  }
  queue_.clear();
  if (wait) AwaitAnswer();
  return allSent;
}

/// Sends the batch, and tells how far it came: up to a frame of which fewer bytes went out than its
/// header has, or more. A flush request at its end may be missing: without a connection there is no
/// answer either.
LogClientSocket::Sent LogClientSocket::SendBatch(std::size_t& failedFrame) {
  std::size_t sent = 0;
  {
    const WholeFramesOnly wholeFramesOnly(socket_, *batch_, sent);
    if (socket_.SendAll(batch_->Data(), batch_->Size(), sent, timeout_)) return Sent::Everything;
  }
  const std::size_t part = batch_->PartSent(sent, failedFrame);
  if (failedFrame == batch_->FrameCount()) return Sent::Everything;
  return part < WireFormat::kFrameHeaderSize ? Sent::NotEvenAHeader : Sent::PartOfARecord;
}

/// Waits for the one byte that says that the server has taken everything; what it is does not
/// matter.
void LogClientSocket::AwaitAnswer() {
  socket_.PushPending();
  AnsweredOnly answeredOnly(socket_);
  char answer = 0;
  const int count = socket_.Recv(&answer, 1, SocketWrapper::kOwnDescriptor, timeout_);
  if (count >= 0) answeredOnly.IsAnswered();
}

void LogClientSocket::ContinueInChild(bool wasBusy) {
  initialized_ = false;
  // A socket of the child's own takes the place of the connection, which the parent keeps.
  if (socket_.Open(SocketWrapper::kStream) != 0) socket_.Close();
  if (wasBusy) {  // Nobody knows what could be destroyed of them.
    new (&queue_) std::list<LogEvent>;
    static_cast<void>(batch_.release());
    batch_ = std::make_unique<FrameBatch>();
  } else {
    queue_.clear();
    batch_->Clear();
  }
}

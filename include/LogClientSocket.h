#pragma once

#include <atomic>
#include <cstddef>
#include <list>
#include <memory>
#include <string>

#include "LibKelUtilities/SocketWrapper.h"
#include "LogClient.h"
#include "LogEvent.h"

namespace Logger {
namespace Internal {
class FrameBatch;
template <typename Client>
class ForkListenerOf;
}  // namespace Internal
}  // namespace Logger

/// Sends events to a SocketLogServer in another process, over one TCP connection. Registered as
/// "LogClientSocket".
///
/// A synchronous client sends each event as it is published; an asynchronous one only collects
/// them, and the application sends them with SendToServer. The constructor connects; only Init()
/// connects again. After a failure all sends fail until then. The queue has no bound: a client that
/// cannot send keeps every event. The layout is not used.
///
/// Texts must not contain a zero byte. SIGPIPE is never raised. The client takes no lock: an
/// application that calls SendToServer from another thread than the one that publishes serialises
/// the calls.
///
/// At a fork the connection and the queued events stay with the parent. In the child the queue is
/// empty, and a client that was initialised connects by itself, once, at its first event or at
/// SendToServer. When that fails, it is reported like a failure of the constructor, and the client
/// is not initialised. A process that forks and ends, as daemon() does, sends its queue before.
class LOGGER_EXPORT LogClientSocket : public LogClient {
 public:
  /// Connects to the host name or address, on the low 16 bits of `serverPort`. Events of the thread
  /// `ignoredThreadId` are dropped when it is greater than 0. IsInitialize() returns whether the
  /// server answered; a connection that failed is reported on standard error.
  LogClientSocket(std::string serverAddress, int serverPort, bool asynchronous,
                  int ignoredThreadId);
  /// Reads "serverip", "serverport" (decimal), "socketasynchron", which is off unless it is exactly
  /// "1", and "timeout": the milliseconds, decimal, that connecting, each of the server's answers
  /// and each send may take. Without it, or with a number that is not above 0, there is no limit.
  /// Without an address or with port 0 no connection is tried.
  explicit LogClientSocket(const LogProperties& properties);
  /// Closes the connection. What is still queued is lost.
  ~LogClientSocket() override;

  /// Connects, and exchanges protocol versions with the server, also again after a failure: the
  /// new connection takes the place of the former one, which stays when none can be made. Sets what
  /// IsInitialize() returns when the server agrees, and never clears it.
  void Init();

  /// Queues the event, and sends the queue unless the client is asynchronous. False when sending
  /// was tried and failed.
  bool Publish(const LogEvent& event) override;

  /// Sends all queued events, oldest first, and empties the queue. With `wait` it returns when the
  /// server has confirmed that it has taken all of them, or when the connection or the timeout
  /// ended; the result does not depend on the answer.
  ///
  /// False when the client is not initialised, or when not even the beginning of an event could be
  /// sent: the queue then stays as it was, and events already sent are sent again by the next call.
  /// False also when an event could only be sent in part: that one is lost, and the queue is
  /// emptied.
  bool SendToServer(bool wait);

  /// Whether the connection is open, as far as this end knows: false once the server has closed it,
  /// and after a failure until Init() has connected again. After SendToServer(true), true means
  /// that the server has confirmed. The caller serialises it with Publish.
  bool IsConnected();

 private:
  template <typename Client>
  friend class Logger::Internal::ForkListenerOf;

  enum class Sent { Everything, NotEvenAHeader, PartOfARecord };
  struct BatchResult {
    Sent sent;
    std::size_t frame;  // In which the sending ended.
  };

  std::list<LogEvent> queue_;               // Not sent yet, oldest first.
  std::list<LogEvent>::iterator position_;  // Of the next event to send, in SendToServer.
  LibKelUtilities::SocketWrapper socket_;
  std::string serverAddress_;
  int serverPort_;
  bool asynchronous_;
  int ignoredThreadId_;
  int timeout_;  // Milliseconds, or below 0 for none.
  std::unique_ptr<Logger::Internal::FrameBatch> batch_;
  std::unique_ptr<LogForkListener> forkListener_;
  bool isConnectionDue_;          // In a forked child, which has not tried to connect yet.
  std::atomic<bool> isChanging_;  // A thread is changing the queue or the batch.

  bool CanSend() const;
  bool SendNow(const LogEvent& event);
  bool ExchangeVersions();
  void FillBatch();
  BatchResult SendBatch();
  void AwaitAnswer();
  void ContinueInChild(bool wasBusy);
};

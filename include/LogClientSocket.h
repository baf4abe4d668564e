#pragma once

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
/// them, and the application sends them with SendToServer. The connection is made once, by the
/// constructor, and never anew: when the server goes away, sending fails until the client is
/// destroyed. The queue has no bound: a client that is not connected keeps every event. The layout
/// is not used.
///
/// Texts must not contain a zero byte. A server takes events of up to 64 MiB unless it was told
/// otherwise, and ends the connection at a larger one. SIGPIPE is never raised. The client takes no
/// lock: an application that calls SendToServer from another thread than the one that publishes
/// serialises the calls.
///
/// What is queued when a process forks stays the parent's to send, and so does the connection: in
/// the child the queue is empty, and the client is not initialised until Init() connects it anew.
class LOGGER_EXPORT LogClientSocket : public LogClient {
 public:
  /// Connects to the host name or address, on the low 16 bits of `serverPort`. Events of the thread
  /// `ignoredThreadId` are dropped when it is greater than 0. IsInitialize() tells whether the
  /// server answered; a connection that failed is reported on standard error.
  LogClientSocket(std::string serverAddress, int serverPort, bool asynchronous,
                  int ignoredThreadId);
  /// Reads "serverip", "serverport" (decimal), "socketasynchron", which is off unless it is exactly
  /// "1", and "timeout": milliseconds, decimal, for which the client waits at most when it
  /// connects, for each of the server's answers and in each send. Without it, or with a number that
  /// is not above 0, it waits as long as it takes. Without an address or with port 0 no connection
  /// is tried.
  explicit LogClientSocket(const LogProperties& properties);
  /// Closes the connection. What is still queued is lost.
  ~LogClientSocket() override;

  /// Connects, and exchanges protocol versions with the server.
  void Init();

  /// Queues the event, and sends the queue unless the client is asynchronous. False when sending
  /// was tried and failed.
  bool Publish(const LogEvent& event) override;

  /// Sends all queued events, oldest first, and empties the queue. With `wait` it returns when the
  /// server has confirmed that it has taken all of them.
  ///
  /// False when the client is not connected, or when not even the beginning of an event could be
  /// sent: the queue then stays as it was, and events already sent go out again with the next call.
  /// False also when an event could only be sent in part: that one is lost, and the queue is
  /// emptied.
  bool SendToServer(bool wait);

 private:
  template <typename Client>
  friend class Logger::Internal::ForkListenerOf;

  enum class Sent { Everything, NotEvenAHeader, PartOfARecord };

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

  bool CanSend() const;
  bool SendNow(const LogEvent& event);
  bool ExchangeVersions();
  Sent SendBatch(std::size_t& failedFrame);
  void AwaitAnswer();
  void ContinueInChild(bool wasBusy);
};

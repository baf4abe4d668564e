#pragma once

#include <sys/types.h>

#include <atomic>
#include <map>
#include <string>
#include <vector>

#include "LibKelUtilities/SocketWrapper.h"
#include "LibKelUtilities/ThreadWrapper.h"
#include "LoggerExport.h"

class LogHandlerClient;

namespace Logger {
namespace Internal {
class FrameParser;
}
}  // namespace Logger

/// Receives the events of the LogClientSockets of other processes, and publishes each to a handler
/// or client of this one.
///
/// A server accepts any number of connections. It runs one thread that accepts them, and one for
/// each connection; these call the target's Publish concurrently, which is safe for a LogHandler
/// but not for a client by itself. Signals are blocked in them. One thread at a time starts, stops
/// and destroys a server; a target may stop it from within Publish, but not destroy it.
///
/// Any peer that reaches the port can send anything: listen on an address that only trusted peers
/// reach. A record that does not fit its frame is dropped and counted. Memory grows with what has
/// arrived, up to one frame for each connection, and a frame has up to 2 GiB unless
/// SetMaxFrameLength sets a limit.
///
/// A server stays with the process that started it: in a forked child it is not running.
class LOGGER_EXPORT SocketLogServer : public LibKelUtilities::SocketWrapper {
 public:
  /// The data of a receiving thread.
  struct RecvThreadData;

  SocketLogServer();
  /// Stops the server, and waits until all its threads have ended, however long the target takes.
  ~SocketLogServer() override;

  /// Listens on a local host name or address and the low 16 bits of `port`, where 0 lets the system
  /// choose (see GetPort). `target` gets every event; it must outlive the server's threads. When
  /// `stampThreadId` is above 0, it replaces the thread id of every event. False when the server is
  /// running already, there is no target, or the address cannot be listened on; and when the
  /// waiting thread cannot be started, which is reported on standard error: the port is then taken
  /// until Start is tried again, or Stop is called.
  bool Start(LogHandlerClient* target, std::string address, int port, int stampThreadId);

  /// Ends the connections, after publishing what has arrived on them, and refuses new ones. Waits
  /// a second at most for the threads; when a target takes longer, they end after it, and so does
  /// the next Start. True also when the server was not running. False, after a report on standard
  /// error, when the waiting thread could not be woken as usual; it ends all the same.
  bool Stop();

  /// Waits until all threads of a stopped server have ended, however long the target takes.
  void AwaitEnd();

  /// The longest frame that is accepted, in bytes, from now on; without a limit to begin with. A
  /// longer one ends its connection, and the client that sent it cannot send any more.
  void SetMaxFrameLength(int bytes);

  // Totals since the server was made.
  unsigned long GetConnectionCount() const;  ///< Connections taken.
  unsigned long GetEventCount() const;       ///< Events handed to the target.
  unsigned long GetRejectedFrameCount()
      const;  ///< Frames that were no events, too long, or larger than the free memory.

  static void* WaitForConnectionThread(void* server);  ///< Runs on the waiting thread.
  static void* RecvThread(void* data);                 ///< Runs on a receiving thread.

 private:
  class FrameReceiver;

  // Only the waiting thread uses the table. It owns what is in it.
  std::map<LibKelUtilities::ThreadWrapper*, RecvThreadData*> connections_;
  LibKelUtilities::ThreadWrapper waitingThread_;
  LogHandlerClient* target_;  // Not owned.
  std::string address_;
  int port_;
  std::atomic<bool> isRunning_;
  std::atomic<bool> isTakingConnections_;  // The waiting thread has not closed the port yet.
  std::atomic<int> protocolVersion_;       // Of the most recent opening exchange.
  int stampThreadId_;
  std::atomic<int> maxFrameLength_;
  std::atomic<int> endedConnections_;  // In the table, with nothing left to receive.
  std::atomic<unsigned long> connectionCount_;
  std::atomic<unsigned long> eventCount_;
  std::atomic<unsigned long> rejectedFrameCount_;
  pid_t process_;  // That started it.

  void WaitForConnections();
  void StartReceiving(int descriptor);
  void Receive(RecvThreadData& data);
  int ReceivePiece(RecvThreadData& data, Logger::Internal::FrameParser& parser,
                   std::vector<char>& piece);
  bool ExchangeVersions(int descriptor);
  void DropEndedConnections();
  void DropAllConnections();
  bool WakeWaitingThread();
  void LeaveToParent();
};

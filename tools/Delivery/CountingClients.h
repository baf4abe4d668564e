#pragma once

#include <memory>
#include <string>
#include <vector>

#include "Delivery/Delivery.h"
#include "LogClient.h"

namespace Loggerctl {

/// The interface of a counting client, whatever its kind.
class CountingClient {
 public:
  explicit CountingClient(Delivery& delivery) : delivery_(delivery) {}
  virtual ~CountingClient();
  CountingClient(const CountingClient&) = delete;
  CountingClient& operator=(const CountingClient&) = delete;

  /// Why the client takes no events; empty when it takes them.
  std::string Fault() { return leftOutBecause_.empty() ? OwnFault() : leftOutBecause_; }
  /// Has the client lose all events.
  void LeaveOut(const std::string& reason) { leftOutBecause_ = reason; }
  bool IsLeftOut() const { return !leftOutBecause_.empty(); }

  /// Delivers everything that is still queued, if possible.
  virtual void Finish();

  const Delivery& Counts() const { return delivery_; }

 protected:
  virtual std::string OwnFault() = 0;
  void CountLost();

  Delivery& delivery_;

 private:
  std::string leftOutBecause_;
};

/// A client that was made since the kinds were replaced.
struct CountedClient {
  std::unique_ptr<Delivery> delivery;  ///< Outlives the client.
  LogClient* client;                   ///< Owned by the library; null when it has ended.
  CountingClient* counting;            ///< The same object.
};

/// Replaces every kind of client in the process's factory by one that does the same and counts. A
/// socket client sends each event at once, since nobody calls SendToServer here; without a timeout
/// of its own it gets this one, in milliseconds, unless it is empty.
void ReplaceKinds(const std::string& command, const std::string& timeout);

/// Makes a client of no kind, which loses every event.
CountedClient& NewLostClient(const std::string& kind, const std::string& place,
                             const std::string& reason);

/// In the order in which they were made.
std::vector<CountedClient>& CountedClients();

/// The host and port of a socket client's server, or another client's file, as its parameters name
/// them.
std::string PlaceOf(const std::string& kind, const LogProperties& parameters);

}  // namespace Loggerctl

#pragma once

#include <string>

class LogHandler;

namespace Loggerctl {

/// Finds out what the clients of a configuration lose.
///
/// The library reports no losses, and leaves out a client that it cannot set up. A command that
/// must report every loss sets the configuration up with derived clients that count, and attaches
/// one that only counts in place of each that was left out. An event that a handler filters out is
/// no loss.
class Deliveries {
 public:
  /// Clients that are made from now on are counted. `command` is named in every line that is
  /// printed; `thing` is what the command calls an event. A socket client for which the
  /// configuration states no timeout gets this one, in milliseconds, unless it is empty.
  Deliveries(const std::string& command, std::string thing, const std::string& socketTimeout);

  /// Compares the clients that the file declares with those that were attached. Prints on standard
  /// error which ones at `handler` and below take no events, and why.
  void CompareWith(const std::string& fileName, LogHandler& handler);

  /// Ends all clients, and prints on standard error what was lost. Returns whether nothing was.
  bool Finish();

 private:
  const std::string thing_;
};

}  // namespace Loggerctl

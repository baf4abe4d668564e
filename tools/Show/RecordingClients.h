#pragma once

#include <set>
#include <string>
#include <vector>

#include "LogClient.h"

namespace Loggerctl {

/// The rules of a kind of client that decide whether a configuration makes one.
struct ClientKind {
  std::string name;
  bool usesLayout;
  /// Whether a client with these parameters is made at all, and what it needs for that.
  bool (*isUsable)(const LogProperties& parameters);
  const char* needs;
};

/// Stands in for a client of any kind: it remembers what it was made from, and does nothing. It is
/// initialised as far as its parameters decide.
class RecordingClient : public LogClient {
 public:
  typedef std::vector<std::pair<std::string, std::string>> Parameters;

  RecordingClient(const ClientKind& kind, const LogProperties& parameters);
  ~RecordingClient() override;

  bool Publish(const LogEvent& event) override;  ///< Always false.

  const ClientKind& Kind() const { return kind_; }
  const Parameters& GivenParameters() const { return parameters_; }  ///< By name.
  /// The name of the layout; empty when the client has none.
  std::string LayoutName() const;

 private:
  const ClientKind& kind_;
  Parameters parameters_;
};

/// Describes what stands in for real clients and layouts.
struct Recording {
  /// Parameters that clients are asked for; a set of properties cannot list its keys.
  std::set<std::string> parameterNames;
  /// Kinds of clients and layouts that the application registers itself.
  std::vector<std::string> ownKinds;
  std::vector<std::string> ownLayouts;
};

/// Replaces every kind of client and every layout in the process's factories. `mentionedKinds` are
/// kinds that clients will be asked for: one that would be made for real is an error.
void RecordClients(const Recording& recording, const std::set<std::string>& mentionedKinds);

/// Every client that was made since, in order.
const std::vector<const RecordingClient*>& RecordedClients();

}  // namespace Loggerctl

#pragma once

#include <string>

#include "LogHandlerClient.h"
#include "LoggerExport.h"

class LogForkListener;
class LogLayout;
class LogProperties;

namespace Logger {
namespace Internal {
class ForkGuard;
}
}  // namespace Logger

/// The base of all output clients: a client has a layout, and is known to the process's
/// LogClientManager for its whole life.
///
/// Clients are made with `new` and belong to that manager, which deletes every client that is left
/// when the process ends: a client on the stack that is alive at exit() would be deleted all the
/// same, and is the caller's error. A client deleted earlier must be detached from its handlers
/// first.
///
/// Clients take no lock: the handler that a client is attached to serialises its calls. Attached to
/// several handlers, or with its layout or state changed while events come in, it needs the
/// caller's own serialisation.
///
/// A process may fork at any time. In the child a client goes on as it is, unless it has a
/// LogForkListener. A client that is attached to no handler and was made by another thread than the
/// one that forks may have been half made at that moment: the child's manager forgets it, and does
/// not delete it at the end.
class LOGGER_EXPORT LogClient : public LogHandlerClient {
 public:
  LogClient();
  /// The same: the properties are for the kinds derived from this one.
  explicit LogClient(const LogProperties& properties);
  /// Takes the client out of the manager and deletes its layout.
  ~LogClient() override;

  LogClient(const LogClient&) = delete;
  LogClient& operator=(const LogClient&) = delete;

  bool Publish(const LogEvent& event) override = 0;
  /// Whether the client is ready to write; one that is not drops every event.
  bool IsInitialize() override;
  bool IsLogClient() const override;  ///< Always true.

  /// Enters the client in the manager, gives it a "LogLayoutStandard" and marks it not initialised.
  /// The constructors call it; called again, it forgets the former layout without deleting it.
  void Init();

  /// Replaces the layout by a new one of this name. False when the name is not registered: the
  /// client then has no layout, and text clients write nothing.
  bool SetLayout(std::string name);
  /// Replaces the layout by this one, which the client owns from then on; null leaves it without
  /// one. Always true. Never pass the layout that the client already has: it is deleted first.
  bool SetLayout(LogLayout* layout);

 protected:
  /// Registers what the client does in a forked child; null takes it back. A client does the first
  /// as the last step of its constructor and the second as the first step of its destructor, so
  /// that a fork in another thread never calls half a client. The listener stays the client's.
  void SetForkListener(LogForkListener* listener);

  LogLayout* layout_;  ///< Owned; may be null.
  bool initialized_;   ///< Returned by IsInitialize(); set by the derived kinds.

 private:
  friend class Logger::Internal::ForkGuard;
};

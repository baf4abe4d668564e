#pragma once

#include "LogClient.h"

/// Writes events to standard output through std::cout, with whatever settings the application gave
/// it, and flushes after each. Registered as "LogClientConsole"; it has no properties.
///
/// SIGPIPE, and standard output's errors, stay the application's business: nothing is tested or
/// changed.
class LOGGER_EXPORT LogClientConsole : public LogClient {
 public:
  LogClientConsole();
  /// The same: no property is read.
  explicit LogClientConsole(const LogProperties& properties);
  ~LogClientConsole() override;

  /// False when there is no layout.
  bool Publish(const LogEvent& event) override;
};

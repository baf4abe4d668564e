#pragma once

#include "LoggerExport.h"

class LogEvent;

/// A receiver of events: an output client, or another handler further down the tree.
class LOGGER_EXPORT LogHandlerClient {
 public:
  virtual ~LogHandlerClient();

  /// Takes an event: writes it, or passes it on. False when it was filtered out or could not be
  /// written. The handler that calls holds its own lock, and ignores the result.
  virtual bool Publish(const LogEvent& event) = 0;

  /// Whether the receiver is ready for events; always true for a handler.
  virtual bool IsInitialize() = 0;

  /// True for an output client, false for a handler.
  virtual bool IsLogClient() const = 0;
};

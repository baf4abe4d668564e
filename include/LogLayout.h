#pragma once

#include <iosfwd>

#include "LoggerExport.h"

class LogEvent;

/// Turns an event into text. Layouts have no state: one may serve any number of events and threads,
/// as long as each thread writes to a stream of its own.
///
/// An application's own layout derives from this class, and is given to a client with
/// LogClient::SetLayout or registered by name with the LogLayoutFactory.
class LOGGER_EXPORT LogLayout {
 public:
  virtual ~LogLayout();

  /// Writes the event's text to `out`, with the stream's settings and without flushing it. Errors
  /// stay in the stream's state.
  virtual void FormatAndAppend(std::ostream& out, const LogEvent& event) = 0;
};

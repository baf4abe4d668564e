#pragma once

#include "LoggerExport.h"

/// A client's action in a forked child.
///
/// A client with a connection, a queue or anything else that two processes must not share has an
/// object of a class derived from this one and registers it with LogClient::SetForkListener. A
/// client without one continues in the child as it is.
///
/// Nothing is called before a fork: the forking thread holds the locks of all handlers and of the
/// client manager across it, so a client that is written by its handler is not in the middle of
/// an event.
class LOGGER_EXPORT LogForkListener {
 public:
  virtual ~LogForkListener();

  /// Called in the child, on its only thread, before fork() returns there: it must not throw, fork,
  /// log, or wait for another thread. `wasBusy` says that the lock of a handler that the client is
  /// attached to could not be had within a second: a thread that does not exist in the child may
  /// have been inside the client, whose members may then be in any state. The client is marked as
  /// not initialised afterwards in that case.
  virtual void ContinueInChild(bool wasBusy) = 0;
};

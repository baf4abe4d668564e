#pragma once

#include "LogHandler.h"

/// Logs a printf-style message with the source position of the call, and costs next to nothing when
/// the level is off: then none of the message's arguments is evaluated.
///
///     LOGGER_LOG(handler, 1, "%s: %d requests lost", name, count);
///
/// `handler` is a LogHandler*, not null. It and `level` are evaluated once. What follows is the
/// format and its arguments, which the compiler checks as it does printf's. The whole is one
/// statement.
#define LOGGER_LOG(handler, level, ...)                                                 \
  do {                                                                                  \
    LogHandler* const loggerLogHandler = (handler);                                     \
    const unsigned int loggerLogLevel = static_cast<unsigned int>(level);               \
    if (loggerLogHandler->MayLog(loggerLogLevel)) {                                     \
      static_cast<void>(                                                                \
          loggerLogHandler->DebugLog(loggerLogLevel, __FILE__, __LINE__, __VA_ARGS__)); \
    }                                                                                   \
  } while (false)

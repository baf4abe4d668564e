#pragma once

/// Marks an exported symbol; all others are hidden.
#define LOGGER_EXPORT __attribute__((visibility("default")))

/// Lets the compiler check a call's arguments against its printf format. Both are positions counted
/// from 1, where the object of a member function counts as the first; with `firstArgument` of 0
/// only the format itself is checked.
#define LOGGER_PRINTF_FORMAT(formatPosition, firstArgument) \
  __attribute__((format(printf, formatPosition, firstArgument)))

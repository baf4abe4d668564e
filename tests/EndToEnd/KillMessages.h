#pragma once

#include <string>

/// The message of an event, counted from 0, and of any length up to the longest and a few. By
/// default some are short and some fill a page and more.
inline std::string KillMessage(int number, int longest = 6000) {
  return std::to_string(number) + " " +
         std::string(static_cast<std::size_t>(number * 997 % longest), 'm');
}

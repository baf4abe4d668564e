#pragma once

#include <string>

/// The message of an event, counted from 0: short ones and some that fill a page and more.
inline std::string KillMessage(int number) {
  return std::to_string(number) + " " +
         std::string(static_cast<std::size_t>(number * 997 % 6000), 'm');
}

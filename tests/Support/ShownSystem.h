#pragma once

#include <regex>
#include <string>

/// The output of `loggerctl show` without the names of clients, which only one of the forms has.
inline std::string WithoutClientNames(const std::string& shown) {
  static const std::regex name("(client |\n  )[^ \n]+: ");
  return std::regex_replace(shown, name, "$1NAME: ");
}

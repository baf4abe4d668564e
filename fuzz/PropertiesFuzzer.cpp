// Does any properties text have the entries that its lines state?

#include <cstddef>
#include <cstdint>
#include <map>
#include <sstream>
#include <string>

#include "LogProperties.h"
#include "Support/Expect.h"

namespace {

constexpr std::size_t kLongestLine = 511;

struct Reading {
  bool isWhole = true;
  std::map<std::string, std::string> entries;
};

std::string Trimmed(const std::string& text) {
  constexpr const char* kWhiteSpace = " \t\n\v\f\r";
  const std::size_t first = text.find_first_not_of(kWhiteSpace);
  if (first == std::string::npos) return "";
  return text.substr(first, text.find_last_not_of(kWhiteSpace) - first + 1);
}

std::string Unquoted(const std::string& text) {
  const std::string trimmed = Trimmed(text);
  const bool isQuoted = trimmed.size() >= 2 && trimmed.front() == '"' && trimmed.back() == '"';
  return isQuoted ? trimmed.substr(1, trimmed.size() - 2) : trimmed;
}

void Enter(const std::string& wholeLine, Reading& reading) {
  const std::string terminated = wholeLine.substr(0, wholeLine.find('\0'));
  const std::string line = terminated.substr(0, terminated.find('#'));
  const std::size_t separator = line.find('=');
  if (separator == std::string::npos) return;
  reading.entries[Unquoted(line.substr(0, separator))] = Unquoted(line.substr(separator + 1));
}

/// The text read in the plainest way: one whole line after the other.
Reading Read(const std::string& text) {
  Reading reading;
  std::istringstream lines(text);
  for (std::string line; reading.isWhole && std::getline(lines, line);) {
    reading.isWhole = line.size() <= kLongestLine;
    Enter(line.substr(0, kLongestLine), reading);
  }
  return reading;
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string text(reinterpret_cast<const char*>(data), size);
  const Reading expected = Read(text);

  std::istringstream in(text);
  LogProperties properties;
  const bool isWhole = properties.Load(in);

  Expect(isWhole == expected.isWhole, "only a line that is too long ends the reading");
  for (const auto& [key, value] : expected.entries) {
    Expect(properties.GetProperty(key) == value, "an entry has the value of its last line");
    Expect(properties.RemoveProperty(key), "every line with a separator makes an entry");
  }
  return 0;
}

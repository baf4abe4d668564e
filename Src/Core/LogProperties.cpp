#include "LogProperties.h"

#include <cstring>
#include <fstream>

#include "Core/PropertiesLine.h"
#include "Internal/Require.h"

using Logger::Internal::Contract;
using Logger::Internal::kLongestPropertiesLine;
using Logger::Internal::Require;

namespace {

constexpr Contract kLoad{"!fileName.empty()", "Src/LogProperties", 151,
                         "bool LogProperties::Load(const logstring&)"};

constexpr std::streamsize kLineSize = kLongestPropertiesLine + 1;  // With the terminator.

/// White space as the C library's default locale has it, whatever locale the process has set.
bool IsSpace(char character) {
  return character != '\0' && std::strchr(" \t\n\v\f\r", character) != nullptr;
}

}  // namespace

LogProperties::LogProperties() = default;

LogProperties::LogProperties(const LogProperties& other) { Assign(other); }

LogProperties& LogProperties::operator=(const LogProperties& other) {
  if (this != &other) Assign(other);
  return *this;
}

LogProperties::~LogProperties() = default;

void LogProperties::Assign(const LogProperties&) {}

logstring LogProperties::GetProperty(const logstring& key) const {
  const auto found = properties_.find(key);
  return found == properties_.end() ? logstring() : found->second;
}

bool LogProperties::AddProperty(const logstring& key, const logstring& value) {
  return properties_.emplace(key, value).second;
}

bool LogProperties::RemoveProperty(const logstring& key) { return properties_.erase(key) == 1; }

bool LogProperties::Clear() {
  properties_.clear();
  return true;
}

bool LogProperties::Load(std::istream& in) {
  if (!in.good()) return false;
  for (;;) {
    char line[kLineSize];
    in.getline(line, kLineSize);
    StoreLine(line);
    if (in.eof()) return !in.bad();
    // Not at the end, and yet failed: a read error, or a line that did not fit, after which every
    // further read would fail as well.
    if (in.fail()) return false;
  }
}

bool LogProperties::Load(const logstring& fileName) {
  Require(!fileName.empty(), kLoad);
  std::ifstream file(fileName);
  if (!file.is_open()) return false;
  return Load(file);
}

void LogProperties::StoreLine(char* line) {
  if (char* const comment = std::strchr(line, '#')) *comment = '\0';
  char* const separator = std::strchr(line, '=');
  if (separator == nullptr) return;
  *separator = '\0';
  const logstring key = ExtractExpression(line);
  properties_[key] = ExtractExpression(separator + 1);
}

const char* LogProperties::ExtractExpression(char* text) {
  while (IsSpace(*text)) ++text;
  const bool isQuoted = *text == '"';
  if (isQuoted) ++text;
  char* end = text + std::strlen(text);
  while (end > text && IsSpace(end[-1])) --end;
  const bool isClosed = isQuoted && end > text && end[-1] == '"';
  if (isClosed) --end;
  if (isQuoted && !isClosed) --text;
  *end = '\0';
  return text;
}

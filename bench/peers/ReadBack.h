#pragma once

#include <algorithm>
#include <cctype>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>
#include <string_view>
#include <vector>

#include "Driver.h"

/// Reads what a program wrote into its folder, and fails when anything is missing or otherwise than
/// it must be.
namespace Bench {

/// Whether a file may begin with lines of the library's own.
enum class Heading { None, Allowed };

inline bool HasForm(std::string_view text, std::string_view form) {
  if (text.size() != form.size()) return false;
  for (std::size_t i = 0; i < form.size(); ++i) {
    const bool fits = form[i] == '9' ? std::isdigit(static_cast<unsigned char>(text[i])) != 0
                                     : text[i] == form[i];
    if (!fits) return false;
  }
  return true;
}

inline bool IsPrefix(std::string_view text) {
  return HasForm(text, "9999-99-99T99:99:99 |INFO| ") ||
         HasForm(text, "9999-99-99T99:99:99 |ERROR| ");
}

/// The number of an event's message, or -1 when it is not exactly what was logged.
inline int NumberOf(std::string_view message) {
  constexpr std::string_view kStart = "request ";
  if (message.substr(0, kStart.size()) != kStart) return -1;
  const int number = std::atoi(message.data() + kStart.size());
  const Values values = ValuesOf(number);
  char expected[128];
  std::snprintf(expected, sizeof expected, kFormat, values.number, values.host, values.took,
                values.status);
  return message == expected ? number : -1;
}

inline std::string Content(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

inline std::vector<std::filesystem::path> WrittenFiles() {
  std::vector<std::filesystem::path> files;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(".")) {
    if (entry.is_regular_file() && !entry.is_symlink()) files.push_back(entry.path());
  }
  return files;
}

/// Marks the events of a file.
inline void MarkEvents(const std::filesystem::path& path, Heading heading,
                       std::vector<bool>& seen) {
  const std::string content = Content(path);
  if (!content.empty() && content.back() != '\n') Fail(path.string() + " ends within a line");
  bool hasBegun = false;
  for (std::size_t start = 0; start < content.size();) {
    const std::size_t end = content.find('\n', start);
    const std::string_view line(content.data() + start, end - start);
    start = end + 1;
    const std::size_t message = line.find("request ");
    if (message == line.npos && !hasBegun && heading == Heading::Allowed) continue;
    hasBegun = true;
    if (message == line.npos || !IsPrefix(line.substr(0, message))) {
      Fail(path.string() + " has the line: " + std::string(line));
    }
    const int number = NumberOf(line.substr(message));
    const auto index = static_cast<std::size_t>(number);
    if (number < 0 || index >= seen.size() || seen[index]) {
      Fail(path.string() + " has a wrong event: " + std::string(line));
    }
    seen[index] = true;
  }
}

/// So many files, each with every event exactly once.
inline void ExpectAllEvents(const Task& task, std::size_t files = 1,
                            Heading heading = Heading::None) {
  if (!task.readsBack) return;
  const auto written = WrittenFiles();
  if (written.size() != files) Fail("wrote " + std::to_string(written.size()) + " files");
  for (const auto& path : written) {
    std::vector<bool> seen(static_cast<std::size_t>(task.Total()));
    MarkEvents(path, heading, seen);
    for (std::size_t number = 0; number < seen.size(); ++number) {
      if (!seen[number]) Fail(path.string() + " lacks event " + std::to_string(number));
    }
  }
}

/// Which backup goes when there is one too many. Libraries that compare the files' times may find
/// all alike.
enum class Removed { Oldest, Any };

/// A file and five full backups, each of about a megabyte, each without a gap, up to the last
/// event.
inline void ExpectRolledEvents(const Task& task, Removed removed = Removed::Oldest) {
  const auto written = WrittenFiles();
  std::vector<bool> all(static_cast<std::size_t>(task.Total()));
  for (const auto& path : written) {
    std::vector<bool> seen(all.size());
    MarkEvents(path, Heading::None, seen);
    const auto first = std::find(seen.begin(), seen.end(), true);
    const auto last = std::find(first, seen.end(), false);
    if (std::find(last, seen.end(), true) != seen.end()) Fail(path.string() + " has a gap");
    std::fill(all.begin() + (first - seen.begin()), all.begin() + (last - seen.begin()), true);
    if (std::filesystem::file_size(path) > 1'100'000) Fail(path.string() + " is too long");
  }
  if (!all.back()) Fail("the last event is missing");
  const auto oldest = std::find(all.begin(), all.end(), true);
  if (removed == Removed::Oldest && std::find(oldest, all.end(), false) != all.end()) {
    Fail("an event is missing");
  }
  const bool allFit = task.events < 50'000;
  if (allFit ? oldest != all.begin() : written.size() != 6) {
    Fail("kept " + std::to_string(written.size()) + " files");
  }
}

inline void ExpectNoEvents() {
  for (const auto& path : WrittenFiles()) {
    if (Content(path).find("request ") != std::string::npos) Fail("wrote a rejected event");
  }
}

/// A complete document: the entries that it had before, then the events.
inline void ExpectDocument(const Task& task) {
  const std::string content = Content("app.xml");
  constexpr std::string_view kBefore = "<log>";
  constexpr std::string_view kEnd = "</entry></apitestlog>\n";
  std::size_t position = 0;
  for (int i = -task.entries; i < task.Total(); ++i) {
    const int number = i < 0 ? i + task.entries : i;
    position = content.find(kBefore, position);
    if (position == content.npos) Fail("the document lacks event " + std::to_string(number));
    position += kBefore.size();
    const std::size_t end = content.find('<', position);
    if (NumberOf(std::string_view(content).substr(position, end - position)) != number) {
      Fail("the document has a wrong event in place of " + std::to_string(number));
    }
  }
  if (content.size() < kEnd.size() ||
      content.compare(content.size() - kEnd.size(), kEnd.size(), kEnd) != 0) {
    Fail("the document is not complete");
  }
}

}  // namespace Bench

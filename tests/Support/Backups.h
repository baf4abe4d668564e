#pragma once

#include <algorithm>
#include <string>

#include "Support/Files.h"

// A rolling file and its backups as one text: "current;one; | newest; | - | oldest;" is a file of
// two lines and its backups 1 and 3, of a line each. An empty file is "empty".

inline std::string BackupName(const std::string& file, int number) {
  return number == 0 ? file : file + "." + std::to_string(number);
}

inline std::string BackupsText(const std::string& file) {
  std::string text;
  std::string missing;
  for (int number = 0; number < 10; ++number) {
    const std::string separator = number == 0 ? "" : " | ";
    if (!Exists(BackupName(file, number))) {
      missing += separator + "-";
      continue;
    }
    std::string content = Content(BackupName(file, number));
    std::replace(content.begin(), content.end(), '\n', ';');
    text += missing + separator + (content.empty() ? "empty" : content);
    missing.clear();
  }
  return text;
}

/// Writes the files that BackupsText would find.
inline void WriteBackups(const std::string& file, std::string text) {
  std::replace(text.begin(), text.end(), ';', '\n');
  text += " | ";
  for (int number = 0; !text.empty(); ++number) {
    const std::string content = text.substr(0, text.find(" | "));
    text.erase(0, content.size() + 3);
    if (content != "-") WriteFile(BackupName(file, number), content == "empty" ? "" : content);
  }
}

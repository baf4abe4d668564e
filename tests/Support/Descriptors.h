#pragma once

#include <filesystem>
#include <iterator>
#include <string>

/// The descriptor under which this process has a file open, or -1.
inline int DescriptorOf(const std::string& path) {
  const std::filesystem::path file = std::filesystem::canonical(path);
  for (const auto& entry : std::filesystem::directory_iterator("/proc/self/fd")) {
    std::error_code ignored;  // The folder's own descriptor is gone afterwards.
    if (std::filesystem::read_symlink(entry.path(), ignored) == file) {
      return std::stoi(entry.path().filename().string());
    }
  }
  return -1;
}

/// How many descriptors this process has open.
inline long OpenDescriptors() {
  const std::filesystem::directory_iterator first("/proc/self/fd");
  return std::distance(begin(first), end(first)) - 1;  // Without the folder's own.
}

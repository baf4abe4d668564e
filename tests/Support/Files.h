#pragma once

#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>
#include <string>
#include <vector>

/// The whole file, byte by byte. A file that cannot be read fails the test.
inline std::string Content(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file.is_open()) throw std::runtime_error("cannot read " + path);
  std::ostringstream content;
  content << file.rdbuf();
  return content.str();
}

/// The file's lines without their line feeds.
inline std::vector<std::string> Lines(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  if (!file.is_open()) throw std::runtime_error("cannot read " + path);
  std::vector<std::string> lines;
  for (std::string line; std::getline(file, line);) lines.push_back(line);
  return lines;
}

inline void WriteFile(const std::string& path, const std::string& content) {
  std::ofstream file(path, std::ios::binary | std::ios::trunc);
  file << content;
  if (!file.flush()) throw std::runtime_error("cannot write " + path);
}

inline bool Exists(const std::string& path) { return std::filesystem::exists(path); }

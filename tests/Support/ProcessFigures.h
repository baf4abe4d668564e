#pragma once

#include <filesystem>
#include <fstream>
#include <iterator>
#include <string>

/// The system's figures about a process.
struct ProcessFigures {
  long residentKilobytes;
  long descriptors;
  long threads;

  /// Of a process by its id, or of the caller's own by the word "self". The descriptor that is open
  /// to count one's own is among them.
  static ProcessFigures Of(const std::string& process) {
    const std::string folder = "/proc/" + process;
    return {Resident(folder + "/status"), Entries(folder + "/fd"), Entries(folder + "/task")};
  }

 private:
  static long Entries(const std::string& folder) {
    const std::filesystem::directory_iterator first(folder);
    return std::distance(begin(first), end(first));
  }
  static long Resident(const std::string& path) {
    std::ifstream status(path);
    long kilobytes = 0;
    for (std::string word; status >> word;) {
      if (word == "VmRSS:") status >> kilobytes;
    }
    return kilobytes;
  }
};

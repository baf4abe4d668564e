// A file client of one's own: a rolling file whose backups are named after the time of the
// rollover, and which begins each file with the name of the one before.
//
//     dated_backups dated_backups.ini

#include <algorithm>
#include <chrono>
#include <cstddef>
#include <cstdio>
#include <ctime>
#include <filesystem>
#include <ostream>
#include <string>
#include <system_error>
#include <vector>

#include "LogClientFactory.h"
#include "LogClientRollingFile.h"
#include "LogConfiguratorIni.h"
#include "LogHandler.h"
#include "LogProperties.h"
#include "Logger.h"
#include "LoggerMacros.h"

namespace {

using Path = std::filesystem::path;

// The time in UTC, to the microsecond: names in the order of time.
std::string TimeText() {
  using std::chrono::microseconds;
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  const auto count = std::chrono::duration_cast<microseconds>(now).count();
  const std::time_t seconds = static_cast<std::time_t>(count / 1000000);
  std::tm time{};
  gmtime_r(&seconds, &time);
  char text[32];
  const std::size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H-%M-%S", &time);
  std::snprintf(text + length, sizeof text - length, ".%06d", static_cast<int>(count % 1000000));
  return text;
}

class LogClientDatedFile : public LogClientRollingFile {
 public:
  explicit LogClientDatedFile(const LogProperties& properties) : LogClientRollingFile(properties) {}

  // Called by Publish after an event that made the file larger than its limit.
  bool Rollover() override {
    const std::string backup = GetFileName() + "." + TimeText();
    CloseFile();
    const bool isMoved = std::rename(GetFileName().c_str(), backup.c_str()) == 0;
    if (!OpenFile(!isMoved)) return false;
    if (isMoved) GetStream() << "# continues " << Path(backup).filename().string() << std::endl;
    RemoveOldBackups();
    return isMoved;
  }

 private:
  void RemoveOldBackups() const {
    std::error_code error;
    std::vector<Path> backups = Backups();
    std::sort(backups.begin(), backups.end());
    const auto kept = static_cast<std::size_t>(std::max(GetMaxBackup(), 0));
    for (std::size_t i = 0; i + kept < backups.size(); ++i) {
      std::filesystem::remove(backups[i], error);
    }
  }

  std::vector<Path> Backups() const {
    const Path file(GetFileName());
    const Path folder = file.has_parent_path() ? file.parent_path() : Path(".");
    const std::string beginning = file.filename().string() + ".";
    std::vector<Path> backups;
    std::error_code error;
    std::filesystem::directory_iterator entry(folder, error);
    for (; !error && entry != end(entry); entry.increment(error)) {
      const std::string name = entry->path().filename().string();
      const bool isBackup = name.compare(0, beginning.size(), beginning) == 0 &&
                            name.size() == beginning.size() + TimeText().size();
      if (isBackup) backups.push_back(entry->path());
    }
    return backups;
  }
};

LogClient* CreateLogClientDatedFile(const LogProperties& properties) {
  return new LogClientDatedFile(properties);
}

}  // namespace

int main(int argc, char** argv) {
  Logger::GetLogManager()->GetLogClientFactory()->RegisterLogClient("LogClientDatedFile",
                                                                    CreateLogClientDatedFile);
  const char* const file = argc > 1 ? argv[1] : "dated_backups.ini";
  if (!LogConfiguratorIni().ReadConfiguration(file)) {
    std::fprintf(stderr, "no usable configuration in %s\n", file);
    return 1;
  }
  LogHandler* const log = Logger::GetLogHandler("net");
  for (int port = 8080; port <= 8088; ++port) LOGGER_LOG(log, 3, "listening on port %d", port);
}

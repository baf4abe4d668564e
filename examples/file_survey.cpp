// Looks through folders with several threads, and logs what it finds. A configuration such as
// file_survey.ini says where the messages go.
//
//     file_survey CONFIGURATION FOLDER...
//
// The configuration is an XML document when its name ends in .xml, or else a properties file.
// Every file is logged at DEBUG by the handler "survey", with the thread that found it; large files
// at WARNING; what cannot be read at ERROR; a line for each folder, and the total, at INFO by
// "default".

#include <atomic>
#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <string>
#include <system_error>
#include <thread>
#include <vector>

#include "LogConfiguratorIni.h"
#include "LogConfiguratorXml.h"
#include "LogFormater.h"
#include "LogHandler.h"
#include "Logger.h"

namespace fs = std::filesystem;

namespace {

enum Level : unsigned int { kError = 1, kWarning = 2, kInfo = 3, kDebug = 4 };

// The application's own macro, which adds the source position to each message.
#define SURVEY_LOG(handler, level, ...) \
  LogFormater(level, __FILE__, __LINE__).Log(handler, __VA_ARGS__)

constexpr std::uintmax_t kLarge = 4 * 1024 * 1024;

struct Totals {
  std::atomic<unsigned long> files{0};
  std::atomic<unsigned long> bytes{0};
};

void LookAtFile(const fs::directory_entry& entry, Totals& totals) {
  LogHandler* const log = Logger::GetLogHandler("survey");
  std::error_code error;
  const std::uintmax_t size = entry.file_size(error);
  if (error) {
    SURVEY_LOG(log, kError, "%s: %s", entry.path().c_str(), error.message().c_str());
    return;
  }
  ++totals.files;
  totals.bytes += size;
  SURVEY_LOG(log, kDebug, "%s has %ju bytes", entry.path().c_str(), size);
  if (size >= kLarge)
    SURVEY_LOG(log, kWarning, "%s is large: %ju bytes", entry.path().c_str(), size);
}

void LookAtFolder(const fs::path& folder, Totals& totals) {
  std::error_code error;
  fs::recursive_directory_iterator entry(folder, fs::directory_options::skip_permission_denied,
                                         error);
  for (; !error && entry != fs::recursive_directory_iterator(); entry.increment(error)) {
    if (entry->is_regular_file() && !entry->is_symlink()) LookAtFile(*entry, totals);
  }
  if (error) {
    SURVEY_LOG(Logger::GetLogHandler("survey"), kError, "%s: %s", folder.c_str(),
               error.message().c_str());
  } else {
    SURVEY_LOG(Logger::GetDefaultLogHandler(), kInfo, "%s is done", folder.c_str());
  }
}

bool Configure(const fs::path& file) {
  return file.extension() == ".xml" ? LogConfiguratorXml().ReadConfiguration(file)
                                    : LogConfiguratorIni().ReadConfiguration(file);
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 3) {
    std::fprintf(stderr, "usage: file_survey CONFIGURATION FOLDER...\n");
    return 2;
  }
  if (!Configure(argv[1])) {
    std::fprintf(stderr, "file_survey: no usable configuration in %s\n", argv[1]);
    return 1;
  }

  Totals totals;
  std::vector<std::thread> surveyors;
  for (int i = 2; i < argc; ++i) {
    surveyors.emplace_back([&totals, folder = fs::path(argv[i])] { LookAtFolder(folder, totals); });
  }
  for (std::thread& surveyor : surveyors) surveyor.join();
  Logger::GetDefaultLogHandler()->Log(kInfo, "%lu files with %lu bytes", totals.files.load(),
                                      totals.bytes.load());
}

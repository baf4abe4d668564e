// Opens the log files again on SIGHUP, after another program has moved them aside. Here the program
// moves its own file, and sends itself the signal, as logrotate would.
//
//     reopen reopen.ini

#include <csignal>
#include <cstddef>
#include <cstdio>

#include "LogClientFile.h"
#include "LogConfiguratorIni.h"
#include "LogHandler.h"
#include "Logger.h"
#include "LoggerMacros.h"

namespace {

// A signal handler must not search for them: that takes locks.
constexpr std::size_t kMostFiles = 16;
LogClientFile* files[kMostFiles];
std::size_t fileCount = 0;

void CollectFileClients(LogHandler& handler) {
  for (unsigned int i = 0; i < handler.GetLogClientCount() && fileCount < kMostFiles; ++i) {
    auto* const file = dynamic_cast<LogClientFile*>(handler.GetLogClientAt(i));
    if (file != nullptr) files[fileCount++] = file;
  }
}

extern "C" void ReopenFiles(int) {
  for (std::size_t i = 0; i < fileCount; ++i) files[i]->ReopenAtNextEvent();
}

}  // namespace

int main(int argc, char** argv) {
  const char* const configuration = argc > 1 ? argv[1] : "reopen.ini";
  if (!LogConfiguratorIni().ReadConfiguration(configuration)) {
    std::fprintf(stderr, "no usable configuration in %s\n", configuration);
    return 1;
  }
  LogHandler* const log = Logger::GetLogHandler("net");
  CollectFileClients(*log);
  std::signal(SIGHUP, ReopenFiles);

  LOGGER_LOG(log, 3, "before");
  std::rename("app.log", "app.log.1");
  LOGGER_LOG(log, 3, "still in the file that was moved");
  std::raise(SIGHUP);
  LOGGER_LOG(log, 3, "in the new file");
}

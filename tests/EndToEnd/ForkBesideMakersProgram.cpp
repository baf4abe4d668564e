// Forks while three threads make and delete clients of every kind:
// ForkBesideMakersProgram FORKS FILE FOLDER PORT
//
// Each child logs its number to the file and ends, every other one by exit(). A client of the
// program's own checks that it is still whole in the child. The exit code is the number of children
// that did not end well, at most 100. The program is built without type information, as some are.

#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <atomic>
#include <cstdlib>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "LogClientConsole.h"
#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "LogClientSocket.h"
#include "LogClientXml.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"

namespace {

constexpr unsigned int kLevel = 1;
constexpr int kMakers = 3;

/// A client of the program's own, with members that a half-made one lacks.
class OwnClient : public LogClient {
 public:
  OwnClient() : text_(std::make_unique<std::string>(kText)) { initialized_ = true; }
  ~OwnClient() override {
    if (*text_ != kText) std::abort();
  }

  bool Publish(const LogEvent&) override { return *text_ == kText; }

 private:
  static constexpr const char* kText = "longer than what has room in a string itself";

  std::unique_ptr<std::string> text_;
};

struct Places {
  std::string folder;
  int port;
};

std::unique_ptr<LogClient> Make(int kind, const Places& places, int maker) {
  const std::string file = places.folder + "/" + std::to_string(maker);
  switch (kind) {
    case 0:
      return std::make_unique<LogClientFile>(file, true);
    case 1:
      return std::make_unique<LogClientRollingFile>(file, 100, 1);
    case 2:
      return std::make_unique<LogClientConsole>();
    case 3:
      return std::make_unique<LogClientXml>(file + ".xml", "log.xsl");
    case 4:
      return std::make_unique<LogClientSocket>("127.0.0.1", places.port, false, 0);
    default:
      return std::make_unique<OwnClient>();
  }
}

void MakeAndDelete(const std::atomic<bool>& isOver, const Places& places, int maker) {
  constexpr int kKinds = 6;
  for (int number = maker; !isOver; ++number) Make(number % kKinds, places, maker);
}

[[noreturn]] void RunChild(LogHandler& handler, int number) {
  constexpr unsigned int kSecondsUntilItHangs = 60;
  alarm(kSecondsUntilItHangs);
  if (!handler.Log(kLevel, "%d", number)) _exit(1);
  if (number % 2 == 0) _exit(0);
  std::exit(0);
}

bool EndsWell(pid_t child) {
  int status = -1;
  return child > 0 && waitpid(child, &status, 0) == child && WIFEXITED(status) &&
         WEXITSTATUS(status) == 0;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 5) return 101;
  const int forks = std::atoi(argv[1]);
  const Places places{argv[3], std::atoi(argv[4])};
  Logger::GetLogLevelManager()->AddLogLevel(kLevel, "ERROR");
  LogHandler* const handler = Logger::GetLogHandler("children");
  auto* const file = new LogClientFile(argv[2], true);
  file->SetLayout("LogLayoutMessage");
  handler->AddLogClient(file);
  handler->AddLogClient(new OwnClient);

  std::atomic<bool> isOver{false};
  std::vector<std::thread> makers;
  for (int maker = 0; maker < kMakers; ++maker) {
    makers.emplace_back([&, maker] { MakeAndDelete(isOver, places, maker); });
  }
  int failed = 0;
  for (int number = 0; number < forks; ++number) {
    const pid_t child = fork();
    if (child == 0) RunChild(*handler, number);
    if (!EndsWell(child)) ++failed;
  }
  isOver = true;
  for (std::thread& maker : makers) maker.join();
  return std::min(failed, 100);
}

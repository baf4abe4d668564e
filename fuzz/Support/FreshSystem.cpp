#include "Support/FreshSystem.h"

#include <algorithm>
#include <cstdlib>
#include <functional>
#include <iostream>
#include <memory>
#include <new>
#include <streambuf>
#include <string>
#include <utility>

#include "LogClient.h"
#include "LogClientConsole.h"
#include "LogClientFactory.h"
#include "LogClientFile.h"
#include "LogClientManager.h"
#include "LogClientRollingFile.h"
#include "LogClientXml.h"
#include "LogEvent.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "LogProperties.h"
#include "Logger.h"
#include "Support/Expect.h"

namespace {

/// In the place of the socket client: makes records, and sends them to nobody.
class UnconnectedClient : public LogClient {
 public:
  explicit UnconnectedClient(const LogProperties& properties) {
    initialized_ = !properties.GetProperty("serverip").empty();
  }

  bool Publish(const LogEvent& event) override {
    char* record = nullptr;
    int length = 0;
    event.GetLogStream(&record, length);
    const std::unique_ptr<char[]> owned(record);
    return true;
  }
};

/// One of a few names in the folder of the process's own, for any name that is not empty.
std::string OwnName(const std::string& fileName) {
  constexpr std::size_t kFiles = 4;
  if (fileName.empty()) return "";
  return OwnFolder().Path("log" + std::to_string(std::hash<std::string>()(fileName) % kFiles));
}

/// As many backups as asked for, up to some: each is renamed at every rollover.
std::string FewBackups(const std::string& count) {
  constexpr long kMost = 5;
  return std::to_string(std::min(std::strtol(count.c_str(), nullptr, 10), kMost));
}

template <typename Client>
LogClient* CreateInOwnFolder(const LogProperties& given) {
  LogProperties harmless;
  harmless.AddProperty("filename", OwnName(given.GetProperty("filename")));
  harmless.AddProperty("maxbackup", FewBackups(given.GetProperty("maxbackup")));
  for (const char* const key : {"fileappend", "filesize", "xslfilename", "escapetext"}) {
    harmless.AddProperty(key, given.GetProperty(key));
  }
  return new Client(harmless);
}

template <typename Client>
LogClient* Create(const LogProperties& given) {
  return new Client(given);
}

/// Replaces the built-in kinds, which would write and connect to anything.
void ReplaceClientKinds() {
  LogClientFactory& factory = *Logger::GetLogManager()->GetLogClientFactory();
  const std::pair<const char*, LogClientFactory::Creator> kinds[]{
      {"LogClientConsole", Create<LogClientConsole>},
      {"LogClientFile", CreateInOwnFolder<LogClientFile>},
      {"LogClientRollingFile", CreateInOwnFolder<LogClientRollingFile>},
      {"LogClientSocket", Create<UnconnectedClient>},
      {"LogClientXML", CreateInOwnFolder<LogClientXml>}};
  for (const auto& [name, creator] : kinds) {
    const bool isReplaced =
        factory.UnregisterLogClient(name) && factory.RegisterLogClient(name, creator);
    Expect(isReplaced, "every built-in kind is replaced");
  }
}

/// Takes what goes to std::cout, and forgets it.
class Nowhere : public std::streambuf {
 public:
  Nowhere() : former_(std::cout.rdbuf(this)) {}
  ~Nowhere() override { std::cout.rdbuf(former_); }

 protected:
  int_type overflow(int_type character) override { return traits_type::not_eof(character); }
  std::streamsize xsputn(const char*, std::streamsize count) override { return count; }

 private:
  std::streambuf* const former_;
};

void DeleteHandlers() {
  Logger::LogManager& manager = *Logger::GetLogManager();
  // The manager would make a new system, and keep the present one, if it lost its last handler.
  LogHandler* const kept = manager.GetDefault();
  for (const logstring& name : manager.GetLogHandlerNames()) {
    LogHandler* const handler = manager.GetExistingLogHandler(name);
    if (handler != kept) delete handler;
  }
  while (kept->RemoveLogClientAt(0) != nullptr) continue;
}

/// Puts a new registry in the place of the present one, which can give no level back.
void ForgetLevels() {
  LogLevelManager& levels = *Logger::GetLogLevelManager();
  LogHandler& handler = *Logger::GetDefaultLogHandler();
  unsigned int level = 0;
  for (int index = 0; levels.GetLogLevel(index, level); ++index) handler.SetLogLevel(level, true);
  levels.~LogLevelManager();
  new (&levels) LogLevelManager;
  handler.SetLogHandlerActive(false);
  handler.SetLogHandlerActive(true);  // Makes it follow the new registry.
}

}  // namespace

const TemporaryFolder& OwnFolder() {
  static const TemporaryFolder folder;
  return folder;
}

FreshSystem::FreshSystem() {
  static const Nowhere nowhere;
  static const bool isHarmless = (ReplaceClientKinds(), true);
  static_cast<void>(isHarmless);
}

FreshSystem::~FreshSystem() {
  DeleteHandlers();
  Logger::GetLogManager()->GetLogClientManager()->Clear();
  ForgetLevels();
}

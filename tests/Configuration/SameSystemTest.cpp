// The two forms of configuration set up the same system.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <iostream>
#include <stdexcept>
#include <string>

#include "LogClientConsole.h"
#include "LogClientRollingFile.h"
#include "LogConfiguratorIni.h"
#include "LogConfiguratorXml.h"
#include "LogHandler.h"
#include "Logger.h"
#include "Support/ConfiguredClient.h"
#include "Support/Files.h"
#include "Support/MaskTimes.h"
#include "Support/TemporaryFolder.h"

namespace {

std::string KindOf(LogHandlerClient* receiver) {
  if (const auto* const handler = dynamic_cast<LogHandler*>(receiver)) {
    return "handler " + handler->GetName();
  }
  if (dynamic_cast<LogClientRollingFile*>(receiver) != nullptr) return "rolling file";
  if (dynamic_cast<LogClientConsole*>(receiver) != nullptr) return "console";
  return "other";
}

void PrintLevels() {
  for (const auto& [number, name] : RegisteredLevels()) {
    std::cout << "level " << number << " " << name << "\n";
  }
}

void PrintHandlers() {
  for (const logstring& name : Logger::GetLogManager()->GetLogHandlerNames()) {
    std::cout << name << " has";
    for (const unsigned int level : EnabledLevels(name, {1, 2, 3, 4, 5})) std::cout << " " << level;
    for (LogHandlerClient* const receiver : Receivers(name)) std::cout << ", " << KindOf(receiver);
    std::cout << "\n";
  }
}

void LogSomething() {
  LogHandler& top = *Logger::GetDefaultLogHandler();
  LogHandler& net = *Logger::GetLogHandler("net");
  std::string accepted;
  for (const bool isAccepted :
       {net.Log(1, "disk %d full", 2), net.Log(4, "filtered"), top.Log(2, "slow"),
        top.Log(4, "details"), top.Log(3, "started"), top.Log(5, "unknown")}) {
    accepted += isAccepted ? "yes " : "no ";
  }
  std::cout << accepted << "\n";
}

void PrintFiles() {
  for (const char* const name : {"app.log", "app.log.1", "app.log.2", "app.log.3", "app.log.4"}) {
    std::cout << name << (Exists(name) ? ": " + MaskTimes(Content(name)) : " does not exist")
              << "\n";
  }
}

/// The system that a separate process, in a separate folder, sets up from the file and prints.
template <typename Configurator>
std::string SystemOf(const std::string& configuration) {
  const TemporaryFolder folder;
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  const pid_t child = fork();
  if (child == 0) {
    dup2(ends[1], STDOUT_FILENO);
    std::filesystem::current_path(folder.Path());
    Configurator configurator;
    const bool isDone = configurator.ReadConfiguration(configuration);
    PrintLevels();
    PrintHandlers();
    LogSomething();
    PrintFiles();
    std::cout << std::flush;
    _exit(isDone ? 0 : 1);
  }
  close(ends[1]);
  std::string report;
  std::array<char, 4096> buffer{};
  for (ssize_t count; (count = read(ends[0], buffer.data(), buffer.size())) > 0;) {
    report.append(buffer.data(), static_cast<std::size_t>(count));
  }
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  return report + "status " + std::to_string(status);
}

const std::string kSystem =
    "level 1 ERROR\n"
    "level 2 WARNING\n"
    "level 3 INFO\n"
    "level 4 DEBUG\n"
    "default has 1 2 3 4, console, handler net\n"
    "net has 1 2 3, rolling file\n"
    "WARNING - slow\n"
    "DEBUG - details\n"
    "INFO - started\n"
    "yes no yes yes yes no \n"
    "app.log: TIME |ERROR| disk 2 full\nTIME |WARNING| slow\nTIME |INFO| started\n\n"
    "app.log.1 does not exist\n"
    "app.log.2 does not exist\n"
    "app.log.3 does not exist\n"
    "app.log.4 does not exist\n"
    "status 0";

TEST(SameSystemTest, IsSetUpByThePropertiesForm) {
  EXPECT_EQ(kSystem, SystemOf<LogConfiguratorIni>(PROJECT_FOLDER "/examples/worked_example.ini"));
}

TEST(SameSystemTest, IsSetUpByTheXmlForm) {
  EXPECT_EQ(kSystem, SystemOf<LogConfiguratorXml>(PROJECT_FOLDER "/examples/worked_example.xml"));
}

}  // namespace

#include "Support/Process.h"

#include <fcntl.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <stdexcept>
#include <thread>

extern char** environ;

namespace {

struct Pipe {
  int readEnd;
  int writeEnd;

  Pipe() {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    readEnd = ends[0];
    writeEnd = ends[1];
  }
};

std::string ReadToEnd(int descriptor) {
  std::string text;
  std::array<char, 4096> buffer{};
  for (;;) {
    const ssize_t count = read(descriptor, buffer.data(), buffer.size());
    if (count < 0 && errno == EINTR) continue;
    if (count <= 0) break;
    text.append(buffer.data(), static_cast<std::size_t>(count));
  }
  close(descriptor);
  return text;
}

void WriteAll(int descriptor, const std::string& text) {
  for (std::size_t done = 0; done < text.size();) {
    const ssize_t count = write(descriptor, text.data() + done, text.size() - done);
    if (count < 0) break;  // The program does not want it.
    done += static_cast<std::size_t>(count);
  }
  close(descriptor);
}

/// Starts a program with its standard input, output and errors on these descriptors.
pid_t Spawn(const std::vector<std::string>& command, int in, int out, int error) {
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, error, STDERR_FILENO);
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);

  pid_t child = 0;
  if (posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) != 0) {
    throw std::runtime_error("cannot run " + command[0]);
  }
  posix_spawn_file_actions_destroy(&actions);
  return child;
}

void WaitForEnd(pid_t child, ProcessResult& result) {
  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
  if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
}

}  // namespace

ProcessResult RunProgram(const std::vector<std::string>& command, const std::string& input) {
  const Pipe in;
  const Pipe out;
  const Pipe error;
  const pid_t child = Spawn(command, in.readEnd, out.writeEnd, error.writeEnd);
  close(in.readEnd);
  close(out.writeEnd);
  close(error.writeEnd);

  ProcessResult result;
  const auto formerAction = std::signal(SIGPIPE, SIG_IGN);
  std::thread errorReader([&] { result.errors = ReadToEnd(error.readEnd); });
  std::thread writer([&] { WriteAll(in.writeEnd, input); });
  result.output = ReadToEnd(out.readEnd);
  errorReader.join();
  writer.join();
  std::signal(SIGPIPE, formerAction);
  WaitForEnd(child, result);
  return result;
}

RunningProgram::RunningProgram(const std::vector<std::string>& command) {
  const Pipe out;
  const Pipe error;
  const int noInput = open("/dev/null", O_RDONLY | O_CLOEXEC);
  child_ = Spawn(command, noInput, out.writeEnd, error.writeEnd);
  close(noInput);
  close(out.writeEnd);
  close(error.writeEnd);
  output_ = out.readEnd;
  errors_ = error.readEnd;
}

RunningProgram::~RunningProgram() {
  if (child_ == 0) return;
  Signal(SIGKILL);
  static_cast<void>(Wait());
}

std::string RunningProgram::ReadLine() {
  std::string line;
  for (char character = 0; read(output_, &character, 1) == 1 && character != '\n';) {
    line.push_back(character);
  }
  return line;
}

void RunningProgram::Signal(int signal) const { kill(child_, signal); }

ProcessResult RunningProgram::Wait() {
  ProcessResult result;
  std::thread errorReader([&] { result.errors = ReadToEnd(errors_); });
  result.output = ReadToEnd(output_);
  errorReader.join();
  WaitForEnd(child_, result);
  child_ = 0;
  return result;
}

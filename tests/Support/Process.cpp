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

}  // namespace

ProcessResult RunProgram(const std::vector<std::string>& command, const std::string& input) {
  const Pipe in;
  const Pipe out;
  const Pipe error;
  posix_spawn_file_actions_t actions;
  posix_spawn_file_actions_init(&actions);
  posix_spawn_file_actions_adddup2(&actions, in.readEnd, STDIN_FILENO);
  posix_spawn_file_actions_adddup2(&actions, out.writeEnd, STDOUT_FILENO);
  posix_spawn_file_actions_adddup2(&actions, error.writeEnd, STDERR_FILENO);
  std::vector<char*> arguments;
  for (const std::string& word : command) arguments.push_back(const_cast<char*>(word.c_str()));
  arguments.push_back(nullptr);

  pid_t child = 0;
  if (posix_spawnp(&child, arguments[0], &actions, nullptr, arguments.data(), environ) != 0) {
    throw std::runtime_error("cannot run " + command[0]);
  }
  posix_spawn_file_actions_destroy(&actions);
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

  int status = 0;
  while (waitpid(child, &status, 0) < 0 && errno == EINTR) continue;
  if (WIFEXITED(status)) result.exitCode = WEXITSTATUS(status);
  if (WIFSIGNALED(status)) result.signal = WTERMSIG(status);
  return result;
}

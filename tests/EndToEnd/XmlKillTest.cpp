// A process that is killed while it writes an XML log loses nothing that it had published.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdlib>
#include <iostream>
#include <random>
#include <stdexcept>
#include <string>
#include <vector>

#include "EndToEnd/KillMessages.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlEntries.h"

extern char** environ;

namespace {

constexpr std::size_t kPage = 4096;

std::string Variable(const char* name, const char* unset) {
  const char* const value = std::getenv(name);
  return value == nullptr ? unset : value;
}

/// A running XmlKillProgram.
class Victim {
 public:
  Victim(const std::string& file, const std::string& mode) {
    std::array<int, 2> ends{};
    if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    std::vector<std::string> words{XML_KILL_PROGRAM, file, mode};
    std::vector<char*> arguments;
    for (std::string& word : words) arguments.push_back(word.data());
    arguments.push_back(nullptr);
    if (posix_spawn(&process_, words[0].c_str(), &actions, nullptr, arguments.data(), environ) !=
        0) {
      throw std::runtime_error("cannot run " + words[0]);
    }
    posix_spawn_file_actions_destroy(&actions);
    close(ends[1]);
    reports_ = ends[0];
  }

  /// Waits until so many events were published.
  void WaitFor(int events) {
    while (published_ < events && ReadReports(static_cast<std::size_t>(events - published_))) {
    }
  }

  /// Kills it, and returns how many events it has published.
  int Kill() {
    kill(process_, SIGKILL);
    while (ReadReports(kPage)) {
    }
    close(reports_);
    int status = 0;
    waitpid(process_, &status, 0);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL);
    return published_;
  }

 private:
  bool ReadReports(std::size_t most) {
    std::array<char, kPage> reports{};
    const ssize_t count = read(reports_, reports.data(), std::min(most, reports.size()));
    if (count > 0) published_ += static_cast<int>(count);
    return count > 0;
  }

  pid_t process_ = 0;
  int reports_ = -1;
  int published_ = 0;
};

/// The file as it stands with so many events.
std::string LogOf(int events) {
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<apitestlog>";
  for (int number = 0; number < events; ++number) {
    text += "<entry level=\"ERROR\"><date>2024-03-05</date><time>14:07:09</time><log>" +
            KillMessage(number) + "</log></entry>";
  }
  return text + "</apitestlog>\n";
}

/// Whether the content is what a write that makes the next of the former leaves, when it ends at a
/// page's end.
bool IsCutAtAPage(const std::string& content, const std::string& former, const std::string& next) {
  for (std::size_t end = kPage; end < next.size(); end += kPage) {
    const std::string rest = end < former.size() ? former.substr(end) : "";
    if (content == next.substr(0, end) + rest) return true;
  }
  return false;
}

/// Whether the first entries are those of so many events.
bool Holds(const XmlLog& log, int events) {
  const std::vector<std::string> messages = log.Messages();
  if (messages.size() < static_cast<std::size_t>(events)) return false;
  for (int number = 0; number < events; ++number) {
    if (messages[static_cast<std::size_t>(number)] != KillMessage(number)) return false;
  }
  return true;
}

TEST(XmlKillTest, LeavesEveryPublishedEventInTheFile) {
  // For long runs by hand, and for a comparison with a plain save ("whole"), which does break
  // files.
  const int rounds = std::stoi(Variable("XML_KILL_ROUNDS", "20"));
  const std::string mode = Variable("XML_KILL_MODE", "client");
  const TemporaryFolder folder;
  const std::string file = folder.Path("log.xml");
  std::mt19937 random(1);
  int wellFormed = 0;
  int cutAtAPage = 0;

  for (int round = 0; round < rounds; ++round) {
    Victim victim(file, mode);
    victim.WaitFor(1 + static_cast<int>(random() % 50));
    const auto end = std::chrono::steady_clock::now() + std::chrono::microseconds(random() % 300);
    while (std::chrono::steady_clock::now() < end) {
    }
    const int published = victim.Kill();

    const std::string content = Content(file);
    const std::string former = LogOf(published);
    const std::string next = LogOf(published + 1);
    const bool isWhole = content == former || content == next;
    if (isWhole && Holds(XmlLog(file), published)) ++wellFormed;
    if (!isWhole && IsCutAtAPage(content, former, next) &&
        Holds(XmlLog(file, XML_PARSE_RECOVER), published)) {
      ++cutAtAPage;
    }
  }

  const int anythingElse = rounds - wellFormed - cutAtAPage;
  std::cout << rounds << " tried, " << wellFormed << " well-formed, " << cutAtAPage
            << " cut at a page, " << anythingElse << " anything else\n";
  EXPECT_LT(0, rounds);
  EXPECT_EQ(0, anythingElse);
}

}  // namespace

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdlib>
#include <map>
#include <sstream>
#include <string>
#include <vector>

#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/ServingProgram.h"
#include "Support/TemporaryFolder.h"

namespace {

using Texts = std::vector<std::string>;

constexpr int kThreads = 4;

/// How often the program forks: many times more in the long run.
int Forks() {
  const char* const wanted = std::getenv("LOGGER_TEST_FORKS");
  return wanted == nullptr ? 100 : std::atoi(wanted);
}

/// The events in a file or output, by their source: "thread 0" to "thread 3", and "child 4711".
class Received {
 public:
  void Add(const std::string& line) {
    std::istringstream words(line);
    std::string who;
    long id = -1;
    long number = -1;
    std::string rest;
    words >> who >> id >> number;
    const bool isWhole = !words.fail() && !(words >> rest) && (who == "thread" || who == "child");
    if (isWhole) {
      numbers_[who][id].push_back(number);
    } else {
      torn_.push_back(line);
    }
  }
  /// With the thread's id in front, which is to be the process's own in a child.
  void AddWithThreadId(const std::string& line) {
    const std::size_t space = line.find(' ');
    const std::string message = space == std::string::npos ? "" : line.substr(space + 1);
    Add(message);
    const bool isOfAChild = message.rfind("child ", 0) == 0;
    if (isOfAChild && message.rfind("child " + line.substr(0, space) + " ", 0) != 0) {
      torn_.push_back(line);
    }
  }

  const Texts& Torn() const { return torn_; }
  /// Every event of each thread, once and in order.
  void ExpectThreads(const std::vector<long>& counts) {
    for (int thread = 0; thread < kThreads; ++thread) {
      const std::vector<long>& numbers = numbers_["thread"][thread];
      EXPECT_EQ(counts[static_cast<std::size_t>(thread)], static_cast<long>(numbers.size()));
      for (std::size_t i = 0; i < numbers.size(); ++i) {
        ASSERT_EQ(static_cast<long>(i), numbers[i]);
      }
    }
  }
  void ExpectChildren(int children, const std::vector<long>& expected) {
    EXPECT_EQ(static_cast<std::size_t>(children), numbers_["child"].size());
    for (const auto& [id, numbers] : numbers_["child"]) EXPECT_EQ(expected, numbers) << id;
  }

 private:
  std::map<std::string, std::map<long, std::vector<long>>> numbers_;
  Texts torn_;
};

TEST(ForkTest, LosesAndRepeatsNoEventWhileThreadsLog) {
  const TemporaryFolder folder;
  const std::string served = folder.Path("served.log");
  const std::string file = folder.Path("app.log");
  WriteFile(folder.Path("serve.ini"),
            "loglevel = 1\nloglevel.1.name = ERROR\nloghandler = default\nlogclient = file\n"
            "logclient.file.type = LogClientFile\nlogclient.file.handler = default\n"
            "logclient.file.layout = LogLayoutMessage\nlogclient.file.parameter.0.name = filename\n"
            "logclient.file.parameter.0.value = " +
                served + "\n");
  ServingProgram server(LOGGERCTL, {"--config", folder.Path("serve.ini"), "--port", "0"});

  const ProcessResult result =
      RunProgram({FORK_PROGRAM, std::to_string(Forks()), file, std::to_string(server.Port())});
  EXPECT_EQ(0, server.Stop().exitCode);

  ASSERT_EQ(0, result.exitCode) << result.errors;
  std::istringstream printed(result.errors);
  std::vector<long> counts(kThreads);
  for (long& count : counts) printed >> count;
  int failed = -1;
  printed >> failed;
  EXPECT_EQ(0, failed);
  RecordProperty("events", std::to_string(counts[0] + counts[1] + counts[2] + counts[3]));

  Received inFile;
  for (const std::string& line : Lines(file)) inFile.AddWithThreadId(line);
  EXPECT_EQ(Texts(), inFile.Torn());
  inFile.ExpectThreads(counts);
  inFile.ExpectChildren(Forks(), {0, 1, 2});

  Received onConsole;
  std::istringstream output(result.output);
  for (std::string line; std::getline(output, line);) onConsole.AddWithThreadId(line);
  EXPECT_EQ(Texts(), onConsole.Torn());
  onConsole.ExpectThreads(counts);
  onConsole.ExpectChildren(Forks(), {0, 1, 2});

  Received atServer;
  for (const std::string& line : Lines(served)) atServer.Add(line);
  EXPECT_EQ(Texts(), atServer.Torn());
  atServer.ExpectThreads(counts);
  atServer.ExpectChildren(Forks(), {0, 1, 2});
}

TEST(ForkTest, MeetsNoHalfMadeClient) {
  constexpr int kForks = 1000;
  const TemporaryFolder folder;
  const std::string file = folder.Path("children.log");
  WriteFile(folder.Path("serve.ini"),
            "loglevel = 1\nloghandler = default\nlogclient = con\n"
            "logclient.con.type = LogClientConsole\nlogclient.con.handler = default\n");
  ServingProgram server(LOGGERCTL, {"--config", folder.Path("serve.ini"), "--port", "0"});

  const ProcessResult result = RunProgram({FORK_BESIDE_MAKERS_PROGRAM, std::to_string(kForks), file,
                                           folder.Path("."), std::to_string(server.Port())});

  EXPECT_EQ(0, result.exitCode) << "signal " << result.signal << result.errors;
  Texts numbers;
  for (int number = 0; number < kForks; ++number) numbers.push_back(std::to_string(number));
  EXPECT_EQ(numbers, Lines(file));
}

}  // namespace

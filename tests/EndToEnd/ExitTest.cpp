// Events logged while the process exits are written.

#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/TemporaryFolder.h"

namespace {

TEST(ExitTest, WritesWhatAtexitHandlersAndStaticDestructorsLog) {
  const TemporaryFolder folder;

  const ProcessResult result = RunProgram({EXIT_PROGRAM, folder.Path("exit.log")});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.errors);
  EXPECT_EQ(
      "main\n"
      "atexit, registered last\n"
      "destructor of a local static object\n"
      "atexit, registered first\n"
      "destructor of a static object\n",
      Content(folder.Path("exit.log")));
}

TEST(ExitTest, DestroysTheClientsOfAllHandlersButThatWithAStuckThread) {
  const TemporaryFolder folder;
  const std::string file = folder.Path("exit.log");

  const ProcessResult result = RunProgram({EXIT_PROGRAM, file, "stuck"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.errors);
  EXPECT_EQ("destructor of a static object", Lines(file).back());
  EXPECT_EQ("  <entry level=\"ERROR\">", Lines(file + ".xml")[2])
      << "indented when it is destroyed";
  EXPECT_EQ(0U, Lines(file + ".stuck.xml")[1].find("<apitestlog><entry level=\"ERROR\"><date>"))
      << "as it was after the event";
}

TEST(ExitTest, WritesWhatClientsLogAtTheirEnd) {
  const TemporaryFolder folder;

  const ProcessResult result = RunProgram({EXIT_PROGRAM, folder.Path("exit.log"), "clients"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.errors);
  EXPECT_EQ("destructor of a client, level DETAIL", Lines(folder.Path("exit.log")).back());
}

TEST(ExitTest, LetsAClientWaitForAThreadThatMakesAndDeletesAnother) {
  const TemporaryFolder folder;

  const ProcessResult result = RunProgram({EXIT_PROGRAM, folder.Path("exit.log"), "waits"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.errors);
  EXPECT_EQ("client of a thread", Lines(folder.Path("exit.log")).back());
}

/// How often a program ends while its threads log: many times more in the long run.
int Runs() {
  const char* const wanted = std::getenv("LOGGER_TEST_EXITS");
  return wanted == nullptr ? 20 : std::atoi(wanted);
}

/// Fails unless the file has what each of the four threads logged up to some moment, in order. The
/// program's threads log by two handlers and at two levels in turn, and the logging ends for one
/// after the other: every sixth event goes the same way.
void ExpectBeginningOfEachWay(const std::vector<std::string>& lines) {
  constexpr int kWays = 6;
  std::map<std::string, std::map<int, int>> events;
  for (const std::string& line : lines) {
    if (line.rfind("thread ", 0) != 0) continue;
    const std::size_t space = line.rfind(' ');
    const int number = std::stoi(line.substr(space + 1));
    ASSERT_EQ(events[line.substr(0, space)][number % kWays]++, number / kWays) << line;
  }
  EXPECT_EQ(4U, events.size());
}

class ExitWithThreadsTest : public testing::TestWithParam<std::string> {};

TEST_P(ExitWithThreadsTest, WritesAllUpToTheEndOfTheLogging) {
  const TemporaryFolder folder;
  for (int run = 0; run < Runs(); ++run) {
    SCOPED_TRACE(run);
    const std::string file = folder.Path("exit" + std::to_string(run) + ".log");

    const ProcessResult result = RunProgram({EXIT_PROGRAM, file, GetParam()});

    ASSERT_EQ(0, result.exitCode) << "signal " << result.signal;
    ASSERT_EQ("", result.errors);
    ExpectBeginningOfEachWay(Lines(file));
    std::filesystem::remove(file);
  }
}

INSTANTIATE_TEST_SUITE_P(WhileTheyLog, ExitWithThreadsTest,
                         testing::Values("return", "worker", "quick"),
                         [](const auto& way) { return way.param; });

}  // namespace

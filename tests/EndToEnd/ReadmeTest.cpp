// The README shows code and configurations of the examples, and their output.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Support/FencedBlocks.h"
#include "Support/Files.h"
#include "Support/MaskTimes.h"
#include "Support/Process.h"

namespace {

const std::string kProject = PROJECT_FOLDER;

/// The fenced blocks of the README in the given language.
std::vector<std::string> Blocks(const std::string& language) {
  std::vector<std::string> blocks;
  for (const FencedBlock& block : FencedBlocks(kProject + "/README.md")) {
    if (block.language == language) blocks.push_back(block.text);
  }
  return blocks;
}

bool IsInAnExample(const std::string& block) {
  for (const auto& entry : std::filesystem::directory_iterator(kProject + "/examples")) {
    if (Content(entry.path().string()).find(block) != std::string::npos) return true;
  }
  return false;
}

TEST(ReadmeTest, ShowsCodeAndConfigurationOfTheExamples) {
  const std::vector<std::string> code = Blocks("cpp");
  const std::vector<std::string> configuration = Blocks("ini");

  ASSERT_EQ(2U, code.size());
  ASSERT_EQ(1U, configuration.size());
  for (const std::string& block : code) EXPECT_TRUE(IsInAnExample(block)) << block;
  for (const std::string& block : configuration) EXPECT_TRUE(IsInAnExample(block)) << block;
}

TEST(ReadmeTest, MatchesTheOutputOfTheExampleInCode) {
  const ProcessResult result = RunProgram({HELLO});

  EXPECT_EQ("TIME |INFO| listening on port 8080\nTIME |ERROR| backend: 3 requests lost\n",
            MaskTimes(result.output));
  EXPECT_EQ(0, result.exitCode);
}

TEST(ReadmeTest, MatchesTheOutputOfTheExampleWithAConfiguration) {
  const ProcessResult result = RunProgram({HELLO_INI, kProject + "/examples/hello.ini"});

  EXPECT_EQ("INFO - listening on port 8080\nERROR - backend: 3 requests lost\n", result.output);
  EXPECT_EQ(0, result.exitCode);
}

}  // namespace

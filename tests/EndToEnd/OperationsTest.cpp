// What docs/operations.md shows is what the examples are, and what is installed.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Support/Files.h"

namespace {

using Words = std::vector<std::string>;

const std::string kProject = PROJECT_FOLDER;

/// The fenced blocks of the page, whatever their language.
Words Blocks() {
  Words blocks;
  std::string* block = nullptr;
  for (const std::string& line : Lines(kProject + "/docs/operations.md")) {
    if (line.rfind("```", 0) == 0) {
      block = block == nullptr ? &blocks.emplace_back() : nullptr;
    } else if (block != nullptr) {
      *block += line + "\n";
    }
  }
  return blocks;
}

bool IsInAnInstalledFile(const std::string& block) {
  for (const char* const folder : {"/examples", "/share/liblogger"}) {
    for (const auto& entry : std::filesystem::recursive_directory_iterator(kProject + folder)) {
      if (entry.is_regular_file() &&
          Content(entry.path().string()).find(block) != std::string::npos)
        return true;
    }
  }
  return false;
}

TEST(OperationsTest, ShowsExamplesAndInstalledFiles) {
  const Words blocks = Blocks();

  ASSERT_EQ(3U, blocks.size());
  for (const std::string& block : blocks) EXPECT_TRUE(IsInAnInstalledFile(block)) << block;
}

}  // namespace

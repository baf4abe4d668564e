// docs/operations.md shows parts of the examples and of installed files.

#include <gtest/gtest.h>

#include <filesystem>
#include <string>
#include <vector>

#include "Support/FencedBlocks.h"
#include "Support/Files.h"

namespace {

const std::string kProject = PROJECT_FOLDER;

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
  const std::vector<FencedBlock> blocks = FencedBlocks(kProject + "/docs/operations.md");

  ASSERT_EQ(3U, blocks.size());
  for (const FencedBlock& block : blocks) {
    EXPECT_TRUE(IsInAnInstalledFile(block.text)) << block.text;
  }
}

}  // namespace

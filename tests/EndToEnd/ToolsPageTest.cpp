// The commands of docs/tools.md print what the page shows.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Support/Capture.h"
#include "Support/Conversation.h"
#include "Support/FencedBlocks.h"
#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/TemporaryFolder.h"
#include "Support/WireBytes.h"

namespace {

const std::string kProject = PROJECT_FOLDER;

std::string WithProjectAsPrefix(std::string command) {
  const std::string prefix = "/usr/local/";
  for (std::size_t place; (place = command.find(prefix)) != std::string::npos;) {
    command.replace(place, prefix.size(), kProject + "/");
  }
  return command;
}

/// A folder with the log file and the capture that the page uses.
class ToolsPageTest : public testing::Test {
 protected:
  ToolsPageTest() {
    WriteFile(folder_.Path("app.log"),
              "2024-03-05T14:07:09 |INFO| src/net.cpp 12 listening\n"
              "2024-03-05T14:07:10 |WARNING| src/disk.cpp 42 disk nearly full\n"
              "2024-03-05T14:07:11 |INFO| src/net.cpp 30 closing\n"
              "2024-03-05T14:07:12 |ERROR| src/disk.cpp 57 disk full\n");
    Conversation conversation;
    conversation.Add(Side::Client, kVersionOne);
    conversation.Add(Side::Server, kVersionOne);
    conversation.Add(
        Side::Client,
        FrameOf(LogEvent(3, "listening", "net", "src/net.cpp", 12, timeval{}, 7)) +
            FrameOf(LogEvent(1, "disk full", "disk", "src/disk.cpp", 57, timeval{}, 7)) +
            kFlushRequest);
    conversation.Add(Side::Server, "!");
    Capture capture;
    capture.Add(conversation);
    capture.Write(folder_.Path("log.pcap"));
  }

  ProcessResult Run(const std::string& command) const {
    return RunProgram({"env", "-C", folder_.Path(), "HOME=" + folder_.Path(),
                       "XDG_CONFIG_HOME=" + folder_.Path(), "sh", "-e"},
                      WithProjectAsPrefix(command));
  }

  TemporaryFolder folder_;
};

TEST_F(ToolsPageTest, MatchesTheOutputOfItsCommands) {
  const std::vector<FencedBlock> blocks = FencedBlocks(kProject + "/docs/tools.md");

  ASSERT_EQ(9U, blocks.size());
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    if (blocks[i].language != "sh") continue;
    const ProcessResult result = Run(blocks[i].text);
    EXPECT_EQ(0, result.exitCode) << blocks[i].text << result.errors;
    const bool isAnswered = i + 1 < blocks.size() && blocks[i + 1].language.empty();
    if (isAnswered) {
      EXPECT_EQ(blocks[i + 1].text, result.output);
    }
  }
}

}  // namespace

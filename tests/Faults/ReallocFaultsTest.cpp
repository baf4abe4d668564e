// One allocation of a message's buffer fails, whichever it is.

#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

#include "LogClientFile.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Files.h"
#include "Support/RecordingClient.h"
#include "Support/TemporaryFolder.h"

namespace {

/// Which call of realloc fails, counted from 1, and how many there were. For the thread that
/// counts.
struct Reallocs {
  bool areCounted = false;
  int failing = 0;
  int count = 0;
};

thread_local Reallocs reallocs;

}  // namespace

extern "C" void* __libc_realloc(void* block, std::size_t size);

// Stands before the C library's function for all of this program.
extern "C" __attribute__((visibility("default"))) void* realloc(void* block,
                                                                std::size_t size) noexcept {
  if (reallocs.areCounted && ++reallocs.count == reallocs.failing) return nullptr;
  return __libc_realloc(block, size);
}

namespace {

using Texts = std::vector<std::string>;

// With the lengths that need one pass, and two.
const Texts kMessages{"one",   std::string(4094, 'x'),  std::string(4095, 'y'),
                      "two",   std::string(10000, 'z'), std::string(100000, 'z'),
                      "three", std::string(5000, 'y'),  "four"};
// The message to which each call of realloc belongs.
const std::vector<std::size_t> kOwners{0, 1, 2, 2, 3, 4, 4, 5, 5, 6, 7, 7, 8};

TEST(ReallocFaultsTest, LoseOneMessageForAllReceiversAndNoOther) {
  Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
  for (std::size_t failing = 0; failing < kOwners.size(); ++failing) {
    SCOPED_TRACE(failing);
    const TemporaryFolder folder;
    RecordingClient recorder;
    LogHandler root("root");
    LogHandler below("below");
    root.AddLogClient(&below);
    below.AddLogClient(&recorder);
    LogClientFile file(folder.Path("app.log"), true);
    file.SetLayout("LogLayoutMessage");
    root.AddLogClient(&file);
    reallocs = {false, static_cast<int>(failing) + 1, 0};
    testing::internal::CaptureStderr();

    for (const std::string& message : kMessages) {
      reallocs.areCounted = true;
      const bool isLogged = root.Log(1, "%s", message.c_str());
      reallocs.areCounted = false;
      EXPECT_TRUE(isLogged);
    }

    EXPECT_EQ("", testing::internal::GetCapturedStderr());
    Texts expected = kMessages;
    expected.erase(expected.begin() + static_cast<std::ptrdiff_t>(kOwners[failing]));
    EXPECT_TRUE(expected == recorder.Messages());
    EXPECT_TRUE(expected == Lines(folder.Path("app.log")));
  }
  EXPECT_EQ(static_cast<int>(kOwners.size()), reallocs.count);  // The last one failed as well.
}

}  // namespace

// A module that uses the library is loaded, logs through every kind of client, and is unloaded
// again. The program itself does not know the library.

#include <dlfcn.h>
#include <gtest/gtest.h>
#include <unistd.h>

#include <filesystem>
#include <future>
#include <string>
#include <thread>

#include "Support/Files.h"
#include "Support/SignalState.h"
#include "Support/TemporaryFolder.h"

namespace {

bool IsMapped(const std::string& name) {
  std::ifstream maps("/proc/self/maps");
  for (std::string line; std::getline(maps, line);) {
    if (line.find(name) != std::string::npos) return true;
  }
  return false;
}

std::ptrdiff_t OpenDescriptors() {
  const std::filesystem::directory_iterator first("/proc/self/fd");
  return std::distance(first, std::filesystem::directory_iterator());
}

/// The module, loaded while the object lives.
class Module {
 public:
  Module() : handle_(dlopen(UNLOAD_MODULE, RTLD_NOW | RTLD_LOCAL)) {
    if (handle_ == nullptr) throw std::runtime_error(dlerror());
  }
  ~Module() { dlclose(handle_); }
  Module(const Module&) = delete;
  Module& operator=(const Module&) = delete;

  bool LogThroughEveryKind(const std::string& folder) const {
    const auto log = reinterpret_cast<bool (*)(const char*)>(dlsym(handle_, "LogThroughEveryKind"));
    return log != nullptr && log(folder.c_str());
  }

 private:
  void* handle_;
};

TEST(UnloadTest, ReallyUnmapsTheLibraryAfterLoggingThroughEveryKind) {
  const TemporaryFolder folder;
  const std::ptrdiff_t descriptorsBefore = OpenDescriptors();
  {
    const Module module;
    ASSERT_TRUE(IsMapped("liblogger.so"));
    ASSERT_TRUE(module.LogThroughEveryKind(folder.Path()));
    ASSERT_LT(descriptorsBefore, OpenDescriptors());
  }

  EXPECT_FALSE(IsMapped("liblogger.so"));
  EXPECT_EQ(descriptorsBefore, OpenDescriptors());  // The manager's end closed the files.
  EXPECT_EQ("hello\n", Content(folder.Path("file.log")));
  EXPECT_EQ("hello\n", Content(folder.Path("received.log")));
  EXPECT_NE(std::string::npos, Content(folder.Path("log.xml")).find("<log>hello</log>"));
}

TEST(UnloadTest, LeavesNothingInAThreadThatLoggedAndContinues) {
  const TemporaryFolder folder;
  std::promise<void> logged;
  std::promise<void> unloaded;
  std::thread thread;
  {
    const Module module;
    thread = std::thread([&] {
      module.LogThroughEveryKind(folder.Path());
      logged.set_value();
      unloaded.get_future().wait();
    });
    logged.get_future().wait();
  }

  EXPECT_FALSE(IsMapped("liblogger.so"));
  unloaded.set_value();
  thread.join();  // Its thread-local data needs no code of the unloaded library.
}

TEST(UnloadTest, LeavesSignalsAsTheyWereAllTheTime) {
  const TemporaryFolder folder;
  const std::string actions = SignalActions();
  const auto masks = BlockedSignalsOfThreads();
  {
    const Module module;
    EXPECT_EQ(actions, SignalActions());
    ASSERT_TRUE(module.LogThroughEveryKind(folder.Path()));
    EXPECT_EQ(actions, SignalActions());
  }

  EXPECT_EQ(actions, SignalActions());
  EXPECT_EQ(masks.at(getpid()), BlockedSignalsOfThreads().at(getpid()));
}

TEST(UnloadTest, CanBeLoadedAgain) {
  const TemporaryFolder folder;
  for (int round = 0; round < 3; ++round) {
    const Module module;
    EXPECT_TRUE(module.LogThroughEveryKind(folder.Path()));
  }

  EXPECT_EQ("hello\nhello\nhello\n", Content(folder.Path("file.log")));
}

}  // namespace

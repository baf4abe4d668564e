// A thread that is cancelled inside a log call ends there, and leaves the system usable.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <cstdio>
#include <string>
#include <vector>

#include "LogClientConsole.h"
#include "LogClientFile.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"

namespace {

/// A pipe with a name, which a file client can write to, and that is full from the start.
class FullPipe {
 public:
  explicit FullPipe(const std::string& path) {
    mkfifo(path.c_str(), 0600);
    descriptor_ = open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
    const std::array<char, 4096> filling{};
    while (write(descriptor_, filling.data(), filling.size()) > 0) continue;
    writer_ = open(path.c_str(), O_WRONLY | O_CLOEXEC);
  }
  ~FullPipe() {
    close(descriptor_);
    close(writer_);
  }
  FullPipe(const FullPipe&) = delete;
  FullPipe& operator=(const FullPipe&) = delete;

  /// A descriptor that waits when the pipe is full.
  int Writer() const { return writer_; }

  std::string ReadAll() const {
    std::string text;
    std::array<char, 4096> buffer{};
    for (ssize_t count; (count = read(descriptor_, buffer.data(), buffer.size())) > 0;) {
      text.append(buffer.data(), static_cast<std::size_t>(count));
    }
    return text;
  }

 private:
  int descriptor_;
  int writer_;
};

struct Call {
  LogHandler* handler;
  pthread_barrier_t begins;
};

void* LogForEver(void* argument) {
  Call& call = *static_cast<Call*>(argument);
  pthread_barrier_wait(&call.begins);
  for (;;) call.handler->Log(1, "%s", "from the thread that is cancelled");
  return nullptr;
}

class CancellationTest : public testing::Test {
 protected:
  CancellationTest() {
    Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
    pthread_barrier_init(&call_.begins, nullptr, 2);
  }
  ~CancellationTest() override { pthread_barrier_destroy(&call_.begins); }

  LogHandler* HandlerFor(const std::string& file) {
    auto* const client = new LogClientFile(file, true);
    client->SetLayout("LogLayoutMessage");
    LogHandler* const handler = Logger::GetLogHandler("cancelled");
    handler->AddLogClient(client);
    return handler;
  }

  /// Cancels a thread that logs without end, and returns what it ended with.
  void* CancelledThreadOf(LogHandler* handler) {
    call_.handler = handler;
    pthread_t thread;
    pthread_create(&thread, nullptr, LogForEver, &call_);
    pthread_barrier_wait(&call_.begins);
    pthread_cancel(thread);
    void* result = nullptr;
    pthread_join(thread, &result);
    return result;
  }

  TemporaryFolder folder_;
  Call call_{};
};

TEST_F(CancellationTest, EndsAThreadThatWaitsInAWriteAndReleasesTheLocks) {
  const FullPipe pipe(folder_.Path("pipe"));
  LogHandler* const handler = HandlerFor(folder_.Path("pipe"));

  EXPECT_EQ(PTHREAD_CANCELED, CancelledThreadOf(handler));

  EXPECT_FALSE(pipe.ReadAll().empty());
  EXPECT_TRUE(handler->Log(1, "%s", "afterwards"));  // The lock is free, the client goes on.
  EXPECT_EQ("afterwards\n", pipe.ReadAll());
}

TEST_F(CancellationTest, LeavesTheConsoleInUse) {
  const FullPipe pipe(folder_.Path("pipe"));
  const int standardOutput = dup(STDOUT_FILENO);
  std::fflush(stdout);
  ASSERT_EQ(STDOUT_FILENO, dup2(pipe.Writer(), STDOUT_FILENO));
  auto* const client = new LogClientConsole;
  client->SetLayout("LogLayoutMessage");
  LogHandler* const handler = Logger::GetLogHandler("console");
  handler->AddLogClient(client);

  EXPECT_EQ(PTHREAD_CANCELED, CancelledThreadOf(handler));

  pipe.ReadAll();
  handler->Log(1, "%s", "afterwards");
  dup2(standardOutput, STDOUT_FILENO);
  close(standardOutput);
  const std::string text = pipe.ReadAll();
  EXPECT_NE(std::string::npos, text.find("afterwards\n")) << text;
}

TEST_F(CancellationTest, LeavesAFileOfWholeLines) {
  LogHandler* const handler = HandlerFor(folder_.Path("file"));

  for (int round = 0; round < 50; ++round) {
    ASSERT_EQ(PTHREAD_CANCELED, CancelledThreadOf(handler));
  }
  handler->Log(1, "%s", "afterwards");

  std::vector<std::string> lines = Lines(folder_.Path("file"));
  ASSERT_FALSE(lines.empty());
  EXPECT_EQ("afterwards", lines.back());
  lines.pop_back();
  for (const std::string& line : lines) ASSERT_EQ("from the thread that is cancelled", line);
}

}  // namespace

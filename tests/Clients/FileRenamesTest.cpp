#include <fcntl.h>
#include <gtest/gtest.h>
#include <stdio.h>

#include <cerrno>
#include <deque>
#include <filesystem>
#include <functional>
#include <string>
#include <utility>

#include "LogClientRollingFile.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"

namespace {

/// The results of the program's renames.
struct Renames {
  std::deque<int> failures;         ///< The errno of each of the next ones.
  std::function<void()> whenMoved;  ///< Called after one that succeeded, if set.
  int count = 0;
};

Renames& TheRenames() {
  static Renames renames;
  return renames;
}

/// Takes the place of the C library's standard error for a scope. Each line sets errno, as an
/// output that fails may do.
class StandardErrorThatFails {
 public:
  explicit StandardErrorThatFails(std::deque<int> errors) : errors_(std::move(errors)) {
    cookie_io_functions_t functions{};
    functions.write = Write;
    stderr = fopencookie(this, "w", functions);
    setvbuf(stderr, nullptr, _IONBF, 0);
  }
  ~StandardErrorThatFails() {
    fclose(stderr);
    stderr = former_;
  }
  StandardErrorThatFails(const StandardErrorThatFails&) = delete;
  StandardErrorThatFails& operator=(const StandardErrorThatFails&) = delete;

  const std::string& Text() const { return text_; }

 private:
  FILE* const former_ = stderr;
  std::deque<int> errors_;
  std::string text_;

  static ssize_t Write(void* cookie, const char* text, std::size_t length) {
    auto& self = *static_cast<StandardErrorThatFails*>(cookie);
    self.text_.append(text, length);
    if (!self.errors_.empty()) {
      errno = self.errors_.front();
      self.errors_.pop_front();
    }
    return static_cast<ssize_t>(length);
  }
};

class FileRenamesTest : public testing::Test {
 protected:
  FileRenamesTest() {
    TheRenames() = Renames();
    client_.SetLayout("LogLayoutMessage");
  }

  /// Publishes an event that crosses the limit while renames fail, and gives standard error.
  std::string PublishWhile(const std::deque<int>& failures) {
    TheRenames().failures = failures;
    testing::internal::CaptureStderr();
    isPublished_ = client_.Publish(EventWith("one"));
    return testing::internal::GetCapturedStderr();
  }

  TemporaryFolder folder_;
  const std::string file_ = folder_.Path("app.log");
  LogClientRollingFile client_{file_, 0, 1};
  bool isPublished_ = false;
};

}  // namespace

// Stands before the C library's function for all of this program.
extern "C" int rename(const char* from, const char* to) noexcept {
  Renames& renames = TheRenames();
  ++renames.count;
  if (renames.failures.empty()) {
    const int result = renameat(AT_FDCWD, from, AT_FDCWD, to);
    if (result == 0 && renames.whenMoved) renames.whenMoved();
    return result;
  }
  errno = renames.failures.front();
  renames.failures.pop_front();
  return -1;
}

namespace {

TEST_F(FileRenamesTest, AreTriedThreeTimesAndEachFailureIsReported) {
  const std::string denied = "LOGGER ERROR at Rollover [72]: 'Rename failed EACCES'\n";
  const std::string missing = "LOGGER ERROR at Rollover [74]: 'Rename failed ENOENT\n'\n";
  const std::string invalid = "LOGGER ERROR at Rollover [76]: 'Rename failed EINVAL\n'\n";
  const struct {
    std::deque<int> failures;
    std::string report;
    bool isMoved;
  } rows[] = {
      {{EACCES, EACCES, EACCES}, denied + denied + denied, false},
      {{ENOENT, ENOENT, ENOENT}, missing + missing + missing, false},
      {{EINVAL, EINVAL, EINVAL}, invalid + invalid + invalid, false},
      {{EIO, EPERM, EROFS}, "", false},
      {{EACCES, EBUSY, EINVAL}, denied + invalid, false},
      {{EACCES, EACCES}, denied + denied, true},
      {{}, "", true},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.report);
    TheRenames().count = 0;

    EXPECT_EQ(row.report, PublishWhile(row.failures));

    EXPECT_EQ(row.isMoved, isPublished_);
    EXPECT_EQ(row.isMoved ? static_cast<int>(row.failures.size()) + 1 : 3, TheRenames().count);
    EXPECT_TRUE(client_.Rollover());  // At the next event it would be tried again.
  }
}

TEST_F(FileRenamesTest, AreTriedAgainAtTheNextEvent) {
  PublishWhile({EACCES, EACCES, EACCES});
  EXPECT_EQ("one\n", Content(file_));

  EXPECT_TRUE(client_.Publish(EventWith("two")));

  EXPECT_EQ("one\ntwo\n", Content(file_ + ".1"));
  EXPECT_EQ("", Content(file_));
}

TEST_F(FileRenamesTest, AreReportedByTheErrorThatAReportLeft) {
  TheRenames().failures = {EACCES, ENOENT, EIO};
  StandardErrorThatFails standardError({ENOENT, EINVAL, EIO, EINVAL});

  EXPECT_FALSE(client_.Publish(EventWith("one")));

  EXPECT_EQ(
      "LOGGER ERROR at Rollover [72]: 'Rename failed EACCES'\n"
      "LOGGER ERROR at Rollover [74]: 'Rename failed ENOENT\n'\n"
      "LOGGER ERROR at Rollover [76]: 'Rename failed EINVAL\n'\n"
      "LOGGER ERROR at Rollover [74]: 'Rename failed ENOENT\n'\n"
      "LOGGER ERROR at Rollover [76]: 'Rename failed EINVAL\n'\n",
      standardError.Text());
}

TEST_F(FileRenamesTest, LeaveNoFileToWriteToWhenTheNewOneCannotBeOpened) {
  TheRenames().whenMoved = [this] { std::filesystem::create_directory(file_); };

  EXPECT_EQ("", PublishWhile({}));

  EXPECT_TRUE(isPublished_);
  EXPECT_EQ("one\n", Content(file_ + ".1"));
  EXPECT_FALSE(client_.Publish(EventWith("lost")));
  EXPECT_TRUE(client_.IsInitialize());
}

}  // namespace

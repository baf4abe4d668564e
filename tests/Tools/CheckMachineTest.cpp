// The findings of `loggerctl check --system`, which depend on the user's rights. Tests that run as
// root give these up first.

#include <grp.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <string>

#include "Support/Checked.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"

namespace {

constexpr uid_t kNobody = 65534;

/// A client with its file in line 1.
std::string FileClient(const std::string& kind, const std::string& file) {
  const std::string limits =
      kind != "LogClientRollingFile"
          ? ""
          : "logclient.c.parameter.1.name = filesize\nlogclient.c.parameter.1.value = 9\n"
            "logclient.c.parameter.2.name = maxbackup\nlogclient.c.parameter.2.value = 2\n";
  return "logclient.c.parameter.0.value = " + file +
         "\nlogclient.c.parameter.0.name = filename\nloglevel = 1\nlogclient = c\n"
         "logclient.c.handler = default\nlogclient.c.type = " +
         kind + "\n" + limits;
}

/// The findings of a process without root's rights that runs in the current folder.
std::string CheckedWithoutRights(const std::string& content) {
  std::array<int, 2> ends{};
  if (pipe(ends.data()) != 0) return "no pipe";
  const pid_t child = fork();
  if (child == 0) {
    const bool hasChanged = geteuid() != 0 || (setgroups(0, nullptr) == 0 && setgid(kNobody) == 0 &&
                                               setuid(kNobody) == 0);
    Loggerctl::CheckOptions options;
    options.withMachine = true;
    const std::string found = hasChanged ? Checked(content, options) : "no change of user";
    const ssize_t written = write(ends[1], found.data(), found.size());
    _exit(written < 0 ? 1 : 0);
  }
  close(ends[1]);
  std::string found;
  std::array<char, 4096> buffer{};
  for (ssize_t count; (count = read(ends[0], buffer.data(), buffer.size())) > 0;) {
    found.append(buffer.data(), static_cast<std::size_t>(count));
  }
  close(ends[0]);
  waitpid(child, nullptr, 0);
  return found;
}

/// A folder that every user may write to, and in it one, "locked", with a file that can be written
/// but not renamed.
class CheckMachineTest : public testing::Test {
 protected:
  CheckMachineTest() {
    std::filesystem::current_path(folder_.Path());
    chmod(".", 0777);
    std::filesystem::create_directory("locked");
    WriteFile("locked/app.log", "");
    WriteFile("locked/old.log", "");
    chmod("locked/app.log", 0666);
    chmod("locked/old.log", 0444);
    chmod("locked", 0555);
  }
  ~CheckMachineTest() override {
    chmod("locked", 0755);
    std::filesystem::current_path("/");
  }

  const TemporaryFolder folder_;
};

TEST_F(CheckMachineTest, FindsNothingWhereFilesCanBeMade) {
  for (const char* const kind : {"LogClientFile", "LogClientRollingFile"}) {
    EXPECT_EQ("", CheckedWithoutRights(FileClient(kind, "app.log")));
    EXPECT_EQ("", CheckedWithoutRights(FileClient(kind, folder_.Path("app.log"))));
  }
  EXPECT_FALSE(Exists("app.log"));
}

TEST_F(CheckMachineTest, ReportsAFolderThatDoesNotExist) {
  EXPECT_EQ(
      "it:1: error: folder 'no': No such file or directory; make it before the application "
      "starts\n",
      CheckedWithoutRights(FileClient("LogClientFile", "no/app.log")));
}

TEST_F(CheckMachineTest, ReportsAFolderInThePlaceOfAFile) {
  EXPECT_EQ("it:1: error: 'locked' is a folder; name a file\n",
            CheckedWithoutRights(FileClient("LogClientFile", "locked")));
}

TEST_F(CheckMachineTest, ReportsFilesThatTheUserMayNotWrite) {
  EXPECT_EQ("it:1: error: folder 'locked' cannot be written by this user: Permission denied\n",
            CheckedWithoutRights(FileClient("LogClientFile", "locked/new.log")));
  EXPECT_EQ(
      "it:1: error: file 'locked/old.log' cannot be written by this user: Permission denied\n",
      CheckedWithoutRights(FileClient("LogClientFile", "locked/old.log")));
}

TEST_F(CheckMachineTest, ReportsAFileThatMayNotBeRenamed) {
  EXPECT_EQ("", CheckedWithoutRights(FileClient("LogClientFile", "locked/app.log")));
  EXPECT_EQ(
      "it:1: error: file 'locked/app.log' may not be renamed by this user: it will not be rolled, "
      "and "
      "grow; let the user write the folder 'locked'\n",
      CheckedWithoutRights(FileClient("LogClientRollingFile", "locked/app.log")));
}

TEST_F(CheckMachineTest, ReportsADeviceThatWouldBeRenamed) {
  EXPECT_EQ("", CheckedWithoutRights(FileClient("LogClientFile", "/dev/null")));
  EXPECT_EQ("it:1: error: '/dev/null' is no plain file, and would be renamed; name a plain file\n",
            CheckedWithoutRights(FileClient("LogClientRollingFile", "/dev/null")));
}

}  // namespace

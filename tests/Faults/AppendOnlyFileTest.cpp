// Files that the system lets nobody change but at their end.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <cerrno>
#include <memory>
#include <ostream>
#include <string>
#include <vector>

#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "LogClientXml.h"
#include "Support/ClientAmongOthers.h"
#include "Support/FileCalls.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlEntries.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using Answers = std::vector<bool>;
using Texts = std::vector<std::string>;

/// Makes a file append-only for a scope, as chattr +a does. Where that is not possible, calls are
/// refused as they would be then.
class AppendOnly {
 public:
  enum class Kind { Marked, Imitated };
  friend void PrintTo(Kind kind, std::ostream* out) {
    *out << (kind == Kind::Marked ? "Marked" : "Imitated");
  }

  AppendOnly(Kind kind, const TemporaryFolder& folder, const std::string& file) : file_(file) {
    isMarked_ = kind == Kind::Marked && Mark(FS_APPEND_FL);
    if (isMarked_) return;
    imitation_ = std::make_unique<FileCalls>(folder.Path(), [file](FileCall& call) {
      if (call.path != file) return 0;
      const bool isAppended = (call.flags & (O_APPEND | O_TRUNC)) == O_APPEND;
      if (call.function == "open") return isAppended ? 0 : EPERM;
      return call.function == "rename" || call.function == "remove" ? EPERM : 0;
    });
  }
  ~AppendOnly() {
    if (isMarked_) {
      EXPECT_TRUE(Mark(0));
    }
  }
  AppendOnly(const AppendOnly&) = delete;
  AppendOnly& operator=(const AppendOnly&) = delete;

 private:
  const std::string file_;
  bool isMarked_;
  std::unique_ptr<FileCalls> imitation_;

  bool Mark(int mark) const {
    const int descriptor = open(file_.c_str(), O_RDONLY | O_CLOEXEC);
    int flags = 0;
    bool isDone = ioctl(descriptor, FS_IOC_GETFLAGS, &flags) == 0;
    flags = (flags & ~FS_APPEND_FL) | mark;
    isDone = isDone && ioctl(descriptor, FS_IOC_SETFLAGS, &flags) == 0;
    close(descriptor);
    return isDone;
  }
};

class AppendOnlyFileTest : public testing::TestWithParam<AppendOnly::Kind> {
 protected:
  AppendOnlyFileTest() {
    WriteFile(file_, "former\n");
    CaptureStderr();
  }
  ~AppendOnlyFileTest() override { EXPECT_EQ("", GetCapturedStderr()); }

  const TemporaryFolder folder_;
  const std::string file_ = folder_.Path("app.log");
};

INSTANTIATE_TEST_SUITE_P(EitherKind, AppendOnlyFileTest,
                         testing::Values(AppendOnly::Kind::Marked, AppendOnly::Kind::Imitated));

TEST_P(AppendOnlyFileTest, IsAppendedTo) {
  const AppendOnly appendOnly(GetParam(), folder_, file_);
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");

  EXPECT_EQ((Answers{true, true}), ClientAmongOthers(client).LogAll({"one", "two"}));

  EXPECT_EQ("former\none\ntwo\n", Content(file_));
}

TEST_P(AppendOnlyFileTest, IsNotEmptied) {
  const AppendOnly appendOnly(GetParam(), folder_, file_);
  LogClientFile client(file_, false);

  EXPECT_FALSE(client.IsInitialize());
  EXPECT_EQ((Answers{false, false}), ClientAmongOthers(client).LogAll({"lost", "lost"}));

  EXPECT_EQ("former\n", Content(file_));
}

TEST_P(AppendOnlyFileTest, GrowsPastItsLimitUntilItMayBeMoved) {
  LogClientRollingFile client(file_, 10, 2);
  client.SetLayout("LogLayoutMessage");
  ClientAmongOthers among(client);
  {
    const AppendOnly appendOnly(GetParam(), folder_, file_);

    EXPECT_EQ((Answers{false, false}), among.LogAll({"one", "two"}));
    EXPECT_EQ("former\none\ntwo\n", Content(file_));
  }

  EXPECT_EQ((Answers{true, true}), among.LogAll({"six", "ten"}));

  EXPECT_EQ("former\none\ntwo\nsix\n", Content(file_ + ".1"));
  EXPECT_EQ("ten\n", Content(file_));
}

TEST_P(AppendOnlyFileTest, StopsAClientWithoutBackupsThatWouldEmptyIt) {
  LogClientRollingFile client(file_, 10, 0);
  client.SetLayout("LogLayoutMessage");
  ClientAmongOthers among(client);
  {
    const AppendOnly appendOnly(GetParam(), folder_, file_);

    EXPECT_EQ((Answers{true, false}), among.LogAll({"one", "two"}));
  }

  EXPECT_FALSE(among.Log("six"));
  EXPECT_EQ("former\none\n", Content(file_));
}

TEST_P(AppendOnlyFileTest, IsLeftAloneByAnXmlClientUntilItMayBeWritten) {
  LogClientXml client(file_, "");
  ClientAmongOthers among(client);
  {
    const AppendOnly appendOnly(GetParam(), folder_, file_);

    EXPECT_EQ((Answers{true, true}), among.LogAll({"one", "two"}));
    EXPECT_EQ("former\n", Content(file_));
  }

  EXPECT_TRUE(among.Log("three"));

  EXPECT_EQ((Texts{"one", "two", "three"}), XmlLog(file_).Messages());
}

}  // namespace

// The file of an XML client in processes that are forked.

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/wait.h>
#include <unistd.h>

#include <array>
#include <cerrno>
#include <csignal>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "LogClientXml.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlEntries.h"

namespace {

using Texts = std::vector<std::string>;
using Work = std::function<void()>;

/// Forks a process that does the work, and ends without the process's exit.
pid_t Fork(const Work& work) {
  const pid_t process = fork();
  if (process != 0) return process;
  std::signal(SIGALRM, SIG_DFL);
  alarm(60);  // When it hangs.
  work();
  _exit(0);
}

/// Lets a process do the work, and waits until it and all that it forked have ended.
void RunFamily(const Work& work) {
  std::array<int, 2> ends{};
  ASSERT_EQ(0, pipe(ends.data()));
  const pid_t process = Fork(work);
  close(ends[1]);
  waitpid(process, nullptr, 0);
  char nothing = 0;
  EXPECT_EQ(0, read(ends[0], &nothing, 1));  // All of them have the other end open.
  close(ends[0]);
}

void WaitForEndOfParent(pid_t parent) {
  while (getppid() == parent) sched_yield();
}

void WaitForEndOf(pid_t process) {
  while (kill(process, 0) == 0 || errno != ESRCH) sched_yield();
}

class XmlForkTest : public testing::Test {
 protected:
  XmlForkTest() { Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR"); }

  void Log(const std::string& message) const {
    if (!client_->IsInitialize() || !client_->Publish(EventWith(message))) _exit(1);
  }
  Texts Messages() const { return XmlLog(file_).Messages(); }
  bool IsIndented() const { return Content(file_).find("\n  <entry") != std::string::npos; }

  const TemporaryFolder folder_;
  const std::string file_ = folder_.Path("log.xml");
  std::unique_ptr<LogClientXml> client_ = std::make_unique<LogClientXml>(file_, "log.xsl");
};

TEST_F(XmlForkTest, ADaemonThatWasConfiguredBeforeWritesTheFile) {
  RunFamily([this] {
    client_ = std::make_unique<LogClientXml>(file_, "log.xsl");
    const pid_t parent = getpid();
    if (daemon(1, 1) != 0) return;
    Log("one");
    WaitForEndOfParent(parent);
    Log("two");
    if (Messages() != Texts{"one", "two"}) return;
    Log("three");
    client_.reset();
  });

  EXPECT_EQ((Texts{"one", "two", "three"}), Messages());
  EXPECT_TRUE(IsIndented());
}

TEST_F(XmlForkTest, AChildLeavesTheFileToAParentThatLives) {
  Log("parent");
  const std::string former = Content(file_);

  RunFamily([this] {
    for (int number = 0; number < 3; ++number) Log("child");
    client_->Init("");
    Log("child");
    client_.reset();
  });

  EXPECT_EQ(former, Content(file_));
  Log("again");
  EXPECT_EQ((Texts{"parent", "again"}), Messages());
}

TEST_F(XmlForkTest, AChildKeepsWhatItsParentLoggedAfterTheFork) {
  for (const bool endsWell : {false, true}) {
    RunFamily([&] {
      client_ = std::make_unique<LogClientXml>(file_, "log.xsl");
      for (const char* const message : {"one", "&#1;", ""}) Log(message);
      const pid_t parent = getpid();
      std::array<int, 2> isForked{};
      if (pipe(isForked.data()) != 0) return;
      Fork([&] {
        Log("child 1");
        if (write(isForked[1], "f", 1) != 1) return;
        WaitForEndOfParent(parent);
        Log("child 2");
        client_.reset();
      });
      char forked = 0;
      if (read(isForked[0], &forked, 1) != 1) return;
      for (const char* const message : {"parent \"<&amp;>\"", "AT&T", "\xC3\xA9\n"}) Log(message);
      if (endsWell) client_.reset();  // With the indented document.
    });

    const std::string entries = Content(file_);
    std::size_t position = 0;
    for (const char* const message :
         {"<log>one<", "<log>\x01<", "<log/>", "<log>parent \"&lt;&amp;&gt;\"<", "<log/>",
          "<log>\xC3\xA9\n<", "<log>child 1<", "<log>child 2<"}) {
      position = entries.find(message, position);
      ASSERT_NE(std::string::npos, position) << message << entries;
      ++position;
    }
    EXPECT_TRUE(IsIndented());
  }
}

TEST_F(XmlForkTest, AChildWritesAtItsEndWhenItsParentEndedBefore) {
  RunFamily([this] {
    client_ = std::make_unique<LogClientXml>(file_, "log.xsl");
    const pid_t parent = getpid();
    Fork([&] {
      Log("child");
      WaitForEndOfParent(parent);
      client_.reset();
    });
    Log("parent");
  });

  EXPECT_EQ(2U, Messages().size());
  EXPECT_EQ("child", Messages().back());
  EXPECT_TRUE(IsIndented());
}

TEST_F(XmlForkTest, AChildReplacesAFileThatItsParentDidNotWrite) {
  RunFamily([this] {
    client_ = std::make_unique<LogClientXml>(file_, "log.xsl");
    Log("parent");
    const pid_t parent = getpid();
    Fork([&] {
      WaitForEndOfParent(parent);
      Log("child");
    });
    WriteFile(file_, "something else");
  });

  EXPECT_EQ((Texts{"parent", "child"}), Messages());
}

TEST_F(XmlForkTest, ANewDocumentOfAChildHasNothingOfItsParents) {
  RunFamily([this] {
    client_ = std::make_unique<LogClientXml>(file_, "log.xsl");
    Log("parent");
    const pid_t parent = getpid();
    Fork([&] {
      client_->Init("");
      WaitForEndOfParent(parent);
      Log("child");
    });
  });

  EXPECT_EQ((Texts{"child"}), Messages());
}

TEST_F(XmlForkTest, AGrandchildWritesWhenBothOthersHaveEnded) {
  Log("owner");
  const std::string former = Content(file_);
  RunFamily([this] {
    const pid_t middle = getpid();
    Fork([&] {
      WaitForEndOfParent(middle);
      Log("too early");
      client_.reset();
    });
  });
  EXPECT_EQ(former, Content(file_));

  RunFamily([this] {
    client_ = std::make_unique<LogClientXml>(file_, "log.xsl");
    Log("owner");
    const pid_t owner = getpid();
    Fork([&] {
      const pid_t middle = getpid();
      Fork([&] {
        WaitForEndOfParent(middle);
        WaitForEndOf(owner);
        Log("grandchild");
      });
    });
    Log("owner again");
  });
  EXPECT_EQ((Texts{"owner", "owner again", "grandchild"}), Messages());
}

TEST_F(XmlForkTest, AGrandchildHasWhatItsParentCollectedOnceWhetherThatWasSavedOrNot) {
  for (const bool isSaved : {true, false}) {
    RunFamily([&] {
      client_ = std::make_unique<LogClientXml>(file_, "log.xsl");
      Log("owner");
      const pid_t owner = getpid();
      Fork([&] {
        Log("middle");
        const pid_t middle = getpid();
        Fork([&] {
          WaitForEndOfParent(middle);
          WaitForEndOf(owner);
          Log("grandchild");
        });
        WaitForEndOfParent(owner);
        if (isSaved) Log("middle again");
      });
      Log("owner again");
    });

    Texts expected{"owner", "owner again", "middle", "middle again", "grandchild"};
    if (!isSaved) expected.erase(expected.begin() + 3);
    EXPECT_EQ(expected, Messages());
  }
}

TEST_F(XmlForkTest, AChildThatTookTheFileOverKeepsItFromItsOwnChild) {
  RunFamily([this] {
    client_ = std::make_unique<LogClientXml>(file_, "log.xsl");
    const pid_t owner = getpid();
    Fork([&] {
      WaitForEndOfParent(owner);
      Log("one");
      const pid_t child = Fork([&] {
        Log("lost");
        client_.reset();
      });
      waitpid(child, nullptr, 0);
      Log("two");
    });
  });

  EXPECT_EQ((Texts{"one", "two"}), Messages());
}

}  // namespace

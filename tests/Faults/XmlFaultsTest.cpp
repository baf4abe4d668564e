// Every call that saves an XML log fails in its turn.

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <vector>

#include "LogClientXml.h"
#include "Support/ClientAmongOthers.h"
#include "Support/Descriptors.h"
#include "Support/FileCalls.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlEntries.h"

namespace {

using Answers = std::vector<bool>;
using Texts = std::vector<std::string>;

const Texts kMessages{"one", "two", "\xC3\xA9", "four"};  // The third takes libxml2.

class XmlFaultsTest : public testing::Test {
 protected:
  /// Logs while the call of this number fails, and how many there were otherwise.
  std::size_t LogWithFault(std::size_t failing, int error) {
    const TemporaryFolder folder;
    const std::string file = folder.Path("log.xml");
    LogClientXml client(file, "");
    ClientAmongOthers among(client);
    std::size_t number = 0;
    FileCalls calls(folder.Path(), [&](FileCall&) { return ++number == failing ? error : 0; });

    EXPECT_EQ(Answers(kMessages.size(), true), among.LogAll(kMessages));
    failing = 0;
    EXPECT_TRUE(among.Log("last"));

    Texts all = kMessages;
    all.push_back("last");
    EXPECT_EQ(all, XmlLog(file).Messages());
    return number;
  }
};

TEST_F(XmlFaultsTest, AreMadeUpForByTheNextEventWhicheverCallFailed) {
  const long descriptors = OpenDescriptors();
  testing::internal::CaptureStderr();
  for (const int error : {EIO, ENOSPC, EACCES, EMFILE}) {
    std::size_t failing = 1;
    while (LogWithFault(failing, error) >= failing) ++failing;
    EXPECT_LT(5U, failing);  // The file is opened and written, and each entry put into it.
  }

  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  EXPECT_EQ(descriptors, OpenDescriptors());
}

TEST_F(XmlFaultsTest, LeaveTheFormerEventsWhenAnEntryIsWrittenInPart) {
  for (const std::size_t taken : {0U, 1U, 14U, 15U, 60U}) {
    SCOPED_TRACE(taken);
    const TemporaryFolder folder;
    const std::string file = folder.Path("log.xml");
    LogClientXml client(file, "");
    ClientAmongOthers among(client);
    EXPECT_TRUE(among.Log("one"));
    const std::string former = Content(file);
    bool isFirst = true;
    const FileCalls calls(folder.Path(), [&](FileCall& call) {
      if (call.function != "pwrite" || !isFirst) return 0;
      isFirst = false;
      call.length = taken;
      return taken == 0 ? ENOSPC : 0;
    });

    EXPECT_TRUE(among.Log("two"));

    EXPECT_FALSE(isFirst);
    EXPECT_EQ(former, Content(file));
    EXPECT_TRUE(among.Log("three"));
    EXPECT_EQ((Texts{"one", "two", "three"}), XmlLog(file).Messages());
  }
}

}  // namespace

// Files that must not grow past the process's limit.

#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "LogClientFile.h"
#include "LogClientRollingFile.h"
#include "LogClientXml.h"
#include "Support/ClientAmongOthers.h"
#include "Support/FileSizeLimit.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlEntries.h"

namespace {

using testing::internal::CaptureStderr;
using testing::internal::GetCapturedStderr;
using Answers = std::vector<bool>;
using Texts = std::vector<std::string>;

class FileSizeLimitTest : public testing::Test {
 protected:
  FileSizeLimitTest() { CaptureStderr(); }
  ~FileSizeLimitTest() override { EXPECT_EQ("", GetCapturedStderr()); }

  const TemporaryFolder folder_;
  const std::string file_ = folder_.Path("app.log");
};

TEST_F(FileSizeLimitTest, CutsTheEventThatCrossesIt) {
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");
  ClientAmongOthers among(client);
  {
    const FileSizeLimit limit(10);

    EXPECT_EQ((Answers{true, true, true, false}), among.LogAll({"one", "two", "three", "four"}));
  }

  EXPECT_FALSE(among.Log("five"));
  EXPECT_EQ("one\ntwo\nth", Content(file_));
}

TEST_F(FileSizeLimitTest, DropsAnEventOfWhichNothingFits) {
  LogClientFile client(file_, true);
  client.SetLayout("LogLayoutMessage");
  ClientAmongOthers among(client);
  const FileSizeLimit limit(8);

  EXPECT_EQ((Answers{true, true, true, false}), among.LogAll({"one", "two", "three", "four"}));

  EXPECT_EQ("one\ntwo\n", Content(file_));
}

TEST_F(FileSizeLimitTest, IsNotReachedByAFileThatRollsOverBefore) {
  LogClientRollingFile client(file_, 4, 1);
  client.SetLayout("LogLayoutMessage");
  ClientAmongOthers among(client);
  const FileSizeLimit limit(8);

  EXPECT_EQ(Answers(5, true), among.LogAll({"one", "two", "six", "ten", "end"}));

  EXPECT_EQ("six\nten\n", Content(file_ + ".1"));
  EXPECT_EQ("end\n", Content(file_));
}

TEST_F(FileSizeLimitTest, SilencesARollingClientWhoseOwnLimitIsLarger) {
  LogClientRollingFile client(file_, 10, 1);
  client.SetLayout("LogLayoutMessage");
  ClientAmongOthers among(client);
  const FileSizeLimit limit(10);

  EXPECT_EQ((Answers{true, true, true, false}), among.LogAll({"one", "two", "six", "ten"}));

  EXPECT_EQ("one\ntwo\nsi", Content(file_));
  EXPECT_FALSE(Exists(file_ + ".1"));
}

TEST_F(FileSizeLimitTest, LeavesAnXmlFileWholeAndHasAllOfItLater) {
  LogClientXml client(file_, "");
  ClientAmongOthers among(client);
  EXPECT_TRUE(among.Log("one"));
  {
    const FileSizeLimit limit(Content(file_).size() + 1);

    EXPECT_EQ((Answers{true}), among.LogAll({"two"}));
    EXPECT_EQ((Texts{"one"}), XmlLog(file_).Messages());
  }

  EXPECT_TRUE(among.Log("three"));
  EXPECT_EQ((Texts{"one", "two", "three"}), XmlLog(file_).Messages());
}

TEST_F(FileSizeLimitTest, CutsAnXmlFileThatIsRewritten) {
  LogClientXml client(file_, "");
  ClientAmongOthers among(client);
  EXPECT_TRUE(among.Log("one"));
  const std::string former = Content(file_);
  {
    const FileSizeLimit limit(former.size());

    EXPECT_EQ((Answers{true, true}), among.LogAll({"two", "three"}));
    EXPECT_FALSE(XmlLog(file_).IsParsed());  // The second event found a file that was not its own.
  }

  EXPECT_TRUE(among.Log("four"));
  EXPECT_EQ((Texts{"one", "two", "three", "four"}), XmlLog(file_).Messages());
}

TEST_F(FileSizeLimitTest, CutsTheIndentedDocumentThatAnXmlClientLeavesAtItsEnd) {
  auto client = std::make_unique<LogClientXml>(file_, "");
  EXPECT_EQ((Answers{true, true, true}),
            ClientAmongOthers(*client).LogAll({"one", "two", "three"}));
  const std::string document = Content(file_);
  {
    const FileSizeLimit limit(document.size());
    client.reset();
  }

  EXPECT_EQ(document.size(), Content(file_).size());
  EXPECT_FALSE(XmlLog(file_).IsParsed());
  EXPECT_EQ((Texts{"one", "two", ""}), XmlLog(file_, XML_PARSE_RECOVER).Messages());
}

}  // namespace

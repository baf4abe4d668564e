// The stylesheet turns what the XML client writes into a page.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LogClientXml.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "LogProperties.h"
#include "Logger.h"
#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/TemporaryFolder.h"
#include "Support/TimeZone.h"

namespace {

std::size_t Count(const std::string& text, const std::string& part) {
  std::size_t count = 0;
  for (std::size_t at = 0; (at = text.find(part, at)) != std::string::npos; ++at) ++count;
  return count;
}

const std::string kStylesheet = PROJECT_FOLDER "/share/liblogger/log.xsl";

std::string DocumentOf(int entries) {
  std::string text = "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<apitestlog>";
  for (int i = 0; i < entries; ++i) {
    text +=
        "<entry level=\"INFO\"><date>2024-03-05</date><time>14:07:09</time><log>a</log></entry>";
  }
  return text + "</apitestlog>\n";
}

/// The user instructions of a program, which are the same each time.
long InstructionsOf(std::vector<std::string> program) {
  std::vector<std::string> command{"valgrind", "--tool=callgrind",
                                   "--callgrind-out-file=/dev/null"};
  command.insert(command.end(), program.begin(), program.end());
  const ProcessResult result = RunProgram(command);
  const std::string label = "Collected : ";
  const std::size_t at = result.errors.find(label);
  if (result.exitCode != 0 || at == std::string::npos) ADD_FAILURE() << result.errors;
  return at == std::string::npos ? 0 : std::stol(result.errors.substr(at + label.size()));
}

class StylesheetTest : public testing::Test {
 protected:
  StylesheetTest() {
    SetTimeZone("UTC0");
    Logger::GetLogLevelManager()->AddLogLevel(1, "ERROR");
    Logger::GetLogLevelManager()->AddLogLevel(2, "my warning");
    Logger::GetLogLevelManager()->AddLogLevel(3, "A&B <3");
    Logger::GetLogLevelManager()->AddLogLevel(4, "");
    LogProperties properties;
    properties.AddProperty("filename", file_);
    properties.AddProperty("escapetext", "true");
    client_ = new LogClientXml(properties);
  }

  void Publish(unsigned int level, const std::string& message) {
    client_->Publish(LogEvent(level, message, "handler", "", 0, timeval{1709647629, 0}, 1));
  }

  std::string Page() const { return PageMadeBy(kStylesheet); }

  std::string PageMadeBy(const std::string& stylesheet) const {
    const ProcessResult result = RunProgram({"xsltproc", stylesheet, file_});
    EXPECT_EQ(0, result.exitCode);
    EXPECT_EQ("", result.errors);
    return result.output;
  }

  TemporaryFolder folder_;
  const std::string file_ = folder_.Path("log.xml");
  LogClientXml* client_;
};

TEST_F(StylesheetTest, GivesARowForEachEntryInTheirOrder) {
  Publish(1, "first");
  Publish(2, "second");

  const std::string page = Page();

  const std::string moment =
      R"(<td class="moment">2024-03-05</td><td class="moment">14:07:09</td>)";
  EXPECT_NE(std::string::npos,
            page.find(R"(<tr data-level="ERROR" class="error">)" + moment +
                      R"(<td class="level">ERROR</td><td class="message">first</td></tr>)"
                      R"(<tr data-level="my warning" class="warning">)" +
                      moment +
                      R"(<td class="level">my warning</td><td class="message">second</td></tr>)"))
      << page;
  EXPECT_NE(std::string::npos, page.find("<p id=\"count\">2 entries</p>"));
}

TEST_F(StylesheetTest, OffersABoxForEachLevelOnce) {
  Publish(3, "a");
  Publish(1, "b");
  Publish(3, "c");
  Publish(4, "d");

  const std::string page = Page();

  EXPECT_EQ(3U, Count(page, "type=\"checkbox\""));
  EXPECT_NE(std::string::npos, page.find("value=\"A&amp;B &lt;3\">A&amp;B &lt;3<small>2</small>"))
      << page;
  EXPECT_NE(std::string::npos, page.find("value=\"\">(no name)<small>1</small>")) << page;
}

TEST_F(StylesheetTest, GivesTheSamePageWithoutSetDistinct) {
  const std::string stylesheet = folder_.Path("plain.xsl");
  std::string text = Content(kStylesheet);
  const std::string test = "function-available('set:distinct')";
  text.replace(text.find(test), test.size(), "false()");
  WriteFile(stylesheet, text);
  for (const unsigned int level : {3U, 1U, 3U, 4U, 2U, 4U, 5U}) Publish(level, "a");

  EXPECT_EQ(Page(), PageMadeBy(stylesheet));
}

TEST_F(StylesheetTest, NeedsTwiceTheInstructionsForTwiceTheEntries) {
  long instructions[3] = {};
  for (int i = 0; i < 3; ++i) {
    const std::string document = folder_.Path("entries.xml");
    WriteFile(document, DocumentOf(1000 << i));
    instructions[i] = InstructionsOf({"xsltproc", kStylesheet, document});
  }

  const long forThousand = instructions[1] - instructions[0];
  const long forTwoThousand = instructions[2] - instructions[1];
  EXPECT_GT(forThousand, 0);
  EXPECT_LT(2 * forTwoThousand, 5 * forThousand);  // Four times as many when it is quadratic.
}

TEST_F(StylesheetTest, KeepsMarkupInMessagesFromBecomingMarkupOfThePage) {
  Publish(1, "<script>alert('AT&T')</script>\n  indented");

  const std::string page = Page();

  EXPECT_NE(
      std::string::npos,
      page.find(
          "<td class=\"message\">&lt;script&gt;alert('AT&amp;T')&lt;/script&gt;\n  indented</td>"))
      << page;
}

TEST_F(StylesheetTest, NeedsNothingFromElsewhere) {
  Publish(1, "first");

  const std::string page = Page();

  EXPECT_EQ(0U, Count(page, "src="));
  EXPECT_EQ(0U, Count(page, "<link"));
  EXPECT_EQ(0U, Count(page, "url("));
}

TEST_F(StylesheetTest, ShowsALogThatIsIndentedAtItsEnd) {
  Publish(1, "first");
  delete client_;

  EXPECT_NE(std::string::npos, Page().find("<td class=\"message\">first</td>"));
}

}  // namespace

// What the pages show as code compiles, and what they show as configurations is one.

#include <gtest/gtest.h>

#include <filesystem>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "Support/FencedBlocks.h"
#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/TemporaryFolder.h"

namespace {

const std::string kProject = PROJECT_FOLDER;

std::vector<std::string> Pages() {
  std::vector<std::string> pages;
  for (const char* const folder : {"", "/docs"}) {
    for (const auto& entry : std::filesystem::directory_iterator(kProject + folder)) {
      if (entry.path().extension() == ".md") pages.push_back(entry.path().string());
    }
  }
  return pages;
}

bool IsToolsPage(const std::string& page) { return page == kProject + "/docs/tools.md"; }

bool Has(const std::string& text, const std::string& part) {
  return text.find(part) != std::string::npos;
}

bool IsDocument(const FencedBlock& block) { return block.language == "xml"; }

bool IsConfiguration(const FencedBlock& block) {
  return block.language == "ini" || IsDocument(block);
}

/// The value of a key of a properties file; empty when it has none.
std::string ValueOf(const std::string& key, const std::string& properties) {
  std::smatch match;
  const bool isFound =
      std::regex_search(properties, match, std::regex("(?:^|\n)" + key + " = ([^\n]*)"));
  return isFound ? match[1].str() : "";
}

/// A part of a properties file with what it needs around it. It comes behind: lines keep their
/// numbers.
std::string Completed(std::string part) {
  if (ValueOf("loglevel", part).empty()) part += "loglevel = 1 2 3 4\n";
  if (ValueOf("loghandler", part).empty()) {
    const std::string handler = ValueOf("logclient\\.\\w+\\.handler", part);
    part += "loghandler = default " + handler + "\nloghandler.default.child = " + handler + "\n";
  }
  if (ValueOf("logclient", part).empty()) {
    const std::string handlers = ValueOf("loghandler", part);
    part += "logclient = last\nlogclient.last.type = LogClientConsole\nlogclient.last.handler = " +
            handlers.substr(handlers.rfind(' ') + 1) + "\n";
  }
  return part;
}

/// A part of a program with what it needs around it.
std::string CompletedProgram(const std::string& part) {
  if (Has(part, "int main(")) return part;
  std::string program;
  for (const auto& header : std::filesystem::directory_iterator(kProject + "/include")) {
    program += "#include \"" + header.path().filename().string() + "\"\n";
  }
  return program +
         "#include <cstdio>\nint Part(const char* file);\nint Part(const char* file) {\n" +
         "static_cast<void>(file);\n" + part + "return 0;\n}\n";
}

class PagesTest : public testing::Test {
 protected:
  ProcessResult Loggerctl(const std::string& command, const std::string& configuration) const {
    WriteFile(folder_.Path("app.ini"), configuration);
    return RunProgram({"env", "-C", folder_.Path(), LOGGERCTL, command, "app.ini"});
  }

  TemporaryFolder folder_;
};

TEST_F(PagesTest, ShowNothingThatIsNotTested) {
  const std::set<std::string> kinds{"", "cmake", "cpp", "ini", "logrotate", "sh", "xml"};
  for (const std::string& page : Pages()) {
    std::size_t fences = 0;
    for (const std::string& line : Lines(page)) fences += Has(line, "```") ? 1 : 0;
    const std::vector<FencedBlock> blocks = FencedBlocks(page);
    EXPECT_EQ(2 * blocks.size(), fences) << page << ": all fences start their lines, in pairs";

    std::string former;
    for (const FencedBlock& block : blocks) {
      EXPECT_EQ(1U, kinds.count(block.language)) << page << ": " << block.language;
      if (block.language.empty()) {
        EXPECT_TRUE(former == "sh" || former == "ini") << page << ": says what?\n" << block.text;
      }
      former = block.language;
    }
  }
}

TEST_F(PagesTest, LeadToPlacesThatExist) {
  const std::regex link("\\]\\(([^)#]+)");
  for (const std::string& page : Pages()) {
    const std::string text = Content(page);
    for (std::sregex_iterator found(text.begin(), text.end(), link), end; found != end; ++found) {
      const std::string target = (*found)[1];
      if (Has(target, "://")) continue;
      const auto place = std::filesystem::path(page).parent_path() / target;
      EXPECT_TRUE(Exists(place.string())) << page << ": " << target;
    }
  }
}

TEST_F(PagesTest, ShowCodeThatCompiles) {
  int compiled = 0;
  for (const std::string& page : Pages()) {
    for (const FencedBlock& block : FencedBlocks(page)) {
      if (block.language != "cpp") continue;
      const ProcessResult result = RunProgram(
          {CXX_COMPILER, "-std=c++17", "-Wall", "-Wextra", "-Werror", "-fsyntax-only", "-I",
           kProject + "/include", "-I", kProject + "/LibKelUtilities/include", "-x", "c++", "-"},
          CompletedProgram(block.text));
      EXPECT_EQ(0, result.exitCode) << page << "\n" << block.text << result.errors;
      ++compiled;
    }
  }
  EXPECT_LE(4, compiled);
}

TEST_F(PagesTest, ShowConfigurationsWithoutFindingsOrTellThem) {
  int checked = 0;
  for (const std::string& page : Pages()) {
    const std::vector<FencedBlock> blocks = FencedBlocks(page);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
      if (!IsConfiguration(blocks[i])) continue;
      const bool isAnswered = i + 1 < blocks.size() && blocks[i + 1].language.empty();
      const ProcessResult result =
          Loggerctl("check", IsDocument(blocks[i]) ? blocks[i].text : Completed(blocks[i].text));
      EXPECT_EQ(isAnswered ? blocks[i + 1].text : "", result.output) << page << blocks[i].text;
      EXPECT_EQ("", result.errors) << page << blocks[i].text;
      ++checked;
    }
  }
  EXPECT_LE(8, checked);
}

TEST_F(PagesTest, ShowOneSystemInBothForms) {
  for (const char* const page : {"/README.md", "/docs/configuration.md"}) {
    const std::vector<FencedBlock> blocks = FencedBlocks(kProject + page);
    int pairs = 0;
    for (std::size_t i = 0; i + 1 < blocks.size(); ++i) {
      if (blocks[i].language != "ini" || !IsDocument(blocks[i + 1])) continue;
      const ProcessResult properties = Loggerctl("show", blocks[i].text);
      const ProcessResult document = Loggerctl("show", blocks[i + 1].text);
      EXPECT_EQ(0, document.exitCode) << page << document.errors;
      EXPECT_EQ(properties.output, document.output) << page;
      ++pairs;
    }
    EXPECT_EQ(1, pairs) << page;
  }
}

TEST_F(PagesTest, TellWhatCommandsPrint) {
  const std::string path = std::filesystem::path(LOGGERCTL).parent_path().string();
  int run = 0;
  for (const std::string& page : Pages()) {
    if (IsToolsPage(page)) continue;  // Its own test has the files that it speaks of.
    const std::vector<FencedBlock> blocks = FencedBlocks(page);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
      if (blocks[i].language != "sh") continue;
      ASSERT_LT(i + 1, blocks.size()) << page;
      const ProcessResult result = RunProgram({"env", "-C", kProject, "sh", "-e"},
                                              "PATH=" + path + ":$PATH\n" + blocks[i].text);
      EXPECT_EQ(0, result.exitCode) << page << blocks[i].text << result.errors;
      EXPECT_EQ(blocks[i + 1].text, result.output) << page;
      ++run;
    }
  }
  EXPECT_LE(1, run);
}

TEST_F(PagesTest, ShowHowCMakeFindsTheLibraryAsItsTestDoes) {
  const std::string consumer = Content(kProject + "/tests/Package/consumer/CMakeLists.txt");
  for (const std::string& page : Pages()) {
    for (const FencedBlock& block : FencedBlocks(page)) {
      if (block.language == "cmake") {
        EXPECT_TRUE(Has(consumer, block.text)) << page << block.text;
      }
    }
  }
}

}  // namespace

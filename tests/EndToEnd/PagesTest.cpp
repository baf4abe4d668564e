// The code that the pages show compiles, their configurations are valid, and their commands print
// what the pages say.

#include <gtest/gtest.h>

#include <csignal>
#include <filesystem>
#include <regex>
#include <set>
#include <string>
#include <vector>

#include "Support/FencedBlocks.h"
#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/ShownSystem.h"
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

/// A part of a properties file, completed at its end: lines keep their numbers.
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

/// Examples are programs that the build compiles.
bool IsInAnExample(const std::string& block) {
  for (const auto& entry : std::filesystem::directory_iterator(kProject + "/examples")) {
    if (Has(Content(entry.path().string()), block)) return true;
  }
  return false;
}

/// A part of a program, with the headers and the function that it needs around it.
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

std::string FolderOf(const std::string& program) {
  return std::filesystem::path(program).parent_path().string();
}

class PagesTest : public testing::Test {
 protected:
  ProcessResult Loggerctl(const std::string& command, const std::string& configuration) const {
    WriteFile(folder_.Path("app.ini"), configuration);
    return RunProgram({"env", "-C", folder_.Path(), LOGGERCTL, command, "--kind", "LogClientRecent",
                       "--layout", "LayoutWithHandler", "app.ini"});
  }

  /// Runs a command where the pages suppose it: beside the examples, with all programs in the path.
  ProcessResult Run(const std::string& command) const {
    std::filesystem::create_directory_symlink(kProject + "/examples", folder_.Path("examples"));
    const ProcessResult result = RunProgram(
        {"env", "-C", folder_.Path(),
         "PATH=" + FolderOf(LOGGERCTL) + ":" + FolderOf(MODULES) + ":/usr/bin:/bin", "sh", "-e"},
        command);
    std::filesystem::remove(folder_.Path("examples"));
    return result;
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
        EXPECT_TRUE(former == "sh" || former == "ini") << page << ": printed by which command?\n"
                                                       << block.text;
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
      if (block.language != "cpp" || IsInAnExample(block.text)) continue;
      const ProcessResult result = RunProgram(
          {CXX_COMPILER, "-std=c++17", "-Wall", "-Wextra", "-Werror", "-fsyntax-only", "-I",
           kProject + "/include", "-I", kProject + "/LibKelUtilities/include", "-x", "c++", "-"},
          CompletedProgram(block.text));
      EXPECT_EQ(0, result.exitCode) << page << "\n" << block.text << result.errors;
      ++compiled;
    }
  }
  EXPECT_LE(2, compiled);
}

TEST_F(PagesTest, ShowConfigurationsWithoutFindingsOrWithTheirFindings) {
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
  const std::vector<FencedBlock> blocks = FencedBlocks(kProject + "/docs/configuration.md");
  int pairs = 0;
  for (std::size_t i = 0; i + 1 < blocks.size(); ++i) {
    if (blocks[i].language != "ini" || !IsDocument(blocks[i + 1])) continue;
    const ProcessResult properties = Loggerctl("show", blocks[i].text);
    const ProcessResult document = Loggerctl("show", blocks[i + 1].text);
    EXPECT_EQ(0, document.exitCode) << document.errors;
    EXPECT_EQ(WithoutClientNames(properties.output), WithoutClientNames(document.output));
    ++pairs;
  }
  EXPECT_EQ(1, pairs);
}

TEST_F(PagesTest, MatchTheOutputOfTheirCommands) {
  int run = 0;
  for (const std::string& page : Pages()) {
    if (IsToolsPage(page)) continue;  // Its own test has the files that its commands read.
    const std::vector<FencedBlock> blocks = FencedBlocks(page);
    for (std::size_t i = 0; i < blocks.size(); ++i) {
      if (blocks[i].language != "sh") continue;
      ASSERT_LT(i + 1, blocks.size()) << page;
      const ProcessResult result = Run(blocks[i].text);
      EXPECT_EQ(0, result.exitCode) << page << blocks[i].text << result.errors;
      EXPECT_EQ(blocks[i + 1].text, result.output) << page;
      ++run;
    }
  }
  EXPECT_LE(5, run);
}

TEST_F(PagesTest, ShowCMakeCodeOfProjectsThatAreBuilt) {
  const std::string built = Content(kProject + "/tests/Package/consumer/CMakeLists.txt") +
                            Content(kProject + "/examples/CMakeLists.txt");
  for (const std::string& page : Pages()) {
    for (const FencedBlock& block : FencedBlocks(page)) {
      if (block.language == "cmake") {
        EXPECT_TRUE(Has(built, block.text)) << page << block.text;
      }
    }
  }
}

TEST_F(PagesTest, PrintALineOfAnOwnLayout) {
  const ProcessResult result = Run("own_layout examples/own_layout.ini");

  const std::regex moment("[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\.[0-9]{6}");
  EXPECT_EQ("TIME INFO net: listening on port 8080\n",
            std::regex_replace(result.output, moment, "TIME"));
  EXPECT_EQ("", result.errors);
}

/// A configuration whose handler "default" sends to this port, with a name for level 1.
std::string SenderConfiguration(const std::string& port, const std::string& levelName) {
  return "loglevel = 1\nloglevel.1.name = " + levelName + R"(
loghandler = default
logclient = server
logclient.server.type = LogClientSocket
logclient.server.handler = default
logclient.server.parameter.0.name = serverip
logclient.server.parameter.0.value = 127.0.0.1
logclient.server.parameter.1.name = serverport
logclient.server.parameter.1.value = )" +
         port + "\n";
}

TEST_F(PagesTest, RenameLevelsAtTheServerAsTheRecipeSays) {
  std::string server;
  for (const FencedBlock& block : FencedBlocks(kProject + "/docs/recipes.md")) {
    if (Has(block.text, "name = alarm")) server = block.text;
  }
  WriteFile(folder_.Path("server.ini"), server + R"(
logclient = file
logclient.file.type = LogClientFile
logclient.file.handler = default
logclient.file.layout = LogLayoutSimple
logclient.file.parameter.0.name = filename
logclient.file.parameter.0.value = )" + folder_.Path("collected.log"));
  RunningProgram serve({LOGGERCTL, "serve", "--config", folder_.Path("server.ini"), "--port", "0"});
  const std::string listening = serve.ReadLine();
  const std::string port = listening.substr(listening.rfind(' ') + 1);

  for (const char* const name : {"ERROR", "fatal"}) {
    WriteFile(folder_.Path("sender.ini"), SenderConfiguration(port, name));
    const ProcessResult write = RunProgram(
        {LOGGERCTL, "write", "--config", folder_.Path("sender.ini"), "--level", name, "disk full"});
    EXPECT_EQ(0, write.exitCode) << write.errors;
  }
  serve.Signal(SIGTERM);
  serve.Wait();

  EXPECT_EQ("alarm - disk full\nalarm - disk full\n", Content(folder_.Path("collected.log")));
}

TEST_F(PagesTest, ExplainEveryLineThatTheLibraryPrints) {
  const std::string page = Content(kProject + "/docs/errors.md");
  const std::regex report("ReportError\\(\"([A-Za-z]+)\", ([0-9]+),");
  std::set<std::string> places;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(kProject + "/Src")) {
    if (entry.path().extension() != ".cpp") continue;
    const std::string code = Content(entry.path().string());
    for (std::sregex_iterator match(code.begin(), code.end(), report), end; match != end; ++match) {
      places.insert(match->str(1) + " [" + match->str(2) + "]: '");
    }
  }

  EXPECT_EQ(7U, places.size());
  for (const std::string& place : places) EXPECT_TRUE(Has(page, "| `" + place)) << place;
}

}  // namespace

// The manual pages say what the program says of itself, are well formed, and their examples work.

#include <gtest/gtest.h>

#include <algorithm>
#include <cctype>
#include <map>
#include <set>
#include <sstream>
#include <string>
#include <vector>

#include "KnownKeys.h"
#include "Support/Files.h"
#include "Support/MaskTimes.h"
#include "Support/Process.h"
#include "Support/ShownSystem.h"
#include "Support/TemporaryFolder.h"

using Loggerctl::KnownAttribute;
using Loggerctl::KnownAttributes;
using Loggerctl::KnownKey;
using Loggerctl::KnownKeys;
using Loggerctl::KnownKind;
using Loggerctl::KnownKinds;
using Loggerctl::KnownLayout;
using Loggerctl::KnownLayouts;
using Loggerctl::KnownParameter;
using Loggerctl::NameOf;
using Loggerctl::ValueType;

namespace {

using Words = std::vector<std::string>;
using Items = std::map<std::string, std::string>;  // The items of a list with their descriptions.

const std::string kProject = PROJECT_FOLDER;
const std::string kHandWritten = kProject + "/docs/man/";
const std::string kFilled = MANUAL_FOLDER "/";

const Words kCommands{"write", "serve", "check", "show", "convert", "keys", "completion"};

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

/// The words of a text with one blank between them.
std::string OnOneLine(const std::string& text) {
  std::istringstream words(text);
  std::string line;
  for (std::string word; words >> word;) line += (line.empty() ? "" : " ") + word;
  return line;
}

std::string Printed(const Words& words) {
  Words command{LOGGERCTL};
  command.insert(command.end(), words.begin(), words.end());
  return RunProgram(command).output;
}

// The program's help texts.

/// The options and arguments that a help text lists, with their meanings. They begin in the third
/// column, their meanings in the thirty-first, which may be on the next line.
Items ItemsOfHelp(const std::string& help) {
  constexpr std::size_t kMeaning = 30;
  Items items;
  std::istringstream lines(help);
  std::string item;
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind("  ", 0) != 0) continue;
    const bool isNew = line[2] != ' ';
    if (isNew) item = OnOneLine(line.substr(0, line.find("  ", 2)));
    const bool hasMeaning = !isNew || item.size() + 2 < kMeaning;
    items[item] += hasMeaning ? OnOneLine(line.substr(kMeaning)) : "";
  }
  return items;
}

/// The meanings of the exit codes, which end a help text: "Exit code: 0 it worked; 2 it did not."
Items ExitCodesOfHelp(const std::string& help) {
  const std::string opening = "Exit code: ";
  std::string text = OnOneLine(help.substr(help.find(opening) + opening.size()));
  text.pop_back();
  Items codes;
  for (std::size_t start = 0; start < text.size();) {
    std::size_t end = start;
    do {
      end = text.find("; ", end + 1);
    } while (end != std::string::npos && std::isdigit(text[end + 2]) == 0);
    codes[text.substr(start, 1)] = text.substr(start + 2, end - start - 2);
    start = end == std::string::npos ? text.size() : end + 2;
  }
  return codes;
}

// The content of a page.

std::string PageOf(const std::string& command) {
  return Content(kHandWritten + "loggerctl" + (command.empty() ? "" : "-") + command + ".1");
}

/// A macro in the running text as its bare words.
std::string WithoutMacro(const std::string& line) {
  if (line.rfind(".Fl ", 0) == 0) return "-" + line.substr(4);
  for (const char* const macro : {".Ar ", ".Ql ", ".Xr "}) {
    if (line.rfind(macro, 0) == 0) return line.substr(4);
  }
  return line;
}

/// The items of a page's lists that begin with one of these macros.
Items ItemsOfPage(const std::string& page, const Words& macros) {
  Items items;
  std::istringstream lines(Replaced(page, "\\-", "-"));
  std::string item;
  for (std::string line; std::getline(lines, line);) {
    if (line.rfind(".It ", 0) == 0) {
      item = line.substr(4);
    } else if (line == ".El") {
      item.clear();
    } else if (std::count(macros.begin(), macros.end(), item.substr(0, item.find(' '))) == 1) {
      items[item] = OnOneLine(items[item] + " " + WithoutMacro(line));
    }
  }
  return items;
}

/// How a page names an option or argument of a help text, which adds to it what it knows of values:
/// "-o,--output FILE" is `Fl o , Fl -output Ar FILE`, "--port P:INT in [0 - 65535]=0" is
/// `Fl -port Ar P`.
std::string NameInPage(const std::string& item) {
  std::istringstream words(item);
  std::string name;
  std::string value;
  words >> name >> value;
  const bool isOption = name[0] == '-';
  if (!isOption) return "Ar " + name + (item.find("...") == std::string::npos ? "" : " ...");

  name = Replaced("Fl " + name.substr(1), ",-", " , Fl ");
  value = Replaced(value.substr(0, value.find_first_of(":=")), "|", " | ");
  const bool takesValue = !value.empty() && value != "REQUIRED";
  return takesValue ? name + " Ar " + value : name;
}

std::string DefaultOf(const std::string& item) {
  const std::size_t equals = item.rfind('=');
  return equals == std::string::npos ? "" : item.substr(equals + 1);
}

std::vector<std::string> NamesOf(const Items& items) {
  std::vector<std::string> names;
  for (const auto& [name, meaning] : items) names.push_back(name);
  return names;
}

class ManualPageOfCommandTest : public testing::TestWithParam<std::string> {};

TEST_P(ManualPageOfCommandTest, ListsEveryOptionAndNoOther) {
  const std::string page = PageOf(GetParam());
  Items items = ItemsOfPage(page, {"Ar", "Fl"});
  const std::string synopsis = page.substr(0, page.find(".Sh DESCRIPTION"));

  std::set<std::string> names;
  for (const auto& [item, meaning] : ItemsOfHelp(Printed({GetParam(), "--help"}))) {
    const std::string name = NameInPage(item);
    names.insert(name);
    EXPECT_EQ(0U, items[name].find(meaning)) << name << ": " << items[name];
    const std::string value = DefaultOf(item);
    if (!value.empty()) {
      EXPECT_NE(std::string::npos, items[name].find("Without this option it is " + value)) << name;
    }
    const std::string longName = name.substr(name.find(" , ") == std::string::npos ? 0 : 7);
    if (longName == "Fl -help") continue;
    EXPECT_NE(std::string::npos, synopsis.find(longName)) << name;
  }
  EXPECT_EQ(std::vector<std::string>(names.begin(), names.end()), NamesOf(items));
}

TEST_P(ManualPageOfCommandTest, ListsTheExitCodes) {
  EXPECT_EQ(ExitCodesOfHelp(Printed({GetParam(), "--help"})),
            ItemsOfPage(PageOf(GetParam()), {"0", "1", "2", "3"}));
}

INSTANTIATE_TEST_SUITE_P(Commands, ManualPageOfCommandTest, testing::ValuesIn(kCommands),
                         [](const auto& command) { return command.param; });

TEST(ManualPagesTest, ListEveryCommandAndNoOther) {
  Items listed = ItemsOfHelp(Printed({"--help"}));
  Items items = ItemsOfPage(PageOf(""), {"Cm", "Fl"});

  EXPECT_EQ(kCommands.size() + 2, listed.size());
  EXPECT_EQ(listed.size(), items.size());
  for (const auto& [name, meaning] : listed) {
    const std::string nameInPage = name[0] == '-' ? NameInPage(name) : "Cm " + name;
    EXPECT_EQ(0U, items[nameInPage].find(meaning)) << name << ": " << items[nameInPage];
  }
  for (const std::string& command : kCommands) EXPECT_EQ(1U, listed.count(command)) << command;
}

TEST(ManualPagesTest, ListEverythingThatAConfigurationCanSay) {
  const std::string ini = OnOneLine(Content(kFilled + "liblogger-ini.5"));
  const std::string xml = OnOneLine(Content(kFilled + "liblogger-xml.5"));
  const auto expect = [](const std::string& part, const std::string& page) {
    EXPECT_NE(std::string::npos, page.find(part)) << part;
  };
  const auto explained = [](const std::string& name, std::string meaning, ValueType type) {
    meaning[0] = static_cast<char>(std::toupper(meaning[0]));
    return ".It Ic " + name + " " + meaning + ". The value: " + NameOf(type) + ".";
  };

  for (const KnownKey& key : KnownKeys()) {
    expect(explained(key.name, key.meaning, key.type) + " Without it: " + key.without + ".", ini);
  }
  for (const KnownAttribute& attribute : KnownAttributes()) {
    expect(
        explained(attribute.element + " Ar " + attribute.name, attribute.meaning, attribute.type),
        xml);
  }
  for (const std::string& page : {ini, xml}) {
    for (const KnownKind& kind : KnownKinds()) {
      expect(".It Ic " + kind.name + " ", page);
      for (const KnownParameter& parameter : kind.parameters) {
        expect(explained(parameter.name, parameter.meaning, parameter.type) +
                   " Without it: " + parameter.without + ".",
               page);
      }
    }
    for (const KnownLayout& layout : KnownLayouts()) {
      expect(".It Ic " + layout.name + " .Dl " + Replaced(layout.line, "-", "\\-") + " ", page);
    }
  }
}

// The pages' form.

class ManualPageTest : public testing::TestWithParam<std::string> {
 protected:
  static std::string File() {
    const std::string handWritten = kHandWritten + GetParam();
    return Exists(handWritten) ? handWritten : kFilled + GetParam();
  }
};

TEST_P(ManualPageTest, IsWellFormedForGroff) {
  const ProcessResult result = RunProgram({"groff", "-man", "-Tutf8", "-ww", "-z", File()});

  EXPECT_EQ("", result.errors);
  EXPECT_EQ(0, result.exitCode);
}

TEST_P(ManualPageTest, IsWellFormedForMandoc) {
  const ProcessResult result = RunProgram({"mandoc", "-T", "lint", File()});

  std::istringstream lines(result.output);
  for (std::string line; std::getline(lines, line);) {
    // Other pages may not be installed here; ours are checked below. A page's system is the
    // library.
    const bool isExpected =
        line.find("referenced manual not found") != std::string::npos ||
        line.find("operating system explicitly specified: Os liblogger") != std::string::npos;
    if (!isExpected) ADD_FAILURE() << line;
  }
}

TEST_P(ManualPageTest, BearsTheLibrarysName) {
  const std::string byGroff = RunProgram({"groff", "-man", "-Tascii", "-P-cbou", File()}).output;
  const std::string byMandoc =
      RunProgram({"mandoc", "-T", "ascii", "-I", "os=other", File()}).output;

  const std::string top = byGroff.substr(0, byGroff.find('\n'));
  EXPECT_NE(std::string::npos, top.find(" liblogger ")) << top;
  EXPECT_EQ(std::string::npos, byGroff.find("BSD"));
  EXPECT_EQ(std::string::npos, byMandoc.find("BSD"));
  const std::string bottom = byMandoc.substr(byMandoc.rfind('\n', byMandoc.size() - 2) + 1);
  EXPECT_EQ(0U, bottom.find("liblogger ")) << bottom;
}

TEST_P(ManualPageTest, RefersToPagesThatThereAre) {
  const Words others{"bash.1", "logrotate.8", "pkg-config.1", "systemd.1"};
  for (const std::string& line : Lines(File())) {
    const std::size_t macro = line.find("Xr ");
    if (line[0] != '.' || macro == std::string::npos) continue;
    std::istringstream words(line.substr(macro + 3));
    std::string name;
    std::string section;
    words >> name >> section;
    const std::string page = name + "." + section;
    const bool isOurs = Exists(kHandWritten + page) || Exists(kFilled + page);
    EXPECT_TRUE(isOurs || std::count(others.begin(), others.end(), page) == 1) << page;
  }
}

INSTANTIATE_TEST_SUITE_P(
    Pages, ManualPageTest,
    testing::Values("liblogger-ini.5", "liblogger-xml.5", "liblogger.7", "loggerctl-check.1",
                    "loggerctl-completion.1", "loggerctl-convert.1", "loggerctl-keys.1",
                    "loggerctl-serve.1", "loggerctl-show.1", "loggerctl-write.1", "loggerctl.1"),
    [](const auto& page) {
      std::string name = page.param;
      std::replace_if(
          name.begin(), name.end(),
          [](char character) { return character == '.' || character == '-'; }, '_');
      return name;
    });

// The examples.

/// The block that a page shows as it stands.
std::string LiteralBlock(const std::string& page) {
  const std::string opening = ".Bd -literal\n";
  const std::size_t start = page.find(opening) + opening.size();
  return Replaced(page.substr(start, page.find(".Ed\n", start) - start), "\\-", "-");
}

/// The commands that a page shows.
Words CommandsOf(const std::string& page) {
  const std::string opening = "\n.Dl ";
  Words commands;
  for (std::size_t at = page.find(".Sh EXAMPLES"); (at = page.find(opening, at)) < page.size();) {
    at += opening.size();
    commands.push_back(Replaced(page.substr(at, page.find('\n', at) - at), "\\-", "-"));
  }
  return commands;
}

/// A folder with the files that the examples name.
class ManualExamplesTest : public testing::Test {
 protected:
  ManualExamplesTest() {
    WriteFile(folder_.Path("app.ini"), LiteralBlock(Content(kFilled + "liblogger-ini.5")));
    WriteFile(folder_.Path("app.xml"), LiteralBlock(Content(kFilled + "liblogger-xml.5")));
    WriteFile(folder_.Path("server.ini"), Content(kProject + "/examples/server.ini"));
    WriteFile(folder_.Path("other.log"), "one\ntwo\n");
  }

  ProcessResult Run(const std::string& command) const {
    return RunProgram({"env", "-C", folder_.Path(), "bash", "-c",
                       "set -eo pipefail; loggerctl() { " LOGGERCTL " \"$@\"; }; " + command});
  }

  std::string Shown(const std::string& file) const {
    return WithoutClientNames(Run("loggerctl show " + file).output);
  }

  TemporaryFolder folder_;
};

TEST_F(ManualExamplesTest, WorkAsCommands) {
  std::size_t count = 0;
  for (const std::string& name : kCommands) {
    if (name == "serve") continue;  // It does not end by itself.
    for (const std::string& command : CommandsOf(PageOf(name))) {
      const ProcessResult result = Run(command);
      EXPECT_EQ(0, result.exitCode) << command;
      EXPECT_EQ("", result.errors) << command;
      ++count;
    }
  }
  for (const std::string& command : CommandsOf(PageOf(""))) EXPECT_EQ(0, Run(command).exitCode);

  EXPECT_EQ(9U, count);
  EXPECT_EQ("TIME |ERROR| disk full\nTIME |INFO| one\nTIME |INFO| two\n",
            MaskTimes(Content(folder_.Path("app.log"))));
  EXPECT_EQ(0U, Content(folder_.Path("app.dot")).find("digraph"));
  EXPECT_EQ(Shown("app.ini"), Shown("converted.xml"));
}

TEST_F(ManualExamplesTest, ServeOtherProcesses) {
  const Words commands = CommandsOf(PageOf("serve"));
  ASSERT_EQ(1U, commands.size());
  std::istringstream text(commands[0]);
  Words words{"env", "-C", folder_.Path()};
  for (std::string word; text >> word;) {
    words.push_back(word == "loggerctl" ? LOGGERCTL : word == "4711" ? "0" : word);
  }
  RunningProgram server(words);

  EXPECT_EQ(0U, server.ReadLine().find("listening on 127.0.0.1 port "));
  server.Signal(SIGTERM);
  EXPECT_EQ(0, server.Wait().exitCode);
}

TEST_F(ManualExamplesTest, ShowTheSameSystemInBothForms) {
  const ProcessResult findings = Run("loggerctl check --strict app.ini app.xml");
  EXPECT_EQ("", findings.output);
  EXPECT_EQ(0, findings.exitCode);

  EXPECT_NE(std::string::npos, Shown("app.ini").find("filesize = 100000"));
  EXPECT_EQ(Shown("app.ini"), Shown("app.xml"));
}

TEST_F(ManualExamplesTest, ShowTheProgramThatIsBuiltWithTheLibrary) {
  const std::string program = LiteralBlock(Content(kHandWritten + "liblogger.7"));

  EXPECT_EQ("#include", program.substr(0, 8));
  EXPECT_NE(std::string::npos, Content(kProject + "/examples/hello.cpp").find(program));
}

}  // namespace

#include <gtest/gtest.h>

#include <filesystem>
#include <map>
#include <random>
#include <sstream>
#include <string>

#include "Configuration/IniLines.h"
#include "LogProperties.h"
#include "Support/Checked.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"

using Loggerctl::CheckOptions;
using Loggerctl::Findings;
using Loggerctl::IniEntry;
using Loggerctl::ReadIniLines;

namespace {

/// The lines after those of each case, so that these count from 1.
constexpr const char* kLevels =
    "loglevel = 1 2\n"
    "loglevel.1.name = ERROR\n"
    "loglevel.2.name = INFO\n";
constexpr const char* kHandlers = "loghandler = default net\nloghandler.default.child = net\n";
constexpr const char* kConsole =
    "logclient = con\n"
    "logclient.con.type = LogClientConsole\n"
    "logclient.con.handler = net\n";

/// The findings in these lines, followed by levels, handlers and a client without fault.
std::string CheckedLines(const std::string& lines) {
  return Checked(lines + kLevels + kHandlers + kConsole);
}

/// The findings in a client whose type is in line 1.
std::string CheckedClient(const std::string& lines) {
  return Checked(lines + "logclient = c\nlogclient.c.handler = net\n" + kLevels + kHandlers);
}

std::string Parameter(int number, const std::string& name, const std::string& value) {
  const std::string key = "logclient.c.parameter." + std::to_string(number);
  return key + ".name = " + name + "\n" + key + ".value = " + value + "\n";
}

std::string Rolling(const std::string& parameters) {
  return CheckedClient("logclient.c.type = LogClientRollingFile\n" + parameters);
}

TEST(CheckIniTest, FindsNothingInAFileWithoutFault) {
  EXPECT_EQ("", CheckedLines(""));
  EXPECT_EQ("", CheckedLines("# a comment\n\n   \nlogging = true # another\n"));
  EXPECT_EQ("",
            CheckedLines("loghandler.net.level.2 = false\nloghandler.default.level.1=true\r\n"));
  EXPECT_EQ("", CheckedLines("logclient.con.layout = \"LogLayoutSimple\"\n"));
}

TEST(CheckIniTest, FindsTheExamplesWithoutFault) {
  CheckOptions options;
  options.own.kinds = {"LogClientRecent", "LogClientDatedFile"};
  options.own.layouts = {"LayoutWithHandler"};
  int count = 0;
  for (const auto& entry : std::filesystem::directory_iterator(PROJECT_FOLDER "/examples")) {
    const std::string extension = entry.path().extension().string();
    if (extension != ".ini" && extension != ".xml") continue;
    EXPECT_EQ("", Checked(Content(entry.path().string()), options)) << entry.path();
    ++count;
  }
  EXPECT_LE(9, count);
}

TEST(CheckIniTest, ReportsAFileThatSetsNothingUp) {
  EXPECT_EQ(
      "it:1: warning: no levels are registered: nothing is logged unless the application registers "
      "some; list their numbers in 'loglevel' (if the application registers them: --level NUMBER)\n"
      "it:1: warning: there are no clients: nothing is written; name some in 'logclient'\n",
      Checked(""));
}

// Lines.

TEST(CheckIniTest, ReportsALineThatIsTooLong) {
  EXPECT_EQ("", CheckedLines("#" + std::string(510, 'x') + "\n"));
  EXPECT_EQ(
      "it:1: error: the line has 512 bytes and may have 511; the file cannot be read because of "
      "it; "
      "shorten it\n",
      CheckedLines("#" + std::string(511, 'x') + "\n"));
}

TEST(CheckIniTest, ReportsALineWithoutAnEqualsSign) {
  const std::string finding =
      "it:1: error: there is no '=' in the line, which is ignored; write key = value, or # before "
      "a "
      "comment\n";

  EXPECT_EQ(finding, CheckedLines("[section]\n"));
  EXPECT_EQ(finding, CheckedLines("logging: false\n"));
  EXPECT_EQ(finding, CheckedLines("logging # = false\n"));
}

TEST(CheckIniTest, ReportsAZeroByte) {
  EXPECT_EQ("it:1: error: a zero byte ends the line; save the file as plain text\n",
            CheckedLines(std::string("logging = true\0x\n", 17)));
  EXPECT_EQ("", CheckedLines(std::string("# a\0b\n", 6)));
}

TEST(CheckIniTest, ReportsAByteOrderMarkBeforeAKey) {
  EXPECT_EQ(
      "it:1: error: the file begins with a byte order mark, which belongs to the first key; save "
      "it "
      "without the mark\n",
      CheckedLines("\xEF\xBB\xBFlogging = true\n"));
  EXPECT_EQ("", CheckedLines("\xEF\xBB\xBF# a comment\n"));
}

TEST(CheckIniTest, ReportsACommentWithinAValue) {
  EXPECT_EQ("it:1: error: a comment starts at # wherever it stands: the value is 'A'\n",
            Checked("loglevel.1.name = A#1\nloglevel = 1 2\nloglevel.2.name = INFO\n" +
                    std::string(kHandlers) + kConsole));
  EXPECT_EQ("it:1: error: a comment starts at # wherever it stands: the value is '\"A'\n",
            Checked("loglevel.1.name = \"A # 1\"\nloglevel = 1 2\nloglevel.2.name = INFO\n" +
                    std::string(kHandlers) + kConsole));
  EXPECT_EQ("", CheckedLines("logging = true# a comment\n"));
}

TEST(CheckIniTest, ReportsQuotesThatStayInTheValue) {
  const std::string rest = "loglevel = 1\n" + std::string(kHandlers) + kConsole;

  EXPECT_EQ(
      "it:1: error: the quotes do not enclose the value, and belong to it: '\"open'; let the "
      "closing "
      "quote end the value\n",
      Checked("loglevel.1.name = \"open\n" + rest));
  EXPECT_EQ(
      "it:1: error: the quotes do not enclose the value, and belong to it: '\"a\" b'; let the "
      "closing "
      "quote end the value\n",
      Checked("loglevel.1.name = \"a\" b\n" + rest));
  EXPECT_EQ("it:1: error: single quotes belong to the value: ''a''; write double quotes, or none\n",
            Checked("loglevel.1.name = 'a'\n" + rest));
}

TEST(CheckIniTest, ReportsSyntaxOfOtherFormats) {
  const std::string rest = "loglevel = 1\n" + std::string(kHandlers) + kConsole;

  EXPECT_EQ(
      "it:1: error: a line cannot be continued: the backslash belongs to the value; write it on "
      "one "
      "line\n",
      Checked("loglevel.1.name = a\\\n" + rest));
  EXPECT_EQ("it:1: error: variables are not replaced: the value is '${A}'\n",
            Checked("loglevel.1.name = ${A}\n" + rest));
}

// Keys.

TEST(CheckIniTest, ReportsAKeyGivenTwice) {
  EXPECT_EQ(
      "it:2: error: key 'logging' is given again, and replaces line 1; remove one of the two "
      "lines\n",
      CheckedLines("logging = on\nlogging = true\n"));
}

TEST(CheckIniTest, ReportsAKeyThatNothingReads) {
  EXPECT_EQ("it:1: error: key 'Logging' is read by nothing; did you mean 'logging'?\n",
            CheckedLines("Logging = true\n"));
  EXPECT_EQ(
      "it:1: error: key 'loghandler.net.chlid' is read by nothing; did you mean "
      "'loghandler.net.child'?\n",
      CheckedLines("loghandler.net.chlid = net\n"));
  EXPECT_EQ(
      "it:1: error: key 'logclient.con.typ' is read by nothing; did you mean "
      "'logclient.con.type'?\n",
      CheckedLines("logclient.con.typ = LogClientFile\n"));
  EXPECT_EQ("it:1: error: key 'colour' is read by nothing\n", CheckedLines("colour = blue\n"));
  EXPECT_EQ("it:1: error: key '' is read by nothing\n", CheckedLines("= blue\n"));
}

TEST(CheckIniTest, ReportsAKeyWithoutAValue) {
  EXPECT_EQ(
      "it:1: error: key 'logging' has no value, which is as if the line were not there; give it a "
      "value, or remove the line\n",
      CheckedLines("logging =\n"));
}

TEST(CheckIniTest, ReportsALevelsNameThatIsNotRead) {
  EXPECT_EQ(
      "it:1: error: level '7' is not in the list 'loglevel': its name is not read; add it to the "
      "list, or remove the line\n",
      CheckedLines("loglevel.7.name = DEBUG\n"));
  EXPECT_EQ(
      "it:1: error: level '02' is not in the list 'loglevel': its name is not read; did you mean "
      "'loglevel.2.name'?\n",
      CheckedLines("loglevel.02.name = DEBUG\n"));
}

TEST(CheckIniTest, ReportsASwitchThatIsNotRead) {
  EXPECT_EQ(
      "it:1: error: level '5' is not in the list 'loglevel': the switch is not read; add it to the "
      "list, or remove the line (if the application registers it: --level 5)\n",
      CheckedLines("loghandler.net.level.5 = false\n"));
  EXPECT_EQ(
      "it:1: error: level '02' is not in the list 'loglevel': the switch is not read; did you mean "
      "'loghandler.net.level.2'?\n",
      CheckedLines("loghandler.net.level.02 = false\n"));
  EXPECT_EQ(
      "it:1: error: level 'INFO' is not in the list 'loglevel': the switch is not read; did you "
      "mean "
      "'loghandler.net.level.2'?\n",
      CheckedLines("loghandler.net.level.INFO = false\n"));
}

TEST(CheckIniTest, ReportsAHandlerThatIsNotListedOnce) {
  EXPECT_EQ(
      "it:1: error: handler 'Net' is not in the list 'loghandler': nothing about it is read; did "
      "you "
      "mean 'net'?\n",
      CheckedLines("loghandler.Net.level.1 = false\nloghandler.Net.child = net\n"));
}

TEST(CheckIniTest, ReportsThatTheDefaultHandlersChildrenNeedItToBeListed) {
  EXPECT_EQ(
      "it:1: error: handler 'default' is not in the list 'loghandler': its children are not "
      "attached; add it to the list\n",
      Checked(
          "loghandler.default.child = net\nloghandler = net\nloghandler.default.level.1 = true\n" +
          std::string(kLevels) + kConsole));
  EXPECT_EQ(
      "it:1: error: handler 'default' is not in the list 'loghandler': nothing about it is read; "
      "add "
      "it to the list, or remove its lines\n",
      Checked("loghandler.default.level.1 = true\n" + std::string(kLevels) +
              "logclient = con\nlogclient.con.type = LogClientConsole\n"
              "logclient.con.handler = default\n"));
}

TEST(CheckIniTest, ReportsAClientThatIsNotListedOnce) {
  EXPECT_EQ(
      "it:1: error: client 'con2' is not in the list 'logclient': nothing about it is read; did "
      "you "
      "mean 'con'?\n",
      CheckedLines("logclient.con2.type = LogClientConsole\nlogclient.con2.handler = net\n"));
}

TEST(CheckIniTest, ReportsItemsWithoutAName) {
  const std::string rest = std::string(kHandlers) + kConsole;

  EXPECT_EQ(
      "it:1: error: two blanks in a row, or one at an end of the list, make an item without a name "
      "in 'loglevel'; separate the items by single blanks\n",
      Checked("loglevel = 1  2\n" + rest));
  EXPECT_EQ(
      "it:1: error: two blanks in a row, or one at an end of the list, make an item without a name "
      "in 'loglevel'; separate the items by single blanks\n",
      Checked("loglevel = \" 1 2\"\n" + rest));
}

TEST(CheckIniTest, ReportsListsWithAnotherSeparator) {
  EXPECT_EQ(
      "it:1: error: '1,2' is one item: only single blanks separate a list; separate the items by "
      "single blanks\n"
      "it:1: error: level '1,2' is read as 1: a number ends at the first character that is no "
      "digit; "
      "levels are numbers from 1 to 2147483647\n",
      Checked("loglevel = 1,2\n" + std::string(kHandlers) + kConsole));
  EXPECT_EQ(
      "it:1: error: 'a\\tdefault' is one item: only single blanks separate a list; separate the "
      "items by single blanks\n"
      "it:1: warning: handler 'a\\tdefault' reaches no client: what is logged on it is written "
      "nowhere; attach a client to it or below it, or remove it\n",
      Checked("loghandler = a\tdefault\nlogclient = con\nlogclient.con.type = LogClientConsole\n"
              "logclient.con.handler = default\n" +
              std::string(kLevels)));
}

// Logging and levels.

TEST(CheckIniTest, ReportsThatLoggingIsOff) {
  EXPECT_EQ("it:1: warning: logging is off: nothing in the file is configured\n",
            CheckedLines("logging = false\n"));
}

TEST(CheckIniTest, ReportsAWordThatLeavesLoggingOn) {
  EXPECT_EQ(
      "it:1: error: 'FALSE' leaves logging on: only 'false' switches it off; did you mean "
      "'false'?\n",
      CheckedLines("logging = FALSE\n"));
  EXPECT_EQ(
      "it:1: error: '0' leaves logging on: only 'false' switches it off; did you mean 'false'?\n",
      CheckedLines("logging = 0\n"));
  EXPECT_EQ(
      "it:1: error: ' false ' leaves logging on: only 'false' switches it off; did you mean "
      "'false'?\n",
      CheckedLines("logging = \" false \"\n"));
  EXPECT_EQ(
      "it:1: warning: 'maybe' leaves logging on: only 'false' switches it off; write 'true' or "
      "'false'\n",
      CheckedLines("logging = maybe\n"));
  EXPECT_EQ("", CheckedLines("logging = yes\n"));
}

std::string CheckedLevels(const std::string& list) {
  return Checked("loglevel = " + list + "\n" + kHandlers + kConsole);
}

TEST(CheckIniTest, ReportsALevelThatIsSkipped) {
  EXPECT_EQ(
      "it:1: error: level 'ERROR' is no number, and is skipped; list a number from 1 to "
      "2147483647, and name it in loglevel.NUMBER.name\n",
      CheckedLevels("1 ERROR"));
  EXPECT_EQ(
      "it:1: error: level '0' is skipped: 0 cannot be registered by a properties file; levels are "
      "numbers from 1 to 2147483647\n",
      CheckedLevels("0 1"));
  EXPECT_EQ(
      "it:1: error: level '1' is given twice; only the first one counts; remove one of the two\n",
      CheckedLevels("1 2 1"));
  EXPECT_EQ(
      "it:1: warning: level '01' is named by 'loglevel.01.name', but switched by its number 1; "
      "write "
      "1\n"
      "it:1: error: level '01' is the same as '1'; only the first one counts; remove one of the "
      "two\n",
      CheckedLevels("1 01"));
}

TEST(CheckIniTest, ReportsALevelThatIsReadAsAnother) {
  EXPECT_EQ(
      "it:1: error: level '5x' is read as 5: a number ends at the first character that is no "
      "digit; "
      "levels are numbers from 1 to 2147483647\n",
      CheckedLevels("5x"));
  EXPECT_EQ("", CheckedLevels("2147483647"));
  EXPECT_EQ(
      "it:1: error: level '2147483648' is read as 2147483647: a number beyond that does not fit; "
      "levels are numbers from 1 to 2147483647\n",
      CheckedLevels("2147483648"));
  EXPECT_EQ(
      "it:1: error: level '99999999999999999999' is read as 2147483647: a number beyond that does "
      "not fit; levels are numbers from 1 to 2147483647\n",
      CheckedLevels("99999999999999999999"));
  EXPECT_EQ(
      "it:1: error: level '-1' is read as 4294967295; levels are numbers from 1 to 2147483647\n",
      CheckedLevels("-1"));
}

TEST(CheckIniTest, ReportsLevelsWithTheSameName) {
  EXPECT_EQ("it:2: warning: levels '1' and '2' have the same name 'A'\n",
            Checked("loglevel.1.name = A\nloglevel.2.name = A\nloglevel = 1 2\n" +
                    std::string(kHandlers) + kConsole));
}

TEST(CheckIniTest, ReportsAWordThatSwitchesALevelOff) {
  EXPECT_EQ(
      "it:1: error: 'True' switches level 1 off on handler 'net': only 'true' switches it on; did "
      "you mean 'true'?\n",
      CheckedLines("loghandler.net.level.1 = True\n"));
  EXPECT_EQ(
      "it:1: error: 'INFO' switches level 1 off on handler 'net': only 'true' switches it on; "
      "write "
      "'true' or 'false'\n",
      CheckedLines("loghandler.net.level.1 = INFO\n"));
  EXPECT_EQ(
      "it:1: warning: 'no' switches level 1 off on handler 'net': only 'true' switches it on; "
      "write "
      "'false'\n",
      CheckedLines("loghandler.net.level.1 = no\n"));
}

TEST(CheckIniTest, ReportsAHandlerWithEveryLevelOff) {
  EXPECT_EQ("it:2: warning: every level is switched off on handler 'net', which so logs nothing\n",
            CheckedLines("loghandler.net.level.1 = false\nloghandler.net.level.2 = false\n"));
}

// Handlers and their tree.

std::string CheckedTree(const std::string& lines) { return Checked(lines + kLevels + kConsole); }

TEST(CheckIniTest, ReportsAHandlerGivenTwice) {
  EXPECT_EQ("it:1: error: handler 'net' is given twice; the second does nothing; name it once\n",
            CheckedTree("loghandler = net net\n"));
}

TEST(CheckIniTest, ReportsAChildThatDoesNotExist) {
  EXPECT_EQ(
      "it:2: error: handler 'nte' does not exist, and is not attached to 'net'; did you mean "
      "'net'? (if the application makes it: --handler nte)\n",
      CheckedTree("loghandler = net\nloghandler.net.child = nte\n"));
  EXPECT_EQ(
      "it:2: error: handler 'disk' does not exist, and is not attached to 'net'; add it to the "
      "handlers (if the application makes it: --handler disk)\n",
      CheckedTree("loghandler = net\nloghandler.net.child = disk\n"));
}

TEST(CheckIniTest, ReportsAChildGivenTwice) {
  EXPECT_EQ(
      "it:2: error: handler 'net' is attached to 'default' already; this does nothing; name it "
      "once\n",
      CheckedTree("loghandler = default net\nloghandler.default.child = net net\n"));
}

TEST(CheckIniTest, ReportsEachCircleOnce) {
  EXPECT_EQ(
      "it:2: error: handler 'net' is its own descendant, by way of 'net': a process that logs "
      "through "
      "it ends or hangs; handlers must form a tree\n",
      CheckedTree("loghandler = net\nloghandler.net.child = net\n"));
  EXPECT_EQ(
      "it:2: error: handler 'net' is its own descendant, by way of 'b': a process that logs "
      "through "
      "it ends or hangs; handlers must form a tree\n",
      CheckedTree("loghandler = net b\nloghandler.net.child = b\nloghandler.b.child = net\n"));
}

TEST(CheckIniTest, ReportsAHandlerReachedByTwoWays) {
  EXPECT_EQ(
      "it:3: warning: handler 'net' is reached by two ways, over 'a' and 'b': what comes from "
      "above "
      "is written twice\n",
      CheckedTree("loghandler = top a b net\nloghandler.a.child = net\nloghandler.b.child = net\n"
                  "loghandler.top.child = a b\n"));
  EXPECT_EQ("", CheckedTree(
                    "loghandler = a b net\nloghandler.a.child = net\nloghandler.b.child = net\n"));
}

TEST(CheckIniTest, ReportsAHandlerThatReachesNoClient) {
  EXPECT_EQ(
      "it:1: warning: handler 'lonely' reaches no client: what is logged on it is written nowhere; "
      "attach a client to it or below it, or remove it\n",
      CheckedTree("loghandler = net lonely\n"));
  EXPECT_EQ("", CheckedTree("loghandler = top net\nloghandler.top.child = net\n"));
}

// Clients.

TEST(CheckIniTest, ReportsAClientListedTwice) {
  EXPECT_EQ(
      "it:1: error: client 'c' is listed twice: two are made, and events are written twice; list "
      "it "
      "once\n",
      Checked("logclient = c c\nlogclient.c.type = LogClientConsole\nlogclient.c.handler = net\n" +
              std::string(kLevels) + kHandlers));
}

TEST(CheckIniTest, ReportsAClientWithoutATypeOrHandler) {
  EXPECT_EQ(
      "it:1: error: client 'd' has no type, and is left out; give it one: LogClientConsole, "
      "LogClientFile, LogClientRollingFile, LogClientSocket or LogClientXML\n"
      "it:1: error: client 'd' has no handler, and is left out; name the handler that it is "
      "attached "
      "to\n",
      Checked("logclient = c d\nlogclient.c.type = LogClientConsole\nlogclient.c.handler = net\n" +
              std::string(kLevels) + kHandlers));
}

TEST(CheckIniTest, ReportsAnUnknownType) {
  EXPECT_EQ(
      "it:1: error: client 'c' is left out: there is no kind of client 'LogClientXml'; did you "
      "mean "
      "'LogClientXML'? (if the application registers it: --kind LogClientXml)\n",
      CheckedClient("logclient.c.type = LogClientXml\n"));
  EXPECT_EQ(
      "it:1: error: client 'c' is left out: there is no kind of client 'Syslog'; if the "
      "application registers it: --kind Syslog\n",
      CheckedClient("logclient.c.type = Syslog\n"));
}

TEST(CheckIniTest, KnowsTheKindsAndLayoutsOfTheApplication) {
  CheckOptions options;
  options.own.kinds = {"Syslog"};
  options.own.layouts = {"Short"};

  EXPECT_EQ("", Checked("logclient = c\nlogclient.c.type = Syslog\nlogclient.c.handler = default\n"
                        "logclient.c.layout = Short\nloglevel = 1\n"
                        "logclient.c.parameter.0.name = facility\n"
                        "logclient.c.parameter.0.value = mail\n",
                        options));
}

TEST(CheckIniTest, ReportsAnUnknownHandler) {
  const std::string rest = "logclient = c\nlogclient.c.type = LogClientConsole\n" +
                           std::string(kLevels) + "loghandler = net\n";
  const std::string lonely =
      "it:7: warning: handler 'net' reaches no client: what is logged on it is written nowhere; "
      "attach a client to it or below it, or remove it\n";

  EXPECT_EQ(
      "it:1: error: client 'c' is left out: there is no handler 'Net'; did you mean 'net'? "
      "(if the application makes it: --handler Net)\n" +
          lonely,
      Checked("logclient.c.handler = Net\n" + rest));
  EXPECT_EQ(
      "it:1: error: client 'c' is left out: there is no handler 'net default'; a client is "
      "attached to one handler\n" +
          lonely,
      Checked("logclient.c.handler = net default\n" + rest));
}

TEST(CheckIniTest, ReportsALayoutThatIsUnknownOrOfNoUse) {
  EXPECT_EQ(
      "it:1: error: client 'con' is not attached: there is no layout 'LogLayoutsimple'; did you "
      "mean "
      "'LogLayoutSimple'? (if the application registers it: --layout LogLayoutsimple)\n",
      CheckedLines("logclient.con.layout = LogLayoutsimple\n"));
  EXPECT_EQ(
      "it:2: error: a LogClientSocket has no use for a layout, which is ignored; remove it\n",
      CheckedClient("logclient.c.type = LogClientSocket\nlogclient.c.layout = LogLayoutSimple\n" +
                    Parameter(0, "serverip", "::1") + Parameter(1, "serverport", "4711") +
                    Parameter(2, "timeout", "9")));
}

// Parameters.

const std::string kRollingParameters = Parameter(0, "filename", "a.log") +
                                       Parameter(1, "filesize", "1000") +
                                       Parameter(2, "maxbackup", "1");

TEST(CheckIniTest, FindsNothingInParametersWithoutFault) {
  EXPECT_EQ("", Rolling(kRollingParameters));
  EXPECT_EQ("", Rolling(kRollingParameters + Parameter(3, "fileappend", "false")));
  EXPECT_EQ("", Rolling(kRollingParameters + Parameter(3, "fileappend", "yes")));
}

TEST(CheckIniTest, ReportsAGapInTheNumbers) {
  EXPECT_EQ(
      "it:8: error: parameter '4' of client 'c' is not read: parameters end where the next number "
      "from 0 is missing; number the parameters 0, 1, 2, ... without a gap\n",
      Rolling(kRollingParameters + Parameter(4, "fileappend", "false")));
  EXPECT_EQ(
      "it:8: error: parameter '03' of client 'c' is not read: parameters end where the next number "
      "from 0 is missing; number the parameters 0, 1, 2, ... without a gap\n",
      Rolling(
          kRollingParameters +
          "logclient.c.parameter.03.name = fileappend\nlogclient.c.parameter.03.value = true\n"));
}

TEST(CheckIniTest, ReportsAParameterWithoutANameOrValue) {
  EXPECT_EQ(
      "it:9: error: 'logclient.c.parameter.3' has no value, and so ends the parameters and is left "
      "out; give both 'logclient.c.parameter.3.name' and 'logclient.c.parameter.3.value'\n",
      Rolling(kRollingParameters + Parameter(3, "fileappend", "")));
  EXPECT_EQ(
      "it:8: error: 'logclient.c.parameter.3' has no name, and so ends the parameters and is left "
      "out; give both 'logclient.c.parameter.3.name' and 'logclient.c.parameter.3.value'\n",
      Rolling(kRollingParameters + "logclient.c.parameter.3.value = true\n"));
}

TEST(CheckIniTest, ReportsAPartOfAParameterThatNothingReads) {
  EXPECT_EQ(
      "it:8: error: key 'logclient.c.parameter.2.vaule' is read by nothing; did you mean "
      "'logclient.c.parameter.2.value'?\n",
      Rolling(kRollingParameters + "logclient.c.parameter.2.vaule = 3\n"));
}

TEST(CheckIniTest, ReportsAParameterThatTheClientDoesNotKnow) {
  EXPECT_EQ(
      "it:8: error: a LogClientRollingFile has no parameter 'maxbackups', which is ignored; did "
      "you "
      "mean 'maxbackup'?\n",
      Rolling(kRollingParameters + Parameter(3, "maxbackups", "3")));
  EXPECT_EQ("it:2: error: a LogClientConsole has no parameter 'filename', which is ignored\n",
            CheckedClient("logclient.c.type = LogClientConsole\n" + Parameter(0, "filename", "x")));
}

TEST(CheckIniTest, ReportsAParameterGivenAgain) {
  EXPECT_EQ(
      "it:8: error: parameter 'maxbackup' is given again, and ignored: line 6 has it first; remove "
      "one of the two\n",
      Rolling(kRollingParameters + Parameter(3, "maxbackup", "3")));
}

TEST(CheckIniTest, ReportsANumberThatIsReadDifferently) {
  const auto size = [](const std::string& value) {
    return Rolling(Parameter(0, "filename", "a.log") + Parameter(1, "maxbackup", "1") +
                   Parameter(2, "filesize", value));
  };

  EXPECT_EQ(
      "it:7: error: parameter 'filesize': '10k' is read as 10: a number ends at the first "
      "character "
      "that is no digit; write a decimal number without a unit, up to 2147483647\n",
      size("10k"));
  EXPECT_EQ(
      "it:7: error: parameter 'filesize': '4000000000' is read as 2147483647: a number beyond that "
      "does not fit; write a decimal number without a unit, up to 2147483647\n",
      size("4000000000"));
  EXPECT_EQ(
      "it:7: error: parameter 'filesize': 'big' is no number, and is read as 0; write a decimal "
      "number without a unit, up to 2147483647\n"
      "it:7: warning: client 'c' rolls its file at every event: its 'filesize' is 0 or less; give "
      "the parameter 'filesize', in bytes\n",
      size("big"));
  EXPECT_EQ("", size("+0010"));
}

TEST(CheckIniTest, ReportsARollingFileWithoutLimits) {
  EXPECT_EQ(
      "it:1: warning: client 'c' rolls its file at every event: its 'filesize' is 0 or less; give "
      "the parameter 'filesize', in bytes\n"
      "it:1: warning: client 'c' keeps no old files, and empties a full one: its 'maxbackup' is 0 "
      "or "
      "less; give the parameter 'maxbackup', a number of files\n",
      Rolling(Parameter(0, "filename", "a.log")));
  EXPECT_EQ(
      "it:7: warning: client 'c' keeps no old files, and empties a full one: its 'maxbackup' is 0 "
      "or "
      "less; give the parameter 'maxbackup', a number of files\n",
      Rolling(Parameter(0, "filename", "a.log") + Parameter(1, "filesize", "9") +
              Parameter(2, "maxbackup", "-1")));
}

TEST(CheckIniTest, ReportsAMissingParameter) {
  EXPECT_EQ(
      "it:1: error: client 'c' is left out: it has no parameter 'filename'; a LogClientFile needs "
      "it: the file, relative to the working directory; its folder is not made\n",
      CheckedClient("logclient.c.type = LogClientFile\n"));
  EXPECT_EQ(
      "it:1: error: client 'c' writes nothing: it has no parameter 'filename'; a "
      "LogClientRollingFile needs it: the file, relative to the working directory; its folder is "
      "not made\n",
      Rolling(Parameter(0, "filesize", "9") + Parameter(1, "maxbackup", "1")));
}

TEST(CheckIniTest, ReportsASwitchThatIsReadDifferently) {
  EXPECT_EQ(
      "it:9: error: 'False' leaves parameter 'fileappend' on: only 'false' switches it off; did "
      "you "
      "mean 'false'?\n",
      Rolling(kRollingParameters + Parameter(3, "fileappend", "False")));
  EXPECT_EQ(
      "it:9: warning: 'later' leaves parameter 'fileappend' on: only 'false' switches it off\n",
      Rolling(kRollingParameters + Parameter(3, "fileappend", "later")));
  EXPECT_EQ(
      "it:7: error: 'true' leaves parameter 'socketasynchron' off: only '1' switches it on; did "
      "you "
      "mean '1'?\n",
      CheckedClient("logclient.c.type = LogClientSocket\n" + Parameter(0, "serverip", "::1") +
                    Parameter(1, "serverport", "1") + Parameter(2, "socketasynchron", "true") +
                    Parameter(3, "timeout", "9")));
  EXPECT_EQ(
      "it:5: error: '1' leaves parameter 'escapetext' off: only 'true' switches it on; did you "
      "mean "
      "'true'?\n",
      CheckedClient("logclient.c.type = LogClientXML\n" + Parameter(0, "filename", "a.xml") +
                    Parameter(1, "escapetext", "1")));
}

TEST(CheckIniTest, ReportsThatAnXmlClientReadsMessagesAsXml) {
  EXPECT_EQ(
      "it:1: warning: client 'c' reads messages as XML: one with a bare & is written empty; give "
      "the parameter 'escapetext' with 'true' ('false' if this is meant)\n",
      CheckedClient("logclient.c.type = LogClientXML\n" + Parameter(0, "filename", "a.xml")));
  EXPECT_EQ("",
            CheckedClient("logclient.c.type = LogClientXML\n" + Parameter(0, "filename", "a.xml") +
                          Parameter(1, "escapetext", "false")));
}

TEST(CheckIniTest, ReportsAPortOutOfRange) {
  const auto port = [](const std::string& value) {
    return CheckedClient("logclient.c.type = LogClientSocket\n" + Parameter(0, "serverip", "::1") +
                         Parameter(1, "serverport", value) + Parameter(2, "timeout", "9"));
  };

  EXPECT_EQ("", port("1"));
  EXPECT_EQ("", port("65535"));
  EXPECT_EQ(
      "it:5: error: port 0 is none: the client is left out; a port is a number from 1 to 65535\n",
      port("0"));
  EXPECT_EQ("it:5: error: port 65536 is taken for port 0; a port is a number from 1 to 65535\n",
            port("65536"));
  EXPECT_EQ("it:5: error: port -1 is taken for port 65535; a port is a number from 1 to 65535\n",
            port("-1"));
  EXPECT_EQ(
      "it:5: error: parameter 'serverport': 'http' is no number, and is read as 0; write a decimal "
      "number without a unit, up to 2147483647\n"
      "it:5: error: port 0 is none: the client is left out; a port is a number from 1 to 65535\n",
      port("http"));
}

TEST(CheckIniTest, ReportsATimeoutThatIsNone) {
  EXPECT_EQ(
      "it:7: warning: client 'c' waits for its server as long as it takes: its 'timeout' is 0 or "
      "less; "
      "give a number of milliseconds, or remove it\n",
      CheckedClient("logclient.c.type = LogClientSocket\n" + Parameter(0, "serverip", "::1") +
                    Parameter(1, "serverport", "1") + Parameter(2, "timeout", "0")));
}

TEST(CheckIniTest, ReportsAFileNameThatIsTakenAsItStands) {
  const auto file = [](const std::string& name) {
    return CheckedClient("logclient.c.type = LogClientFile\n" + Parameter(0, "filename", name));
  };

  EXPECT_EQ("it:3: error: '~' is a folder of this name, and not the home folder, in '~/a.log'\n",
            file("~/a.log"));
  EXPECT_EQ("it:3: error: the blanks around it belong to the file name 'a.log '\n",
            file("\"a.log \""));
  EXPECT_EQ("it:3: warning: nothing is put in for % in a file name: it is '%Y.log'\n",
            file("%Y.log"));
}

TEST(CheckIniTest, ReportsAPortWithinTheAddressOfAServer) {
  const auto server = [](const std::string& value) {
    return CheckedClient("logclient.c.type = LogClientSocket\n" + Parameter(0, "serverip", value) +
                         Parameter(1, "serverport", "4711") + Parameter(2, "timeout", "9"));
  };

  EXPECT_EQ("", server("localhost"));
  EXPECT_EQ("", server("fe80::1"));
  EXPECT_EQ(
      "it:3: error: 'localhost:4711' is taken for the name of a host, with all that is in it; give "
      "the host alone, and its port in the parameter 'serverport'\n",
      server("localhost:4711"));
  EXPECT_EQ(
      "it:3: error: '[::1]:4711' is taken for the name of a host, with all that is in it; give the "
      "host alone, and its port in the parameter 'serverport'\n",
      server("[::1]:4711"));
}

TEST(CheckIniTest, ReportsASocketClientWithoutATimeout) {
  EXPECT_EQ(
      "it:1: warning: client 'c' waits for its server as long as it takes: it has no 'timeout'; "
      "give the parameter 'timeout', in milliseconds\n",
      CheckedClient("logclient.c.type = LogClientSocket\n" + Parameter(0, "serverip", "::1") +
                    Parameter(1, "serverport", "1")));
}

TEST(CheckIniTest, ReportsAFolderAsTheNameOfAFile) {
  const TemporaryFolder folder;
  const auto file = [](const std::string& name) {
    return CheckedClient("logclient.c.type = LogClientFile\n" + Parameter(0, "filename", name));
  };

  EXPECT_EQ("it:3: error: 'logs/' is a folder; name a file\n", file("logs/"));
  EXPECT_EQ("it:3: error: '" + folder.Path() + "' is a folder; name a file\n", file(folder.Path()));
}

TEST(CheckIniTest, ReportsTypographicQuotes) {
  const std::string rest = "loglevel = 1\n" + std::string(kHandlers) + kConsole;

  EXPECT_EQ(
      "it:1: error: typographic quotes belong to the value: '\u201CA\u201D'; write double quotes "
      "as on the keyboard, or none\n",
      Checked("loglevel.1.name = \u201CA\u201D\n" + rest));
}

TEST(CheckIniTest, ReportsACommentThatBeginsWithASemicolon) {
  const std::string rest = "loglevel = 1\n" + std::string(kHandlers) + kConsole;

  EXPECT_EQ(
      "it:1: error: a comment starts at #, not at ;: the value is 'A ; a comment'; write # before "
      "the comment\n",
      Checked("loglevel.1.name = A ; a comment\n" + rest));
  EXPECT_EQ("", Checked("loglevel.1.name = A;B\n" + rest));
  EXPECT_EQ("it:1: error: a comment starts at #, not at ;; write # before it\n",
            CheckedLines("; logging = false\n"));
}

TEST(CheckIniTest, ShowsANoBreakSpaceInAList) {
  EXPECT_EQ(
      "it:1: error: '1\\xc2\\xa02' is one item: only single blanks separate a list; separate the "
      "items by single blanks\n"
      "it:1: error: level '1\\xc2\\xa02' is read as 1: a number ends at the first character that "
      "is no digit; levels are numbers from 1 to 2147483647\n",
      CheckedLevels("1\u00A02"));
}

TEST(CheckIniTest, ReportsAFileInUtf16Once) {
  const std::string finding =
      "it: error: the file is UTF-16, of which the library reads nothing; save it as UTF-8 without "
      "a byte order mark\n";
  std::string content;
  for (const char character : std::string(kLevels) + kHandlers) {
    content += std::string{character, '\0'};
  }

  EXPECT_EQ(finding, Checked(content));
  EXPECT_EQ(finding, Checked("\xFF\xFE" + content));
}

TEST(CheckIniTest, SuggestsWhatWordsOfOtherSystemsMean) {
  EXPECT_EQ(
      "it:8: error: a LogClientRollingFile has no parameter 'append', which is ignored; did you "
      "mean 'fileappend'?\n",
      Rolling(kRollingParameters + Parameter(3, "append", "false")));
  EXPECT_EQ(
      "it:6: error: a LogClientXML has no parameter 'xslfile', which is ignored; did you mean "
      "'xslfilename'?\n",
      CheckedClient("logclient.c.type = LogClientXML\n" + Parameter(0, "filename", "a.xml") +
                    Parameter(1, "escapetext", "true") + Parameter(2, "xslfile", "a.xsl")));
  const auto kind = [](const std::string& name) {
    return CheckedClient("logclient.c.type = " + name + "\n");
  };
  EXPECT_EQ(
      "it:1: error: client 'c' is left out: there is no kind of client 'FileAppender'; did you "
      "mean "
      "'LogClientFile'? (if the application registers it: --kind FileAppender)\n",
      kind("FileAppender"));
  EXPECT_EQ(
      "it:1: error: client 'c' is left out: there is no kind of client 'Console'; did you mean "
      "'LogClientConsole'? (if the application registers it: --kind Console)\n",
      kind("Console"));
}

TEST(CheckIniTest, SuggestsHowAParameterIsWritten) {
  EXPECT_EQ(
      "it:1: error: key 'logclient.con.param.0.name' is read by nothing; did you mean "
      "'logclient.con.parameter.0.name'?\n",
      CheckedLines("logclient.con.param.0.name = filename\n"));
  EXPECT_EQ(
      "it:1: error: key 'logclient.con.filename' is read by nothing; a parameter has a number: "
      "logclient.con.parameter.0.name = filename and logclient.con.parameter.0.value = a.log\n",
      CheckedLines("logclient.con.filename = a.log\n"));
}

TEST(CheckIniTest, SuggestsHowHandlersAreLinkedAndSwitched) {
  EXPECT_EQ(
      "it:1: error: key 'loghandler.net.parent' is read by nothing; a handler names those below "
      "it: loghandler.default.child = net\n",
      CheckedLines("loghandler.net.parent = default\n"));
  EXPECT_EQ(
      "it:1: error: key 'loghandler.net.level' is read by nothing; levels are switched one by one: "
      "loghandler.net.level.NUMBER = false\n",
      CheckedLines("loghandler.net.level = INFO\n"));
}

TEST(CheckIniTest, WritesOutARangeOfLevels) {
  EXPECT_EQ(
      "it:1: error: level '1-4' is read as 1: a number ends at the first character that is no "
      "digit; there are no ranges: write 1 2 3 4\n",
      CheckedLevels("1-4"));
}

TEST(CheckIniTest, KnowsTheHandlersAndLevelsOfTheApplication) {
  CheckOptions options;
  options.own.handlers = {"appmade"};
  options.own.levels = {5};
  const std::string lines =
      "loghandler.net.level.5 = false\nloghandler = default net\nloghandler.default.child = net "
      "appmade\nlogclient = con own\nlogclient.con.type = LogClientConsole\n"
      "logclient.con.handler = net\nlogclient.own.type = LogClientConsole\n"
      "logclient.own.handler = appmade\n" +
      std::string(kLevels);

  EXPECT_EQ("", Checked(lines, options));
  EXPECT_EQ(
      "it:1: error: level '5' is not in the list 'loglevel': the switch is not read; add it to the "
      "list, or remove the line (if the application registers it: --level 5)\n"
      "it:3: error: handler 'appmade' does not exist, and is not attached to 'default'; add it to "
      "the handlers (if the application makes it: --handler appmade)\n"
      "it:8: error: client 'own' is left out: there is no handler 'appmade'; add it to the "
      "handlers "
      "(if the application makes it: --handler appmade)\n",
      Checked(lines));
}

/// Two clients with one parameter each besides their types, in lines 1 to 6.
std::string CheckedFiles(const std::string& firstKind, const std::string& firstFile,
                         const std::string& secondKind, const std::string& secondFile) {
  const auto client = [](const std::string& name, const std::string& kind,
                         const std::string& file) {
    const std::string key = "logclient." + name;
    const std::string limits =
        kind != "LogClientRollingFile"
            ? ""
            : key + ".parameter.1.name = filesize\n" + key + ".parameter.1.value = 9\n" + key +
                  ".parameter.2.name = maxbackup\n" + key + ".parameter.2.value = 2\n";
    return key + ".type = " + kind + "\n" + key + ".parameter.0.name = filename\n" + key +
           ".parameter.0.value = " + file + "\n" + limits;
  };
  return Checked(client("a", firstKind, firstFile) + client("b", secondKind, secondFile) +
                 "logclient = a b\nlogclient.a.handler = net\nlogclient.b.handler = net\n" +
                 kLevels + kHandlers);
}

TEST(CheckIniTest, ReportsTwoClientsOnOneFile) {
  EXPECT_EQ(
      "it:6: warning: file 'a.log' is also that of the client in line 1; attach both handlers "
      "to one client\n",
      CheckedFiles("LogClientFile", "a.log", "LogClientFile", "./a.log"));
  EXPECT_EQ(
      "it:6: error: file 'a.log' is also that of the client in line 1: what one writes is lost "
      "to the other; give each its own\n",
      CheckedFiles("LogClientFile", "a.log", "LogClientRollingFile", "a.log"));
  EXPECT_EQ("", CheckedFiles("LogClientRollingFile", "a.log", "LogClientFile", "a.log.3"));
  EXPECT_EQ(
      "it:10: error: file 'a.log.2' is a backup of 'a.log', which rolling replaces; give it "
      "another name\n",
      CheckedFiles("LogClientRollingFile", "a.log", "LogClientFile", "a.log.2"));
}

// The library's own reading.

std::string RandomText(std::mt19937& random) {
  static const std::string characters = "ab=# \"\t\n\n\r\\'x\v";
  std::string text(std::uniform_int_distribution<std::size_t>(0, 80)(random), ' ');
  for (char& character : text) {
    character =
        characters[std::uniform_int_distribution<std::size_t>(0, characters.size() - 1)(random)];
  }
  return text;
}

TEST(CheckIniTest, ReadsTheSamePairsAsTheLibrary) {
  std::mt19937 random(1);
  for (int round = 0; round < 3000; ++round) {
    const std::string text = RandomText(random);
    std::istringstream stream(text);
    LogProperties read;
    ASSERT_TRUE(read.Load(stream));

    Findings findings;
    std::map<std::string, std::string> last;
    for (const IniEntry& entry : ReadIniLines(text, findings)) last[entry.key] = entry.value;
    for (const auto& [key, value] : last) {
      EXPECT_EQ(value, read.GetProperty(key)) << text;
      EXPECT_TRUE(read.RemoveProperty(key)) << text;
    }
    for (const char* const key : {"", "a", "b", "x", "aa", "ab", "ba"}) {
      EXPECT_FALSE(read.RemoveProperty(key)) << text;
    }
  }
}

}  // namespace

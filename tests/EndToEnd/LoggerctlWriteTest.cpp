#include <gtest/gtest.h>

#include <atomic>
#include <filesystem>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "Support/Files.h"
#include "Support/MaskTimes.h"
#include "Support/Process.h"
#include "Support/ServingProgram.h"
#include "Support/Sockets.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlConfiguration.h"

namespace {

typedef std::vector<std::string> Words;

Words operator+(Words first, const Words& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

constexpr const char* kLevels =
    "loglevel = 1 2 3\n"
    "loglevel.1.name = ERROR\n"
    "loglevel.2.name = WARNING\n"
    "loglevel.3.name = INFO\n";

/// The handler "default" prints messages as they stand, "net" prints them with their level and has
/// level 3 off, "lonely" has no client.
constexpr const char* kHandlers =
    "loghandler = default net lonely\n"
    "loghandler.net.level.3 = false\n"
    "logclient = plain simple\n"
    "logclient.plain.type = LogClientConsole\n"
    "logclient.plain.handler = default\n"
    "logclient.plain.layout = LogLayoutMessage\n"
    "logclient.simple.type = LogClientConsole\n"
    "logclient.simple.handler = net\n"
    "logclient.simple.layout = LogLayoutSimple\n";

class LoggerctlWriteTest : public testing::Test {
 protected:
  LoggerctlWriteTest() : config_(File("logger.ini", std::string(kLevels) + kHandlers)) {}

  std::string File(const std::string& name, const std::string& content) const {
    const std::string path = folder_.Path(name);
    WriteFile(path, content);
    return path;
  }

  Words Command(const std::string& config) const {
    return {LOGGERCTL, "write", "--config", config};
  }

  /// Runs the command with the usual configuration.
  ProcessResult Write(const Words& words, const std::string& input = "") const {
    return RunProgram(Command(config_) + words, input);
  }

  /// Runs the command with another configuration.
  ProcessResult WriteWith(const std::string& configuration, const Words& words,
                          const std::string& input = "") const {
    return RunProgram(Command(File("own.ini", configuration)) + words, input);
  }

  TemporaryFolder folder_;
  std::string config_;
};

void ExpectWritten(const std::string& output, const ProcessResult& result) {
  EXPECT_EQ(0, result.exitCode);
  EXPECT_TRUE(output == result.output) << result.output.substr(0, 1000);
  EXPECT_EQ("", result.errors);
}

void ExpectUnusable(const std::string& errors, const ProcessResult& result) {
  EXPECT_EQ(2, result.exitCode);
  EXPECT_EQ("", result.output);
  EXPECT_EQ(errors, result.errors);
}

TEST_F(LoggerctlWriteTest, LogsItsWordsAsOneEvent) {
  ExpectWritten("disk 2 is full\n", Write({"--level", "1", "disk", "2", "is full"}));
}

TEST_F(LoggerctlWriteTest, JoinsWordsByOneBlank) {
  ExpectWritten(" a   b c  \n", Write({"--level", "1", " a ", " b", "c", " "}));
}

TEST_F(LoggerctlWriteTest, LogsAnEmptyWord) {
  ExpectWritten("\n", Write({"--level", "1", ""}, "not read\n"));
  ExpectWritten("a  b\n", Write({"--level", "1", "a", "", "b"}));
}

TEST_F(LoggerctlWriteTest, LogsWordsWithoutReadingStandardInput) {
  ExpectWritten("word\n", Write({"--level", "1", "word"}, "line\n"));
}

TEST_F(LoggerctlWriteTest, LogsEachLineOfStandardInput) {
  ExpectWritten("first\n second \n\nfourth\n",
                Write({"--level", "1"}, "first\n second \n\nfourth\n"));
}

TEST_F(LoggerctlWriteTest, LogsALastLineWithoutALineFeed) {
  ExpectWritten("first\nlast\n", Write({"--level", "1"}, "first\nlast"));
}

TEST_F(LoggerctlWriteTest, LogsNothingForEmptyStandardInput) {
  ExpectWritten("", Write({"--level", "1"}, ""));
}

TEST_F(LoggerctlWriteTest, LogsEachLineAsAnEventOfItsOwn) {
  ExpectWritten("WARNING - first\nWARNING - \nWARNING - last\n",
                Write({"--level", "2", "--handler", "net"}, "first\n\nlast\n"));
}

TEST_F(LoggerctlWriteTest, LogsThroughTheNamedHandler) {
  ExpectWritten("ERROR - text\n", Write({"--level", "1", "--handler", "net", "text"}));
}

TEST_F(LoggerctlWriteTest, TakesALevelByItsName) {
  ExpectWritten("WARNING - text\n", Write({"--level", "WARNING", "--handler", "net", "text"}));
}

TEST_F(LoggerctlWriteTest, TakesALevelByItsNumberWithZerosBeforeIt) {
  ExpectWritten("WARNING - text\n", Write({"--level", "002", "--handler", "net", "text"}));
}

TEST_F(LoggerctlWriteTest, TakesTheHighestLevel) {
  ExpectWritten("-1 - text\n", WriteWith("loglevel = -1\nlogclient = c\n"
                                         "logclient.c.type = LogClientConsole\n"
                                         "logclient.c.handler = default\n"
                                         "logclient.c.layout = LogLayoutSimple\n",
                                         {"--level", "4294967295", "text"}));
}

TEST_F(LoggerctlWriteTest, ReadsALevelAsANumberFirst) {
  const ProcessResult result = WriteWith(
      "loglevel = 1 2\nloglevel.1.name = 2\nloglevel.2.name = two\nlogclient = c\n"
      "logclient.c.type = LogClientConsole\nlogclient.c.handler = default\n"
      "logclient.c.layout = LogLayoutSimple\n",
      {"--level", "2", "text"});

  ExpectWritten("two - text\n", result);
}

TEST_F(LoggerctlWriteTest, TakesALevelNameOfSeveralWords) {
  const ProcessResult result = WriteWith(
      "loglevel = 1\nloglevel.1.name = 1 very [bad]\nlogclient = c\n"
      "logclient.c.type = LogClientConsole\nlogclient.c.handler = default\n"
      "logclient.c.layout = LogLayoutSimple\n",
      {"--level", "1 very [bad]", "text"});

  ExpectWritten("1 very [bad] - text\n", result);
}

TEST_F(LoggerctlWriteTest, DoesNotUseALevelNameOfTwoLevels) {
  const ProcessResult result =
      WriteWith("loglevel = 4 5 6\nloglevel.4.name = LOUD\nloglevel.6.name = LOUD\n",
                {"--level", "LOUD", "text"});

  ExpectUnusable("loggerctl: level name 'LOUD' stands for both 4 and 6; give the number\n", result);
}

TEST_F(LoggerctlWriteTest, ListsTheLevelsWhenOneIsUnknown) {
  const std::string known = "; the configuration registers 1 (ERROR), 2 (WARNING), 3 (INFO)\n";

  ExpectUnusable("loggerctl: unknown level 'LOUD'" + known, Write({"--level", "LOUD", "text"}));
  ExpectUnusable("loggerctl: unknown level '4'" + known, Write({"--level", "4", "text"}));
  ExpectUnusable("loggerctl: unknown level '0'" + known, Write({"--level", "0", "text"}));
  ExpectUnusable("loggerctl: unknown level '1x'" + known, Write({"--level", "1x", "text"}));
  ExpectUnusable("loggerctl: unknown level ''" + known, Write({"--level", "", "text"}));
  ExpectUnusable("loggerctl: unknown level '4294967297'" + known,
                 Write({"--level", "4294967297", "text"}));
}

TEST_F(LoggerctlWriteTest, SuggestsALevelThatIsMuchAlike) {
  const std::string known = " The configuration registers 1 (ERROR), 2 (WARNING), 3 (INFO)\n";

  ExpectUnusable("loggerctl: unknown level 'info'; did you mean 'INFO'?" + known,
                 Write({"--level", "info", "text"}));
  ExpectUnusable("loggerctl: unknown level 'WARNNG'; did you mean 'WARNING'?" + known,
                 Write({"--level", "WARNNG", "text"}));
}

TEST_F(LoggerctlWriteTest, SaysThatThereAreNoLevels) {
  ExpectUnusable("loggerctl: unknown level '1'; the configuration registers no levels\n",
                 WriteWith("", {"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, ListsTheHandlersWhenOneIsUnknown) {
  ExpectUnusable(
      "loggerctl: unknown handler 'Net'; did you mean 'net'? There are default, net, lonely\n",
      Write({"--level", "1", "--handler", "Net", "text"}));
}

TEST_F(LoggerctlWriteTest, DoesNotKnowTheEmptyHandler) {
  ExpectUnusable("loggerctl: unknown handler ''; there are default, net, lonely\n",
                 Write({"--level", "1", "--handler", "", "text"}));
}

TEST_F(LoggerctlWriteTest, CountsTheLinesThatAreFilteredOut) {
  const ProcessResult result = Write({"--level", "INFO", "--handler", "net"}, "one\ntwo");

  EXPECT_EQ(1, result.exitCode);
  EXPECT_EQ("", result.output);
  EXPECT_EQ("loggerctl write: 2 of 2 lines were filtered out: level 3 is off on handler 'net'\n",
            result.errors);
}

TEST_F(LoggerctlWriteTest, SaysThatItsWordsAreFilteredOut) {
  const ProcessResult result = Write({"--level", "3", "--handler", "net", "two", "words"});

  EXPECT_EQ(1, result.exitCode);
  EXPECT_EQ("", result.output);
  EXPECT_EQ("loggerctl write: 1 of 1 line was filtered out: level 3 is off on handler 'net'\n",
            result.errors);
}

TEST_F(LoggerctlWriteTest, FiltersNothingOutOfEmptyStandardInput) {
  ExpectWritten("", Write({"--level", "3", "--handler", "net"}, ""));
}

TEST_F(LoggerctlWriteTest, AcceptsWhatAHandlerFurtherDownFiltersOut) {
  const std::string tree = "loghandler.default.child = net\n";

  ExpectWritten("text\nERROR - text\n",
                WriteWith(kLevels + std::string(kHandlers) + tree, {"--level", "1", "text"}));
  ExpectWritten("text\n",
                WriteWith(kLevels + std::string(kHandlers) + tree, {"--level", "3", "text"}));
}

TEST_F(LoggerctlWriteTest, WarnsOfAHandlerThatReachesNoClient) {
  const ProcessResult result = Write({"--level", "1", "--handler", "lonely", "text"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.output);
  EXPECT_EQ(
      "loggerctl write: warning: handler 'lonely' reaches no client; nothing will be written\n",
      result.errors);
}

TEST_F(LoggerctlWriteTest, ReachesClientsThroughHandlersFurtherDown) {
  const std::string tree = "loghandler.lonely.child = default\n";

  ExpectWritten("text\n", WriteWith(kLevels + std::string(kHandlers) + tree,
                                    {"--level", "1", "--handler", "lonely", "text"}));
}

TEST_F(LoggerctlWriteTest, LogsPercentSignsAsTheyStand) {
  ExpectWritten("100% %s %d %n %% \\n\n", Write({"--level", "1", "100%", "%s %d %n", "%%", "\\n"}));
  ExpectWritten("%s%s%s%n 100%\n", Write({"--level", "1"}, "%s%s%s%n 100%\n"));
}

TEST_F(LoggerctlWriteTest, LogsBracketsAndBracesAsTheyStand) {
  const Words words{"{}",  "[]",  "[a,b]", "[a, b]", "[",   "]",   "]]",   "[[a],[b]]",
                    "a,b", "{a}", "x]",    "\"a\"",  "a=b", "\\]", "[a;b]"};
  for (const std::string& word : words) {
    ExpectWritten(word + "\n", Write({"--level", "1", word}));
  }
  ExpectWritten("{} [] [a,b] %s ] [x\n",
                Write({"--level", "1", "{}", "[]", "[a,b]", "%s", "]", "[x"}));
}

TEST_F(LoggerctlWriteTest, LogsTheNameOfACommand) {
  ExpectWritten("write write\n", Write({"--level", "1", "write", "write"}));
}

TEST_F(LoggerctlWriteTest, LogsWordsAfterTwoHyphens) {
  ExpectWritten("--level 2 --help -x --handler=net [a,b] - \n",
                Write({"--level", "1", "--", "--level", "2", "--help", "-x", "--handler=net",
                       "[a,b]", "-", ""}));
}

TEST_F(LoggerctlWriteTest, LogsTheWordThatIsTwoHyphens) {
  ExpectWritten("a -- b\n", Write({"--level", "1", "--", "a", "--", "b"}));
}

TEST_F(LoggerctlWriteTest, LogsASingleHyphen) {
  ExpectWritten("-\n", Write({"--level", "1", "-"}));
  ExpectWritten("- -\n", Write({"--level", "1", "--", "-", "-"}));
}

TEST_F(LoggerctlWriteTest, LogsNegativeNumbers) {
  ExpectWritten("-5 degrees\n", Write({"--level", "1", "-5", "degrees"}));
  ExpectWritten("-5\n", Write({"--level", "1", "--", "-5"}));
}

TEST_F(LoggerctlWriteTest, ReadsStandardInputWhenNothingFollowsTwoHyphens) {
  ExpectWritten("line\n", Write({"--level", "1", "--"}, "line\n"));
}

TEST_F(LoggerctlWriteTest, TakesOptionsAfterAndBetweenWords) {
  ExpectWritten("ERROR - one two\n", RunProgram({LOGGERCTL, "write", "one", "--handler", "net",
                                                 "--config", config_, "two", "--level", "1"}));
}

TEST_F(LoggerctlWriteTest, TakesOptionsWithEqualsSigns) {
  ExpectWritten("ERROR - text\n", RunProgram({LOGGERCTL, "write", "--handler=net",
                                              "--config=" + config_, "--level=ERROR", "text"}));
}

TEST_F(LoggerctlWriteTest, TakesOptionValuesWithBrackets) {
  const std::string config = File("logger.[a,b]",
                                  "loglevel = 1\nloglevel.1.name = [x,y]\n"
                                  "loghandler = [h,i]\nlogclient = c\n"
                                  "logclient.c.type = LogClientConsole\n"
                                  "logclient.c.handler = [h,i]\n"
                                  "logclient.c.layout = LogLayoutSimple\n");

  ExpectWritten(
      "[x,y] - text\n",
      RunProgram(Command(config) + Words{"--level", "[x,y]", "--handler", "[h,i]", "text"}));
}

TEST_F(LoggerctlWriteTest, PutsTheSourcePositionIntoTheEvent) {
  const std::string configuration =
      "loglevel = 1\nloglevel.1.name = ERROR\nlogclient = c\n"
      "logclient.c.type = LogClientConsole\nlogclient.c.handler = default\n"
      "logclient.c.layout = LogLayoutExtended\n";

  const ProcessResult result = WriteWith(
      configuration, {"--level", "1", "--file", "src/a[1]", "--line", "42"}, "one\n%s two\n");

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.errors);
  EXPECT_EQ("TIME |ERROR| src/a[1] 42 one\nTIME |ERROR| src/a[1] 42 %s two\n",
            MaskTimes(result.output));
}

TEST_F(LoggerctlWriteTest, LeavesTheSourcePositionEmptyWithoutOne) {
  const ProcessResult result = WriteWith(
      "loglevel = 1\nloglevel.1.name = ERROR\nlogclient = c\n"
      "logclient.c.type = LogClientConsole\nlogclient.c.handler = default\n"
      "logclient.c.layout = LogLayoutExtended\n",
      {"--level", "1", "text"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("TIME |ERROR|  0 text\n", MaskTimes(result.output));
}

TEST_F(LoggerctlWriteTest, TakesASourceFileAndALineOnlyTogether) {
  for (const Words& words : {Words{"--file", "a.cpp"}, Words{"--line", "3"}}) {
    const ProcessResult result = Write(Words{"--level", "1", "text"} + words);

    EXPECT_EQ(2, result.exitCode);
    EXPECT_EQ("", result.output);
    EXPECT_NE(std::string::npos, result.errors.find("--file")) << result.errors;
    EXPECT_NE(std::string::npos, result.errors.find("--line")) << result.errors;
  }
}

TEST_F(LoggerctlWriteTest, DoesNotTakeALineThatIsNoNumber) {
  const ProcessResult result = Write({"--level", "1", "--file", "a.cpp", "--line", "x", "text"});

  EXPECT_EQ(2, result.exitCode);
  EXPECT_EQ("", result.output);
  EXPECT_NE(std::string::npos, result.errors.find("--line")) << result.errors;
}

TEST_F(LoggerctlWriteTest, WritesToAFile) {
  const std::string log = folder_.Path("app.log");
  const ProcessResult result = WriteWith(
      "loglevel = 1\nlogclient = c\nlogclient.c.type = LogClientFile\n"
      "logclient.c.handler = default\nlogclient.c.layout = LogLayoutMessage\n"
      "logclient.c.parameter.0.name = filename\nlogclient.c.parameter.0.value = " +
          log + "\n",
      {"--level", "1"}, "first\nlast");

  ExpectWritten("", result);
  EXPECT_EQ("first\nlast\n", Content(log));
}

TEST_F(LoggerctlWriteTest, LogsALineOfAMegabyte) {
  std::string line;
  for (int number = 0; line.size() < 1024 * 1024; ++number) line += std::to_string(number) + " ";

  ExpectWritten(line + "\nnext\n", Write({"--level", "1"}, line + "\nnext"));
}

TEST_F(LoggerctlWriteTest, LogsALongLineWithoutALineFeed) {
  const std::string line(1024 * 1024 + 1, 'x');

  ExpectWritten(line + "\n", Write({"--level", "1"}, line));
}

TEST_F(LoggerctlWriteTest, LogsManyLinesInTheirOrder) {
  std::string lines;
  for (int number = 0; number < 20000; ++number) lines += "line " + std::to_string(number) + "\n";

  ExpectWritten(lines, Write({"--level", "1"}, lines));
}

TEST_F(LoggerctlWriteTest, LogsALongWord) {
  const std::string word(100000, 'x');

  ExpectWritten(word + " end\n", Write({"--level", "1", word, "end"}));
}

/// Every byte but zero and the line feed; as UTF-8 it makes no sense.
std::string EveryByte() {
  std::string bytes;
  for (int byte = 255; byte > 0; --byte) {
    if (byte != '\n') bytes.push_back(static_cast<char>(byte));
  }
  return bytes;
}

TEST_F(LoggerctlWriteTest, LogsEveryByteOfALine) {
  ExpectWritten(EveryByte() + "\n" + EveryByte() + "\n",
                Write({"--level", "1"}, EveryByte() + "\n" + EveryByte() + "\n"));
}

TEST_F(LoggerctlWriteTest, LogsEveryByteOfAWord) {
  ExpectWritten(EveryByte() + " \n \xC3(\n", Write({"--level", "1", EveryByte(), "\n", "\xC3("}));
}

TEST_F(LoggerctlWriteTest, KeepsCarriageReturns) {
  ExpectWritten("dos\r\n\r\nlast\r\n", Write({"--level", "1"}, "dos\r\n\r\nlast\r"));
}

TEST_F(LoggerctlWriteTest, WarnsOfAZeroByte) {
  const ProcessResult result = Write({"--level", "1"}, std::string("first\nab\0cde\nlast\n", 17));

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("first\nab\nlast\n", result.output);
  EXPECT_EQ(
      "loggerctl write: warning: line 2 has a zero byte, which ends it; "
      "3 bytes after it are left out\n",
      result.errors);
}

TEST_F(LoggerctlWriteTest, WarnsOfAZeroByteThatBeginsALine) {
  const ProcessResult result = Write({"--level", "1"}, std::string("\0abc\0d", 6));

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("\n", result.output);
  EXPECT_EQ(
      "loggerctl write: warning: line 1 has a zero byte, which ends it; "
      "5 bytes after it are left out\n",
      result.errors);
}

TEST_F(LoggerctlWriteTest, DoesNotUseAConfigurationThatDoesNotExist) {
  const std::string missing = folder_.Path("missing.ini");

  ExpectUnusable("loggerctl: " + missing + ": No such file or directory\n",
                 RunProgram(Command(missing) + Words{"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, DoesNotUseAConfigurationBelowAFile) {
  const std::string below = config_ + "/logger.ini";

  ExpectUnusable("loggerctl: " + below + ": Not a directory\n",
                 RunProgram(Command(below) + Words{"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, DoesNotUseADirectory) {
  ExpectUnusable("loggerctl: " + folder_.Path() + ": Is a directory\n",
                 RunProgram(Command(folder_.Path()) + Words{"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, DoesNotUseAnEmptyFileName) {
  ExpectUnusable("loggerctl: the name of the configuration file is empty\n",
                 RunProgram(Command("") + Words{"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, DoesNotUseAConfigurationWithATooLongLine) {
  const std::string config =
      File("long.ini", kLevels + std::string(kHandlers) + "#" + std::string(511, '-') + "\n");

  ExpectUnusable("loggerctl: " + config +
                     ": line 14: the line has 512 bytes and may have 511; the file cannot be read "
                     "because of it; shorten it\n",
                 RunProgram(Command(config) + Words{"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, UsesAConfigurationWithTheLongestLine) {
  ExpectWritten("text\n",
                WriteWith(kLevels + std::string(kHandlers) + "#" + std::string(510, '-') + "\n",
                          {"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, DoesNotUseAConfigurationThatSwitchesLoggingOff) {
  const std::string config =
      File("off.ini", kLevels + std::string(kHandlers) + "logging = false\n");

  ExpectUnusable("loggerctl: " + config + ": logging is switched off there (logging = false)\n",
                 RunProgram(Command(config) + Words{"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, NamesTheLineOfAnXmlConfigurationThatDoesNotFitTheSchema) {
  const std::string config =
      File("odd.xml", "<configlogger>\n<logging enable=\"true\"/>\n<nonsense/>\n</configlogger>\n");

  ExpectUnusable("loggerctl: " + config +
                     ": line 3: Element 'nonsense': "
                     "This element is not expected. Expected is ( loglevel )\n",
                 RunProgram(Command(config) + Words{"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, DoesNotUseAnXmlConfigurationThatSwitchesLoggingOff) {
  XmlConfiguration off;
  off.logging = "<logging enable=\"false\"/>\n";
  const std::string config = File("off.xml", off.Text());

  ExpectUnusable("loggerctl: " + config + ": logging is switched off there (enable=\"false\")\n",
                 RunProgram(Command(config) + Words{"--level", "1", "text"}));
}

TEST_F(LoggerctlWriteTest, NeedsAConfiguration) {
  const ProcessResult result = RunProgram({LOGGERCTL, "write", "--level", "1", "text"});

  EXPECT_EQ(2, result.exitCode);
  EXPECT_EQ("", result.output);
  EXPECT_NE(std::string::npos, result.errors.find("--config")) << result.errors;
}

TEST_F(LoggerctlWriteTest, NeedsALevel) {
  const ProcessResult result = Write({"text"});

  EXPECT_EQ(2, result.exitCode);
  EXPECT_EQ("", result.output);
  EXPECT_NE(std::string::npos, result.errors.find("--level")) << result.errors;
}

TEST_F(LoggerctlWriteTest, DoesNotTakeAnUnknownOption) {
  for (const char* const option : {"--colour", "-x"}) {
    const ProcessResult result = Write({"--level", "1", "text", option});

    EXPECT_EQ(2, result.exitCode) << option;
    EXPECT_EQ("", result.output);
    EXPECT_NE(std::string::npos, result.errors.find(option)) << result.errors;
  }
}

TEST_F(LoggerctlWriteTest, NeedsACommand) {
  for (const Words& words : {Words{LOGGERCTL}, Words{LOGGERCTL, "read"}}) {
    const ProcessResult result = RunProgram(words);

    EXPECT_EQ(2, result.exitCode);
    EXPECT_EQ("", result.output);
    EXPECT_NE("", result.errors);
  }
}

TEST_F(LoggerctlWriteTest, HelpsOnStandardOutput) {
  const ProcessResult result = RunProgram({LOGGERCTL, "write", "--help"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.errors);
  for (const char* const part : {"--config", "--handler", "--level", "--file", "--line", "TEXT"}) {
    EXPECT_NE(std::string::npos, result.output.find(part)) << part;
  }
}

TEST_F(LoggerctlWriteTest, IsListedByTheProgramsHelp) {
  const ProcessResult result = RunProgram({LOGGERCTL, "--help"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.errors);
  EXPECT_NE(std::string::npos, result.output.find("write")) << result.output;
}

TEST_F(LoggerctlWriteTest, ReportsThatStandardOutputCannotBeWritten) {
  const Words redirected{"sh", "-c", "exec \"$@\" > /dev/full", "sh"};

  ExpectUnusable("loggerctl: standard output could not be written\n",
                 RunProgram(redirected + Command(config_) + Words{"--level", "1", "text"}));
  ExpectUnusable("loggerctl: standard output could not be written\n",
                 RunProgram(redirected + Command(config_) + Words{"--level", "1"}, "a\nb\n"));
}

TEST_F(LoggerctlWriteTest, ReportsThatStandardInputCannotBeRead) {
  const Words redirected{"sh", "-c", "exec \"$@\" < /", "sh"};

  ExpectUnusable("loggerctl: standard input cannot be read: Is a directory\n",
                 RunProgram(redirected + Command(config_) + Words{"--level", "1"}));
}

// Lines that do not reach every client.

/// Runs the command with a console client and a client 'f' beside it, both for messages.
class LoggerctlWriteLossTest : public LoggerctlWriteTest {
 protected:
  typedef std::vector<std::pair<std::string, std::string>> Parameters;

  static std::string ConfigurationWith(const std::string& kind, const Parameters& parameters,
                                       const std::string& changes = "") {
    std::string text = std::string(kLevels) +
                       "loghandler = default net\n"
                       "loghandler.net.level.3 = false\n"
                       "logclient = console f\n"
                       "logclient.console.type = LogClientConsole\n"
                       "logclient.console.handler = default\n"
                       "logclient.console.layout = LogLayoutMessage\n";
    std::string client = "logclient.f.type = " + kind +
                         "\nlogclient.f.handler = default\n"
                         "logclient.f.layout = LogLayoutMessage\n";
    int number = 0;
    for (const auto& [name, value] : parameters) {
      const std::string parameter = "logclient.f.parameter." + std::to_string(number++);
      client += parameter + ".name = " + name + "\n" + parameter + ".value = " + value + "\n";
    }
    return text + client + changes;
  }

  ProcessResult WriteTwoLines(const std::string& configuration) const {
    return WriteWith(configuration, {"--level", "1"}, "one\ntwo\n");
  }

  static Parameters Server(int port, const std::string& timeout = "") {
    Parameters parameters{{"serverip", "127.0.0.1"}, {"serverport", std::to_string(port)}};
    if (!timeout.empty()) parameters.push_back({"timeout", timeout});
    return parameters;
  }
};

/// The console client got both lines, the other one none of them.
void ExpectBothLost(const std::string& client, const std::string& reason,
                    const ProcessResult& result, const std::string& reports = "") {
  EXPECT_EQ(3, result.exitCode);
  EXPECT_EQ("one\ntwo\n", result.output);
  EXPECT_EQ(reports + "loggerctl write: client 'f' (" + client + ") takes no events: " + reason +
                "\nloggerctl write: 2 of 2 lines did not reach client 'f'\n",
            result.errors);
}

TEST_F(LoggerctlWriteLossTest, ReportsARollingFileInAFolderThatDoesNotExist) {
  const std::string file = folder_.Path("missing/app.log");

  ExpectBothLost("LogClientRollingFile, " + file, "No such file or directory",
                 WriteTwoLines(ConfigurationWith("LogClientRollingFile", {{"filename", file}})));
}

TEST_F(LoggerctlWriteLossTest, ReportsAFileThatCouldNotBeOpened) {
  const std::string file = folder_.Path("missing/app.log");

  ExpectBothLost("LogClientFile, " + file, "No such file or directory",
                 WriteTwoLines(ConfigurationWith("LogClientFile", {{"filename", file}})));
  ExpectBothLost("LogClientFile, " + folder_.Path(), "Is a directory",
                 WriteTwoLines(ConfigurationWith("LogClientFile", {{"filename", folder_.Path()}})));
  ExpectBothLost("LogClientFile", "it has no 'filename'",
                 WriteTwoLines(ConfigurationWith("LogClientFile", {})));
}

TEST_F(LoggerctlWriteLossTest, ReportsADeviceThatIsFull) {
  for (const std::string kind : {"LogClientFile", "LogClientRollingFile", "LogClientXML"}) {
    ExpectBothLost(kind + ", /dev/full", "No space left on device",
                   WriteTwoLines(ConfigurationWith(
                       kind, {{"filename", "/dev/full"}, {"filesize", "10"}, {"maxbackup", "1"}})));
  }
}

TEST_F(LoggerctlWriteLossTest, CountsTheLinesFromTheOneThatWasCut) {
  const std::string file = folder_.Path("app.log");
  const std::string config =
      File("own.ini", ConfigurationWith("LogClientFile", {{"filename", file}}));
  std::string lines;
  for (int line = 0; line < 100; ++line) lines += std::string(999, 'x') + "\n";
  const Words limited{"bash", "-c", "trap '' XFSZ; ulimit -f 64; exec \"$@\"", "bash"};

  const ProcessResult result = RunProgram(limited + Command(config) + Words{"--level", "1"}, lines);

  EXPECT_EQ(3, result.exitCode);
  EXPECT_TRUE(lines == result.output);
  EXPECT_EQ(65536U, Content(file).size());
  EXPECT_EQ("loggerctl write: client 'f' (LogClientFile, " + file +
                ") takes no events: File too large\n"
                "loggerctl write: 35 of 100 lines did not reach client 'f'\n",
            result.errors);
}

TEST_F(LoggerctlWriteLossTest, CountsNoLineThatIsInABackup) {
  const std::string file = folder_.Path("app.log");
  std::filesystem::create_directory(file + ".1");  // Nothing can be renamed to it.
  const ProcessResult result = WriteTwoLines(ConfigurationWith(
      "LogClientRollingFile", {{"filename", file}, {"filesize", "1"}, {"maxbackup", "1"}}));

  EXPECT_EQ("one\ntwo\n", result.output);
  EXPECT_EQ(0, result.exitCode) << result.errors;
}

TEST_F(LoggerctlWriteLossTest, ReportsAClientThatWasLeftOut) {
  const Parameters file{{"filename", folder_.Path("app.log")}};
  const std::string place = ", " + folder_.Path("app.log");

  ExpectBothLost("LogClientFiel" + place, "there is no kind of client 'LogClientFiel'",
                 WriteTwoLines(ConfigurationWith("LogClientFiel", file)));
  ExpectBothLost("LogClientFile" + place, "there is no layout 'LogLayoutMesage'",
                 WriteTwoLines(ConfigurationWith("LogClientFile", file,
                                                 "logclient.f.layout = LogLayoutMesage\n")));
  ExpectBothLost(
      "LogClientFile" + place, "there is no handler 'nte'",
      WriteTwoLines(ConfigurationWith("LogClientFile", file, "logclient.f.handler = nte\n")));
  ExpectBothLost(
      "LogClientFile" + place, "it has no handler",
      WriteTwoLines(ConfigurationWith("LogClientFile", file, "logclient.f.handler =\n")));
  EXPECT_EQ("", Content(folder_.Path("app.log")));
  EXPECT_EQ(
      "loggerctl write: client 'f' takes no events: it has no type\n"
      "loggerctl write: 2 of 2 lines did not reach client 'f'\n",
      WriteTwoLines(ConfigurationWith("", {})).errors);
}

TEST_F(LoggerctlWriteLossTest, NamesAClientOfADocumentByItsNumber) {
  XmlConfiguration configuration;
  configuration.handlers = "<loghandler name=\"default\"/>\n";
  configuration.tree = "<logtree><loghandler name=\"default\"/></logtree>\n";
  configuration.clients =
      "<logclient><type type=\"LogClientConsole\"/><clientloghandler handlername=\"default\"/>"
      "<layout layout=\"LogLayoutMessage\"/></logclient>\n"
      "<logclient><type type=\"LogClientConsole\"/><clientloghandler handlername=\"default\"/>"
      "<layout layout=\"LogLayoutMesage\"/></logclient>\n";

  const ProcessResult result = WriteWith(configuration.Text(), {"--level", "1", "text"});

  EXPECT_EQ(3, result.exitCode);
  EXPECT_EQ("text\n", result.output);
  EXPECT_EQ(
      "loggerctl write: client 2 (LogClientConsole) takes no events: "
      "there is no layout 'LogLayoutMesage'\n"
      "loggerctl write: 1 of 1 line did not reach client 2\n",
      result.errors);
}

TEST_F(LoggerctlWriteLossTest, TakesAFilterOnTheWayForNoLoss) {
  const std::string onNet = "logclient.f.handler = net\nloghandler.default.child = net\n";
  const std::string configuration =
      ConfigurationWith("LogClientFile", {{"filename", folder_.Path("missing/app.log")}}, onNet);
  const std::string fault = "loggerctl write: client 'f' (LogClientFile, " +
                            folder_.Path("missing/app.log") +
                            ") takes no events: No such file or directory\n";

  const ProcessResult filtered = WriteWith(configuration, {"--level", "3", "text"});
  EXPECT_EQ(0, filtered.exitCode);
  EXPECT_EQ(fault, filtered.errors);

  const ProcessResult accepted = WriteWith(configuration, {"--level", "1", "text"});
  EXPECT_EQ(3, accepted.exitCode);
  EXPECT_EQ(fault + "loggerctl write: 1 of 1 line did not reach client 'f'\n", accepted.errors);
}

TEST_F(LoggerctlWriteLossTest, SaysNothingOfAClientThatTheHandlerDoesNotReach) {
  ExpectWritten("one\ntwo\n", WriteTwoLines(ConfigurationWith(
                                  "LogClientFile", {{"filename", folder_.Path("missing/app.log")}},
                                  "logclient.f.handler = net\n")));
}

TEST_F(LoggerctlWriteLossTest, CountsFilteredLinesAsFilteredOnly) {
  const ProcessResult result =
      WriteWith(ConfigurationWith("LogClientFile", {{"filename", folder_.Path("missing/app.log")}},
                                  "logclient.f.handler = net\n"),
                {"--level", "3", "--handler", "net", "text"});

  EXPECT_EQ(1, result.exitCode);
  EXPECT_EQ(std::string::npos, result.errors.find("did not reach")) << result.errors;
}

TEST_F(LoggerctlWriteLossTest, LosesNothingOfNoLines) {
  const std::string configuration =
      ConfigurationWith("LogClientFile", {{"filename", folder_.Path("missing/app.log")}});

  EXPECT_EQ(0, WriteWith(configuration, {"--level", "1"}, "").exitCode);
}

TEST_F(LoggerctlWriteLossTest, WritesADocumentWithItsEntries) {
  const std::string file = folder_.Path("app.xml");

  ExpectWritten("one\ntwo\n",
                WriteTwoLines(ConfigurationWith("LogClientXML", {{"filename", file}})));

  EXPECT_NE(std::string::npos, Content(file).find("<log>two</log>"));
}

TEST_F(LoggerctlWriteLossTest, LooksWhetherADocumentWasSaved) {
  const std::string missing = folder_.Path("missing/app.xml");
  ExpectBothLost("LogClientXML, " + missing, "No such file or directory",
                 WriteTwoLines(ConfigurationWith("LogClientXML", {{"filename", missing}})));
  const std::string url = folder_.Path("missing/app%20log.xml");
  ExpectBothLost("LogClientXML, " + url, "No such file or directory",
                 WriteTwoLines(ConfigurationWith("LogClientXML", {{"filename", url}})));
  ExpectBothLost("LogClientXML, " + folder_.Path(), "Is a directory",
                 WriteTwoLines(ConfigurationWith("LogClientXML", {{"filename", folder_.Path()}})));
  ExpectBothLost("LogClientXML", "it has no 'filename'",
                 WriteTwoLines(ConfigurationWith("LogClientXML", {})));
}

TEST_F(LoggerctlWriteLossTest, CountsTheEntriesThatADocumentLacks) {
  const std::string file = folder_.Path("app.xml");
  const std::string config =
      File("own.ini", ConfigurationWith("LogClientXML", {{"filename", file}}));
  std::string lines;
  for (int line = 0; line < 100; ++line) lines += std::string(999, 'x') + "\n";
  const Words limited{"bash", "-c", "trap '' XFSZ; ulimit -f 64; exec \"$@\"", "bash"};

  const ProcessResult result = RunProgram(limited + Command(config) + Words{"--level", "1"}, lines);

  EXPECT_EQ(3, result.exitCode);
  const std::string report = "loggerctl write: client 'f' (LogClientXML, " + file +
                             ") takes no events: an event could not be written\n"
                             "loggerctl write: ";
  ASSERT_EQ(0U, result.errors.find(report)) << result.errors;
  EXPECT_NE(std::string::npos, result.errors.find(" of 100 lines did not reach client 'f'\n"));
}

TEST_F(LoggerctlWriteLossTest, DoesNotCountALastEntryThatWasCut) {
  const std::string file = folder_.Path("app.xml");
  const std::string config =
      File("own.ini", ConfigurationWith("LogClientXML", {{"filename", file}}));
  const Words limited{"bash", "-c", "trap '' XFSZ; ulimit -f 1; exec \"$@\"", "bash"};
  for (const int length :
       {750, 772}) {  // The indented document is cut after the entry, or within it.
    const std::string lines = "one\n" + std::string(static_cast<std::size_t>(length), 'x') + "\n";

    const ProcessResult result =
        RunProgram(limited + Command(config) + Words{"--level", "1"}, lines);

    EXPECT_EQ(3, result.exitCode) << length;
    EXPECT_EQ("loggerctl write: client 'f' (LogClientXML, " + file +
                  ") takes no events: the document in the file is not complete\n"
                  "loggerctl write: 1 of 2 lines did not reach client 'f'\n",
              result.errors)
        << length;
  }
}

// Log servers.

TEST_F(LoggerctlWriteLossTest, ReportsAServerThatIsNotThere) {
  PlainListener listener;
  const int port = listener.Port();
  listener.Close();

  ExpectBothLost("LogClientSocket, 127.0.0.1 port " + std::to_string(port), "Connection refused",
                 WriteTwoLines(ConfigurationWith("LogClientSocket", Server(port))),
                 "LOGGER ERROR at Init [61]: 'Connection refused'\n");
}

TEST_F(LoggerctlWriteLossTest, ReportsASocketClientWithoutAServer) {
  ExpectBothLost("LogClientSocket", "it has no 'serverip'",
                 WriteTwoLines(ConfigurationWith("LogClientSocket", {})));
  ExpectBothLost("LogClientSocket, localhost port ", "it has no 'serverport'",
                 WriteTwoLines(ConfigurationWith("LogClientSocket", {{"serverip", "localhost"}})));
}

/// Answers every connection with the same bytes, and closes or keeps it.
class OtherServer {
 public:
  OtherServer(const std::string& answer, bool endsConnections)
      : thread_([this, answer, endsConnections] {
          for (;;) {
            PlainConnection visitor = listener_.Accept();
            if (!visitor.IsOpen() || isEnding_) return;
            ++count_;
            visitor.Receive(4);
            if (!answer.empty()) visitor.Send(answer);
            if (!endsConnections) visitors_.push_back(std::move(visitor));
          }
        }) {}
  ~OtherServer() {
    isEnding_ = true;
    PlainConnection::To(listener_.Port());
    thread_.join();
  }
  OtherServer(const OtherServer&) = delete;
  OtherServer& operator=(const OtherServer&) = delete;

  int Port() const { return listener_.Port(); }
  int VisitorCount() const { return count_; }

 private:
  PlainListener listener_;
  std::vector<PlainConnection> visitors_;
  std::atomic<int> count_{0};
  std::atomic<bool> isEnding_{false};
  std::thread thread_;
};

TEST_F(LoggerctlWriteLossTest, ReportsAPeerThatIsNoLogServer) {
  const OtherServer web("HTTP/1.1 400 Bad Request\r\n", false);

  ExpectBothLost("LogClientSocket, 127.0.0.1 port " + std::to_string(web.Port()),
                 "the answer is not that of a log server",
                 WriteTwoLines(ConfigurationWith("LogClientSocket", Server(web.Port()))));
}

TEST_F(LoggerctlWriteLossTest, ReportsAPeerThatEndsTheConnection) {
  const OtherServer other("", true);

  ExpectBothLost("LogClientSocket, 127.0.0.1 port " + std::to_string(other.Port()),
                 "the connection was ended without an answer; is a log server there?",
                 WriteTwoLines(ConfigurationWith("LogClientSocket", Server(other.Port()))));
}

TEST_F(LoggerctlWriteLossTest, ReportsAPeerThatDoesNotAnswerInTime) {
  const OtherServer silent("", false);

  ExpectBothLost("LogClientSocket, 127.0.0.1 port " + std::to_string(silent.Port()),
                 "no answer within 50 ms; is a log server there?",
                 WriteTwoLines(ConfigurationWith("LogClientSocket", Server(silent.Port(), "50"))));
  EXPECT_EQ(2, silent.VisitorCount());  // The client, and once to find out why.
}

/// Takes one connection, as a log server does, and ends it without a confirmation.
class EndingServer {
 public:
  /// Reads so many bytes after the opening exchange.
  explicit EndingServer(std::size_t bytes)
      : thread_([this, bytes] {
          PlainConnection client = listener_.Accept();
          client.Send(client.Receive(4));  // The protocol version.
          client.Receive(bytes);
        }) {}
  ~EndingServer() { thread_.join(); }
  EndingServer(const EndingServer&) = delete;
  EndingServer& operator=(const EndingServer&) = delete;

  int Port() const { return listener_.Port(); }

 private:
  PlainListener listener_;
  std::thread thread_;
};

TEST_F(LoggerctlWriteLossTest, ReportsAServerThatEndsTheConnectionAtOnce) {
  const EndingServer server(0);

  const ProcessResult result =
      WriteTwoLines(ConfigurationWith("LogClientSocket", Server(server.Port())));

  EXPECT_EQ(3, result.exitCode);
  EXPECT_EQ("one\ntwo\n", result.output);
  EXPECT_NE(std::string::npos, result.errors.find(" of 2 lines ")) << result.errors;
}

TEST_F(LoggerctlWriteLossTest, ReportsAServerThatDoesNotConfirm) {
  const std::size_t bytes = 20;  // Of the first event, which is larger.
  const EndingServer server(bytes);

  const ProcessResult result =
      WriteTwoLines(ConfigurationWith("LogClientSocket", Server(server.Port())));

  EXPECT_EQ(3, result.exitCode);
  EXPECT_NE(std::string::npos, result.errors.find("2 of 2 lines may not have reached client 'f'\n"))
      << result.errors;
}

TEST_F(LoggerctlWriteLossTest, SendsEachLineOfAnAsynchronousClient) {
  WriteFile(folder_.Path("serve.ini"),
            std::string(kLevels) +
                "logclient = f\nlogclient.f.type = LogClientFile\n"
                "logclient.f.handler = default\nlogclient.f.layout = LogLayoutMessage\n"
                "logclient.f.parameter.0.name = filename\nlogclient.f.parameter.0.value = " +
                folder_.Path("served.log") + "\n");
  ServingProgram server(LOGGERCTL, {"--config", folder_.Path("serve.ini")});
  Parameters parameters = Server(server.Port());
  parameters.push_back({"socketasynchron", "1"});

  ExpectWritten("one\ntwo\n", WriteTwoLines(ConfigurationWith("LogClientSocket", parameters)));

  EXPECT_EQ("served 1 connection and 2 events, rejected 0 frames\n", server.Stop().output);
  EXPECT_EQ("one\ntwo\n", Content(folder_.Path("served.log")));
}

}  // namespace

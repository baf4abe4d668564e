#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "LogClient.h"
#include "LogClientFactory.h"
#include "LogProperties.h"
#include "Logger.h"
#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlConfiguration.h"

namespace {

typedef std::vector<std::string> Words;

const std::string kExamples = PROJECT_FOLDER "/examples/";
const std::string kDocs = PROJECT_FOLDER "/docs/";

Words operator+(Words first, const Words& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

class LoggerctlShowTest : public testing::Test {
 protected:
  ProcessResult ShowFile(const std::string& file, const Words& options = {}) const {
    return RunProgram(Words{LOGGERCTL, "show"} + options + Words{file});
  }

  ProcessResult Show(const std::string& configuration, const Words& options = {}) const {
    const std::string file = folder_.Path("configuration");
    WriteFile(file, configuration);
    return ShowFile(file, options);
  }

  TemporaryFolder folder_;
};

void ExpectShown(const std::string& output, const ProcessResult& result) {
  EXPECT_EQ(output, result.output);
  EXPECT_EQ("", result.errors);
  EXPECT_EQ(0, result.exitCode);
}

void ExpectUnusable(const std::string& errors, const ProcessResult& result) {
  EXPECT_EQ("", result.output);
  EXPECT_EQ(errors, result.errors);
  EXPECT_EQ(2, result.exitCode);
}

TEST_F(LoggerctlShowTest, ShowsLevelsHandlersTreeAndClients) {
  ExpectShown(
      "levels\n"
      "  1 ERROR\n"
      "  2 WARNING\n"
      "  3 INFO\n"
      "  4 DEBUG\n"
      "\n"
      "handlers\n"
      "  default  all levels on\n"
      "  survey   all levels on\n"
      "  trouble  off: 3 INFO, 4 DEBUG\n"
      "\n"
      "tree\n"
      "  default\n"
      "  ├── client screen: LogClientConsole\n"
      "  └── survey\n"
      "      ├── client everything: LogClientRollingFile\n"
      "      └── trouble\n"
      "          └── client trouble: LogClientFile\n"
      "\n"
      "clients\n"
      "  screen: LogClientConsole on default, layout LogLayoutSimple\n"
      "  everything: LogClientRollingFile on survey, layout LogLayoutStandard\n"
      "      filename = survey.log\n"
      "      filesize = 200000\n"
      "      maxbackup = 3\n"
      "  trouble: LogClientFile on trouble, layout LogLayoutExtended\n"
      "      filename = trouble.log\n",
      ShowFile(kExamples + "file_survey.ini"));
}

constexpr const char* kWorkedExample =
    "levels\n"
    "  1 ERROR\n"
    "  2 WARNING\n"
    "  3 INFO\n"
    "  4 DEBUG\n"
    "\n"
    "handlers\n"
    "  default  all levels on\n"
    "  net      off: 4 DEBUG\n"
    "\n"
    "tree\n"
    "  default\n"
    "  ├── client 1: LogClientConsole\n"
    "  └── net\n"
    "      └── client 2: LogClientRollingFile\n"
    "\n"
    "clients\n"
    "  1: LogClientConsole on default, layout LogLayoutSimple\n"
    "  2: LogClientRollingFile on net, layout LogLayoutStandard\n"
    "      filename = app.log\n"
    "      filesize = 100000\n"
    "      maxbackup = 3\n";

std::string Replaced(std::string text, const std::string& from, const std::string& to) {
  for (std::size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) {
    text.replace(at, from.size(), to);
  }
  return text;
}

TEST_F(LoggerctlShowTest, ShowsTheSameSystemOfBothForms) {
  ExpectShown(Replaced(Replaced(kWorkedExample, " 1: ", " con: "), " 2: ", " roll: "),
              ShowFile(kExamples + "worked_example.ini"));
  ExpectShown(kWorkedExample, ShowFile(kExamples + "worked_example.xml"));
}

TEST_F(LoggerctlShowTest, ShowsASystemThatHasNothingButTheDefaultHandler) {
  ExpectShown(
      "levels\n"
      "  none\n"
      "\n"
      "handlers\n"
      "  default  all levels on\n"
      "\n"
      "tree\n"
      "  default\n"
      "\n"
      "clients\n"
      "  none\n",
      Show(""));
}

/// The lines of the sections from `title` on.
std::string From(const std::string& title, const ProcessResult& result) {
  const std::size_t start = result.output.find(title + "\n");
  return start == std::string::npos ? result.output : result.output.substr(start);
}

TEST_F(LoggerctlShowTest, ShowsAHandlerThatIsReachedByTwoWaysOnce) {
  const ProcessResult result = Show(
      "loghandler = default a b c\n"
      "loghandler.default.child = a b\n"
      "loghandler.a.child = c\n"
      "loghandler.b.child = c\n"
      "logclient = con\n"
      "logclient.con.type = LogClientConsole\n"
      "logclient.con.handler = c\n");

  EXPECT_EQ(
      "tree\n"
      "  default\n"
      "  ├── a\n"
      "  │   └── c\n"
      "  │       └── client con: LogClientConsole\n"
      "  └── b\n"
      "      └── c (see above)\n"
      "\n"
      "clients\n"
      "  con: LogClientConsole on c, layout LogLayoutStandard\n",
      From("tree", result));
}

TEST_F(LoggerctlShowTest, ShowsCycles) {
  const ProcessResult result = Show(
      "loghandler = a b c\n"
      "loghandler.a.child = b\n"
      "loghandler.b.child = a c\n"
      "loghandler.c.child = c\n");

  EXPECT_EQ(
      "tree\n"
      "  default\n"
      "  a\n"
      "  └── b\n"
      "      ├── a (again: a cycle)\n"
      "      └── c\n"
      "          └── c (again: a cycle)\n"
      "\n"
      "clients\n"
      "  none\n",
      From("tree", result));
}

TEST_F(LoggerctlShowTest, ShowsOddTextsSoThatTheyHarmNoTerminal) {
  ExpectShown(
      "levels\n"
      "  1 \" padded \"\n"
      "  2 \"\\x1b[31m\\t\\\"\\\\\"\n"
      "  3 größer\n"
      "  4 \"gr\\xf6\\xdfer\"\n"
      "  5 \"\\xc2\\x9b31m\"\n"
      "\n"
      "handlers\n"
      "  default  all levels on\n"
      "  \"\"       all levels on\n"
      "  größe    off: 3 größer\n"
      "  \"\\\"q\\\"\"  all levels on\n"
      "\n"
      "tree\n"
      "  default\n"
      "  \"\"\n"
      "  größe\n"
      "  └── client f: LogClientFile\n"
      "  \"\\\"q\\\"\"\n"
      "\n"
      "clients\n"
      "  f: LogClientFile on größe, layout LogLayoutStandard\n"
      "      filename = \"a b=c&<d>\"\n",
      Show("loglevel = 1 2 3 4 5\n"
           "loglevel.1.name = \" padded \"\n"
           "loglevel.2.name = \"\x1b[31m\t\"\\\"\n"
           "loglevel.3.name = größer\n"
           "loglevel.4.name = gr\xF6\xDF"
           "er\n"
           "loglevel.5.name = \xC2\x9B"
           "31m\n"
           "loghandler = default  größe \"q\"\n"
           "loghandler.größe.level.3 = TRUE\n"
           "logclient = f\n"
           "logclient.f.type = LogClientFile\n"
           "logclient.f.handler = größe\n"
           "logclient.f.parameter.0.name = filename\n"
           "logclient.f.parameter.0.value = a b=c&<d>\n"));
}

TEST_F(LoggerctlShowTest, ShowsNumbersAsTheLibraryReadsThem) {
  XmlConfiguration configuration;
  configuration.levels =
      "<loglevel id=\"4294967295\" name=\"most\"/>\n<loglevel id=\"0\" name=\"zero\"/>\n"
      "<loglevel id=\"2147483648\" name=\"again\"/>\n";
  configuration.handlers =
      "<loghandler name=\"a\"><handlerloglevel level=\"2147483999\" enable=\"1\"/></loghandler>\n";

  EXPECT_EQ(
      "levels\n"
      "  2147483647 most\n"
      "  0 zero\n"
      "\n"
      "handlers\n"
      "  default  all levels on\n"
      "  a        off: 2147483647 most\n"
      "\n"
      "tree\n"
      "  default\n"
      "  a\n"
      "\n"
      "clients\n"
      "  none\n",
      Show(configuration.Text()).output);
  EXPECT_EQ(
      "levels\n"
      "  4294967295 -1\n"
      "  7 07\n"
      "\n"
      "handlers\n"
      "  default  off: 7 07\n"
      "\n"
      "tree\n"
      "  default\n"
      "\n"
      "clients\n"
      "  none\n",
      Show("loglevel = -1 07 7\nloghandler = default\nloghandler.default.level.7 = false\n")
          .output);
}

TEST_F(LoggerctlShowTest, ShowsEveryKindOfClientWithItsParameters) {
  const ProcessResult result = Show(
      "loghandler = default\n"
      "logclient = console file roll socket xml\n"
      "logclient.console.type = LogClientConsole\n"
      "logclient.console.handler = default\n"
      "logclient.file.type = LogClientFile\n"
      "logclient.file.handler = default\n"
      "logclient.file.layout = LogLayoutMessage\n"
      "logclient.file.parameter.0.name = filename\n"
      "logclient.file.parameter.0.value = /nowhere/file.log\n"
      "logclient.file.parameter.1.name = fileappend\n"
      "logclient.file.parameter.1.value = false\n"
      "logclient.file.parameter.2.name = unheard\n"
      "logclient.file.parameter.2.value = of\n"
      "logclient.file.parameter.4.name = behind\n"
      "logclient.file.parameter.4.value = gap\n"
      "logclient.roll.type = LogClientRollingFile\n"
      "logclient.roll.handler = default\n"
      "logclient.roll.layout = LogLayoutExtended\n"
      "logclient.socket.type = LogClientSocket\n"
      "logclient.socket.handler = default\n"
      "logclient.socket.layout = LogLayoutSimple\n"
      "logclient.socket.parameter.0.name = serverip\n"
      "logclient.socket.parameter.0.value = 127.0.0.1\n"
      "logclient.socket.parameter.1.name = serverport\n"
      "logclient.socket.parameter.1.value = 4711\n"
      "logclient.xml.type = LogClientXML\n"
      "logclient.xml.handler = default\n"
      "logclient.xml.parameter.0.name = filename\n"
      "logclient.xml.parameter.0.value = log.xml\n"
      "logclient.xml.parameter.1.name = filename\n"
      "logclient.xml.parameter.1.value = second.xml\n");

  EXPECT_EQ(
      "clients\n"
      "  console: LogClientConsole on default, layout LogLayoutStandard\n"
      "  file: LogClientFile on default, layout LogLayoutMessage\n"
      "      fileappend = false\n"
      "      filename = /nowhere/file.log\n"
      "      unheard = of\n"
      "  roll: LogClientRollingFile on default, layout LogLayoutExtended\n"
      "  socket: LogClientSocket on default\n"
      "      serverip = 127.0.0.1\n"
      "      serverport = 4711\n"
      "  xml: LogClientXML on default\n"
      "      filename = log.xml\n",
      From("clients", result));
}

TEST_F(LoggerctlShowTest, ShowsWhyAClientIsAttachedToNoHandler) {
  ExpectShown(
      "levels\n"
      "  none\n"
      "\n"
      "handlers\n"
      "  default  all levels on\n"
      "\n"
      "tree\n"
      "  default\n"
      "\n"
      "clients\n"
      "  file: LogClientFile, attached to no handler: it needs filename\n"
      "  socket: LogClientSocket, attached to no handler: it needs serverip and serverport\n"
      "      serverip = ::1\n"
      "  xml: LogClientXML, attached to no handler: it needs filename\n"
      "  console: LogClientConsole, attached to no handler: its layout is not known\n",
      Show("logclient = file socket xml console misspelt\n"
           "logclient.file.type = LogClientFile\n"
           "logclient.file.handler = default\n"
           "logclient.socket.type = LogClientSocket\n"
           "logclient.socket.handler = default\n"
           "logclient.socket.parameter.0.name = serverip\n"
           "logclient.socket.parameter.0.value = ::1\n"
           "logclient.xml.type = LogClientXML\n"
           "logclient.xml.handler = default\n"
           "logclient.console.type = LogClientConsole\n"
           "logclient.console.handler = default\n"
           "logclient.console.layout = LogLayoutsimple\n"
           "logclient.misspelt.type = LogClientXml\n"
           "logclient.misspelt.handler = default\n"));
}

TEST_F(LoggerctlShowTest, ShowsThatAClientWritesNothingWithoutItsLayout) {
  XmlConfiguration configuration;
  configuration.clients =
      "<logclient><type type=\"LogClientConsole\"/><clientloghandler handlername=\"a\"/>"
      "<layout layout=\"LogLayoutsimple\"/></logclient>\n";

  EXPECT_EQ(
      "clients\n"
      "  1: LogClientConsole on a, writes nothing: its layout is not known\n",
      From("clients", Show(configuration.Text())));
}

/// Whether the library makes a client of this kind and attaches it, in this very process.
bool IsMade(const std::string& kind, const std::vector<std::pair<std::string, std::string>>& all) {
  LogProperties parameters;
  for (const auto& [name, value] : all) parameters.AddProperty(name, value);
  return Logger::GetLogManager()->GetLogClientFactory()->CreateLogClient(kind, parameters) !=
         nullptr;
}

TEST_F(LoggerctlShowTest, AttachesTheClientsThatTheLibraryAttaches) {
  typedef std::vector<std::pair<std::string, std::string>> Parameters;
  const std::string file = folder_.Path("a.log");
  const std::vector<std::pair<std::string, Parameters>> cases{
      {"LogClientConsole", {}},
      {"LogClientFile", {}},
      {"LogClientFile", {{"filename", file}}},
      {"LogClientRollingFile", {}},
      {"LogClientRollingFile", {{"filename", file}}},
      {"LogClientSocket", {}},
      {"LogClientSocket", {{"serverport", "4711"}}},
      {"LogClientSocket", {{"serverip", "127.0.0.1"}, {"serverport", "x4711"}}},
      {"LogClientSocket", {{"serverip", "127.0.0.1"}, {"serverport", " 0"}}},
      {"LogClientXML", {}},
      {"LogClientXML", {{"filename", file}}}};

  for (const auto& [kind, parameters] : cases) {
    XmlConfiguration configuration;
    configuration.clients =
        "<logclient><type type=\"" + kind + "\"/><clientloghandler handlername=\"a\"/>";
    for (const auto& [name, value] : parameters) {
      configuration.clients += "<parameter name=\"" + name + "\" value=\"" + value + "\"/>";
    }
    configuration.clients += "</logclient>\n";

    const ProcessResult result = Show(configuration.Text());

    EXPECT_EQ(0, result.exitCode);
    const bool isShownAttached = result.output.find("1: " + kind + " on a") != std::string::npos;
    EXPECT_EQ(IsMade(kind, parameters), isShownAttached) << result.output;
  }
}

TEST_F(LoggerctlShowTest, ShowsKindsAndLayoutsOfTheApplicationsOwn) {
  const std::string configuration =
      "logclient = a b\n"
      "logclient.a.type = Pager\n"
      "logclient.a.handler = default\n"
      "logclient.a.layout = Terse\n"
      "logclient.a.parameter.0.name = number\n"
      "logclient.a.parameter.0.value = 112\n"
      "logclient.b.type = Bell[a,b]\n"
      "logclient.b.handler = default\n";

  EXPECT_EQ("clients\n  none\n", From("clients", Show(configuration)));
  EXPECT_EQ(
      "clients\n"
      "  a: Pager on default, layout Terse\n"
      "      number = 112\n"
      "  b: \"Bell[a,b]\" on default, layout LogLayoutStandard\n",
      From("clients",
           Show(configuration, {"--kind", "Pager", "--kind", "Bell[a,b]", "--layout", "Terse"})));
}

TEST_F(LoggerctlShowTest, NamesClientsAfterOthersThatAreNotMade) {
  EXPECT_EQ(
      "clients\n"
      "  second: LogClientConsole on default, layout LogLayoutStandard\n"
      "  \"the\\xc2\\xa0fourth\": LogClientFile on default, layout LogLayoutStandard\n"
      "      filename = a.log\n",
      From("clients", Show("logclient = first second third the\xC2\xA0"
                           "fourth\n"
                           "logclient.first.type = LogClientXml\n"
                           "logclient.first.handler = default\n"
                           "logclient.second.type = LogClientConsole\n"
                           "logclient.second.handler = default\n"
                           "logclient.third.type = LogClientFile\n"
                           "logclient.third.handler = nowhere\n"
                           "logclient.third.parameter.0.name = filename\n"
                           "logclient.third.parameter.0.value = a.log\n"
                           "logclient.the\xC2\xA0"
                           "fourth.type = LogClientFile\n"
                           "logclient.the\xC2\xA0"
                           "fourth.handler = default\n"
                           "logclient.the\xC2\xA0"
                           "fourth.parameter.0.name = filename\n"
                           "logclient.the\xC2\xA0"
                           "fourth.parameter.0.value = a.log\n")));
}

TEST_F(LoggerctlShowTest, ShowsHandlersAndLevelsOfTheApplicationsOwn) {
  EXPECT_EQ(
      "levels\n"
      "  5 5\n"
      "  1 1\n"
      "\n"
      "handlers\n"
      "  default  off: 5 5\n"
      "  appmade  all levels on\n"
      "\n"
      "tree\n"
      "  default\n"
      "  appmade\n"
      "  └── client c: LogClientConsole\n"
      "\n"
      "clients\n"
      "  c: LogClientConsole on appmade, layout LogLayoutStandard\n",
      Show("loglevel = 1\nloghandler = default\nloghandler.default.level.5 = false\n"
           "logclient = c\nlogclient.c.type = LogClientConsole\nlogclient.c.handler = appmade\n",
           {"--handler", "appmade", "--level", "5"})
          .output);
}

TEST_F(LoggerctlShowTest, PrintsTheGraphThatTheGuideHas) {
  ExpectShown(Content(kDocs + "file_survey.dot"),
              ShowFile(kExamples + "file_survey.ini", {"--dot"}));
}

TEST_F(LoggerctlShowTest, IsTheSourceOfTheGuidesPicture) {
  const std::string picture = Content(kDocs + "file_survey.svg");

  for (const char* const text :
       {">trouble</text>", ">off: 3 INFO, 4 DEBUG</text>", ">LogClientRollingFile</text>",
        ">filename = survey.log</text>", "<title>handler2&#45;&gt;client2</title>"}) {
    EXPECT_NE(std::string::npos, picture.find(text)) << text;
  }
}

TEST_F(LoggerctlShowTest, PrintsAGraphOfOddTexts) {
  ExpectShown(
      "digraph system {\n"
      "  rankdir=LR;\n"
      "  ordering=out;\n"
      "  node [shape=box, fontname=\"sans-serif\", fontsize=11];\n"
      "  levels [shape=plaintext, label=\"levels\\l1 \\\"A&amp;lt; \\\\\\\"B\\\\\\\"\\\"\\l\"];\n"
      "  handler1 [style=\"rounded,filled\", fillcolor=\"#dbe9f6\", label=\"default\\l\"];\n"
      "  handler2 [style=\"rounded,filled\", fillcolor=\"#dbe9f6\", "
      "label=\"\\\"\\\\\\\\l\\\"\\l\"];\n"
      "  client1 [style=dashed, label=\"LogClientFile\\lattached to no handler: it needs "
      "filename\\l\"];\n"
      "  handler2 -> handler2;\n"
      "}\n",
      Show("loglevel = 1\n"
           "loglevel.1.name = A&lt; \"B\"\n"
           "loghandler = \\l\n"
           "loghandler.\\l.child = \\l\n"
           "logclient = f\n"
           "logclient.f.type = LogClientFile\n"
           "logclient.f.handler = default\n",
           {"--dot"}));
}

TEST_F(LoggerctlShowTest, PrintsAGraphWithoutLevels) {
  ExpectShown(
      "digraph system {\n"
      "  rankdir=LR;\n"
      "  ordering=out;\n"
      "  node [shape=box, fontname=\"sans-serif\", fontsize=11];\n"
      "  levels [shape=plaintext, label=\"no levels\\l\"];\n"
      "  handler1 [style=\"rounded,filled\", fillcolor=\"#dbe9f6\", label=\"default\\l\"];\n"
      "}\n",
      Show("", {"--dot"}));
}

TEST_F(LoggerctlShowTest, ReportsAFileThatCannotBeUsed) {
  const std::string missing = folder_.Path("missing.ini");
  const std::string file = folder_.Path("configuration");

  ExpectUnusable("loggerctl: " + missing + ": No such file or directory\n", ShowFile(missing));
  ExpectUnusable("loggerctl: " + folder_.Path() + ": Is a directory\n", ShowFile(folder_.Path()));
  ExpectUnusable("loggerctl: " + file + ": logging is switched off there (logging = false)\n",
                 Show("logging = false\nloglevel = 1\n"));
  ExpectUnusable("loggerctl: " + file +
                     ": line 2: the line has 512 bytes and may have 511; the file cannot be read "
                     "because of it; shorten it\n",
                 Show("a = b\n" + std::string(512, 'x') + "\n"));
  ExpectUnusable(
      "loggerctl: " + file +
          ": line 1: the document is a 'type': nothing is configured; put it into 'configlogger'\n",
      Show("<type type=\"LogClientFile\"/>"));
}

TEST_F(LoggerctlShowTest, ReportsADocumentThatIsNotValid) {
  const ProcessResult result = Show("<configlogger>\n</configlogger>\n");

  EXPECT_EQ("", result.output);
  EXPECT_NE(std::string::npos,
            result.errors.find("loggerctl: " + folder_.Path("configuration") + ": line 1: "))
      << result.errors;
  EXPECT_EQ(2, result.exitCode);
}

TEST_F(LoggerctlShowTest, RefusesADocumentWithAPartOnTheNetwork) {
  XmlConfiguration configuration;
  configuration.prologue =
      "<!DOCTYPE configlogger [<!ENTITY more SYSTEM \"http://127.0.0.1:9/more\">]>\n";
  configuration.tree = "&more;\n";

  ExpectUnusable("loggerctl: " + folder_.Path("configuration") +
                     ": names http://127.0.0.1:9/more, and nothing is fetched from the "
                     "network\n",
                 Show(configuration.Text()));
}

TEST_F(LoggerctlShowTest, ReadsADocumentsPartsFromOtherFiles) {
  WriteFile(folder_.Path("levels"), "<loglevel id=\"5\" name=\"FIVE\"/>");
  XmlConfiguration configuration;
  configuration.prologue = "<!DOCTYPE configlogger [<!ENTITY levels SYSTEM \"levels\">]>\n";
  configuration.levels = "&levels;\n";

  const ProcessResult result = Show(configuration.Text());

  EXPECT_EQ("levels\n  5 FIVE\n", result.output.substr(0, 16)) << result.errors;
  EXPECT_EQ(0, result.exitCode);
}

TEST_F(LoggerctlShowTest, RefusesAWrongCommandLine) {
  const std::string file = kExamples + "hello.ini";
  for (const Words& words : {Words{}, Words{file, file}, Words{file, "--svg"}, Words{"", "--dot"},
                             Words{file, "--kind"}}) {
    const ProcessResult result = RunProgram(Words{LOGGERCTL, "show"} + words);

    EXPECT_EQ("", result.output);
    EXPECT_NE("", result.errors);
    EXPECT_EQ(2, result.exitCode);
  }
}

TEST_F(LoggerctlShowTest, RefusesMoreKindsThanItCanStandInFor) {
  Words kinds;
  for (int number = 0; number < 60; ++number) {
    kinds = kinds + Words{"--kind", "K" + std::to_string(number)};
  }

  ExpectUnusable("loggerctl: there are more than 64 kinds or layouts\n", Show("", kinds));
}

TEST_F(LoggerctlShowTest, ReportsThatStandardOutputCannotBeWritten) {
  ExpectUnusable("loggerctl: standard output could not be written\n",
                 RunProgram({"sh", "-c", "exec \"$@\" > /dev/full", "sh", LOGGERCTL, "show",
                             kExamples + "hello.ini"}));
}

TEST_F(LoggerctlShowTest, HelpsOnStandardOutput) {
  const ProcessResult result = RunProgram({LOGGERCTL, "show", "--help"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.errors);
  for (const char* const part : {"FILE", "--dot", "--kind", "--layout", "Exit code: 0", "2 the"}) {
    EXPECT_NE(std::string::npos, result.output.find(part)) << part;
  }
}

}  // namespace

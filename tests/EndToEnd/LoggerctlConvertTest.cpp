#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/ShownSystem.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlConfiguration.h"

namespace {

typedef std::vector<std::string> Words;

const std::string kExamples = PROJECT_FOLDER "/examples/";

class LoggerctlConvertTest : public testing::Test {
 protected:
  std::string File(const std::string& content) const {
    WriteFile(file_, content);
    return file_;
  }

  static ProcessResult ConvertFile(const std::string& file, const std::string& form) {
    return RunProgram({LOGGERCTL, "convert", file, "--to", form});
  }

  ProcessResult Convert(const std::string& configuration, const std::string& form) const {
    return ConvertFile(File(configuration), form);
  }

  /// The line about something that is not converted.
  std::string At(int line, const std::string& text) const {
    return file_ + ":" + std::to_string(line) + ": error: " + text + "\n";
  }

  TemporaryFolder folder_;
  const std::string file_ = folder_.Path("configuration");
};

void ExpectConverted(const std::string& output, const ProcessResult& result) {
  EXPECT_EQ(output, result.output);
  EXPECT_EQ("", result.errors);
  EXPECT_EQ(0, result.exitCode);
}

void ExpectUnusable(const std::string& errors, const ProcessResult& result) {
  EXPECT_EQ("", result.output);
  EXPECT_EQ(errors, result.errors);
  EXPECT_EQ(2, result.exitCode);
}

constexpr const char* kXmlExample =
    "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
    "<configlogger>\n"
    "  <logging enable=\"true\"/>\n"
    "  <loglevel id=\"1\" name=\"ERROR\"/>\n"
    "  <loglevel id=\"2\" name=\"WARNING\"/>\n"
    "  <loglevel id=\"3\" name=\"INFO\"/>\n"
    "  <loglevel id=\"4\" name=\"DEBUG\"/>\n"
    "  <loghandler name=\"default\"/>\n"
    "  <loghandler name=\"net\">\n"
    "    <handlerloglevel level=\"4\" enable=\"false\"/>\n"
    "  </loghandler>\n"
    "  <logclient>\n"
    "    <type type=\"LogClientConsole\"/>\n"
    "    <clientloghandler handlername=\"default\"/>\n"
    "    <layout layout=\"LogLayoutSimple\"/>\n"
    "  </logclient>\n"
    "  <logclient>\n"
    "    <type type=\"LogClientRollingFile\"/>\n"
    "    <clientloghandler handlername=\"net\"/>\n"
    "    <parameter name=\"filename\" value=\"app.log\"/>\n"
    "    <parameter name=\"filesize\" value=\"100000\"/>\n"
    "    <parameter name=\"maxbackup\" value=\"3\"/>\n"
    "    <layout layout=\"LogLayoutStandard\"/>\n"
    "  </logclient>\n"
    "  <logtree>\n"
    "    <loghandler name=\"default\">\n"
    "      <loghandler name=\"net\"/>\n"
    "    </loghandler>\n"
    "  </logtree>\n"
    "</configlogger>\n";

TEST_F(LoggerctlConvertTest, WritesAnXmlConfiguration) {
  ExpectConverted(kXmlExample, ConvertFile(kExamples + "worked_example.ini", "xml"));
}

TEST_F(LoggerctlConvertTest, WritesAPropertiesFile) {
  ExpectConverted(
      "loglevel = 1 2 3 4\n"
      "loglevel.1.name = ERROR\n"
      "loglevel.2.name = WARNING\n"
      "loglevel.3.name = INFO\n"
      "loglevel.4.name = DEBUG\n"
      "\n"
      "loghandler = default net\n"
      "loghandler.default.child = net\n"
      "loghandler.net.level.4 = false\n"
      "\n"
      "logclient = 1 2\n"
      "\n"
      "logclient.1.type = LogClientConsole\n"
      "logclient.1.handler = default\n"
      "logclient.1.layout = LogLayoutSimple\n"
      "\n"
      "logclient.2.type = LogClientRollingFile\n"
      "logclient.2.handler = net\n"
      "logclient.2.parameter.0.name = filename\n"
      "logclient.2.parameter.0.value = app.log\n"
      "logclient.2.parameter.1.name = filesize\n"
      "logclient.2.parameter.1.value = 100000\n"
      "logclient.2.parameter.2.name = maxbackup\n"
      "logclient.2.parameter.2.value = 3\n"
      "logclient.2.layout = LogLayoutStandard\n",
      ConvertFile(kExamples + "worked_example.xml", "ini"));
}

TEST_F(LoggerctlConvertTest, WritesAFile) {
  const std::string output = folder_.Path("out.xml");

  ExpectConverted("", RunProgram({LOGGERCTL, "convert", "-o", output, "--to", "xml",
                                  kExamples + "worked_example.ini"}));

  EXPECT_EQ(kXmlExample, Content(output));
}

TEST_F(LoggerctlConvertTest, EscapesWhatIsSpecialInXml) {
  ExpectConverted(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<configlogger>\n"
      "  <logging enable=\"true\"/>\n"
      "  <loglevel id=\"1\" name=\" &lt;A&gt; &amp; &quot;B's&quot; \"/>\n"
      "  <loghandler name=\"&lt;größe&gt;\"/>\n"
      "  <loghandler name=\"default\"/>\n"
      "  <logclient>\n"
      "    <type type=\"Own&amp;Kind\"/>\n"
      "    <clientloghandler handlername=\"&lt;größe&gt;\"/>\n"
      "    <parameter name=\"a=b\" value=\"tab&#9;return&#13;&amp;amp;\"/>\n"
      "  </logclient>\n"
      "  <logtree>\n"
      "    <loghandler name=\"default\"/>\n"
      "  </logtree>\n"
      "</configlogger>\n",
      Convert("loglevel = 1\n"
              "loglevel.1.name = \" <A> & \"B's\" \"\n"
              "loghandler = <größe>\n"
              "logclient = c\n"
              "logclient.c.type = Own&Kind\n"
              "logclient.c.handler = <größe>\n"
              "logclient.c.parameter.0.name = a=b\n"
              "logclient.c.parameter.0.value = tab\treturn\r&amp;\n",
              "xml"));
}

TEST_F(LoggerctlConvertTest, QuotesWhatAPropertiesFileWouldTrim) {
  XmlConfiguration configuration;
  configuration.levels =
      "<loglevel id=\"1\" name=\" before\"/>\n<loglevel id=\"2\" name=\"behind&#9;\"/>\n"
      "<loglevel id=\"3\" name=\"&quot;quoted&quot;\"/>\n<loglevel id=\"4\" name=\"&quot;\"/>\n"
      "<loglevel id=\"5\" name=\"in side\"/>\n<loglevel id=\"6\" name=\"a=&quot;b&quot;\"/>\n"
      "<loglevel id=\"7\" name=\" \"/>\n<loglevel id=\"8\" name=\"8\"/>\n"
      "<loglevel id=\"9\" name=\"&lt;ü&amp;&gt;\"/>\n";
  configuration.handlers = "<loghandler name=\"&quot;a\"/><loghandler name=\"b=c\"/>\n";
  configuration.clients =
      "<logclient><type type=\"Own\"/><clientloghandler handlername=\"b=c\"/>"
      "<parameter name=\" p\" value=\" v=w \"/></logclient>\n";
  configuration.tree = "<logtree><loghandler name=\"default\"/></logtree>\n";

  ExpectConverted(
      "loglevel = 1 2 3 4 5 6 7 8 9\n"
      "loglevel.1.name = \" before\"\n"
      "loglevel.2.name = \"behind\t\"\n"
      "loglevel.3.name = \"\"quoted\"\"\n"
      "loglevel.4.name = \"\"\"\n"
      "loglevel.5.name = in side\n"
      "loglevel.6.name = a=\"b\"\n"
      "loglevel.7.name = \" \"\n"
      "loglevel.9.name = <ü&>\n"
      "\n"
      "loghandler = \"\"a b=c\"\n"
      "\n"
      "logclient = 1\n"
      "\n"
      "logclient.1.type = Own\n"
      "logclient.1.handler = b=c\n"
      "logclient.1.parameter.0.name = \" p\"\n"
      "logclient.1.parameter.0.value = \" v=w \"\n",
      Convert(configuration.Text(), "ini"));
}

TEST_F(LoggerctlConvertTest, FillsInWhatAnXmlConfigurationMustHaveWithoutEffect) {
  ExpectConverted(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<configlogger>\n"
      "  <logging enable=\"true\"/>\n"
      "  <loglevel id=\"5\" name=\"05\"/>\n"
      "  <loghandler name=\"default\"/>\n"
      "  <!-- Without effect: there must be a client. -->\n"
      "  <logclient>\n"
      "    <type type=\"LogClientFile\"/>\n"
      "    <clientloghandler handlername=\"none\"/>\n"
      "  </logclient>\n"
      "  <logtree>\n"
      "    <loghandler name=\"default\"/>\n"
      "  </logtree>\n"
      "</configlogger>\n",
      Convert("loglevel = 05\n", "xml"));
}

TEST_F(LoggerctlConvertTest, ListsTheDefaultHandlerWhenItHasChildren) {
  XmlConfiguration configuration;
  configuration.tree =
      "<logtree><loghandler name=\"default\"><loghandler name=\"b\"/>"
      "</loghandler></logtree>\n";

  ExpectConverted(
      "loglevel = 1 2\n"
      "loglevel.1.name = ERROR\n"
      "loglevel.2.name = INFO\n"
      "\n"
      "loghandler = default a b\n"
      "loghandler.default.child = b\n"
      "\n"
      "logclient = 1\n"
      "\n"
      "logclient.1.type = ConfiguredClient\n"
      "logclient.1.handler = a\n",
      Convert(configuration.Text(), "ini"));
}

TEST_F(LoggerctlConvertTest, CarriesOverThatLoggingIsSwitchedOff) {
  XmlConfiguration configuration;
  configuration.logging = "<logging enable=\"false\"/>\n";
  const ProcessResult ini = Convert(configuration.Text(), "ini");
  EXPECT_EQ("logging = false\n\nloglevel = 1 2\n", ini.output.substr(0, 32));
  EXPECT_EQ(0, ini.exitCode);

  const ProcessResult xml = Convert("logging = false\nloglevel = 1\n", "xml");
  EXPECT_NE(std::string::npos, xml.output.find("<logging enable=\"false\"/>")) << xml.output;
  EXPECT_EQ(0, xml.exitCode);

  configuration.logging = "<logging enable=\"0\"/>\n";  // Which leaves it on.
  EXPECT_EQ("loglevel = 1 2\n", Convert(configuration.Text(), "ini").output.substr(0, 15));
}

TEST_F(LoggerctlConvertTest, WritesATreeWithCyclesAndSeveralWays) {
  const std::string output = Convert(
                                 "loglevel = 1\n"
                                 "loghandler = a b c d\n"
                                 "loghandler.a.child = c b nowhere\n"
                                 "loghandler.b.child = c\n"
                                 "loghandler.c.child = d c\n"
                                 "loghandler.d.child = c\n",
                                 "xml")
                                 .output;

  EXPECT_NE(std::string::npos, output.find("  <logtree>\n"
                                           "    <loghandler name=\"a\">\n"
                                           "      <loghandler name=\"c\">\n"
                                           "        <loghandler name=\"d\">\n"
                                           "          <loghandler name=\"c\"/>\n"
                                           "        </loghandler>\n"
                                           "        <loghandler name=\"c\"/>\n"
                                           "      </loghandler>\n"
                                           "      <loghandler name=\"b\">\n"
                                           "        <loghandler name=\"c\"/>\n"
                                           "      </loghandler>\n"
                                           "      <loghandler name=\"nowhere\"/>\n"
                                           "    </loghandler>\n"
                                           "  </logtree>\n"))
      << output;
}

TEST_F(LoggerctlConvertTest, ReportsWhatAnXmlConfigurationCannotSay) {
  const ProcessResult result = Convert(
      "loglevel = 1 2 -1 x 02\n"
      "loglevel.1.name = bell\a\n"
      "loglevel.2.name = gr\xF6\xDF"
      "er\n"
      "loghandler = default  a\x01 c\n"
      "loghandler.default.child = a\x01 c\n"
      "loghandler.a\x01.child = c\n"
      "loghandler.default.level.4294967295 = false\n"
      "logclient = typeless handlerless odd p layout\n"
      "logclient.typeless.handler = default\n"
      "logclient.handlerless.type = LogClientFile\n"
      "logclient.odd.type = LogClientConsole\n"
      "logclient.odd.handler = a\x01\n"
      "logclient.p.type = LogClientConsole\n"
      "logclient.p.handler = default\n"
      "logclient.p.parameter.0.name = one\n"
      "logclient.p.parameter.0.value = \xFF\n"
      "logclient.p.parameter.1.name = two\n"
      "logclient.p.parameter.1.value = \xEF\xBF\xBE\n"
      "logclient.p.parameter.2.name = three\n"
      "logclient.p.parameter.2.value = said\n"
      "logclient.layout.type = LogClientConsole\n"
      "logclient.layout.handler = default\n"
      "logclient.layout.layout = Mine\n",
      "xml");

  EXPECT_EQ(
      At(1,
         "level 'x' is no number, and is skipped; list a number from 1 to 2147483647, and name it "
         "in loglevel.NUMBER.name") +
          At(1, "level '02' is the same as '2'; only the first one counts; remove one of the two") +
          At(1, "level 4294967295 is left out: numbers in an XML configuration end at 2147483647") +
          At(2, "name 'bell\\x07' of level 1 is left out: it is no text that XML can hold") +
          At(3, "name 'gr\\xf6\\xdfer' of level 2 is left out: it is no text that XML can hold") +
          At(4,
             "two blanks in a row, or one at an end of the list, make an item without a name in "
             "'loghandler'; separate the items by single blanks") +
          At(4, "handler 'a\\x01' with its switches is left out: it is no text that XML can hold") +
          At(5,
             "child 'a\\x01' of handler 'default' is left out: it is no text that XML can hold") +
          At(6, "what is below handler 'a\\x01' is left out: it is no text that XML can hold") +
          At(8,
             "client 'typeless' has no type, and is left out; give it one: LogClientConsole, "
             "LogClientFile, LogClientRollingFile, LogClientSocket or LogClientXML") +
          At(10,
             "client 'handlerless' has no handler, and is left out; name the handler that it is "
             "attached to") +
          At(12, "client 'odd' is left out: it is no text that XML can hold") +
          At(16, "parameter 'one' of client 'p' is left out: it is no text that XML can hold") +
          At(18, "parameter 'two' of client 'p' is left out: it is no text that XML can hold") +
          At(23,
             "there is no layout 'Mine': client 'layout' is attached to its handler by an XML "
             "configuration only; if the application registers it: --layout Mine"),
      result.errors);
  EXPECT_EQ(
      "<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n"
      "<configlogger>\n"
      "  <logging enable=\"true\"/>\n"
      "  <loglevel id=\"1\" name=\"1\"/>\n"
      "  <loglevel id=\"2\" name=\"2\"/>\n"
      "  <loghandler name=\"default\"/>\n"
      "  <loghandler name=\"c\"/>\n"
      "  <logclient>\n"
      "    <type type=\"LogClientConsole\"/>\n"
      "    <clientloghandler handlername=\"default\"/>\n"
      "    <parameter name=\"three\" value=\"said\"/>\n"
      "  </logclient>\n"
      "  <logclient>\n"
      "    <type type=\"LogClientConsole\"/>\n"
      "    <clientloghandler handlername=\"default\"/>\n"
      "    <layout layout=\"Mine\"/>\n"
      "  </logclient>\n"
      "  <logtree>\n"
      "    <loghandler name=\"default\">\n"
      "      <loghandler name=\"c\"/>\n"
      "    </loghandler>\n"
      "  </logtree>\n"
      "</configlogger>\n",
      result.output);
  EXPECT_EQ(1, result.exitCode);
}

TEST_F(LoggerctlConvertTest, ReportsWhatAPropertiesFileCannotSay) {
  XmlConfiguration configuration;
  configuration.levels =
      "<loglevel id=\"0\" name=\"zero\"/><loglevel id=\"1\" name=\"A#1\"/>"
      "<loglevel id=\"2\" name=\"two&#10;lines\"/><loglevel id=\"2\" name=\"again\"/>\n";
  configuration.handlers =
      "<loghandler name=\"two words\"/><loghandler name=\"a=b\"><handlerloglevel level=\"1\" "
      "enable=\"false\"/></loghandler><loghandler name=\"c\"><loghandler name=\"d\"/>"
      "</loghandler>"
      "<defaultloghandler><handlerloglevel level=\"1\" enable=\"false\"/></defaultloghandler>\n";
  configuration.clients =
      "<logclient><type type=\"LogClientFile\"/><clientloghandler handlername=\"c\"/>"
      "<parameter name=\"filename\" value=\"a#b.log\"/><parameter name=\"fileappend\" "
      "value=\"false\"/></logclient>"
      "<logclient><type type=\"Own#\"/><clientloghandler handlername=\"c\"/></logclient>"
      "<logclient><type type=\"Own\"/><clientloghandler handlername=\"c\"/>"
      "<layout layout=\"Mine\"/></logclient>\n";
  configuration.tree =
      "<logtree><loghandler name=\"c\"><loghandler name=\"two words\"/></loghandler>"
      "<loghandler name=\"a=b\"><loghandler name=\"c\"/></loghandler>"
      "<loghandler name=\"nowhere\"><loghandler name=\"c\"/></loghandler></logtree>\n";

  const ProcessResult result = Convert(configuration.Text(), "ini");

  EXPECT_EQ(
      At(4, "level '2' is given twice; only the first one counts; remove one of the two") +
          At(4, "level '0' is left out: a properties file cannot register the number 0") +
          At(4, "name 'A#1' of level 1 is left out: '#' starts a comment in a properties file") +
          At(4,
             "name 'two\\nlines' of level 2 is left out: a line feed ends a line of a properties "
             "file") +
          At(5,
             "handler 'd' is ignored here: handlers are nested within 'logtree' only; make it "
             "beside this one, and nest it in 'logtree'") +
          At(5,
             "'defaultloghandler' has no effect; write <loghandler name=\"default\"> with the "
             "switches in it") +
          At(5,
             "handler 'two words' with its switches and children is left out: a blank separates "
             "the names of a list in a properties file") +
          At(5,
             "the switch of level '1' on handler 'a=b' is left out: '=' ends a key in a properties "
             "file") +
          At(6,
             "there is no layout 'Mine': the client is attached to its handler by an XML "
             "configuration only; if the application registers it: --layout Mine") +
          At(6, "the client is left out: '#' starts a comment in a properties file") +
          At(6,
             "parameter 'filename' of the client is left out: '#' starts a comment in a "
             "properties file") +
          At(7,
             "handler 'nowhere' does not exist, and is left out of the tree with all below it; "
             "make it with a 'loghandler' before the clients (if the application makes it: "
             "--handler "
             "nowhere)") +
          At(7, "child 'c' of handler 'a=b' is left out: '=' ends a key in a properties file") +
          At(7,
             "child 'two words' of handler 'c' is left out: a blank separates the names of a list "
             "in a properties file"),
      result.errors);
  EXPECT_EQ(
      "loglevel = 1 2\n"
      "\n"
      "loghandler = a=b c\n"
      "\n"
      "logclient = 1 2\n"
      "\n"
      "logclient.1.type = LogClientFile\n"
      "logclient.1.handler = c\n"
      "logclient.1.parameter.0.name = fileappend\n"
      "logclient.1.parameter.0.value = false\n"
      "\n"
      "logclient.2.type = Own\n"
      "logclient.2.handler = c\n"
      "logclient.2.layout = Mine\n",
      result.output);
  EXPECT_EQ(1, result.exitCode);
}

TEST_F(LoggerctlConvertTest, ReportsWhatTheLibraryReadsNowhere) {
  const ProcessResult result = Convert(
      "loging = false\n"
      "loglevel = 1\n"
      "loghandler = default\n"
      "loghandler.default.level.5 = false\n"
      "logclient = f\n"
      "logclient.f.type = LogClientFile\n"
      "logclient.f.handler = default\n"
      "logclient.f.parameter.1.name = filename\n"
      "logclient.f.parameter.1.value = app.log\n"
      "logclient.f.parameter.2.name = fileappend\n"
      "logclient.f.parameter.2.value = false\n"
      "no pair\n",
      "xml");

  const std::string unread =
      " of client 'f' is not read: parameters end where the next number from 0 is missing; number "
      "the parameters 0, 1, 2, ... without a gap";
  EXPECT_EQ(At(1, "key 'loging' is read by nothing; did you mean 'logging'?") +
                At(4,
                   "level '5' is not in the list 'loglevel': the switch is not read; add it to the "
                   "list, or remove the line (if the application registers it: --level 5)") +
                At(8, "parameter '1'" + unread) + At(10, "parameter '2'" + unread) +
                At(12,
                   "there is no '=' in the line, which is ignored; write key = value, or # before "
                   "a comment"),
            result.errors);
  EXPECT_NE(std::string::npos, result.output.find("<type type=\"LogClientFile\"/>"));
  EXPECT_EQ(std::string::npos, result.output.find("parameter"));
  EXPECT_EQ(1, result.exitCode);
}

TEST_F(LoggerctlConvertTest, ConvertsWhatTheApplicationRegisters) {
  const ProcessResult result =
      RunProgram({LOGGERCTL, "convert", "--to", "xml", "--level", "5", "--layout", "Mine",
                  File("loglevel = 1\nloghandler = default\nloghandler.default.level.5 = false\n"
                       "logclient = c\nlogclient.c.type = LogClientConsole\n"
                       "logclient.c.handler = default\nlogclient.c.layout = Mine\n")});

  EXPECT_EQ("", result.errors);
  EXPECT_NE(std::string::npos,
            result.output.find("<handlerloglevel level=\"5\" enable=\"false\"/>"));
  EXPECT_EQ(0, result.exitCode);
}

TEST_F(LoggerctlConvertTest, ReportsChildrenOfAHandlerThatTheApplicationMakes) {
  XmlConfiguration configuration;
  configuration.tree =
      "<logtree><loghandler name=\"own\"><loghandler name=\"a\"/></loghandler></logtree>\n";

  const ProcessResult result = RunProgram(
      {LOGGERCTL, "convert", "--to", "ini", "--handler", "own", File(configuration.Text())});

  EXPECT_EQ(At(9,
               "child 'a' of handler 'own' is left out: a properties file has children of the "
               "handlers in its list only"),
            result.errors);
  EXPECT_EQ(1, result.exitCode);
}

TEST_F(LoggerctlConvertTest, NeverOverwritesTheFileThatItConverts) {
  const std::string content = "loglevel = 1\n";
  File(content);
  const std::string symbolic = folder_.Path("symbolic");
  const std::string hard = folder_.Path("hard");
  std::filesystem::create_symlink(file_, symbolic);
  std::filesystem::create_hard_link(file_, hard);

  for (const std::string& output : {file_, folder_.Path("./configuration"), symbolic, hard}) {
    ExpectUnusable("loggerctl: " + output + ": is the file to convert, and is not overwritten\n",
                   RunProgram({LOGGERCTL, "convert", file_, "--to", "xml", "-o", output}));
    EXPECT_EQ(content, Content(file_));
  }
}

TEST_F(LoggerctlConvertTest, KeepsLinesOfAPropertiesFileWithinTheirLimit) {
  const std::string key = "logclient.1.parameter.0.value = ";
  const std::string longest(511 - key.size(), 'v');
  XmlConfiguration configuration;
  configuration.clients =
      "<logclient><type type=\"Own\"/><clientloghandler handlername=\"a\"/>"
      "<parameter name=\"fits\" value=\"" +
      longest + "\"/><parameter name=\"not\" value=\"" + longest + "v\"/></logclient>\n";

  const ProcessResult result = Convert(configuration.Text(), "ini");

  EXPECT_EQ(
      At(8, "parameter 'not' of the client is left out: its line would be longer than 511 bytes"),
      result.errors);
  EXPECT_NE(std::string::npos, result.output.find("\n" + key + longest + "\n"));
  EXPECT_EQ(0, RunProgram({LOGGERCTL, "show", File(result.output)}).exitCode);
}

TEST_F(LoggerctlConvertTest, ReportsWhichHandlersAListHasNoRoomFor) {
  XmlConfiguration configuration;
  for (int number = 10; number < 60; ++number) {
    configuration.handlers += "<loghandler name=\"handler" + std::to_string(number) + "\"/>\n";
  }

  const ProcessResult result = Convert(configuration.Text(), "ini");

  // "loghandler = " and room for quotes take 15 bytes, "a b" 3; each other one takes 10.
  EXPECT_NE(std::string::npos, result.output.find(" handler58\n")) << result.output;
  EXPECT_EQ(At(57,
               "handler 'handler59' with its switches and children is left out: the line of its "
               "list would be longer than 511 bytes"),
            result.errors);
  EXPECT_EQ(0, RunProgram({LOGGERCTL, "show", File(result.output)}).exitCode);
}

TEST_F(LoggerctlConvertTest, RefusesToWriteADocumentWithoutLevels) {
  const std::string reason =
      file_ + ": error: an XML configuration must register a level, and there is none to write\n";

  ExpectUnusable(reason, Convert("loghandler = a\n", "xml"));
  ExpectUnusable(
      reason +
          At(1, "level 4294967295 is left out: numbers in an XML configuration end at 2147483647"),
      Convert("loglevel = -1\n", "xml"));
}

TEST_F(LoggerctlConvertTest, ReportsWhatCannotBeUsed) {
  const std::string ini = kExamples + "hello.ini";
  const std::string xml = kExamples + "worked_example.xml";
  const std::string missing = folder_.Path("missing.ini");
  const std::string output = folder_.Path("missing/out.xml");

  ExpectUnusable("loggerctl: " + missing + ": No such file or directory\n",
                 ConvertFile(missing, "xml"));
  ExpectUnusable("loggerctl: " + ini + ": has that form already\n", ConvertFile(ini, "ini"));
  ExpectUnusable("loggerctl: " + xml + ": has that form already\n", ConvertFile(xml, "xml"));
  ExpectUnusable("loggerctl: " + output + ": No such file or directory\n",
                 RunProgram({LOGGERCTL, "convert", ini, "--to", "xml", "-o", output}));
  ExpectUnusable(
      "loggerctl: " + file_ +
          ": line 1: the line has 512 bytes and may have 511; the file cannot be read because of "
          "it; shorten it\n",
      Convert(std::string(512, 'x'), "xml"));
  ExpectUnusable("loggerctl: " + file_ +
                     ": line 1: the document is a 'layout': nothing is configured; put it into "
                     "'configlogger'\n",
                 Convert("<layout layout=\"x\"/>", "ini"));
  ExpectUnusable("loggerctl: standard output could not be written\n",
                 RunProgram({"sh", "-c", "exec \"$@\" > /dev/full", "sh", LOGGERCTL, "convert", ini,
                             "--to", "xml"}));
}

TEST_F(LoggerctlConvertTest, RefusesADocumentWithAPartOnTheNetwork) {
  XmlConfiguration configuration;
  configuration.prologue =
      "<!DOCTYPE configlogger [<!ENTITY more SYSTEM \"http://127.0.0.1:9/more\">]>\n";
  configuration.clients += "&more;\n";

  ExpectUnusable("loggerctl: " + file_ +
                     ": names http://127.0.0.1:9/more, and nothing is fetched from the network\n",
                 Convert(configuration.Text(), "ini"));
}

TEST_F(LoggerctlConvertTest, LeavesTheOutputFileAloneWhenNothingIsWritten) {
  const std::string output = folder_.Path("out.xml");
  WriteFile(output, "kept");

  RunProgram({LOGGERCTL, "convert", File("loghandler = a\n"), "--to", "xml", "-o", output});

  EXPECT_EQ("kept", Content(output));
}

TEST_F(LoggerctlConvertTest, RefusesAWrongCommandLine) {
  const std::string file = kExamples + "hello.ini";
  for (const Words& words :
       {Words{}, Words{file}, Words{"--to", "xml"}, Words{file, "--to"},
        Words{file, "--to", "json"}, Words{file, "--to", "1"}, Words{file, file, "--to", "xml"}}) {
    Words command{LOGGERCTL, "convert"};
    command.insert(command.end(), words.begin(), words.end());
    const ProcessResult result = RunProgram(command);

    EXPECT_EQ("", result.output);
    EXPECT_NE("", result.errors);
    EXPECT_EQ(2, result.exitCode);
  }
}

TEST_F(LoggerctlConvertTest, HelpsOnStandardOutput) {
  const ProcessResult result = RunProgram({LOGGERCTL, "convert", "--help"});

  EXPECT_EQ(0, result.exitCode);
  EXPECT_EQ("", result.errors);
  for (const char* const part : {"FILE", "--to", "ini,xml", "--output", "Comments", "Exit code: 0",
                                 "1 it was written", "2 nothing was written"}) {
    EXPECT_NE(std::string::npos, result.output.find(part)) << part;
  }
}

/// Makes configurations at random. Tame ones say only what both forms can say; wild ones anything.
class Generator {
 public:
  Generator(unsigned int seed, bool isWild) : random_(seed), isWild_(isWild) {}

  std::string Ini() {
    longest_ = 455;  // With its key it is not longer than a line may be.
    text_.clear();
    said_.clear();
    Line("loglevel", List(IniLevels()));
    for (const std::string& level : levels_) {
      if (Chance(70)) Line("loglevel." + level + ".name", Quoted(Text()));
    }
    ChooseHandlers();
    if (Chance(10)) handlers_.clear();
    if (!handlers_.empty()) Line("loghandler", List(handlers_));
    for (const std::string& handler : handlers_) IniHandler(handler);
    if (!handlers_.empty() && Chance(30)) IniSwitch("default");
    std::vector<std::string> clients;
    for (int number = 0, count = Number(0, 5); number < count; ++number) {
      clients.push_back("c" + std::to_string(number));
    }
    if (isWild_ && Chance(20)) clients.emplace_back(Chance(50) ? "" : "c0");
    Line("logclient", List(clients));
    for (const std::string& client : clients) IniClient("logclient." + client);
    return text_;
  }

  std::string Xml() {
    said_.clear();
    ChooseHandlers();
    text_ = "<?xml version=\"1.0\"?>\n<configlogger><logging enable=\"true\"/>\n";
    for (const std::string& level : XmlLevels()) {
      text_ += "<loglevel id=\"" + level + "\" name=" + Attribute(Text()) + "/>\n";
    }
    if (handlers_.empty()) handlers_.emplace_back("default");
    for (const std::string& handler : handlers_) XmlHandler(handler);
    if (Chance(30)) XmlHandler(AnyOf(handlers_));
    if (isWild_ && Chance(10)) {
      text_ +=
          "<defaultloghandler><handlerloglevel level=\"1\" enable=\"0\"/></defaultloghandler>\n";
    }
    for (int number = 0, count = Number(1, 5); number < count; ++number) XmlClient();
    text_ += "<logtree>";
    for (int number = 0, count = Number(1, 3); number < count; ++number) {
      XmlBranch(isWild_ ? SomeHandler() : AnyOf(handlers_), 0);
    }
    return text_ + "</logtree>\n</configlogger>\n";
  }

 private:
  std::mt19937 random_;
  const bool isWild_;
  int longest_ = 520;
  std::string text_;
  std::vector<std::string> levels_;
  std::vector<std::string> handlers_;
  std::set<std::string> said_;

  /// A tame file says nothing twice.
  bool MayBeSaid(const std::string& key) { return said_.insert(key).second || isWild_; }

  int Number(int least, int most) {
    return least + static_cast<int>(random_() % static_cast<unsigned int>(most - least + 1));
  }
  bool Chance(int percent) { return Number(1, 100) <= percent; }
  std::string AnyOf(const std::vector<std::string>& all) {
    return all[static_cast<std::size_t>(Number(0, static_cast<int>(all.size()) - 1))];
  }

  std::string TextOf(const std::vector<std::string>& pieces) {
    std::string text;
    for (int number = 0, count = Number(1, 8); number < count; ++number) text += AnyOf(pieces);
    return text;
  }

  std::string Text() {
    if (isWild_ && Chance(5))
      return std::string(static_cast<std::size_t>(Number(430, longest_)), 'x');
    if (isWild_ && Chance(15)) return TextOf({"a", "#", "\n", " ", "b"});
    return TextOf({"a", "B",  "9", " ", "  ",    "\t",  "\r", "\"", "'", "=",  "&", "<",
                   ">", "\\", "é", "€", "&amp;", "]]>", ".",  "-",  "/", "%s", "[", "{}"});
  }

  /// A name that can be in a list and in a key.
  std::string Name() {
    if (isWild_ && Chance(10)) return TextOf({"a", " ", "=", "#", "b"});
    return TextOf({"a", "b", "N", "1", ".", "\"", "'", "&", "<", ">", "\\", "ö", "level", "child"});
  }

  void ChooseHandlers() {
    handlers_.clear();
    if (Chance(60)) handlers_.emplace_back("default");
    for (int number = 0, count = Number(0, 4); number < count; ++number) {
      handlers_.push_back(Name());
    }
  }

  std::string SomeHandler() {
    if (handlers_.empty() || Chance(15)) return Chance(50) ? "default" : "nowhere";
    return AnyOf(handlers_);
  }

  std::string Kind() {
    return AnyOf({"LogClientConsole", "LogClientFile", "LogClientRollingFile", "LogClientSocket",
                  "LogClientXML", "LogClientXml", "Pager"});
  }

  std::string Layout() {
    if (isWild_ && Chance(20)) return "Unheard";
    return AnyOf({"LogLayoutMessage", "LogLayoutSimple", "LogLayoutStandard", "LogLayoutExtended"});
  }

  std::pair<std::string, std::string> Parameter() {
    const std::string name =
        Chance(10) ? Text()
                   : AnyOf({"filename", "fileappend", "filesize", "maxbackup", "serverip",
                            "serverport", "xslfilename", "escapetext", "timeout"});
    return {name, Chance(50) ? AnyOf({"true", "false", "10k", "4711", "::1", "app.log", "-1", "0"})
                             : Text()};
  }

  // The properties form.

  void Line(const std::string& key, const std::string& value) {
    if (!MayBeSaid(key)) return;
    if (Chance(10)) text_ += "# a comment = with this\n\n";
    text_ += std::string(static_cast<std::size_t>(Number(0, 2)), ' ') + key +
             (Chance(50) ? " = " : "=") + value + (Chance(20) ? " \t# behind" : "") +
             (Chance(10) ? "\r\n" : "\n");
  }

  static std::string Quoted(const std::string& text) { return '"' + text + '"'; }

  std::string List(const std::vector<std::string>& items) {
    std::string list;
    for (const std::string& item : items) {
      list += (list.empty() ? "" : isWild_ && Chance(3) ? "  " : " ") + item;
    }
    return Quoted(list);
  }

  const std::vector<std::string>& IniLevels() {
    levels_.clear();
    for (int number = 1; number < 70; number += Number(1, 25)) {
      levels_.push_back((Chance(20) ? "0" : "") + std::to_string(number));
    }
    if (Chance(20)) levels_.emplace_back("99999999999");
    if (isWild_ && Chance(20)) {
      levels_.push_back(AnyOf({"-5", "0", "abc", "", "2147483647", "1", "7x"}));
    }
    std::shuffle(levels_.begin(), levels_.end(), random_);
    return levels_;
  }

  void IniSwitch(const std::string& handler) {
    const std::string level = isWild_ ? AnyOf({"1", "2147483647", "4294967291"}) : "1";
    Line("loghandler." + handler + ".level." + level, AnyOf({"true", "false", "TRUE", "1"}));
  }

  void IniHandler(const std::string& handler) {
    for (int number = 0, count = Number(0, 2); number < count; ++number) IniSwitch(handler);
    std::vector<std::string> children;
    for (int number = 0, count = Number(0, 2); number < count; ++number) {
      children.push_back(SomeHandler());
    }
    if (!children.empty()) Line("loghandler." + handler + ".child", List(children));
  }

  void IniClient(const std::string& prefix) {
    if (!isWild_ || Chance(90)) Line(prefix + ".type", Kind());
    if (!isWild_ || Chance(90)) Line(prefix + ".handler", Quoted(SomeHandler()));
    if (Chance(50)) Line(prefix + ".layout", Layout());
    for (int number = 0, count = Number(0, 4); number < count; ++number) {
      if (isWild_ && Chance(5)) continue;  // The library goes no further.
      const auto [name, value] = Parameter();
      if (!MayBeSaid(prefix + name)) return;
      Line(prefix + ".parameter." + std::to_string(number) + ".name", Quoted(name));
      Line(prefix + ".parameter." + std::to_string(number) + ".value", Quoted(value));
    }
  }

  // The XML form.

  std::string Attribute(const std::string& text) {
    std::string value;
    for (const char character : text) {
      const bool isAscii = static_cast<unsigned char>(character) < 0x80;
      const bool isSpecial = std::string("<&\"\t\r\n").find(character) != std::string::npos;
      if (isSpecial || (isAscii && Chance(10))) {
        value += "&#" + std::to_string(static_cast<int>(character)) + ";";
      } else {
        value += character;
      }
    }
    return '"' + value + '"';
  }

  std::vector<std::string> XmlLevels() {
    std::vector<std::string> levels;
    for (int number = 1; number < 70; number += Number(1, 25)) {
      levels.push_back((Chance(20) ? "0" : "") + std::to_string(number));
    }
    if (Chance(20)) levels.emplace_back("4294967295");
    if (isWild_ && Chance(20)) levels.push_back(AnyOf({"0", "2147483647", "1"}));
    std::shuffle(levels.begin(), levels.end(), random_);
    return levels;
  }

  void XmlHandler(const std::string& handler) {
    text_ += "<loghandler name=" + Attribute(handler) + ">";
    for (int number = 0, count = Number(0, 3); number < count; ++number) {
      const std::string level =
          isWild_ ? AnyOf({"1", "01", "2147483647", "3000000000"}) : AnyOf({"1", "01"});
      if (!MayBeSaid("switch of " + handler)) continue;
      text_ += "<handlerloglevel level=\"" + level + "\" enable=\"" +
               AnyOf({"true", "false", "0", "1"}) + "\"/>";
    }
    text_ += "</loghandler>\n";
  }

  void XmlClient() {
    text_ += "<logclient><type type=" + Attribute(Kind()) +
             "/><clientloghandler handlername=" + Attribute(SomeHandler()) + "/>";
    for (int number = 0, count = Number(0, 4); number < count; ++number) {
      const auto [name, value] = Parameter();
      if (!MayBeSaid("parameter " + std::to_string(text_.find_last_of('\n')) + name)) continue;
      text_ += "<parameter name=" + Attribute(name) + " value=" + Attribute(value) + "/>";
    }
    if (Chance(50)) text_ += "<layout layout=" + Attribute(Layout()) + "/>";
    text_ += "</logclient>\n";
  }

  void XmlBranch(const std::string& handler, int depth) {
    text_ += "<loghandler name=" + Attribute(handler) + ">";
    const bool isKnown = handler != "nowhere";
    for (int number = 0, count = Number(0, 2); number < count && depth < 4; ++number) {
      if (isKnown || isWild_) XmlBranch(SomeHandler(), depth + 1);
    }
    text_ += "</loghandler>";
  }
};

class RandomConversionTest : public LoggerctlConvertTest {
 protected:
  std::string Shown(const std::string& configuration) const {
    const ProcessResult result =
        RunProgram({LOGGERCTL, "show", "--kind", "Pager", File(configuration)});
    EXPECT_EQ(0, result.exitCode) << result.errors << configuration;
    return WithoutClientNames(result.output);
  }

  /// Content that both forms can hold survives the conversion and back, and nothing is reported.
  void ExpectSameSystem(const std::string& configuration, const std::string& otherForm,
                        const std::string& form) const {
    const std::string system = Shown(configuration);
    const ProcessResult there = Convert(configuration, otherForm);
    ASSERT_EQ("", there.errors) << configuration;
    ASSERT_EQ(system, Shown(there.output)) << configuration << "\nbecame\n" << there.output;
    const ProcessResult back = Convert(there.output, form);
    ASSERT_EQ("", back.errors) << there.output;
    ASSERT_EQ(system, Shown(back.output)) << there.output << "\nbecame\n" << back.output;
  }

  /// Every change is reported.
  void ExpectNoSilentLoss(const std::string& configuration, const std::string& otherForm) const {
    const std::string system = Shown(configuration);
    const ProcessResult there = Convert(configuration, otherForm);
    ASSERT_EQ(there.errors.empty(), there.exitCode == 0) << configuration << there.errors;
    if (there.exitCode == 2) return;
    const std::string other = Shown(there.output);
    if (there.exitCode == 0) {
      ASSERT_EQ(system, other) << configuration << "\nbecame\n" << there.output;
    }
  }
};

TEST_F(RandomConversionTest, BuildsTheSameSystemFromPropertiesFiles) {
  for (unsigned int seed = 0; seed < ROUNDS; ++seed) {
    ExpectSameSystem(Generator(seed, false).Ini(), "xml", "ini");
    if (HasFatalFailure()) return;
  }
}

TEST_F(RandomConversionTest, BuildsTheSameSystemFromXmlConfigurations) {
  for (unsigned int seed = 0; seed < ROUNDS; ++seed) {
    ExpectSameSystem(Generator(seed, false).Xml(), "ini", "xml");
    if (HasFatalFailure()) return;
  }
}

TEST_F(RandomConversionTest, LosesNothingOfPropertiesFilesWithoutAWord) {
  for (unsigned int seed = 0; seed < ROUNDS; ++seed) {
    ExpectNoSilentLoss(Generator(seed, true).Ini(), "xml");
    if (HasFatalFailure()) return;
  }
}

TEST_F(RandomConversionTest, LosesNothingOfXmlConfigurationsWithoutAWord) {
  for (unsigned int seed = 0; seed < ROUNDS; ++seed) {
    ExpectNoSilentLoss(Generator(seed, true).Xml(), "ini");
    if (HasFatalFailure()) return;
  }
}

}  // namespace

#include "LogConfiguratorXml.h"

#include <gtest/gtest.h>
#include <libxml/parser.h>
#include <libxml/tree.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <string>
#include <type_traits>
#include <vector>

#include "LogClientConsole.h"
#include "LogHandler.h"
#include "LogLevelManager.h"
#include "Logger.h"
#include "Support/ConfiguredClient.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlConfiguration.h"
#include "Support/XmlMessages.h"

namespace {

static_assert(std::has_virtual_destructor_v<LogConfiguratorXml>);

/// A client for "ConfiguredClient" on the handler, with these parameters and the layout in between.
std::string Client(const std::string& handler, const std::string& inside = "") {
  return "<logclient><type type=\"ConfiguredClient\"/><clientloghandler handlername=\"" + handler +
         "\"/>" + inside + "</logclient>\n";
}

/// A libxml2 document of the test's own.
class ParsedText {
 public:
  explicit ParsedText(const std::string& text)
      : document_(xmlReadMemory(text.data(), static_cast<int>(text.size()), nullptr, nullptr, 0),
                  xmlFreeDoc) {}
  xmlNode* Root() const { return xmlDocGetRootElement(document_.get()); }

 private:
  std::unique_ptr<xmlDoc, void (*)(xmlDoc*)> document_;
};

class LogConfiguratorXmlTest : public testing::Test {
 protected:
  LogConfiguratorXmlTest() { ConfiguredClient::Register(); }

  std::string File(const std::string& text) const {
    const std::string path = folder_.Path("logger.xml");
    WriteFile(path, text);
    return path;
  }

  /// Reads the document as a whole configuration, with libxml2's messages kept off the screen.
  bool Configure(const std::string& text) {
    LogConfiguratorXml configurator;
    testing::internal::CaptureStderr();
    const bool isDone = configurator.ReadConfiguration(File(text));
    errors_ = testing::internal::GetCapturedStderr();
    return isDone;
  }
  bool Configure() { return Configure(parts_.Text()); }

  /// Only opens the document.
  bool Open(LogConfiguratorXml& configurator, const std::string& text) {
    testing::internal::CaptureStderr();
    const bool isOpen = configurator.OpenFile(File(text));
    errors_ = testing::internal::GetCapturedStderr();
    return isOpen;
  }

  static void ExpectNothingSetUp() {
    EXPECT_EQ(Levels(), RegisteredLevels());
    EXPECT_EQ((std::vector<logstring>{"default"}), Logger::GetLogManager()->GetLogHandlerNames());
    EXPECT_EQ(0U, ConfiguredClient::Made().size());
    EXPECT_EQ(0U, Receivers("default").size());
  }

  static void ExpectEveryStepFalse(LogConfiguratorXml& configurator) {
    EXPECT_FALSE(configurator.IsLoggingEnable());
    EXPECT_FALSE(configurator.SetLogLevel());
    EXPECT_FALSE(configurator.SetLogHandler());
    EXPECT_FALSE(configurator.SetLogClient());
    EXPECT_FALSE(configurator.BuildLogTree());
  }

  TemporaryFolder folder_;
  XmlConfiguration parts_;
  std::string errors_;  ///< What the last document made libxml2 print.
};

TEST_F(LogConfiguratorXmlTest, SetsUpLevelsHandlersClientsAndTheTree) {
  parts_.handlers =
      "<loghandler name=\"a\"/>\n"
      "<loghandler name=\"b\"><handlerloglevel level=\"2\" enable=\"false\"/></loghandler>\n";
  parts_.clients = Client("b",
                          "<parameter name=\"a\" value=\"1\"/><layout layout=\""
                          "LogLayoutSimple\"/>");
  parts_.tree = "<logtree><loghandler name=\"a\"><loghandler name=\"b\"/></loghandler></logtree>\n";

  EXPECT_TRUE(Configure());

  EXPECT_EQ("", errors_);
  EXPECT_EQ((Levels{{1, "ERROR"}, {2, "INFO"}}), RegisteredLevels());
  EXPECT_EQ((std::vector<logstring>{"default", "a", "b"}),
            Logger::GetLogManager()->GetLogHandlerNames());
  ASSERT_EQ(1U, ConfiguredClient::Made().size());
  EXPECT_EQ((Parameters{{"a", "1"}}), ConfiguredClient::Made()[0]->parameters);
  EXPECT_TRUE(Logger::GetLogHandler("a")->Log(1, "one"));
  EXPECT_TRUE(Logger::GetLogHandler("a")->Log(2, "two"));
  EXPECT_EQ((std::vector<std::string>{"ERROR - one\n"}), ConfiguredClient::Made()[0]->lines);
}

// Files.

TEST_F(LogConfiguratorXmlTest, ChangesNothingWhenThereIsNoSuchFile) {
  LogConfiguratorXml configurator;
  testing::internal::CaptureStderr();

  EXPECT_FALSE(configurator.ReadConfiguration(folder_.Path("missing.xml")));
  EXPECT_FALSE(configurator.OpenFile(folder_.Path("missing.xml")));
  EXPECT_FALSE(configurator.OpenFile(""));

  EXPECT_EQ("", testing::internal::GetCapturedStderr());
  ExpectNothingSetUp();
}

TEST_F(LogConfiguratorXmlTest, SaysNothingAboutADocumentThatCannotBeParsed) {
  testing::internal::CaptureStdout();

  EXPECT_FALSE(Configure("<configlogger><logging enable=\"true\"></configlogger>"));
  EXPECT_EQ("", errors_);
  EXPECT_FALSE(Configure(""));
  EXPECT_EQ("", errors_);
  EXPECT_FALSE(Configure("no document"));
  EXPECT_EQ("", errors_);
  parts_.levels = "<loglevel id=\"1\" name=\"&unknown;\"/>\n";
  EXPECT_FALSE(Configure());
  EXPECT_EQ("", errors_);

  EXPECT_EQ("", testing::internal::GetCapturedStdout());
  ExpectNothingSetUp();
}

TEST_F(LogConfiguratorXmlTest, ReadsAFileRelativeToTheWorkingFolder) {
  File(parts_.Text());
  std::filesystem::current_path(folder_.Path());
  LogConfiguratorXml configurator;

  EXPECT_TRUE(configurator.ReadConfiguration("logger.xml"));

  EXPECT_EQ(2U, RegisteredLevels().size());
}

TEST_F(LogConfiguratorXmlTest, ReadsOtherEncodings) {
  parts_.prologue = "<?xml version=\"1.0\" encoding=\"ISO-8859-1\"?>\n";
  parts_.levels = "<loglevel id=\"1\" name=\"B\xf6se\"/>\n";

  EXPECT_TRUE(Configure());

  EXPECT_EQ((Levels{{1, "B\xc3\xb6se"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorXmlTest, ReplacesEntities) {
  parts_.prologue =
      "<?xml version=\"1.0\"?>\n"
      "<!DOCTYPE configlogger [<!ENTITY name \"net\">"
      "<!ENTITY level '<loglevel id=\"7\" name=\"SEVEN\"/>'>]>\n";
  parts_.levels = "&level;\n";
  parts_.handlers = "<loghandler name=\"&name;&amp;&#65;\"/>\n";

  EXPECT_TRUE(Configure());

  EXPECT_EQ((Levels{{7, "SEVEN"}}), RegisteredLevels());
  EXPECT_NE(nullptr, Logger::GetExistingLogHandler("net&A"));
}

TEST_F(LogConfiguratorXmlTest, PassesOverCommentsInstructionsAndBlanks) {
  parts_.levels = "<!-- <loglevel id=\"9\" name=\"NINE\"/> --><?loglevel id=\"8\"?>\n\n\t" +
                  parts_.levels + "<!---->";
  parts_.handlers =
      "<loghandler name=\"a\"> <!-- off --> <handlerloglevel level=\"2\" enable=\"false\"/> "
      "</loghandler>";
  parts_.clients =
      "<logclient> <!-- one --> <type type=\"ConfiguredClient\"/>\n<?x?><clientloghandler "
      "handlername=\"a\"/> </logclient>";

  EXPECT_TRUE(Configure());

  EXPECT_EQ((Levels{{1, "ERROR"}, {2, "INFO"}}), RegisteredLevels());
  EXPECT_EQ((std::vector<unsigned int>{1}), EnabledLevels("a", {1, 2}));
  EXPECT_EQ(1U, Receivers("a").size());
}

// Validation.

TEST_F(LogConfiguratorXmlTest, SetsUpNothingFromElementsOutOfOrder) {
  const XmlConfiguration valid;
  std::swap(parts_.levels, parts_.handlers);
  EXPECT_FALSE(Configure());
  parts_ = valid;
  std::swap(parts_.logging, parts_.levels);
  EXPECT_FALSE(Configure());
  parts_ = valid;
  std::swap(parts_.clients, parts_.tree);
  EXPECT_FALSE(Configure());
  parts_ = valid;
  parts_.clients =
      "<logclient><clientloghandler handlername=\"a\"/><type type=\"ConfiguredClient\"/>"
      "</logclient>";
  EXPECT_FALSE(Configure());
  parts_.clients =
      Client("a", "<layout layout=\"LogLayoutSimple\"/><parameter name=\"a\" value=\"1\"/>");
  EXPECT_FALSE(Configure());

  ExpectNothingSetUp();
}

TEST_F(LogConfiguratorXmlTest, SetsUpNothingWithoutAnElementThatMustBeThere) {
  const XmlConfiguration valid;
  for (std::string XmlConfiguration::*part :
       {&XmlConfiguration::logging, &XmlConfiguration::levels, &XmlConfiguration::handlers,
        &XmlConfiguration::clients, &XmlConfiguration::tree}) {
    parts_ = valid;
    parts_.*part = "";
    EXPECT_FALSE(Configure()) << parts_.Text();
  }
  parts_ = valid;
  parts_.tree = "<logtree/>";
  EXPECT_FALSE(Configure());
  parts_ = valid;
  parts_.clients = "<logclient><type type=\"ConfiguredClient\"/></logclient>";
  EXPECT_FALSE(Configure());
  parts_.clients = "<logclient><clientloghandler handlername=\"a\"/></logclient>";
  EXPECT_FALSE(Configure());

  ExpectNothingSetUp();
}

TEST_F(LogConfiguratorXmlTest, SetsUpNothingFromElementsThatAreThereTooOften) {
  const XmlConfiguration valid;
  parts_.logging += parts_.logging;
  EXPECT_FALSE(Configure());
  parts_ = valid;
  parts_.tree += parts_.tree;
  EXPECT_FALSE(Configure());
  parts_ = valid;
  parts_.clients = Client("a", "<layout layout=\"x\"/><layout layout=\"x\"/>");
  EXPECT_FALSE(Configure());
  parts_ = valid;
  const std::string unread =
      "<defaultloghandler><handlerloglevel level=\"1\" enable=\"false\"/></defaultloghandler>";
  parts_.handlers += unread + unread;
  EXPECT_FALSE(Configure());
  parts_ = valid;
  parts_.handlers += "<defaultloghandler/>";
  EXPECT_FALSE(Configure());

  ExpectNothingSetUp();
}

TEST_F(LogConfiguratorXmlTest, SetsUpNothingFromAnEmptyName) {
  const XmlConfiguration valid;
  parts_.levels = "<loglevel id=\"1\" name=\"\"/>";
  EXPECT_FALSE(Configure());
  parts_ = valid;
  parts_.handlers = "<loghandler name=\"\"/>";
  EXPECT_FALSE(Configure());
  parts_ = valid;
  parts_.tree = "<logtree><loghandler name=\"\"/></logtree>";
  EXPECT_FALSE(Configure());
  for (const char* const client :
       {"<type type=\"\"/><clientloghandler handlername=\"a\"/>",
        "<type type=\"ConfiguredClient\"/><clientloghandler handlername=\"\"/>",
        "<type type=\"ConfiguredClient\"/><clientloghandler handlername=\"a\"/>"
        "<parameter name=\"\" value=\"1\"/>",
        "<type type=\"ConfiguredClient\"/><clientloghandler handlername=\"a\"/>"
        "<parameter name=\"a\" value=\"\"/>",
        "<type type=\"ConfiguredClient\"/><clientloghandler handlername=\"a\"/>"
        "<layout layout=\"\"/>"}) {
    parts_ = valid;
    parts_.clients = std::string("<logclient>") + client + "</logclient>";
    EXPECT_FALSE(Configure()) << client;
  }

  ExpectNothingSetUp();
}

TEST_F(LogConfiguratorXmlTest, SetsUpNothingWithoutAnAttributeThatMustBeThere) {
  const XmlConfiguration valid;
  parts_.logging = "<logging/>";
  EXPECT_FALSE(Configure());
  for (const char* const level : {"<loglevel id=\"1\"/>", "<loglevel name=\"ERROR\"/>"}) {
    parts_ = valid;
    parts_.levels = level;
    EXPECT_FALSE(Configure()) << level;
  }
  for (const char* const handler :
       {"<loghandler/>", "<loghandler name=\"a\"><handlerloglevel level=\"1\"/></loghandler>",
        "<loghandler name=\"a\"><handlerloglevel enable=\"true\"/></loghandler>"}) {
    parts_ = valid;
    parts_.handlers = handler;
    EXPECT_FALSE(Configure()) << handler;
  }
  for (const char* const inside :
       {"<parameter name=\"a\"/>", "<parameter value=\"1\"/>", "<layout/>"}) {
    parts_ = valid;
    parts_.clients = Client("a", inside);
    EXPECT_FALSE(Configure()) << inside;
  }
  parts_ = valid;
  parts_.tree = "<logtree><loghandler name=\"a\"><loghandler/></loghandler></logtree>";
  EXPECT_FALSE(Configure());

  ExpectNothingSetUp();
}

TEST_F(LogConfiguratorXmlTest, SetsUpNothingFromWhatTheSchemaDoesNotKnow) {
  const XmlConfiguration valid;
  parts_.logging = "<logging enable=\"true\" more=\"1\"/>";
  EXPECT_FALSE(Configure());
  parts_ = valid;
  parts_.levels += "<other/>";
  EXPECT_FALSE(Configure());
  parts_ = valid;
  parts_.levels += "text";
  EXPECT_FALSE(Configure());
  parts_ = valid;
  parts_.handlers =
      "<loghandler name=\"a\"><handlerloglevel level=\"1\" enable=\"true\"/>"
      "<loghandler name=\"b\"/></loghandler>";
  EXPECT_FALSE(Configure());
  EXPECT_FALSE(Configure("<other/>"));
  EXPECT_FALSE(Configure("<x:configlogger xmlns:x=\"x\"/>"));

  ExpectNothingSetUp();
}

TEST_F(LogConfiguratorXmlTest, TakesLevelsUpToTheLargestNumber) {
  parts_.levels = "<loglevel id=\"4294967295\" name=\"LAST\"/>";
  EXPECT_TRUE(Configure());
  parts_.levels = "<loglevel id=\"4294967296\" name=\"PAST\"/>";
  EXPECT_FALSE(Configure());
  for (const char* const number : {"-1", "", "one", "1.0", "0x1", "1 2"}) {
    parts_.levels = std::string("<loglevel id=\"") + number + "\" name=\"NONE\"/>";
    EXPECT_FALSE(Configure()) << number;
  }

  EXPECT_EQ((Levels{{2147483647, "LAST"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorXmlTest, ReportsWhatIsNotValidOnStandardError) {
  parts_.tree = "";

  EXPECT_FALSE(Configure());

  EXPECT_EQ(folder_.Path("logger.xml") +
                ":2: element configlogger: Schemas validity error : Element 'configlogger': "
                "Missing child element(s). Expected is one of ( logclient, logtree ).\n",
            errors_);
}

TEST_F(LogConfiguratorXmlTest, ReportsWhatIsNotValidToTheApplicationsStructuredHandler) {
  const XmlMessages messages(XmlMessages::Kind::Structured);
  parts_.handlers = "<loghandler name=\"\"/>";

  EXPECT_FALSE(Configure());

  EXPECT_EQ("", errors_);
  EXPECT_EQ(
      "Element 'loghandler', attribute 'name': [facet 'minLength'] The value '' has a length of "
      "'0'; this underruns the allowed minimum length of '1'.\n",
      messages.text);
}

TEST_F(LogConfiguratorXmlTest, ReportsWhatIsNotValidToTheApplicationsGenericHandler) {
  const XmlMessages messages(XmlMessages::Kind::Generic);
  parts_.tree = "";

  EXPECT_FALSE(Configure());

  EXPECT_EQ("", errors_);
  EXPECT_EQ(
      "Element 'configlogger': Missing child element(s). Expected is one of ( logclient, logtree "
      ").\n",
      messages.text);
}

// Whether logging is enabled.

TEST_F(LogConfiguratorXmlTest, SetsUpNothingWhenLoggingIsOff) {
  parts_.logging = "<logging enable=\"false\"/>";

  EXPECT_FALSE(Configure());

  EXPECT_EQ("", errors_);
  ExpectNothingSetUp();
}

TEST_F(LogConfiguratorXmlTest, LeavesLoggingOnForZero) {
  parts_.logging = "<logging enable=\"0\"/>";

  EXPECT_TRUE(Configure());

  EXPECT_EQ(2U, RegisteredLevels().size());
}

TEST_F(LogConfiguratorXmlTest, SaysThatLoggingIsEnabledForAnythingButFalse) {
  LogConfiguratorXml configurator;
  const auto isEnabledBy = [&](const std::string& word) {
    parts_.logging = "<logging enable=\"" + word + "\"/>";
    EXPECT_TRUE(Open(configurator, parts_.Text())) << word;
    return configurator.IsLoggingEnable();
  };

  EXPECT_TRUE(isEnabledBy("true"));
  EXPECT_TRUE(isEnabledBy("1"));
  EXPECT_TRUE(isEnabledBy("0"));
  EXPECT_TRUE(isEnabledBy(" false"));  // Valid, and not exactly that word.
  EXPECT_FALSE(isEnabledBy("false"));
}

TEST_F(LogConfiguratorXmlTest, TakesNoOtherWordsForABoolean) {
  for (const char* const word : {"", "FALSE", "no", "2"}) {
    parts_.logging = std::string("<logging enable=\"") + word + "\"/>";
    EXPECT_FALSE(Configure()) << word;
  }

  ExpectNothingSetUp();
}

// Levels.

TEST_F(LogConfiguratorXmlTest, RegistersLevelsInTheOrderOfTheDocument) {
  parts_.levels =
      "<loglevel id=\"3\" name=\"INFO\"/><loglevel id=\"1\" name=\"ERROR\"/>"
      "<loglevel name=\" two words \" id=\"2\"/>";

  EXPECT_TRUE(Configure());

  EXPECT_EQ((Levels{{3, "INFO"}, {1, "ERROR"}, {2, " two words "}}), RegisteredLevels());
}

TEST_F(LogConfiguratorXmlTest, RegistersLevelZero) {
  parts_.levels = "<loglevel id=\"0\" name=\"ZERO\"/>";

  EXPECT_TRUE(Configure());

  EXPECT_EQ((Levels{{0, "ZERO"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorXmlTest, LimitsLevelsToTheRangeOfASignedNumber) {
  parts_.levels =
      "<loglevel id=\"2147483646\" name=\"BELOW\"/><loglevel id=\"2147483648\" name=\"ABOVE\"/>"
      "<loglevel id=\"2147483647\" name=\"SAME\"/>";

  EXPECT_TRUE(Configure());

  EXPECT_EQ((Levels{{2147483646, "BELOW"}, {2147483647, "ABOVE"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorXmlTest, ReadsLevelsInDecimal) {
  parts_.levels = "<loglevel id=\"010\" name=\"TEN\"/><loglevel id=\"00\" name=\"ZERO\"/>";

  EXPECT_TRUE(Configure());

  EXPECT_EQ((Levels{{10, "TEN"}, {0, "ZERO"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorXmlTest, KeepsTheFirstNameOfALevel) {
  Logger::GetLogLevelManager()->AddLogLevel(2, "application");
  parts_.levels =
      "<loglevel id=\"1\" name=\"FIRST\"/><loglevel id=\"1\" name=\"SECOND\"/>"
      "<loglevel id=\"2\" name=\"FILE\"/>";

  EXPECT_TRUE(Configure());

  EXPECT_EQ((Levels{{2, "application"}, {1, "FIRST"}}), RegisteredLevels());
}

// Handlers.

TEST_F(LogConfiguratorXmlTest, MakesTheHandlersOfTheTopOnly) {
  parts_.handlers =
      "<loghandler name=\"a\"><loghandler name=\"inner\"/></loghandler>"
      "<loghandler name=\"A b\"/><loghandler name=\"a\"/>";
  parts_.tree = "<logtree><loghandler name=\"other\"/></logtree>";

  EXPECT_TRUE(Configure());

  EXPECT_EQ((std::vector<logstring>{"default", "a", "A b"}),
            Logger::GetLogManager()->GetLogHandlerNames());
}

TEST_F(LogConfiguratorXmlTest, SetsUpAHandlerThatExistsAlready) {
  LogHandler* const handler = Logger::GetLogHandler("a");
  parts_.handlers =
      "<loghandler name=\"a\"><handlerloglevel level=\"1\" enable=\"false\"/></loghandler>";

  EXPECT_TRUE(Configure());

  EXPECT_EQ(handler, Logger::GetExistingLogHandler("a"));
  EXPECT_FALSE(handler->GetLogLevel(1));
}

TEST_F(LogConfiguratorXmlTest, SwitchesALevelOffForAnythingButTrue) {
  parts_.levels.clear();
  parts_.handlers = "<loghandler name=\"a\">";
  const std::vector<std::string> words{"true", "1", "false", "0", " true"};
  for (std::size_t i = 0; i < words.size(); ++i) {
    const std::string number = std::to_string(i + 1);
    parts_.levels += "<loglevel id=\"" + number + "\" name=\"x\"/>";
    parts_.handlers += "<handlerloglevel level=\"" + number + "\" enable=\"" + words[i] + "\"/>";
  }
  parts_.levels += "<loglevel id=\"6\" name=\"x\"/>";
  parts_.handlers += "</loghandler><loghandler name=\"b\"/>";

  EXPECT_TRUE(Configure());

  EXPECT_EQ((std::vector<unsigned int>{1, 6}), EnabledLevels("a", {1, 2, 3, 4, 5, 6}));
  EXPECT_EQ((std::vector<unsigned int>{1, 2, 3, 4, 5, 6}), EnabledLevels("b", {1, 2, 3, 4, 5, 6}));
}

TEST_F(LogConfiguratorXmlTest, TakesTheLastSwitchOfALevel) {
  parts_.handlers =
      "<loghandler name=\"a\"><handlerloglevel level=\"1\" enable=\"false\"/>"
      "<handlerloglevel level=\"2\" enable=\"true\"/>"
      "<handlerloglevel level=\"1\" enable=\"true\"/>"
      "<handlerloglevel level=\"2\" enable=\"false\"/></loghandler>";

  EXPECT_TRUE(Configure());

  EXPECT_EQ((std::vector<unsigned int>{1}), EnabledLevels("a", {1, 2}));
}

TEST_F(LogConfiguratorXmlTest, IgnoresSwitchesOfLevelsThatAreNotRegistered) {
  parts_.handlers =
      "<loghandler name=\"a\"><handlerloglevel level=\"9\" enable=\"false\"/></loghandler>";
  EXPECT_TRUE(Configure());

  Logger::GetLogLevelManager()->AddLogLevel(9, "NINE");

  EXPECT_TRUE(Logger::GetExistingLogHandler("a")->GetLogLevel(9));
}

TEST_F(LogConfiguratorXmlTest, SwitchesTheLevelThatALargeNumberStandsFor) {
  parts_.levels = "<loglevel id=\"4294967295\" name=\"LAST\"/>";
  parts_.handlers =
      "<loghandler name=\"a\"><handlerloglevel level=\"3000000000\" enable=\"false\"/>"
      "</loghandler>";

  EXPECT_TRUE(Configure());

  EXPECT_FALSE(Logger::GetExistingLogHandler("a")->GetLogLevel(2147483647));
}

TEST_F(LogConfiguratorXmlTest, SwitchesNoLevelsOfTheDefaultHandlerByTheElementOfThatName) {
  parts_.handlers +=
      "<defaultloghandler><handlerloglevel level=\"1\" enable=\"false\"/></defaultloghandler>\n";

  EXPECT_TRUE(Configure());

  EXPECT_EQ("", errors_);
  EXPECT_EQ((std::vector<unsigned int>{1, 2}), EnabledLevels("default", {1, 2}));
}

TEST_F(LogConfiguratorXmlTest, TreatsTheHandlerDefaultLikeAnyOther) {
  parts_.handlers =
      "<loghandler name=\"default\"><handlerloglevel level=\"1\" enable=\"false\"/></loghandler>";
  parts_.clients = Client("default");
  parts_.tree = "<logtree><loghandler name=\"default\"/></logtree>";

  EXPECT_TRUE(Configure());

  EXPECT_EQ((std::vector<unsigned int>{2}), EnabledLevels("default", {1, 2}));
  EXPECT_EQ((std::vector<LogHandlerClient*>{ConfiguredClient::Made().at(0)}), Receivers("default"));
}

// Clients.

TEST_F(LogConfiguratorXmlTest, AttachesClientsInTheOrderOfTheDocument) {
  parts_.clients =
      Client("a") +
      "<logclient><type type=\"LogClientConsole\"/><clientloghandler handlername=\"a\"/>"
      "</logclient>" +
      Client("b") + Client("a");

  EXPECT_TRUE(Configure());

  const auto receivers = Receivers("a");
  ASSERT_EQ(3U, ConfiguredClient::Made().size());
  ASSERT_EQ(3U, receivers.size());
  EXPECT_EQ(ConfiguredClient::Made()[0], receivers[0]);
  EXPECT_NE(nullptr, dynamic_cast<LogClientConsole*>(receivers[1]));
  EXPECT_EQ(ConfiguredClient::Made()[2], receivers[2]);
  EXPECT_EQ((std::vector<LogHandlerClient*>{ConfiguredClient::Made()[1]}), Receivers("b"));
}

TEST_F(LogConfiguratorXmlTest, MakesNoClientForAHandlerThatDoesNotExist) {
  parts_.clients = Client("missing") + Client("A") + Client("a");

  EXPECT_TRUE(Configure());

  EXPECT_EQ(1U, ConfiguredClient::Made().size());
  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("missing"));
  EXPECT_EQ(1U, Receivers("a").size());
}

TEST_F(LogConfiguratorXmlTest, AttachesAClientToAHandlerThatTheApplicationMade) {
  Logger::GetLogHandler("own");
  parts_.clients = Client("own");

  EXPECT_TRUE(Configure());

  EXPECT_EQ((std::vector<LogHandlerClient*>{ConfiguredClient::Made().at(0)}), Receivers("own"));
}

TEST_F(LogConfiguratorXmlTest, SkipsClientsThatCannotBeMade) {
  parts_.clients =
      "<logclient><type type=\"configuredclient\"/><clientloghandler handlername=\"a\"/>"
      "</logclient>" +
      Client("a", "<parameter name=\"broken\" value=\"yes\"/>") + Client("a");

  EXPECT_TRUE(Configure());

  ASSERT_EQ(2U, ConfiguredClient::Made().size());
  EXPECT_EQ((std::vector<LogHandlerClient*>{ConfiguredClient::Made()[1]}), Receivers("a"));
}

TEST_F(LogConfiguratorXmlTest, PassesParametersAsTheyStand) {
  parts_.clients = Client("a",
                          "<parameter name=\"a\" value=\"  two  words \"/>"
                          "<parameter value=\"&lt;&quot;&#10;&#x42;\" name=\"b\"/>"
                          "<parameter name=\"c\" value=\"#no comment\"/>") +
                   Client("a", "<parameter name=\"d\" value=\"4\"/>");

  EXPECT_TRUE(Configure());

  EXPECT_EQ((Parameters{{"a", "  two  words "}, {"b", "<\"\nB"}, {"c", "#no comment"}}),
            ConfiguredClient::Made().at(0)->parameters);
  EXPECT_EQ((Parameters{{"d", "4"}}), ConfiguredClient::Made().at(1)->parameters);
}

TEST_F(LogConfiguratorXmlTest, KeepsTheFirstValueOfAParameterThatIsGivenTwice) {
  parts_.clients = Client("a",
                          "<parameter name=\"a\" value=\"first\"/>"
                          "<parameter name=\"a\" value=\"second\"/>"
                          "<parameter name=\"b\" value=\"2\"/>");

  EXPECT_TRUE(Configure());

  EXPECT_EQ((Parameters{{"a", "first"}, {"b", "2"}}), ConfiguredClient::Made().at(0)->parameters);
}

TEST_F(LogConfiguratorXmlTest, LeavesAClientItsOwnLayout) {
  EXPECT_TRUE(Configure());

  Logger::GetLogHandler("a")->Log(1, "text");
  EXPECT_EQ((std::vector<std::string>{"text\n"}), ConfiguredClient::Made().at(0)->lines);
}

TEST_F(LogConfiguratorXmlTest, GivesAClientTheNamedLayout) {
  parts_.clients = Client("a", "<layout layout=\"LogLayoutSimple\"/>");

  EXPECT_TRUE(Configure());

  Logger::GetLogHandler("a")->Log(1, "text");
  EXPECT_EQ((std::vector<std::string>{"ERROR - text\n"}), ConfiguredClient::Made().at(0)->lines);
}

TEST_F(LogConfiguratorXmlTest, AttachesAClientWhoseLayoutIsUnknown) {
  parts_.clients = Client("a", "<layout layout=\"loglayoutsimple\"/>") + Client("a");

  EXPECT_TRUE(Configure());

  ASSERT_EQ(2U, ConfiguredClient::Made().size());
  EXPECT_EQ(
      (std::vector<LogHandlerClient*>{ConfiguredClient::Made()[0], ConfiguredClient::Made()[1]}),
      Receivers("a"));
  EXPECT_FALSE(ConfiguredClient::Made()[0]->HasLayout());
  EXPECT_TRUE(Logger::GetLogHandler("a")->Log(1, "text"));
  EXPECT_EQ(std::vector<std::string>(), ConfiguredClient::Made()[0]->lines);
  EXPECT_EQ((std::vector<std::string>{"text\n"}), ConfiguredClient::Made()[1]->lines);
}

TEST_F(LogConfiguratorXmlTest, WritesNothingToTheConsoleWithAnUnknownLayout) {
  parts_.clients =
      "<logclient><type type=\"LogClientConsole\"/><clientloghandler handlername=\"a\"/>"
      "<layout layout=\"Unknown\"/></logclient>";
  EXPECT_TRUE(Configure());
  testing::internal::CaptureStdout();

  EXPECT_TRUE(Logger::GetLogHandler("a")->Log(1, "text"));

  EXPECT_EQ("", testing::internal::GetCapturedStdout());
  EXPECT_EQ(1U, Receivers("a").size());
}

// The tree.

TEST_F(LogConfiguratorXmlTest, BuildsTreesOfAnyShape) {
  parts_.handlers.clear();
  for (const char* const name : {"a", "b", "c", "d", "e"}) {
    parts_.handlers += std::string("<loghandler name=\"") + name + "\"/>";
  }
  parts_.tree =
      "<logtree><loghandler name=\"default\"><loghandler name=\"b\"><loghandler name=\"d\"/>"
      "</loghandler><loghandler name=\"a\"/></loghandler>"
      "<loghandler name=\"c\"><loghandler name=\"e\"/><loghandler name=\"e\"/></loghandler>"
      "</logtree>";

  EXPECT_TRUE(Configure());

  const auto handlers = [](const std::vector<std::string>& names) {
    std::vector<LogHandlerClient*> found;
    for (const std::string& name : names) found.push_back(Logger::GetExistingLogHandler(name));
    return found;
  };
  EXPECT_EQ(handlers({"b", "a"}), Receivers("default"));
  EXPECT_EQ(handlers({"d"}), Receivers("b"));
  EXPECT_EQ(handlers({"e"}), Receivers("c"));
  EXPECT_EQ(0U, Receivers("d").size());
  EXPECT_EQ(0U, Receivers("e").size());
  EXPECT_EQ(ConfiguredClient::Made().at(0), Receivers("a").at(0));
}

TEST_F(LogConfiguratorXmlTest, AttachesChildrenBehindClients) {
  parts_.tree = "<logtree><loghandler name=\"a\"><loghandler name=\"b\"/></loghandler></logtree>";

  EXPECT_TRUE(Configure());

  EXPECT_EQ((std::vector<LogHandlerClient*>{ConfiguredClient::Made().at(0),
                                            Logger::GetExistingLogHandler("b")}),
            Receivers("a"));
}

TEST_F(LogConfiguratorXmlTest, LinksNothingBelowAHandlerThatDoesNotExist) {
  parts_.handlers =
      "<loghandler name=\"a\"/><loghandler name=\"b\"/><loghandler name=\"c\"/>"
      "<loghandler name=\"d\"/>";
  parts_.clients = Client("d");
  parts_.tree =
      "<logtree><loghandler name=\"a\"><loghandler name=\"missing\"><loghandler name=\"b\">"
      "<loghandler name=\"d\"/></loghandler></loghandler><loghandler name=\"c\"/></loghandler>"
      "</logtree>";

  EXPECT_TRUE(Configure());

  EXPECT_EQ((std::vector<LogHandlerClient*>{Logger::GetExistingLogHandler("c")}), Receivers("a"));
  EXPECT_EQ(0U, Receivers("b").size());
  EXPECT_EQ(0U, Receivers("c").size());
  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("missing"));
}

TEST_F(LogConfiguratorXmlTest, SkipsATreeWhoseTopDoesNotExist) {
  parts_.handlers = "<loghandler name=\"b\"/><loghandler name=\"c\"/><loghandler name=\"d\"/>";
  parts_.clients = Client("d");
  parts_.tree =
      "<logtree><loghandler name=\"missing\"><loghandler name=\"b\"><loghandler name=\"d\"/>"
      "</loghandler></loghandler><loghandler name=\"c\"><loghandler name=\"b\"/></loghandler>"
      "</logtree>";

  EXPECT_TRUE(Configure());

  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("missing"));
  EXPECT_EQ(0U, Receivers("b").size());
  EXPECT_EQ((std::vector<LogHandlerClient*>{Logger::GetExistingLogHandler("b")}), Receivers("c"));
}

TEST_F(LogConfiguratorXmlTest, LinksHandlersThatTheApplicationMade) {
  LogHandler* const own = Logger::GetLogHandler("own");
  parts_.tree =
      "<logtree><loghandler name=\"own\"><loghandler name=\"b\"/></loghandler>"
      "<loghandler name=\"b\"/></logtree>";

  EXPECT_TRUE(Configure());

  EXPECT_EQ((std::vector<LogHandlerClient*>{Logger::GetExistingLogHandler("b")}), Receivers("own"));
  EXPECT_EQ(own, Logger::GetExistingLogHandler("own"));
}

TEST_F(LogConfiguratorXmlTest, LinksNothingFromSwitchesInTheTree) {
  parts_.tree =
      "<logtree><loghandler name=\"a\"><handlerloglevel level=\"1\" enable=\"false\"/>"
      "</loghandler></logtree>";

  EXPECT_TRUE(Configure());

  EXPECT_EQ((std::vector<unsigned int>{1, 2}), EnabledLevels("a", {1, 2}));
}

TEST_F(LogConfiguratorXmlTest, AttachesTheHandlersOfAnElementWhenAsked) {
  const ParsedText element(
      "<any><loghandler name='a'><loghandler name='b'/></loghandler>"
      "<other name='c'/><loghandler name='missing'/><loghandler name='b'/></any>");
  LogHandler* const a = Logger::GetLogHandler("a");
  LogHandler* const b = Logger::GetLogHandler("b");
  Logger::GetLogHandler("c");
  LogHandler parent("parent");
  LogConfiguratorXml configurator;

  EXPECT_TRUE(configurator.AddSubHandler(element.Root(), &parent));

  ASSERT_EQ(2U, parent.GetLogClientCount());
  EXPECT_EQ(a, parent.GetLogClientAt(0));
  EXPECT_EQ(b, parent.GetLogClientAt(1));
  EXPECT_EQ((std::vector<LogHandlerClient*>{b}), Receivers("a"));
}

TEST_F(LogConfiguratorXmlTest, AttachesNothingWithoutAnElementOrAHandler) {
  const ParsedText element("<any><loghandler name='a'/></any>");
  Logger::GetLogHandler("a");
  LogHandler parent("parent");
  LogConfiguratorXml configurator;

  EXPECT_FALSE(configurator.AddSubHandler(nullptr, &parent));
  EXPECT_FALSE(configurator.AddSubHandler(element.Root(), nullptr));

  EXPECT_EQ(0U, parent.GetLogClientCount());
}

TEST_F(LogConfiguratorXmlTest, StopsAtAChildWithoutAName) {
  const ParsedText element("<any><loghandler name='a'/><loghandler/><loghandler name='b'/></any>");
  LogHandler* const a = Logger::GetLogHandler("a");
  Logger::GetLogHandler("b");
  LogHandler parent("parent");
  LogConfiguratorXml configurator;

  EXPECT_FALSE(configurator.AddSubHandler(element.Root(), &parent));

  ASSERT_EQ(1U, parent.GetLogClientCount());
  EXPECT_EQ(a, parent.GetLogClientAt(0));
}

TEST_F(LogConfiguratorXmlTest, IgnoresAFailureFurtherDown) {
  const ParsedText element(
      "<any><loghandler name='a'><loghandler/></loghandler><loghandler name='b'/></any>");
  Logger::GetLogHandler("a");
  Logger::GetLogHandler("b");
  LogHandler parent("parent");
  LogConfiguratorXml configurator;

  EXPECT_TRUE(configurator.AddSubHandler(element.Root(), &parent));

  EXPECT_EQ(2U, parent.GetLogClientCount());
  EXPECT_EQ(0U, Receivers("a").size());
}

// Attributes.

TEST_F(LogConfiguratorXmlTest, ReadsAnAttributeAsText) {
  const ParsedText element("<e a=' two\twords ' empty='' mixed='&lt;&#65;'/>");
  LogConfiguratorXml configurator;
  logstring value = "old";

  EXPECT_TRUE(configurator.GetAttribute(element.Root(), "a", value));
  EXPECT_EQ(" two words ", value);
  EXPECT_TRUE(configurator.GetAttribute(element.Root(), "mixed", value));
  EXPECT_EQ("<A", value);
  EXPECT_TRUE(configurator.GetAttribute(element.Root(), "empty", value));
  EXPECT_EQ("", value);
}

TEST_F(LogConfiguratorXmlTest, ReadsAnAttributeAsANumber) {
  const ParsedText element(
      "<e seven=' 7th' minus='-12' plus='+3' none='x1' empty='' last='2147483647' "
      "past='2147483648' far='99999999999999999999' first='-2147483648' before='-2147483649'/>");
  LogConfiguratorXml configurator;
  const auto number = [&](const char* name) {
    int value = 4711;
    EXPECT_TRUE(configurator.GetAttribute(element.Root(), name, value)) << name;
    return value;
  };

  EXPECT_EQ(7, number("seven"));
  EXPECT_EQ(-12, number("minus"));
  EXPECT_EQ(3, number("plus"));
  EXPECT_EQ(0, number("none"));
  EXPECT_EQ(0, number("empty"));
  EXPECT_EQ(2147483647, number("last"));
  EXPECT_EQ(2147483647, number("past"));
  EXPECT_EQ(2147483647, number("far"));
  EXPECT_EQ(-2147483647 - 1, number("first"));
  EXPECT_EQ(-2147483647 - 1, number("before"));
}

TEST_F(LogConfiguratorXmlTest, LeavesTheValueAloneWithoutTheAttribute) {
  const ParsedText element("<e a='1'><inner b='1'/></e>");
  LogConfiguratorXml configurator;
  logstring text = "old";
  int number = 4711;

  EXPECT_FALSE(configurator.GetAttribute(element.Root(), "b", text));
  EXPECT_FALSE(configurator.GetAttribute(element.Root(), "A", text));
  EXPECT_FALSE(configurator.GetAttribute(element.Root(), "", text));
  EXPECT_FALSE(configurator.GetAttribute(element.Root(), "b", number));

  EXPECT_EQ("old", text);
  EXPECT_EQ(4711, number);
}

// Steps on their own.

TEST_F(LogConfiguratorXmlTest, DoesOneStepAtATime) {
  LogConfiguratorXml configurator;

  EXPECT_TRUE(Open(configurator, parts_.Text()));
  ExpectNothingSetUp();
  EXPECT_TRUE(configurator.IsLoggingEnable());
  ExpectNothingSetUp();
  EXPECT_TRUE(configurator.SetLogLevel());
  EXPECT_EQ(2U, RegisteredLevels().size());
  EXPECT_EQ(nullptr, Logger::GetExistingLogHandler("a"));
  EXPECT_TRUE(configurator.SetLogHandler());
  EXPECT_EQ(0U, Receivers("a").size());
  EXPECT_TRUE(configurator.SetLogClient());
  EXPECT_EQ(1U, Receivers("a").size());
  EXPECT_TRUE(configurator.BuildLogTree());
  EXPECT_EQ(1U, Receivers("a").size());
}

TEST_F(LogConfiguratorXmlTest, DoesNoStepBeforeAFileWasOpened) {
  LogConfiguratorXml configurator;

  ExpectEveryStepFalse(configurator);

  ExpectNothingSetUp();
}

TEST_F(LogConfiguratorXmlTest, DoesNoStepWhenTheFileCouldNotBeOpened) {
  LogConfiguratorXml configurator;

  EXPECT_FALSE(configurator.OpenFile(folder_.Path("missing.xml")));
  ExpectEveryStepFalse(configurator);
  EXPECT_FALSE(Open(configurator, "<configlogger>"));
  ExpectEveryStepFalse(configurator);
  parts_.tree = "";
  EXPECT_FALSE(Open(configurator, parts_.Text()));
  ExpectEveryStepFalse(configurator);

  ExpectNothingSetUp();
}

TEST_F(LogConfiguratorXmlTest, ForgetsTheFormerDocumentWhenTheNextCannotBeOpened) {
  const std::string valid = parts_.Text();
  LogConfiguratorXml configurator;
  EXPECT_TRUE(Open(configurator, valid));

  EXPECT_FALSE(configurator.OpenFile(folder_.Path("missing.xml")));
  ExpectEveryStepFalse(configurator);
  EXPECT_TRUE(Open(configurator, valid));
  parts_.tree = "";
  EXPECT_FALSE(Open(configurator, parts_.Text()));
  ExpectEveryStepFalse(configurator);

  ExpectNothingSetUp();
}

TEST_F(LogConfiguratorXmlTest, SetsUpNothingFromAValidDocumentWithAnotherRoot) {
  for (const char* const document :
       {"<logging enable=\"true\"/>", "<loglevel id=\"1\" name=\"ERROR\"/>",
        "<loghandler name=\"a\"><loghandler name=\"b\"/></loghandler>",
        "<logtree><loghandler name=\"a\"/></logtree>",
        "<logclient><type type=\"ConfiguredClient\"/><clientloghandler handlername=\"default\"/>"
        "</logclient>",
        "<layout layout=\"x\"/>"}) {
    EXPECT_FALSE(Configure(document)) << document;
    EXPECT_EQ("", errors_) << document;
  }

  ExpectNothingSetUp();
}

TEST_F(LogConfiguratorXmlTest, FindsNothingToDoBelowAnotherRoot) {
  LogConfiguratorXml configurator;
  EXPECT_TRUE(Open(configurator, "<logging enable=\"true\"/>"));

  EXPECT_FALSE(configurator.IsLoggingEnable());
  EXPECT_TRUE(configurator.SetLogLevel());
  EXPECT_TRUE(configurator.SetLogHandler());
  EXPECT_TRUE(configurator.SetLogClient());
  EXPECT_TRUE(configurator.BuildLogTree());

  ExpectNothingSetUp();
}

TEST_F(LogConfiguratorXmlTest, ReadsTheRootsChildrenWhateverTheRootIs) {
  LogConfiguratorXml configurator;
  EXPECT_TRUE(Open(configurator, "<logtree><loghandler name=\"x\"/></logtree>"));

  EXPECT_TRUE(configurator.SetLogHandler());

  EXPECT_NE(nullptr, Logger::GetExistingLogHandler("x"));
}

TEST_F(LogConfiguratorXmlTest, ReadsAnotherDocumentInThePlaceOfTheFirst) {
  LogConfiguratorXml configurator;
  EXPECT_TRUE(configurator.ReadConfiguration(File(parts_.Text())));
  parts_.levels = "<loglevel id=\"3\" name=\"THREE\"/>";
  parts_.handlers = "<loghandler name=\"c\"/>";
  parts_.clients = Client("c");

  EXPECT_TRUE(configurator.ReadConfiguration(File(parts_.Text())));

  EXPECT_EQ((Levels{{1, "ERROR"}, {2, "INFO"}, {3, "THREE"}}), RegisteredLevels());
  EXPECT_EQ((std::vector<logstring>{"default", "a", "b", "c"}),
            Logger::GetLogManager()->GetLogHandlerNames());
  EXPECT_EQ(1U, Receivers("a").size());
  EXPECT_EQ(1U, Receivers("c").size());
}

TEST_F(LogConfiguratorXmlTest, ReadsTheSameDocumentTwice) {
  LogConfiguratorXml configurator;
  const std::string file = File(parts_.Text());

  EXPECT_TRUE(configurator.ReadConfiguration(file));
  EXPECT_TRUE(configurator.ReadConfiguration(file));

  EXPECT_EQ(2U, RegisteredLevels().size());
  EXPECT_EQ(2U, Receivers("a").size());
}

TEST_F(LogConfiguratorXmlTest, LeavesWhatItSetUpBeforeAFailure) {
  EXPECT_TRUE(Configure());

  EXPECT_FALSE(Configure("<configlogger/>"));

  EXPECT_EQ(2U, RegisteredLevels().size());
  EXPECT_TRUE(Logger::GetLogHandler("a")->Log(1, "text"));
  EXPECT_EQ((std::vector<std::string>{"text\n"}), ConfiguredClient::Made().at(0)->lines);
}

TEST_F(LogConfiguratorXmlTest, HasNoDocumentWhenCopyConstructed) {
  LogConfiguratorXml source;
  EXPECT_TRUE(Open(source, parts_.Text()));

  LogConfiguratorXml copy(source);

  ExpectEveryStepFalse(copy);
  ExpectNothingSetUp();
  EXPECT_TRUE(source.IsLoggingEnable());
  EXPECT_TRUE(source.SetLogLevel());
  EXPECT_EQ(2U, RegisteredLevels().size());
}

TEST_F(LogConfiguratorXmlTest, KeepsItsOwnDocumentWhenAssignedTo) {
  LogConfiguratorXml source;
  EXPECT_TRUE(Open(source, parts_.Text()));
  parts_.levels = "<loglevel id=\"7\" name=\"SEVEN\"/>";
  LogConfiguratorXml target;
  EXPECT_TRUE(Open(target, parts_.Text()));

  LogConfiguratorXml& result = (target = source);
  target.Assign(source);

  EXPECT_EQ(&target, &result);
  EXPECT_TRUE(target.SetLogLevel());
  EXPECT_EQ((Levels{{7, "SEVEN"}}), RegisteredLevels());
}

TEST_F(LogConfiguratorXmlTest, HasNoDocumentWhenAssignedToWithoutOne) {
  LogConfiguratorXml source;
  EXPECT_TRUE(Open(source, parts_.Text()));
  LogConfiguratorXml target;

  target = source;

  ExpectEveryStepFalse(target);
}

TEST_F(LogConfiguratorXmlTest, KeepsItsDocumentWhenAssignedToItself) {
  LogConfiguratorXml configurator;
  EXPECT_TRUE(Open(configurator, parts_.Text()));
  const LogConfiguratorXml& self = configurator;

  LogConfiguratorXml& result = (configurator = self);

  EXPECT_EQ(&configurator, &result);
  EXPECT_TRUE(configurator.SetLogLevel());
}

TEST_F(LogConfiguratorXmlTest, LeavesWhatItSetUpWhenItEnds) {
  auto configurator = std::make_unique<LogConfiguratorXml>();
  EXPECT_TRUE(configurator->ReadConfiguration(File(parts_.Text())));

  configurator.reset();

  EXPECT_TRUE(Logger::GetLogHandler("a")->Log(1, "text"));
  EXPECT_EQ((std::vector<std::string>{"text\n"}), ConfiguredClient::Made().at(0)->lines);
}

// The schema.

TEST_F(LogConfiguratorXmlTest, PutsTheSchemaInThePlaceOfABuffersText) {
  LogConfiguratorXml configurator;
  logstring buffer = "old";

  logstring& result = configurator.CreateSchemaBuf(buffer);

  EXPECT_EQ(&buffer, &result);
  EXPECT_EQ(3332U, buffer.size());
  EXPECT_EQ(128, std::count(buffer.begin(), buffer.end(), '\n'));
  EXPECT_EQ("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n", buffer.substr(0, 39));
}

TEST_F(LogConfiguratorXmlTest, HasTheSchemaOfTheSourceFile) {
  LogConfiguratorXml configurator;
  logstring buffer;

  EXPECT_EQ(Content(PROJECT_FOLDER "/Src/Configuration/liblogger.xsd"),
            configurator.CreateSchemaBuf(buffer));
}

TEST_F(LogConfiguratorXmlTest, HasExactlyThisSchema) {
  LogConfiguratorXml configurator;
  logstring buffer;

  EXPECT_EQ(R"(<?xml version="1.0" encoding="UTF-8"?>
<xs:schema xmlns:xs="http://www.w3.org/2001/XMLSchema">
<xs:element name="type">
<xs:complexType>
<xs:attribute name="type" use="required">
<xs:simpleType>
<xs:restriction base="xs:string">
<xs:minLength value="1"/>
</xs:restriction>
</xs:simpleType>
</xs:attribute>
</xs:complexType>
</xs:element>
<xs:element name="parameter">
<xs:complexType>
<xs:attribute name="value" use="required">
<xs:simpleType>
<xs:restriction base="xs:string">
<xs:minLength value="1"/>
</xs:restriction>
</xs:simpleType>
</xs:attribute>
<xs:attribute name="name" use="required">
<xs:simpleType>
<xs:restriction base="xs:string">
<xs:minLength value="1"/>
</xs:restriction>
</xs:simpleType>
</xs:attribute>
</xs:complexType>
</xs:element>
<xs:element name="logtree">
<xs:complexType>
<xs:sequence>
<xs:element ref="loghandler" maxOccurs="unbounded"/>
</xs:sequence>
</xs:complexType>
</xs:element>
<xs:element name="loglevel">
<xs:complexType>
<xs:attribute name="name" use="required">
<xs:simpleType>
<xs:restriction base="xs:string">
<xs:minLength value="1"/>
</xs:restriction>
</xs:simpleType>
</xs:attribute>
<xs:attribute name="id" type="xs:unsignedInt" use="required"/>
</xs:complexType>
</xs:element>
<xs:element name="loghandler">
<xs:complexType>
<xs:choice minOccurs="0">
<xs:element ref="handlerloglevel" maxOccurs="unbounded"/>
<xs:element ref="loghandler" maxOccurs="unbounded"/>
</xs:choice>
<xs:attribute name="name" use="required">
<xs:simpleType>
<xs:restriction base="xs:string">
<xs:minLength value="1"/>
</xs:restriction>
</xs:simpleType>
</xs:attribute>
</xs:complexType>
</xs:element>
<xs:element name="logging">
<xs:complexType>
<xs:attribute name="enable" type="xs:boolean" use="required"/>
</xs:complexType>
</xs:element>
<xs:element name="logclient">
<xs:complexType>
<xs:sequence>
<xs:element ref="type"/>
<xs:element ref="clientloghandler"/>
<xs:element ref="parameter" minOccurs="0" maxOccurs="unbounded"/>
<xs:element ref="layout" minOccurs="0" maxOccurs="1"/>
</xs:sequence>
</xs:complexType>
</xs:element>
<xs:element name="layout">
<xs:complexType>
<xs:attribute name="layout" use="required">
<xs:simpleType>
<xs:restriction base="xs:string">
<xs:minLength value="1"/>
</xs:restriction>
</xs:simpleType>
</xs:attribute>
</xs:complexType>
</xs:element>
<xs:element name="handlerloglevel">
<xs:complexType>
<xs:attribute name="level" type="xs:unsignedInt" use="required"/>
<xs:attribute name="enable" type="xs:boolean" use="required"/>
</xs:complexType>
</xs:element>
<xs:element name="defaultloghandler">
<xs:complexType>
<xs:sequence>
<xs:element ref="handlerloglevel"/>
</xs:sequence>
</xs:complexType>
</xs:element>
<xs:element name="configlogger">
<xs:complexType>
<xs:sequence>
<xs:element ref="logging"/>
<xs:element ref="loglevel" maxOccurs="unbounded"/>
<xs:element ref="loghandler" maxOccurs="unbounded"/>
<xs:element ref="defaultloghandler" minOccurs="0" maxOccurs="1"/>
<xs:element ref="logclient" maxOccurs="unbounded"/>
<xs:element ref="logtree"/>
</xs:sequence>
</xs:complexType>
</xs:element>
<xs:element name="clientloghandler">
<xs:complexType>
<xs:attribute name="handlername" use="required">
<xs:simpleType>
<xs:restriction base="xs:string">
<xs:minLength value="1"/>
</xs:restriction>
</xs:simpleType>
</xs:attribute>
</xs:complexType>
</xs:element>
</xs:schema>
)",
            configurator.CreateSchemaBuf(buffer));
}

}  // namespace

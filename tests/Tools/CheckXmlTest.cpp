#include <gtest/gtest.h>

#include <string>

#include "Support/Checked.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"

using Loggerctl::CheckOptions;

namespace {

constexpr const char* kClient =
    "<logclient><type type=\"LogClientConsole\"/><clientloghandler handlername=\"net\"/>"
    "</logclient>\n";
constexpr const char* kTree =
    "<logtree><loghandler name=\"default\"><loghandler name=\"net\"/></loghandler></logtree>\n";

/// A document whose parts stand on lines of their own: logging on 2, the level on 3, two handlers
/// on 4 and 5, the client on 6, the tree on 7.
struct Parts {
  std::string logging = "<logging enable=\"true\"/>\n";
  std::string level = "<loglevel id=\"1\" name=\"ERROR\"/>\n";
  std::string handler = "<loghandler name=\"net\"/>\n";
  std::string client = kClient;
  std::string tree = kTree;

  std::string Document() const {
    return "<configlogger>\n" + logging + level + "<loghandler name=\"default\"/>\n" + handler +
           client + tree + "</configlogger>\n";
  }
};

std::string CheckedLogging(const std::string& word) {
  Parts parts;
  parts.logging = "<logging enable=\"" + word + "\"/>\n";
  return Checked(parts.Document());
}

std::string CheckedLevel(const std::string& element) {
  Parts parts;
  parts.level = element + "\n";
  return Checked(parts.Document());
}

std::string CheckedHandler(const std::string& element) {
  Parts parts;
  parts.handler = element + "\n";
  return Checked(parts.Document());
}

std::string CheckedClient(const std::string& kind, const std::string& elements,
                          const std::string& handler = "net") {
  Parts parts;
  parts.client = "<logclient><type type=\"" + kind + "\"/><clientloghandler handlername=\"" +
                 handler + "\"/>" + elements + "</logclient>\n";
  return Checked(parts.Document());
}

std::string CheckedTree(const std::string& handlers) {
  Parts parts;
  parts.tree = "<logtree>" + handlers + "</logtree>\n";
  return Checked(parts.Document());
}

TEST(CheckXmlTest, FindsNothingInADocumentWithoutFault) {
  EXPECT_EQ("", Checked(Parts().Document()));
  EXPECT_EQ("", Checked("\n  \n" + Parts().Document()));
  EXPECT_EQ("", Checked("<?xml version=\"1.0\" encoding=\"UTF-8\"?>\n<!-- a comment -->\n" +
                        Parts().Document()));
}

// Inputs that are no configuration.

TEST(CheckXmlTest, ReportsWhereADocumentIsBroken) {
  EXPECT_EQ(
      "it:3: error: Opening and ending tag mismatch: logging line 2 and configlogger: this is no "
      "document, and nothing is configured\n",
      Checked("<configlogger>\n<logging>\n</configlogger>\n"));
  EXPECT_EQ(
      "it:1: error: Entity 'app' not defined: this is no document, and nothing is configured\n",
      Checked("<configlogger>&app;</configlogger>\n"));
}

TEST(CheckXmlTest, RefusesADocumentTypeWithoutLookingIntoIt) {
  const TemporaryFolder folder;
  WriteFile(folder.Path("entity"), "<logging enable=\"true\"/>");

  EXPECT_EQ(
      "it:2: error: a document type is refused: a configuration is data, and entities can read "
      "other "
      "files; remove it, and write the values themselves\n",
      Checked("<!-- a comment -->\n<!DOCTYPE configlogger [\n<!ENTITY other SYSTEM \"" +
              folder.Path("entity") + "\">\n]>\n<configlogger>&other;</configlogger>\n"));
}

TEST(CheckXmlTest, ReportsWhatTheSchemaSays) {
  EXPECT_EQ(
      "it:2: error: Element 'logging', attribute 'enable': 'maybe' is not a valid value of the "
      "atomic type 'xs:boolean'\n",
      CheckedLogging("maybe"));
  EXPECT_EQ(
      "it:3: error: Element 'loglevel', attribute 'name': [facet 'minLength'] The value '' has a "
      "length of '0'; this underruns the allowed minimum length of '1'\n",
      CheckedLevel("<loglevel id=\"1\" name=\"\"/>"));
  EXPECT_EQ(
      "it:5: error: Element 'loghandler', attribute 'nmae': The attribute 'nmae' is not allowed; "
      "did "
      "you mean 'name'?\n"
      "it:5: error: Element 'loghandler': The attribute 'name' is required but missing\n",
      CheckedHandler("<loghandler nmae=\"net\"/>"));
  EXPECT_EQ(
      "it:3: error: Element 'loglevl': This element is not expected. Expected is ( loglevel ); did "
      "you mean 'loglevel'?\n",
      CheckedLevel("<loglevl id=\"1\" name=\"ERROR\"/>"));
}

TEST(CheckXmlTest, ReportsTheLinesOfALongDocument) {
  Parts parts;
  parts.level = std::string(70000, '\n') + "<loglevel id=\"x\" name=\"ERROR\"/>\n";

  EXPECT_EQ(
      "it:70003: error: Element 'loglevel', attribute 'id': 'x' is not a valid value of the atomic "
      "type 'xs:unsignedInt'\n",
      Checked(parts.Document()));
}

TEST(CheckXmlTest, ReportsAValidDocumentThatIsNoConfiguration) {
  EXPECT_EQ(
      "it:1: error: the document is a 'loghandler': nothing is configured; put it into "
      "'configlogger'\n",
      Checked("<loghandler name=\"net\"/>\n"));
}

// Words for yes and no.

TEST(CheckXmlTest, ReportsThatLoggingIsOff) {
  EXPECT_EQ("it:2: warning: logging is off: nothing in the file is configured\n",
            CheckedLogging("false"));
}

TEST(CheckXmlTest, ReportsAWordThatLeavesLoggingOn) {
  EXPECT_EQ(
      "it:2: error: '0' leaves logging on: only 'false' switches it off; did you mean 'false'?\n",
      CheckedLogging("0"));
  EXPECT_EQ(
      "it:2: error: ' false ' leaves logging on: only 'false' switches it off; did you mean "
      "'false'?\n",
      CheckedLogging(" false "));
  EXPECT_EQ("", CheckedLogging("1"));
}

std::string CheckedSwitch(const std::string& level, const std::string& enable) {
  Parts parts;
  parts.level = "<loglevel id=\"1\" name=\"ERROR\"/><loglevel id=\"2\" name=\"INFO\"/>\n";
  parts.handler = "<loghandler name=\"net\"><handlerloglevel level=\"" + level + "\" enable=\"" +
                  enable + "\"/></loghandler>\n";
  return Checked(parts.Document());
}

TEST(CheckXmlTest, ReportsAWordThatSwitchesALevelOff) {
  EXPECT_EQ("", CheckedSwitch("1", "true"));
  EXPECT_EQ("", CheckedSwitch("1", "false"));
  EXPECT_EQ(
      "it:5: error: '1' switches level 1 off on handler 'net': only 'true' switches it on; did "
      "you mean 'true'?\n",
      CheckedSwitch("1", "1"));
  EXPECT_EQ(
      "it:5: warning: '0' switches level 1 off on handler 'net': only 'true' switches it on; "
      "write 'false'\n",
      CheckedSwitch("1", "0"));
}

// Levels.

TEST(CheckXmlTest, ReportsALevelThatIsReadAsAnother) {
  EXPECT_EQ("", CheckedLevel("<loglevel id=\"0\" name=\"ERROR\"/>"));
  EXPECT_EQ("", CheckedLevel("<loglevel id=\"2147483647\" name=\"ERROR\"/>"));
  EXPECT_EQ(
      "it:3: error: level '2147483648' is read as 2147483647: a number beyond that does not "
      "fit; levels are numbers from 1 to 2147483647\n",
      CheckedLevel("<loglevel id=\"2147483648\" name=\"ERROR\"/>"));
}

TEST(CheckXmlTest, ReportsALevelGivenTwice) {
  EXPECT_EQ(
      "it:3: error: level '1' is given twice; only the first one counts; remove one of the "
      "two\n",
      CheckedLevel("<loglevel id=\"1\" name=\"A\"/><loglevel id=\"1\" name=\"B\"/>"));
  EXPECT_EQ("it:3: warning: levels '1' and '2' have the same name 'A'\n",
            CheckedLevel("<loglevel id=\"1\" name=\"A\"/><loglevel id=\"2\" name=\"A\"/>"));
}

TEST(CheckXmlTest, ReportsASwitchThatDoesNothing) {
  EXPECT_EQ(
      "it:5: error: level '3' is not registered: the switch does nothing; register the level, "
      "or remove the switch (if the application registers it: --level 3)\n",
      CheckedSwitch("3", "false"));
  EXPECT_EQ(
      "it:5: error: level '4000000000' is read as 2147483647: a number beyond that does not fit; "
      "levels are numbers from 0 to 2147483647\n"
      "it:5: error: level '4000000000' is not registered: the switch does nothing; register the "
      "level, or remove the switch (if the application registers it: --level 4000000000)\n",
      CheckedSwitch("4000000000", "false"));
  EXPECT_EQ(
      "it:5: error: level '2' is switched again on handler 'net'; the last switch counts; "
      "remove one of the two\n",
      CheckedSwitch("2\" enable=\"true\"/><handlerloglevel level=\"2", "false"));
}

// Handlers.

TEST(CheckXmlTest, ReportsElementsWithoutEffect) {
  EXPECT_EQ(
      "it:5: error: 'defaultloghandler' has no effect; write <loghandler name=\"default\"> with "
      "the switches in it\n",
      CheckedHandler("<loghandler name=\"net\"/><defaultloghandler><handlerloglevel level=\"1\" "
                     "enable=\"false\"/></defaultloghandler>"));
  EXPECT_EQ(
      "it:5: error: handler 'disk' is ignored here: handlers are nested within 'logtree' only; "
      "make it beside this one, and nest it in 'logtree'\n",
      CheckedHandler("<loghandler name=\"net\"><loghandler name=\"disk\"/></loghandler>"));
  EXPECT_EQ(
      "it:7: error: 'handlerloglevel' is ignored within 'logtree'; write it where the handler "
      "is made\n",
      CheckedTree("<loghandler name=\"default\"><loghandler name=\"net\"><handlerloglevel "
                  "level=\"1\" enable=\"false\"/></loghandler></loghandler>"));
}

TEST(CheckXmlTest, ReportsAHandlerGivenTwice) {
  EXPECT_EQ("it:5: error: handler 'net' is given twice; the second does nothing; name it once\n",
            CheckedHandler("<loghandler name=\"net\"/><loghandler name=\"net\"/>"));
}

TEST(CheckXmlTest, ReportsHandlersThatAreNotInTheTree) {
  EXPECT_EQ(
      "it:4: warning: handler 'default' reaches no client: what is logged on it is written "
      "nowhere; attach a client to it or below it, or remove it\n"
      "it:7: error: handler 'Net' does not exist, and is left out of the tree with all below "
      "it; did you mean 'net'? (if the application makes it: --handler Net)\n",
      CheckedTree("<loghandler name=\"default\"><loghandler name=\"Net\"><loghandler "
                  "name=\"net\"/></loghandler></loghandler>"));
  EXPECT_EQ(
      "it:4: warning: handler 'default' reaches no client: what is logged on it is written "
      "nowhere; attach a client to it or below it, or remove it\n"
      "it:7: error: handler 'disk' does not exist, and is left out of the tree with all below "
      "it; make it with a 'loghandler' before the clients (if the application makes it: --handler "
      "disk)\n",
      CheckedTree("<loghandler name=\"disk\"><loghandler name=\"net\"/></loghandler>"));
}

TEST(CheckXmlTest, ReportsACircle) {
  EXPECT_EQ(
      "it:7: error: handler 'default' is its own descendant, by way of 'net': a process that "
      "logs through it ends or hangs; handlers must form a tree\n",
      CheckedTree("<loghandler name=\"default\"><loghandler name=\"net\"><loghandler "
                  "name=\"default\"/></loghandler></loghandler>"));
}

// Clients.

TEST(CheckXmlTest, ReportsAClientThatIsLeftOut) {
  EXPECT_EQ(
      "it:6: error: the client is left out: there is no kind of client 'LogClientXml'; did you "
      "mean 'LogClientXML'? (if the application registers it: --kind LogClientXml)\n",
      CheckedClient("LogClientXml", ""));
  EXPECT_EQ(
      "it:4: warning: handler 'default' reaches no client: what is logged on it is written "
      "nowhere; attach a client to it or below it, or remove it\n"
      "it:5: warning: handler 'net' reaches no client: what is logged on it is written "
      "nowhere; attach a client to it or below it, or remove it\n"
      "it:6: error: the client is left out: there is no handler ' net'; did you mean 'net'? (if "
      "the application makes it: --handler \" net\")\n",
      CheckedClient("LogClientConsole", "", " net"));
}

TEST(CheckXmlTest, ReportsALayoutThatIsUnknownOrOfNoUse) {
  EXPECT_EQ(
      "it:6: error: the client writes nothing: there is no layout 'LogLayoutsimple'; did you "
      "mean 'LogLayoutSimple'? (if the application registers it: --layout LogLayoutsimple)\n",
      CheckedClient("LogClientConsole", "<layout layout=\"LogLayoutsimple\"/>"));
  EXPECT_EQ("it:6: error: a LogClientXML has no use for a layout, which is ignored; remove it\n",
            CheckedClient("LogClientXML",
                          "<parameter name=\"filename\" value=\"a.xml\"/><parameter "
                          "name=\"escapetext\" value=\"true\"/><layout "
                          "layout=\"x\"/>"));
}

TEST(CheckXmlTest, ReportsParameters) {
  EXPECT_EQ(
      "it:6: error: parameter 'filename' is given again, and ignored: line 6 has it first; remove "
      "one of the two\n"
      "it:6: error: 'False' leaves parameter 'fileappend' on: only 'false' switches it off; did "
      "you "
      "mean 'false'?\n",
      CheckedClient("LogClientFile",
                    "<parameter name=\"filename\" value=\"a\"/><parameter name=\"filename\" "
                    "value=\"b\"/><parameter name=\"fileappend\" value=\"False\"/>"));
}

TEST(CheckXmlTest, KnowsTheHandlersAndLevelsOfTheApplication) {
  Parts parts;
  parts.handler =
      "<loghandler name=\"net\"><handlerloglevel level=\"5\" enable=\"false\"/></loghandler>\n";
  parts.tree =
      "<logtree><loghandler name=\"default\"><loghandler name=\"appmade\"><loghandler "
      "name=\"net\"/></loghandler></loghandler></logtree>\n";
  CheckOptions options;
  options.own.handlers = {"appmade"};
  options.own.levels = {5};

  EXPECT_EQ("", Checked(parts.Document(), options));
}

}  // namespace

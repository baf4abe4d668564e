// The system calls of loggerctl show, as strace prints them.

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "Support/Files.h"
#include "Support/Process.h"
#include "Support/TemporaryFolder.h"

namespace {

typedef std::vector<std::string> Words;

Words operator+(Words first, const Words& second) {
  first.insert(first.end(), second.begin(), second.end());
  return first;
}

class LoggerctlShowTracedTest : public testing::Test {
 protected:
  LoggerctlShowTracedTest() {
    WriteFile(kept_, "kept\n");
    WriteFile(kept_ + ".1", "older\n");
    WriteFile(ini_, IniText());
    WriteFile(xml_, XmlText(""));
    WriteFile(remote_, "<!DOCTYPE configlogger [<!ENTITY far SYSTEM \"http://127.0.0.1:1/far\">]>" +
                           XmlText("&far;"));
  }

  /// One client of each kind that would open, empty, make or move files, or connect.
  std::string IniText() const {
    return "loglevel = 1\n"
           "loghandler = default\n"
           "logclient = new emptied rolling socket xml\n"
           "logclient.new.type = LogClientFile\n"
           "logclient.new.handler = default\n"
           "logclient.new.parameter.0.name = filename\n"
           "logclient.new.parameter.0.value = " +
           new_ +
           "\n"
           "logclient.emptied.type = LogClientFile\n"
           "logclient.emptied.handler = default\n"
           "logclient.emptied.parameter.0.name = filename\n"
           "logclient.emptied.parameter.0.value = " +
           kept_ +
           "\n"
           "logclient.emptied.parameter.1.name = fileappend\n"
           "logclient.emptied.parameter.1.value = false\n"
           "logclient.rolling.type = LogClientRollingFile\n"
           "logclient.rolling.handler = default\n"
           "logclient.rolling.parameter.0.name = filename\n"
           "logclient.rolling.parameter.0.value = " +
           kept_ +
           "\n"
           "logclient.rolling.parameter.1.name = maxbackup\n"
           "logclient.rolling.parameter.1.value = 2\n"
           "logclient.socket.type = LogClientSocket\n"
           "logclient.socket.handler = default\n"
           "logclient.socket.parameter.0.name = serverip\n"
           "logclient.socket.parameter.0.value = 127.0.0.1\n"
           "logclient.socket.parameter.1.name = serverport\n"
           "logclient.socket.parameter.1.value = 1\n"
           "logclient.xml.type = LogClientXML\n"
           "logclient.xml.handler = default\n"
           "logclient.xml.parameter.0.name = filename\n"
           "logclient.xml.parameter.0.value = " +
           new_ + ".xml\n";
  }

  /// The same clients, and an entity.
  std::string XmlText(const std::string& entity) const {
    return "<configlogger><logging enable=\"true\"/><loglevel id=\"1\" name=\"E\"/>"
           "<loghandler name=\"default\"/>" +
           XmlClient("LogClientFile", "<parameter name=\"filename\" value=\"" + new_ + "\"/>") +
           XmlClient("LogClientFile", "<parameter name=\"filename\" value=\"" + kept_ +
                                          "\"/><parameter name=\"fileappend\" value=\"false\"/>") +
           XmlClient("LogClientRollingFile",
                     "<parameter name=\"filename\" value=\"" + kept_ + "\"/>") +
           XmlClient("LogClientSocket",
                     "<parameter name=\"serverip\" value=\"127.0.0.1\"/>"
                     "<parameter name=\"serverport\" value=\"1\"/>") +
           XmlClient("LogClientXML", "<parameter name=\"filename\" value=\"" + new_ + ".xml\"/>") +
           "<logtree>" + entity + "<loghandler name=\"default\"/></logtree></configlogger>\n";
  }

  static std::string XmlClient(const std::string& kind, const std::string& parameters) {
    return "<logclient><type type=\"" + kind + "\"/><clientloghandler handlername=\"default\"/>" +
           parameters + "</logclient>";
  }

  /// Every call of the command's that is not the opening of a file for reading only.
  Words ChangingCalls(const Words& command) const {
    const std::string trace = folder_.Path("trace");
    const ProcessResult result = RunProgram(
        Words{"strace", "-f", "-qq", "-e", "signal=none", "-o", trace, "-e",
              "trace=open,openat,openat2,creat,truncate,ftruncate,fallocate,rename,renameat,"
              "renameat2,unlink,unlinkat,rmdir,mkdir,mkdirat,link,linkat,symlink,symlinkat,mknod,"
              "mknodat,chmod,fchmod,fchmodat,socket,connect,bind,sendto,sendmsg"} +
        command);
    output_ = result.output;
    errors_ = result.errors;
    Words changing;
    for (const std::string& line : Lines(trace)) {
      ++calls_;
      const bool isReading = line.find("O_RDONLY") != std::string::npos &&
                             line.find("O_CREAT") == std::string::npos &&
                             line.find("O_TRUNC") == std::string::npos;
      if (!isReading) changing.push_back(line);
    }
    return changing;
  }

  TemporaryFolder folder_;
  const std::string new_ = folder_.Path("new.log");
  const std::string kept_ = folder_.Path("kept.log");
  const std::string ini_ = folder_.Path("traced.ini");
  const std::string xml_ = folder_.Path("traced.xml");
  const std::string remote_ = folder_.Path("remote.xml");
  mutable int calls_ = 0;
  mutable std::string output_;
  mutable std::string errors_;
};

TEST_F(LoggerctlShowTracedTest, ChangesNoFileAndConnectsToNothing) {
  for (const Words& words : {Words{ini_}, Words{ini_, "--dot"}, Words{xml_}, Words{remote_}}) {
    calls_ = 0;

    EXPECT_EQ(Words{}, ChangingCalls(Words{LOGGERCTL, "show"} + words)) << errors_;

    EXPECT_GT(calls_, 0) << errors_;
    const bool isShown = output_.find("127.0.0.1") != std::string::npos;
    EXPECT_EQ(words[0] != remote_, isShown) << output_;
    EXPECT_EQ("kept\n", Content(kept_));
    EXPECT_EQ("older\n", Content(kept_ + ".1"));
    EXPECT_FALSE(Exists(new_));
    EXPECT_FALSE(Exists(new_ + ".xml"));
  }
}

TEST_F(LoggerctlShowTracedTest, WouldReportTheCallsOfRealClients) {
  std::string calls;
  for (const std::string& call :
       ChangingCalls({LOGGERCTL, "write", "--config", ini_, "--level", "1", "text"})) {
    calls += call + "\n";
  }

  for (const char* const part : {"/new.log\"", "O_TRUNC", "O_CREAT", "rename", "connect("}) {
    EXPECT_NE(std::string::npos, calls.find(part)) << part << " is not in\n" << calls << errors_;
  }
}

}  // namespace

// The checker and the library agree: in a file without findings there is nothing that the library
// skips. That is tested without the checker's rules: changing any value of the file must give
// another system.

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdlib>
#include <functional>
#include <random>
#include <sstream>
#include <string>
#include <typeinfo>
#include <vector>

#include "LogClient.h"
#include "LogClientFactory.h"
#include "LogConfiguratorIni.h"
#include "LogConfiguratorXml.h"
#include "LogHandler.h"
#include "LogLayout.h"
#include "LogLevelManager.h"
#include "LogProperties.h"
#include "Logger.h"
#include "Support/Checked.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"

namespace {

typedef std::vector<std::string> Words;

// The system that the library makes of a file.

/// Stands in for a kind of client, and records its parameters.
class StandIn : public LogClient {
 public:
  StandIn(const std::string& kind, const Words& parameters, const LogProperties& properties)
      : description_(kind) {
    for (const std::string& name : parameters) {
      description_ += " " + name + "=" + properties.GetProperty(name);
    }
    initialized_ = true;
  }
  bool Publish(const LogEvent&) override { return true; }
  std::string Describe() const {
    return description_ + (layout_ == nullptr ? " no layout" : typeid(*layout_).name());
  }
  void LeaveOut() { initialized_ = false; }

 private:
  std::string description_;
};

LogClient* MakeConsole(const LogProperties& p) { return new StandIn("console", {}, p); }
LogClient* MakeRolling(const LogProperties& p) {
  return new StandIn("rolling", {"filename", "fileappend", "filesize", "maxbackup"}, p);
}
LogClient* MakeFile(const LogProperties& p) {
  auto* const client = new StandIn("file", {"filename", "fileappend"}, p);
  if (p.GetProperty("filename").empty()) client->LeaveOut();
  return client;
}
LogClient* MakeXml(const LogProperties& p) {
  auto* const client = new StandIn("xml", {"filename", "xslfilename", "escapetext"}, p);
  client->SetLayout("LogLayoutStandard");
  if (p.GetProperty("filename").empty()) client->LeaveOut();
  return client;
}
LogClient* MakeSocket(const LogProperties& p) {
  auto* const client =
      new StandIn("socket", {"serverip", "serverport", "socketasynchron", "timeout"}, p);
  const bool hasServer =
      !p.GetProperty("serverip").empty() && std::atoi(p.GetProperty("serverport").c_str()) != 0;
  if (!hasServer) client->LeaveOut();
  return client;
}

void PutInStandIns() {
  LogClientFactory& factory = *Logger::GetLogManager()->GetLogClientFactory();
  const std::vector<std::pair<const char*, LogClientFactory::Creator>> kinds{
      {"LogClientConsole", MakeConsole},
      {"LogClientFile", MakeFile},
      {"LogClientRollingFile", MakeRolling},
      {"LogClientSocket", MakeSocket},
      {"LogClientXML", MakeXml}};
  for (const auto& [name, creator] : kinds) {
    factory.UnregisterLogClient(name);
    factory.RegisterLogClient(name, creator);
  }
}

std::string DescribeReceiver(LogHandlerClient& receiver) {
  const auto* const client = dynamic_cast<StandIn*>(&receiver);
  return client == nullptr ? dynamic_cast<LogHandler&>(receiver).GetName() : client->Describe();
}

std::string DescribeSystem() {
  std::ostringstream out;
  unsigned int level = 0;
  Words levels;
  for (int index = 0; Logger::GetLogLevelManager()->GetLogLevel(index, level); ++index) {
    out << level << ":" << Logger::GetLogLevelManager()->GetLogLevelName(level) << "\n";
  }
  for (const logstring& name : Logger::GetLogManager()->GetLogHandlerNames()) {
    LogHandler& handler = *Logger::GetExistingLogHandler(name);
    out << "[" << name << "]";
    for (int index = 0; Logger::GetLogLevelManager()->GetLogLevel(index, level); ++index) {
      out << (handler.GetLogLevel(level) ? " on" : " off");
    }
    for (unsigned int index = 0; index < handler.GetLogClientCount(); ++index) {
      out << ", " << DescribeReceiver(*handler.GetLogClientAt(index));
    }
    out << "\n";
  }
  return out.str();
}

class CheckAgreementTest : public testing::Test {
 protected:
  CheckAgreementTest() : file_(folder_.Path("configuration")) {}

  /// The system that a process of its own sets up from the text.
  template <typename Configurator>
  std::string SystemOf(const std::string& text) const {
    WriteFile(file_, text);
    std::array<int, 2> ends{};
    EXPECT_EQ(0, pipe2(ends.data(), O_CLOEXEC));
    const pid_t child = fork();
    if (child == 0) {
      dup2(open("/dev/null", O_WRONLY | O_CLOEXEC), STDERR_FILENO);  // libxml2 reports errors.
      PutInStandIns();
      const bool isDone = Configurator().ReadConfiguration(file_);
      const std::string system = (isDone ? "done\n" : "not done\n") + DescribeSystem();
      const ssize_t written = write(ends[1], system.data(), system.size());
      _exit(written < 0 ? 1 : 0);
    }
    close(ends[1]);
    std::string system;
    std::array<char, 4096> buffer{};
    for (ssize_t count; (count = read(ends[0], buffer.data(), buffer.size())) > 0;) {
      system.append(buffer.data(), static_cast<std::size_t>(count));
    }
    close(ends[0]);
    waitpid(child, nullptr, 0);
    return system;
  }

  const TemporaryFolder folder_;
  const std::string file_;
  std::mt19937 random_{1};

  std::size_t Below(std::size_t limit) {
    return std::uniform_int_distribution<std::size_t>(0, limit - 1)(random_);
  }
  bool Sometimes(std::size_t oneIn) { return Below(oneIn) == 0; }
  const std::string& OneOf(const Words& words) { return words[Below(words.size())]; }

  void Mutate(std::string& text) {
    static const std::string characters = "aefl019 ._=#\"T";
    if (text.empty()) return;
    const std::size_t place = Below(text.size());
    const char character = characters[Below(characters.size())];
    switch (Below(3)) {
      case 0:
        text[place] = character;
        break;
      case 1:
        text.insert(place, 1, character);
        break;
      default:
        text.erase(place, 1);
    }
  }
};

struct Client {
  std::string kind;
  std::string layout;
  std::vector<std::pair<std::string, std::string>> parameters;
};

/// A random client without fault, whose file no other has.
Client RandomClient(std::size_t number, const std::function<bool(std::size_t)>& sometimes,
                    std::size_t kind) {
  const std::string file = "log" + std::to_string(number);
  const std::string layout = sometimes(2)   ? ""
                             : sometimes(2) ? "LogLayoutSimple"
                                            : "LogLayoutMessage";
  switch (kind) {
    case 0:
      return {"LogClientConsole", layout, {}};
    case 1:
      return {"LogClientFile", layout, {{"filename", file}, {"fileappend", "false"}}};
    case 2:
      return {"LogClientRollingFile",
              layout,
              {{"filesize", "1000"}, {"filename", file}, {"maxbackup", "3"}}};
    case 3:
      return {
          "LogClientSocket", "", {{"serverip", "::1"}, {"serverport", "4711"}, {"timeout", "9"}}};
    default:
      return {"LogClientXML", "", {{"filename", file}, {"escapetext", "true"}}};
  }
}

const Words kHandlers{"default", "a", "b", "net"};

// Properties files.

class IniAgreementTest : public CheckAgreementTest {
 protected:
  Words RandomLines() {
    Words lines{"loglevel = 1 2 7", "loglevel.1.name = ERROR", "loglevel.2.name = INFO",
                "loghandler = default a b net"};
    if (Sometimes(2)) lines.push_back("logging = true");
    for (std::size_t parent = 0; parent + 1 < kHandlers.size(); ++parent) {
      lines.push_back("loghandler." + kHandlers[parent] + ".child = " + kHandlers[parent + 1]);
    }
    for (const std::string& handler : kHandlers) {
      if (Sometimes(2)) {
        lines.push_back("loghandler." + handler + ".level." + OneOf({"1", "2", "7"}) + " = " +
                        OneOf({"true", "false"}));
      }
    }
    lines.push_back("logclient = c0 c1");
    for (std::size_t number = 0; number < 2; ++number) AppendClient(number, lines);
    std::shuffle(lines.begin(), lines.end(), random_);
    return lines;
  }

  void AppendClient(std::size_t number, Words& lines) {
    const Client client = RandomClient(
        number, [&](std::size_t oneIn) { return Sometimes(oneIn); }, Below(5));
    const std::string key = "logclient.c" + std::to_string(number);
    lines.push_back(key + ".type = " + client.kind);
    lines.push_back(key + ".handler = net");
    if (!client.layout.empty()) lines.push_back(key + ".layout = " + client.layout);
    for (std::size_t i = 0; i < client.parameters.size(); ++i) {
      const std::string parameter = key + ".parameter." + std::to_string(i);
      lines.push_back(parameter + ".name = " + client.parameters[i].first);
      lines.push_back(parameter + ".value = " + client.parameters[i].second);
    }
  }

  /// Something that the library skips.
  std::string Trap() {
    return OneOf({"[section]", "loglevel.9.name = DEBUG", "loghandler.a.level.9 = false",
                  "loghandler.c.level.1 = false", "loghandler.c.child = net",
                  "logclient.c2.type = LogClientFile", "logclient.c0.parameter.9.name = filename",
                  "logclient.c1.parameter.3.value = x", "loghandler.a.level.02 = false",
                  "logclient.c0.name = c0", "logclient.c1.parameter.00.name = filename"});
  }

  static std::string Joined(const Words& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
  }

  /// The line with other words in the place of each item of its value; for one item after another.
  static std::vector<Words> Others(const std::string& line) {
    std::vector<Words> others;
    std::size_t start = line.find_first_not_of(' ', line.find('=') + 1);
    for (std::size_t end = start; end < line.size(); start = end + 1) {
      end = std::min(line.find(' ', start), line.size());
      others.emplace_back();
      for (const char* const word : {"zz9", "false", "true", "77", ""}) {
        others.back().push_back(line.substr(0, start) + word + line.substr(end));
      }
    }
    return others;
  }

  bool IsEffective(const Words& lines, std::size_t index, const std::string& system) const {
    const std::string text = lines[index].substr(0, lines[index].find('#'));
    if (text.find('=') == std::string::npos) {
      return text.find_first_not_of(' ') == std::string::npos;
    }
    const std::vector<Words> others = Others(text.substr(0, text.find_last_not_of(' ') + 1));
    return std::all_of(others.begin(), others.end(), [&](const Words& one) {
      return std::any_of(one.begin(), one.end(), [&](const std::string& other) {
        Words changed = lines;
        changed[index] = other;
        return SystemOf<LogConfiguratorIni>(Joined(changed)) != system;
      });
    });
  }

  void ExpectEveryLineToCount(const Words& lines) const {
    const std::string system = SystemOf<LogConfiguratorIni>(Joined(lines));
    EXPECT_EQ(0U, system.find("done\n"));
    for (std::size_t index = 0; index < lines.size(); ++index) {
      EXPECT_TRUE(IsEffective(lines, index, system)) << lines[index] << "\nin\n" << Joined(lines);
    }
  }
};

TEST_F(IniAgreementTest, FindsNothingInFilesWithoutFault) {
  for (int round = 0; round < 300; ++round) EXPECT_EQ("", Checked(Joined(RandomLines())));
}

TEST_F(IniAgreementTest, FindsSomethingWhereverALineIsSkipped) {
  for (int round = 0; round < 300; ++round) {
    Words lines = RandomLines();
    lines.insert(lines.begin() + static_cast<std::ptrdiff_t>(Below(lines.size())), Trap());
    EXPECT_NE("", Checked(Joined(lines))) << Joined(lines);
  }
}

TEST_F(IniAgreementTest, EveryLineCountsInAFileWithoutFindings) {
  int examined = 0;
  for (int round = 0; round < 2; ++round) ExpectEveryLineToCount(RandomLines());
  for (int round = 0; round < 4000 && examined < 8; ++round) {
    Words lines = RandomLines();
    for (std::size_t faults = 1 + Below(2); faults > 0; --faults)
      Mutate(lines[Below(lines.size())]);
    if (!Checked(Joined(lines)).empty()) continue;
    ExpectEveryLineToCount(lines);
    ++examined;
  }
  EXPECT_EQ(8, examined);
}

// Documents.

class XmlAgreementTest : public CheckAgreementTest {
 protected:
  /// One element with attributes in each line.
  Words RandomLines() {
    Words lines{"<configlogger>", "<logging enable=\"true\"/>", "<loglevel id=\"0\" name=\"OFF\"/>",
                "<loglevel id=\"2\" name=\"INFO\"/>"};
    for (const std::string& handler : kHandlers) AppendHandler(handler, lines);
    for (std::size_t number = 0; number < 2; ++number) AppendClient(number, lines);
    lines.insert(
        lines.end(),
        {"<logtree>", "<loghandler name=\"default\">", "<loghandler name=\"a\">",
         "<loghandler name=\"net\"/>", "</loghandler>", "</loghandler>", "<loghandler name=\"b\">",
         "<loghandler name=\"net\"/>", "</loghandler>", "</logtree>", "</configlogger>"});
    return lines;
  }

  void AppendHandler(const std::string& handler, Words& lines) {
    lines.push_back("<loghandler name=\"" + handler + "\">");
    if (Sometimes(2)) {
      lines.push_back("<handlerloglevel level=\"" + OneOf({"0", "2"}) + "\" enable=\"" +
                      OneOf({"true", "false"}) + "\"/>");
    }
    lines.push_back("</loghandler>");
  }

  void AppendClient(std::size_t number, Words& lines) {
    const Client client = RandomClient(
        number, [&](std::size_t oneIn) { return Sometimes(oneIn); }, Below(5));
    lines.push_back("<logclient>");
    lines.push_back("<type type=\"" + client.kind + "\"/>");
    lines.push_back("<clientloghandler handlername=\"net\"/>");
    for (const auto& [name, value] : client.parameters) {
      lines.push_back("<parameter name=\"" + name + "\" value=\"" + value + "\"/>");
    }
    if (!client.layout.empty()) lines.push_back("<layout layout=\"" + client.layout + "\"/>");
    lines.push_back("</logclient>");
  }

  static std::string Joined(const Words& lines) {
    std::string text;
    for (const std::string& line : lines) text += line + "\n";
    return text;
  }

  /// The line with another valid value for each of its attributes in turn.
  static Words Others(const std::string& line) {
    Words others;
    for (std::size_t start = 0; (start = line.find("=\"", start)) != std::string::npos;) {
      start += 2;
      const std::size_t end = line.find('"', start);
      const std::size_t name = line.rfind(' ', start) + 1;
      const std::string attribute = line.substr(name, start - 2 - name);
      Words words{"zz9"};
      if (attribute == "id" || attribute == "level") words = {"77"};
      if (attribute == "enable") words = {"true", "false"};
      for (const std::string& word : words) {
        others.push_back(line.substr(0, start) + word + line.substr(end));
      }
      start = end;
    }
    return others;
  }

  void MutateValue(std::string& line) {
    const std::size_t start = line.find("=\"");
    if (start == std::string::npos) return;
    const std::size_t end = line.find('"', start + 2);
    std::string value = line.substr(start + 2, end - start - 2);
    Mutate(value);
    if (value.find('"') == std::string::npos) line.replace(start + 2, end - start - 2, value);
  }

  void ExpectEveryElementToCount(const Words& lines) const {
    const std::string system = SystemOf<LogConfiguratorXml>(Joined(lines));
    EXPECT_EQ(0U, system.find("done\n"));
    for (std::size_t index = 0; index < lines.size(); ++index) {
      const Words others = Others(lines[index]);
      const bool counts = std::any_of(others.begin(), others.end(), [&](const std::string& other) {
        Words changed = lines;
        changed[index] = other;
        return SystemOf<LogConfiguratorXml>(Joined(changed)) != system;
      });
      EXPECT_TRUE(counts || others.empty()) << lines[index] << "\nin\n" << Joined(lines);
    }
  }
};

TEST_F(XmlAgreementTest, FindsNothingInDocumentsWithoutFault) {
  for (int round = 0; round < 300; ++round) EXPECT_EQ("", Checked(Joined(RandomLines())));
}

TEST_F(XmlAgreementTest, EveryElementCountsInADocumentWithoutFindings) {
  int examined = 0;
  for (int round = 0; round < 2; ++round) ExpectEveryElementToCount(RandomLines());
  for (int round = 0; round < 4000 && examined < 8; ++round) {
    Words lines = RandomLines();
    for (std::size_t faults = 1 + Below(2); faults > 0; --faults) {
      MutateValue(lines[Below(lines.size())]);
    }
    if (lines == RandomLines() || !Checked(Joined(lines)).empty()) continue;
    ExpectEveryElementToCount(lines);
    ++examined;
  }
  EXPECT_EQ(8, examined);
}

}  // namespace

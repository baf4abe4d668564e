// The system as a graph in the language of Graphviz.

#include <sstream>

#include "Printable.h"
#include "Show/ConfiguredSystem.h"
#include "Show/RecordingClients.h"

namespace Loggerctl {

namespace {

/// A label of several lines. Graphviz reads backslashes and references to characters in it.
class Label {
 public:
  void Append(const std::string& line) {
    for (const char character : line) {
      if (character == '&') {
        text_ += "&amp;";
        continue;
      }
      if (character == '"' || character == '\\') text_ += '\\';
      text_ += character;
    }
    text_ += "\\l";  // Ends the line, and puts it to the left.
  }

  std::string Quoted() const { return '"' + text_ + '"'; }

 private:
  std::string text_;
};

void AppendLevels(std::ostream& out, const ConfiguredSystem& system) {
  Label label;
  label.Append(system.levels.empty() ? "no levels" : "levels");
  for (const ConfiguredSystem::Level& level : system.levels) label.Append(LevelText(level));
  out << "  levels [shape=plaintext, label=" << label.Quoted() << "];\n";
}

void AppendHandler(std::ostream& out, std::size_t number,
                   const ConfiguredSystem::Handler& handler) {
  Label label;
  label.Append(Printable(handler.name));
  if (!handler.levelsOff.empty()) label.Append(OffText(handler));
  out << "  handler" << number
      << " [style=\"rounded,filled\", fillcolor=\"#dbe9f6\", label=" << label.Quoted() << "];\n";
}

void AppendClient(std::ostream& out, std::size_t number, const ConfiguredSystem::Client& client) {
  Label label;
  label.Append(Printable(client.recording->Kind().name));
  for (const auto& [name, value] : client.recording->GivenParameters()) {
    label.Append(Printable(name) + " = " + Printable(value));
  }
  const std::string remark = RemarkOn(client);
  if (!remark.empty()) label.Append(remark);
  out << "  client" << number << " [" << (client.isAttached ? "" : "style=dashed, ")
      << "label=" << label.Quoted() << "];\n";
}

void AppendEdges(std::ostream& out, std::size_t number, const ConfiguredSystem::Handler& handler) {
  for (const ConfiguredSystem::Receiver& receiver : handler.receivers) {
    out << "  handler" << number << " -> " << (receiver.isClient ? "client" : "handler")
        << receiver.index + 1 << ";\n";
  }
}

}  // namespace

std::string DotOf(const ConfiguredSystem& system) {
  std::ostringstream out;
  out << "digraph system {\n"
         "  rankdir=LR;\n"
         "  ordering=out;\n"
         "  node [shape=box, fontname=\"sans-serif\", fontsize=11];\n";
  AppendLevels(out, system);
  for (std::size_t index = 0; index < system.handlers.size(); ++index) {
    AppendHandler(out, index + 1, system.handlers[index]);
  }
  for (std::size_t index = 0; index < system.clients.size(); ++index) {
    AppendClient(out, index + 1, system.clients[index]);
  }
  for (std::size_t index = 0; index < system.handlers.size(); ++index) {
    AppendEdges(out, index + 1, system.handlers[index]);
  }
  out << "}\n";
  return out.str();
}

}  // namespace Loggerctl

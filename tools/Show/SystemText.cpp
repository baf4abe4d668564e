// The system for a terminal.

#include <algorithm>
#include <set>
#include <sstream>

#include "Printable.h"
#include "Show/ConfiguredSystem.h"
#include "Show/RecordingClients.h"

namespace Loggerctl {

namespace {

typedef ConfiguredSystem::Handler Handler;
typedef ConfiguredSystem::Receiver Receiver;
typedef ConfiguredSystem::Client Client;

constexpr const char* kNone = "  none\n";

/// The columns that a text takes, if every character takes one.
std::size_t WidthOf(const std::string& text) {
  return static_cast<std::size_t>(std::count_if(text.begin(), text.end(), [](char byte) {
    return (static_cast<unsigned char>(byte) & 0xC0U) != 0x80U;
  }));
}

std::string Padded(const std::string& text, std::size_t width) {
  return text + std::string(width - WidthOf(text), ' ');
}

void AppendLevels(std::ostream& out, const ConfiguredSystem& system) {
  out << "levels\n";
  if (system.levels.empty()) out << kNone;
  for (const ConfiguredSystem::Level& level : system.levels) {
    out << "  " << LevelText(level) << "\n";
  }
}

void AppendHandlers(std::ostream& out, const ConfiguredSystem& system) {
  std::size_t width = 0;
  for (const Handler& handler : system.handlers) {
    width = std::max(width, WidthOf(Printable(handler.name)));
  }
  out << "\nhandlers\n";
  for (const Handler& handler : system.handlers) {
    const std::string off = OffText(handler);
    out << "  " << Padded(Printable(handler.name), width) << "  "
        << (off.empty() ? "all levels on" : off) << "\n";
  }
}

/// Draws the tree of handlers and clients. A handler that is reached by several ways is drawn once,
/// and only named afterwards.
class Tree {
 public:
  Tree(std::ostream& out, const ConfiguredSystem& system) : out_(out), system_(system) {}

  void Draw() {
    out_ << "\ntree\n";
    const std::set<std::size_t> children = Children();
    for (std::size_t index = 0; index < system_.handlers.size(); ++index) {
      if (children.count(index) == 0) DrawTop(index);
    }
    // The rest is reached from itself only: cycles, and the handlers below them.
    for (std::size_t index = 0; index < system_.handlers.size(); ++index) {
      if (drawn_.count(index) == 0) DrawTop(index);
    }
  }

 private:
  std::ostream& out_;
  const ConfiguredSystem& system_;
  std::set<std::size_t> drawn_;
  std::set<std::size_t> underWay_;

  std::set<std::size_t> Children() const {
    std::set<std::size_t> children;
    for (const Handler& handler : system_.handlers) {
      for (const Receiver& receiver : handler.receivers) {
        if (!receiver.isClient) children.insert(receiver.index);
      }
    }
    return children;
  }

  void DrawTop(std::size_t index) {
    out_ << "  ";
    DrawHandler(index, "  ");
  }

  // NOLINTNEXTLINE(misc-no-recursion): as deep as the tree of handlers.
  void DrawHandler(std::size_t index, const std::string& indent) {
    const Handler& handler = system_.handlers[index];
    out_ << Printable(handler.name);
    const bool isFirst = drawn_.insert(index).second;
    if (isFirst || handler.receivers.empty()) {
      out_ << "\n";
      underWay_.insert(index);
      DrawReceivers(handler, indent);
      underWay_.erase(index);
    } else {
      out_ << (underWay_.count(index) > 0 ? " (again: a cycle)\n" : " (see above)\n");
    }
  }

  // NOLINTNEXTLINE(misc-no-recursion): as deep as the tree of handlers.
  void DrawReceivers(const Handler& handler, const std::string& indent) {
    for (const Receiver& receiver : handler.receivers) {
      const bool isLast = &receiver == &handler.receivers.back();
      out_ << indent << (isLast ? "└── " : "├── ");
      if (receiver.isClient) {
        const Client& client = system_.clients[receiver.index];
        out_ << "client " << Printable(client.name) << ": "
             << Printable(client.recording->Kind().name) << "\n";
      } else {
        DrawHandler(receiver.index, indent + (isLast ? "    " : "│   "));
      }
    }
  }
};

void AppendClient(std::ostream& out, const Client& client) {
  out << "  " << Printable(client.name) << ": " << Printable(client.recording->Kind().name);
  if (client.isAttached) out << " on " << Printable(client.handler);
  const std::string remark = RemarkOn(client);
  out << (remark.empty() ? "" : ", ") << remark << "\n";
  for (const auto& [name, value] : client.recording->GivenParameters()) {
    out << "      " << Printable(name) << " = " << Printable(value) << "\n";
  }
}

void AppendClients(std::ostream& out, const ConfiguredSystem& system) {
  out << "\nclients\n";
  if (system.clients.empty()) out << kNone;
  for (const Client& client : system.clients) AppendClient(out, client);
}

}  // namespace

std::string TextOf(const ConfiguredSystem& system) {
  std::ostringstream out;
  AppendLevels(out, system);
  AppendHandlers(out, system);
  Tree(out, system).Draw();
  AppendClients(out, system);
  return out.str();
}

}  // namespace Loggerctl

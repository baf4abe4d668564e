#include <algorithm>
#include <map>
#include <set>

#include "Check/Rules.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

/// The handlers below each handler, as far as the library attaches them.
class Tree {
 public:
  explicit Tree(const Configuration& configuration) {
    for (const Attachment& attachment : configuration.attachments) {
      if (configuration.HasHandler(attachment.child.text)) {
        children_[attachment.parent].insert(attachment.child.text);
      }
    }
  }

  /// The handler and all that is below it.
  std::set<std::string> Reached(const std::string& handler) const {
    std::set<std::string> reached;
    std::vector<std::string> open{handler};
    while (!open.empty()) {
      const std::string next = open.back();
      open.pop_back();
      if (!reached.insert(next).second) continue;
      const auto found = children_.find(next);
      if (found != children_.end())
        open.insert(open.end(), found->second.begin(), found->second.end());
    }
    return reached;
  }

  std::vector<std::string> ParentsOf(const std::string& handler) const {
    std::vector<std::string> parents;
    for (const auto& [parent, children] : children_) {
      if (children.count(handler) > 0) parents.push_back(parent);
    }
    return parents;
  }

 private:
  std::map<std::string, std::set<std::string>> children_;
};

/// In a document the reader looks for them, since it skips what is below them.
void CheckChildren(const Configuration& configuration, Findings& findings) {
  for (const Attachment& attachment : configuration.attachments) {
    const std::string& child = attachment.child.text;
    if (configuration.HasHandler(child)) continue;
    const std::string nearest = DidYouMean(child, configuration.HandlerNames());
    findings.Error(attachment.child.line,
                   "handler " + Quoted(child) + " does not exist, and is not attached to " +
                       Quoted(attachment.parent),
                   JoinedSuggestions(nearest.empty() ? "add it to the handlers" : nearest,
                                     IfItIsOwn("makes", "--handler", child)));
  }
}

/// An attachment that was made already does nothing.
void CheckRepeatedAttachments(const Configuration& configuration, Findings& findings) {
  std::set<std::pair<std::string, std::string>> made;
  for (const Attachment& attachment : configuration.attachments) {
    if (made.insert({attachment.parent, attachment.child.text}).second) continue;
    findings.Error(attachment.child.line,
                   "handler " + Quoted(attachment.child.text) + " is attached to " +
                       Quoted(attachment.parent) + " already; this does nothing",
                   "name it once");
  }
}

void CheckCycles(const Configuration& configuration, const Tree& tree, Findings& findings) {
  std::set<std::set<std::string>> reported;
  for (const Attachment& attachment : configuration.attachments) {
    const std::set<std::string> below = tree.Reached(attachment.child.text);
    if (below.count(attachment.parent) == 0) continue;
    std::set<std::string> circle;
    for (const std::string& handler : below) {
      if (tree.Reached(handler).count(attachment.parent) > 0) circle.insert(handler);
    }
    if (!reported.insert(circle).second) continue;
    findings.Error(attachment.child.line,
                   "handler " + Quoted(attachment.parent) + " is its own descendant, by way of " +
                       Quoted(attachment.child.text) +
                       ": a process that logs through it ends or hangs",
                   "handlers must form a tree");
  }
}

bool ShareAnAncestor(const Configuration& configuration, const Tree& tree, const std::string& one,
                     const std::string& other) {
  const std::vector<std::string> handlers = configuration.HandlerNames();
  return std::any_of(handlers.begin(), handlers.end(), [&](const std::string& handler) {
    const std::set<std::string> below = tree.Reached(handler);
    return below.count(one) > 0 && below.count(other) > 0;
  });
}

/// A handler that is below another by two ways gets every event of it twice.
void CheckTwoWays(const Configuration& configuration, const Tree& tree, Findings& findings) {
  std::map<std::string, std::vector<std::string>> parents;
  std::set<std::string> reported;
  for (const Attachment& attachment : configuration.attachments) {
    const std::string& child = attachment.child.text;
    if (tree.Reached(child).count(attachment.parent) > 0) continue;  // A cycle, which is reported.
    for (const std::string& other : parents[child]) {
      if (other == attachment.parent) continue;
      if (!ShareAnAncestor(configuration, tree, other, attachment.parent)) continue;
      if (!reported.insert(child).second) continue;
      findings.Warning(attachment.child.line, "handler " + Quoted(child) +
                                                  " is reached by two ways, over " + Quoted(other) +
                                                  " and " + Quoted(attachment.parent) +
                                                  ": what comes from above is written twice");
    }
    parents[child].push_back(attachment.parent);
  }
}

void CheckReach(const Configuration& configuration, const Tree& tree, Findings& findings) {
  std::set<std::string> reported;
  for (const Word& handler : configuration.handlers) {
    const std::set<std::string> reached = tree.Reached(handler.text);
    const bool hasClient =
        std::any_of(configuration.clients.begin(), configuration.clients.end(),
                    [&](const Client& client) { return reached.count(client.handler.text) > 0; });
    if (hasClient || !reported.insert(handler.text).second) continue;
    findings.Warning(handler.line,
                     "handler " + Quoted(handler.text) +
                         " reaches no client: what is logged on it is written nowhere",
                     "attach a client to it or below it, or remove it");
  }
}

}  // namespace

void CheckHandlers(const Configuration& configuration, Findings& findings) {
  std::set<std::string> made;
  for (const Word& handler : configuration.handlers) {
    if (made.insert(handler.text).second) continue;
    findings.Error(handler.line,
                   "handler " + Quoted(handler.text) + " is given twice; the second does nothing",
                   "name it once");
  }
}

void CheckTree(const Configuration& configuration, Findings& findings) {
  const Tree tree(configuration);
  if (configuration.form == ConfigurationForm::Ini) CheckChildren(configuration, findings);
  CheckRepeatedAttachments(configuration, findings);
  CheckCycles(configuration, tree, findings);
  CheckTwoWays(configuration, tree, findings);
  CheckReach(configuration, tree, findings);
}

}  // namespace Loggerctl

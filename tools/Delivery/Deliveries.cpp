#include "Delivery/Deliveries.h"

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <set>
#include <system_error>
#include <utility>

#include "Delivery/CountingClients.h"
#include "Delivery/DeclaredClients.h"
#include "Handlers.h"
#include "KnownKeys.h"
#include "LogClientManager.h"
#include "LogHandler.h"
#include "Logger.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

/// Why the library makes no client of this; empty when it makes one.
std::string WhyNotMade(const DeclaredClient& declared) {
  if (declared.kind.empty()) return "it has no type";
  if (declared.handler.empty()) return "it has no handler";
  if (Logger::GetExistingLogHandler(declared.handler) == nullptr) {
    return "there is no handler " + Quoted(declared.handler);
  }
  return FindKind(declared.kind) == nullptr ? "there is no kind of client " + Quoted(declared.kind)
                                            : "";
}

/// Finds the client that was made of each declaration. They were made in the same order.
class MadeClients {
 public:
  /// Null when none was made.
  CountedClient* Next(const DeclaredClient& declared) {
    std::vector<CountedClient>& clients = CountedClients();
    for (std::size_t index = next_; index < clients.size(); ++index) {
      const Delivery& delivery = *clients[index].delivery;
      if (delivery.Kind() != declared.kind || delivery.Place() != declared.place) continue;
      next_ = index + 1;
      return &clients[index];
    }
    return nullptr;
  }

 private:
  std::size_t next_ = 0;
};

bool IsKnownLayout(const std::string& name) {
  const std::vector<KnownLayout>& layouts = KnownLayouts();
  return std::any_of(layouts.begin(), layouts.end(),
                     [&](const KnownLayout& layout) { return layout.name == name; });
}

/// Attaches a stand-in for a client that the library left out, which counts its events as lost. If
/// the client's handler does not exist, it counts everything that `handler` accepts.
void Attach(const DeclaredClient& declared, CountedClient& made, LogHandler& handler) {
  LogHandler* const own = Logger::GetExistingLogHandler(declared.handler);
  const bool wasLeftOut = (own == nullptr ? handler : *own).AddLogClient(made.client);
  const KnownKind* const kind = FindKind(declared.kind);
  const bool needsLayout = wasLeftOut || (kind != nullptr && kind->hasLayout);
  if (declared.layout.empty() || !needsLayout || IsKnownLayout(declared.layout)) return;
  if (!made.counting->IsLeftOut()) {
    made.counting->LeaveOut("there is no layout " + Quoted(declared.layout));
  }
}

void ReportFaults(LogHandler& handler) {
  const std::set<LogHandlerClient*> reached = ReceiversBelow(handler);
  for (const CountedClient& made : CountedClients()) {
    if (reached.count(made.client) == 0) continue;
    const std::string fault = made.counting->Fault();
    if (!fault.empty()) made.delivery->ReportFault(fault);
  }
}

void DetachAll() {
  for (const logstring& name : Logger::GetLogManager()->GetLogHandlerNames()) {
    LogHandler& handler = *Logger::GetExistingLogHandler(name);
    while (handler.RemoveLogClientAt(0) != nullptr) {
    }
  }
}

unsigned long CountOf(const std::string& tag, const std::string& line) {
  unsigned long count = 0;
  for (std::size_t at = 0; (at = line.find(tag, at)) != std::string::npos; ++at) ++count;
  return count;
}

/// Counts the entries that another one or the end of the document follows: the last one may be cut.
unsigned long CountEntries(std::istream& document) {
  unsigned long tags = 0;
  std::string line;
  while (std::getline(document, line)) {
    tags += CountOf("<entry ", line) + CountOf("</apitestlog>", line);
  }
  return tags == 0 ? 0 : tags - 1;
}

/// Looks into the file of a client, whose last save, at its end, nobody can ask it for. No text of
/// an event can look like a tag.
void CheckDocument(Delivery& delivery) {
  // A device cannot be read back, and libxml2 opens another file for some names.
  const std::string& name = delivery.Place();
  std::error_code ignored;
  const auto type = std::filesystem::status(name, ignored).type();
  const bool isDevice =
      type != std::filesystem::file_type::regular && type != std::filesystem::file_type::not_found;
  if (isDevice || name.find_first_of("%:") != std::string::npos || name == "-") return;
  std::ifstream document(name, std::ios::binary);
  const unsigned long entries = CountEntries(document);
  if (entries >= delivery.Given()) return;
  errno = 0;
  const bool canBeWritten = std::ofstream(name, std::ios::app).is_open();
  delivery.ReportFault(canBeWritten ? "the document in the file is not complete"
                                    : std::generic_category().message(errno));
  delivery.SetLost(delivery.Given() - entries);
}

}  // namespace

Deliveries::Deliveries(const std::string& command, std::string thing,
                       const std::string& socketTimeout)
    : thing_(std::move(thing)) {
  ReplaceKinds(command, socketTimeout);
}

void Deliveries::CompareWith(const std::string& fileName, LogHandler& handler) {
  MadeClients clients;
  for (const DeclaredClient& declared : DeclaredClients(fileName)) {
    const std::string why = WhyNotMade(declared);
    CountedClient* made = why.empty() ? clients.Next(declared) : nullptr;
    if (made == nullptr) {
      made = &NewLostClient(declared.kind, declared.place, why.empty() ? "it was left out" : why);
    }
    made->delivery->SetTitle(declared.title);
    Attach(declared, *made, handler);
  }
  ReportFaults(handler);
}

bool Deliveries::Finish() {
  for (const CountedClient& made : CountedClients()) made.counting->Finish();
  DetachAll();
  Logger::GetLogManager()->GetLogClientManager()->Clear();
  bool isComplete = true;
  for (CountedClient& made : CountedClients()) {
    made.client = nullptr;
    made.counting = nullptr;
    const bool isDocument = made.delivery->Kind() == "LogClientXML";
    if (isDocument && made.delivery->Given() > made.delivery->Lost()) CheckDocument(*made.delivery);
    made.delivery->ReportLosses(thing_);
    isComplete = isComplete && made.delivery->Lost() == 0;
  }
  return isComplete;
}

}  // namespace Loggerctl

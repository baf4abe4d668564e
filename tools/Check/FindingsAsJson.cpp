#include "Check/FindingsAsJson.h"

#include <nlohmann/json.hpp>

#include "Check/FindingPrinter.h"

namespace Loggerctl {

void PrintJson(const std::vector<CheckedFile>& files, std::ostream& out) {
  nlohmann::ordered_json all = nlohmann::ordered_json::array();
  for (const CheckedFile& file : files) {
    for (const Finding& finding : file.findings) {
      nlohmann::ordered_json one;
      one["file"] = file.name;
      one["line"] = nullptr;
      if (finding.line > 0) one["line"] = finding.line;
      one["severity"] = NameOf(finding.severity);
      one["text"] = finding.text;
      one["suggestion"] = finding.suggestion;
      all.push_back(one);
    }
  }
  constexpr int kIndent = 2;
  // Bytes that are no UTF-8 become U+FFFD.
  out << all.dump(kIndent, ' ', false, nlohmann::ordered_json::error_handler_t::replace) << "\n";
}

}  // namespace Loggerctl

#include "Check/FindingPrinter.h"

#include <nlohmann/json.hpp>

namespace Loggerctl {

namespace {

std::string NameOf(Severity severity) { return severity == Severity::Error ? "error" : "warning"; }

std::string Colored(const std::string& text, const char* color) {
  return std::string("\x1b[") + color + "m" + text + "\x1b[0m";
}

constexpr const char* kBold = "1";
constexpr const char* kBoldRed = "1;31";
constexpr const char* kBoldMagenta = "1;35";

}  // namespace

void PrintText(const CheckedFile& file, bool withColors, std::ostream& out) {
  for (const Finding& finding : file.findings) {
    std::string place = file.name + ":";
    if (finding.line > 0) place += std::to_string(finding.line) + ":";
    std::string severity = NameOf(finding.severity) + ":";
    if (withColors) {
      place = Colored(place, kBold);
      severity = Colored(severity, finding.severity == Severity::Error ? kBoldRed : kBoldMagenta);
    }
    out << place << " " << severity << " " << finding.text;
    if (!finding.suggestion.empty()) out << "; " << finding.suggestion;
    out << "\n";
  }
}

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

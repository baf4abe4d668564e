#include "Check/FindingPrinter.h"

namespace Loggerctl {

namespace {

std::string Colored(const std::string& text, const char* color) {
  return std::string("\x1b[") + color + "m" + text + "\x1b[0m";
}

constexpr const char* kBold = "1";
constexpr const char* kBoldRed = "1;31";
constexpr const char* kBoldMagenta = "1;35";

}  // namespace

std::string NameOf(Severity severity) {
  return severity == Severity::Warning ? "warning" : "error";
}

void PrintText(const std::string& fileName, const std::vector<Finding>& findings, bool withColors,
               std::ostream& out) {
  for (const Finding& finding : findings) {
    std::string place = fileName + ":";
    if (finding.line > 0) place += std::to_string(finding.line) + ":";
    std::string severity = NameOf(finding.severity) + ":";
    if (withColors) {
      const bool isWarning = finding.severity == Severity::Warning;
      place = Colored(place, kBold);
      severity = Colored(severity, isWarning ? kBoldMagenta : kBoldRed);
    }
    out << place << " " << severity << " " << finding.text;
    if (!finding.suggestion.empty()) out << "; " << finding.suggestion;
    out << "\n";
  }
}

}  // namespace Loggerctl

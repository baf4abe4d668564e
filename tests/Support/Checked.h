#pragma once

#include <sstream>
#include <string>

#include "Check/CheckFile.h"
#include "Check/FindingPrinter.h"

/// What `loggerctl check` prints about a file of this content, which is called "it".
inline std::string Checked(const std::string& content, const CheckOptions& options = {}) {
  std::ostringstream out;
  PrintText({"it", true, CheckContent(content, options)}, false, out);
  return out.str();
}

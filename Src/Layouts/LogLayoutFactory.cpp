#include "LogLayoutFactory.h"

#include <utility>

#include "LogLayoutExtended.h"
#include "LogLayoutMessage.h"
#include "LogLayoutSimple.h"
#include "LogLayoutStandard.h"
#include "Logger.h"

LogLayoutFactory::LogLayoutFactory() = default;

LogLayoutFactory::~LogLayoutFactory() = default;

bool LogLayoutFactory::RegisterLogLayout(std::string name, Creator creator) {
  return creators_.emplace(std::move(name), creator).second;
}

bool LogLayoutFactory::UnregisterLogLayout(std::string name) { return creators_.erase(name) == 1; }

LogLayout* LogLayoutFactory::CreateLogLayout(std::string name) {
  const auto found = creators_.find(name);
  return found == creators_.end() ? nullptr : found->second();
}

// The built-in layouts, entered while the library is loaded. A new layout needs two lines here: its
// creator, and its entry.
namespace {

bool Register(const char* name, LogLayoutFactory::Creator creator) {
  return Logger::GetLogManager()->GetLogLayoutFactory()->RegisterLogLayout(name, creator);
}

LogLayout* CreateLogLayoutMessage() { return new LogLayoutMessage; }
LogLayout* CreateLogLayoutSimple() { return new LogLayoutSimple; }
LogLayout* CreateLogLayoutStandard() { return new LogLayoutStandard; }
LogLayout* CreateLogLayoutExtended() { return new LogLayoutExtended; }

[[maybe_unused]] const bool messageRegistered =
    Register("LogLayoutMessage", CreateLogLayoutMessage);
[[maybe_unused]] const bool simpleRegistered = Register("LogLayoutSimple", CreateLogLayoutSimple);
[[maybe_unused]] const bool standardRegistered =
    Register("LogLayoutStandard", CreateLogLayoutStandard);
[[maybe_unused]] const bool extendedRegistered =
    Register("LogLayoutExtended", CreateLogLayoutExtended);

}  // namespace

#include "LogFormater.h"

#include <cstdarg>

#include "Internal/ErrnoKeeper.h"
#include "Internal/FormattedText.h"
#include "Internal/Require.h"
#include "LogHandler.h"

using Logger::Internal::Contract;
using Logger::Internal::ErrnoKeeper;
using Logger::Internal::FormattedText;
using Logger::Internal::Require;

namespace {

constexpr Contract kLog{"logger", "Src/LogFormater", 59,
                        "void LogFormater::Log(LogHandler*, const char*, ...)"};

}  // namespace

LogFormater::LogFormater(unsigned int level, const logstring& file, int line)
    : level_(level), file_(file), line_(line) {}

LogFormater::~LogFormater() = default;

void LogFormater::Log(LogHandler* logger, const char* format, ...) {
  Require(logger != nullptr, kLog);
  const ErrnoKeeper errnoKeeper;
  va_list arguments;
  va_start(arguments, format);
  const FormattedText text(format, arguments);
  va_end(arguments);
  if (text.Text() == nullptr) return;
  // The result only says whether the level was filtered out.
  static_cast<void>(logger->DebugLogForce(level_, file_, line_, text.Text()));
}

#include "LogClientConsole.h"

#include <iostream>

#include "LogLayout.h"

LogClientConsole::LogClientConsole() { initialized_ = true; }

LogClientConsole::LogClientConsole(const LogProperties&) : LogClientConsole() {}

LogClientConsole::~LogClientConsole() = default;

bool LogClientConsole::Publish(const LogEvent& event) {
  if (!initialized_ || layout_ == nullptr) return false;
  layout_->FormatAndAppend(std::cout, event);
  std::cout.flush();
  return true;
}

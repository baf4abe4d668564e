#include "LogClientConsole.h"

#include <exception>
#include <iostream>

#include "LogLayout.h"

LogClientConsole::LogClientConsole() { initialized_ = true; }

LogClientConsole::LogClientConsole(const LogProperties&) : LogClientConsole() {}

LogClientConsole::~LogClientConsole() = default;

bool LogClientConsole::Publish(const LogEvent& event) {
  if (!initialized_ || layout_ == nullptr) return false;
  const std::ios_base::iostate stateBefore = std::cout.rdstate();
  try {
    layout_->FormatAndAppend(std::cout, event);
    std::cout.flush();
  } catch (...) {
    // A stream that is cancelled within a write sets its badbit and would write nothing more. A
    // cancellation has no exception object.
    const bool isCancelled = std::current_exception() == nullptr;
    if (isCancelled) std::cout.clear(stateBefore);
    throw;
  }
  return true;
}

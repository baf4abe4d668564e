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
    // The stream takes the cancellation of the thread that waits in it for an error of its own, and
    // would write nothing more. A cancellation is no exception that could be had as an object.
    const bool isCancelled = std::current_exception() == nullptr;
    if (isCancelled) std::cout.clear(stateBefore);
    throw;
  }
  return true;
}

#include "LogClientConsole.h"

#include <cxxabi.h>

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
  } catch (abi::__forced_unwind&) {
    // The stream takes the cancellation of the thread that waits in it for an error of its own, and
    // would write nothing more.
    std::cout.clear(stateBefore);
    throw;
  }
  return true;
}

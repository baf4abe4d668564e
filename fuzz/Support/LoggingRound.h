#pragma once

#include <string>

/// The process's logging system in words: its levels, its handlers with what they accept, and what
/// is attached to them.
std::string SystemInWords();

/// Logs at every level through every handler. Left out when there are very many ways through the
/// tree, which a handler may be reached by more than once.
void LogEverywhere();

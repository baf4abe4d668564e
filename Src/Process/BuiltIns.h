#pragma once

class LogClientFactory;
class LogLayoutFactory;

namespace Logger::Internal {

/// Enters the library's own kinds of clients and layouts.
void RegisterBuiltIns(LogClientFactory& clients, LogLayoutFactory& layouts);

}  // namespace Logger::Internal

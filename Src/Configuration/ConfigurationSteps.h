#pragma once

#include "LogString.h"

class LogHandler;
class LogProperties;

namespace Logger::Internal {

/// Whether a client whose layout is not known is attached without a layout.
enum class UnknownLayout { LeaveUnattached, Attach };

/// Makes a client, gives it the layout (an empty name: the one it has), and attaches it to the
/// handler. False when it was not made or not attached.
bool AttachNewClient(LogHandler& handler, const logstring& type, const LogProperties& parameters,
                     const logstring& layout, UnknownLayout unknownLayout);

/// Runs a configurator's steps in the order that every form of configuration has, up to the first
/// that is false.
template <typename Configurator>
bool RunConfigurationSteps(Configurator& configurator, const logstring& fileName) {
  return configurator.OpenFile(fileName) && configurator.IsLoggingEnable() &&
         configurator.SetLogLevel() && configurator.SetLogHandler() &&
         configurator.SetLogClient() && configurator.BuildLogTree();
}

}  // namespace Logger::Internal

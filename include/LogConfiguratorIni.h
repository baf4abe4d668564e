#pragma once

#include "LogProperties.h"
#include "LogString.h"
#include "LoggerExport.h"

class LogHandler;

/// Sets up the logging system from a properties file: levels, handlers with their switches, clients
/// with their parameters and layouts, and the tree. The guide lists the keys.
///
/// An application calls ReadConfiguration once, before it logs. What a file cannot set up (an
/// unknown client, handler or layout) is left out without a word; nothing already set up is undone
/// when a later step fails. What was made belongs to the log manager and outlives the configurator.
/// Lists are split at every single blank. One thread at a time uses a configurator.
class LOGGER_EXPORT LogConfiguratorIni {
 public:
  LogConfiguratorIni();
  /// Copying copies nothing, on purpose: a copy has no properties, and an assigned configurator
  /// keeps its own.
  LogConfiguratorIni(const LogConfiguratorIni& other);
  LogConfiguratorIni& operator=(const LogConfiguratorIni& other);  ///< Copies nothing either.
  virtual ~LogConfiguratorIni();
  void Assign(const LogConfiguratorIni& other);  ///< Does nothing, on purpose.

  /// Runs the steps below, from OpenFile to BuildLogTree, in this order, and stops at the first
  /// that is false. So it is false when the file cannot be read, or says that logging is off. The
  /// name must not be empty: the process ends. Keys of an earlier file stay, unless the new one has
  /// them too.
  bool ReadConfiguration(const logstring& fileName);

  bool OpenFile(const logstring& fileName);  ///< Loads the file, as LogProperties::Load does.
  bool IsLoggingEnable();                    ///< Whether "logging" is anything but "false".
  bool SetLogLevel();                        ///< Registers "loglevel". Always true.
  /// Makes and sets up the handlers of "loghandler", and "default" with them. Always true.
  bool SetLogHandler();
  /// Applies a handler's switches for the registered levels. Always true.
  bool SetLogHandler(LogHandler* handler);
  bool SetLogClient();  ///< Makes and attaches the clients of "logclient". Always true.
  /// Makes and attaches one client. False when it lacks a type or an existing handler, cannot be
  /// made, or has an unknown layout.
  bool SetLogClient(const logstring& client);
  bool BuildLogTree();  ///< Attaches the children of the handlers of "loghandler". Always true.
  bool BuildLogTree(
      const logstring& handlerName);  ///< Attaches one handler's children. Always true.

 private:
  LogProperties properties_;

  logstring Value(const logstring& key) const;
};

#pragma once

#include "LogString.h"
#include "LoggerExport.h"

class LogHandler;

struct _xmlDoc;
struct _xmlNode;

/// Sets up the logging system from an XML document: levels, handlers with their switches, clients
/// with their parameters and layouts, and the tree. The guide shows the elements.
///
/// An application calls ReadConfiguration once, before it logs. The document must be valid against
/// the library's schema, or nothing is set up; what a valid document names in vain (an unknown
/// client or handler) is left out without a word. Nothing already set up is undone when a later
/// step fails. What was made belongs to the log manager and outlives the configurator. Every step
/// is false before a file was opened. libxml2 reports why a document is not valid on standard
/// error, or wherever the application directed it. One thread at a time uses a configurator.
class LOGGER_EXPORT LogConfiguratorXml {
 public:
  LogConfiguratorXml();
  /// Copying copies nothing, on purpose: a copy has no document, and an assigned configurator keeps
  /// its own.
  LogConfiguratorXml(const LogConfiguratorXml& other);
  LogConfiguratorXml& operator=(const LogConfiguratorXml& other);  ///< Copies nothing either.
  virtual ~LogConfiguratorXml();
  void Assign(const LogConfiguratorXml& other);  ///< Does nothing, on purpose.

  /// Runs the steps below, from OpenFile to BuildLogTree, in this order, and stops at the first
  /// that is false. So it is false when the file cannot be parsed, is not valid, or says that
  /// logging is off.
  bool ReadConfiguration(const logstring& fileName);

  /// Parses and validates a document in the place of the former one.
  bool OpenFile(const logstring& fileName);
  /// Whether "logging" is enabled by anything but "false".
  bool IsLoggingEnable();
  bool SetLogLevel();    ///< Registers the "loglevel" elements.
  bool SetLogHandler();  ///< Makes the "loghandler" elements' handlers, and applies their switches.
  bool SetLogClient();   ///< Makes and attaches the clients of the "logclient" elements.
  bool BuildLogTree();   ///< Attaches handlers to each other as "logtree" shows.

  /// Attaches the handlers of the element's "loghandler" children to `parent`, and their children
  /// to them.
  /// `node` is a libxml2 element. False when a child has no name.
  bool AddSubHandler(void* node, LogHandler* parent);
  /// Reads an attribute of a libxml2 element. False, with `value` untouched, when the element does
  /// not have it.
  bool GetAttribute(void* node, const logstring& name, logstring& value);
  /// The same for decimal text: it ends at the first character that is no digit, is 0 without any,
  /// and stays within the range of an int.
  bool GetAttribute(void* node, const logstring& name, int& value);
  /// Puts the text of the schema into `buffer`, and returns it.
  logstring& CreateSchemaBuf(logstring& buffer);

 private:
  _xmlDoc* document_;  // Owned; null before a file was parsed.
  _xmlNode* root_;     // The document's; null unless it is valid.

  bool SetLogHandlerLevels(_xmlNode* element, LogHandler* handler);
  bool SetLogClient(_xmlNode* element);
};

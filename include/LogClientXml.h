#pragma once

#include <memory>
#include <string>

#include "LogClient.h"

struct _xmlDoc;
struct _xmlNode;

namespace Logger {
namespace Internal {
template <typename Client>
class ForkListenerOf;
class XmlLogDocument;
class XmlLogFile;
}  // namespace Internal
}  // namespace Logger

/// Writes events as entries of an XML document, which a stylesheet turns into a readable page.
/// Registered as "LogClientXML", with upper-case XML.
///
/// The file holds a complete document after every event. The document also stays in memory, and
/// grows with every event for the life of the client: it suits logs of moderate length. When the
/// client is destroyed it writes the document a last time, indented, also when there was no event.
/// A save that fails is not reported; the next save that works writes what is missing. An entry for
/// which the disk has no room leaves the file as it was; the indented document, which is longer, is
/// cut where the room ends. The layout is not used.
///
/// A forked child does not touch the file while its parent lives: its client collects entries in
/// memory. When the parent has ended, the client takes the file over at its next event, or at its
/// end: it puts what the parent logged after the fork before its own entries, and writes the whole
/// document. A child of a child also waits for the process that had the file before its parent.
/// Children of one parent that all go on after it write over each other's document.
///
/// Bytes that XML cannot carry (invalid UTF-8, control characters) are replaced by U+FFFD. By
/// default the message is XML character data: an ampersand in it starts an entity reference, and a
/// message like `AT&T` comes out empty. With the property "escapetext" it is taken as it stands.
class LOGGER_EXPORT LogClientXml : public LogClient {
 public:
  /// Writes to `filename`, relative to the working directory. `xslfilename` is put into the
  /// document's reference to a stylesheet as it stands; an empty one leaves the reference out. An
  /// empty `filename` leaves the client not initialised: nothing is ever written.
  LogClientXml(const std::string& filename, const std::string& xslfilename);
  /// Reads "filename", "xslfilename", and "escapetext", which is off unless it is exactly "true".
  explicit LogClientXml(const LogProperties& properties);
  ~LogClientXml() override;

  /// Starts a new, empty document in memory; a former one is given up. Called by the constructors.
  void Init(const std::string& xslfilename);

  /// Adds an entry with the event's level name, date, time and message, and saves the document; in
  /// a child whose parent lives it is only added. False when the client is not initialised. An
  /// event for whose entry there is no memory is dropped.
  bool Publish(const LogEvent& event) override;

  /// Whether the file lacks entries: the last attempt to save the document failed, or there was
  /// none yet. The next event tries again. The caller serialises it with Publish.
  bool HasFailed() const;

 private:
  template <typename Client>
  friend class Logger::Internal::ForkListenerOf;

  std::string filename_;
  _xmlDoc* document_;  // Owned. It has no entries: they are kept as texts.
  _xmlNode* root_;     // The document's.
  bool escapesText_;
  std::unique_ptr<Logger::Internal::XmlLogFile> file_;
  std::unique_ptr<Logger::Internal::XmlLogDocument> entries_;
  std::unique_ptr<LogForkListener> forkListener_;

  void ContinueInChild(bool wasBusy);
};

#pragma once

#include <atomic>
#include <memory>
#include <string>

#include "LogClient.h"

namespace Logger {
namespace Internal {
class FileStream;
template <typename Client>
class ForkListenerOf;
}  // namespace Internal
}  // namespace Logger

/// Writes events to a text file. When Publish returns, the whole event has been handed to the
/// kernel in one write. Registered as "LogClientFile".
///
/// Nothing is ever reported: a file that cannot be opened leaves the client not initialised. After
/// a write that failed, for example because the disk was full, the client drops every later event;
/// what was left of the failed one is not written later, until ReopenAtNextEvent() is called. Texts
/// are formatted in the classic locale. A forked child goes on in the same file.
/// The descriptor is not passed on to programs that the process starts.
class LOGGER_EXPORT LogClientFile : public LogClient {
 public:
  /// Opens `filename`, relative to the working directory, and writes at its end, or empties it
  /// first when `append` is false. An empty name leaves the client not initialised.
  LogClientFile(const std::string& filename, bool append);
  /// Reads "filename", and "fileappend", which is on unless it is exactly "false". The properties
  /// are not kept.
  explicit LogClientFile(const LogProperties& properties);
  ~LogClientFile() override;

  /// Opens the file, and returns whether it is open; that is what IsInitialize() then tells. Called
  /// by the constructors; called again while the file is open, it leaves the client dropping every
  /// event.
  bool Init();

  /// Writes and flushes the event. False when the client is not initialised, has no layout, or an
  /// earlier event could not be written. The event whose own write fails still gives true.
  bool Publish(const LogEvent& event) override;

  /// Asks the client to close its file and to open it again, at its end, before the next event: for
  /// files that another program moves aside, and for a disk that was full and is no more. While the
  /// file cannot be opened events are dropped, and each of them tries again. Any thread may call it
  /// at any time, and so may a signal handler.
  void ReopenAtNextEvent() noexcept;

  /// Whether the client cannot take the next event: its file is not open, or an earlier event could
  /// not be written. Also right after the event whose own write failed, and for a rolling client
  /// whose file could not be opened, although it is initialised. A reopening that is due may still
  /// change it. The caller serialises it with Publish.
  bool HasFailed() const;

 protected:
  std::unique_ptr<Logger::Internal::FileStream> stream_;  ///< Never null; open or not.
  std::string filename_;                                  ///< As it was given.
  bool append_;  ///< Whether Init() keeps what is in the file.

 private:
  template <typename Client>
  friend class Logger::Internal::ForkListenerOf;

  std::atomic<bool> isReopenDue_;
  std::unique_ptr<LogForkListener> forkListener_;

  void Reopen();
  void ContinueInChild(bool wasBusy);
};

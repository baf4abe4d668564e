#pragma once

#include <atomic>
#include <iosfwd>
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
/// a write that failed, for example because the disk was full, the client drops the rest of that
/// event and every later one until ReopenAtNextEvent() is called. Texts are formatted in the
/// classic locale. A forked child goes on in the same file. The descriptor is not passed on to
/// programs that the process starts.
class LOGGER_EXPORT LogClientFile : public LogClient {
 public:
  /// Opens `filename`, relative to the working directory, and writes at its end, or empties it
  /// first when `append` is false. An empty name leaves the client not initialised.
  LogClientFile(const std::string& filename, bool append);
  /// Reads "filename", and "fileappend", which is on unless it is exactly "false". The properties
  /// are not kept.
  explicit LogClientFile(const LogProperties& properties);
  ~LogClientFile() override;

  /// Opens the file, and returns whether it is open, as IsInitialize() does from then on. Called by
  /// the constructors; called again while the file is open, it leaves the client dropping every
  /// event.
  bool Init();

  /// Writes and flushes the event. False when the client is not initialised, has no layout, or an
  /// earlier event could not be written. The event whose own write fails still gives true.
  bool Publish(const LogEvent& event) override;

  /// Asks the client to close its file and to open it again, at its end, before the next event: for
  /// files that another program moves aside, and after a full disk has room again. While the file
  /// cannot be opened, events are dropped, and each of them tries again. Any thread may call it at
  /// any time, and so may a signal handler.
  void ReopenAtNextEvent() noexcept;

  /// Whether the client cannot take the next event: its file is not open, or an earlier event could
  /// not be written. Also right after the event whose own write failed, and for a rolling client
  /// whose file could not be opened, although it is initialised. A reopening that is due may still
  /// change it. The caller serialises it with Publish.
  bool HasFailed() const;

 protected:
  // For derived file clients, which call these where Publish may be called.

  /// The stream to the file, with the states of a std::ofstream; tellp() is the size of the file.
  /// Inserted text is written with the next event, or by flush(). Call it each time: a forked child
  /// may have another stream.
  std::ostream& GetStream();
  const std::string& GetFileName() const;  ///< As it was passed to the constructor.
  /// Writes what is still in the stream, and closes the file. Events are lost until OpenFile.
  void CloseFile();
  /// Opens the closed file at its end, or empties it when `append` is false; the client is then
  /// initialised. False when it cannot be opened: the client then drops every event.
  bool OpenFile(bool append);

 private:
  template <typename Client>
  friend class Logger::Internal::ForkListenerOf;
  friend class LogClientRollingFile;

  std::unique_ptr<Logger::Internal::FileStream> stream_;  // Never null; open or not.
  std::string filename_;
  bool append_;  // Whether Init() keeps what is in the file.
  std::atomic<bool> isReopenDue_;
  std::unique_ptr<LogForkListener> forkListener_;

  void Reopen();
  void ContinueInChild(bool wasBusy);
};

#pragma once

#include "LogClientFile.h"

/// A file client that moves its file aside when it has grown past a limit: app.log becomes
/// app.log.1, older backups move up by one, and the one past the last is removed. Registered as
/// "LogClientRollingFile".
///
/// The size is tested after each write, so the event that crosses the limit is the last one in the
/// backup. A file that cannot be moved is reported on standard error, and logging goes on in it; no
/// other failure is reported. Every event tries again, and each time the backups move up all the
/// same: after as many events as there are backups, none is left. Two clients on one file would
/// move each other's files.
///
/// A process that is killed loses no published event. When it is killed while it moves the files,
/// the next rollover removes one backup more than usual.
///
/// A class of your own may override Rollover() to name or to move its backups in another way.
class LOGGER_EXPORT LogClientRollingFile : public LogClientFile {
 public:
  /// Appends to `filename`. `maxFileSize` is in bytes. With `maxBackup` of 0 or less there are no
  /// backups: a file past the limit is emptied. IsInitialize() returns whether the file opened.
  LogClientRollingFile(const std::string& filename, long maxFileSize, int maxBackup);
  /// Reads what LogClientFile reads, and "filesize" (bytes) and "maxbackup", both decimal without
  /// units and 0 when missing. Always initialised, on purpose, even when the file could not be
  /// opened: the client then drops every event.
  explicit LogClientRollingFile(const LogProperties& properties);
  ~LogClientRollingFile() override;

  /// Writes and flushes the event, and rolls the file over when it is larger than the limit. False
  /// when the event was not written, or when the file could not be moved: the next event then tries
  /// again.
  bool Publish(const LogEvent& event) override;

  /// Moves the file to backup 1 and starts an empty one; without backups, empties it. False when
  /// the file could not be moved: it is then open for appending.
  virtual bool Rollover();
  /// Makes room for backup 1 by moving the others up. What cannot be moved or removed is passed
  /// over. Always true.
  virtual bool RolloverFiles();

 protected:
  long GetMaxFileSize() const;  ///< In bytes.
  int GetMaxBackup() const;     ///< 0 or less for no backups.

 private:
  long maxFileSize_;
  int maxBackup_;
};

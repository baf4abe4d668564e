#include "LogClientRollingFile.h"

#include <cerrno>
#include <cstdio>

#include "Clients/FileStream.h"
#include "Internal/CancellationHold.h"
#include "Internal/Decimal.h"
#include "Internal/HotPath.h"
#include "Internal/ReportError.h"
#include "LogProperties.h"

using Logger::Internal::CancellationHold;
using Logger::Internal::ParseDecimal;
using Logger::Internal::ReportError;

namespace {

constexpr int kRenameAttempts = 3;

std::string BackupName(const std::string& fileName, int number) {
  return fileName + "." + std::to_string(number);
}

bool Rename(const std::string& from, const std::string& to) {
  return std::rename(from.c_str(), to.c_str()) == 0;
}

/// Reports why a rename failed, if it is one of these errors. A report may itself change errno, and
/// the next test then sees the new value.
void ReportRenameFailure() {
  if (errno == EACCES) ReportError("Rollover", 72, "Rename failed EACCES");
  if (errno == ENOENT) ReportError("Rollover", 74, "Rename failed ENOENT\n");
  if (errno == EINVAL) ReportError("Rollover", 76, "Rename failed EINVAL\n");
}

bool RenameWithRetries(const std::string& from, const std::string& to) {
  for (int attempt = 0; attempt < kRenameAttempts; ++attempt) {
    if (Rename(from, to)) return true;
    ReportRenameFailure();
  }
  return false;
}

}  // namespace

LogClientRollingFile::LogClientRollingFile(const std::string& filename, long maxFileSize,
                                           int maxBackup)
    : LogClientFile(filename, true), maxFileSize_(maxFileSize), maxBackup_(maxBackup) {}

LogClientRollingFile::LogClientRollingFile(const LogProperties& properties)
    : LogClientFile(properties),
      maxFileSize_(ParseDecimal(properties.GetProperty("filesize"))),
      maxBackup_(ParseDecimal(properties.GetProperty("maxbackup"))) {
  initialized_ = true;  // On purpose, whether or not the file is open.
}

LogClientRollingFile::~LogClientRollingFile() = default;

// With the file client's Publish inlined: every return after a system call is mispredicted.
[[gnu::flatten]] bool LogClientRollingFile::Publish(const LogEvent& event) {
  if (!LogClientFile::Publish(event)) return false;
  if (stream_->Position() <= maxFileSize_) return true;
  return Rollover();
}

LOGGER_KEPT_APART bool LogClientRollingFile::Rollover() {
  const CancellationHold hold;  // A thread cancelled in between would leave no open file.
  const bool keepsBackups = maxBackup_ > 0;
  if (keepsBackups) RolloverFiles();
  CloseFile();
  const std::string& name = GetFileName();
  const bool isMoved = !keepsBackups || RenameWithRetries(name, BackupName(name, 1));
  static_cast<void>(OpenFile(!isMoved));  // The next Publish returns false if that failed.
  return isMoved;
}

bool LogClientRollingFile::RolloverFiles() {
  const std::string& name = GetFileName();
  // Backups that are missing, or that cannot be moved, are skipped.
  static_cast<void>(std::remove(BackupName(name, maxBackup_).c_str()));
  for (int number = maxBackup_ - 1; number >= 1; --number) {
    static_cast<void>(Rename(BackupName(name, number), BackupName(name, number + 1)));
  }
  return true;
}

long LogClientRollingFile::GetMaxFileSize() const { return maxFileSize_; }

int LogClientRollingFile::GetMaxBackup() const { return maxBackup_; }

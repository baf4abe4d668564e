#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>

#include "Check/Rules.h"
#include "Check/WrittenFiles.h"
#include "Wording.h"

namespace Loggerctl {

namespace {

/// Whether the calling process may; errno has the reason.
bool IsAllowed(const std::string& path, int access) {
  return faccessat(AT_FDCWD, path.c_str(), access, AT_EACCESS) == 0;
}

std::string FolderOf(const std::string& path) {
  const std::string folder = std::filesystem::path(path).parent_path().string();
  return folder.empty() ? "." : folder;
}

/// Whether files in the folder can be given other names: they cannot in one like /tmp, whose files
/// only their owners move, when the file is somebody else's.
bool CanBeRenamed(const std::string& folder, const struct stat* file) {
  if (!IsAllowed(folder, W_OK | X_OK)) return false;
  struct stat status {};
  if (file == nullptr || stat(folder.c_str(), &status) != 0) return true;
  const bool isSticky = (status.st_mode & S_ISVTX) != 0;
  return !isSticky || geteuid() == 0 || file->st_uid == geteuid() || status.st_uid == geteuid();
}

/// False when the file cannot be written.
bool CheckCanBeWritten(const WrittenFile& file, const struct stat* status, Findings& findings) {
  const int line = file.name->value.line;
  const std::string folder = FolderOf(file.path);
  struct stat folderStatus {};
  if (stat(folder.c_str(), &folderStatus) != 0) {
    findings.Error(line, "folder " + Quoted(folder) + ": " + std::generic_category().message(errno),
                   "make it before the application starts");
    return false;
  }
  if (status != nullptr && S_ISDIR(status->st_mode)) return false;  // It is found in any case.
  const std::string& written = status == nullptr ? folder : file.path;
  if (IsAllowed(written, status == nullptr ? W_OK | X_OK : W_OK)) return true;
  findings.Error(line,
                 (status == nullptr ? "folder " : "file ") + Quoted(written) +
                     " cannot be written by this user: " + std::generic_category().message(errno));
  return false;
}

void CheckFile(const WrittenFile& file, Findings& findings) {
  struct stat status {};
  const bool exists = stat(file.path.c_str(), &status) == 0;
  const struct stat* const found = exists ? &status : nullptr;
  if (!CheckCanBeWritten(file, found, findings)) return;
  if (!KeepsBackups(*file.client)) return;
  const int line = file.name->value.line;
  if (exists && !S_ISREG(status.st_mode)) {
    return findings.Error(line, Quoted(file.path) + " is no plain file, and would be renamed",
                          "name a plain file");
  }
  if (CanBeRenamed(FolderOf(file.path), found)) return;
  findings.Error(line,
                 "file " + Quoted(file.path) +
                     " may not be renamed by this user: it will not be "
                     "rolled, and grow",
                 "let the user write the folder " + Quoted(FolderOf(file.path)));
}

}  // namespace

void CheckMachine(const Configuration& configuration, Findings& findings) {
  for (const WrittenFile& file : WrittenFiles(configuration)) CheckFile(file, findings);
}

}  // namespace Loggerctl

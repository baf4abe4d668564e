#pragma once

#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <filesystem>
#include <fstream>
#include <memory>
#include <ostream>
#include <string>

#include "Support/FileCalls.h"
#include "Support/TemporaryFolder.h"

/// A folder that has room for a few pages. Where nobody may mount a disk of that size, writes to
/// the folder are cut as such a disk would cut them.
class SmallDisk {
 public:
  enum class Kind { Mounted, Imitated };
  friend void PrintTo(Kind kind, std::ostream* out) {
    *out << (kind == Kind::Mounted ? "Mounted" : "Imitated");
  }

  SmallDisk(Kind kind, std::size_t pages) : room_(pages * kPage) {
    isMounted_ = kind == Kind::Mounted && Mount();
    if (!isMounted_) {
      imitation_ = std::make_unique<FileCalls>(folder_.Path(), [this](FileCall& call) {
        return call.function == "write" || call.function == "pwrite" ? Cut(call) : 0;
      });
    }
  }
  ~SmallDisk() {
    imitation_.reset();
    if (isMounted_) umount2(folder_.Path().c_str(), MNT_DETACH);
  }
  SmallDisk(const SmallDisk&) = delete;
  SmallDisk& operator=(const SmallDisk&) = delete;

  std::string Path(const std::string& name) const { return folder_.Path(name); }

  static constexpr std::size_t kPage = 4096;

 private:
  const TemporaryFolder folder_;
  const std::size_t room_;
  bool isMounted_ = false;
  std::unique_ptr<FileCalls> imitation_;

  /// Mounts it in a private namespace. A child tries that first, since a failure in the middle
  /// cannot be undone.
  bool Mount() const {
    const pid_t child = fork();
    if (child == 0) _exit(MountHere() ? 0 : 1);
    int status = 0;
    return waitpid(child, &status, 0) == child && status == 0 && MountHere();
  }
  bool MountHere() const {
    const std::string user = std::to_string(geteuid());
    const std::string group = std::to_string(getegid());
    if (unshare(CLONE_NEWNS) != 0) {
      if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
      std::ofstream("/proc/self/setgroups") << "deny";
      std::ofstream("/proc/self/uid_map") << "0 " + user + " 1";
      std::ofstream("/proc/self/gid_map") << "0 " + group + " 1";
    }
    const std::string size = "size=" + std::to_string(room_);
    return mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0 &&
           mount("none", folder_.Path().c_str(), "tmpfs", 0, size.c_str()) == 0;
  }

  /// Leaves of a write what there is room for.
  int Cut(FileCall& call) const {
    std::size_t taken = 0;  // By the other files.
    for (const auto& entry : std::filesystem::directory_iterator(folder_.Path())) {
      if (entry.path() != call.path) taken += (entry.file_size() + kPage - 1) / kPage * kPage;
    }
    const std::size_t position = call.position >= 0 ? static_cast<std::size_t>(call.position)
                                                    : std::filesystem::file_size(call.path);
    const std::size_t end = room_ - std::min(taken, room_);
    call.length = std::min(call.length, end - std::min(position, end));
    return call.length == 0 ? ENOSPC : 0;
  }
};

// An XML log on a file system whose time stamps stand still for milliseconds.

#include <gtest/gtest.h>
#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <algorithm>
#include <fstream>
#include <string>

#include "LogClientXml.h"
#include "Support/Events.h"
#include "Support/Files.h"
#include "Support/TemporaryFolder.h"
#include "Support/XmlEntries.h"

namespace {

/// Lets this process mount what only it sees, as far as the kernel allows that.
void MakeMountsOwn() {
  const std::string user = std::to_string(geteuid());
  const std::string group = std::to_string(getegid());
  if (unshare(CLONE_NEWNS) != 0 && unshare(CLONE_NEWUSER | CLONE_NEWNS) == 0) {
    std::ofstream("/proc/self/setgroups") << "deny";
    std::ofstream("/proc/self/uid_map") << "0 " + user + " 1";
    std::ofstream("/proc/self/gid_map") << "0 " + group + " 1";
  }
  mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr);
}

TEST(XmlRamfsTest, NeverAddsToAnotherDocumentOfTheSameSize) {
  const TemporaryFolder folder;
  MakeMountsOwn();
  // Where that is not allowed, the folder's own file system is tried.
  const bool isMounted = mount("none", folder.Path().c_str(), "ramfs", 0, nullptr) == 0;
  const std::string file = folder.Path("log.xml");
  LogClientXml client(file, "");

  for (std::size_t events = 2; events <= 400; events += 2) {
    client.Publish(EventWith("one"));
    std::string other = Content(file);
    std::reverse(other.begin(), other.end());
    WriteFile(file, other);
    client.Publish(EventWith("two"));

    ASSERT_EQ(events, XmlLog(file).Messages().size());
  }
  if (isMounted) umount2(folder.Path().c_str(), MNT_DETACH);
}

}  // namespace

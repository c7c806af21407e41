#include "support/SmallDisks.h"

#include <sched.h>
#include <sys/mount.h>
#include <unistd.h>

#include <fstream>

namespace Support
{
namespace
{

bool Write(const char* path, const std::string& text)
{
    std::ofstream file(path);
    file << text;
    return static_cast<bool>(file.flush());
}

/// A namespace in which this process, but nobody else, sees what it mounts.
bool EnterNamespace()
{
    const std::string user = std::to_string(getuid());
    if (unshare(CLONE_NEWNS) != 0)
    {
        // Who is not root anywhere may be root in a namespace of users.
        if (unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
        if (!Write("/proc/self/uid_map", "0 " + user + " 1")) return false;
    }
    return mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) == 0;
}

}  // namespace

SmallDisk::SmallDisk(uint64_t bytes)
{
    static const bool entered = EnterNamespace();
    const std::string options = "size=" + std::to_string(bytes);
    m_bMounted =
        entered && mount("none", m_place.Path("").c_str(), "tmpfs", 0, options.c_str()) == 0;
}

SmallDisk::~SmallDisk()
{
    if (m_bMounted) umount2(m_place.Path("").c_str(), MNT_DETACH);
}

void SmallDisk::MakeReadOnly()
{
    EXPECT_EQ(mount("none", m_place.Path("").c_str(), nullptr, MS_REMOUNT | MS_RDONLY, nullptr), 0);
}

}  // namespace Support

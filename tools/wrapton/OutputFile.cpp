#include "OutputFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <system_error>

#include "Failure.h"

namespace Orbel::Wrapton::Command
{
namespace
{

constexpr int kOriginCurrent = 1;
constexpr int kOriginEnd = 2;

std::string ErrorText(int error)
{
    return std::generic_category().message(error);
}

bool SameFile(const struct stat& one, const struct stat& other)
{
    return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
}

}  // namespace

OutputFile::OutputFile(const std::string& path, const std::vector<std::string>& inputs)
    : m_path(path)
{
    // Not emptied by open(): the file may turn out to be one of the inputs.
    m_nFile = open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666);
    if (m_nFile < 0) throw Failure(path + ": " + ErrorText(errno) + "; nothing was written");

    struct stat self = {};
    bool is_input = false;
    m_nError = fstat(m_nFile, &self) == 0 ? 0 : errno;
    for (const std::string& input : inputs)
    {
        struct stat other = {};
        is_input = is_input || (stat(input.c_str(), &other) == 0 && SameFile(self, other));
    }
    m_bRegular = S_ISREG(self.st_mode);
    if (Good() && !is_input && m_bRegular && ftruncate(m_nFile, 0) != 0) m_nError = errno;
    if (Good() && !is_input) return;

    close(m_nFile);
    if (is_input) throw Failure(path + ": the output is one of the inputs; nothing was written");
    throw Failure(path + ": " + ErrorText(m_nError) + "; nothing was written");
}

OutputFile::~OutputFile()
{
    if (m_nFile >= 0) close(m_nFile);
}

int64_t OutputFile::Target(int64_t offset, int origin) const
{
    if (origin == kOriginCurrent) return m_nPosition + offset;
    if (origin == kOriginEnd) return m_nEnd + offset;
    return offset;
}

std::size_t OutputFile::Place(int64_t offset, int origin, std::span<const unsigned char> bytes)
{
    if (!Good() || m_nFile < 0) return 0;

    const int64_t target = Target(offset, origin);
    // A pipe takes what continues it; anything else fails here with "Illegal seek".
    if (target != m_nPosition && lseek(m_nFile, target, SEEK_SET) < 0)
    {
        m_nError = errno;
        return 0;
    }
    m_nPosition = target;

    std::size_t written = 0;
    while (written < bytes.size())
    {
        const ssize_t count = write(m_nFile, bytes.data() + written, bytes.size() - written);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0)
        {
            m_nError = count < 0 ? errno : EIO;
            break;
        }
        written += static_cast<std::size_t>(count);
    }
    m_nPosition += static_cast<int64_t>(written);
    m_nEnd = std::max(m_nEnd, m_nPosition);
    return written;
}

bool OutputFile::StillThere() const
{
    struct stat self = {};
    struct stat named = {};
    return fstat(m_nFile, &self) == 0 && stat(m_path.c_str(), &named) == 0 && SameFile(self, named);
}

void OutputFile::Fail() const
{
    std::string left = "; nothing of it is left on disk";
    if (m_bRegular && StillThere())
        left = "; an unfinished file of " + std::to_string(Size()) +
               " bytes is left, it does not play";
    throw Failure(m_path + ": " + ErrorText(m_nError) + left);
}

void OutputFile::Finish()
{
    // Some file systems find out about a full disk only now. Pipes and devices know no fsync.
    if (Good() && m_bRegular && fsync(m_nFile) != 0) m_nError = errno;
    if (!Good()) Fail();
    if (m_bRegular && !StillThere())
        throw Failure(m_path +
                      ": it was removed, or its directory was, while it was written;"
                      " nothing of it is left under this name");

    const int file = m_nFile;
    m_nFile = -1;
    if (close(file) != 0)
        throw Failure(m_path + ": " + ErrorText(errno) +
                      "; what is left on disk may be incomplete");
}

}  // namespace Orbel::Wrapton::Command

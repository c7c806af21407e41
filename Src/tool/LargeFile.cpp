#include <fcntl.h>
#include <unistd.h>

#include <cerrno>

#include "Platform.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr mode_t kPermissions = 0666;  // less the process's umask

int Open(const char* path, int flags) noexcept
{
    int file = -1;
    do
    {
        file = ::open(path, flags, kPermissions);
    } while (file < 0 && errno == EINTR);
    return file;
}

}  // namespace

bool LargeFile::open(const char* path, uint32_t mode) noexcept
{
    if (path == nullptr) return false;
    if (mode != kModeWrite && mode != (kModeCreate | kModeWrite)) return false;

    const int flags = (mode & kModeCreate) != 0 ? O_CREAT | O_TRUNC : 0;
    const int file = Open(path, O_WRONLY | O_CLOEXEC | flags);
    if (file < 0) return false;

    close();
    m_nFile = file;
    m_nPosition = 0;
    m_bStream = lseek(file, 0, SEEK_CUR) < 0;
    return true;
}

bool LargeFile::seek(int64_t offset, int origin) noexcept
{
    if (!isOpen()) return false;

    int64_t from = 0;
    if (origin == kSeekCurrent) from = m_nPosition;
    if (origin == kSeekEnd) from = m_bStream ? m_nPosition : lseek(m_nFile, 0, SEEK_END);
    if (origin < kSeekStart || origin > kSeekEnd || from < 0) return false;

    int64_t position = 0;
    if (__builtin_add_overflow(from, offset, &position) || position < 0) return false;
    if (m_bStream && position != m_nPosition) return false;

    m_nPosition = position;
    return true;
}

bool LargeFile::write(const void* data, std::size_t size) noexcept
{
    if (!isOpen()) return false;

    const auto* bytes = static_cast<const unsigned char*>(data);
    while (size != 0)
    {
        // The file's own position is left alone, which saves the call that would set it.
        const ssize_t written =
            m_bStream ? ::write(m_nFile, bytes, size) : ::pwrite(m_nFile, bytes, size, m_nPosition);
        if (written < 0 && errno == EINTR) continue;
        if (written <= 0) return false;

        const auto count = static_cast<std::size_t>(written);
        bytes += count;
        size -= count;
        m_nPosition += static_cast<int64_t>(count);
    }
    return true;
}

bool LargeFile::close() noexcept
{
    if (!isOpen()) return false;

    const int file = m_nFile;
    m_nFile = -1;
    // Interrupted or not, Linux has closed it.
    return ::close(file) == 0 || errno == EINTR;
}

}  // namespace Orbel::Wrapton

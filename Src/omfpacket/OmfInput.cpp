#include "omfpacket/OmfInput.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <system_error>

namespace Orbel::Wrapton
{
namespace
{

[[noreturn]] void Fail(int error)
{
    throw std::system_error(error, std::generic_category());
}

/// What of @p bytes stands at @p at or behind it.
std::span<const unsigned char> From(std::span<const unsigned char> bytes, uint64_t at)
{
    return at < bytes.size() ? bytes.subspan(static_cast<size_t>(at))
                             : std::span<const unsigned char>{};
}

}  // namespace

std::span<const unsigned char> COmfMemory::View(uint64_t at, size_t /*count*/)
{
    return From(m_bytes, at);
}

size_t COmfMemory::Peek(uint64_t at, std::span<unsigned char> to)
{
    const auto rest = From(m_bytes, at);
    const size_t count = std::min(rest.size(), to.size());
    std::copy_n(rest.begin(), count, to.begin());
    return count;
}

COmfFile::COmfFile(const std::string& path, size_t read_ahead)
    // A pipe is refused, not waited for.
    : m_nFile(open(path.c_str(), O_RDONLY | O_NONBLOCK | O_CLOEXEC)), m_nReadAhead(read_ahead)
{
    if (m_nFile < 0) Fail(errno);

    struct stat found = {};
    int error = fstat(m_nFile, &found) == 0 ? 0 : errno;
    if (error == 0 && S_ISDIR(found.st_mode)) error = EISDIR;
    if (error == 0 && !S_ISREG(found.st_mode)) error = ESPIPE;  // frames are read by position
    if (error != 0)
    {
        close(m_nFile);
        Fail(error);
    }
    m_nSize = static_cast<uint64_t>(found.st_size);
}

COmfFile::~COmfFile()
{
    close(m_nFile);
}

std::span<const unsigned char> COmfFile::View(uint64_t at, size_t count)
{
    if (at >= m_nSize) return {};
    count = static_cast<size_t>(std::min<uint64_t>(count, m_nSize - at));
    const bool inside = at >= m_nAt && at - m_nAt <= m_nLen && count <= m_nLen - (at - m_nAt);
    if (!inside) Move(at, count);
    return From(Window(), at - m_nAt);
}

size_t COmfFile::Peek(uint64_t at, std::span<unsigned char> to)
{
    const auto near = at >= m_nAt ? From(Window(), at - m_nAt) : std::span<const unsigned char>{};
    if (near.size() < to.size()) return ReadAt(at, to);

    std::copy_n(near.begin(), to.size(), to.begin());
    return to.size();
}

/// Makes the window begin at @p at with @p count bytes, or as many as the file still has.
void COmfFile::Move(uint64_t at, size_t count)
{
    const size_t wanted =
        static_cast<size_t>(std::min<uint64_t>(std::max(count, m_nReadAhead), m_nSize - at));
    // A frame that crosses the window's end has its beginning in memory already.
    const bool continues = at >= m_nAt && at - m_nAt < m_nLen;
    const auto kept = continues ? From(Window(), at - m_nAt) : std::span<const unsigned char>{};
    if (wanted > m_nRoom)
    {
        std::unique_ptr<unsigned char[]> larger(new unsigned char[wanted]);
        std::copy(kept.begin(), kept.end(), larger.get());
        m_window = std::move(larger);
        m_nRoom = wanted;
    }
    else if (!kept.empty())
    {
        std::memmove(m_window.get(), kept.data(), kept.size());
    }
    m_nAt = at;
    m_nLen = kept.size();
    m_nLen += ReadAt(at + m_nLen, {m_window.get() + m_nLen, wanted - m_nLen});
}

size_t COmfFile::ReadAt(uint64_t at, std::span<unsigned char> to) const
{
    size_t done = 0;
    while (done < to.size())
    {
        const ssize_t count =
            pread(m_nFile, to.data() + done, to.size() - done, static_cast<off_t>(at + done));
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) Fail(errno);
        if (count == 0) break;  // the file has become shorter
        done += static_cast<size_t>(count);
    }
    return done;
}

}  // namespace Orbel::Wrapton

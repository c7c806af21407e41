/**
 * @file wrapton_file.hpp
 * Part of wrapton.hpp: a block of output, and a file that takes the blocks of a recording.
 */
#ifndef WRAPTON_WRAPTON_FILE_HPP
#define WRAPTON_WRAPTON_FILE_HPP

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <new>
#include <span>
#include <system_error>
#include <type_traits>
#include <utility>
#include <vector>

#include "Wrapton.h"

namespace Orbel::Wrapton
{

/// Where a block's position is counted from.
enum class Origin : int
{
    kStart = 0,
    kCurrent = 1,
    kEnd = 2
};

/// One piece of output. The bytes are the library's and end with the callable that got them.
struct Block
{
    int64_t offset = 0;
    Origin origin = Origin::kStart;
    std::span<const unsigned char> bytes;
    bool closing = false;  ///< emitted by Tailer()
};

/// What of a recording is brought from the system's memory to the disk, and when.
enum class Sync
{
    kNever,
    kAtEnd,     ///< by Finish(), so that a full disk is not found out later
    kEachBlock  ///< also behind every block: what was emitted outlives a loss of power
};

/// How a FileSink opens and keeps its file.
struct FileOptions
{
    Sync sync = Sync::kAtEnd;
    /// Files that are not overwritten even under another name; the sink then does not open and
    /// tells std::errc::file_exists.
    std::vector<std::filesystem::path> spared = {};
};

/**
 * A file that takes the blocks of one recording.
 *
 * The first error stays: nothing is written after it, every block is then refused whole, and
 * Error() and Finish() tell it. A block that comes behind Finish(), or to an object that was moved
 * from, is such an error (std::errc::bad_file_descriptor). Writes that were cut short or
 * interrupted are continued.
 *
 * Two containers close with a block whose place is the consumer's choice. No-seek MP4: it would
 * overwrite the beginning, and is left out. FLV: the header, complete by now, replaces the first
 * one in a file, and is appended in a pipe.
 */
class FileSink
{
public:
    /// Opens and empties a file.
    FileSink(const std::filesystem::path& path, unsigned int type, const FileOptions& options = {})
    {
        std::error_code error;
        Open(path, type, options, error);
        if (error) throw std::filesystem::filesystem_error("cannot be written", path, error);
    }
    /// When it fails, every block is refused with the same error.
    FileSink(const std::filesystem::path& path,
             unsigned int type,
             const FileOptions& options,
             std::error_code& error) noexcept
    {
        Open(path, type, options, error);
    }

    /// Continues an open file, a pipe or a device at its end, and never goes back in it. The
    /// descriptor stays the caller's; it has to be one that waits (without O_NONBLOCK).
    static FileSink Appending(int descriptor, unsigned int type, Sync sync = Sync::kNever) noexcept
    {
        FileSink sink;
        sink.m_nFile = descriptor;
        sink.m_nError = descriptor < 0 ? EBADF : 0;
        sink.m_nType = type;
        sink.m_sync = sync;
        sink.m_bAppends = true;
        return sink;
    }

    FileSink(const FileSink&) = delete;
    FileSink& operator=(const FileSink&) = delete;
    FileSink& operator=(FileSink&&) = delete;
    FileSink(FileSink&& other) noexcept
        : m_path(std::move(other.m_path)),
          m_nFile(std::exchange(other.m_nFile, -1)),
          m_nError(other.m_nError),
          m_nType(other.m_nType),
          m_sync(other.m_sync),
          m_bOwned(std::exchange(other.m_bOwned, false)),
          m_bAppends(other.m_bAppends),
          m_bRegular(other.m_bRegular),
          m_nPosition(other.m_nPosition),
          m_nEnd(other.m_nEnd),
          m_nHeaderLen(other.m_nHeaderLen)
    {
    }
    ~FileSink()
    {
        if (m_bOwned && m_nFile >= 0) close(m_nFile);
    }

    /// Places a block, by the rules for closing ones too. Gives the bytes stored, fewer than given
    /// only after an error.
    std::size_t operator()(const Block& block) noexcept
    {
        if (m_nType == SG_STREAM_TYPE_FLV && m_nHeaderLen == 0)
            m_nHeaderLen = FlvHeaderLength(block.bytes);
        if (!block.closing) return Place(block.offset, block.origin, block.bytes);

        const bool at_start = block.origin == Origin::kStart && block.offset == 0;
        if (m_nType == SG_STREAM_TYPE_MP4_NOSEEK && at_start) return block.bytes.size();
        const bool replaces = m_nType == SG_STREAM_TYPE_FLV && m_bRegular && m_nHeaderLen > 0 &&
                              block.bytes.size() == m_nHeaderLen &&
                              FlvHeaderLength(block.bytes) == m_nHeaderLen;
        if (replaces) return Place(0, Origin::kStart, block.bytes);
        return Place(block.offset, block.origin, block.bytes);
    }

    /// Places bytes where they are said to belong.
    std::size_t Place(int64_t offset, Origin origin, std::span<const unsigned char> bytes) noexcept
    {
        if (bytes.empty()) return 0;
        if (Good() && m_nFile < 0) m_nError = EBADF;
        if (!Good() || !MoveTo(offset, origin)) return 0;

        std::size_t written = 0;
        while (written < bytes.size())
        {
            const auto left = bytes.subspan(written);
            const ssize_t count = Uninterrupted(
                [&] { return static_cast<ssize_t>(write(m_nFile, left.data(), left.size())); });
            if (count <= 0)
            {
                m_nError = count < 0 ? errno : EIO;
                break;
            }
            written += static_cast<std::size_t>(count);
        }
        m_nPosition += static_cast<int64_t>(written);
        m_nEnd = std::max(m_nEnd, m_nPosition);
        if (m_sync == Sync::kEachBlock) SyncNow(m_nFile, fdatasync);
        return written;
    }

    [[nodiscard]] bool Good() const noexcept { return m_nError == 0; }

    /// The first error; none: all is well.
    [[nodiscard]] std::error_code Error() const noexcept
    {
        return {m_nError, std::generic_category()};
    }

    /// False for pipes, devices and Appending(): nothing can go back to an earlier position.
    [[nodiscard]] bool CanGoBack() const noexcept { return m_bRegular; }

    /// The end of the highest block so far.
    [[nodiscard]] uint64_t Size() const noexcept { return static_cast<uint64_t>(m_nEnd); }

    /// False when the file was removed or replaced while it was written. The name is that of the
    /// directory the process was in then.
    [[nodiscard]] bool StillThere() const noexcept
    {
        struct stat self = {};
        struct stat named = {};
        return fstat(m_nFile, &self) == 0 && stat(m_path.c_str(), &named) == 0 &&
               SameFile(self, named);
    }

    /// Brings everything to the disk, sees that the file is still there under its name
    /// (std::errc::no_such_file_or_directory otherwise) and closes it. Fails with the first error
    /// of all; the file then stays as it is, and is closed by the destructor. Again, it only tells
    /// that error.
    void Finish()
    {
        std::error_code error;
        Finish(error);
        if (error) throw std::filesystem::filesystem_error("cannot be written", m_path, error);
    }
    void Finish(std::error_code& error) noexcept
    {
        error.clear();
        if (Good() && m_nFile >= 0)
        {
            if (m_sync != Sync::kNever) SyncNow(m_nFile, fsync);
            if (m_sync == Sync::kAtEnd) SyncDirectory();
            if (Good() && m_bRegular && !StillThere()) m_nError = ENOENT;
        }
        if (Good() && m_nFile >= 0)
        {
            const int file = std::exchange(m_nFile, -1);
            // Interrupted, it is closed all the same.
            if (m_bOwned && close(file) != 0 && errno != EINTR) m_nError = errno;
        }
        if (!Good()) error = Error();
    }

private:
    FileSink() = default;

    static bool SameFile(const struct stat& one, const struct stat& other) noexcept
    {
        return one.st_dev == other.st_dev && one.st_ino == other.st_ino;
    }

    void Open(const std::filesystem::path& path,
              unsigned int type,
              const FileOptions& options,
              std::error_code& error) noexcept
    {
        m_nType = type;
        m_sync = options.sync;
        m_nError = TryOpen(path, options);
        // A file whose name is lost with the power is lost with all its blocks.
        if (m_sync == Sync::kEachBlock) SyncDirectory();
        error = Error();
        if (m_nError != 0 && m_nFile >= 0) close(std::exchange(m_nFile, -1));
    }

    /// 0 or the error.
    int TryOpen(const std::filesystem::path& path, const FileOptions& options) noexcept
    {
        try
        {
            std::error_code error;
            // The process may go to another directory meanwhile.
            m_path = std::filesystem::absolute(path, error);
            if (error) m_path = path;
        }
        catch (const std::bad_alloc&)
        {
            return ENOMEM;
        }
        // Not emptied by open(): the file may turn out to be one of those to be spared.
        m_nFile =
            Uninterrupted([&] { return open(path.c_str(), O_WRONLY | O_CREAT | O_CLOEXEC, 0666); });
        m_bOwned = true;
        struct stat self = {};
        if (m_nFile < 0 || fstat(m_nFile, &self) != 0) return errno;
        for (const std::filesystem::path& spared : options.spared)
        {
            struct stat other = {};
            if (stat(spared.c_str(), &other) == 0 && SameFile(self, other)) return EEXIST;
        }
        m_bRegular = S_ISREG(self.st_mode);
        if (!m_bRegular) return 0;
        return Uninterrupted([&] { return ftruncate(m_nFile, 0); }) != 0 ? errno : 0;
    }

    /// Moves to a place; false and an error when that is impossible.
    bool MoveTo(int64_t offset, Origin origin) noexcept
    {
        const int64_t base = origin == Origin::kCurrent ? m_nPosition
                             : origin == Origin::kEnd   ? m_nEnd
                                                        : 0;
        int64_t target = 0;
        if (__builtin_add_overflow(base, offset, &target) || target < 0)
        {
            m_nError = EINVAL;
            return false;
        }
        if (target == m_nPosition) return true;  // a pipe takes what continues it
        if (m_bAppends)
            m_nError = ESPIPE;
        else if (lseek(m_nFile, target, SEEK_SET) < 0)
            m_nError = errno;
        else
            m_nPosition = target;
        return Good();
    }

    /// Calls again as long as a signal interrupts the call.
    template <typename Call>
    static std::invoke_result_t<Call> Uninterrupted(Call call) noexcept
    {
        auto result = call();
        while (result < 0 && errno == EINTR)
            result = call();
        return result;
    }

    void SyncNow(int file, int (*sync)(int)) noexcept
    {
        if (!Good() || Uninterrupted([&] { return sync(file); }) == 0) return;
        if (errno != EINVAL && errno != EROFS) m_nError = errno;  // pipes and devices know no fsync
    }

    /// Brings the file's name to the disk, too. A directory that may not be read is left out.
    void SyncDirectory() noexcept
    {
        if (!Good() || !m_bRegular) return;
        int directory = -1;
        try
        {
            directory = open(m_path.parent_path().c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        }
        catch (const std::bad_alloc&)
        {
            m_nError = ENOMEM;
        }
        if (directory < 0) return;
        SyncNow(directory, fsync);
        close(directory);
    }

    /// Length of an FLV file header with the script tag behind it; 0: other bytes.
    static std::size_t FlvHeaderLength(std::span<const unsigned char> bytes) noexcept
    {
        constexpr std::size_t kFileHeader = 9 + 4;  // and the size of no tag ahead of the first
        constexpr std::size_t kTagHeader = 11;
        constexpr std::size_t kTagTrail = 4;
        constexpr unsigned char kScript = 18;

        if (bytes.size() < kFileHeader + kTagHeader) return 0;
        if (bytes[0] != 'F' || bytes[1] != 'L' || bytes[2] != 'V') return 0;
        const auto tag = bytes.subspan(kFileHeader);
        if (tag[0] != kScript) return 0;
        const std::size_t data_size =
            std::size_t{tag[1]} << 16 | std::size_t{tag[2]} << 8 | std::size_t{tag[3]};
        const std::size_t length = kFileHeader + kTagHeader + data_size + kTagTrail;
        return length <= bytes.size() ? length : 0;
    }

    std::filesystem::path m_path;  ///< from the root
    int m_nFile = -1;
    int m_nError = 0;  ///< errno of the first failure
    unsigned int m_nType = 0;
    Sync m_sync = Sync::kAtEnd;
    bool m_bOwned = false;
    bool m_bAppends = false;  ///< whatever the descriptor could do
    bool m_bRegular = false;  ///< a file that this object opened
    int64_t m_nPosition = 0;
    int64_t m_nEnd = 0;
    std::size_t m_nHeaderLen = 0;  ///< of the first FLV header
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_WRAPTON_FILE_HPP

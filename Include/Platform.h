/**
 * @file Platform.h
 * What the component interfaces share with their callers: reference-counted components and their
 * factories, the error slot, the shared pointer, the packet buffer and the file.
 *
 * The header compiles alone as C++17 and later.
 */
#ifndef WRAPTON_PLATFORM_H
#define WRAPTON_PLATFORM_H

#include <algorithm>
#include <atomic>
#include <cstddef>
#include <cstdint>
#include <functional>
#include <memory>
#include <new>
#include <string>
#include <vector>

#include "Wrapton.h"

namespace Orbel::Wrapton
{

/// The last error of a reserved operation, and of any other that a component does not implement.
inline constexpr uint32_t kErrorNotImplemented = 0x10030010;

/// The last error after a block could not be brought to where it belongs: a seek, a write or the
/// closing of the file failed, or the caller's callable threw. The call itself goes on.
inline constexpr uint32_t kErrorWrite = 0x10030011;

/**
 * The error slot of the calling thread.
 *
 * @return the code that was stored last on this thread, 0 when there was none yet. A component
 *         stores kErrorNotImplemented, kErrorWrite or a FuncResult (IWrapton.h); a call that
 *         succeeds leaves the slot as it is
 */
WRAPTON_API uint32_t getLastError() noexcept;

/// Stores @p error in the slot of the calling thread; 0 clears it.
WRAPTON_API void setLastError(uint32_t error) noexcept;

/// Counts references; the last one runs the deleter that was given with the pointer.
template <class T>
using SharedPtr = std::shared_ptr<T>;

/// Anything that can be called with two arguments and answers with a truth value; may be empty.
template <class First, class Second>
using Callable = std::function<bool(First, Second)>;

/// The version of a component. The texts are literals of the library.
struct VersionInfo
{
    const char* name;
    int majorNumber;
    int minorNumber;
    int revisionNumber;
    const char* revision;   ///< of the sources
    const char* buildDate;  ///< month, day and year
};

/**
 * Base of every component.
 *
 * A component is created with one reference, which is the creator's. The count may be changed on
 * any thread; everything else of a component is used by one thread at a time.
 */
class IComponentBase
{
public:
    IComponentBase() noexcept = default;
    IComponentBase(const IComponentBase&) = delete;
    IComponentBase& operator=(const IComponentBase&) = delete;
    virtual ~IComponentBase() = default;

    /// Ends the component at once, however many references there are; release() is the usual way.
    virtual void destroy() { delete this; }

    [[nodiscard]] virtual VersionInfo getVersion() const = 0;

    /// Adds a reference. @return how many there are now
    virtual long addRef() noexcept { return m_nReferences.fetch_add(1) + 1; }

    /// Gives one reference back; the last one destroys the component. @return how many are left
    virtual long release() noexcept
    {
        const long left = m_nReferences.fetch_sub(1) - 1;
        if (left == 0) destroy();
        return left;
    }

private:
    std::atomic<long> m_nReferences{1};
};

/**
 * Makes the components of one class.
 *
 * A factory is in the registry of the process, under its class id, from its construction to its
 * destruction. Factories may be registered, looked up and taken out on several threads at a time.
 * One that is found must outlive its use, which those of the library do until the process exits; a
 * program's own one must not be looked up ahead of the end of its constructor.
 */
class IComponentFactory
{
public:
    IComponentFactory(const IComponentFactory&) = delete;
    IComponentFactory& operator=(const IComponentFactory&) = delete;
    virtual ~IComponentFactory() { remove(*this); }

    /// The id that the factory is registered under; valid as long as the factory.
    [[nodiscard]] virtual const char* clsid() const noexcept { return m_pClsid; }

    /**
     * Makes a component.
     *
     * @param type what the class of components tells its variants apart by
     * @return a component with one reference, which is the caller's; null when there is no memory
     */
    virtual IComponentBase* create(const std::string& type) = 0;

    /**
     * The registered factory of a class id; the one that registered last when there are several.
     *
     * @param clsid compared as text; may be null
     * @return null when there is none
     */
    WRAPTON_API static IComponentFactory* find(const char* clsid) noexcept;

protected:
    /// @param clsid must live as long as the factory
    explicit IComponentFactory(const char* clsid) noexcept : m_pClsid(clsid) { add(*this); }

    WRAPTON_API static void add(IComponentFactory& factory) noexcept;
    /// Does nothing for a factory that is not registered. A derived class whose factories may be
    /// looked up while they are destroyed calls it in its own destructor, too.
    WRAPTON_API static void remove(IComponentFactory& factory) noexcept;

private:
    const char* m_pClsid;
    IComponentFactory* m_pNext = nullptr;  // the one that registered before
};

/**
 * A growable packet of bytes, owned by the caller, into which a packager writes its output.
 *
 * A default-constructed packet holds no memory and is not valid yet; Resize() makes it so. Growing
 * keeps the bytes that the packet held and sets the new ones to zero. No operation throws.
 */
class PacketBuffer
{
public:
    PacketBuffer() noexcept = default;

    /// A packet of @p size zero bytes; not valid when there is no memory for them.
    explicit PacketBuffer(std::size_t size) noexcept { Resize(size); }

    /// Whether the packet has memory to write to. It stays valid when it is resized to 0.
    [[nodiscard]] bool IsValid() const noexcept { return m_bytes.capacity() != 0; }

    /**
     * Sets the length in bytes.
     *
     * @return false, with the packet unchanged, when there is no memory for @p size bytes
     */
    bool Resize(std::size_t size) noexcept
    {
        const std::size_t before = m_bytes.size();
        if (!ResizeUnset(size)) return false;
        if (size > before) std::fill(m_bytes.data() + before, m_bytes.data() + m_bytes.size(), 0);
        return true;
    }

    /**
     * Resize() for an owner that writes all new bytes next: they have no particular value.
     *
     * @return false, with the packet unchanged, when there is no memory for @p size bytes
     */
    [[gnu::noinline]]  // inlined, GCC 12 warns of overflows that cannot be
    bool
    ResizeUnset(std::size_t size) noexcept
    {
        try
        {
            m_bytes.resize(size);
        }
        catch (...)
        {
            return false;
        }
        return true;
    }

    /// The bytes; valid until the next Resize() or the packet's end.
    [[nodiscard]] unsigned char* Data() noexcept { return m_bytes.data(); }
    [[nodiscard]] const unsigned char* Data() const noexcept { return m_bytes.data(); }

    /// The length in bytes.
    [[nodiscard]] std::size_t Size() const noexcept { return m_bytes.size(); }

private:
    /// Leaves new bytes as they are where a vector would set them.
    struct Unset : std::allocator<unsigned char>
    {
        template <class Other>
        struct rebind
        {
            using other = Unset;
        };
        void construct(unsigned char* place) noexcept
        {
            ::new (static_cast<void*>(place)) unsigned char;
        }
    };
    std::vector<unsigned char, Unset> m_bytes;
};

/**
 * A file that is written at positions, which pass 4 GiB.
 *
 * Bytes go to the operating system at once, each write by one call of it. Reasons of failures stay
 * in errno. The file is closed when the object ends.
 */
class LargeFile
{
public:
    /// What open() does; the two together make 4097, which creates or empties the file.
    static constexpr uint32_t kModeWrite = 0x0001;
    static constexpr uint32_t kModeCreate = 0x1000;

    /// Origins of seek().
    static constexpr int kSeekStart = 0;
    static constexpr int kSeekCurrent = 1;
    static constexpr int kSeekEnd = 2;

    LargeFile() noexcept = default;
    LargeFile(const LargeFile&) = delete;
    LargeFile& operator=(const LargeFile&) = delete;
    ~LargeFile() { close(); }

    /**
     * Opens a file for writing, at its start. An object that has a file open gives it up for the
     * new one, but keeps it when that cannot be opened.
     *
     * @param path a file's name, in the encoding of the file system
     * @param mode kModeWrite, alone or with kModeCreate; anything else opens nothing
     */
    WRAPTON_API bool open(const char* path, uint32_t mode) noexcept;

    [[nodiscard]] bool isOpen() const noexcept { return m_nFile >= 0; }

    /**
     * Sets the position of the next write, which may lie behind the end.
     *
     * @param offset bytes from the origin
     * @return false, with the position unchanged, for a position ahead of the start, another
     *         origin, and a pipe or device that would have to jump
     */
    WRAPTON_API bool seek(int64_t offset, int origin) noexcept;

    /// Writes @p size bytes, which moves the position by as many as were written.
    /// @return false when not all of them were, or the file is not open
    WRAPTON_API bool write(const void* data, std::size_t size) noexcept;

    /// Brings what was written to the operating system, not to the disk: it is there already.
    [[nodiscard]] bool flush() const noexcept { return isOpen(); }

    /// @return false when the operating system tells only now that bytes are lost, or nothing is
    ///         open
    WRAPTON_API bool close() noexcept;

private:
    int m_nFile = -1;
    int64_t m_nPosition = 0;
    bool m_bStream = false;  // a pipe or device: knows no positions
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PLATFORM_H

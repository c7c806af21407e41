#ifndef WRAPTON_TOOL_CACHELINE_H
#define WRAPTON_TOOL_CACHELINE_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace Orbel::Wrapton
{

/**
 * The part of a work buffer where a block is composed, so that its payload begins at a cache line:
 * copies to any other place, the C library's among them, take up to twice as long.
 *
 * @param ahead bytes of the block ahead of its payload
 * @param most the block's length at most. A block that does not fit behind the bytes that are
 * passed over gets the whole of @p room
 */
inline std::span<unsigned char> AlignPayload(std::span<unsigned char> room,
                                             size_t ahead,
                                             size_t most) noexcept
{
    constexpr size_t kCacheLine = 64;

    const size_t at = reinterpret_cast<uintptr_t>(room.data()) + ahead;
    const size_t over = (kCacheLine - at % kCacheLine) % kCacheLine;
    return over <= room.size() && most <= room.size() - over ? room.subspan(over) : room;
}

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_CACHELINE_H

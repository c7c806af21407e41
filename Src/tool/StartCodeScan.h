#ifndef WRAPTON_TOOL_STARTCODESCAN_H
#define WRAPTON_TOOL_STARTCODESCAN_H

#include <cstddef>

namespace Orbel::Wrapton
{

/// Bytes that a start code is recognised by, less its first.
constexpr size_t kStartCodeAhead = 3;

/// What a scan goes over.
struct ScanRange
{
    const unsigned char* data;
    size_t size;
    /// Bytes behind these that may be looked at, to recognise a start code which begins among the
    /// last; at most kStartCodeAhead.
    size_t ahead;
};

/// @param at has kStartCodeAhead bytes behind the first
inline bool IsStartCode(const unsigned char* at) noexcept
{
    return at[0] == 0 && at[1] == 0 && (at[2] == 1 || (at[2] == 0 && at[3] == 1));
}

/**
 * The loops under FindStartCode() and CopyToStartCode(). All of them do the same: the plain one
 * says what, the others are it with vectors. None reads behind the range or writes behind the bytes
 * that it copies.
 *
 * @param to receives the bytes ahead of the start code; not looked at where nothing is copied
 * @return where the first start code begins, counting the zero byte of the four-byte form; the
 *         range's size when there is none. A three-byte start code in the very last three bytes
 *         that may be looked at is none
 */
using StartCodeScan = size_t (*)(const ScanRange& range, unsigned char* to) noexcept;

template <bool kCopies>
size_t ScanPlain(const ScanRange& range, unsigned char* to) noexcept;
template <bool kCopies>
size_t ScanSse2(const ScanRange& range, unsigned char* to) noexcept;
/// For processors that have AVX2 only.
template <bool kCopies>
[[gnu::target("avx2")]] size_t ScanAvx2(const ScanRange& range, unsigned char* to) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_STARTCODESCAN_H

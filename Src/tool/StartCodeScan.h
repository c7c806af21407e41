#ifndef WRAPTON_TOOL_STARTCODESCAN_H
#define WRAPTON_TOOL_STARTCODESCAN_H

#include <cstddef>

namespace Orbel::Wrapton
{

/**
 * The loops under FindStartCode() and CopyToStartCode(). All of them do the same: the plain one
 * says what, the others are it with vectors. None reads behind @p size or writes behind the bytes
 * that it copies.
 *
 * @param to receives the bytes ahead of the start code; not looked at where nothing is copied
 * @return where the first start code begins, counting the zero byte of the four-byte form; @p size
 *         when there is none. A three-byte start code in the very last three bytes is none
 */
using StartCodeScan = size_t (*)(const unsigned char* data,
                                 size_t size,
                                 unsigned char* to) noexcept;

template <bool kCopies>
size_t ScanPlain(const unsigned char* data, size_t size, unsigned char* to) noexcept;
template <bool kCopies>
size_t ScanSse2(const unsigned char* data, size_t size, unsigned char* to) noexcept;
/// For processors that have AVX2 only.
template <bool kCopies>
[[gnu::target("avx2")]] size_t ScanAvx2(const unsigned char* data,
                                        size_t size,
                                        unsigned char* to) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_STARTCODESCAN_H

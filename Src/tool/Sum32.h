#ifndef WRAPTON_TOOL_SUM32_H
#define WRAPTON_TOOL_SUM32_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace Orbel::Wrapton
{

/// GetSum32() of @p data, which are copied to @p to on the way.
uint32_t CopyAndSum32(std::span<const unsigned char> data, unsigned char* to) noexcept;

/**
 * The loops under it and under GetSum32(): the little-endian 32-bit words added up, with zeros for
 * what the last one lacks. The plain one says what, the others are it with vectors.
 *
 * @param to receives the bytes; not looked at where nothing is copied
 */
using WordSum = uint32_t (*)(const unsigned char* data, size_t size, unsigned char* to) noexcept;

template <bool kCopies>
uint32_t SumPlain(const unsigned char* data, size_t size, unsigned char* to) noexcept;
template <bool kCopies>
uint32_t SumSse2(const unsigned char* data, size_t size, unsigned char* to) noexcept;
/// For processors that have AVX2 only.
template <bool kCopies>
[[gnu::target("avx2")]] uint32_t SumAvx2(const unsigned char* data,
                                         size_t size,
                                         unsigned char* to) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_SUM32_H

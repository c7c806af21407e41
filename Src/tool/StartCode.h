#ifndef WRAPTON_TOOL_STARTCODE_H
#define WRAPTON_TOOL_STARTCODE_H

#include <cstddef>
#include <cstdint>
#include <span>

namespace Orbel::Wrapton
{

/// A start code of a byte stream, ISO/IEC 14496-10 Annex B: where it begins, counting the zero byte
/// of the four-byte form, and where the NAL unit behind it does.
struct StartCode
{
    size_t begin = 0;
    size_t unit = 0;
};

constexpr size_t kToTheEnd = SIZE_MAX;

/// The first start code at or behind @p from; both places are the data's end when there is none. A
/// three-byte start code in the very last three bytes is not seen as one.
/// @param most a start code that begins as many bytes behind @p from or later is not looked for:
///        both places are then there
StartCode FindStartCode(std::span<const unsigned char> data,
                        size_t from,
                        size_t most = kToTheEnd) noexcept;

/// The same, with the bytes between @p from and the place that is found copied to @p to on the way.
/// Nothing behind them is written.
StartCode CopyToStartCode(std::span<const unsigned char> data,
                          size_t from,
                          unsigned char* to,
                          size_t most = kToTheEnd) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_STARTCODE_H

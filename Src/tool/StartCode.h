#ifndef WRAPTON_TOOL_STARTCODE_H
#define WRAPTON_TOOL_STARTCODE_H

#include <cstddef>
#include <span>

namespace Orbel::Wrapton
{

/// A start code of a byte stream, ISO/IEC 14496-10 Annex B: where it begins, counting the zero byte
/// of the four-byte form, and where the NAL unit behind it does.
struct StartCode
{
    size_t begin;
    size_t unit;
};

/// The first start code at or behind @p from; both places are the data's end when there is none. A
/// three-byte start code in the very last three bytes is not seen as one.
StartCode FindStartCode(std::span<const unsigned char> data, size_t from) noexcept;

/// The same, with the bytes between @p from and the start code copied to @p to on the way. Nothing
/// behind them is written.
StartCode CopyToStartCode(std::span<const unsigned char> data,
                          size_t from,
                          unsigned char* to) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_STARTCODE_H

#include "tool/AvcConvert.h"

#include <algorithm>
#include <climits>
#include <cstring>

#include "tool/StartCode.h"
#include "tool/StreamTool.h"

namespace Orbel::Wrapton
{
namespace
{

using ByteSpan = std::span<const unsigned char>;

constexpr unsigned kNalTypeSps = 7;
constexpr unsigned kNalTypePps = 8;

/// The first NAL unit of @p type, without its start code; empty when there is none.
ByteSpan FindUnit(ByteSpan data, unsigned type)
{
    StartCode code = FindStartCode(data, 0);
    while (code.unit < data.size() && (data[code.unit] & 0x1Fu) != type)
    {
        code = FindStartCode(data, code.unit);
    }
    const size_t end = FindStartCode(data, code.unit).begin;
    return data.subspan(code.unit, end - code.unit);
}

int32_t CopyUnit(ByteSpan unit, unsigned char* out, unsigned int outCap)
{
    if (unit.empty() || unit.size() > outCap || unit.size() > INT_MAX || out == nullptr) return 0;

    std::memcpy(out, unit.data(), unit.size());
    return static_cast<int32_t>(unit.size());
}

ByteSpan AsSpan(const unsigned char* data, unsigned int len)
{
    return data != nullptr ? ByteSpan(data, len) : ByteSpan();
}

}  // namespace

int32_t CAvcConvert::getSPS(const unsigned char* data,
                            unsigned int len,
                            unsigned char* out,
                            unsigned int outCap) const noexcept
{
    if (outCap == 0 || out == nullptr) return -1;

    return CopyUnit(FindUnit(AsSpan(data, len), kNalTypeSps), out, outCap);
}

int32_t CAvcConvert::getPPS(const unsigned char* data,
                            unsigned int len,
                            unsigned char* out,
                            unsigned int outCap) const noexcept
{
    // Kept: asks for both to be missing where getSPS() asks for either.
    if (outCap == 0 && out == nullptr) return -1;

    return CopyUnit(FindUnit(AsSpan(data, len), kNalTypePps), out, outCap);
}

int32_t CAvcConvert::H264ToAvc(const unsigned char* data,
                               unsigned int len,
                               unsigned char* out,
                               unsigned int outCap) const noexcept
{
    if (outCap == 0 || out == nullptr) return -1;

    const size_t room = std::min<size_t>(outCap, INT_MAX);
    return static_cast<int32_t>(ConvertUnits(AsSpan(data, len), {out, room}).written);
}

CAvcConvert::Conversion CAvcConvert::ConvertUnits(std::span<const unsigned char> data,
                                                  std::span<unsigned char> out) noexcept
{
    size_t written = 0;
    StartCode code = FindStartCode(data, 0);
    while (code.begin < data.size())
    {
        // Where all that is left would fit as one unit, units are copied while they are looked for.
        const size_t room = out.size() - written;
        const bool fits = room >= kLengthLen && data.size() - code.unit <= room - kLengthLen;
        const StartCode next =
            fits ? CopyToStartCode(data, code.unit, out.data() + written + kLengthLen)
                 : FindStartCode(data, code.unit);
        const size_t length = next.begin - code.unit;
        if (room < kLengthLen || length > room - kLengthLen) return {written, kLengthLen + length};

        MSB_uint32_to_memory(&out[written], static_cast<uint32_t>(length));
        written += kLengthLen;
        if (!fits && length != 0) std::memcpy(&out[written], &data[code.unit], length);
        written += length;
        code = next;
    }
    return {written, 0};
}

std::optional<size_t> CAvcConvert::ConvertWhole(std::span<const unsigned char> data,
                                                std::span<unsigned char> out) noexcept
{
    const Conversion result = ConvertUnits(data, out);
    if (result.left_out != 0) return std::nullopt;
    return result.written;
}

}  // namespace Orbel::Wrapton

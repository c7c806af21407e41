#include "mkvpacket/MkvCodec.h"

#include <algorithm>
#include <cstring>

#include "tool/StartCode.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr unsigned kNalTypeSps = 7;
constexpr unsigned kNalTypePps = 8;
constexpr size_t kStartCodeLen = 4;
constexpr size_t kPrefixLen = 3;
constexpr size_t kMaxSetLen = 255;

/// Where the first start code of 4 bytes at or behind @p from begins; the data's end when there is
/// none.
size_t FindLongStartCode(std::span<const unsigned char> data, size_t from)
{
    StartCode code = FindStartCode(data, from);
    while (code.unit - code.begin == kPrefixLen)
    {
        code = FindStartCode(data, code.unit);
    }
    return code.begin;
}

/// The same, with the bytes ahead of the start code copied to their places in @p to.
size_t CopyToLongStartCode(std::span<const unsigned char> data, size_t from, unsigned char* to)
{
    StartCode code = CopyToStartCode(data, from, to + from);
    while (code.unit - code.begin == kPrefixLen)
    {
        std::copy(&data[code.begin], &data[code.begin] + kPrefixLen, to + code.begin);
        code = CopyToStartCode(data, code.unit, to + code.unit);
    }
    return code.begin;
}

void Keep(std::span<const unsigned char> unit, std::span<unsigned char> set, int16_t& length)
{
    if (length != 0 || unit.size() > kMaxSetLen) return;

    std::copy(unit.begin(), unit.end(), set.begin());
    length = static_cast<int16_t>(unit.size());
}

/// Takes a unit if it is a parameter set that is still missing.
void KeepParameterSet(std::span<const unsigned char> unit, MKV_AVCC& config)
{
    if (unit.empty()) return;

    const unsigned type = unit[0] & 0x1Fu;
    if (type == kNalTypeSps) Keep(unit, config.sps_data, config.sps_length);
    if (type == kNalTypePps) Keep(unit, config.pps_data, config.pps_length);
}

/// Fills the fields that follow from the parameter sets once both are there.
void Complete(MKV_AVCC& config)
{
    if (config.sps_length == 0 || config.pps_length == 0) return;

    config.configurate_version = 1;
    if (config.sps_length >= 4)
    {
        config.AVCProfileIndition = config.sps_data[1];
        config.profile_compatibility = config.sps_data[2];
        config.AVCLevelIndition = config.sps_data[3];
    }
    config.lengthSizeMinusOne = 0xFF;
    config.sps_num = 1;
    config.pps_num = 1;
}

/// Where the prefix 00 00 01 begins ahead of the first code at or behind @p from that passes
/// @p wanted; the frame's size when there is none.
template <class Wanted>
size_t FindCode(std::span<const unsigned char> frame, size_t from, Wanted wanted)
{
    StartCode code = FindStartCode(frame, from);
    while (code.unit < frame.size() && !wanted(frame[code.unit]))
    {
        code = FindStartCode(frame, code.unit);
    }
    return code.unit < frame.size() ? code.unit - kPrefixLen : frame.size();
}

/// Puts lengths in the place of the start codes that @p find_next finds, in @p to as well unless
/// that is null.
template <class FindNext>
void Convert(std::span<unsigned char> frame,
             MKV_AVCC& config,
             FindNext find_next,
             unsigned char* to)
{
    size_t at = find_next(0);
    while (at < frame.size())
    {
        const size_t begin = at + kStartCodeLen;
        const size_t end = find_next(begin);
        KeepParameterSet(frame.subspan(begin, end - begin), config);
        const std::span<unsigned char> place = frame.subspan(at, kStartCodeLen);
        CMsbCursor w(place);
        w.U32(static_cast<uint32_t>(end - begin));
        if (to != nullptr) std::copy(place.begin(), place.end(), to + at);
        at = end;
    }
    Complete(config);
}

}  // namespace

void ConvertStartCodes(std::span<unsigned char> frame, MKV_AVCC& config) noexcept
{
    Convert(
        frame, config, [&](size_t from) { return FindLongStartCode(frame, from); }, nullptr);
}

void ConvertStartCodes(std::span<unsigned char> frame, MKV_AVCC& config, unsigned char* to) noexcept
{
    Convert(
        frame, config, [&](size_t from) { return CopyToLongStartCode(frame, from, to); }, to);
}

void PutAvcConfig(CMsbCursor& w, const MKV_AVCC& config) noexcept
{
    w.U8(config.configurate_version);
    w.U8(config.AVCProfileIndition);
    w.U8(config.profile_compatibility);
    w.U8(config.AVCLevelIndition);
    w.U8(config.lengthSizeMinusOne);
    w.U8(0xE0u | config.sps_num);  // 3 reserved ones, 5-bit count
    w.U16(static_cast<uint16_t>(config.sps_length));
    w.Bytes(std::span(config.sps_data).first(static_cast<size_t>(config.sps_length)));
    w.U8(config.pps_num);
    w.U16(static_cast<uint16_t>(config.pps_length));
    w.Bytes(std::span(config.pps_data).first(static_cast<size_t>(config.pps_length)));
}

std::span<const unsigned char> FindMpeg4Headers(std::span<const unsigned char> frame) noexcept
{
    const size_t begin =
        FindCode(frame, 0, [](unsigned char code) { return code == 0xB0 || code == 0xB5; });
    const size_t end =
        FindCode(frame, begin, [](unsigned char code) { return code == 0xB3 || code == 0xB6; });
    if (end == frame.size()) return {};
    return frame.subspan(begin, end - begin);
}

}  // namespace Orbel::Wrapton

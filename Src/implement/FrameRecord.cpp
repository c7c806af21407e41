#include "implement/FrameRecord.h"

#include <string>

#include "tool/Clock.h"
#include "tool/StreamMatch.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr int64_t kMostBlocks = 4096;

/// What is absent counts as 0.
long Value(const FrameAttributes& attrs, const std::string& key)
{
    const auto found = attrs.find(key);
    return found != attrs.end() ? found->second : 0;
}

/// The low 32 bits: the fields of a record are no wider.
uint32_t Word(const FrameAttributes& attrs, const std::string& key)
{
    return static_cast<uint32_t>(Value(attrs, key));
}

/// The low @p width bits.
uint32_t Bits(const FrameAttributes& attrs, const std::string& key, unsigned int width)
{
    return Word(attrs, key) & ((1u << width) - 1);
}

struct Date
{
    uint32_t year;  // since 2000
    uint32_t month;
    uint32_t day;
    uint32_t hour;
    uint32_t minute;
    uint32_t second;
};

Date DateOf(const FrameAttributes& attrs)
{
    return {.year = Bits(attrs, "year", 6),
            .month = Bits(attrs, "month", 4),
            .day = Bits(attrs, "day", 5),
            .hour = Bits(attrs, "hour", 5),
            .minute = Bits(attrs, "minute", 6),
            .second = Bits(attrs, "second", 6)};
}

uint32_t Packed(const Date& date)
{
    return date.year << 26 | date.month << 22 | date.day << 17 | date.hour << 12 |
           date.minute << 6 | date.second;
}

/// Kept: without any date this is the last of November 1999, never 0.
uint32_t Seconds(const Date& date)
{
    constexpr int kYearsFrom1900To2000 = 100;
    std::tm local{};
    local.tm_year = static_cast<int>(date.year) + kYearsFrom1900To2000;
    local.tm_mon = static_cast<int>(date.month) - 1;
    local.tm_mday = static_cast<int>(date.day);
    local.tm_hour = static_cast<int>(date.hour);
    local.tm_min = static_cast<int>(date.minute);
    local.tm_sec = static_cast<int>(date.second);
    local.tm_isdst = 0;
    return static_cast<uint32_t>(get_utc_time_of(local));
}

}  // namespace

CFrameRecord::CFrameRecord(const void* data,
                           unsigned int len,
                           const FrameAttributes& attrs,
                           DateForm date,
                           MakerKeys maker)
{
    // Packagers read the bytes; the one that writes gets a copy from its component.
    m_frame.frame_pointer = static_cast<unsigned char*>(const_cast<void*>(data));
    m_frame.frame_size = len;
    m_frame.frame_type = ConvertFrameType(Word(attrs, "frametype"));
    m_frame.frame_sub_type = ConvertFrameSubType(Word(attrs, "framesubtype"));
    m_frame.frame_encode = ConvertEncodeType(Word(attrs, "encodetype"));
    m_frame.frame_time = Word(attrs, "timestamp");
    const Date broken_down = DateOf(attrs);
    m_frame.frame_data = date == DateForm::kSeconds ? Seconds(broken_down) : Packed(broken_down);
    if (m_frame.frame_type == SG_FRAME_TYPE_VIDEO)
    {
        m_frame.width = Word(attrs, "width");
        m_frame.heigth = Word(attrs, "height");
        m_frame.frame_rate = Word(attrs, "rate");
        m_frame.deinter_lace = Word(attrs, "deinterlace");
    }
    if (m_frame.frame_type == SG_FRAME_TYPE_AUDIO)
    {
        m_frame.sample_rate = Word(attrs, "samplespersec");
        m_frame.bit_per_sample = Word(attrs, "bitspersample");
        m_frame.channels = Word(attrs, "channels");
        m_frame.bit_rate = Word(attrs, "bitrate");
    }
    SetSplit(attrs);
    m_frame.rotation_angle = Word(attrs, "rotationangle");
    if (maker == MakerKeys::kRead)
    {
        m_frame.company_type = static_cast<uint16_t>(Value(attrs, "tpcompanytype"));
        m_frame._3rdstream_header_length = static_cast<uint16_t>(Value(attrs, "tpstreamheaderlen"));
    }
}

void CFrameRecord::SetSplit(const FrameAttributes& attrs)
{
    const auto across = static_cast<int32_t>(Value(attrs, "n_slice"));
    const auto down = static_cast<int32_t>(Value(attrs, "m_slice"));
    if (across < 0 || down < 0 || int64_t{across} * down > kMostBlocks) return;

    SGSplitInfo& split = m_frame.split_info;
    split.block_n = across;
    split.block_m = down;
    if (across == 0 || down == 0) return;

    m_blocks.resize(static_cast<size_t>(across) * static_cast<size_t>(down));
    size_t number = 0;
    for (SGBlockInfo& block : m_blocks)
    {
        const std::string suffix = std::to_string(++number);
        block.top = static_cast<int16_t>(Value(attrs, "blockpos_top_" + suffix));
        block.left = block.top;  // Kept: there is no key for it
        block.right = static_cast<int16_t>(Value(attrs, "blockpos_right_" + suffix));
        block.bottom = static_cast<int16_t>(Value(attrs, "blockpos_bottom_" + suffix));
        block.offset = static_cast<int32_t>(Value(attrs, "blockdata_offset_" + suffix));
    }
    split.flag = 1;
    split.pblock = m_blocks.data();
}

}  // namespace Orbel::Wrapton

#include "golden/omf/Native.h"

#include <ctime>
#include <numeric>

namespace Golden
{

using namespace Orbel::Wrapton;
using Support::Hex;
using Support::Join;
using Support::Lsb16;
using Support::Lsb32;
using Support::Text;
using Support::U8;

namespace
{

constexpr std::size_t kHeader = 24;

SGFrameInfo Record(uint32_t type)
{
    SGFrameInfo record{};
    record.struct_size = sizeof(record);
    record.frame_type = type;
    record.frame_data = kDate;
    return record;
}

uint32_t ReadLsb(const Bytes& bytes, std::size_t at, std::size_t width)
{
    uint32_t value = 0;
    for (std::size_t i = 0; i < width; ++i)
    {
        value |= static_cast<uint32_t>(bytes.at(at + i)) << (8 * i);
    }
    return value;
}

}  // namespace

SGFrameInfo Picture(uint32_t subType, uint32_t encode)
{
    SGFrameInfo record = Record(SG_FRAME_TYPE_VIDEO);
    record.frame_sub_type = subType;
    record.frame_encode = encode;
    record.width = 640;
    record.heigth = 360;
    record.frame_rate = 25;
    return record;
}

SGFrameInfo Sound()
{
    SGFrameInfo record = Record(SG_FRAME_TYPE_AUDIO);
    record.frame_encode = SG_ENCODE_AUDIO_AAC;
    record.sample_rate = 8000;
    record.channels = 1;
    record.bit_per_sample = 16;
    return record;
}

SGFrameInfo Extension()
{
    return Record(SG_FRAME_TYPE_EXT);
}

uint32_t PackedDate(uint32_t seconds)
{
    const std::time_t time = seconds;
    std::tm local{};
    if (localtime_r(&time, &local) == nullptr)
    {
        ADD_FAILURE() << "no local time";
        return 0;
    }
    const auto field = [](int value) { return static_cast<uint32_t>(value); };
    return field(local.tm_year - 100) << 26 | field(local.tm_mon + 1) << 22 |
           field(local.tm_mday) << 17 | field(local.tm_hour) << 12 | field(local.tm_min) << 6 |
           field(local.tm_sec);
}

Bytes Frame(const Head& head, const Bytes& exHeaders, const Bytes& payload)
{
    const auto exLength = static_cast<uint32_t>(exHeaders.size());
    const uint32_t length = 24 + exLength + static_cast<uint32_t>(payload.size()) + 8;
    const Bytes header = Join({
        Text("OMFR"),        // tag
        U8(head.type),       // frame_type
        U8(head.subType),    // frame_sub_type
        U8(1),               // channel
        U8(0),               // frame_sub_num
        Lsb32(head.number),  // frame_num
        Lsb32(length),       // frame_length
        Lsb32(head.date),    // frame_date
        Lsb16(head.stamp),   // frame_time_stamp
        U8(exLength),        // frame_length_ex
    });
    const uint32_t sum = std::accumulate(header.begin(), header.end(), 0u);
    return Join({header,
                 U8(sum),  // check_sum
                 exHeaders,
                 payload,
                 Text("omfr"),     // Omf_Tailer.tag
                 Lsb32(length)});  // Omf_Tailer.file_size
}

Bytes PictureHeaders()
{
    return Hex(
        "80 02 50 2D "   // progressive, 640 / 8, 360 / 8
        "81 00 08 19");  // OMF_ENCODE_VIDEO_QV_H264, 25 fps
}

Bytes DataCheck(const Bytes& payload)
{
    uint32_t sum = 0;
    for (std::size_t i = 0; i < payload.size(); ++i)
    {
        sum += static_cast<uint32_t>(payload[i]) << (8 * (i % 4));
    }
    return Join({Hex("88"), Lsb32(sum), Hex("00 00 00")});
}

Native::Native() : m_recorder(SG_STREAM_TYPE_OMF, m_sink)
{
    EXPECT_EQ(m_recorder.Header(), SG_ERR_NOERR);
}

Bytes Native::Give(const SGFrameInfo& record, const Bytes& bytes)
{
    m_sink.ForgetBlocks();
    EXPECT_EQ(m_recorder.Input(record, bytes), SG_ERR_NOERR);
    EXPECT_EQ(m_sink.Blocks().size(), 1u);
    if (m_sink.Blocks().size() != 1) return {};

    const Support::Block& block = m_sink.Blocks()[0];
    EXPECT_EQ(block.structSize, 40u);
    EXPECT_EQ(block.origin, 1);
    EXPECT_EQ(block.narrow, 0u);
    EXPECT_EQ(block.position, 0);
    return block.data;
}

void Native::Refuse(const SGFrameInfo& record, const Bytes& bytes)
{
    m_sink.ForgetBlocks();
    EXPECT_EQ(m_recorder.Input(record, bytes), SG_ERR_PARAM_ERR);
    EXPECT_TRUE(m_sink.Blocks().empty());
}

Bytes ExHeadersOf(const Bytes& frame)
{
    return Support::Slice(frame, kHeader, frame.at(22));
}

uint32_t NumberOf(const Bytes& frame)
{
    return ReadLsb(frame, 8, 4);
}

uint32_t LengthOf(const Bytes& frame)
{
    return ReadLsb(frame, 12, 4);
}

uint32_t DateOf(const Bytes& frame)
{
    return ReadLsb(frame, 16, 4);
}

uint32_t StampOf(const Bytes& frame)
{
    return ReadLsb(frame, 20, 2);
}

}  // namespace Golden

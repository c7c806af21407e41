#include "golden/avi/LongRecording.h"

namespace Golden
{

using namespace Orbel::Wrapton;

LongRecording::LongRecording(uint32_t largest)
    : m_recorder(SG_STREAM_TYPE_AVI, m_sink), m_zeros(largest)
{
}

LongRecording& LongRecording::Header(SGHeaderInfo header)
{
    EXPECT_EQ(m_recorder.HeaderWith(&header), SG_ERR_NOERR);
    return *this;
}

LongRecording& LongRecording::NoHeader()
{
    EXPECT_EQ(m_recorder.HeaderWith(nullptr), SG_ERR_NOERR);
    return *this;
}

LongRecording& LongRecording::Video(uint32_t subType, uint32_t size)
{
    SGFrameInfo record = Support::RecordOf(IFrame(0));
    record.frame_sub_type = subType;
    EXPECT_EQ(Input(record, size), SG_ERR_NOERR);
    return *this;
}

LongRecording& LongRecording::Sound(uint32_t size)
{
    EXPECT_EQ(Input(Support::RecordOf(Golden::Sound(0)), size), SG_ERR_NOERR);
    return *this;
}

LongRecording& LongRecording::Tailer()
{
    EXPECT_EQ(m_recorder.Tailer(), SG_ERR_NOERR);
    return *this;
}

LongRecording& LongRecording::FillFirstRiff()
{
    // 4128 bytes of headers and 15 chunks of 64 MiB leave 67104736 bytes for the 16th.
    for (int chunk = 0; chunk < 15; ++chunk)
        Video(SG_FRAME_SUB_TYPE_I, (64u << 20) - 8);
    return Video(SG_FRAME_SUB_TYPE_I, 67104736 - 8);
}

int LongRecording::Input(SGFrameInfo record, uint32_t size)
{
    EXPECT_LE(size, m_zeros.size());
    record.frame_pointer = m_zeros.data();
    record.frame_size = size;
    return SG_InputFrame(m_recorder.Handle(), &record);
}

::testing::AssertionResult IsChunkBlock(const Block& block,
                                        uint64_t position,
                                        std::string_view code,
                                        uint32_t size)
{
    const auto length = static_cast<int32_t>(8 + size + size % 2);
    if (block.position != static_cast<int64_t>(position) ||
        block.narrow != static_cast<uint32_t>(position) || block.size != length)
    {
        return ::testing::AssertionFailure()
               << block.size << " bytes at " << block.position << " where " << length << " at "
               << position << " are due";
    }
    return Support::Same(Support::Slice(block.data, 0, 8),
                         Support::Join({Support::Text(code), Support::Lsb32(size)}));
}

}  // namespace Golden

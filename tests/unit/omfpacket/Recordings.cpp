#include "unit/omfpacket/Recordings.h"

#include <algorithm>
#include <memory>

namespace Orbel::Wrapton
{

using Support::Join;
using Support::Payload;
using Support::Text;

Recording::Recording() : m_packager(SG_STREAM_TYPE_OMF, nullptr)
{
    m_packager.SetDataCallBack(&Recording::Append, this);
    m_packager.CreateHeader(nullptr, 0);
}

void Recording::Append(SGOutputData* block, void* self)
{
    Bytes& image = static_cast<Recording*>(self)->m_image;
    image.insert(image.end(), block->data_pointer, block->data_pointer + block->data_size);
}

Recording& Recording::Add(SGFrameInfo record, const Bytes& payload)
{
    Bytes bytes = payload;
    record.struct_size = sizeof(record);
    record.frame_pointer = bytes.data();
    record.frame_size = static_cast<uint32_t>(bytes.size());
    const std::size_t offset = m_image.size();
    EXPECT_EQ(m_packager.InputData(&record, 0), SG_ERR_NOERR);
    m_frames.push_back({.offset = offset,
                        .length = static_cast<uint32_t>(m_image.size() - offset),
                        .number = m_image.at(offset + 8),
                        .payload = payload});
    return *this;
}

Recording& Recording::AddPicture(uint32_t subType, const Bytes& payload, uint32_t time)
{
    SGFrameInfo record{};
    record.frame_type = SG_FRAME_TYPE_VIDEO;
    record.frame_sub_type = subType;
    record.frame_encode = SG_ENCODE_VIDEO_HI_H264;
    record.width = 640;
    record.heigth = 360;
    record.frame_rate = 25;
    record.frame_time = time;
    return Add(record, payload);
}

Recording& Recording::AddSound(const Bytes& payload, uint32_t time)
{
    SGFrameInfo record{};
    record.frame_type = SG_FRAME_TYPE_AUDIO;
    record.frame_encode = SG_ENCODE_AUDIO_AAC;
    record.channels = 2;
    record.sample_rate = 44100;
    record.frame_time = time;
    return Add(record, payload);
}

Recording& Recording::AddGarbage(const Bytes& bytes)
{
    Support::Append(m_image, bytes);
    return *this;
}

MixedRecording::MixedRecording(std::size_t count)
{
    for (uint32_t i = 0; i < count; ++i)
    {
        Bytes payload = Payload(1 + i * 37 % 500, i);
        // What a search could take for a frame.
        Support::Append(payload, Text(i % 3 == 0 ? "OMFR" : i % 3 == 1 ? "omfr" : "OMF"));
        if (i % 2 == 0)
        {
            AddPicture(i % 8 == 0 ? SG_FRAME_SUB_TYPE_I : SG_FRAME_SUB_TYPE_P, payload);
        }
        else
        {
            AddSound(payload);
        }
    }
}

Bytes MakeFrame(unsigned char type, uint32_t length, unsigned char exLen, const Bytes& behind)
{
    Bytes header = Join({Text("OMFR"),
                         {type, 0, 1, 0},
                         Support::Lsb32(1),
                         Support::Lsb32(length),
                         Support::Lsb32(0),
                         Support::Lsb16(0),
                         {exLen}});
    uint32_t sum = 0;
    for (const unsigned char byte : header)
    {
        sum += byte;
    }
    return Join({header, Support::U8(sum), behind});
}

Bytes Tailer(uint32_t length)
{
    return Join({Text("omfr"), Support::Lsb32(length)});
}

Readout ReadAll(COmfInput& input, COmfReader::Depth depth)
{
    COmfReader reader(input, depth);
    Readout readout;
    uint64_t at = 0;
    uint64_t skipped = 0;
    while (const auto frame = reader.Next())
    {
        EXPECT_EQ(frame->offset, at + frame->skipped);
        at = frame->offset + frame->length;
        skipped += frame->skipped;
        EXPECT_EQ(reader.Position(), at);
        EXPECT_EQ(reader.Skipped(), skipped);
        readout.frames.push_back({*frame, Bytes(frame->payload.begin(), frame->payload.end())});
    }
    readout.skipped = reader.Skipped();
    EXPECT_EQ(reader.Position(), input.Size());
    EXPECT_EQ(readout.skipped - skipped, input.Size() - at) << "bytes behind the last frame";
    EXPECT_FALSE(reader.Next()) << "nothing follows the end";
    EXPECT_EQ(reader.Skipped(), readout.skipped);
    return readout;
}

Readout ReadAll(const Bytes& image, COmfReader::Depth depth)
{
    const std::unique_ptr<unsigned char[]> exact(new unsigned char[image.size()]);
    std::copy(image.begin(), image.end(), exact.get());
    COmfMemory input({exact.get(), image.size()});
    return ReadAll(input, depth);
}

::testing::AssertionResult IsSame(const Read& read, const Recorded& recorded)
{
    if (!read.frame.intact) return ::testing::AssertionFailure() << "not intact";
    if (read.frame.offset != recorded.offset)
    {
        return ::testing::AssertionFailure()
               << "at " << read.frame.offset << " instead of " << recorded.offset;
    }
    if (read.frame.length != recorded.length || read.frame.number != recorded.number)
    {
        return ::testing::AssertionFailure()
               << "length " << read.frame.length << ", number " << read.frame.number;
    }
    return Support::Same(read.payload, recorded.payload);
}

}  // namespace Orbel::Wrapton

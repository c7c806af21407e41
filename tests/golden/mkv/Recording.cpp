#include "golden/mkv/Recording.h"

#include <algorithm>
#include <memory>

namespace Golden
{

using namespace Orbel::Wrapton;
using Support::Frame;
using Support::Payload;

Frame IFrame(std::size_t size, uint32_t seed)
{
    return Support::Mpeg4I(Payload(size, seed));
}

Frame PFrame(std::size_t size, uint32_t seed)
{
    return Support::Mpeg4P(Payload(size, seed));
}

Frame BFrame(std::size_t size, uint32_t seed)
{
    return PFrame(size, seed).As(SG_FRAME_SUB_TYPE_B);
}

VideoEntry PlainEntry()
{
    return {.codecId = AspId(), .defaultDuration = 40000000};
}

int InputInPlace(void* handle, Frame& frame)
{
    const std::size_t size = frame.bytes.size();
    const std::unique_ptr<unsigned char[]> bytes(new unsigned char[size]);
    std::copy(frame.bytes.begin(), frame.bytes.end(), bytes.get());
    SGFrameInfo record = Support::RecordOf(frame);
    record.frame_pointer = bytes.get();
    const int result = SG_InputFrame(handle, &record);
    frame.bytes.assign(bytes.get(), bytes.get() + size);
    return result;
}

SGCreateParam Counter::Create()
{
    SGCreateParam create{};
    create.user = this;
    create.sg_datacb = &Callback;
    return create;
}

void Counter::Callback(SGOutputData* block, void* user)
{
    auto& self = *static_cast<Counter*>(user);
    const auto position = static_cast<uint64_t>(block->offset_pos64);
    const auto size = static_cast<uint64_t>(block->data_size);
    ++self.blocks;
    self.lowest = std::min(self.lowest, position);
    self.end = std::max(self.end, position + size);
    self.previous.swap(self.last);
    self.last.assign(block->data_pointer, block->data_pointer + std::min<uint64_t>(size, 64));
    if (position == kSeekHeadAt + 5) self.seeks = self.last;
}

Recording& Recording::Header()
{
    EXPECT_EQ(m_recorder.Header(), SG_ERR_NOERR);
    return *this;
}

Recording& Recording::Input(const Frame& frame, int times)
{
    for (int time = 0; time < times; ++time)
    {
        Frame copy = frame;
        EXPECT_EQ(InputInPlace(m_recorder.Handle(), copy), SG_ERR_NOERR);
    }
    return *this;
}

Recording& Recording::Tailer()
{
    EXPECT_EQ(m_recorder.Tailer(), SG_ERR_NOERR);
    return *this;
}

Bytes Recording::Clusters() const
{
    return Support::Slice(File(), kFirstCluster, File().size() - kFirstCluster);
}

Bytes Recording::Entries() const
{
    const uint64_t size = Support::ReadMsb64(File(), kTracksAt + 4) & 0xFFFFFFFFFFFFFF;
    return Support::Slice(File(), kEntriesAt, size);
}

}  // namespace Golden

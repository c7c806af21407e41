#include "support/Recorder.h"

#include <algorithm>
#include <cstring>
#include <memory>

namespace Support
{

using namespace Orbel::Wrapton;

SGCreateParam CreateFor(Sink& sink)
{
    SGCreateParam create{};
    create.struct_size = sizeof(create);
    create.user = &sink;
    create.sg_datacb = &Sink::Callback;
    return create;
}

Recorder::Recorder(uint32_t type, SGCreateParam create) : m_handle(SG_CreateHandle(type, &create))
{
    EXPECT_NE(m_handle, nullptr);
}

Recorder::Recorder(uint32_t type, Sink& sink) : Recorder(type, CreateFor(sink)) {}

Recorder::~Recorder()
{
    if (m_handle != nullptr)
    {
        SG_DestroyHandle(m_handle);
    }
}

int Recorder::Header(uint32_t reserve)
{
    SGHeaderInfo header{};
    header.pre_header_len = reserve;
    header.struct_size = sizeof(header);
    return HeaderWith(&header);
}

int Recorder::HeaderWith(SGHeaderInfo* header)
{
    return SG_CreateHeader(m_handle, header);
}

int Recorder::Input(const Frame& frame)
{
    return Input(RecordOf(frame), frame.bytes);
}

int Recorder::Input(SGFrameInfo record, const Bytes& bytes)
{
    const std::unique_ptr<unsigned char[]> exact(new unsigned char[bytes.size()]);
    std::copy(bytes.begin(), bytes.end(), exact.get());
    record.frame_pointer = exact.get();
    record.frame_size = static_cast<uint32_t>(bytes.size());
    const SGFrameInfo before = record;

    const int result = SG_InputFrame(m_handle, &record);

    EXPECT_TRUE(std::equal(bytes.begin(), bytes.end(), exact.get()))
        << "the caller's frame was written to";
    EXPECT_EQ(std::memcmp(&before, &record, sizeof(record)), 0)
        << "the caller's record was written to";
    return result;
}

int Recorder::Tailer()
{
    return SG_CreateTailer(m_handle, nullptr);
}

int Recorder::Backup(SGOutputData& backup)
{
    return SG_GetBackup(m_handle, &backup);
}

int Recorder::Destroy()
{
    void* const handle = m_handle;
    m_handle = nullptr;
    return SG_DestroyHandle(handle);
}

}  // namespace Support

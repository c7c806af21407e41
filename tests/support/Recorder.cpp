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
    const std::size_t size = frame.bytes.size();
    const std::unique_ptr<unsigned char[]> bytes(new unsigned char[size]);
    std::copy(frame.bytes.begin(), frame.bytes.end(), bytes.get());
    SGFrameInfo record = RecordOf(frame);
    record.frame_pointer = bytes.get();
    const SGFrameInfo before = record;

    const int result = SG_InputFrame(m_handle, &record);

    EXPECT_TRUE(std::equal(frame.bytes.begin(), frame.bytes.end(), bytes.get()))
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

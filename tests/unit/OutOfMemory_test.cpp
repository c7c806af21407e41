// What becomes of every object when there is no memory for it.
#include <memory>

#include "Package.h"
#include "Wrapton.h"
#include "support/FailingNew.h"
#include "support/Frames.h"
#include "support/Sinks.h"
#include "tool/AutoLock.h"
#include "tool/Buffer.h"
#include "tool/DynamicBuffer.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::FailingNew;
using Support::Payload;

Bytes Content(CDynamicBuffer& buffer)
{
    return {buffer.GetPointer(), buffer.GetPointer() + buffer.GetDataLen()};
}

int Append(CDynamicBuffer& buffer, const Bytes& bytes)
{
    return buffer.AppendBuffer(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

TEST(DynamicBufferWithoutMemory, InitLeavesThePointerNull)
{
    CDynamicBuffer buffer;
    ASSERT_EQ(buffer.Init(10), SG_ERR_NOERR);
    {
        const FailingNew fail(1);
        EXPECT_EQ(buffer.Init(20), SG_ERR_MEMORY_OUT);
    }
    EXPECT_EQ(buffer.GetPointer(), nullptr);
    EXPECT_EQ(buffer.GetDataLen(), 0);
    EXPECT_EQ(buffer.MaxSize(), 20);
}

TEST(DynamicBufferWithoutMemory, HasNoRoomWithoutStorageWhateverItsCapacitySays)
{
    CDynamicBuffer buffer;
    {
        const FailingNew fail(1);
        EXPECT_EQ(buffer.Init(20), SG_ERR_MEMORY_OUT);
    }
    const unsigned char byte = 1;
    EXPECT_EQ(buffer.StaticAppendBuffer(&byte, 1), SG_ERR_MEMORY_OUT);
    // The next growth brings storage back.
    EXPECT_EQ(Append(buffer, {1, 2}), SG_ERR_NOERR);
    EXPECT_EQ(buffer.MaxSize(), 40);
    EXPECT_EQ(Content(buffer), (Bytes{1, 2}));
}

TEST(DynamicBufferWithoutMemory, FirstAppendFails)
{
    CDynamicBuffer buffer;
    {
        const FailingNew fail(1);
        EXPECT_EQ(buffer.AppendBuffer(reinterpret_cast<const unsigned char*>("x"), 1),
                  SG_ERR_MEMORY_OUT);
    }
    EXPECT_EQ(buffer.GetPointer(), nullptr);
    EXPECT_EQ(Append(buffer, {1}), SG_ERR_NOERR);
    EXPECT_EQ(Content(buffer), (Bytes{1}));
}

/// How many allocations one growth of a buffer with content takes.
std::size_t AllocationsOfReAlloc()
{
    CDynamicBuffer buffer;
    Append(buffer, Payload(100));
    const FailingNew count(0);
    buffer.ReAlloc();
    return FailingNew::Asked();
}

TEST(DynamicBufferWithoutMemory, ReAllocLosesTheStorageWhenTheNewOneFails)
{
    CDynamicBuffer buffer;
    ASSERT_EQ(Append(buffer, Payload(100)), SG_ERR_NOERR);
    const std::size_t last = AllocationsOfReAlloc();
    {
        const FailingNew fail(last);
        EXPECT_EQ(buffer.ReAlloc(), SG_ERR_MEMORY_OUT);
    }
    EXPECT_EQ(buffer.GetPointer(), nullptr);
    EXPECT_EQ(buffer.GetDataLen(), 0);
    const unsigned char byte = 1;
    EXPECT_EQ(buffer.StaticAppendBuffer(&byte, 1), SG_ERR_MEMORY_OUT);
    EXPECT_EQ(Append(buffer, {9}), SG_ERR_NOERR);
    EXPECT_EQ(Content(buffer), (Bytes{9}));
}

TEST(DynamicBufferWithoutMemory, AppendPassesTheFailureOfItsGrowthOn)
{
    CDynamicBuffer buffer;
    ASSERT_EQ(Append(buffer, Payload(16384)), SG_ERR_NOERR);
    const unsigned char byte = 1;
    {
        const FailingNew fail(1, true);
        EXPECT_EQ(buffer.AppendBuffer(&byte, 1), SG_ERR_MEMORY_OUT);
    }
    EXPECT_EQ(Append(buffer, {1}), SG_ERR_NOERR);
}

TEST(DynamicBufferWithoutMemory, ReserveChangesNothing)
{
    CDynamicBuffer buffer;
    ASSERT_EQ(Append(buffer, Payload(100)), SG_ERR_NOERR);
    {
        const FailingNew fail(1, true);
        EXPECT_EQ(buffer.Reserve(20000), SG_ERR_MEMORY_OUT);
    }
    EXPECT_EQ(buffer.MaxSize(), 16384);
    EXPECT_EQ(Content(buffer), Payload(100));
    EXPECT_EQ(buffer.Reserve(20000), SG_ERR_NOERR);
    EXPECT_EQ(Content(buffer), Payload(100));
}

TEST(AutoBufferWithoutMemory, HasUsedItsOneChanceUp)
{
    CAutoBuffer buffer;
    {
        const FailingNew fail(1);
        EXPECT_EQ(buffer.Init(10), -1);
    }
    EXPECT_TRUE(buffer.HadInit());
    EXPECT_EQ(buffer.GetPointer(), nullptr);
    EXPECT_EQ(buffer.GetBufferLen(), 0u);
    EXPECT_EQ(buffer.Init(10), -1);
}

TEST(MutexWithoutMemory, LocksNothing)
{
    std::unique_ptr<CSGMutex> mutex;
    {
        // The first allocation is the object, the second the system's mutex.
        const FailingNew fail(2);
        mutex = std::make_unique<CSGMutex>();
    }
    mutex->Unlock();  // without a lock: harmless, there is nothing to unlock
    mutex->Lock();
    CSGAutoMutexLock lock(*mutex);
    lock.Unlock();
}

TEST(PacketBufferWithoutMemory, IsUnchanged)
{
    PacketBuffer packet(2);
    packet.Data()[1] = 9;
    {
        const FailingNew fail(1, true);
        EXPECT_FALSE(packet.Resize(100000));
        const PacketBuffer other(1);
        EXPECT_FALSE(other.IsValid());
    }
    EXPECT_EQ(packet.Size(), 2u);
    EXPECT_EQ(packet.Data()[1], 9);
    EXPECT_TRUE(packet.Resize(3));
    EXPECT_EQ(packet.Data()[1], 9);
}

TEST(DefaultAllocatorWithoutMemory, GivesNull)
{
    const FailingNew fail(1);
    EXPECT_EQ(SGMalloc(10), nullptr);
}

TEST(FlatInterfaceWithoutMemory, GivesANullHandle)
{
    for (const unsigned int type : {unsigned{SG_STREAM_TYPE_MP4}, unsigned{SG_STREAM_TYPE_WAV}})
    {
        const FailingNew fail(1, true);
        EXPECT_EQ(SG_CreateHandle(type, nullptr), nullptr);
    }
}

TEST(FlatInterfaceWithoutMemory, GivesTheMemoryCodeWhenAStepFindsNone)
{
    void* const handle = SG_CreateHandle(SG_STREAM_TYPE_MP4, nullptr);
    ASSERT_NE(handle, nullptr);
    std::size_t needed = 0;
    {
        const FailingNew count(0);
        ASSERT_EQ(SG_CreateHeader(handle, nullptr), SG_ERR_NOERR);
        needed = FailingNew::Asked();
    }
    SG_DestroyHandle(handle);
    ASSERT_GT(needed, 0u);

    for (std::size_t number = 1; number <= needed; ++number)
    {
        void* const other = SG_CreateHandle(SG_STREAM_TYPE_MP4, nullptr);
        ASSERT_NE(other, nullptr);
        int result = 0;
        {
            const FailingNew fail(number);
            result = SG_CreateHeader(other, nullptr);
        }
        EXPECT_EQ(result, SG_ERR_MEMORY_OUT) << "allocation " << number;
        EXPECT_EQ(SG_CreateHeader(other, nullptr), SG_ERR_NOERR) << "allocation " << number;
        SG_DestroyHandle(other);
    }
}

SGCreateParam CreateFor(Support::Sink& sink)
{
    SGCreateParam create{};
    create.user = &sink;
    create.sg_datacb = &Support::Sink::Callback;
    return create;
}

TEST(WavWithoutMemory, RefusesTheHeaderAndCanBeTriedAgain)
{
    Support::SeekingSink sink;
    SGCreateParam create = CreateFor(sink);
    void* const handle = SG_CreateHandle(SG_STREAM_TYPE_WAV, &create);
    ASSERT_NE(handle, nullptr);
    {
        const FailingNew fail(1, true);
        EXPECT_EQ(SG_CreateHeader(handle, nullptr), SG_ERR_PARAM_ERR);
    }
    EXPECT_TRUE(sink.Blocks().empty());

    // No header was written, so frames and tailer are refused.
    Support::Frame frame = Support::Audio(SG_ENCODE_AUDIO_PCM16, Payload(4), 8000, 1, 16);
    SGFrameInfo record = Support::RecordOf(frame);
    record.frame_pointer = frame.bytes.data();
    EXPECT_EQ(SG_InputFrame(handle, &record), SG_ERR_PARAM_ERR);
    EXPECT_EQ(SG_CreateTailer(handle, nullptr), SG_ERR_PARAM_ERR);

    EXPECT_EQ(SG_CreateHeader(handle, nullptr), SG_ERR_NOERR);
    ASSERT_EQ(sink.Blocks().size(), 1u);
    EXPECT_EQ(Support::Slice(sink.Image(), 4, 4), Support::Lsb32(0xFFFFFFF8));
    EXPECT_EQ(SG_DestroyHandle(handle), SG_ERR_NOERR);
}

TEST(WavWithoutMemory, NeedsNoneBehindItsHeader)
{
    void* const handle = SG_CreateHandle(SG_STREAM_TYPE_WAV, nullptr);
    ASSERT_NE(handle, nullptr);
    ASSERT_EQ(SG_CreateHeader(handle, nullptr), SG_ERR_NOERR);
    Support::Frame frame = Support::Audio(SG_ENCODE_AUDIO_PCM16, Payload(4), 8000, 1, 16);
    SGFrameInfo record = Support::RecordOf(frame);
    record.frame_pointer = frame.bytes.data();
    std::size_t asked = 0;
    {
        const FailingNew fail(1, true);
        EXPECT_EQ(SG_InputFrame(handle, &record), SG_ERR_NOERR);
        EXPECT_EQ(SG_InputFrame(handle, &record), SG_ERR_NOERR);
        EXPECT_EQ(SG_CreateTailer(handle, nullptr), SG_ERR_NOERR);
        asked = FailingNew::Asked();
    }
    EXPECT_EQ(asked, 0u);
    SG_DestroyHandle(handle);
}

}  // namespace
}  // namespace Orbel::Wrapton

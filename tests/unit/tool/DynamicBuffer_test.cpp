#include "tool/DynamicBuffer.h"

#include "Wrapton.h"
#include "support/Bytes.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::Join;
using Support::Payload;
using Support::Same;

Bytes Content(CDynamicBuffer& buffer)
{
    return {buffer.GetPointer(), buffer.GetPointer() + buffer.GetDataLen()};
}

int Append(CDynamicBuffer& buffer, const Bytes& bytes)
{
    return buffer.AppendBuffer(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

int StaticAppend(CDynamicBuffer& buffer, const Bytes& bytes)
{
    return buffer.StaticAppendBuffer(bytes.data(), static_cast<unsigned int>(bytes.size()));
}

TEST(CDynamicBuffer, HasTheConstantsOfItsRule)
{
    EXPECT_EQ(CDynamicBuffer::BUFFER_START_BASE, 16384);
    EXPECT_EQ(CDynamicBuffer::REALLOC_STEP, 65536);
    EXPECT_EQ(CDynamicBuffer::DOUBLE_SIZE_THRELOD, 256000);
}

TEST(CDynamicBuffer, StartsWithoutStorage)
{
    CDynamicBuffer buffer;
    EXPECT_EQ(buffer.GetPointer(), nullptr);
    EXPECT_EQ(buffer.MaxSize(), 0);
    EXPECT_EQ(buffer.GetDataLen(), 0);
}

TEST(CDynamicBuffer, InitGivesZeroedStorageAndForgetsTheContent)
{
    CDynamicBuffer buffer;
    ASSERT_EQ(buffer.Init(300), SG_ERR_NOERR);
    EXPECT_EQ(buffer.MaxSize(), 300);
    EXPECT_EQ(buffer.GetDataLen(), 0);
    EXPECT_EQ(Bytes(buffer.GetPointer(), buffer.GetPointer() + 300), Bytes(300, 0));

    ASSERT_EQ(Append(buffer, Payload(300)), SG_ERR_NOERR);
    ASSERT_EQ(buffer.Init(299), SG_ERR_NOERR);
    EXPECT_EQ(buffer.MaxSize(), 299);
    EXPECT_EQ(buffer.GetDataLen(), 0);
    EXPECT_EQ(Bytes(buffer.GetPointer(), buffer.GetPointer() + 299), Bytes(299, 0));
}

TEST(CDynamicBuffer, InitWithSizeZeroHasStorageButNoRoom)
{
    CDynamicBuffer buffer;
    EXPECT_EQ(buffer.Init(0), SG_ERR_NOERR);
    EXPECT_EQ(buffer.MaxSize(), 0);
    EXPECT_EQ(StaticAppend(buffer, {1}), SG_ERR_MEMORY_OUT);
    EXPECT_EQ(Append(buffer, {1}), SG_ERR_NOERR);
    EXPECT_EQ(buffer.MaxSize(), 16384);
}

TEST(CDynamicBuffer, InitRefusesASizeBeyondItsCounters)
{
    CDynamicBuffer buffer;
    ASSERT_EQ(Append(buffer, {1}), SG_ERR_NOERR);
    EXPECT_EQ(buffer.Init(0x80000000u), SG_ERR_MEMORY_OUT);
    EXPECT_EQ(buffer.GetPointer(), nullptr);
    EXPECT_EQ(buffer.GetDataLen(), 0);
    EXPECT_EQ(buffer.Init(0xFFFFFFFFu), SG_ERR_MEMORY_OUT);
    EXPECT_EQ(Append(buffer, {1}), SG_ERR_NOERR);
}

TEST(CDynamicBuffer, AppendGrowsAsOftenAsNeeded)
{
    CDynamicBuffer buffer;
    const Bytes bytes = Payload(20000);
    ASSERT_EQ(Append(buffer, bytes), SG_ERR_NOERR);
    EXPECT_EQ(buffer.MaxSize(), 32768);
    EXPECT_EQ(buffer.GetDataLen(), 20000);
    EXPECT_TRUE(Same(Content(buffer), bytes));

    EXPECT_EQ(buffer.Clear(), SG_ERR_NOERR);
    EXPECT_EQ(buffer.GetDataLen(), 0);
    EXPECT_EQ(buffer.MaxSize(), 32768);
    EXPECT_NE(buffer.GetPointer(), nullptr);
}

TEST(CDynamicBuffer, AppendKeepsWhatStandsAhead)
{
    CDynamicBuffer buffer;
    Bytes all;
    for (uint32_t i = 0; i < 40; ++i)
    {
        const Bytes piece = Payload(10000 + i, i);
        ASSERT_EQ(Append(buffer, piece), SG_ERR_NOERR);
        Support::Append(all, piece);
    }
    EXPECT_TRUE(Same(Content(buffer), all));
    EXPECT_EQ(buffer.MaxSize(), 458752);  // 262144 and three steps
}

TEST(CDynamicBuffer, AppendFillsTheCapacityToItsLastByte)
{
    CDynamicBuffer buffer;
    ASSERT_EQ(Append(buffer, Payload(16383)), SG_ERR_NOERR);
    EXPECT_EQ(buffer.MaxSize(), 16384);
    ASSERT_EQ(Append(buffer, Payload(1)), SG_ERR_NOERR);
    EXPECT_EQ(buffer.MaxSize(), 16384);
    ASSERT_EQ(Append(buffer, Payload(1)), SG_ERR_NOERR);
    EXPECT_EQ(buffer.MaxSize(), 32768);
}

TEST(CDynamicBuffer, AppendAnswersNullBeforeItLooksAtTheLength)
{
    CDynamicBuffer buffer;
    EXPECT_EQ(buffer.AppendBuffer(nullptr, 0), SG_ERR_EMPTY_POINTER);
    EXPECT_EQ(buffer.AppendBuffer(nullptr, 5), SG_ERR_EMPTY_POINTER);
    const unsigned char byte = 1;
    EXPECT_EQ(buffer.AppendBuffer(&byte, 0), SG_ERR_NOERR);
    EXPECT_EQ(buffer.MaxSize(), 0);
    EXPECT_EQ(buffer.GetPointer(), nullptr);
}

TEST(CDynamicBuffer, StaticAppendNeverGrows)
{
    CDynamicBuffer buffer;
    EXPECT_EQ(buffer.StaticAppendBuffer(nullptr, 0), SG_ERR_EMPTY_POINTER);
    EXPECT_EQ(StaticAppend(buffer, {1}), SG_ERR_MEMORY_OUT);
    const unsigned char byte = 1;
    EXPECT_EQ(buffer.StaticAppendBuffer(&byte, 0), SG_ERR_MEMORY_OUT);  // no storage

    ASSERT_EQ(buffer.Init(4), SG_ERR_NOERR);
    EXPECT_EQ(StaticAppend(buffer, {1, 2, 3}), SG_ERR_NOERR);
    EXPECT_EQ(StaticAppend(buffer, {4, 5}), SG_ERR_MEMORY_OUT);
    EXPECT_EQ(Content(buffer), (Bytes{1, 2, 3}));
    EXPECT_EQ(StaticAppend(buffer, {4}), SG_ERR_NOERR);
    EXPECT_EQ(buffer.StaticAppendBuffer(&byte, 0), SG_ERR_NOERR);
    EXPECT_EQ(StaticAppend(buffer, {5}), SG_ERR_MEMORY_OUT);
    EXPECT_EQ(Content(buffer), (Bytes{1, 2, 3, 4}));
    EXPECT_EQ(buffer.MaxSize(), 4);
}

TEST(CDynamicBuffer, StaticAppendRefusesALengthThatWouldWrapTheSum)
{
    CDynamicBuffer buffer;
    ASSERT_EQ(buffer.Init(4), SG_ERR_NOERR);
    ASSERT_EQ(StaticAppend(buffer, {1, 2}), SG_ERR_NOERR);
    const unsigned char byte = 1;
    EXPECT_EQ(buffer.StaticAppendBuffer(&byte, 0xFFFFFFFFu), SG_ERR_MEMORY_OUT);
    EXPECT_EQ(buffer.StaticAppendBuffer(&byte, 0xFFFFFFFEu), SG_ERR_MEMORY_OUT);
    EXPECT_EQ(buffer.StaticAppendBuffer(&byte, 0x80000000u), SG_ERR_MEMORY_OUT);
    EXPECT_EQ(buffer.GetDataLen(), 2);
}

TEST(CDynamicBuffer, ReAllocDoublesUpToTheThresholdAndThenSteps)
{
    CDynamicBuffer buffer;
    for (const int capacity : {16384, 32768, 65536, 131072, 262144, 327680, 393216, 458752, 524288})
    {
        ASSERT_EQ(buffer.ReAlloc(), SG_ERR_NOERR);
        EXPECT_EQ(buffer.MaxSize(), capacity);
    }
}

TEST(CDynamicBuffer, FirstReAllocGivesZeroedStorage)
{
    CDynamicBuffer buffer;
    ASSERT_EQ(buffer.ReAlloc(), SG_ERR_NOERR);
    EXPECT_EQ(Bytes(buffer.GetPointer(), buffer.GetPointer() + 16384), Bytes(16384, 0));
}

TEST(CDynamicBuffer, ReAllocDecidesByTheOldCapacity)
{
    struct Growth
    {
        unsigned int from;
        int to;
    };
    for (const Growth growth : {Growth{1, 2},
                                Growth{255999, 511998},
                                Growth{256000, 512000},
                                Growth{256001, 321537},
                                Growth{256002, 321538}})
    {
        CDynamicBuffer buffer;
        ASSERT_EQ(buffer.Init(growth.from), SG_ERR_NOERR);
        ASSERT_EQ(buffer.ReAlloc(), SG_ERR_NOERR);
        EXPECT_EQ(buffer.MaxSize(), growth.to);
    }
}

TEST(CDynamicBuffer, ReAllocKeepsTheContent)
{
    CDynamicBuffer buffer;
    const Bytes bytes = Payload(16000);
    ASSERT_EQ(Append(buffer, bytes), SG_ERR_NOERR);
    ASSERT_EQ(buffer.ReAlloc(), SG_ERR_NOERR);
    EXPECT_EQ(buffer.MaxSize(), 32768);
    EXPECT_TRUE(Same(Content(buffer), bytes));
    // All of the new capacity is storage.
    ASSERT_EQ(StaticAppend(buffer, Payload(16768)), SG_ERR_NOERR);
    EXPECT_EQ(buffer.GetDataLen(), 32768);
}

TEST(CDynamicBuffer, IndexReachesEveryByteInUse)
{
    CDynamicBuffer buffer;
    ASSERT_EQ(Append(buffer, {7, 8, 9}), SG_ERR_NOERR);
    EXPECT_EQ(buffer[0], 7);
    EXPECT_EQ(buffer[2], 9);
    buffer[1] = 0x55;
    EXPECT_EQ(Content(buffer), (Bytes{7, 0x55, 9}));
}

TEST(CDynamicBuffer, ReserveGrowsByTheSameRuleAndKeepsTheContent)
{
    CDynamicBuffer buffer;
    EXPECT_EQ(buffer.Reserve(1), SG_ERR_NOERR);
    EXPECT_EQ(buffer.MaxSize(), 16384);
    ASSERT_EQ(Append(buffer, Payload(16000)), SG_ERR_NOERR);
    EXPECT_EQ(buffer.Reserve(384), SG_ERR_NOERR);
    EXPECT_EQ(buffer.MaxSize(), 16384);
    EXPECT_EQ(buffer.Reserve(385), SG_ERR_NOERR);
    EXPECT_EQ(buffer.MaxSize(), 32768);
    EXPECT_EQ(buffer.Reserve(300000), SG_ERR_NOERR);
    EXPECT_EQ(buffer.MaxSize(), 327680);
    EXPECT_TRUE(Same(Content(buffer), Payload(16000)));
    EXPECT_EQ(buffer.Reserve(0xFFFFFFFFu), SG_ERR_MEMORY_OUT);
    EXPECT_EQ(buffer.MaxSize(), 327680);
    EXPECT_TRUE(Same(Content(buffer), Payload(16000)));
}

TEST(CDynamicBuffer, CanBeReusedAfterClearWithoutGrowing)
{
    CDynamicBuffer buffer;
    ASSERT_EQ(Append(buffer, Payload(16384, 1)), SG_ERR_NOERR);
    const unsigned char* const storage = buffer.GetPointer();
    buffer.Clear();
    ASSERT_EQ(Append(buffer, Payload(16384, 2)), SG_ERR_NOERR);
    EXPECT_EQ(buffer.GetPointer(), storage);
    EXPECT_TRUE(Same(Content(buffer), Payload(16384, 2)));
}

}  // namespace
}  // namespace Orbel::Wrapton

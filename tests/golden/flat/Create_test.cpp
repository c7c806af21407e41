// SG_CreateHandle: which types there are, and what the create record does.
#include <set>

#include "support/Allocators.h"
#include "support/Frames.h"
#include "support/Recorder.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::AllocatorLog;
using Support::Bytes;
using Support::Payload;
using Support::RecordOf;
using Support::SeekingSink;

/// The types that have a packager by now. 3GP (7) and TS (10) never get one here.
const std::set<unsigned int> kBuilt = {
    SG_STREAM_TYPE_MP4,
    SG_STREAM_TYPE_ASF,
    SG_STREAM_TYPE_AVI,
    SG_STREAM_TYPE_MKV,
    SG_STREAM_TYPE_OMF,
    SG_STREAM_TYPE_FLV,
    SG_STREAM_TYPE_STREAM_ASF,
    SG_STREAM_TYPE_MOV,
    SG_STREAM_TYPE_STREAM_FLV,
    SG_STREAM_TYPE_RTP,
    SG_STREAM_TYPE_PS,
    SG_STREAM_TYPE_MP4_NOSEEK,
    SG_STREAM_TYPE_MP4_64,
    SG_STREAM_TYPE_MOV_64,
    SG_STREAM_TYPE_WAV,
    SG_STREAM_TYPE_QVPS,
    SG_STREAM_TYPE_GAYSPS,
};

TEST(CreateHandle, GivesAHandleForEveryTypeThatIsBuiltAndNullForAllOthers)
{
    for (unsigned int type = 0; type <= 20; ++type)
    {
        void* const handle = SG_CreateHandle(type, nullptr);
        EXPECT_EQ(handle != nullptr, kBuilt.count(type) != 0) << type;
        EXPECT_EQ(SG_DestroyHandle(handle), handle != nullptr ? 0 : 1) << type;
    }
}

TEST(CreateHandle, GivesNullForNumbersThatAreNoType)
{
    for (const unsigned int type : {7u, 10u, 19u, 20u, 100u, 256u, 0x80000000u, 0xFFFFFFFFu})
    {
        EXPECT_EQ(SG_CreateHandle(type, nullptr), nullptr) << type;
    }
}

TEST(CreateHandle, AsksNoMemoryForATypeThatItDoesNotHave)
{
    AllocatorLog log;
    SGCreateParam create{};
    create.sg_malloc = &AllocatorLog::Malloc;
    create.sg_free = &AllocatorLog::Free;
    for (const unsigned int type : {7u, 10u, 19u, 0xFFFFFFFFu})
    {
        EXPECT_EQ(SG_CreateHandle(type, &create), nullptr);
    }
    EXPECT_TRUE(log.Asked().empty());
}

/// Header, two frames that make output, tailer. WAV takes sound, the others pictures.
void Record(void* handle, unsigned int type)
{
    EXPECT_EQ(SG_CreateHeader(handle, nullptr), 0);
    Support::Frame frame =
        type == SG_STREAM_TYPE_WAV
            ? Support::Audio(SG_ENCODE_AUDIO_PCM16, Payload(40), 8000, 1, 16)
            : Support::H264I(Support::Join({Support::Nal(Support::Hex("67 42 00 1F")),
                                            Support::Nal(Support::Hex("68 CE")),
                                            Support::Nal(Support::Hex("65 88 84"))}));
    SGFrameInfo record = RecordOf(frame);
    record.frame_pointer = frame.bytes.data();
    EXPECT_EQ(SG_InputFrame(handle, &record), 0);
    EXPECT_EQ(SG_InputFrame(handle, &record), 0);
    EXPECT_EQ(SG_CreateTailer(handle, nullptr), 0);
}

class CreateRecord : public ::testing::TestWithParam<unsigned int>
{
};
INSTANTIATE_TEST_SUITE_P(Types, CreateRecord, ::testing::ValuesIn(kBuilt));

TEST_P(CreateRecord, MayBeNull)
{
    void* const handle = SG_CreateHandle(GetParam(), nullptr);
    ASSERT_NE(handle, nullptr);
    Record(handle, GetParam());  // the output is discarded
    EXPECT_EQ(SG_DestroyHandle(handle), 0);
}

TEST_P(CreateRecord, MayBeEmpty)
{
    SGCreateParam create{};
    void* const handle = SG_CreateHandle(GetParam(), &create);
    ASSERT_NE(handle, nullptr);
    Record(handle, GetParam());
    EXPECT_EQ(SG_DestroyHandle(handle), 0);
}

TEST_P(CreateRecord, IsNotCheckedForItsSizeAndNotNeededAfterwards)
{
    for (const uint32_t size : {0u, 39u, 40u, 41u, 0xFFFFFFFFu})
    {
        SeekingSink sink;
        void* handle = nullptr;
        {
            SGCreateParam create = Support::CreateFor(sink);
            create.struct_size = size;
            handle = SG_CreateHandle(GetParam(), &create);
            create = {};
        }
        ASSERT_NE(handle, nullptr);
        Record(handle, GetParam());
        EXPECT_FALSE(sink.Blocks().empty());
        SG_DestroyHandle(handle);
    }
}

int s_blocks = 0;
void* s_user = nullptr;

void Count(SGOutputData* /*block*/, void* user)
{
    ++s_blocks;
    s_user = user;
}

TEST_P(CreateRecord, HandsTheUserValueBackWithEveryBlock)
{
    int user = 0;
    SGCreateParam create{};
    create.sg_datacb = Count;
    create.user = &user;
    void* const handle = SG_CreateHandle(GetParam(), &create);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(s_blocks, 0);  // nothing is emitted yet
    Record(handle, GetParam());
    EXPECT_GE(s_blocks, 2);
    EXPECT_EQ(s_user, &user);
    SG_DestroyHandle(handle);
    s_blocks = 0;
    s_user = nullptr;
}

TEST_P(CreateRecord, MayHoldACallbackWithoutAUserValue)
{
    SGCreateParam create{};
    create.sg_datacb = Count;
    s_user = &create;
    void* const handle = SG_CreateHandle(GetParam(), &create);
    ASSERT_NE(handle, nullptr);
    Record(handle, GetParam());
    EXPECT_GE(s_blocks, 2);
    EXPECT_EQ(s_user, nullptr);
    SG_DestroyHandle(handle);
    s_blocks = 0;
}

TEST_P(CreateRecord, MayHoldAUserValueWithoutACallback)
{
    int user = 0;
    SGCreateParam create{};
    create.user = &user;
    void* const handle = SG_CreateHandle(GetParam(), &create);
    ASSERT_NE(handle, nullptr);
    Record(handle, GetParam());
    SG_DestroyHandle(handle);
    EXPECT_EQ(s_blocks, 0);
}

TEST_P(CreateRecord, LetsOnePairOfFunctionsGiveAllWorkingBuffersAndTakeThemBack)
{
    AllocatorLog log;
    SGCreateParam create{};
    create.sg_malloc = &AllocatorLog::Malloc;
    create.sg_free = &AllocatorLog::Free;
    void* const handle = SG_CreateHandle(GetParam(), &create);
    ASSERT_NE(handle, nullptr);
    Record(handle, GetParam());
    SG_DestroyHandle(handle);
    EXPECT_EQ(log.LiveCount(), 0u);
    EXPECT_EQ(log.Asked().size(), log.Released().size());
}

/// The others compose their blocks in buffers of their own, which grow with the frames.
bool TakesWorkBuffer(unsigned int type)
{
    return type != SG_STREAM_TYPE_AVI && type != SG_STREAM_TYPE_OMF && type != SG_STREAM_TYPE_WAV;
}

int s_allocated = 0;
int s_released = 0;

/// Fits the default release.
void* ArrayMalloc(int size)
{
    ++s_allocated;
    return new unsigned char[static_cast<std::size_t>(size)];
}

/// Fits the default allocator.
void ArrayFree(void* memory, int /*size*/)
{
    ++s_released;
    delete[] static_cast<unsigned char*>(memory);
}

TEST_P(CreateRecord, MayReplaceTheAllocatorAlone)
{
    SGCreateParam create{};
    create.sg_malloc = ArrayMalloc;
    s_allocated = s_released = 0;
    void* const handle = SG_CreateHandle(GetParam(), &create);
    ASSERT_NE(handle, nullptr);
    Record(handle, GetParam());
    SG_DestroyHandle(handle);
    EXPECT_EQ(s_allocated > 0, TakesWorkBuffer(GetParam()));
    EXPECT_EQ(s_released, 0);
}

TEST_P(CreateRecord, MayReplaceTheReleaseAlone)
{
    SGCreateParam create{};
    create.sg_free = ArrayFree;
    s_allocated = s_released = 0;
    void* const handle = SG_CreateHandle(GetParam(), &create);
    ASSERT_NE(handle, nullptr);
    Record(handle, GetParam());
    SG_DestroyHandle(handle);
    EXPECT_EQ(s_allocated, 0);
    EXPECT_EQ(s_released > 0, TakesWorkBuffer(GetParam()));
}

TEST(CreateHandle, MakesHandlesThatAreIndependentOfEachOther)
{
    SeekingSink first;
    SeekingSink second;
    Support::Recorder one(SG_STREAM_TYPE_WAV, first);
    Support::Recorder two(SG_STREAM_TYPE_WAV, second);
    one.Header();
    EXPECT_TRUE(second.Blocks().empty());
    EXPECT_EQ(two.Tailer(), 3);
    two.Header();
    one.Destroy();
    EXPECT_EQ(two.Tailer(), 0);
    EXPECT_EQ(first.Blocks().size(), 1u);
    EXPECT_EQ(second.Blocks().size(), 2u);
}

}  // namespace
}  // namespace Golden

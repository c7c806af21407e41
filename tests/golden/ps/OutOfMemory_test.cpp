// What becomes of program streams when the C++ allocator finds no memory, and when it is asked.
#include "golden/ps/Pieces.h"
#include "support/FailingNew.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using namespace Support;

/// Counts bytes without asking for memory.
void Count(SGOutputData* block, void* user)
{
    *static_cast<std::size_t*>(user) += static_cast<std::size_t>(block->data_size);
}

class PsMemory : public ::testing::TestWithParam<uint32_t>
{
protected:
    PsMemory()
    {
        m_create.struct_size = sizeof(m_create);
        m_create.user = &m_output;
        m_create.sg_datacb = &Count;
    }

    std::size_t m_output = 0;
    SGCreateParam m_create{};
};

INSTANTIATE_TEST_SUITE_P(
    Flavours,
    PsMemory,
    ::testing::Values(SG_STREAM_TYPE_PS, SG_STREAM_TYPE_QVPS, SG_STREAM_TYPE_GAYSPS),
    [](const auto& flavour) { return "Type" + std::to_string(flavour.param); });

Bytes Units(std::size_t count)
{
    Bytes frame;
    for (std::size_t unit = 0; unit < count; ++unit)
    {
        Append(frame, Nal(Payload(20)));
    }
    return frame;
}

TEST_P(PsMemory, HandleIsNullWhenAnAllocationOfItFails)
{
    std::size_t count = 0;
    {
        const FailingNew none(0);
        void* const handle = SG_CreateHandle(GetParam(), &m_create);
        count = FailingNew::Asked();
        EXPECT_EQ(SG_DestroyHandle(handle), 0);
    }
    ASSERT_GE(count, 3u);  // packager, flavour, work buffer
    for (std::size_t number = 1; number < count; ++number)
    {
        const FailingNew fail(number);
        EXPECT_EQ(SG_CreateHandle(GetParam(), &m_create), nullptr) << number;
    }
}

TEST_P(PsMemory, NoFrameAsksForAny)
{
    void* const handle = SG_CreateHandle(GetParam(), &m_create);
    Bytes picture = Units(300);
    Bytes sound = Payload(200);
    SGFrameInfo key = RecordOf(H264I(picture));
    key.frame_pointer = picture.data();
    SGFrameInfo other = RecordOf(H264P(picture));
    other.frame_pointer = picture.data();
    SGFrameInfo audio = RecordOf(Mp2(sound, 16000, 1));
    audio.frame_pointer = sound.data();
    {
        const FailingNew none(1, true);
        for (int round = 0; round < 100; ++round)
        {
            EXPECT_EQ(SG_InputFrame(handle, &key), 0);
            EXPECT_EQ(SG_InputFrame(handle, &other), 0);
            EXPECT_EQ(SG_InputFrame(handle, &audio), 0);
        }
        EXPECT_EQ(FailingNew::Asked(), 0u);
    }
    EXPECT_GT(m_output, 200 * picture.size());
    EXPECT_EQ(SG_DestroyHandle(handle), 0);
}

}  // namespace
}  // namespace Golden

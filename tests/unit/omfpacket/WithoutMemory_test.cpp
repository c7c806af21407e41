// A frame that finds no memory is refused with 4 and leaves no trace.
#include <memory>

#include "omfpacket/OmfPacket.h"
#include "support/Bytes.h"
#include "support/FailingNew.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::FailingNew;
using Support::Payload;

/// Hands frames over in either form, from memory that is asked for ahead of the call.
class OmfWithoutMemory : public ::testing::TestWithParam<bool>
{
protected:
    OmfWithoutMemory()
    {
        m_record.struct_size = sizeof(m_record);
        m_record.frame_type = SG_FRAME_TYPE_VIDEO;
        m_record.frame_sub_type = SG_FRAME_SUB_TYPE_I;
        m_record.frame_rate = 25;
        m_record.frame_pointer = m_payload.data();
        m_record.frame_size = static_cast<uint32_t>(m_payload.size());
        m_packager.SetDataCallBack(&OmfWithoutMemory::Count, this);
    }

    static void Count(SGOutputData* block, void* self)
    {
        auto& test = *static_cast<OmfWithoutMemory*>(self);
        ++test.m_blocks;
        // The header is not in the packet form.
        if (!GetParam()) test.m_number = block->data_pointer[8];
    }

    int Input()
    {
        return GetParam() ? m_packager.InputData(&m_record, m_packet)
                          : m_packager.InputData(&m_record, 0);
    }

    Bytes m_payload = Payload(100000);
    SGFrameInfo m_record{};
    COmfPacket m_packager{SG_STREAM_TYPE_OMF, nullptr};
    PacketBuffer m_packet;
    int m_blocks = 0;
    uint32_t m_number = 0;
};
INSTANTIATE_TEST_SUITE_P(BothForms,
                         OmfWithoutMemory,
                         ::testing::Bool(),
                         [](const auto& form) { return form.param ? "Packet" : "Callback"; });

TEST_P(OmfWithoutMemory, RefusesAndForgetsTheFrame)
{
    {
        const FailingNew fail(1, true);
        EXPECT_EQ(Input(), SG_ERR_MEMORY_OUT);
    }
    EXPECT_EQ(m_blocks, 0);
    EXPECT_EQ(m_packet.Size(), 0u);
    // The key frame that was refused has opened nothing.
    m_record.frame_sub_type = SG_FRAME_SUB_TYPE_P;
    EXPECT_EQ(Input(), SG_ERR_PARAM_ERR);
    m_record.frame_sub_type = SG_FRAME_SUB_TYPE_I;
    EXPECT_EQ(Input(), SG_ERR_NOERR);
    EXPECT_EQ(m_blocks, 1);
    EXPECT_EQ(m_number, GetParam() ? 0u : 1u);
}

TEST_P(OmfWithoutMemory, KeepsCountingWhereALargerFrameFailed)
{
    m_record.frame_size = 100;
    ASSERT_EQ(Input(), SG_ERR_NOERR);
    m_record.frame_size = static_cast<uint32_t>(m_payload.size());
    {
        const FailingNew fail(1, true);
        EXPECT_EQ(Input(), SG_ERR_MEMORY_OUT);
    }
    EXPECT_EQ(m_packet.Size(), GetParam() ? 24u + 8 + 100 + 8 : 0u);
    ASSERT_EQ(Input(), SG_ERR_NOERR);
    EXPECT_EQ(m_blocks, 2);
    EXPECT_EQ(m_number, GetParam() ? 0u : 2u);
}

TEST_P(OmfWithoutMemory, NeedsNoneForFramesNoLargerThanOneBefore)
{
    ASSERT_EQ(Input(), SG_ERR_NOERR);
    std::size_t asked = 0;
    {
        const FailingNew fail(1, true);
        EXPECT_EQ(Input(), SG_ERR_NOERR);
        m_record.frame_size = 1;
        EXPECT_EQ(Input(), SG_ERR_NOERR);
        asked = FailingNew::Asked();
    }
    EXPECT_EQ(asked, 0u);
}

TEST(OmfMemory, AFreshPackagerAsksForNothing)
{
    const FailingNew count(0);
    const COmfPacket packager(SG_STREAM_TYPE_OMF, nullptr);
    EXPECT_EQ(FailingNew::Asked(), 0u);
}

TEST(OmfMemory, AHandleIsNullWithoutMemory)
{
    const FailingNew fail(1, true);
    EXPECT_EQ(SG_CreateHandle(SG_STREAM_TYPE_OMF, nullptr), nullptr);
}

}  // namespace
}  // namespace Orbel::Wrapton

// A Matroska recording when there is no memory for a moment.
#include "Wrapton.h"
#include "support/FailingNew.h"
#include "support/Frames.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::FailingNew;

void Count(SGOutputData* /*block*/, void* user)
{
    ++*static_cast<int*>(user);
}

TEST(MkvWithoutMemory, HandleIsNullOrCanBeUsed)
{
    for (std::size_t number = 1;; ++number)
    {
        void* handle = nullptr;
        std::size_t asked = 0;
        {
            const FailingNew fail(number);
            handle = SG_CreateHandle(SG_STREAM_TYPE_MKV, nullptr);
            asked = FailingNew::Asked();
        }
        if (handle != nullptr)
        {
            const int result = SG_CreateHeader(handle, nullptr);
            EXPECT_TRUE(result == SG_ERR_NOERR || result == SG_ERR_PARAM_ERR) << number;
            SG_DestroyHandle(handle);
        }
        if (asked < number) break;
    }
}

TEST(MkvWithoutMemory, HeaderIsRefusedWithoutOutputAndCanBeTriedAgain)
{
    for (std::size_t number = 1;; ++number)
    {
        int blocks = 0;
        SGCreateParam create{};
        create.user = &blocks;
        create.sg_datacb = &Count;
        void* const handle = SG_CreateHandle(SG_STREAM_TYPE_MKV, &create);
        ASSERT_NE(handle, nullptr);
        int result = 0;
        std::size_t asked = 0;
        {
            const FailingNew fail(number);
            result = SG_CreateHeader(handle, nullptr);
            asked = FailingNew::Asked();
        }
        const bool failed = asked >= number;
        EXPECT_EQ(result, failed ? SG_ERR_MEMORY_OUT : SG_ERR_NOERR) << number;
        EXPECT_EQ(blocks, failed ? 0 : 6) << number;
        if (failed)
        {
            EXPECT_EQ(SG_CreateHeader(handle, nullptr), SG_ERR_NOERR);
            EXPECT_EQ(blocks, 6);
        }
        SG_DestroyHandle(handle);
        if (!failed)
        {
            EXPECT_GT(number, 4u);  // four element writers
            break;
        }
    }
}

TEST(MkvWithoutMemory, FramesAndTailerAskForNone)
{
    void* const handle = SG_CreateHandle(SG_STREAM_TYPE_MKV, nullptr);
    ASSERT_EQ(SG_CreateHeader(handle, nullptr), SG_ERR_NOERR);
    Support::Bytes bytes = Support::Payload(1000);
    SGFrameInfo record = Support::RecordOf(Support::Mpeg4I(bytes));
    record.frame_pointer = bytes.data();
    std::size_t asked = 0;
    {
        const FailingNew fail(1, true);
        for (int frame = 0; frame < 100; ++frame)
        {
            EXPECT_EQ(SG_InputFrame(handle, &record), SG_ERR_NOERR);
        }
        EXPECT_EQ(SG_CreateTailer(handle, nullptr), SG_ERR_NOERR);
        asked = FailingNew::Asked();
    }
    EXPECT_EQ(asked, 0u);
    SG_DestroyHandle(handle);
}

}  // namespace
}  // namespace Orbel::Wrapton

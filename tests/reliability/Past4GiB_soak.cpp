// An ASF file past 4 GiB: positions go on where 32 bits end.
#include <memory>

#include "Wrapton.h"
#include "support/Frames.h"

namespace Reliability
{
namespace
{

using namespace Orbel::Wrapton;

/// Expects every block where the one before it ended.
struct Follower
{
    uint64_t end = 0;
    bool follows = true;

    static void Receive(SGOutputData* block, void* user)
    {
        auto& self = *static_cast<Follower*>(user);
        self.follows = self.follows && block->offset_pos64 == static_cast<int64_t>(self.end) &&
                       block->offset_pos == static_cast<uint32_t>(self.end);
        self.end += static_cast<uint64_t>(block->data_size);
    }
};

TEST(AsfPast4GiB, BlocksFollowEachOther)
{
    constexpr std::size_t kPicture = 1900000;
    Follower follower;
    SGCreateParam create{};
    create.user = &follower;
    create.sg_datacb = &Follower::Receive;
    void* const handle = SG_CreateHandle(SG_STREAM_TYPE_ASF, &create);
    const auto bytes = std::make_unique<unsigned char[]>(kPicture);
    SGFrameInfo record = Support::RecordOf(Support::JpegI({}));
    record.frame_pointer = bytes.get();
    record.frame_size = kPicture;
    while (follower.end <= uint64_t{1} << 32)
    {
        ASSERT_EQ(SG_InputFrame(handle, &record), SG_ERR_NOERR);
        ASSERT_TRUE(follower.follows) << follower.end;
    }
    record.frame_size = 1;
    EXPECT_EQ(SG_InputFrame(handle, &record), SG_ERR_NOERR);
    EXPECT_TRUE(follower.follows);
    EXPECT_EQ(SG_DestroyHandle(handle), SG_ERR_NOERR);
}

}  // namespace
}  // namespace Reliability

// FLV past 4 GiB: nothing in it is a position, and the size that it tells is a floating-point
// number.
#include "golden/flv/Pieces.h"

namespace GoldenFlv
{
namespace
{

using namespace Orbel::Wrapton;

/// Adds up what comes; the last block is kept when it is small.
struct Total
{
    uint64_t bytes = 0;
    Bytes last;

    static void Receive(SGOutputData* block, void* user)
    {
        auto& self = *static_cast<Total*>(user);
        self.bytes += static_cast<uint64_t>(block->data_size);
        if (block->data_size < 1000)
            self.last.assign(block->data_pointer, block->data_pointer + block->data_size);
        EXPECT_EQ(block->offset_type, 1);
        EXPECT_EQ(block->offset_pos64, 0);
    }
};

TEST(FlvPast4GiB, TellsItsWholeSizeInTheClosingHeader)
{
    constexpr uint32_t kPictures = 2200;
    Total total;
    SGCreateParam create{};
    create.user = &total;
    create.sg_datacb = &Total::Receive;
    void* const handle = SG_CreateHandle(SG_STREAM_TYPE_FLV, &create);
    Bytes bytes = Support::Nal(Support::Join({Support::Hex("65"), Support::Payload(2000000)}));
    SGFrameInfo record = Support::RecordOf(Support::H264I({}));
    record.frame_pointer = bytes.data();
    record.frame_size = static_cast<uint32_t>(bytes.size());
    for (uint32_t picture = 0; picture < kPictures; ++picture)
        ASSERT_EQ(SG_InputFrame(handle, &record), SG_ERR_NOERR);
    ASSERT_GT(total.bytes, uint64_t{1} << 32);

    Meta meta;
    meta.duration = kPictures / 25.0;
    const std::size_t end = EndTag(0).size();
    meta.fileSize = static_cast<double>(total.bytes + end);
    EXPECT_EQ(SG_CreateTailer(handle, nullptr), SG_ERR_NOERR);
    // Flag 1: pictures alone.
    EXPECT_TRUE(Support::Same(total.last, Support::Join({FileHeader(1), MetaTag(meta)})));
    EXPECT_EQ(SG_DestroyHandle(handle), SG_ERR_NOERR);
}

}  // namespace
}  // namespace GoldenFlv

// jpeg, the sample entry without children.
#include "golden/mp4/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Hex;
using Support::Join;
using Support::JpegI;
using Support::Payload;
using Support::Same;

class JpegEntry : public EveryFlavour
{
};
INSTANTIATE_FLAVOURS(JpegEntry);

TEST_P(JpegEntry, HoldsThePictureAlone)
{
    Recording recording(GetParam());
    recording.Header().Input(JpegI(Payload(30)).Sized(320, 240)).Tailer();
    const Bytes expected = Box(16 + 86,
                               "stsd",
                               {
                                   Hex("00 00 00 00"),        // version, flags
                                   Hex("00 00 00 01"),        // entry_count
                                   Hex("00 00 00 56"),        // size: 8 + 78
                                   Hex("6A 70 65 67"),        // jpeg
                                   Hex("00 00 00 00 00 00"),  // reserved
                                   Hex("00 01"),              // data_reference_index
                                   Hex("00 00"),              // pre_defined
                                   Hex("00 00"),              // reserved
                                   Support::Zero(12),         // pre_defined
                                   Hex("01 40"),              // width
                                   Hex("00 F0"),              // height
                                   Hex("00 48 00 00"),        // horizresolution
                                   Hex("00 48 00 00"),        // vertresolution
                                   Hex("00 00 00 00"),        // reserved
                                   Hex("00 01"),              // frame_count
                                   Support::Zero(32),         // compressorname
                                   Hex("00 18"),              // depth
                                   Hex("FF FF"),              // pre_defined
                               });
    EXPECT_TRUE(Same(recording.VideoTable("stsd"), expected));
    EXPECT_TRUE(Same(expected, Stsd(Jpeg(320, 240))));
}

TEST_P(JpegEntry, StoresPicturesAsTheyAre)
{
    const Bytes picture = Join({Hex("00 00 00 01 67 42 00 00 01 20 44 00 00 01 B6"), Payload(9)});
    const Flavour flavour = GetParam();
    Recording recording(flavour);
    recording.Header().Input(JpegI(picture)).Tailer();
    EXPECT_TRUE(Same(recording.VideoTable("stsz"), Stsz({24})));
    EXPECT_TRUE(
        Same(Support::Slice(
                 recording.File(), flavour.DataStart() + flavour.SampleHeader(), picture.size()),
             picture));
}

TEST(JpegTrack, IsNotOpenedByTheJpegSubType)
{
    Recording recording(kMp4);
    recording.Header();
    recording.Sink().ForgetBlocks();
    recording.Input(JpegI(Payload(30)).As(SG_FRAME_SUB_TYPE_JPEG_FRAME));
    EXPECT_TRUE(recording.Blocks().empty());
    recording.Tailer();
    EXPECT_TRUE(Same(recording.Movie(), Box(116, "moov", {Mvhd(0, 1)})));
}

}  // namespace
}  // namespace Golden

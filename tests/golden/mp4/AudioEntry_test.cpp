// mp4a: its MP4 form with esds, its QuickTime form with wave, frma and the empty mp4a.
#include "golden/mp4/Recording.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Aac;
using Support::Audio;
using Support::Frame;
using Support::H264I;
using Support::Hex;
using Support::Mp2;
using Support::Payload;
using Support::Same;
using Support::Text;

/// The stsd of an audio track that @p frame opens.
Bytes StsdOf(const Flavour& flavour, const Frame& frame)
{
    Recording recording(flavour);
    recording.Header().Input(H264I(kIFrame)).Input(frame).Tailer();
    return recording.AudioTable("stsd");
}

Bytes EntryOf(
    const Flavour& flavour, uint32_t channels, uint32_t bits, uint32_t rate, const Bytes& esds)
{
    return Stsd(flavour.quickTime ? Mp4aMov(channels, bits, rate, esds)
                                  : Mp4aMp4(channels, bits, rate, esds));
}

Bytes AacEsds(const Bytes& config)
{
    return Esds(2, 0x40, 0x15, config);
}

class AudioEntry : public EveryFlavour
{
};
INSTANTIATE_FLAVOURS(AudioEntry);

TEST_P(AudioEntry, OfAacHoldsItsAudioSpecificConfig)
{
    const Flavour flavour = GetParam();
    EXPECT_TRUE(Same(StsdOf(flavour, Aac(Payload(9))),
                     EntryOf(flavour, 1, 16, 8000, AacEsds(Hex("15 88")))));
    EXPECT_TRUE(Same(StsdOf(flavour, Aac(Payload(9), 44100, 2)),
                     EntryOf(flavour, 2, 16, 44100, AacEsds(Hex("12 10")))));
    EXPECT_TRUE(Same(StsdOf(flavour, Aac(Payload(9), 48000, 2)),
                     EntryOf(flavour, 2, 16, 48000, AacEsds(Hex("11 90")))));
}

TEST_P(AudioEntry, OfLayerIIHasNoSpecificInfo)
{
    const Flavour flavour = GetParam();
    EXPECT_TRUE(Same(StsdOf(flavour, Mp2(Payload(9))),
                     EntryOf(flavour, 2, 16, 48000, EsdsBare(2, 0x69, 0x15))));
}

TEST_P(AudioEntry, OfAacAtARateOutsideTheTableHasNoSpecificInfo)
{
    const Flavour flavour = GetParam();
    for (const uint32_t rate : {1u, 7349u, 7351u, 22000u, 47999u})
    {
        EXPECT_TRUE(Same(StsdOf(flavour, Aac(Payload(9), rate, 1)),
                         EntryOf(flavour, 1, 16, rate, EsdsBare(2, 0x40, 0x15))))
            << rate;
    }
}

TEST(Mp4aOfMp4, IsTheStandardsTable)
{
    const Bytes expected = Box(16 + 87,
                               "stsd",
                               {
                                   Hex("00 00 00 00"),  // version, flags
                                   Hex("00 00 00 01"),  // entry_count
                                   Hex("00 00 00 57"),  // size of mp4a: 8 + 28 + 51
                                   Text("mp4a"),
                                   Hex("00 00 00 00 00 00"),  // reserved
                                   Hex("00 01"),              // data_reference_index
                                   Hex("00 00"),              // version
                                   Hex("00 00"),              // revision level
                                   Hex("00 00 00 00"),        // vendor
                                   Hex("00 01"),              // channelcount
                                   Hex("00 10"),              // samplesize
                                   Hex("00 00"),              // compression id
                                   Hex("00 00"),              // packet size
                                   Hex("1F 40 00 00"),        // samplerate 8000, 16.16
                                   Hex("00 00 00 33"),        // size of esds: 49 + 2
                                   Text("esds"),
                                   Hex("00 00 00 00"),        // version, flags
                                   Hex("03 80 80 80 22"),     // ES descriptor of 34 bytes
                                   Hex("00 02 10"),           // ES_ID 2, flags
                                   Hex("04 80 80 80 14"),     // decoder config of 20 bytes
                                   Hex("40 15"),              // MPEG-4 audio
                                   Hex("00 00 00"),           // bufferSizeDB
                                   Hex("00 00 00 00"),        // maxBitrate
                                   Hex("00 00 00 00"),        // avgBitrate
                                   Hex("05 80 80 80 02"),     // specific info of 2 bytes
                                   Hex("15 88"),              // AAC LC, index 11, 1 channel
                                   Hex("06 80 80 80 01 02"),  // SL config, predefined 2
                               });
    EXPECT_TRUE(Same(StsdOf(kMp4, Aac(Payload(9))), expected));
    EXPECT_TRUE(Same(StsdOf(kMp4Wide, Aac(Payload(9))), expected));
    EXPECT_TRUE(Same(StsdOf(kNoSeek, Aac(Payload(9))), expected));
}

TEST(Mp4aOfQuickTime, IsVersionOneWithWave)
{
    const Bytes expected = Box(16 + 128,
                               "stsd",
                               {
                                   Hex("00 00 00 00"),  // version, flags
                                   Hex("00 00 00 01"),  // entry count
                                   Hex("00 00 00 80"),  // size of mp4a: 8 + 44 + 76
                                   Text("mp4a"),
                                   Hex("00 00 00 00 00 00"),  // reserved
                                   Hex("00 01"),              // data reference index
                                   Hex("00 01"),              // version
                                   Hex("00 00"),              // revision level
                                   Hex("00 00 00 00"),        // vendor
                                   Hex("00 02"),              // channels
                                   Hex("00 10"),              // sample size
                                   Hex("FF FE"),              // compression id -2
                                   Hex("00 00"),              // packet size
                                   Hex("BB 80 00 00"),        // sample rate 48000, 16.16
                                   Hex("00 00 04 00"),        // samples per packet
                                   Hex("00 00 00 00"),        // bytes per packet
                                   Hex("00 00 00 00"),        // bytes per frame
                                   Hex("00 00 00 02"),        // bytes per sample
                                   Hex("00 00 00 4C"),        // size of wave: 8 + 12 + 12 + 44
                                   Text("wave"),
                                   Hex("00 00 00 0C"),  // size of frma
                                   Text("frma"),
                                   Text("mp4a"),        // data format
                                   Hex("00 00 00 0C"),  // size of the empty mp4a
                                   Text("mp4a"),
                                   Hex("00 00 00 00"),
                                   Hex("00 00 00 2C"),  // size of esds
                                   Text("esds"),
                                   Hex("00 00 00 00"),        // version, flags
                                   Hex("03 80 80 80 1B"),     // ES descriptor of 27 bytes
                                   Hex("00 02 10"),           // ES_ID 2, flags
                                   Hex("04 80 80 80 0D"),     // decoder config of 13 bytes
                                   Hex("69 15"),              // MPEG-2 audio
                                   Hex("00 00 00"),           // bufferSizeDB
                                   Hex("00 00 00 00"),        // maxBitrate
                                   Hex("00 00 00 00"),        // avgBitrate
                                   Hex("06 80 80 80 01 02"),  // SL config, predefined 2
                               });
    EXPECT_TRUE(Same(StsdOf(kMov, Mp2(Payload(9))), expected));
    EXPECT_TRUE(Same(StsdOf(kMovWide, Mp2(Payload(9))), expected));
}

TEST(AudioSpecificConfig, FollowsTheSamplingFrequencyTable)
{
    struct Case
    {
        uint32_t rate;
        const char* config;  // 5 bits AAC LC, 4 bits index, 4 bits channels (1), 3 bits 0
    };
    for (const Case& c : {Case{96000, "10 08"},
                          Case{88200, "10 88"},
                          Case{64000, "11 08"},
                          Case{48000, "11 88"},
                          Case{44100, "12 08"},
                          Case{32000, "12 88"},
                          Case{24000, "13 08"},
                          Case{22050, "13 88"},
                          Case{16000, "14 08"},
                          Case{12000, "14 88"},
                          Case{11025, "15 08"},
                          Case{8000, "15 88"},
                          Case{7350, "16 08"},
                          Case{0, "16 88"}})
    {
        EXPECT_TRUE(Same(StsdOf(kMp4, Aac(Payload(9), c.rate, 1)),
                         Stsd(Mp4aMp4(1, 16, c.rate, AacEsds(Hex(c.config))))))
            << c.rate;
    }
}

TEST(AudioSpecificConfig, KeepsFourBitsOfTheChannelCount)
{
    struct Case
    {
        uint32_t channels;
        const char* config;
    };
    for (const Case& c : {Case{0, "15 80"},
                          Case{6, "15 B0"},
                          Case{15, "15 F8"},
                          Case{16, "15 80"},
                          Case{17, "15 88"}})
    {
        EXPECT_TRUE(Same(StsdOf(kMp4, Aac(Payload(9), 8000, c.channels)),
                         Stsd(Mp4aMp4(c.channels, 16, 8000, AacEsds(Hex(c.config))))))
            << c.channels;
    }
}

TEST(AudioFields, KeepTheLow16Bits)
{
    // Above 65535 Hz: 96000 - 65536 = 30464.
    EXPECT_TRUE(Same(StsdOf(kMp4, Aac(Payload(9), 96000, 2)),
                     Stsd(Mp4aMp4(2, 16, 30464, AacEsds(Hex("10 10"))))));
    for (const uint32_t rate : {65535u, 65536u, 65537u})
    {
        EXPECT_TRUE(Same(StsdOf(kMp4, Mp2(Payload(9), rate, 2)),
                         Stsd(Mp4aMp4(2, 16, rate & 0xFFFF, EsdsBare(2, 0x69, 0x15)))))
            << rate;
    }
    EXPECT_TRUE(Same(StsdOf(kMp4, Audio(SG_ENCODE_AUDIO_MP2, Payload(9), 48000, 0x10003, 0x20018)),
                     Stsd(Mp4aMp4(3, 24, 48000, EsdsBare(2, 0x69, 0x15)))));
}

TEST(AudioFields, AreThoseOfTheFirstAudioFrame)
{
    Recording recording(kMp4);
    recording.Header()
        .Input(H264I(kIFrame))
        .Input(Aac(Payload(9), 16000, 1))
        .Input(Aac(Payload(9), 48000, 2))
        .Tailer();
    EXPECT_TRUE(
        Same(recording.AudioTable("stsd"), Stsd(Mp4aMp4(1, 16, 16000, AacEsds(Hex("14 08"))))));
    EXPECT_TRUE(Same(recording.MovieBox("trak[1]/mdia/mdhd"), Mdhd(16000, 2048)));
}

}  // namespace
}  // namespace Golden

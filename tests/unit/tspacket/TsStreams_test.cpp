// Whole streams, read back by a reader that knows the standard alone.
#include "readers/TsReader.h"
#include "support/Frames.h"
#include "support/Streams.h"
#include "tspacket/TsPacket.h"

namespace Orbel::Wrapton
{
namespace
{

using namespace Support;

constexpr uint32_t kVideoPid = 0x12;
constexpr uint32_t kAudioPid = 0x13;

/// Packages pictures and sound in turns and gives what a reader makes of the packets.
class Program
{
public:
    void Input(const Frame& frame)
    {
        Bytes bytes = frame.bytes;
        SGFrameInfo record = RecordOf(frame);
        record.frame_pointer = bytes.data();
        EXPECT_EQ(m_package.InputData(&record, m_packet), 0);
        m_reader.Read({m_packet.Data(), m_packet.Size()});
    }

    Readers::TsReader& Reader() { return m_reader; }

    Bytes Payloads(uint32_t pid)
    {
        Bytes all;
        for (const Readers::TsFrame& frame : m_reader.Frames())
        {
            EXPECT_EQ(frame.streamId, 0xE0u);
            if (frame.pid == pid) Append(all, frame.payload);
        }
        return all;
    }

private:
    CTsPacket m_package{nullptr};
    PacketBuffer m_packet;
    Readers::TsReader m_reader;
};

TEST(TransportStream, CarriesH264AndAacWithoutLosingAByte)
{
    const std::vector<Bytes> pictures = AccessUnits(Media("camera_640x360_25fps_baseline.h264"));
    const std::vector<Bytes> sounds = AdtsFrames(Media("tone_44100_stereo.aac"));
    Program program;
    Bytes video;
    Bytes audio;
    for (std::size_t i = 0; i < pictures.size(); ++i)
    {
        program.Input(IsIdr(pictures[i]) ? H264I(pictures[i]) : H264P(pictures[i]));
        Append(video, Hex("00 00 00 01 09 F0"));
        Append(video, pictures[i]);
        for (std::size_t sound = 2 * i; sound < std::min(2 * i + 2, sounds.size()); ++sound)
        {
            program.Input(Aac(sounds[sound], 44100, 2));
            Append(audio, sounds[sound]);
        }
    }
    EXPECT_TRUE(Same(program.Payloads(kVideoPid), video));
    EXPECT_TRUE(Same(program.Payloads(kAudioPid), audio));
    EXPECT_EQ(program.Reader().Streams(),
              (std::map<uint32_t, uint32_t>{{kVideoPid, 0x1B}, {kAudioPid, 0x03}}));
}

TEST(TransportStream, CarriesMpeg4WithTheClockInEveryPicture)
{
    const std::vector<Bytes> pictures = Mpeg4Pictures(Media("cif_352x288_25fps.m4v"));
    Program program;
    for (const Bytes& picture : pictures)
    {
        program.Input(IsMpeg4Intra(picture) ? Mpeg4I(picture) : Mpeg4P(picture));
    }
    EXPECT_TRUE(Same(program.Payloads(kVideoPid), Media("cif_352x288_25fps.m4v")));
    EXPECT_EQ(program.Reader().Streams().at(kVideoPid), 0x10u);
    uint64_t clock = 0;
    for (const Readers::TsFrame& frame : program.Reader().Frames())
    {
        clock += 3600;
        EXPECT_EQ(frame.pts, clock);
        EXPECT_EQ(frame.dts, clock);
        EXPECT_EQ(frame.pcr, clock);
    }
}

TEST(TransportStream, CarriesFramesOfEverySizeUpToSomePackets)
{
    Program program;
    Bytes all;
    for (std::size_t size = 1; size < 1200; ++size)
    {
        program.Input(Mpeg4I(Payload(size)));
        Append(all, Payload(size));
    }
    EXPECT_TRUE(Same(program.Payloads(kVideoPid), all));
}

}  // namespace
}  // namespace Orbel::Wrapton

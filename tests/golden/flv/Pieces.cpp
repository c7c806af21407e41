#include "golden/flv/Pieces.h"

#include <bit>
#include <utility>

namespace GoldenFlv
{

using namespace Orbel::Wrapton;
using Support::Hex;
using Support::Join;
using Support::LengthNal;
using Support::Msb16;
using Support::Msb24;
using Support::Msb32;
using Support::Msb64;
using Support::Nal;
using Support::Text;
using Support::U8;

const Bytes kSps = Hex("67 42 C0 1E");
const Bytes kPps = Hex("68 CE 3C 80");
const Bytes kIFrame = Join({Nal(kSps), Nal(kPps), Nal(Hex("65 88 84"))});
const Bytes kPFrame = Nal(Hex("41 9A 02"));
const Bytes kIUnits = Join({LengthNal(kSps), LengthNal(kPps), LengthNal(Hex("65 88 84"))});
const Bytes kPUnits = LengthNal(Hex("41 9A 02"));

namespace
{

Bytes Double(double value)
{
    return Msb64(std::bit_cast<uint64_t>(value));
}

Bytes Name(const char* name)
{
    const Bytes text = Text(name);
    return Join({Msb16(static_cast<uint32_t>(text.size())), text});
}

Bytes Number(const char* name, double value)
{
    return Join({Name(name), U8(0), Double(value)});
}

}  // namespace

Bytes FileHeader(uint32_t flags)
{
    return Join({
        Text("FLV"),  // signature
        U8(1),        // version
        U8(flags),    // 4 audio, 1 video
        Msb32(9),     // data offset
        Msb32(0),     // PreviousTagSize0
    });
}

Bytes Tag(uint32_t type, uint32_t time, const Bytes& body)
{
    const auto size = static_cast<uint32_t>(body.size());
    return Join({
        U8(type),          // 8 audio, 9 video, 18 script
        Msb24(size),       // data size
        Msb24(time),       // timestamp
        U8(0),             // timestamp extended
        Msb24(0),          // stream id
        body,              //
        Msb32(11 + size),  // previous tag size
    });
}

Bytes MetaTag(const Meta& meta)
{
    return Tag(18,
               0,
               Join({
                   U8(2),  // string
                   Name("onMetaData"),
                   U8(8),  // ECMA array
                   Msb32(13),
                   Number("duration", meta.duration),
                   Number("width", meta.width),
                   Number("height", meta.height),
                   Number("videodatarate", 0),
                   Number("framerate", meta.frameRate),
                   Number("videocodecid", meta.videoCodec),
                   Number("audiodatarate", 0),
                   Number("audiosamplerate", meta.sampleRate),
                   U8(0),  // the sample size has no name
                   Double(meta.sampleSize),
                   Name("stereo"),
                   U8(1),  // boolean
                   U8(meta.stereo),
                   Number("audiocodecid", meta.audioCodec),
                   Number("filesize", meta.fileSize),
                   Hex("00 00 09"),  // object end
               }));
}

Bytes SequenceHeader(const Bytes& sps, const Bytes& pps)
{
    const bool found = !sps.empty();
    return Tag(9,
               0,
               Join({
                   U8(0x17),           // key frame, AVC
                   U8(0),              // sequence header
                   Msb24(0),           // composition time
                   U8(found ? 1 : 0),  // configuration version
                   sps.size() < 4 ? Hex("00 00 00") : Support::Slice(sps, 1, 3),
                   U8(0xFF),                 // 4-byte lengths
                   U8(found ? 0xE1 : 0xE0),  // count of SPS
                   Msb16(static_cast<uint32_t>(sps.size())),
                   sps,
                   U8(pps.empty() ? 0 : 1),  // count of PPS
                   Msb16(static_cast<uint32_t>(pps.size())),
                   pps,
               }));
}

Bytes VideoTag(uint32_t time, bool key, const Bytes& units)
{
    return Tag(9,
               time,
               Join({
                   U8(key ? 0x17 : 0x27),  // frame type, AVC
                   U8(1),                  // NAL units
                   Msb24(0),               // composition time
                   units,
               }));
}

Bytes AudioTag(uint32_t time, uint32_t flags, const Bytes& samples)
{
    return Tag(8, time, Join({U8(flags), samples}));
}

Bytes EndTag(uint32_t time)
{
    return Tag(9, time, Hex("17 02 00 00 00"));
}

Bytes Start(uint32_t flags, const Meta& meta)
{
    return Join({FileHeader(flags), MetaTag(meta), SequenceHeader(kSps, kPps)});
}

Support::Frame Pcm16(Bytes samples, uint32_t sampleRate, uint32_t channels, uint32_t bits)
{
    return Support::Audio(SG_ENCODE_AUDIO_PCM16, std::move(samples), sampleRate, channels, bits);
}

Recording& Recording::Input(const Support::Frame& frame, int times)
{
    for (int i = 0; i < times; ++i)
    {
        EXPECT_EQ(m_recorder.Input(frame), SG_ERR_NOERR);
    }
    return *this;
}

Recording& Recording::Tailer()
{
    EXPECT_EQ(m_recorder.Tailer(), SG_ERR_NOERR);
    return *this;
}

Bytes Recording::Fresh()
{
    Bytes fresh;
    for (; m_seen < Blocks().size(); ++m_seen)
    {
        Support::Append(fresh, Blocks()[m_seen].data);
    }
    return fresh;
}

::testing::AssertionResult IsAppended(const Support::Block& block, const Bytes& bytes)
{
    if (block.structSize != 40 || block.origin != 1 || block.narrow != 0 || block.position != 0)
    {
        return ::testing::AssertionFailure()
               << "record of " << block.structSize << " bytes, origin " << block.origin
               << ", positions " << block.narrow << " and " << block.position;
    }
    return Support::Same(block.data, bytes);
}

}  // namespace GoldenFlv

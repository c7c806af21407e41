#include "golden/asf/Pieces.h"

#include <algorithm>
#include <ctime>

namespace GoldenAsf
{

using namespace Orbel::Wrapton;
using Support::Hex;
using Support::Join;
using Support::Lsb16;
using Support::Lsb32;
using Support::Lsb64;
using Support::U8;
using Support::Zero;

namespace
{

// Identifiers in file order: the first three fields little-endian.
const Bytes kHeaderObject = Hex("30 26 B2 75 8E 66 CF 11 A6 D9 00 AA 00 62 CE 6C");
const Bytes kDataObject = Hex("36 26 B2 75 8E 66 CF 11 A6 D9 00 AA 00 62 CE 6C");
const Bytes kSimpleIndex = Hex("90 08 00 33 B1 E5 CF 11 89 F4 00 A0 C9 03 49 CB");
const Bytes kFileProperties = Hex("A1 DC AB 8C 47 A9 CF 11 8E E4 00 C0 0C 20 53 65");
const Bytes kStreamProperties = Hex("91 07 DC B7 B7 A9 CF 11 8E E6 00 C0 0C 20 53 65");
const Bytes kHeaderExtension = Hex("B5 03 BF 5F 2E A9 CF 11 8E E3 00 C0 0C 20 53 65");
const Bytes kLanguageList = Hex("A9 46 43 7C E0 EF FC 4B B2 29 39 3E DE 41 5C 85");
const Bytes kExtendedStream = Hex("CB A5 E6 14 72 C6 32 43 83 99 A9 69 52 06 5B 5A");
const Bytes kPadding = Hex("74 D4 06 18 DF CA 09 45 A4 BA 9A AB CB 96 AA E8");
const Bytes kAudioMedia = Hex("40 9E 69 F8 4D 5B CF 11 A8 FD 00 80 5F 5C 44 2B");
const Bytes kVideoMedia = Hex("C0 EF 19 BC 4D 5B CF 11 A8 FD 00 80 5F 5C 44 2B");
const Bytes kNoErrorCorrection = Hex("00 57 FB 20 55 5B CF 11 A8 FD 00 80 5F 5C 44 2B");
const Bytes kAudioSpread = Hex("50 CD C3 BF 8F 61 CF 11 8B B2 00 AA 00 B4 E2 20");
const Bytes kReserved1 = Hex("11 D2 D3 AB BA A9 CF 11 8E E6 00 C0 0C 20 53 65");
const Bytes kFileId = Hex("92 8C 60 DF EA 71 FE 43 81 04 22 51 D3 94 F3 9D");

constexpr std::size_t kDateAt = 30 + 24 + 16 + 8;

Bytes FileProperties(const HeaderValues& values)
{
    return Join({
        kFileProperties,
        Lsb64(104),  // object size
        kFileId,
        Lsb64(values.fileSize),
        Lsb64(values.date),
        Lsb64(values.packets),
        Lsb64(values.duration),  // play duration
        Lsb64(values.duration),  // send duration
        Lsb64(0),                // preroll
        Lsb32(values.flags),
        Lsb32(2076),     // minimum packet size
        Lsb32(2076),     // maximum packet size
        Lsb32(1511712),  // maximum bit rate
    });
}

Bytes HeaderExtension(const HeaderValues& values, std::size_t padding)
{
    const auto data = static_cast<uint32_t>(39 + 88 + 24 + padding);
    return Join({
        kHeaderExtension,
        Lsb64(46 + data),  // object size
        kReserved1,
        Lsb16(6),     // reserved 2
        Lsb32(data),  // data size

        kLanguageList,
        Lsb64(39),                                   // object size
        Lsb16(1),                                    // records
        U8(12),                                      // ID length
        Hex("7A 00 68 00 2D 00 63 00 6E 00 00 00"),  // "zh-cn"

        kExtendedStream,
        Lsb64(88),  // object size
        Lsb64(0),   // start time
        Lsb64(0),   // end time
        Zero(24),   // bit rates, buffer sizes and fullness, two of each
        Lsb32(0),   // maximum object size
        Lsb32(2),   // seekable
        Lsb16(1),   // stream number
        Lsb16(0),   // language index
        Lsb64(values.timePerFrame),
        Lsb16(0),  // stream names
        Lsb16(0),  // payload extension systems

        kPadding,
        Lsb64(24 + padding),  // object size
        Zero(padding),
    });
}

Bytes VideoStream(const HeaderValues& values)
{
    const auto config = static_cast<uint32_t>(values.config.size());
    return Join({
        kStreamProperties,
        Lsb64(129 + config),  // object size
        kVideoMedia,
        kNoErrorCorrection,
        Lsb64(0),            // time offset
        Lsb32(51 + config),  // type-specific data
        Lsb32(0),            // error correction data
        Lsb16(1),            // stream 1
        Lsb32(0),            // reserved

        Lsb32(values.width),
        Lsb32(values.height),
        U8(2),               // reserved
        Lsb16(40 + config),  // format data

        Lsb32(40 + config),  // BITMAPINFOHEADER
        Lsb32(values.width),
        Lsb32(values.height),
        Lsb16(1),   // planes
        Lsb16(24),  // bits per pixel
        values.compression,
        Zero(20),  // image size, resolutions, colours
        values.config,
    });
}

Bytes AudioStream(const AudioValues& audio)
{
    return Join({
        kStreamProperties,
        Lsb64(116),  // object size
        kAudioMedia,
        kAudioSpread,
        Lsb64(0),   // time offset
        Lsb32(30),  // type-specific data
        Lsb32(8),   // error correction data
        Lsb16(2),   // stream 2
        Lsb32(0),   // reserved

        Lsb16(audio.tag),  // WAVEFORMATEX
        Lsb16(audio.channels),
        Lsb32(audio.sampleRate),
        Lsb32(audio.bytesPerSecond),
        Lsb16(2),  // block align
        Lsb16(audio.bits),
        Lsb16(12),  // extra size
        Zero(12),

        U8(1),        // span
        Lsb16(2048),  // virtual packet length
        Lsb16(2048),  // virtual chunk length
        Lsb16(1),     // silence data length
        U8(0),        // silence data
    });
}

}  // namespace

Bytes Header(const HeaderValues& values)
{
    const Bytes file = FileProperties(values);
    const Bytes video = VideoStream(values);
    const Bytes audio = values.audio ? AudioStream(*values.audio) : Bytes();
    const std::size_t fixed = 30 + 104 + 46 + 39 + 88 + 24;
    const Bytes extension =
        HeaderExtension(values, kHeaderLen - fixed - video.size() - audio.size());
    return Join({
        kHeaderObject,
        Lsb64(768),                   // object size
        Lsb32(values.audio ? 4 : 3),  // children
        Hex("01 02"),                 // reserved
        file,
        extension,
        video,
        audio,

        kDataObject,
        Lsb64(50 + 2076 * values.dataPackets),  // object size
        kFileId,
        Lsb64(values.dataPackets),
        Lsb16(0x0101),  // reserved
    });
}

HeaderValues Broadcast(const AudioValues& audio)
{
    HeaderValues values;
    values.fileSize = 1;
    values.packets = 1;
    values.duration = 1;
    values.flags = 3;
    values.date = 1;
    values.audio = audio;
    return values;
}

Bytes Packet(const PacketSpec& values, const Bytes& payload)
{
    const auto padding = static_cast<uint32_t>(2048 - payload.size());
    return Join({
        Hex("82 00 00"),  // error correction, 2 bytes
        U8(0x90),         // length types
        U8(0x5D),         // property types
        Lsb16(padding),
        Lsb32(values.time),  // send time
        Lsb16(0),            // duration
        U8(values.stream),
        U8(values.number),
        Lsb32(values.offset),
        U8(8),  // replicated data
        Lsb32(values.objectSize),
        Lsb32(values.time),  // presentation time
        payload,
        Zero(padding),
    });
}

Bytes Packets(uint32_t stream, uint32_t number, uint32_t time, const Bytes& frame)
{
    Bytes packets;
    for (std::size_t offset = 0; offset < frame.size(); offset += 2048)
    {
        const std::size_t size = std::min<std::size_t>(2048, frame.size() - offset);
        Support::Append(packets,
                        Packet({.stream = stream,
                                .number = number,
                                .time = time,
                                .offset = static_cast<uint32_t>(offset),
                                .objectSize = static_cast<uint32_t>(frame.size())},
                               Support::Slice(frame, offset, size)));
    }
    return packets;
}

Bytes Index(const std::vector<std::pair<uint32_t, uint32_t>>& entries)
{
    Bytes index = Join({
        kSimpleIndex,
        Lsb64(56 + 6 * entries.size()),  // object size
        kFileId,
        Lsb64(10000000),  // time interval
        Lsb32(41960),     // maximum packet count
        Lsb32(static_cast<uint32_t>(entries.size())),
    });
    for (const auto& [number, count] : entries)
    {
        Support::Append(index, Lsb32(number));
        Support::Append(index, Lsb16(count));
    }
    return index;
}

Support::Frame Key(Bytes bytes)
{
    return Support::H264I(std::move(bytes));
}

Support::Frame Inter(Bytes bytes)
{
    return Support::H264P(std::move(bytes));
}

Support::Frame Pcm16(Bytes samples, uint32_t sampleRate, uint32_t channels, uint32_t bits)
{
    return Support::Audio(SG_ENCODE_AUDIO_PCM16, std::move(samples), sampleRate, channels, bits);
}

Recording::Recording(uint32_t type) : m_opened(std::time(nullptr)), m_recorder(type, m_sink) {}

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
        Support::Append(fresh, Masked(Blocks()[m_seen]));
    }
    return fresh;
}

Bytes Recording::File() const
{
    return WithoutDate(m_sink.Image());
}

Bytes Recording::Masked(const Support::Block& block) const
{
    return block.position == 0 ? WithoutDate(block.data) : block.data;
}

Bytes Recording::WithoutDate(Bytes bytes) const
{
    if (bytes.size() < kDataStart) return bytes;

    uint64_t date = 0;
    for (std::size_t i = 8; i-- > 0;)
    {
        date = date << 8 | bytes[kDateAt + i];
    }
    if (date == 1) return bytes;  // a broadcast has none
    constexpr uint64_t kTicks = 10000000;
    constexpr int64_t kFrom1601To1970 = 11644473600;
    EXPECT_EQ(date % kTicks, 0u);
    EXPECT_GE(date / kTicks, static_cast<uint64_t>(m_opened + kFrom1601To1970));
    EXPECT_LE(date / kTicks, static_cast<uint64_t>(std::time(nullptr) + kFrom1601To1970));
    std::fill_n(bytes.begin() + kDateAt, 8, static_cast<unsigned char>(0));
    return bytes;
}

::testing::AssertionResult IsAt(const Support::Block& block, uint64_t position, std::size_t size)
{
    if (block.structSize == 40 && block.origin == 0 &&
        block.position == static_cast<int64_t>(position) &&
        block.narrow == static_cast<uint32_t>(position) && block.size == static_cast<int>(size))
    {
        return ::testing::AssertionSuccess();
    }
    return ::testing::AssertionFailure() << "record of " << block.structSize << " bytes, origin "
                                         << block.origin << ", positions " << block.narrow
                                         << " and " << block.position << ", size " << block.size;
}

}  // namespace GoldenAsf

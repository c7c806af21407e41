#include "golden/mkv/Pieces.h"

#include <stdexcept>

namespace Golden
{

using Support::Append;
using Support::Hex;
using Support::Join;
using Support::Msb16;
using Support::Msb32;
using Support::Msb64;
using Support::Text;
using Support::U8;
using Support::Zero;

namespace
{

/// A size in its shortest form; an all-ones pattern stands for an unknown size and is passed over.
Bytes ShortSize(std::size_t size)
{
    if (size < 127) return U8(static_cast<uint32_t>(0x80 | size));
    if (size < 16383) return Msb16(static_cast<uint32_t>(0x4000 | size));
    if (size < 2097151) return Support::Msb24(static_cast<uint32_t>(0x200000 | size));
    throw std::logic_error("no test needs a longer size");
}

}  // namespace

Bytes Size8(uint64_t size)
{
    return Msb64(uint64_t{1} << 56 | size);
}

Bytes EbmlHeader()
{
    return Join({
        Hex("1A 45 DF A3"),                       // EBML
        Hex("01 00 00 00 00 00 00 23"),           // 35 bytes
        Hex("42 86 81 01"),                       // EBMLVersion 1
        Hex("42 F7 81 01"),                       // EBMLReadVersion 1
        Hex("42 F2 81 04"),                       // EBMLMaxIDLength 4
        Hex("42 F3 81 08"),                       // EBMLMaxSizeLength 8
        Hex("42 82 88 6D 61 74 72 6F 73 6B 61"),  // DocType "matroska"
        Hex("42 87 81 04"),                       // DocTypeVersion 4
        Hex("42 85 81 02"),                       // DocTypeReadVersion 2
    });
}

Bytes Seeks(uint32_t info, uint32_t tracks, uint32_t cues)
{
    return Join({
        Hex("4D BB 8E"),              // Seek
        Hex("53 AB 84 15 49 A9 66"),  // SeekID: Info
        Hex("53 AC 84"),              // SeekPosition
        Msb32(info),
        Hex("4D BB 8E"),
        Hex("53 AB 84 16 54 AE 6B"),  // Tracks
        Hex("53 AC 84"),
        Msb32(tracks),
        Hex("4D BB 8E"),
        Hex("53 AB 84 1C 53 BB 6B"),  // Cues
        Hex("53 AC 84"),
        Msb32(cues),
    });
}

Bytes SeekHead(uint32_t info, uint32_t tracks, uint32_t cues)
{
    return Join({
        Hex("11 4D 9B 74"),  // SeekHead
        Hex("B3"),           // 51 bytes
        Seeks(info, tracks, cues),
        Hex("EC"),                       // Void
        Hex("01 00 00 00 00 00 01 B3"),  // 435 bytes
        Zero(435),
    });
}

Bytes Info(uint64_t date)
{
    return Join({
        Hex("15 49 A9 66"),              // Info
        Hex("01 00 00 00 00 00 00 32"),  // 50 bytes
        Hex("2A D7 B1 83 0F 42 40"),     // TimestampScale 1000000
        Hex("44 61 88"),                 // DateUTC
        Msb64(date),
        Hex("4D 80 8D"),  // MuxingApp
        Text("Lavf55.33.100"),
        Hex("57 41 8D"),  // WritingApp
        Text("Lavf55.33.100"),
    });
}

Bytes VideoEntry::Element() const
{
    const Bytes contents = Join({
        Hex("D7 81 01"),     // TrackNumber 1
        Hex("73 C5 81 01"),  // TrackUID 1
        Hex("83 81 01"),     // TrackType: video
        Hex("86"),           // CodecID
        ShortSize(codecId.size()),
        codecId,
        defaultDuration == 0 ? Bytes() : Join({Hex("23 E3 83 84"), Msb32(defaultDuration)}),
        Hex("22 B5 9C 83 75 6E 64"),  // Language "und"
        Hex("63 A2"),                 // CodecPrivate
        ShortSize(codecPrivate.size()),
        codecPrivate,
        Hex("E0 88"),  // Video
        Hex("B0 82"),  // PixelWidth
        Msb16(width),
        Hex("BA 82"),  // PixelHeight
        Msb16(height),
    });
    return Join({Hex("AE"), Size8(contents.size()), contents});
}

Bytes AvcId()
{
    return Join({Text("V_MPEG4/ISO/AVC"), Zero(1)});
}

Bytes AspId()
{
    return Join({Text("V_MPEG4/ISO/ASP"), Zero(1)});
}

Bytes AvcConfig(const Bytes& sps, const Bytes& pps)
{
    return Join({
        Hex("01"),                                             // configurationVersion
        sps.size() < 4 ? Zero(3) : Support::Slice(sps, 1, 3),  // profile, ..., level
        Hex("FF"),                                             // lengths of 4 bytes
        Hex("E1"),                                             // one SPS
        Msb16(static_cast<uint32_t>(sps.size())),
        sps,
        Hex("01"),  // one PPS
        Msb16(static_cast<uint32_t>(pps.size())),
        pps,
    });
}

Bytes EmptyAvcConfig(const Bytes& sps, const Bytes& pps)
{
    return Join({
        Zero(5),
        Hex("E0"),
        Msb16(static_cast<uint32_t>(sps.size())),
        sps,
        Hex("00"),
        Msb16(static_cast<uint32_t>(pps.size())),
        pps,
    });
}

Bytes VoidHead(uint32_t size)
{
    return Join({Hex("EC"), Size8(size)});
}

Bytes ClusterId()
{
    return Hex("1F 43 B6 75");
}

Bytes Timecode(uint32_t time)
{
    return Join({Hex("E7 82"), Msb16(time)});
}

Bytes SimpleBlock(uint32_t time, std::string_view flags, const Bytes& frame)
{
    return Join({
        Hex("A3"),
        ShortSize(frame.size() + 4),
        Hex("81"),  // track 1
        Msb16(time),
        Hex(flags),
        frame,
    });
}

Bytes Cluster(uint32_t time, const std::vector<Bytes>& blocks)
{
    Bytes contents = Timecode(time);
    for (const Bytes& block : blocks)
        Append(contents, block);
    return Join({ClusterId(), Size8(contents.size()), contents});
}

Bytes Cues(const std::vector<CuePoint>& points)
{
    Bytes bytes = Join({Hex("1C 53 BB 6B"), Size8(24 * points.size())});
    for (const CuePoint& point : points)
    {
        Append(bytes, Hex("BB 96"));  // CuePoint of 22 bytes
        Append(bytes, Hex("B3 84"));  // CueTime
        Append(bytes, Msb32(point.time));
        Append(bytes, Hex("B7 8D"));     // CueTrackPositions
        Append(bytes, Hex("F7 81 01"));  // CueTrack 1
        Append(bytes, Hex("F1 84"));     // CueClusterPosition
        Append(bytes, Msb32(point.cluster));
        Append(bytes, Hex("F0 82"));  // CueRelativePosition
        Append(bytes, Msb16(point.relative));
        Append(bytes, Hex("00"));
    }
    return bytes;
}

}  // namespace Golden

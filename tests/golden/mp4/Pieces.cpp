#include "golden/mp4/Pieces.h"

#include <stdexcept>

namespace Golden
{

using Support::Hex;
using Support::Join;
using Support::Msb16;
using Support::Msb24;
using Support::Msb32;
using Support::Msb64;
using Support::Text;
using Support::U8;
using Support::Zero;

namespace
{

/// Unity matrix of mvhd and tkhd, ISO/IEC 14496-12 8.2.2.2.
Bytes UnityMatrix()
{
    return Join({
        Msb32(0x00010000),  // a, 16.16
        Msb32(0),           // b
        Msb32(0),           // u, 2.30
        Msb32(0),           // c
        Msb32(0x00010000),  // d
        Msb32(0),           // v
        Msb32(0),           // x
        Msb32(0),           // y
        Msb32(0x40000000),  // w, 2.30
    });
}

/// Header of the full boxes: version and flags.
Bytes VersionFlags(uint32_t flags)
{
    return Join({U8(0), Msb24(flags)});
}

Bytes Times()
{
    return Join({
        Msb32(0),  // creation_time
        Msb32(0),  // modification_time
    });
}

Bytes Tkhd(uint32_t id, uint32_t duration, uint32_t volume, uint32_t width, uint32_t height)
{
    return Box(92,
               "tkhd",
               {
                   VersionFlags(0x00000F),  // enabled, in movie, in preview, in poster
                   Times(),
                   Msb32(id),        // track_ID
                   Msb32(0),         // reserved
                   Msb32(duration),  // movie units
                   Zero(8),          // reserved
                   Msb16(0),         // layer
                   Msb16(0),         // alternate_group
                   Msb16(volume),    // 8.8
                   Zero(2),          // reserved
                   UnityMatrix(),
                   Msb32(width << 16),   // 16.16
                   Msb32(height << 16),  // 16.16
               });
}

Bytes Hdlr(std::string_view subtype, std::string_view name)
{
    return Box(45,
               "hdlr",
               {
                   VersionFlags(0),
                   Msb32(0),       // pre_defined
                   Text(subtype),  // handler_type
                   Zero(12),       // reserved
                   Text(name),
                   U8(0),  // end of the name
               });
}

/// The 28 bytes of an audio sample entry, ISO/IEC 14496-12 12.2.3, in the QuickTime names.
Bytes SoundEntry(
    uint32_t version, uint32_t channels, uint32_t bits, uint32_t compression, uint32_t rate)
{
    return Join({
        Zero(6),             // reserved
        Msb16(1),            // data_reference_index
        Msb16(version),      // version
        Msb16(0),            // revision level
        Msb32(0),            // vendor
        Msb16(channels),     // channelcount
        Msb16(bits),         // samplesize
        Msb16(compression),  // compression id
        Msb16(0),            // packet size
        Msb32(rate << 16),   // samplerate, 16.16
    });
}

template <typename Number, typename Write>
Bytes Table(std::initializer_list<Number> rows, Write write)
{
    Bytes table;
    for (const Number row : rows)
    {
        Support::Append(table, write(row));
    }
    return table;
}

}  // namespace

Bytes BoxOf(std::string_view type, std::initializer_list<Bytes> contents)
{
    const Bytes payload = Join(contents);
    return Join({Msb32(static_cast<uint32_t>(payload.size() + 8)), Text(type), payload});
}

Bytes Box(uint32_t size, std::string_view type, std::initializer_list<Bytes> fields)
{
    Bytes box = BoxOf(type, fields);
    if (box.size() != size)
    {
        throw std::logic_error(std::string(type) + " is typed with another size than its fields");
    }
    return box;
}

// ISO/IEC 14496-12 4.3
Bytes FtypMp4()
{
    return Box(32,
               "ftyp",
               {
                   Text("isom"),  // major_brand
                   Msb32(512),    // minor_version
                   Text("isom"),  // compatible_brands
                   Text("iso2"),
                   Text("avc1"),
                   Text("mp41"),
               });
}

Bytes FtypMov()
{
    return Box(20,
               "ftyp",
               {
                   Text("qt  "),  // major_brand
                   Msb32(512),    // minor_version
                   Text("qt  "),  // compatible_brands
               });
}

// ISO/IEC 14496-12 8.2.2
Bytes Mvhd(uint32_t duration, uint32_t nextTrack)
{
    return Box(108,
               "mvhd",
               {
                   VersionFlags(0),
                   Times(),
                   Msb32(90000),       // timescale
                   Msb32(duration),    // longest track
                   Msb32(0x00010000),  // rate 1.0
                   Msb16(0x0100),      // volume 1.0
                   Zero(2),            // reserved
                   Zero(8),            // reserved
                   UnityMatrix(),
                   Zero(24),          // pre_defined
                   Msb32(nextTrack),  // next_track_ID
               });
}

// ISO/IEC 14496-12 8.3.2
Bytes TkhdVideo(uint32_t duration, uint32_t width, uint32_t height)
{
    return Tkhd(1, duration, 0, width, height);
}

Bytes TkhdAudio(uint32_t duration)
{
    return Tkhd(2, duration, 0x0100, 0, 0);
}

// ISO/IEC 14496-12 8.4.2
Bytes Mdhd(uint32_t timescale, uint32_t duration)
{
    return Box(32,
               "mdhd",
               {
                   VersionFlags(0),
                   Times(),
                   Msb32(timescale),
                   Msb32(duration),  // media units
                   Msb16(0x55C4),    // language "und"
                   Msb16(0),         // quality
               });
}

// ISO/IEC 14496-12 8.4.3
Bytes HdlrVideo()
{
    return Hdlr("vide", "VideoHandler");
}
Bytes HdlrAudio()
{
    return Hdlr("soun", "SoundHandler");
}

// ISO/IEC 14496-12 12.1.2
Bytes Vmhd()
{
    return Box(20,
               "vmhd",
               {
                   VersionFlags(1),
                   Msb16(0),  // graphicsmode copy
                   Zero(6),   // opcolor
               });
}

// ISO/IEC 14496-12 12.2.2
Bytes Smhd()
{
    return Box(16,
               "smhd",
               {
                   VersionFlags(0),
                   Msb16(0),  // balance
                   Zero(2),   // reserved
               });
}

// ISO/IEC 14496-12 8.7.1 and 8.7.2
Bytes Dinf()
{
    return Box(36,
               "dinf",
               {Box(28,
                    "dref",
                    {
                        VersionFlags(0),
                        Msb32(1),                            // entry_count
                        Box(12, "url ", {VersionFlags(1)}),  // media in the same file
                    })});
}

// ISO/IEC 14496-12 8.5.2
Bytes Stsd(const Bytes& entry)
{
    return BoxOf("stsd",
                 {
                     VersionFlags(0),
                     Msb32(1),  // entry_count
                     entry,
                 });
}

// ISO/IEC 14496-12 8.6.1.2
Bytes Stts(uint32_t count, uint32_t delta)
{
    return Box(24,
               "stts",
               {
                   VersionFlags(0),
                   Msb32(1),      // entry_count
                   Msb32(count),  // sample_count
                   Msb32(delta),  // sample_delta
               });
}

// ISO/IEC 14496-12 8.7.4
Bytes Stsc()
{
    return Box(28,
               "stsc",
               {
                   VersionFlags(0),
                   Msb32(1),  // entry_count
                   Msb32(1),  // first_chunk
                   Msb32(1),  // samples_per_chunk
                   Msb32(1),  // sample_description_index
               });
}

// ISO/IEC 14496-12 8.6.2
Bytes Stss(std::initializer_list<uint32_t> numbers)
{
    const auto count = static_cast<uint32_t>(numbers.size());
    return Box(16 + 4 * count,
               "stss",
               {
                   VersionFlags(0),
                   Msb32(count),           // entry_count
                   Table(numbers, Msb32),  // sample_number
               });
}

// ISO/IEC 14496-12 8.7.3.2
Bytes Stsz(std::initializer_list<uint32_t> sizes)
{
    const auto count = static_cast<uint32_t>(sizes.size());
    return Box(20 + 4 * count,
               "stsz",
               {
                   VersionFlags(0),
                   Msb32(0),      // sample_size: a table follows
                   Msb32(count),  // sample_count
                   Table(sizes, Msb32),
               });
}

// ISO/IEC 14496-12 8.7.5
Bytes Stco(std::initializer_list<uint32_t> offsets)
{
    const auto count = static_cast<uint32_t>(offsets.size());
    return Box(16 + 4 * count,
               "stco",
               {
                   VersionFlags(0),
                   Msb32(count),  // entry_count
                   Table(offsets, Msb32),
               });
}

Bytes Co64(std::initializer_list<uint64_t> offsets)
{
    const auto count = static_cast<uint32_t>(offsets.size());
    return Box(16 + 8 * count,
               "co64",
               {
                   VersionFlags(0),
                   Msb32(count),  // entry_count
                   Table(offsets, Msb64),
               });
}

// ISO/IEC 14496-12 12.1.3
Bytes VisualEntry(uint32_t width, uint32_t height)
{
    return Join({
        Zero(6),   // reserved
        Msb16(1),  // data_reference_index
        Zero(2),   // pre_defined
        Zero(2),   // reserved
        Zero(12),  // pre_defined
        Msb16(width),
        Msb16(height),
        Msb32(0x00480000),  // horizresolution, 72 dpi
        Msb32(0x00480000),  // vertresolution, 72 dpi
        Msb32(0),           // reserved
        Msb16(1),           // frame_count
        Zero(32),           // compressorname
        Msb16(0x0018),      // depth, 24 bits
        Msb16(0xFFFF),      // pre_defined
    });
}

// ISO/IEC 14496-15 5.3.4
Bytes Avc1(uint32_t width, uint32_t height, const Bytes& avcC)
{
    return BoxOf("avc1", {VisualEntry(width, height), avcC});
}

// ISO/IEC 14496-14 5.6
Bytes Mp4v(uint32_t width, uint32_t height, const Bytes& esds)
{
    return BoxOf("mp4v", {VisualEntry(width, height), esds});
}

Bytes Jpeg(uint32_t width, uint32_t height)
{
    return Box(86, "jpeg", {VisualEntry(width, height)});
}

// ISO/IEC 14496-15 5.3.3.1
Bytes AvcC(const Bytes& sps, const Bytes& pps)
{
    return BoxOf("avcC",
                 {
                     U8(1),          // configurationVersion
                     U8(sps.at(1)),  // AVCProfileIndication
                     U8(sps.at(2)),  // profile_compatibility
                     U8(sps.at(3)),  // AVCLevelIndication
                     U8(0xFF),       // 6 reserved ones, lengthSizeMinusOne 3
                     U8(0xE1),       // 3 reserved ones, numOfSequenceParameterSets 1
                     Msb16(static_cast<uint32_t>(sps.size())),
                     sps,
                     U8(1),  // numOfPictureParameterSets
                     Msb16(static_cast<uint32_t>(pps.size())),
                     pps,
                 });
}

// ISO/IEC 14496-14 5.6, descriptors of ISO/IEC 14496-1 7.2.6
Bytes Esds(uint32_t id, uint32_t objectType, uint32_t streamType, const Bytes& info)
{
    const auto length = static_cast<uint32_t>(info.size());
    if (length > 95)
    {
        throw std::logic_error("a length field would need a second byte");
    }
    return Box(49 + length,
               "esds",
               {
                   VersionFlags(0),
                   Hex("03 80 80 80"),       // ES_DescrTag
                   U8(3 + 23 + length + 6),  // what follows: 32 and the information
                   Msb16(id),                // ES_ID
                   U8(0x10),                 // no dependence, URL or OCR; priority 16
                   Hex("04 80 80 80"),       // DecoderConfigDescrTag
                   U8(13 + 5 + length),      // its fields and the information with its header
                   U8(objectType),           // objectTypeIndication
                   U8(streamType),           // streamType, upStream, reserved
                   Msb24(0),                 // bufferSizeDB
                   Msb32(0),                 // maxBitrate
                   Msb32(0),                 // avgBitrate
                   Hex("05 80 80 80"),       // DecSpecificInfoTag
                   U8(length),
                   info,
                   Hex("06 80 80 80"),  // SLConfigDescrTag
                   U8(1),
                   U8(2),  // predefined: MP4 file
               });
}

Bytes EsdsBare(uint32_t id, uint32_t objectType, uint32_t streamType)
{
    return Box(44,
               "esds",
               {
                   VersionFlags(0),
                   Hex("03 80 80 80"),  // ES_DescrTag
                   U8(27),              // 3 + 18 + 6
                   Msb16(id),           // ES_ID
                   U8(0x10),            // no dependence, URL or OCR; priority 16
                   Hex("04 80 80 80"),  // DecoderConfigDescrTag
                   U8(13),
                   U8(objectType),      // objectTypeIndication
                   U8(streamType),      // streamType, upStream, reserved
                   Msb24(0),            // bufferSizeDB
                   Msb32(0),            // maxBitrate
                   Msb32(0),            // avgBitrate
                   Hex("06 80 80 80"),  // SLConfigDescrTag
                   U8(1),
                   U8(2),  // predefined: MP4 file
               });
}

Bytes Mp4aMp4(uint32_t channels, uint32_t bits, uint32_t rate, const Bytes& esds)
{
    return BoxOf("mp4a", {SoundEntry(0, channels, bits, 0, rate), esds});
}

// QuickTime file format, sound sample description version 1 and its siDecompressionParam atom
Bytes Mp4aMov(uint32_t channels, uint32_t bits, uint32_t rate, const Bytes& esds)
{
    return BoxOf("mp4a",
                 {
                     SoundEntry(1, channels, bits, 0xFFFE, rate),
                     Msb32(1024),  // samples per packet
                     Msb32(0),     // bytes per packet
                     Msb32(0),     // bytes per frame
                     Msb32(2),     // bytes per sample
                     BoxOf("wave",
                           {
                               Box(12, "frma", {Text("mp4a")}),
                               Box(12, "mp4a", {Msb32(0)}),
                               esds,
                           }),
                 });
}

}  // namespace Golden

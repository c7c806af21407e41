#include "golden/avi/Pieces.h"

#include <stdexcept>

namespace Golden
{

using Support::Append;
using Support::Join;
using Support::Lsb16;
using Support::Lsb32;
using Support::Lsb64;
using Support::Text;
using Support::U8;
using Support::Zero;

namespace
{

Bytes Sized(std::size_t size, Bytes bytes)
{
    if (bytes.size() != size)
    {
        throw std::logic_error("the fields make " + std::to_string(bytes.size()) + " bytes of " +
                               std::to_string(size));
    }
    return bytes;
}

}  // namespace

Bytes RiffHeader(uint32_t size, std::string_view form)
{
    return Join({Text("RIFF"), Lsb32(size), Text(form)});
}

Bytes MoviHeader(uint32_t size)
{
    return Join({Text("LIST"), Lsb32(size), Text("movi")});
}

Bytes Avih::Chunk() const
{
    return Sized(64,
                 Join({
                     Text("avih"),
                     Lsb32(56),
                     Lsb32(microSecPerFrame),
                     Lsb32(maxBytesPerSec),
                     Lsb32(0),      // dwPaddingGranularity
                     Lsb32(0x810),  // dwFlags: AVIF_HASINDEX, AVIF_TRUSTCKTYPE
                     Lsb32(totalFrames),
                     Lsb32(0),  // dwInitialFrames
                     Lsb32(streams),
                     Lsb32(suggestedBufferSize),
                     Lsb32(width),
                     Lsb32(height),
                     Zero(16),  // dwReserved[4]
                 }));
}

Bytes VideoStrl::List() const
{
    const Bytes strh = Sized(64,
                             Join({
                                 Text("strh"),      Lsb32(56),
                                 Text("vids"),      code,
                                 Lsb32(0),  // dwFlags
                                 Lsb16(0),  // wPriority
                                 Lsb16(0),  // wLanguage
                                 Lsb32(0),  // dwInitialFrames
                                 Lsb32(1),  // dwScale
                                 Lsb32(rate),
                                 Lsb32(0),  // dwStart
                                 Lsb32(length),     Lsb32(suggestedBufferSize),
                                 Lsb32(0xFFFFFFFF),  // dwQuality: default
                                 Lsb32(2),           // dwSampleSize
                                 Lsb16(0),           // rcFrame left
                                 Lsb16(0),           // top
                                 Lsb16(width),       // right
                                 Lsb16(height),      // bottom
                             }));
    const Bytes strf = Sized(48,
                             Join({
                                 Text("strf"),
                                 Lsb32(40),
                                 Lsb32(40),  // biSize
                                 Lsb32(width),
                                 Lsb32(height),
                                 Lsb16(1),   // biPlanes
                                 Lsb16(24),  // biBitCount
                                 code,
                                 Lsb32(sizeImage),
                                 Lsb32(0),  // biXPelsPerMeter
                                 Lsb32(0),  // biYPelsPerMeter
                                 Lsb32(0),  // biClrUsed
                                 Lsb32(0),  // biClrImportant
                             }));
    return Sized(1156,
                 Join({Text("LIST"),
                       Lsb32(1148),
                       Text("strl"),
                       strh,
                       strf,
                       index.empty() ? Indx("00dc", {}) : index}));
}

Bytes AudioStrl::List() const
{
    const Bytes strh = Sized(64,
                             Join({
                                 Text("strh"),      Lsb32(56),
                                 Text("auds"),
                                 Lsb32(1),  // fccHandler
                                 Lsb32(0),  // dwFlags
                                 Lsb16(0),  // wPriority
                                 Lsb16(0),  // wLanguage
                                 Lsb32(0),  // dwInitialFrames
                                 Lsb32(2),  // dwScale
                                 Lsb32(rate),
                                 Lsb32(0),  // dwStart
                                 Lsb32(length),     Lsb32(suggestedBufferSize),
                                 Lsb32(0xFFFFFFFF),  // dwQuality: default
                                 Lsb32(2),           // dwSampleSize
                                 Lsb16(0),           // rcFrame left
                                 Lsb16(0),           // top
                                 Lsb16(width),       // right: of the picture
                                 Lsb16(height),      // bottom
                             }));
    const Bytes strf = Sized(26,
                             Join({
                                 Text("strf"),
                                 Lsb32(18),
                                 Lsb16(formatTag),
                                 Lsb16(channels),
                                 Lsb32(samplesPerSec),
                                 Lsb32(avgBytesPerSec),
                                 Lsb16(blockAlign),
                                 Lsb16(bitsPerSample),
                                 Lsb16(0),  // cbSize
                             }));
    return Sized(1134,
                 Join({Text("LIST"),
                       Lsb32(1126),
                       Text("strl"),
                       strh,
                       strf,
                       index.empty() ? Indx("01wb", {}) : index}));
}

Bytes Indx(std::string_view chunkId, const std::vector<SuperEntry>& entries)
{
    Bytes bytes = Join({
        Text(entries.empty() ? "JUNK" : "indx"),
        Lsb32(1024),
        Lsb16(4),  // wLongsPerEntry
        U8(0),     // bIndexSubType
        U8(0),     // bIndexType: AVI_INDEX_OF_INDEXES
        Lsb32(static_cast<uint32_t>(entries.size())),
        Text(chunkId),
        Zero(12),  // dwReserved[3]
    });
    for (const SuperEntry& entry : entries)
    {
        Append(bytes, Lsb64(entry.offset));
        Append(bytes, Lsb32(entry.size));
        Append(bytes, Lsb32(entry.chunks));
    }
    Append(bytes, Zero(1032 - bytes.size()));
    return bytes;
}

Bytes Odml(uint32_t totalFrames)
{
    return Sized(268,
                 Join({
                     Text("odml"),
                     Lsb32(260),
                     Text("odml"),
                     Text("dmlh"),
                     Lsb32(248),
                     Lsb32(totalFrames),
                     Zero(244),
                 }));
}

Bytes Junk(uint32_t size)
{
    return Join({Text("JUNK"), Lsb32(size), Zero(size)});
}

Bytes Hdrl(std::initializer_list<Bytes> chunks)
{
    return Sized(4104, Join({Text("LIST"), Lsb32(4096), Text("hdrl"), Join(chunks)}));
}

Bytes Chunk(std::string_view code, const Bytes& data)
{
    return Join({
        Text(code),
        Lsb32(static_cast<uint32_t>(data.size())),
        data,
        Zero(data.size() % 2),
    });
}

Bytes Idx1(std::initializer_list<Idx1Entry> entries)
{
    Bytes bytes = Join({Text("idx1"), Lsb32(16 * static_cast<uint32_t>(entries.size()))});
    for (const Idx1Entry& entry : entries)
    {
        Append(bytes, Text(entry.code));
        Append(bytes, Zero(4));
        Append(bytes, Lsb32(entry.key));
        Append(bytes, Lsb32(entry.offset));
    }
    return bytes;
}

Bytes Ix(std::string_view code,
         std::string_view chunkId,
         uint64_t baseOffset,
         const std::vector<IxEntry>& entries)
{
    const auto count = static_cast<uint32_t>(entries.size());
    Bytes bytes = Join({
        Text(code),
        Lsb32(24 + 8 * count),
        Lsb16(2),  // wLongsPerEntry
        U8(0),     // bIndexSubType
        U8(1),     // bIndexType: AVI_INDEX_OF_CHUNKS
        Lsb32(count),
        Text(chunkId),
        Lsb64(baseOffset),
        Lsb32(0),  // dwReserved3
    });
    for (const IxEntry& entry : entries)
    {
        Append(bytes, Lsb32(entry.offset));
        Append(bytes, Lsb32(entry.size));
    }
    return bytes;
}

}  // namespace Golden

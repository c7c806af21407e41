#ifndef WRAPTON_AVIPACKET_AVIDEFS_H
#define WRAPTON_AVIPACKET_AVIDEFS_H

#include <cstdint>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/// A four-character code, the first character lowest. It is 8 bytes wide with 4 zero bytes on top,
/// and idx1 entries store all 8.
using fourcc_t = uint64_t;

constexpr fourcc_t FourCc(const char (&code)[5])
{
    fourcc_t value = 0;
    for (unsigned at = 4; at-- != 0;)
    {
        value = value << 8 | static_cast<unsigned char>(code[at]);
    }
    return value;
}

constexpr fourcc_t kVideoChunk = FourCc("00dc");
constexpr fourcc_t kAudioChunk = FourCc("01wb");

inline void PutFourCC(CLsbCursor& w, fourcc_t code)
{
    w.U32(static_cast<uint32_t>(code));  // the upper half is zero
}

/// Streams as the indexes count them.
enum eAviStream : uint32_t
{
    AVI_VIDEO_STREAM = 1,
    AVI_AUDIO_STREAM = 2
};

/// Receives bytes and their absolute position in the file.
using pRiffCallback = void (*)(const unsigned char* data,
                               uint32_t length,
                               uint64_t position,
                               void* user);

/// A RIFF whose size field passes this is closed, and another one follows.
constexpr uint32_t kRiffSizeLimit = 1u << 30;

/// The "RIFF" header of a file or of an extension.
struct Avi_FileHeader
{
    uint32_t filesize = 0;
};

/// The "LIST" "movi" header.
struct Avi_MovieList
{
    uint32_t size = 0;
};

/// A standard index chunk as the super index points at it.
struct superindex_entry
{
    uint64_t offset = 0;  // absolute, of the index chunk
    uint32_t size = 0;    // of the whole index chunk
    uint32_t entrycount = 0;
};

/// A data chunk in a standard index.
struct stdindex_entry
{
    uint32_t offset = 0;  // of the data, relative to the index's base offset
    uint32_t size = 0;    // without padding; bit 31: not a key frame
};

/// A data chunk in the index of the first RIFF.
struct Avi_Idx1Entry
{
    fourcc_t tag = 0;
    uint32_t key = 0;     // AVIIF_KEYFRAME or 0
    uint32_t offset = 0;  // of the chunk, relative to the "movi" code
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_AVIPACKET_AVIDEFS_H

#ifndef WRAPTON_OMFPACKET_OMFEXHEADER_H
#define WRAPTON_OMFPACKET_OMFEXHEADER_H

#include <cstddef>
#include <cstdint>

#include "Wrapton.h"
#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/// The picture as the last key frame described it.
struct Omf_VideoFormat
{
    uint32_t encode = 0;  // SG_ENCODE_VIDEO_TYPE
    uint32_t deinterlace = 0;
    uint32_t width = 0;
    uint32_t height = 0;
    uint32_t frame_rate = 0;
};

/// The sound as its frame describes it.
struct Omf_AudioFormat
{
    uint32_t encode = 0;  // SG_ENCODE_AUDIO_TYPE
    uint32_t channels = 0;
    uint32_t sample_rate = 0;
    uint32_t bit_rate = 0;
};

// One writer per extension header: a tag byte, then fields that complete 4 or 8 bytes (the split
// header has 8 and 16 per block record). A number that is wider than its field loses its high bits.

void AddExHeaderImageSize(CLsbCursor& w, const Omf_VideoFormat& video);
void AddExHeaderPlayBack(CLsbCursor& w, const Omf_VideoFormat& video);
void AddExHeaderAudioFormat(CLsbCursor& w, const Omf_AudioFormat& audio);
/// @return the place of the check value: it is 0 until it is patched
size_t AddExHeaderDataCheck(CLsbCursor& w, uint8_t check_type);
/// Kept: the header's length is an 8-bit number, 16 blocks make it start over. As many bytes are
/// written as it says. There are no block records when the caller gave none or a negative count.
void AddExHeaderSplit(CLsbCursor& w, const SGSplitInfo& split, const Omf_VideoFormat& video);
void AddExHeaderRotation(CLsbCursor& w, uint32_t angle);
void AddExHeaderCompanyType(CLsbCursor& w, uint32_t company_type, uint32_t foreign_header_length);

/// The longest run of extension headers, that of a video frame.
inline constexpr size_t kOmfExHeadersMax = 8 + 4 + 8 + (8 + 15 * 16) + 4 + 8;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_OMFPACKET_OMFEXHEADER_H

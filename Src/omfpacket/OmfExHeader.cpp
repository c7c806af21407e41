#include "omfpacket/OmfExHeader.h"

#include "omfpacket/OmfFormat.h"

namespace Orbel::Wrapton
{
namespace
{

/// Sides of at most 8 bits in units of 8 pixels.
constexpr uint32_t kSmallSideMax = 2047;

bool IsSmallSide(uint32_t side)
{
    return side % 8 == 0 && side <= kSmallSideMax;
}

uint32_t BitRateCode(uint32_t bit_rate)
{
    switch (bit_rate)
    {
        case 16000:
            return 1;
        case 32000:
            return 2;
        default:
            return 0;
    }
}

/// How many block records the header's 8-bit length covers.
uint32_t CountBlocks(const SGSplitInfo& split)
{
    if (split.pblock == nullptr) return 0;
    if (split.block_n < 0 || split.block_m < 0) return 0;

    const auto blocks = static_cast<uint64_t>(split.block_n) * static_cast<uint64_t>(split.block_m);
    return static_cast<uint32_t>(blocks % 16);
}

void PutBlock(CLsbCursor& w, const SGBlockInfo& block)
{
    w.U16(static_cast<uint16_t>(block.left));
    w.U16(static_cast<uint16_t>(block.top));
    w.U16(static_cast<uint16_t>(block.right));
    w.U16(static_cast<uint16_t>(block.bottom));
    w.U32(static_cast<uint32_t>(block.offset));
    w.U32(static_cast<uint32_t>(block.reserved));
}

}  // namespace

void AddExHeaderImageSize(CLsbCursor& w, const Omf_VideoFormat& video)
{
    if (IsSmallSide(video.width) && IsSmallSide(video.height))
    {
        w.U8(kOmfExImageSize);
        w.U8(2 - video.deinterlace);
        w.U8(video.width / 8);
        w.U8(video.height / 8);
        return;
    }
    w.U8(kOmfExLargeImageSize);
    w.U8(2 - video.deinterlace);
    w.Fill(2, 0);
    w.U16(video.width);
    w.U16(video.height);
}

void AddExHeaderPlayBack(CLsbCursor& w, const Omf_VideoFormat& video)
{
    w.U8(kOmfExPlayBack);
    w.Fill(1, 0);
    w.U8(OmfVideoEncode(video.encode));
    w.U8(video.frame_rate);
}

void AddExHeaderAudioFormat(CLsbCursor& w, const Omf_AudioFormat& audio)
{
    if (audio.bit_rate == 0)
    {
        w.U8(kOmfExAudioFormat);
        w.U8(audio.channels);
        w.U8(audio.encode);
        w.U8(OmfSampleRateIndex(audio.sample_rate));
        return;
    }
    w.U8(kOmfExAudioFormatRate);
    w.U8(8);  // length of this header
    w.U8(audio.channels);
    w.U8(audio.encode);
    w.U8(OmfSampleRateIndex(audio.sample_rate));
    w.U8(BitRateCode(audio.bit_rate));
    w.Fill(2, 0);
}

size_t AddExHeaderDataCheck(CLsbCursor& w, uint8_t check_type)
{
    w.U8(kOmfExDataCheck);
    const size_t value_at = w.Produced();
    w.U32(0);
    w.Fill(2, 0);
    w.U8(check_type);
    return value_at;
}

void AddExHeaderSplit(CLsbCursor& w, const SGSplitInfo& split, const Omf_VideoFormat& video)
{
    w.U8(kOmfExSplit);
    w.U8(static_cast<uint8_t>(split.block_n));
    w.U8(static_cast<uint8_t>(split.block_m));
    w.U16(video.width);
    w.U16(video.height);
    w.Fill(1, 0);
    const uint32_t blocks = CountBlocks(split);
    for (uint32_t i = 0; i < blocks; ++i)
    {
        PutBlock(w, split.pblock[i]);
    }
}

void AddExHeaderRotation(CLsbCursor& w, uint32_t angle)
{
    w.U8(kOmfExRotation);
    w.U8(angle);
    w.Fill(2, 0);
}

void AddExHeaderCompanyType(CLsbCursor& w, uint32_t company_type, uint32_t foreign_header_length)
{
    w.U8(kOmfExCompanyType);
    w.Fill(1, 0);
    w.U16(company_type);
    w.U16(foreign_header_length);
    w.Fill(2, 0);
}

}  // namespace Orbel::Wrapton

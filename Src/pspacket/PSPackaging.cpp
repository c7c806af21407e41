#include "pspacket/PSPackaging.h"

namespace Orbel::Wrapton
{
namespace
{

uint32_t SampleBytes(uint32_t encode)
{
    if (encode == SG_ENCODE_AUDIO_AAC) return 2048;
    if (encode == SG_ENCODE_AUDIO_MP2) return 2304;
    return 0;
}

}  // namespace

uint32_t IPSPackaging::GetDuration(const SGFrameInfo* pFrame) const
{
    constexpr uint32_t kBitsTimesClock = 8 * 90000;

    const uint32_t bits_per_second =
        pFrame->sample_rate * pFrame->bit_per_sample * pFrame->channels;
    if (bits_per_second == 0) return 0;  // also when the product wraps to it
    return SampleBytes(pFrame->frame_encode) * kBitsTimesClock / bits_per_second;
}

bool IPSPackaging::HasData(const SGFrameInfo* pFrame)
{
    return pFrame->frame_pointer != nullptr && pFrame->frame_size != 0;
}

bool IPSPackaging::IsVideoPackable(const SGFrameInfo* pFrame)
{
    return HasData(pFrame) && pFrame->frame_size <= kMostVideoLen;
}

std::span<const unsigned char> IPSPackaging::BytesOf(const SGFrameInfo* pFrame)
{
    return {pFrame->frame_pointer, pFrame->frame_size};
}

}  // namespace Orbel::Wrapton

#include "golden/wav/Recording.h"

#include <utility>

namespace Golden
{

using namespace Orbel::Wrapton;
using Support::Bytes;
using Support::Lsb16;
using Support::Lsb32;
using Support::Text;

Bytes WavHeader(uint32_t fileSizeLess8, uint32_t dataSize)
{
    return Support::Join({
        Text("RIFF"),          // chunk
        Lsb32(fileSizeLess8),  // its size
        Text("WAVE"),          // form
        Text("fmt "),          // chunk
        Lsb32(16),             // its size
        Lsb16(1),              // format tag: PCM
        Lsb16(1),              // channels
        Lsb32(8000),           // samples per second
        Lsb32(16000),          // bytes per second
        Lsb16(2),              // bytes per sample of all channels
        Lsb16(16),             // bits per sample
        Text("data"),          // chunk
        Lsb32(dataSize),       // its size
    });
}

Support::Frame Pcm16(Bytes bytes)
{
    return Support::Audio(SG_ENCODE_AUDIO_PCM16, std::move(bytes), 8000, 1, 16);
}

Support::Frame Alaw(Bytes bytes)
{
    return Support::Audio(SG_ENCODE_AUDIO_G711A, std::move(bytes), 8000, 1, 8);
}

::testing::AssertionResult IsBlock(const Support::Block& block,
                                   int64_t position,
                                   const Bytes& bytes)
{
    if (block.structSize != 40 || block.origin != 0 || block.position != position ||
        block.narrow != static_cast<uint32_t>(position))
    {
        return ::testing::AssertionFailure()
               << "record of " << block.structSize << " bytes, origin " << block.origin
               << ", position " << block.position << " (narrow " << block.narrow << ")";
    }
    return Support::Same(block.data, bytes);
}

}  // namespace Golden

#include "tool/StreamTool.h"

#include <array>

#include "Wrapton.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr std::array<uint16_t, 31> kFormatTags = []
{
    std::array<uint16_t, 31> tags{};
    tags[SG_ENCODE_AUDIO_G729] = 0x0044;
    tags[SG_ENCODE_PCM_MULAW] = 0x0007;
    tags[SG_ENCODE_AUDIO_G721] = 0x0040;
    tags[SG_ENCODE_MS_ADPCM] = 0x0002;
    tags[SG_ENCODE_AUDIO_G711A] = 0x0006;
    tags[SG_ENCODE_AUDIO_AMR] = 0x4201;
    tags[SG_ENCODE_AUDIO_PCM16] = 0x0001;
    tags[SG_ENCODE_AUDIO_G711U] = 0x0007;
    tags[23] = 0x0014;  // G.723 under the number that SG_ENCODE_AUDIO_TYPE leaves free
    return tags;
}();
static_assert(kFormatTags[SG_ENCODE_AUDIO_PCM] == 0);
static_assert(kFormatTags[SG_ENCODE_AUDIO_AAC] == 0);

}  // namespace

uint32_t LSB_guid_to_memory(unsigned char* memory, const _GUID& value) noexcept
{
    if (memory == nullptr) return 0;

    uint32_t written = LSB_uint32_to_memory(memory, value.Data1);
    written += LSB_uint16_to_memory(memory + written, value.Data2);
    written += LSB_uint16_to_memory(memory + written, value.Data3);
    for (const uint8_t byte : value.Data4)
    {
        memory[written++] = byte;
    }
    return written;
}

uint32_t CompactIntSize(int32_t value) noexcept
{
    if (value <= 0x7F) return 1;
    if (value <= 0x3FFF) return 2;
    if (value < 0x200000) return 3;
    return 4;
}

uint32_t MSB_compact_int_to_memory(unsigned char* memory, int32_t value) noexcept
{
    if (memory == nullptr) return 0;

    const uint32_t size = CompactIntSize(value);
    uint32_t rest = static_cast<uint32_t>(value);
    for (uint32_t k = 0; k < size; ++k)
    {
        const uint32_t mark = k == 0 ? 0u : 0x80u;
        memory[k] = static_cast<unsigned char>((rest & 0x7F) | mark);
        rest >>= 7;
    }
    return size;
}

uint32_t LSB_compact_int_to_memory(unsigned char* memory, int32_t value) noexcept
{
    return MSB_compact_int_to_memory(memory, value);
}

uint16_t get_codec_id(unsigned int encode) noexcept
{
    return encode < kFormatTags.size() ? kFormatTags[encode] : uint16_t{0};
}

}  // namespace Orbel::Wrapton

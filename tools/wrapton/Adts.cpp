#include "Adts.h"

namespace Orbel::Wrapton::Command
{
namespace
{

/// ISO/IEC 14496-3, table 1.18.
constexpr std::array<uint32_t, 13> kRates = {
    96000, 88200, 64000, 48000, 44100, 32000, 24000, 22050, 16000, 12000, 11025, 8000, 7350};

/// Speakers of a channel configuration, ISO/IEC 14496-3, table 1.19.
constexpr std::array<uint32_t, 8> kChannels = {0, 1, 2, 3, 4, 5, 6, 8};

constexpr unsigned int kObjectSbr = 5;
constexpr unsigned int kObjectPs = 29;
constexpr unsigned int kObjectEscape = 31;
constexpr unsigned int kRateEscape = 15;

/// Most significant bit first; past the end it reads zeros and says so.
class BitReader
{
public:
    explicit BitReader(std::span<const unsigned char> bytes) : m_bytes(bytes) {}

    unsigned int Read(unsigned int count)
    {
        unsigned int value = 0;
        for (unsigned int i = 0; i < count; ++i, ++m_nAt)
        {
            const unsigned int byte = m_nAt / 8 < m_bytes.size() ? m_bytes[m_nAt / 8] : 0U;
            value = value << 1 | (byte >> (7 - m_nAt % 8) & 1U);
        }
        return value;
    }

    [[nodiscard]] bool PastEnd() const { return m_nAt > m_bytes.size() * 8; }

private:
    std::span<const unsigned char> m_bytes;
    std::size_t m_nAt = 0;
};

unsigned int ReadObjectType(BitReader& bits)
{
    const unsigned int type = bits.Read(5);
    return type == kObjectEscape ? 32 + bits.Read(6) : type;
}

/// A rate written out is taken when the table has it.
unsigned int ReadRateIndex(BitReader& bits)
{
    const unsigned int index = bits.Read(4);
    if (index != kRateEscape) return index;
    const uint32_t rate = bits.Read(24);
    for (unsigned int i = 0; i < kRates.size(); ++i)
        if (kRates.at(i) == rate) return i;
    return kRateEscape;
}

}  // namespace

uint32_t AacConfig::SampleRate() const
{
    return rate_index < kRates.size() ? kRates.at(rate_index) : 0;
}

uint32_t AacConfig::Channels() const
{
    return channel_config < kChannels.size() ? kChannels.at(channel_config) : 0;
}

std::optional<AdtsHeader> ReadAdts(std::span<const unsigned char> frame)
{
    if (frame.size() < kAdtsLen) return std::nullopt;
    if (frame[0] != 0xFF || (frame[1] & 0xF6) != 0xF0) return std::nullopt;  // syncword, layer 0

    AdtsHeader header;
    header.config.object_type = (frame[2] >> 6) + 1U;
    header.config.rate_index = frame[2] >> 2 & 15U;
    header.config.channel_config = (frame[2] & 1U) << 2 | frame[3] >> 6;
    header.header_len = (frame[1] & 1) != 0 ? kAdtsLen : kAdtsLen + 2;
    header.plain = frame[1] == 0xF1;
    if (frame.size() < header.header_len) return std::nullopt;
    return header;
}

bool IsEmptyAdts(std::span<const unsigned char> frame)
{
    const auto header = ReadAdts(frame);
    const auto length = [&]  // 13 bits, the header included
    { return (frame[3] & 3U) << 11 | uint32_t{frame[4]} << 3 | frame[5] >> 5; };
    return header && header->plain && length() == kAdtsLen;
}

std::optional<AacConfig> ReadAudioSpecificConfig(std::span<const unsigned char> bytes)
{
    BitReader bits(bytes);
    AacConfig config;
    config.object_type = ReadObjectType(bits);
    config.rate_index = ReadRateIndex(bits);
    config.channel_config = bits.Read(4);
    if (config.object_type == kObjectSbr || config.object_type == kObjectPs)
    {
        ReadRateIndex(bits);  // of the extension; decoders find the extension without being told
        config.object_type = ReadObjectType(bits);
    }
    const bool frames_of_960 = bits.Read(1) != 0;

    if (bits.PastEnd() || frames_of_960) return std::nullopt;
    if (config.object_type < 1 || config.object_type > 4) return std::nullopt;
    if (config.rate_index >= kRates.size()) return std::nullopt;
    if (config.channel_config < 1 || config.channel_config > 7) return std::nullopt;
    return config;
}

std::optional<std::array<unsigned char, kAdtsLen>> MakeAdts(const AacConfig& config,
                                                            std::size_t payload)
{
    const std::size_t length = payload + kAdtsLen;
    if (length > 0x1FFF) return std::nullopt;

    const auto byte = [](std::size_t value) { return static_cast<unsigned char>(value & 0xFF); };
    return std::array<unsigned char, kAdtsLen>{
        0xFF,  // syncword, 8 of 12 bits
        0xF1,  // 4 more, MPEG-4, layer 0, no CRC
        byte((config.object_type - 1U) << 6 | config.rate_index << 2 | config.channel_config >> 2),
        byte((config.channel_config & 3U) << 6 | length >> 11),
        byte(length >> 3),
        byte((length & 7U) << 5 | 0x1F),  // buffer fullness 0x7FF: variable bit rate
        0xFC,                             // and one raw data block
    };
}

}  // namespace Orbel::Wrapton::Command

#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace Orbel::Wrapton::Command
{

inline constexpr std::size_t kAdtsLen = 7;  ///< without CRC

/// What an ADTS header says of the stream, ISO/IEC 14496-3, 1.A.2.2.
struct AacConfig
{
    unsigned int object_type = 0;  ///< 1 to 4: the header has 2 bits for it
    unsigned int rate_index = 0;
    unsigned int channel_config = 0;

    /// Hz; 0 for a reserved index.
    [[nodiscard]] uint32_t SampleRate() const;
    /// 0 when the channels are described inside the frames.
    [[nodiscard]] uint32_t Channels() const;
};

struct AdtsHeader
{
    AacConfig config;
    std::size_t header_len = 0;  ///< 7, or 9 with a CRC
    bool plain = false;          ///< begins with FF F1: MPEG-4, no CRC
};

/// Reads the header at the front of a frame; nothing when there is none.
std::optional<AdtsHeader> ReadAdts(std::span<const unsigned char> frame);

/// True for a plain header that says there is nothing behind it.
bool IsEmptyAdts(std::span<const unsigned char> frame);

/// Reads an AudioSpecificConfig, ISO/IEC 14496-3, 1.6.2.1. Nothing when it describes a stream that
/// no ADTS header can stand for: another object type, a rate outside the table, channels described
/// by a program config element, frames of 960 samples. Of a stream with spectral band replication
/// it gives the core.
std::optional<AacConfig> ReadAudioSpecificConfig(std::span<const unsigned char> bytes);

/// The header for a raw data block of the given length; nothing when the length does not fit its
/// 13 bits.
std::optional<std::array<unsigned char, kAdtsLen>> MakeAdts(const AacConfig& config,
                                                            std::size_t payload);

}  // namespace Orbel::Wrapton::Command

#ifndef WRAPTON_MKVPACKET_OBJECTS_CUES_H
#define WRAPTON_MKVPACKET_OBJECTS_CUES_H

#include <array>
#include <cstdint>
#include <span>

namespace Orbel::Wrapton
{

/// A key frame as the cues lead to it.
struct MKV_CuePoint
{
    uint32_t time = 0;              // milliseconds
    uint32_t clusterPosition = 0;   // in the file
    uint16_t relativePosition = 0;  // in the cluster
};

/**
 * Cues, RFC 9559 5.1.5, kept as it stands in the file.
 *
 * The table has no initial values, so that it costs no physical memory until it is used: objects of
 * this class are never value-initialised.
 */
class CCues
{
public:
    static constexpr uint32_t kMaxCount = 102400;

    /// Past kMaxCount a point is not taken.
    void Append(const MKV_CuePoint& point) noexcept;
    void Clear() noexcept { m_nCount = 0; }

    /// The whole element.
    std::span<const unsigned char> Finish() noexcept;

private:
    static constexpr uint32_t kHeaderLen = 4 + 8;
    static constexpr uint32_t kPointLen = 24;

    uint32_t m_nCount = 0;
    std::array<unsigned char, kHeaderLen + kPointLen * kMaxCount> m_bytes;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MKVPACKET_OBJECTS_CUES_H

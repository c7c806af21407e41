#ifndef WRAPTON_MP4PACKET_BOX_VISUALENTRY_H
#define WRAPTON_MP4PACKET_BOX_VISUALENTRY_H

#include <array>
#include <cstdint>

#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{

/// The fields that every visual sample entry begins with, ISO/IEC 14496-12 12.1.3.
struct Mp4_AVC1
{
    uint16_t m_Refindex = 1;
    uint16_t width = 0;
    uint16_t height = 0;
    uint32_t horizresolution = 0x00480000;  // 72 dpi, 16.16
    uint32_t veritresolution = 0x00480000;  // spelled so in the interface
    uint16_t frame_count = 1;
    std::array<unsigned char, 32> compressname{};
    uint16_t depth = 24;

    /// The picture size; kept to the 16 bits of its fields.
    void SetSize(const Mp4_VideoInfo& video) noexcept
    {
        width = static_cast<uint16_t>(video.width);
        height = static_cast<uint16_t>(video.heigth);
    }
};

/// Length of a visual sample entry, without header and child boxes.
inline constexpr uint32_t kVisualEntryLen =
    6 + 2 + 2 + 2 + 3 * 4 + 2 + 2 + 4 + 4 + 4 + 2 + 32 + 2 + 2;
static_assert(kVisualEntryLen == 78);

/// The fields up to the depth; the last one, pre_defined, is the entry's own to write.
void PutVisualEntry(CMsbCursor& w, const Mp4_AVC1& entry) noexcept;

/// The whole entry.
void PutWholeVisualEntry(CMsbCursor& w, const Mp4_AVC1& entry) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_BOX_VISUALENTRY_H

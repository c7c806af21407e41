#ifndef WRAPTON_AVIPACKET_AVIHDRLLIST_H
#define WRAPTON_AVIPACKET_AVIHDRLLIST_H

#include <array>
#include <cstdint>

#include "Wrapton.h"
#include "avipacket/AviIndxObject.h"
#include "avipacket/AviRecords.h"

namespace Orbel::Wrapton
{

/**
 * The header list of the file ("LIST" "hdrl").
 *
 * Its length never changes, whatever streams and indexes it holds: a JUNK chunk takes the rest. So
 * it can be written first and once more in place at the end.
 */
class CAviHdrlList
{
public:
    static constexpr uint32_t kLength = 4104;

    /// @param pHeader the streams known beforehand; null: none
    int Init(uint64_t baseOffset,
             const SGHeaderInfo* pHeader,
             pRiffCallback callback,
             void* user) noexcept;
    int InitVideoStreamList(const SGVideoInfo* info) noexcept;
    /// Leaves the stream out when the encoding has no format tag.
    int InitAudioStreamList(const SGAudioInfo* info) noexcept;

    /// Counts a frame; stored or not, it enters the statistics.
    int InputFrame(const SGFrameInfo* frame) noexcept;
    /// Enters a standard index into a stream's super index. @param stream eAviStream
    int InputEntry(uint32_t stream, const superindex_entry* entry) noexcept;

    /// Emits the whole list.
    void Write() noexcept;
    [[nodiscard]] static constexpr uint32_t Size() noexcept { return kLength; }

    [[nodiscard]] bool IsVideoInited() const noexcept { return m_bVideoInited; }
    [[nodiscard]] bool IsAudioInited() const noexcept { return m_bAudioInited; }
    [[nodiscard]] bool UseOpenDML() const noexcept { return m_bOpenDML; }

private:
    /// Makes room for a stream's list, unless it is there already.
    void AddList(bool& inited, uint32_t length) noexcept;
    void ShrinkJunk(uint32_t by) noexcept;

    pRiffCallback m_cbOutput = nullptr;
    void* m_pUser = nullptr;
    uint64_t m_nBaseOffset = 0;
    bool m_bOpenDML = false;
    bool m_bVideoInited = false;
    bool m_bAudioInited = false;

    // All counters are 32 bits wide and wrap, as do the products made of them.
    uint32_t m_nWidth = 0;
    uint32_t m_nHeight = 0;
    uint32_t m_nFrameRate = 0;
    uint32_t m_nVFrameCount = 0;
    uint32_t m_nVPayloadSize = 0;
    uint32_t m_nVMaxFrameSize = 0;
    uint32_t m_nAFrameCount = 0;
    uint32_t m_nAMaxFrameSize = 0;

    Avi_MainHeader m_MainHeader;
    Avi_VideoStreamHeader m_VideoStream;
    Avi_AudioStreamHeader m_AudioStream;
    Avi_Junk m_JunkList;
    Avi_OdmlList m_OdmlList;
    CAviIndxObject m_VIndxObject;
    CAviIndxObject m_AIndxObject;
    std::array<unsigned char, kLength> m_OutputBuffer{};
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_AVIPACKET_AVIHDRLLIST_H

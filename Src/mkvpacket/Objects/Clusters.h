#ifndef WRAPTON_MKVPACKET_OBJECTS_CLUSTERS_H
#define WRAPTON_MKVPACKET_OBJECTS_CLUSTERS_H

#include <cstdint>
#include <span>

#include "mkvpacket/Objects/Basicatom.h"

namespace Orbel::Wrapton
{

/// One block to be written.
struct MKV_FrameData
{
    const unsigned char* pointer = nullptr;
    uint32_t size = 0;
    int32_t frametype = 0;  // SG_FRAME_SUB_TYPE
    int16_t timescode = 0;  // milliseconds, relative to the cluster
};

/// Cluster, RFC 9559 5.1.3: its ID, and one SimpleBlock after another.
class CClusters final : public CBasicatom
{
public:
    /// Bytes that a block has besides the frame: ID, size, and track, time and flags.
    static uint32_t BlockOverhead(uint32_t frameSize) noexcept;

    /**
     * Keeps the block that the next WriteData() writes; the frame's bytes are read then. A block
     * that is no I, P or B frame leaves the one before in its place.
     *
     * @param nType track number, at most 126
     * @param pData an MKV_FrameData
     */
    void InputData(uint32_t nType, const void* pData) override;
    void Update() override;
    uint32_t WriteID(CMsbCursor& w) override;
    uint32_t WriteData(CMsbCursor& w) override;
    /// WriteData() where the frame's bytes stand in their place already: @p head is what is ahead
    /// of them, BlockOverhead() bytes.
    void WriteAhead(std::span<unsigned char> head);
    /// ID and blocks written so far.
    uint32_t Size() override;

private:
    /// SimpleBlock up to the frame's bytes.
    void PutHead(CMsbCursor& w) const;

    MKV_FrameData m_frame;
    uint8_t mTrackNum = 0;  // as a number of one byte
    uint8_t m_Flag = 0;
    uint32_t m_nClustedatlen = 0;  // the block written last
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MKVPACKET_OBJECTS_CLUSTERS_H

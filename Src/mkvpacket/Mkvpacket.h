#ifndef WRAPTON_MKVPACKET_MKVPACKET_H
#define WRAPTON_MKVPACKET_MKVPACKET_H

#include <cstdint>
#include <memory>

#include "Package.h"
#include "mkvpacket/MkvCodec.h"
#include "mkvpacket/Objects/Clusters.h"
#include "mkvpacket/Objects/Cues.h"
#include "mkvpacket/Objects/Metaseek.h"
#include "mkvpacket/Objects/SegInfo.h"
#include "mkvpacket/Objects/Tracks.h"
#include "tool/AutoLock.h"

namespace Orbel::Wrapton
{

/**
 * Packages one video stream as a Matroska file, RFC 9559.
 *
 * A front part of fixed length comes first, then a cluster for every second, then the cues. Sizes
 * and places in the front part are filled in at the end. Audio is refused.
 *
 * Every public operation but Init, Deinit and GetFileHeader holds the packager's lock.
 */
class CMkvPacket final : public CPackage
{
public:
    CMkvPacket(uint32_t nType, const SGCreateParam* pCreateParam);
    ~CMkvPacket() override = default;

    /// Refused inside a recording; after a tailer another file begins at position 0.
    int Init() override;
    int Deinit() override;
    int CreateHeader(SGHeaderInfo* pHeader, unsigned int nReserved) override;
    using CPackage::InputData;
    /// Writes to the bytes of an H.264 frame: start codes of 4 bytes become lengths.
    int InputData(SGFrameInfo* pFrame, unsigned int nReserved) override;
    int CreateTailer(SGTailerInfo* pTailer, unsigned int nReserved) override;
    /// There is no snapshot; the record stays as it is.
    int GetFileHeader(SGOutputData* pOutput) override;

private:
    /// What a recording knows. Places are those in the file and do not wrap, although the elements
    /// that mention them have room for 32 bits only.
    struct Recording
    {
        uint64_t m_nFileOffset = 0;  // of the next byte
        uint64_t nFheadLen = 0;      // of the EBML header
        uint64_t m_nSegmentPos = 0;  // of the Segment's size
        uint64_t m_nMetaSeekIDPos = 0;
        uint64_t m_nSegInfoIDPos = 0;
        uint64_t m_nTrackIDPos = 0;
        uint64_t m_nFirstClusterPos = 0;

        MKV_AVCC m_AvcDecoderCfg;
        bool m_bVideo = false;  // the track is open
        uint32_t m_nVEncode = 0;
        int64_t m_nVideoNum = 0;  // frames stored

        // The cluster under way.
        uint32_t m_nClusterNum = 0;
        uint64_t m_ClusterIDPos = 0;
        uint64_t m_nClusterSizePos = 0;
        uint64_t m_nClusterDatSize = 0;  // bytes of its blocks
        uint64_t m_nClusterSize = 0;     // its whole length
        uint64_t m_nClosedClusters = 0;  // lengths of those ahead of it
        uint64_t m_nClusterTotal = 0;    // summed up by every tailer
    };

    uint64_t OutputData(const unsigned char* data, size_t length, uint64_t position);
    /// Lays out in the work buffer and emits. @return the length
    template <class Layout>
    uint64_t OutputLayout(uint64_t position, Layout layout);
    /// Lays out and emits at the next place, and moves on.
    template <class Layout>
    void AppendLayout(Layout layout);
    void OutputSize(uint64_t size, uint64_t position);

    int InputVideoData(SGFrameInfo* pFrame);
    void OpenTrack(const SGFrameInfo& frame);
    void WritePrivatedata(const SGFrameInfo& frame, VIDEOINFO& info) const;
    /// Opens the next cluster; false when there are as many as there can be.
    bool OpenCluster();
    /// @param room where the frame's bytes stand already, behind room for what is ahead of them;
    ///        empty: nowhere
    void WriteBlock(const SGFrameInfo& frame, std::span<unsigned char> room);
    /// @return the bytes of the block
    uint64_t OutputBlock(const SGFrameInfo& frame, std::span<unsigned char> block);
    /// Where a block of @p length bytes is composed while the frame is converted; empty when it
    /// does not fit behind the elements that may have to go out first.
    [[nodiscard]] std::span<unsigned char> BlockRoom(size_t overhead, size_t length) const;
    uint64_t OutputCues(uint64_t position);

    CSGMutex m_lockData;
    CallerBuffer m_pOutBuffer;  // every element is composed here
    bool m_bHeader = false;     // a recording is under way
    bool m_bFront = false;      // its front part was written
    Recording m_rec;
    std::unique_ptr<CMetaseekBox> m_Metaseek;
    std::unique_ptr<CClusters> m_Clusters;
    std::unique_ptr<CSegInfo> m_SegInfo;
    std::unique_ptr<CTracks> m_VTracks;
    CCues m_Cues;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MKVPACKET_MKVPACKET_H

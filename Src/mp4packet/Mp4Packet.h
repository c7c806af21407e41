#ifndef WRAPTON_MP4PACKET_MP4PACKET_H
#define WRAPTON_MP4PACKET_MP4PACKET_H

#include <cstdint>
#include <memory>
#include <span>

#include "Package.h"
#include "mp4packet/Box/Box_free.h"
#include "mp4packet/Box/Box_ftyp.h"
#include "mp4packet/Box/Box_mdat.h"
#include "mp4packet/Box/Box_moov.h"
#include "tool/AutoLock.h"

namespace Orbel::Wrapton
{

/**
 * Packages frames as an ISO base media file: MP4, QuickTime, 3GP (written exactly like MP4), their
 * 64-bit variants, and an MP4 with one mdat box per sample for sinks that cannot seek.
 *
 * The file is ftyp, free, mdat, moov. When the caller reserved enough in the free box, the movie
 * box goes there instead and the file plays before it is loaded whole.
 *
 * Every public operation but Init and Deinit holds the packager's lock.
 */
class CMp4Packet final : public CPackage
{
public:
    CMp4Packet(uint32_t nType, const SGCreateParam* pCreateParam);
    ~CMp4Packet() override = default;

    int Init() override;
    int Deinit() override;
    int CreateHeader(SGHeaderInfo* pHeader, unsigned int nReserved) override;
    using CPackage::InputData;
    /// Answers 0 for every video, audio and ext frame, stored or not.
    int InputData(SGFrameInfo* pFrame, unsigned int nReserved) override;
    int CreateTailer(SGTailerInfo* pTailer, unsigned int nReserved) override;
    /// A snapshot of the movie box. @return its size; 0 when there is none
    int GetFileHeader(SGOutputData* pOutput) override;

private:
    uint32_t OutputData(const unsigned char* bytes, uint32_t length, uint64_t position);
    int InputVideoData(const SGFrameInfo* pFrame);
    int InputAudioData(const SGFrameInfo* pFrame);
    int InputExtData(const SGFrameInfo* pFrame);

    /// Where a payload of at most @p most bytes is composed: in the work buffer, behind room for
    /// the header that goes ahead of it. Larger ones get all that there is. @p ahead bytes of it
    /// stand ahead of what is copied.
    [[nodiscard]] std::span<unsigned char> PayloadRoom(size_t most, size_t ahead = 0) const;
    [[nodiscard]] uint32_t PayloadLead() const;
    [[nodiscard]] Mp4_Sample MakeSample(const SGFrameInfo* pFrame) const;

    /// Notes a sample in the movie and in the media data box.
    void Note(eTrakType track, Mp4_Sample& sample);
    /// Copies a payload into the work buffer and emits it.
    void EmitCopy(const Mp4_Sample& sample);
    /// Emits a payload that stands where PayloadRoom() said.
    void EmitPayload(std::span<unsigned char> payload);
    /// Emits the free box at @p position, in pieces when it is larger than the work buffer.
    /// @return the bytes that were taken
    uint64_t EmitFree(uint64_t position);
    uint32_t EmitBox(const CBox& box, uint64_t position);

    /// Makes @p buffer hold @p size bytes; false when there is no memory.
    bool Hold(CallerBuffer& buffer, uint32_t size) const;

    CSGMutex m_lockData;
    CallerBuffer m_pOutBuffer;     // everything that is emitted is composed here
    CallerBuffer m_pBackupBuffer;  // the snapshot of GetFileHeader
    CallerBuffer m_pTailerBuffer;  // the final movie box
    uint64_t m_nFileOffset = 0;    // where the next block goes
    uint64_t m_nFreeOffset = 0;
    uint64_t m_nMdatOffset = 0;  // stays 0 in no-seek mode
    bool m_bHeader = false;      // a recording is under way
    bool m_bHoleOpen = false;    // a tailer without memory made room in the free box and left it
    bool m_bVideo = false;       // the track is open
    uint32_t m_nVEncode = 0;
    bool m_bAudio = false;  // the track is open
    uint32_t m_nAEncode = 0;
    std::unique_ptr<CBox_ftyp> m_pFtyp;
    std::unique_ptr<CBox_free> m_pFree;
    std::unique_ptr<CBox_moov> m_pMoov;
    std::unique_ptr<CBox_mdat> m_pMdat;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_MP4PACKET_H

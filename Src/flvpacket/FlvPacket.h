#ifndef WRAPTON_FLVPACKET_FLVPACKET_H
#define WRAPTON_FLVPACKET_FLVPACKET_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "Package.h"
#include "flvpacket/FlvTags.h"

namespace Orbel::Wrapton
{

/**
 * Packages H.264 video and linear PCM audio as Flash video.
 *
 * Every block is appended. The file variant ends with the AVC end of sequence and a second file
 * header with the final metadata; the stream variant has no tailer and announces audio and video
 * from the start.
 *
 * Kept: times come from frame and byte counts, never from the frames' own, and audio is counted as
 * 16-bit mono from the last picture on, whatever it is.
 */
class CFlvPacket final : public CPackage
{
public:
    CFlvPacket(uint32_t nType, const SGCreateParam* pCreateParam);
    ~CFlvPacket() override = default;

    int Init() override;
    int Deinit() override;
    int CreateHeader(SGHeaderInfo* pHeader, unsigned int nReserved) override;
    using CPackage::InputData;
    /// Answers 0 for every video and audio frame, stored or not.
    int InputData(SGFrameInfo* pFrame, unsigned int nReserved) override;
    int CreateTailer(SGTailerInfo* pTailer, unsigned int nReserved) override;

private:
    void OutputData(std::span<const unsigned char> block);
    void InputVideoData(const SGFrameInfo* pFrame);
    void InputAudioData(const SGFrameInfo* pFrame);
    [[nodiscard]] _FLV_HEADER InitFileHeader(bool has_video) const;
    [[nodiscard]] std::span<unsigned char> WorkRoom() const;

    CallerBuffer m_pOutBuffer;   // each block is composed here
    bool m_bVideoFlag = false;   // an I frame has come
    bool m_bAudioFlag = false;   // audio has come
    uint32_t m_nVTimeStamp = 0;  // milliseconds, of the last video tag
    uint32_t m_nVFrameNum = 0;   // video frames written
    uint32_t m_nAFrameLen = 0;   // audio bytes since the last video frame
    FlvMetaData m_MetaData;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_FLVPACKET_FLVPACKET_H

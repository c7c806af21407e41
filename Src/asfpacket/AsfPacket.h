#ifndef WRAPTON_ASFPACKET_ASFPACKET_H
#define WRAPTON_ASFPACKET_ASFPACKET_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "Package.h"
#include "asfpacket/AsfData.h"
#include "asfpacket/AsfHeader.h"
#include "tool/DynamicBuffer.h"

namespace Orbel::Wrapton
{

/**
 * Packages video and audio as an Advanced Systems Format file, or as a broadcast stream of it.
 *
 * The header goes out with the first key frame, ahead of its packets. The file variant closes with
 * a simple index and rewrites the header in place; the stream variant has no tailer and declares
 * audio whether any comes or not.
 */
class CAsfPacket final : public CPackage
{
public:
    CAsfPacket(uint32_t nType, const SGCreateParam* pCreateParam);
    ~CAsfPacket() override = default;

    int Init() override;
    int Deinit() override;
    int CreateHeader(SGHeaderInfo* pHeader, unsigned int nReserved) override;
    using CPackage::InputData;
    /// Answers 0 for every video and audio frame, stored or not.
    int InputData(SGFrameInfo* pFrame, unsigned int nReserved) override;
    int CreateTailer(SGTailerInfo* pTailer, unsigned int nReserved) override;

private:
    /// Emits the first @p length bytes of the work buffer. @return the bytes that were taken
    uint64_t OutputData(size_t length, uint64_t position);
    void InputVideoData(const SGFrameInfo* pFrame);
    void InputAudioData(const SGFrameInfo* pFrame);

    [[nodiscard]] bool IsFile() const { return m_nType == SG_STREAM_TYPE_ASF; }
    [[nodiscard]] std::span<unsigned char> WorkRoom() const;
    [[nodiscard]] uint32_t IndexEntryCount() const;
    [[nodiscard]] AsfFileProperties FileProperties(uint64_t file_size) const;
    /// The header object and the head of the data object as they are now.
    void PutHeader(CLsbCursor& w, uint64_t file_size) const;
    void InitObjects(const SGFrameInfo& frame, std::span<const unsigned char> config);
    /// Emits the simple index behind the data. @return the bytes that were taken
    uint64_t OutputIndex();

    CallerBuffer m_pOutBuffer;   // each block is composed here
    uint64_t m_nFileOffset = 0;  // where the next block goes: the end of the data
    Index_Entry m_CurKeyEntry;   // the last key frame

    bool m_bVideo = false;  // the header is written
    uint32_t m_nVFrameNum = 0;
    uint32_t m_nCurVideoTime = 0;  // milliseconds
    uint32_t m_nVInterval = 0;     // milliseconds per frame

    bool m_bAudio = false;  // audio has come
    uint32_t m_nAFrameNum = 0;
    uint32_t m_nCurAudioTime = 0;  // milliseconds

    AsfVideoStream m_Object_Video_Stream;
    AsfAudioStream m_Object_Audio_Stream;
    uint64_t m_nCreationDate = 0;  // 100 ns since 1601
    uint64_t m_nDuration = 0;      // 100 ns
    uint64_t m_nPacketCount = 0;   // data packets
    CDynamicBuffer m_Index_Entry;  // entries as the file has them
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_ASFPACKET_ASFPACKET_H

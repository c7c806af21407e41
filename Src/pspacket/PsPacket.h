#ifndef WRAPTON_PSPACKET_PSPACKET_H
#define WRAPTON_PSPACKET_PSPACKET_H

#include <cstdint>
#include <memory>

#include "Package.h"
#include "pspacket/PSPackaging.h"

namespace Orbel::Wrapton
{

/**
 * Packages frames as an MPEG-2 program stream, ISO/IEC 13818-1, in three flavours. Every frame
 * gives one block, appended; header and tailer calls give none.
 *
 * Kept: what becomes of a video or audio frame is not told, the call answers 0. Any I frame and any
 * audio frame opens the stream for other pictures, refused or not.
 */
class CPsPacket final : public CPackage
{
public:
    CPsPacket(uint32_t nType, const SGCreateParam* pCreateParam);
    ~CPsPacket() override = default;

    int Init() override;
    int Deinit() override;
    int CreateHeader(SGHeaderInfo* pHeader, unsigned int nReserved) override;
    int InputData(SGFrameInfo* pFrame, unsigned int nReserved) override;
    /// Composes the block in the packet, which grows for that and has its old size afterwards. The
    /// block goes to the callback all the same.
    int InputData(SGFrameInfo* pFrame, PacketBuffer& packet) override;
    int CreateTailer(SGTailerInfo* pTailer, unsigned int nReserved) override;
    /// Leaves the record as it is.
    int GetFileHeader(SGOutputData* pOutput) override;

private:
    int InputFrame(const SGFrameInfo* pFrame, CPsOutput& output);
    int InputVideoData(const SGFrameInfo* pFrame, CPsOutput& output);
    int InputAudioData(const SGFrameInfo* pFrame, CPsOutput& output);
    /// Emits the @p length bytes that a flavour wrote.
    int OutputData(const CPsOutput& output, int length);

    std::unique_ptr<IPSPackaging> m_pPSPackage;  // null: a type without a flavour
    CallerBuffer m_pOutBuffer;
    bool m_bFirstIFrame = false;  // the stream is open for pictures other than I frames
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PSPACKET_PSPACKET_H

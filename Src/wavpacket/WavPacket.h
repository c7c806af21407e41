#ifndef WRAPTON_WAVPACKET_WAVPACKET_H
#define WRAPTON_WAVPACKET_WAVPACKET_H

#include <cstdint>

#include "Package.h"
#include "tool/ByteCursor.h"
#include "tool/DynamicBuffer.h"

namespace Orbel::Wrapton
{

/// The header of a RIFF/WAVE file with PCM samples.
struct Wav_PcmFormat
{
    uint32_t file_size_8 = 0;  // file size less the 8 bytes of the RIFF header
    uint32_t type_size = 0;
    uint16_t fmt_tag = 0;
    uint16_t ch_num = 0;
    uint32_t sample_rate = 0;
    uint32_t bytes_per_sec = 0;
    uint16_t block_align = 0;
    uint16_t bitpersamples = 0;
    uint32_t data_size = 0;
};

/// Lays the 44 header bytes out.
void PutPcmFormat(CLsbCursor& w, const Wav_PcmFormat& format);

/**
 * Packages 16-bit PCM or A-law audio as a RIFF/WAVE file.
 *
 * Kept: the header always declares 8000 Hz mono 16-bit PCM, whatever the frames say, and the first
 * accepted frame only triggers a rewrite of the header, its samples never reach the output.
 */
class CWavPacket final : public CPackage
{
public:
    CWavPacket(uint32_t nType, const SGCreateParam* pCreateParam);
    ~CWavPacket() override = default;

    int Init() override;
    int Deinit() override;
    int CreateHeader(SGHeaderInfo* pHeader, unsigned int nReserved) override;
    using CPackage::InputData;
    int InputData(SGFrameInfo* pFrame, unsigned int nReserved) override;
    int CreateTailer(SGTailerInfo* pTailer, unsigned int nReserved) override;
    int GetFileHeader(SGOutputData* pOutput) override;

private:
    void InitWaveFileHeader(Wav_PcmFormat* pFormat) const;
    /// Serialises the header into @p scratch (44 bytes) and emits it. @return 44; 0 when there is
    /// no memory
    uint32_t WriteFileHeader(unsigned char* scratch);
    uint32_t OutputData(const unsigned char* data, uint32_t size, int64_t position);
    int InputAudioData(const SGFrameInfo* pFrame);

    CDynamicBuffer m_pDynamicBuffer;
    Wav_PcmFormat m_FileHeader;
    unsigned char* m_pOutBuffer = nullptr;  // the header handed out last; null: none written yet
    uint32_t m_nFileOffset = 0;             // wraps past 4 GiB
    uint32_t m_bAudio = 0;                  // an audio frame has been accepted
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_WAVPACKET_WAVPACKET_H

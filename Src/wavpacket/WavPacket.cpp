#include "wavpacket/WavPacket.h"

#include <array>
#include <cassert>
#include <climits>

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kHeaderLen = 44;

using HeaderBytes = std::array<unsigned char, kHeaderLen>;

}  // namespace

/// RIFF, Multimedia Programming Interface and Data Specifications 1.0, "Waveform Audio File
/// Format".
void PutPcmFormat(CLsbCursor& w, const Wav_PcmFormat& format)
{
    w.FourCC("RIFF");
    w.U32(format.file_size_8);
    w.FourCC("WAVE");
    w.FourCC("fmt ");
    w.U32(format.type_size);
    w.U16(format.fmt_tag);
    w.U16(format.ch_num);
    w.U32(format.sample_rate);
    w.U32(format.bytes_per_sec);
    w.U16(format.block_align);
    w.U16(format.bitpersamples);
    w.FourCC("data");
    w.U32(format.data_size);
}

CWavPacket::CWavPacket(uint32_t nType, const SGCreateParam* pCreateParam)
    : CPackage(nType, pCreateParam)
{
}

int CWavPacket::Init()
{
    return SG_ERR_NOERR;
}

int CWavPacket::Deinit()
{
    return SG_ERR_NOERR;
}

int CWavPacket::CreateHeader(SGHeaderInfo* /*pHeader*/, unsigned int /*nReserved*/)
{
    HeaderBytes scratch{};
    const uint32_t length = WriteFileHeader(scratch.data());
    if (length == 0) return SG_ERR_MEMORY_OUT;

    m_nFileOffset += length;
    return SG_ERR_NOERR;
}

int CWavPacket::InputData(SGFrameInfo* pFrame, unsigned int /*nReserved*/)
{
    if (!IsFrame(pFrame)) return SG_ERR_PARAM_ERR;
    if (m_pOutBuffer == nullptr) return SG_ERR_PARAM_ERR;
    if (pFrame->frame_type != SG_FRAME_TYPE_AUDIO) return SG_ERR_PARAM_ERR;

    // Kept: a frame of another encoding is dropped without a word.
    InputAudioData(pFrame);
    return SG_ERR_NOERR;
}

int CWavPacket::CreateTailer(SGTailerInfo* /*pTailer*/, unsigned int /*nReserved*/)
{
    if (m_pOutBuffer == nullptr) return SG_ERR_PARAM_ERR;

    HeaderBytes scratch{};
    return WriteFileHeader(scratch.data()) != 0 ? SG_ERR_NOERR : SG_ERR_MEMORY_OUT;
}

int CWavPacket::GetFileHeader(SGOutputData* /*pOutput*/)
{
    return SG_ERR_NOERR;
}

void CWavPacket::InitWaveFileHeader(Wav_PcmFormat* pFormat) const
{
    pFormat->file_size_8 = m_nFileOffset - 8;
    pFormat->type_size = 16;
    pFormat->fmt_tag = 1;  // WAVE_FORMAT_PCM
    pFormat->ch_num = 1;
    pFormat->sample_rate = 8000;
    pFormat->bytes_per_sec = 16000;
    pFormat->block_align = 2;
    pFormat->bitpersamples = 16;
    pFormat->data_size = m_nFileOffset - kHeaderLen;
}

uint32_t CWavPacket::WriteFileHeader(unsigned char* scratch)
{
    m_pDynamicBuffer.Clear();
    InitWaveFileHeader(&m_FileHeader);

    CLsbCursor w({scratch, kHeaderLen});
    PutPcmFormat(w, m_FileHeader);
    assert(w.Produced() == kHeaderLen);

    if (m_pDynamicBuffer.AppendBuffer(scratch, kHeaderLen) != SG_ERR_NOERR) return 0;
    m_pOutBuffer = m_pDynamicBuffer.GetPointer();
    OutputData(m_pOutBuffer, kHeaderLen, 0);
    return kHeaderLen;
}

uint32_t CWavPacket::OutputData(const unsigned char* data, uint32_t size, int64_t position)
{
    return Emit(data, size, Origin::kStart, position);
}

int CWavPacket::InputAudioData(const SGFrameInfo* pFrame)
{
    m_pDynamicBuffer.Clear();
    if (pFrame->frame_encode != SG_ENCODE_AUDIO_PCM16 &&
        pFrame->frame_encode != SG_ENCODE_AUDIO_G711A)
    {
        return SG_ERR_ENCODE_UNSUPPORT;
    }
    if (m_bAudio == 0)
    {
        HeaderBytes scratch{};
        if (WriteFileHeader(scratch.data()) == 0) return SG_ERR_MEMORY_OUT;

        m_bAudio = 1;
        // Kept: consumers rely on the first frame's bytes staying out of the file.
        return SG_ERR_NOERR;
    }

    // A block's size is a signed 32-bit number.
    if (pFrame->frame_size > INT_MAX) return SG_ERR_PARAM_ERR;

    m_nFileOffset += OutputData(pFrame->frame_pointer, pFrame->frame_size, m_nFileOffset);
    return SG_ERR_NOERR;
}

}  // namespace Orbel::Wrapton

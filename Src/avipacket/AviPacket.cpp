#include "avipacket/AviPacket.h"

#include <new>

namespace Orbel::Wrapton
{

CAviPacket::CAviPacket(uint32_t nType, const SGCreateParam* pCreateParam)
    : CPackage(nType, pCreateParam)
{
}

int CAviPacket::Init()
{
    return SG_ERR_NOERR;
}

int CAviPacket::Deinit()
{
    return SG_ERR_NOERR;
}

int CAviPacket::CreateHeader(SGHeaderInfo* pHeader, unsigned int /*nReserved*/)
{
    if (m_bRecording) return SG_ERR_PARAM_ERR;

    if (m_mainRiff.HasBegun())
    {
        m_mainRiff = CAviRiff();
        m_pExtRiff.reset();
        m_nExtRiffCount = 0;
        m_nCurRiffOffset = 0;
    }
    const int result = m_mainRiff.Init(pHeader, RiffCallback, this);
    m_bRecording = result == SG_ERR_NOERR;
    return result;
}

int CAviPacket::InputData(SGFrameInfo* pFrame, unsigned int /*nReserved*/)
{
    if (m_nExtRiffCount == 0)
    {
        const int result = m_mainRiff.InputFrame(pFrame);
        if (result != SG_ERR_NOERR) return result;
        if (m_mainRiff.Size() <= kRiffSizeLimit) return SG_ERR_NOERR;

        m_mainRiff.EndInput();
        NoteClosed(m_mainRiff);
        OpenExtRiff();
        return SG_ERR_NOERR;
    }

    if (m_pExtRiff == nullptr && !OpenExtRiff()) return SG_ERR_EMPTY_POINTER;

    const int result = m_pExtRiff->InputFrame(pFrame);
    if (result != SG_ERR_NOERR) return result;
    if (m_pExtRiff->Size() <= kRiffSizeLimit) return SG_ERR_NOERR;

    // Kept: the RIFF closed itself with this frame already. Its indexes stand in it twice, and the
    // super index points at the second ones.
    m_pExtRiff->EndInput();
    NoteClosed(*m_pExtRiff);
    OpenExtRiff();
    return SG_ERR_NOERR;
}

int CAviPacket::CreateTailer(SGTailerInfo* /*pTailer*/, unsigned int /*nReserved*/)
{
    if (m_nExtRiffCount == 0)
    {
        m_mainRiff.EndInput();
        m_nCurRiffOffset += m_mainRiff.Size();
    }
    else if (m_pExtRiff != nullptr)
    {
        m_pExtRiff->EndInput();
        NoteClosed(*m_pExtRiff);
    }
    m_mainRiff.CreateHeader();
    m_bRecording = false;
    return SG_ERR_NOERR;
}

void CAviPacket::RiffCallback(const unsigned char* data,
                              uint32_t length,
                              uint64_t position,
                              void* user)
{
    if (user == nullptr) return;
    static_cast<CAviPacket*>(user)->OutputData(data, length, position);
}

void CAviPacket::OutputData(const unsigned char* data, uint32_t length, uint64_t position)
{
    // What the callback answers is not looked at: every position is absolute.
    Emit(data, length, Origin::kStart, static_cast<int64_t>(position));
}

void CAviPacket::NoteClosed(const CAviRiffBase& closed)
{
    m_nCurRiffOffset += closed.Size();
    InputEntry(AVI_VIDEO_STREAM, closed);
    InputEntry(AVI_AUDIO_STREAM, closed);
}

void CAviPacket::InputEntry(eAviStream stream, const CAviRiffBase& closed)
{
    const superindex_entry entry = closed.IndexEntry(stream);
    if (entry.size != 0 && entry.entrycount != 0) m_mainRiff.InputEntry(stream, &entry);
}

bool CAviPacket::OpenExtRiff()
{
    m_nExtRiffCount = 1;
    m_pExtRiff.reset();  // ahead of the next one: its indexes can be large
    m_pExtRiff.reset(new (std::nothrow) CAviXRiff);
    if (m_pExtRiff == nullptr) return false;
    if (m_pExtRiff->Init(m_nCurRiffOffset, RiffCallback, this) == SG_ERR_NOERR) return true;

    m_pExtRiff.reset();
    return false;
}

}  // namespace Orbel::Wrapton

#include "mp4packet/Box/Box_mp4a.h"

#include "mp4packet/Box/Box_esds.h"
#include "mp4packet/Box/Box_wave.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kEmptyLen = 4;
constexpr uint32_t kEntryLen = 6 + 2 + 2 + 2 + 4 + 2 + 2 + 2 + 2 + 4;
constexpr uint32_t kVersion1Len = 4 + 4 + 4 + 4;
static_assert(kEntryLen == 28);

/// Compressed sound whose packets the sample tables describe.
constexpr uint16_t kVariableCompression = 0xFFFE;

/// Kept: written for MPEG audio, too.
constexpr uint32_t kSamplesPerPacket = 1024;

constexpr bool HasVersion1(uint32_t nMode)
{
    return nMode == BoxMode_Mov || nMode == BoxMode_Mov_64 || nMode == BoxMode_Mov_NoSeek;
}

}  // namespace

CBox_mp4a::CBox_mp4a(uint32_t nMode) : CBox(MP4A, nMode)
{
    if (HasVersion1(nMode))
    {
        m_Data.version = 1;
        m_Data.pre_defined1 = kVariableCompression;
        m_pChild = std::make_unique<CBox_wave>(nMode);
    }
    else if (nMode != BoxMode_Empty)
    {
        m_pChild = std::make_unique<CBox_esds>(nMode);
    }
    CBox_mp4a::Update();
}

CBox_mp4a::~CBox_mp4a() = default;

void CBox_mp4a::Init(uint32_t nType, void* pInfo)
{
    if (pInfo == nullptr) return;

    const auto* audio = static_cast<const Mp4_AudioInfo*>(pInfo);
    m_Data.channelcount = static_cast<uint16_t>(audio->channels);
    m_Data.samplesize = static_cast<uint16_t>(audio->bit_per_sample);
    m_Data.samplerate = static_cast<uint16_t>(audio->sample_rate);
    if (m_pChild != nullptr) m_pChild->Init(nType, pInfo);
    Update();
}

void CBox_mp4a::Update()
{
    if (m_pChild == nullptr)
    {
        m_nDataLen = kEmptyLen;
    }
    else
    {
        m_pChild->Update();
        m_nDataLen = kEntryLen + (HasVersion1(m_nMode) ? kVersion1Len : 0) + m_pChild->Size();
    }
    CBox::Update();
}

void CBox_mp4a::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_mp4a:WriteData error!\n");

    if (m_pChild == nullptr)
    {
        w.Fill(kEmptyLen, 0);
        return;
    }
    w.Fill(6, 0);  // reserved
    w.U16(m_Data.m_Refindex);
    w.U16(m_Data.version);
    w.U16(m_Data.revision_level);
    w.U32(m_Data.reserved);
    w.U16(m_Data.channelcount);
    w.U16(m_Data.samplesize);
    w.U16(m_Data.pre_defined1);
    w.U16(m_Data.reserved2);
    w.U32(static_cast<uint32_t>(m_Data.samplerate) << 16);  // 16.16
    if (HasVersion1(m_nMode))
    {
        w.U32(kSamplesPerPacket);
        w.U32(0);  // bytes per packet
        w.U32(0);  // bytes per frame
        w.U32(2);  // bytes per sample
    }
    m_pChild->Put(w);
}

}  // namespace Orbel::Wrapton

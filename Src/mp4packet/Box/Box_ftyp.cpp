#include "mp4packet/Box/Box_ftyp.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kMinorVersion = 0x00000200;
constexpr uint32_t kQuickTimeLen = 4 + 4 + 1 * 4;  // one compatible brand
constexpr uint32_t kIsoLen = 4 + 4 + 4 * 4;        // four of them

}  // namespace

CBox_ftyp::CBox_ftyp(uint32_t nMode) : CBox(FTYP, nMode)
{
    CBox_ftyp::Update();
}

void CBox_ftyp::Update()
{
    m_nDataLen = IsQuickTime(m_nMode) ? kQuickTimeLen : kIsoLen;
    CBox::Update();
}

void CBox_ftyp::PutData(CMsbCursor& w) const
{
    const CPayloadCheck check(w, m_nDataLen, "CBox_ftyp::WriteData error!\n");

    if (IsQuickTime(m_nMode))
    {
        w.FourCC("qt  ");
        w.U32(kMinorVersion);
        w.FourCC("qt  ");
        return;
    }
    w.FourCC("isom");
    w.U32(kMinorVersion);
    w.FourCC("isom");
    w.FourCC("iso2");
    w.FourCC("avc1");
    w.FourCC("mp41");
}

}  // namespace Orbel::Wrapton

#include "mp4packet/Box/Box_mdat.h"

namespace Orbel::Wrapton
{

CBox_mdat::CBox_mdat(uint32_t nMode) : CBox(MDAT, nMode) {}

void CBox_mdat::InputData(uint32_t nType, void* /*pInfo*/)
{
    if (Is64Bit(m_nMode))
    {
        m_nDataLen64 += nType;
    }
    else if (IsNoSeek(m_nMode))
    {
        m_nDataLen = nType;
    }
    else
    {
        m_nDataLen += nType;  // wraps past 4 GiB: recordings of that length want a 64-bit mode
    }
    Update();
}

void CBox_mdat::Update()
{
    m_atom.Clear();  // the box of an empty sample is its bare header, not that of the one before
    CBox::Update();
}

void CBox_mdat::PutAtom(CMsbCursor& w) const
{
    if (!Is64Bit(m_nMode))
    {
        CBox::PutAtom(w);
        return;
    }
    w.U32(1);  // the size stands in largesize
    PutBoxType(w, MDAT);
    w.U64(m_nDataLen64);
}

}  // namespace Orbel::Wrapton

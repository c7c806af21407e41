#include "mp4packet/Box/Box_free.h"

namespace Orbel::Wrapton
{

CBox_free::CBox_free(uint32_t nMode) : CBox(FREE, nMode) {}

void CBox_free::Init(uint32_t nType, void* /*pInfo*/)
{
    m_nDataLen = nType;
    Update();
}

void CBox_free::PutPiece(std::span<unsigned char> piece, uint32_t from) const
{
    CMsbCursor w(piece);
    if (from == 0) PutAtom(w);
    w.Fill(piece.size() - w.Produced(), 0);
}

void CBox_free::PutData(CMsbCursor& w) const
{
    w.Fill(m_nDataLen, 0);
}

}  // namespace Orbel::Wrapton

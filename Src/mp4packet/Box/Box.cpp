#include "mp4packet/Box/Box.h"

namespace Orbel::Wrapton
{
namespace
{

/// Lays out twice: once to learn the length, once into the buffer.
template <class Layout>
uint32_t WriteLayout(unsigned char* pBuffer, Layout layout)
{
    if (pBuffer == nullptr) return 0;

    CMsbCursor measure;
    layout(measure);
    CMsbCursor w({pBuffer, measure.Produced()});
    layout(w);
    return static_cast<uint32_t>(w.Produced());
}

}  // namespace

CBox::CBox(eBoxType type, uint32_t nMode) : m_atom(type), m_nMode(nMode) {}

void CBox::Init(uint32_t /*nType*/, void* /*pInfo*/)
{
    Update();
}

void CBox::InputData(uint32_t /*nType*/, void* /*pInfo*/) {}

void CBox::Update()
{
    m_atom.Update(m_nDataLen);
}

uint32_t CBox::Write(unsigned char* pBuffer)
{
    if (pBuffer == nullptr) return 0;

    const uint32_t header = WriteAtom(pBuffer);
    return header + WriteData(pBuffer + header);
}

uint32_t CBox::Size()
{
    return m_atom.Size();
}

uint32_t CBox::WriteAtom(unsigned char* pBuffer)
{
    return WriteLayout(pBuffer, [this](CMsbCursor& w) { PutAtom(w); });
}

uint32_t CBox::WriteData(unsigned char* pBuffer)
{
    return WriteLayout(pBuffer, [this](CMsbCursor& w) { PutData(w); });
}

void CBox::Put(CMsbCursor& w) const
{
    PutAtom(w);
    PutData(w);
}

uint32_t CBox::Length() const
{
    CMsbCursor measure;
    Put(measure);
    return static_cast<uint32_t>(measure.Produced());
}

void CBox::PutAtom(CMsbCursor& w) const
{
    m_atom.Put(w);
}

void CBox::PutData(CMsbCursor& /*w*/) const {}

}  // namespace Orbel::Wrapton

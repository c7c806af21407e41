#include "mkvpacket/Objects/Basicatom.h"

namespace Orbel::Wrapton
{

void CBasicatom::Init(uint32_t /*nType*/, const void* /*pInfo*/) {}

void CBasicatom::InputData(uint32_t /*nType*/, const void* /*pData*/) {}

void CBasicatom::Update() {}

uint32_t CBasicatom::Write(CMsbCursor& w)
{
    const uint32_t id = WriteID(w);
    return id + WriteData(w);
}

uint32_t CBasicatom::Size()
{
    return m_size;
}

uint32_t CBasicatom::WriteID(CMsbCursor& w)
{
    w.Fill(4, 0);
    return 4;
}

uint32_t CBasicatom::WriteData(CMsbCursor& /*w*/)
{
    return 0;
}

}  // namespace Orbel::Wrapton

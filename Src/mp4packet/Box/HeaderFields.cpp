#include "mp4packet/Box/HeaderFields.h"

namespace Orbel::Wrapton
{

void PutFullBox(CMsbCursor& w, uint32_t version, uint32_t flags) noexcept
{
    w.U8(version);
    w.U24(flags);
}

void PutUnityMatrix(CMsbCursor& w) noexcept
{
    w.U32(0x00010000);  // a, 16.16
    w.U32(0);           // b, 16.16
    w.U32(0);           // u, 2.30
    w.U32(0);           // c, 16.16
    w.U32(0x00010000);  // d, 16.16
    w.U32(0);           // v, 2.30
    w.U32(0);           // x, 16.16
    w.U32(0);           // y, 16.16
    w.U32(0x40000000);  // w, 2.30
}

}  // namespace Orbel::Wrapton

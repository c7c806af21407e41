#include "mp4packet/Box/VisualEntry.h"

namespace Orbel::Wrapton
{

void PutVisualEntry(CMsbCursor& w, const Mp4_AVC1& entry) noexcept
{
    w.Fill(6, 0);  // reserved
    w.U16(entry.m_Refindex);
    w.Fill(2, 0);      // pre_defined
    w.Fill(2, 0);      // reserved
    w.Fill(3 * 4, 0);  // pre_defined
    w.U16(entry.width);
    w.U16(entry.height);
    w.U32(entry.horizresolution);
    w.U32(entry.veritresolution);
    w.Fill(4, 0);  // reserved
    w.U16(entry.frame_count);
    w.Bytes(entry.compressname);
    w.U16(entry.depth);
}

void PutWholeVisualEntry(CMsbCursor& w, const Mp4_AVC1& entry) noexcept
{
    PutVisualEntry(w, entry);
    w.U16(0xFFFF);  // pre_defined
}

}  // namespace Orbel::Wrapton

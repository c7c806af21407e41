#include "mp4packet/atom.h"

#include <array>

namespace Orbel::Wrapton
{
namespace
{

using FourCharacters = char[5];

constexpr FourCharacters kBoxTypes[] = {
    "",      // NONE
    "ftyp",  // FTYP
    "mdat",  // MDAT
    "moov",  // MOOV
    "free",  // FREE
    "skip",  // SKIP
    "mvhd",  // MVHD
    "trak",  // TRAK
    "tkhd",  // TKHD
    "mdia",  // MDIA
    "mdhd",  // MDHD
    "hdlr",  // HDLR
    "minf",  // MINF
    "vmhd",  // VMHD
    "smhd",  // SMHD
    "dinf",  // DINF
    "stbl",  // STBL
    "stsd",  // STSD
    "stts",  // STTS
    "stsz",  // STSZ
    "stsc",  // STSC
    "stss",  // STSS
    "stco",  // STCO
    "dref",  // DREF
    "url ",  // URL
    "urn ",  // URN
    "avc1",  // AVC1
    "avcC",  // AVCC
    "mp4v",  // MP4V
    "mp4a",  // MP4A
    "esds",  // ESDS
    "OMFR",  // OMFR
    "jpeg",  // JPEG
    "wave",  // WAVE
    "frma",  // FRMA
    "co64",  // CO64
};
static_assert(std::size(kBoxTypes) == TYPECNT);
static_assert(kBoxTypes[OMFR][0] == 'O' && kBoxTypes[CO64][0] == 'c');

}  // namespace

void PutBoxType(CMsbCursor& w, eBoxType type) noexcept
{
    w.FourCC(kBoxTypes[type]);
}

void Catom::Put(CMsbCursor& w) const noexcept
{
    w.U32(m_size);
    PutBoxType(w, m_type);
}

uint32_t Catom::Write(unsigned char* pBuffer) const noexcept
{
    CMsbCursor w({pBuffer, kHeaderLen});
    Put(w);
    return kHeaderLen;
}

}  // namespace Orbel::Wrapton

#ifndef WRAPTON_MP4PACKET_ATOM_H
#define WRAPTON_MP4PACKET_ATOM_H

#include <cstdint>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/// The box types that the MP4 family knows.
enum eBoxType : uint32_t
{
    NONE = 0,
    FTYP = 1,
    MDAT = 2,
    MOOV = 3,
    FREE = 4,
    SKIP = 5,
    MVHD = 6,
    TRAK = 7,
    TKHD = 8,
    MDIA = 9,
    MDHD = 10,
    HDLR = 11,
    MINF = 12,
    VMHD = 13,
    SMHD = 14,
    DINF = 15,
    STBL = 16,
    STSD = 17,
    STTS = 18,
    STSZ = 19,
    STSC = 20,
    STSS = 21,
    STCO = 22,
    DREF = 23,
    URL = 24,
    URN = 25,
    AVC1 = 26,
    AVCC = 27,
    MP4V = 28,
    MP4A = 29,
    ESDS = 30,
    OMFR = 31,
    JPEG = 32,
    WAVE = 33,
    FRMA = 34,
    CO64 = 35,
    TYPECNT = 36
};

/// The header of a box: size and type, ISO/IEC 14496-12 4.2.
class Catom
{
public:
    static constexpr uint32_t kHeaderLen = 8;

    explicit Catom(eBoxType type) noexcept : m_type(type) {}

    /// Size of the whole box in bytes.
    [[nodiscard]] uint32_t Size() const noexcept { return m_size; }

    /// Takes the payload's length. Kept: 0 leaves the size as it was.
    void Update(uint32_t nDataLen) noexcept
    {
        if (nDataLen != 0) m_size = nDataLen + kHeaderLen;
    }

    /// Back to a box without payload.
    void Clear() noexcept { m_size = kHeaderLen; }

    /// @return 8
    uint32_t Write(unsigned char* pBuffer) const noexcept;

    /// The cursor form of Write().
    void Put(CMsbCursor& w) const noexcept;

private:
    uint32_t m_size = kHeaderLen;
    eBoxType m_type;
};

/// Writes the four characters of a box type.
void PutBoxType(CMsbCursor& w, eBoxType type) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MP4PACKET_ATOM_H

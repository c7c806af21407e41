#ifndef WRAPTON_MKVPACKET_OBJECTS_METASEEK_H
#define WRAPTON_MKVPACKET_OBJECTS_METASEEK_H

#include "mkvpacket/Objects/Basicatom.h"

namespace Orbel::Wrapton
{

/// Places of top-level elements, counted from the beginning of the segment's data.
struct MKV_METASEEK
{
    uint32_t info = 0;
    uint32_t tracks = 0;
    uint32_t cues = 0;
};

/// SeekHead, RFC 9559 5.1.1, and a Void behind it that fills both up to a fixed length.
class CMetaseekBox final : public CBasicatom
{
public:
    static constexpr uint32_t kLength = 500;
    /// ID and size of the SeekHead, ahead of its entries.
    static constexpr uint32_t kHeaderLen = 4 + 1;

    /// The places of the next WriteData(); 0 without.
    void SetPositions(const MKV_METASEEK& positions) { m_positions = positions; }

    uint32_t Write(CMsbCursor& w) override;
    /// The entries alone.
    uint32_t WriteData(CMsbCursor& w) override;
    uint32_t Size() override;

private:
    MKV_METASEEK m_positions;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MKVPACKET_OBJECTS_METASEEK_H

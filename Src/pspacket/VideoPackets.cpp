#include "pspacket/VideoPackets.h"

#include <algorithm>
#include <cstring>

#include "pspacket/PsHeaders.h"
#include "tool/StartCode.h"

namespace Orbel::Wrapton
{
namespace
{

using ByteSpan = std::span<const unsigned char>;

constexpr size_t kLongForm = 4;

bool IsLong(const StartCode& code)
{
    return code.unit - code.begin == kLongForm;
}

/// Where the first start code of four bytes at or behind @p from begins; the frame's end when there
/// is none.
size_t FindUnit(ByteSpan frame, size_t from)
{
    StartCode code = FindStartCode(frame, from);
    while (!IsLong(code) && code.unit < frame.size())
    {
        code = FindStartCode(frame, code.unit);
    }
    return IsLong(code) ? code.begin : frame.size();
}

/// Copies the unit that @p rest begins with, its start code included, but at most as many bytes.
/// @return the bytes copied
size_t CopyUnit(ByteSpan rest, size_t most, unsigned char* to)
{
    size_t at = 0;
    for (size_t unit = kLongForm; at < most;)
    {
        const size_t start_code = std::min(unit, most) - at;
        std::memcpy(to + at, rest.data() + at, start_code);
        at += start_code;
        const StartCode code = CopyToStartCode(rest, at, to + at, most - at);
        at = code.begin;
        if (IsLong(code)) break;
        unit = code.unit;  // the short form goes on with the same unit
    }
    return at;
}

/// A piece of a picture that becomes a packet.
struct Piece
{
    size_t length;
    size_t copied;  // bytes of it that stand in their place already
    bool last;      // all that is left is cut by length
};

/// The piece that the unit at the beginning of @p rest becomes, or the first piece of it. It is
/// copied to @p room on the way where the room is large enough to do so unseen.
Piece TakeUnit(ByteSpan rest, std::span<unsigned char> room)
{
    const size_t chunk = std::min<size_t>(rest.size(), kPesChunkLen);
    const size_t copied = room.size() >= chunk ? CopyUnit(rest, chunk, room.data()) : 0;
    if (copied != 0 && (copied < chunk || chunk == rest.size()))
    {
        return {copied, copied, copied == rest.size()};
    }
    const size_t end = FindUnit(rest, std::max(copied, kLongForm));
    const bool last = end == rest.size();
    return {last ? chunk : end, copied, last};
}

}  // namespace

void CVideoPackets::Advance(uint32_t ticks)
{
    m_nScrb += ticks;
    m_nDts += ticks;
    m_nVideoPts += ticks;
}

void CVideoPackets::Put(CMsbCursor& w, ByteSpan frame, bool split) const
{
    const size_t first = split ? FindUnit(frame, 0) : frame.size();
    bool by_length = first == frame.size();
    ByteSpan rest = by_length ? frame : frame.subspan(first);
    bool with_dts = m_bFirst;
    while (!rest.empty())
    {
        const uint32_t header_len = with_dts ? kPtsDtsHeaderLen : kPtsHeaderLen;
        CMsbCursor header(w.Claimed(header_len));
        const Piece piece = by_length ? Piece{std::min<size_t>(rest.size(), kPesChunkLen), 0, true}
                                      : TakeUnit(rest, w.Left());
        const size_t payload_len = std::min<size_t>(piece.length, kPesCapacity - header_len);
        PutHeader(header, static_cast<uint32_t>(payload_len), with_dts);
        w.Skip(piece.copied);
        w.Bytes(rest.subspan(piece.copied, payload_len - piece.copied));

        rest = rest.subspan(piece.length);
        by_length = piece.last;
        with_dts = false;
    }
}

void CVideoPackets::PutHeader(CMsbCursor& w, uint32_t payload_len, bool with_dts) const
{
    if (with_dts)
    {
        PutPtsDtsHeader(w, payload_len, m_nVideoPts, m_nDts);
    }
    else
    {
        PutPtsHeader(w, kVideoStreamId, payload_len, m_nVideoPts);
    }
}

}  // namespace Orbel::Wrapton

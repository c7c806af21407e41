#include "mkvpacket/Ebml.h"

namespace Orbel::Wrapton
{
namespace
{

/// The all-ones pattern of each length stands for an unknown size, RFC 8794 6.2.
constexpr uint64_t kAllOnes1 = 0x7F;
constexpr uint64_t kAllOnes2 = 0x3FFF;
constexpr uint64_t kAllOnes3 = 0x1FFFFF;
constexpr uint64_t kAllOnes4 = 0xFFFFFFF;

uint32_t SizeLength(uint64_t size)
{
    if (size < kAllOnes1) return 1;
    if (size < kAllOnes2) return 2;
    if (size < kAllOnes3) return 3;
    if (size < kAllOnes4) return 4;
    return 0;
}

}  // namespace

thread_local std::array<unsigned char, 8> CEbml::s_arrBuffer;

const unsigned char* CEbml::GetsizeID(uint64_t size, uint32_t& length) noexcept
{
    length = SizeLength(size);
    if (length == 0) return nullptr;

    // The marker bit stands in front of 7 data bits for every byte.
    MSB_uint64_to_memory(s_arrBuffer.data(), size | uint64_t{1} << 7 * length);
    return s_arrBuffer.data() + s_arrBuffer.size() - length;
}

int CEbml::Getvint(const unsigned char* buffer, int expected, uint64_t& value) noexcept
{
    if (buffer == nullptr) return 0;

    const int length = std::countl_zero(buffer[0]) + 1;
    if (length != expected || length > 8) return -1;

    value = buffer[0] & (0xFFu >> length);
    for (int at = 1; at < length; ++at)
    {
        value = value << 8 | buffer[at];
    }
    return length;
}

void PutId(CMsbCursor& w, EbmlId id) noexcept
{
    for (uint32_t left = id.Length(); left != 0; --left)
    {
        w.U8(id.Value() >> 8 * (left - 1) & 0xFF);
    }
}

void PutSize(CMsbCursor& w, uint64_t size) noexcept
{
    uint32_t length = 0;
    const unsigned char* const bytes = CEbml::GetsizeID(size, length);
    w.Bytes({bytes, length});  // copied out: the next size overwrites the buffer
}

void PutUint8(CMsbCursor& w, EbmlId id, uint32_t value) noexcept
{
    PutId(w, id);
    PutSize(w, 1);
    w.U8(value);
}

void PutUint16(CMsbCursor& w, EbmlId id, uint32_t value) noexcept
{
    PutId(w, id);
    PutSize(w, 2);
    w.U16(value);
}

void PutUint24(CMsbCursor& w, EbmlId id, uint32_t value) noexcept
{
    PutId(w, id);
    PutSize(w, 3);
    w.U24(value);
}

void PutUint32(CMsbCursor& w, EbmlId id, uint32_t value) noexcept
{
    PutId(w, id);
    PutSize(w, 4);
    w.U32(value);
}

void PutUint64(CMsbCursor& w, EbmlId id, uint64_t value) noexcept
{
    PutId(w, id);
    PutSize(w, 8);
    w.U64(value);
}

void PutFloat64(CMsbCursor& w, EbmlId id, double value) noexcept
{
    PutId(w, id);
    PutSize(w, 8);
    w.F64(value);
}

void PutBytes(CMsbCursor& w, EbmlId id, std::span<const unsigned char> bytes) noexcept
{
    PutId(w, id);
    PutSize(w, bytes.size());
    w.Bytes(bytes);
}

void PutString(CMsbCursor& w, EbmlId id, std::string_view text) noexcept
{
    PutId(w, id);
    PutSize(w, text.size());
    for (const char character : text)
        w.U8(static_cast<unsigned char>(character));
}

CEbmlScope::CEbmlScope(CMsbCursor& w, EbmlId id) noexcept : m_cursor(w)
{
    PutId(w, id);
    w.U64(CEbml::SetID(0));
    m_begin = w.Produced();
}

CEbmlScope::~CEbmlScope()
{
    // Contents are shorter than 4 GiB: the upper half stays as it is.
    m_cursor.PatchU32(m_begin - 4, static_cast<uint32_t>(m_cursor.Produced() - m_begin));
}

}  // namespace Orbel::Wrapton

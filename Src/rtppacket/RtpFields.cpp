#include "rtppacket/RtpFields.h"

#include <algorithm>
#include <cstring>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr size_t kWordLen = 4;

}  // namespace

unsigned char* CRtpFields::Place(size_t at, size_t count) const noexcept
{
    if (at > m_packet.size() || count > m_packet.size() - at) return nullptr;
    return m_packet.data() + at;
}

uint32_t CRtpFields::GetBits(const BitPlace& place) const noexcept
{
    return GetNumber(place.at, 1) >> place.shift & ((1u << place.width) - 1);
}

void CRtpFields::SetBits(const BitPlace& place, uint32_t value) noexcept
{
    const uint32_t mask = ((1u << place.width) - 1) << place.shift;
    const uint32_t byte = (GetNumber(place.at, 1) & ~mask) | (value << place.shift & mask);
    MSB_uint8_to_memory(Place(place.at, 1), static_cast<uint8_t>(byte));
}

uint32_t CRtpFields::GetNumber(size_t at, size_t bytes) const noexcept
{
    const unsigned char* const place = Place(at, bytes);
    uint32_t number = 0;
    for (size_t i = 0; place != nullptr && i < bytes; ++i)
    {
        number = number << 8 | place[i];
    }
    return number;
}

void CRtpFields::Clear() noexcept
{
    unsigned char* const place = Place(0, kFixedLen);
    if (place != nullptr) std::memset(place, 0, kFixedLen);
}

uint32_t CRtpFields::GetVersion() const noexcept
{
    return GetBits(kVersion);
}

void CRtpFields::SetVersion(uint32_t version) noexcept
{
    SetBits(kVersion, version);
}

bool CRtpFields::GetPadding() const noexcept
{
    return GetBits(kPadding) != 0;
}

void CRtpFields::SetPadding(bool padding) noexcept
{
    SetBits(kPadding, padding ? 1 : 0);
}

void CRtpFields::SetPaddingLength(uint8_t length) noexcept
{
    if (!m_packet.empty()) m_packet.back() = length;
}

bool CRtpFields::GetExtension() const noexcept
{
    return GetBits(kExtension) != 0;
}

void CRtpFields::SetExtension(bool extension) noexcept
{
    SetBits(kExtension, extension ? 1 : 0);
}

uint32_t CRtpFields::GetContribSrcCount() const noexcept
{
    return GetBits(kContribSrcCount);
}

void CRtpFields::SetContribSrcCount(uint32_t count) noexcept
{
    SetBits(kContribSrcCount, count);
}

bool CRtpFields::GetMarker() const noexcept
{
    return GetBits(kMarker) != 0;
}

void CRtpFields::SetMarker(bool marker) noexcept
{
    SetBits(kMarker, marker ? 1 : 0);
}

uint32_t CRtpFields::GetPayloadType() const noexcept
{
    return GetBits(kPayloadType);
}

void CRtpFields::SetPayloadType(uint32_t payload_type) noexcept
{
    SetBits(kPayloadType, payload_type);
}

uint16_t CRtpFields::GetSequenceNumber() const noexcept
{
    return static_cast<uint16_t>(GetNumber(kSequenceNumber, 2));
}

void CRtpFields::SetSequenceNumber(uint16_t number) noexcept
{
    MSB_uint16_to_memory(Place(kSequenceNumber, 2), number);
}

uint32_t CRtpFields::GetTimestamp() const noexcept
{
    return GetNumber(kTimestamp, 4);
}

void CRtpFields::SetTimestamp(uint32_t timestamp) noexcept
{
    MSB_uint32_to_memory(Place(kTimestamp, 4), timestamp);
}

uint32_t CRtpFields::GetSyncSource() const noexcept
{
    return GetNumber(kSyncSource, 4);
}

void CRtpFields::SetSyncSource(uint32_t ssrc) noexcept
{
    MSB_uint32_to_memory(Place(kSyncSource, 4), ssrc);
}

uint32_t CRtpFields::GetContribSource(uint32_t index) const noexcept
{
    return index < GetContribSrcCount() ? GetNumber(kFixedLen + kWordLen * index, 4) : 0;
}

void CRtpFields::SetContribSource(uint32_t index, uint32_t source) noexcept
{
    if (index >= GetContribSrcCount()) return;
    MSB_uint32_to_memory(Place(kFixedLen + kWordLen * index, 4), source);
}

size_t CRtpFields::ExtensionAt() const noexcept
{
    return kFixedLen + kWordLen * GetContribSrcCount();
}

uint16_t CRtpFields::GetExtensionType() const noexcept
{
    return GetExtension() ? static_cast<uint16_t>(GetNumber(ExtensionAt(), 2)) : uint16_t{0};
}

void CRtpFields::SetExtensionType(uint16_t type) noexcept
{
    if (GetExtension()) MSB_uint16_to_memory(Place(ExtensionAt(), 2), type);
}

uint16_t CRtpFields::GetExtensionSize() const noexcept
{
    return GetExtension() ? static_cast<uint16_t>(GetNumber(ExtensionAt() + 2, 2)) : uint16_t{0};
}

void CRtpFields::SetExtensionSize(uint16_t words) noexcept
{
    if (GetExtension()) MSB_uint16_to_memory(Place(ExtensionAt() + 2, 2), words);
}

std::span<unsigned char> CRtpFields::GetExtensionHead() const noexcept
{
    const size_t at = ExtensionAt() + kExtensionFixedLen;
    if (!GetExtension() || at > m_packet.size()) return {};
    return m_packet.subspan(at, std::min(kWordLen * GetExtensionSize(), m_packet.size() - at));
}

size_t CRtpFields::GetHeaderSize() const noexcept
{
    const size_t extension = kExtensionFixedLen + kWordLen * GetExtensionSize();
    return ExtensionAt() + (GetExtension() ? extension : 0);
}

size_t CRtpFields::GetPayloadSize() const noexcept
{
    const size_t padding = GetPadding() ? m_packet.back() : 0;
    const size_t around = GetHeaderSize() + padding;
    return m_packet.size() > around ? m_packet.size() - around : 0;
}

std::span<unsigned char> CRtpFields::GetPayloadData() const noexcept
{
    const size_t size = GetPayloadSize();
    return size != 0 ? m_packet.subspan(GetHeaderSize(), size) : std::span<unsigned char>();
}

void CRtpFields::SetPayloadData(std::span<const unsigned char> data, size_t at) noexcept
{
    unsigned char* const place = Place(GetHeaderSize() + at, data.size());
    if (place != nullptr && !data.empty()) std::memcpy(place, data.data(), data.size());
}

void CRtpFields::SetFUAHeader(uint8_t nal_header, bool start, bool end) noexcept
{
    unsigned char* const place = Place(GetHeaderSize(), kFuaLen);
    if (place == nullptr) return;

    CMsbCursor w({place, kFuaLen});
    PutFuaHeader(w, nal_header, start, end);
}

}  // namespace Orbel::Wrapton

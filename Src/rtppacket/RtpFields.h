#ifndef WRAPTON_RTPPACKET_RTPFIELDS_H
#define WRAPTON_RTPPACKET_RTPFIELDS_H

#include <cstddef>
#include <cstdint>
#include <span>

#include "tool/ByteCursor.h"

namespace Orbel::Wrapton
{

/// FU indicator and FU header of a fragment of the NAL unit with this header, RFC 6184 5.8.
inline void PutFuaHeader(CMsbCursor& w, uint8_t nal_header, bool start, bool end) noexcept
{
    constexpr uint32_t kFuaType = 28;

    w.Bits<8>(Field<3>(nal_header >> 5u),  // forbidden_zero_bit, nal_ref_idc
              Field<5>(kFuaType));
    w.Bits<8>(Field<1>(start ? 1 : 0),
              Field<1>(end ? 1 : 0),
              Field<1>(0),  // reserved
              Field<5>(nal_header));
}

/**
 * The fields of one RTP packet in its place in memory, RFC 3550 5.1 and 5.3.1:
 *
 *      0                   1                   2                   3
 *      0 1 2 3 4 5 6 7 8 9 0 1 2 3 4 5 6 7 8 9 0 1 2 3 4 5 6 7 8 9 0 1
 *     +---+-+-+-------+-+-------------+-------------------------------+
 *     |V=2|P|X|  CC   |M|     PT      |       sequence number         |
 *     +---+-+-+-------+-+-------------+-------------------------------+
 *     |                           timestamp                           |
 *     +---------------------------------------------------------------+
 *     |                  synchronisation source (SSRC)                |
 *     +---------------------------------------------------------------+
 *     |                  contributing sources, CC of them             |
 *     +-------------------------------+-------------------------------+
 *     |  extension type, only if X    |   extension size in words     |
 *     +-------------------------------+-------------------------------+
 *     |                        extension words                        |
 *     +---------------------------------------------------------------+
 *     |                           payload ...                         |
 *
 * The packet's length is that of the span. A field outside it reads as 0 and is not written.
 */
class CRtpFields
{
public:
    static constexpr size_t kFixedLen = 12;
    static constexpr size_t kExtensionFixedLen = 4;  // type and size
    static constexpr size_t kFuaLen = 2;

    explicit CRtpFields(std::span<unsigned char> packet) noexcept : m_packet(packet) {}

    /// Makes the fixed header all zero.
    void Clear() noexcept;

    [[nodiscard]] uint32_t GetVersion() const noexcept;
    void SetVersion(uint32_t version) noexcept;

    /// Whether the packet ends in padding; its last byte then counts the padding, itself included.
    [[nodiscard]] bool GetPadding() const noexcept;
    void SetPadding(bool padding) noexcept;
    void SetPaddingLength(uint8_t length) noexcept;

    [[nodiscard]] bool GetExtension() const noexcept;
    void SetExtension(bool extension) noexcept;

    [[nodiscard]] uint32_t GetContribSrcCount() const noexcept;
    void SetContribSrcCount(uint32_t count) noexcept;

    [[nodiscard]] bool GetMarker() const noexcept;
    void SetMarker(bool marker) noexcept;

    [[nodiscard]] uint32_t GetPayloadType() const noexcept;
    void SetPayloadType(uint32_t payload_type) noexcept;

    [[nodiscard]] uint16_t GetSequenceNumber() const noexcept;
    void SetSequenceNumber(uint16_t number) noexcept;

    [[nodiscard]] uint32_t GetTimestamp() const noexcept;
    void SetTimestamp(uint32_t timestamp) noexcept;

    [[nodiscard]] uint32_t GetSyncSource() const noexcept;
    void SetSyncSource(uint32_t ssrc) noexcept;

    /// @p index from 0, below GetContribSrcCount().
    [[nodiscard]] uint32_t GetContribSource(uint32_t index) const noexcept;
    void SetContribSource(uint32_t index, uint32_t source) noexcept;

    // The places of everything below depend on the count of contributing sources and on the
    // extension flag and size: these are set first.

    [[nodiscard]] uint16_t GetExtensionType() const noexcept;
    void SetExtensionType(uint16_t type) noexcept;
    /// In words of 4 bytes.
    [[nodiscard]] uint16_t GetExtensionSize() const noexcept;
    void SetExtensionSize(uint16_t words) noexcept;
    /// The extension words, as far as the packet holds them; empty without an extension.
    [[nodiscard]] std::span<unsigned char> GetExtensionHead() const noexcept;

    [[nodiscard]] size_t GetHeaderSize() const noexcept;
    /// Without the padding.
    [[nodiscard]] size_t GetPayloadSize() const noexcept;
    [[nodiscard]] std::span<unsigned char> GetPayloadData() const noexcept;
    /// Copies @p data to @p at, counted from the payload's beginning.
    void SetPayloadData(std::span<const unsigned char> data, size_t at = 0) noexcept;

    /// Begins the payload of a fragment of the NAL unit that @p nal_header heads, RFC 6184 5.8.
    void SetFUAHeader(uint8_t nal_header, bool start, bool end) noexcept;

private:
    /// Bits within a byte.
    struct BitPlace
    {
        size_t at;
        unsigned shift;
        unsigned width;
    };
    static constexpr BitPlace kVersion{0, 6, 2};
    static constexpr BitPlace kPadding{0, 5, 1};
    static constexpr BitPlace kExtension{0, 4, 1};
    static constexpr BitPlace kContribSrcCount{0, 0, 4};
    static constexpr BitPlace kMarker{1, 7, 1};
    static constexpr BitPlace kPayloadType{1, 0, 7};
    static constexpr size_t kSequenceNumber = 2;
    static constexpr size_t kTimestamp = 4;
    static constexpr size_t kSyncSource = 8;

    /// @p count bytes at @p at; null when the packet does not hold them.
    [[nodiscard]] unsigned char* Place(size_t at, size_t count) const noexcept;
    [[nodiscard]] uint32_t GetBits(const BitPlace& place) const noexcept;
    void SetBits(const BitPlace& place, uint32_t value) noexcept;
    [[nodiscard]] uint32_t GetNumber(size_t at, size_t bytes) const noexcept;
    [[nodiscard]] size_t ExtensionAt() const noexcept;

    std::span<unsigned char> m_packet;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_RTPPACKET_RTPFIELDS_H

#ifndef WRAPTON_TOOL_STREAMTOOL_H
#define WRAPTON_TOOL_STREAMTOOL_H

#include <bit>
#include <cstdint>
#include <cstring>

namespace Orbel::Wrapton
{

/// A globally unique identifier, RFC 9562.
struct _GUID
{
    uint32_t Data1;
    uint16_t Data2;
    uint16_t Data3;
    uint8_t Data4[8];
};

// Byte writers. Each stores a value at `memory` and returns how many bytes it wrote; a null
// `memory` writes nothing and gives 0. 16- and 24-bit writers store the low bits of the value.

/// Stores a word as it stands in a register: one instruction, where single bytes would keep a
/// writer from being inlined.
template <class Word>
inline uint32_t StoreWord(unsigned char* memory, Word word) noexcept
{
    static_assert(std::endian::native == std::endian::little);
    if (memory == nullptr) return 0;
    std::memcpy(memory, &word, sizeof(word));
    return sizeof(word);
}

inline uint32_t MSB_uint8_to_memory(unsigned char* memory, uint8_t value) noexcept
{
    if (memory == nullptr) return 0;
    memory[0] = value;
    return 1;
}

inline uint32_t MSB_uint16_to_memory(unsigned char* memory, uint32_t value) noexcept
{
    return StoreWord(memory, __builtin_bswap16(static_cast<uint16_t>(value)));
}

inline uint32_t MSB_uint24_to_memory(unsigned char* memory, uint32_t value) noexcept
{
    if (memory == nullptr) return 0;
    memory[0] = static_cast<unsigned char>(value >> 16);
    MSB_uint16_to_memory(memory + 1, value);
    return 3;
}

inline uint32_t MSB_uint32_to_memory(unsigned char* memory, uint32_t value) noexcept
{
    return StoreWord(memory, __builtin_bswap32(value));
}

inline uint32_t MSB_uint64_to_memory(unsigned char* memory, uint64_t value) noexcept
{
    return StoreWord(memory, __builtin_bswap64(value));
}

/// The IEEE 754 bit pattern.
inline uint32_t MSB_float64_to_memory(unsigned char* memory, double value) noexcept
{
    return MSB_uint64_to_memory(memory, std::bit_cast<uint64_t>(value));
}

inline uint32_t LSB_uint8_to_memory(unsigned char* memory, uint8_t value) noexcept
{
    return MSB_uint8_to_memory(memory, value);
}

inline uint32_t LSB_uint16_to_memory(unsigned char* memory, uint32_t value) noexcept
{
    return StoreWord(memory, static_cast<uint16_t>(value));
}

inline uint32_t LSB_uint32_to_memory(unsigned char* memory, uint32_t value) noexcept
{
    return StoreWord(memory, value);
}

inline uint32_t LSB_uint64_to_memory(unsigned char* memory, uint64_t value) noexcept
{
    return StoreWord(memory, value);
}

/// Data1 to Data3 little-endian, then the bytes of Data4 as they stand.
uint32_t LSB_guid_to_memory(unsigned char* memory, const _GUID& value) noexcept;

/// 7-bit groups in 1 to 4 bytes. The lowest group stands first and every later byte carries the top
/// bit. Kept: the expandable size of ISO/IEC 14496-1 8.3.3 has the highest group first; both agree
/// up to 127.
uint32_t MSB_compact_int_to_memory(unsigned char* memory, int32_t value) noexcept;
uint32_t LSB_compact_int_to_memory(unsigned char* memory, int32_t value) noexcept;
/// How many bytes the compact writers use for @p value.
uint32_t CompactIntSize(int32_t value) noexcept;

// Checksums over `len` bytes at `data`; 0 for a null pointer. A negative length counts as 0.

/// CRC-32 of ISO/IEC 3309: reflected, polynomial 0xEDB88320.
uint32_t GetCRC32(const unsigned char* data, int32_t len) noexcept;
/// Sum of the little-endian 32-bit words; the last 1 to 3 bytes count as a word filled up with 0.
uint32_t GetSum32(const unsigned char* data, int32_t len) noexcept;
uint8_t GetSum8(const unsigned char* data, int32_t len) noexcept;
/// XOR of the bytes. Kept: fewer than 2 bytes give 0.
uint32_t GetXor32(const unsigned char* data, int32_t len) noexcept;

/// The audio format tag of RIFF and ASF stream headers (RFC 2361) for an SG_ENCODE_AUDIO_TYPE;
/// 0 when the table has none.
uint16_t get_codec_id(unsigned int encode) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_STREAMTOOL_H

/**
 * @file Bytes.h
 * Expected bytes, typed a field per line, and their comparison with what came out.
 */
#ifndef WRAPTON_TESTS_SUPPORT_BYTES_H
#define WRAPTON_TESTS_SUPPORT_BYTES_H

#include <cstddef>
#include <cstdint>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include <gtest/gtest.h>

namespace Support
{

using Bytes = std::vector<unsigned char>;

/// Bytes from hexadecimal digits; blanks separate, anything else throws.
Bytes Hex(std::string_view digits);

/// The characters of @p text, without a terminator.
Bytes Text(std::string_view text);

Bytes U8(uint32_t value);
Bytes Msb16(uint32_t value);
Bytes Msb24(uint32_t value);
Bytes Msb32(uint32_t value);
Bytes Msb64(uint64_t value);
Bytes Lsb16(uint32_t value);
Bytes Lsb32(uint32_t value);
Bytes Lsb64(uint64_t value);

/// @p count zero bytes.
Bytes Zero(std::size_t count);

/**
 * @p count bytes that look like payload: none is below 0x10, so no start code and no length field
 * can be mistaken for a part of it. Another @p seed gives other bytes.
 */
Bytes Payload(std::size_t count, uint32_t seed = 1);

Bytes Join(std::initializer_list<Bytes> parts);
void Append(Bytes& to, const Bytes& more);

/// Bytes from @p at on, @p count of them; throws when there are fewer.
Bytes Slice(const Bytes& bytes, std::size_t at, std::size_t count);

/// Big-endian numbers out of bytes; throw when there are too few.
uint32_t ReadMsb16(const Bytes& bytes, std::size_t at);
uint32_t ReadMsb32(const Bytes& bytes, std::size_t at);
uint64_t ReadMsb64(const Bytes& bytes, std::size_t at);

std::string ToHex(const Bytes& bytes);

/// Equality that shows the first difference with its surroundings.
::testing::AssertionResult Same(const Bytes& actual, const Bytes& expected);

/// The whole file; throws when it cannot be read.
Bytes ReadFile(const std::string& path);

}  // namespace Support

#endif  // WRAPTON_TESTS_SUPPORT_BYTES_H

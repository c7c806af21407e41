#include "support/Bytes.h"

#include <algorithm>
#include <fstream>
#include <iterator>
#include <stdexcept>

namespace Support
{
namespace
{

Bytes Number(uint64_t value, std::size_t width, bool mostSignificantFirst)
{
    Bytes bytes(width);
    for (std::size_t i = 0; i < width; ++i)
    {
        bytes[i] = static_cast<unsigned char>(value >> (8 * i));
    }
    if (mostSignificantFirst)
    {
        std::reverse(bytes.begin(), bytes.end());
    }
    return bytes;
}

uint32_t Digit(char c)
{
    if (c >= '0' && c <= '9')
    {
        return static_cast<uint32_t>(c - '0');
    }
    if (c >= 'A' && c <= 'F')
    {
        return static_cast<uint32_t>(c - 'A') + 10;
    }
    if (c >= 'a' && c <= 'f')
    {
        return static_cast<uint32_t>(c - 'a') + 10;
    }
    throw std::invalid_argument("not a hexadecimal digit");
}

uint64_t ReadMsb(const Bytes& bytes, std::size_t at, std::size_t width)
{
    uint64_t value = 0;
    for (std::size_t i = 0; i < width; ++i)
    {
        value = (value << 8) | bytes.at(at + i);
    }
    return value;
}

}  // namespace

Bytes Hex(std::string_view digits)
{
    Bytes bytes;
    bool half = false;
    for (const char c : digits)
    {
        if (c == ' ')
        {
            if (half)
            {
                throw std::invalid_argument("a byte has two digits");
            }
            continue;
        }
        if (half)
        {
            bytes.back() = static_cast<unsigned char>((bytes.back() << 4) | Digit(c));
        }
        else
        {
            bytes.push_back(static_cast<unsigned char>(Digit(c)));
        }
        half = !half;
    }
    if (half)
    {
        throw std::invalid_argument("a byte has two digits");
    }
    return bytes;
}

Bytes Text(std::string_view text)
{
    return {text.begin(), text.end()};
}

Bytes U8(uint32_t value)
{
    return Number(value, 1, true);
}
Bytes Msb16(uint32_t value)
{
    return Number(value, 2, true);
}
Bytes Msb24(uint32_t value)
{
    return Number(value, 3, true);
}
Bytes Msb32(uint32_t value)
{
    return Number(value, 4, true);
}
Bytes Msb64(uint64_t value)
{
    return Number(value, 8, true);
}
Bytes Lsb16(uint32_t value)
{
    return Number(value, 2, false);
}
Bytes Lsb32(uint32_t value)
{
    return Number(value, 4, false);
}
Bytes Lsb64(uint64_t value)
{
    return Number(value, 8, false);
}

Bytes Zero(std::size_t count)
{
    return Bytes(count, 0);
}

Bytes Payload(std::size_t count, uint32_t seed)
{
    Bytes bytes(count);
    uint32_t state = seed * 2654435761u + 1;
    for (unsigned char& byte : bytes)
    {
        state = state * 1664525u + 1013904223u;
        byte = static_cast<unsigned char>(0x10 + (state >> 24) % 0xE0);
    }
    return bytes;
}

Bytes Join(std::initializer_list<Bytes> parts)
{
    Bytes all;
    for (const Bytes& part : parts)
    {
        Append(all, part);
    }
    return all;
}

void Append(Bytes& to, const Bytes& more)
{
    to.insert(to.end(), more.begin(), more.end());
}

Bytes Slice(const Bytes& bytes, std::size_t at, std::size_t count)
{
    if (at > bytes.size() || count > bytes.size() - at)
    {
        throw std::out_of_range("slice beyond the bytes");
    }
    const auto from = bytes.begin() + static_cast<std::ptrdiff_t>(at);
    return {from, from + static_cast<std::ptrdiff_t>(count)};
}

uint32_t ReadMsb16(const Bytes& bytes, std::size_t at)
{
    return static_cast<uint32_t>(ReadMsb(bytes, at, 2));
}

uint32_t ReadMsb32(const Bytes& bytes, std::size_t at)
{
    return static_cast<uint32_t>(ReadMsb(bytes, at, 4));
}

uint64_t ReadMsb64(const Bytes& bytes, std::size_t at)
{
    return ReadMsb(bytes, at, 8);
}

std::string ToHex(const Bytes& bytes)
{
    static constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string text;
    for (const unsigned char byte : bytes)
    {
        if (!text.empty())
        {
            text += ' ';
        }
        text += kDigits[byte >> 4];
        text += kDigits[byte & 15];
    }
    return text;
}

::testing::AssertionResult Same(const Bytes& actual, const Bytes& expected)
{
    if (actual == expected)
    {
        return ::testing::AssertionSuccess();
    }
    const std::size_t common = std::min(actual.size(), expected.size());
    std::size_t at = 0;
    while (at < common && actual[at] == expected[at])
    {
        ++at;
    }
    const std::size_t from = at < 8 ? 0 : at - 8;
    const auto around = [from](const Bytes& bytes)
    { return ToHex(Slice(bytes, from, std::min<std::size_t>(32, bytes.size() - from))); };
    return ::testing::AssertionFailure()
           << actual.size() << " bytes came, " << expected.size() << " expected, first difference "
           << "at " << at << "; from " << from << ":\n  came     " << around(actual)
           << "\n  expected " << around(expected);
}

Bytes ReadFile(const std::string& path)
{
    std::ifstream file(path, std::ios::binary);
    if (!file)
    {
        throw std::runtime_error("cannot read " + path);
    }
    return {std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
}

}  // namespace Support

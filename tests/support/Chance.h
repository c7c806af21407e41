/**
 * @file Chance.h
 * Choices that are the same in every run.
 */
#ifndef WRAPTON_TESTS_SUPPORT_CHANCE_H
#define WRAPTON_TESTS_SUPPORT_CHANCE_H

#include <cstdint>
#include <initializer_list>
#include <random>

#include "support/Bytes.h"

namespace Support
{

class Chance
{
public:
    explicit Chance(uint32_t seed) : m_engine(seed) {}

    uint32_t Below(uint32_t bound) { return static_cast<uint32_t>(m_engine()) % bound; }

    uint32_t OneOf(std::initializer_list<uint32_t> values)
    {
        return values.begin()[Below(static_cast<uint32_t>(values.size()))];
    }

    /// @p count bytes, each one of @p values.
    Bytes BytesOf(std::initializer_list<uint32_t> values, std::size_t count)
    {
        Bytes bytes(count);
        for (unsigned char& byte : bytes)
        {
            byte = static_cast<unsigned char>(OneOf(values));
        }
        return bytes;
    }

private:
    std::mt19937 m_engine;
};

}  // namespace Support

#endif  // WRAPTON_TESTS_SUPPORT_CHANCE_H

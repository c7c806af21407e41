// Start codes and headers against plain rereadings of their rules.
#include "mkvpacket/MkvCodec.h"

#include <random>

#include "support/Bytes.h"

namespace Orbel::Wrapton
{
namespace
{

using Support::Bytes;
using Support::Same;

/// Byte by byte: every 00 00 00 01 of the frame as it came is replaced.
Bytes Reference(const Bytes& frame, Bytes& sps, Bytes& pps)
{
    std::vector<std::size_t> starts;
    for (std::size_t at = 0; at + 4 <= frame.size();)
    {
        const bool code =
            frame[at] == 0 && frame[at + 1] == 0 && frame[at + 2] == 0 && frame[at + 3] == 1;
        if (code) starts.push_back(at);
        at += code ? 4 : 1;
    }
    starts.push_back(frame.size());

    Bytes converted = frame;
    for (std::size_t number = 0; number + 1 < starts.size(); ++number)
    {
        const Bytes unit(frame.begin() + static_cast<std::ptrdiff_t>(starts[number] + 4),
                         frame.begin() + static_cast<std::ptrdiff_t>(starts[number + 1]));
        const Bytes length = Support::Msb32(static_cast<uint32_t>(unit.size()));
        std::copy(length.begin(),
                  length.end(),
                  converted.begin() + static_cast<std::ptrdiff_t>(starts[number]));
        if (unit.empty() || unit.size() > 255) continue;
        if ((unit[0] & 0x1F) == 7 && sps.empty()) sps = unit;
        if ((unit[0] & 0x1F) == 8 && pps.empty()) pps = unit;
    }
    return converted;
}

/// Bytes in which start codes, whole and broken, are frequent.
Bytes Dense(std::mt19937& random, std::size_t size)
{
    Bytes bytes(size);
    for (unsigned char& byte : bytes)
    {
        static constexpr unsigned char kChoices[] = {0, 0, 0, 0, 1, 1, 7, 8, 0xB3};
        byte = kChoices[random() % sizeof(kChoices)];
    }
    return bytes;
}

TEST(ConvertStartCodes, AgreesWithAByteByByteReading)
{
    std::mt19937 random(20);
    for (int round = 0; round < 200000; ++round)
    {
        const Bytes frame = Dense(random, random() % 40);
        Bytes sps;
        Bytes pps;
        const Bytes expected = Reference(frame, sps, pps);
        Bytes actual = frame;
        MKV_AVCC config;
        ConvertStartCodes(actual, config);
        ASSERT_TRUE(Same(actual, expected)) << Support::ToHex(frame);
        ASSERT_EQ(config.sps_length, static_cast<int16_t>(sps.size()));
        ASSERT_EQ(config.pps_length, static_cast<int16_t>(pps.size()));
        ASSERT_TRUE(std::equal(sps.begin(), sps.end(), config.sps_data.begin()));
        ASSERT_TRUE(std::equal(pps.begin(), pps.end(), config.pps_data.begin()));
        ASSERT_EQ(config.configurate_version, !sps.empty() && !pps.empty() ? 1 : 0);
    }
}

Bytes HeadersReference(const Bytes& frame)
{
    const auto find = [&](std::size_t from, unsigned char one, unsigned char other)
    {
        for (std::size_t at = from; at + 4 <= frame.size(); ++at)
        {
            if (frame[at] == 0 && frame[at + 1] == 0 && frame[at + 2] == 1 &&
                (frame[at + 3] == one || frame[at + 3] == other))
            {
                return at;
            }
        }
        return frame.size();
    };
    const std::size_t begin = find(0, 0xB0, 0xB5);
    const std::size_t end = find(begin, 0xB3, 0xB6);
    if (end == frame.size()) return {};
    return Support::Slice(frame, begin, end - begin);
}

TEST(FindMpeg4Headers, AgreesWithAByteByByteReading)
{
    std::mt19937 random(30);
    for (int round = 0; round < 200000; ++round)
    {
        Bytes frame(random() % 40);
        for (unsigned char& byte : frame)
        {
            static constexpr unsigned char kChoices[] = {0, 0, 0, 0, 1, 1, 0xB0, 0xB5, 0xB3, 0xB6};
            byte = kChoices[random() % sizeof(kChoices)];
        }
        const auto found = FindMpeg4Headers(frame);
        ASSERT_TRUE(Same({found.begin(), found.end()}, HeadersReference(frame)))
            << Support::ToHex(frame);
    }
}

}  // namespace
}  // namespace Orbel::Wrapton

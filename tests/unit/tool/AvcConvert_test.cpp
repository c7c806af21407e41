#include "tool/AvcConvert.h"

#include <algorithm>
#include <memory>
#include <random>

#include "readers/AnnexBReference.h"
#include "support/Bytes.h"

namespace Orbel::Wrapton
{
namespace
{

using Readers::ReferenceH264ToAvc;
using Readers::ReferenceParameterSet;
using Readers::ReferenceResult;
using Support::Bytes;
using Support::Hex;
using Support::Join;
using Support::Payload;
using Support::Same;

constexpr unsigned char kUntouched = 0xEE;

/// Calls an operation with input and output in allocations of exactly their sizes.
template <class Operation>
ReferenceResult Call(Operation operation, const Bytes& data, std::size_t capacity)
{
    const auto in = std::make_unique<unsigned char[]>(data.size());
    std::copy(data.begin(), data.end(), in.get());
    const auto out = std::make_unique<unsigned char[]>(capacity);
    std::fill_n(out.get(), capacity, kUntouched);

    CAvcConvert convert;
    ReferenceResult came;
    came.result = (convert.*operation)(in.get(),
                                       static_cast<unsigned int>(data.size()),
                                       out.get(),
                                       static_cast<unsigned int>(capacity));
    const auto written = static_cast<std::size_t>(std::max(came.result, 0));
    EXPECT_TRUE(std::all_of(out.get() + written,
                            out.get() + capacity,
                            [](unsigned char byte) { return byte == kUntouched; }))
        << "bytes behind the result were written to";
    EXPECT_TRUE(std::equal(data.begin(), data.end(), in.get())) << "the input was written to";
    came.written.assign(out.get(), out.get() + written);
    return came;
}

ReferenceResult Sps(const Bytes& data, std::size_t capacity = 64)
{
    return Call(&CAvcConvert::getSPS, data, capacity);
}

ReferenceResult Pps(const Bytes& data, std::size_t capacity = 64)
{
    return Call(&CAvcConvert::getPPS, data, capacity);
}

ReferenceResult Avc(const Bytes& data, std::size_t capacity = 64)
{
    return Call(&CAvcConvert::H264ToAvc, data, capacity);
}

TEST(CAvcConvert, TakesBothParameterSetsOutOfAnAccessUnit)
{
    const Bytes data = Hex("00 00 00 01 67 42 00 1F 00 00 01 68 CE");
    EXPECT_EQ(Sps(data).result, 4);
    EXPECT_EQ(Sps(data).written, Hex("67 42 00 1F"));
    EXPECT_EQ(Pps(data).result, 2);
    EXPECT_EQ(Pps(data).written, Hex("68 CE"));
}

TEST(CAvcConvert, LooksAtTheLowFiveBitsOfTheNalHeaderOnly)
{
    EXPECT_EQ(Sps(Hex("00 00 01 07 11 22 33")).written, Hex("07 11 22 33"));
    EXPECT_EQ(Sps(Hex("00 00 01 E7 11 22 33")).written, Hex("E7 11 22 33"));
    EXPECT_EQ(Pps(Hex("00 00 01 08 11 22 33")).written, Hex("08 11 22 33"));
    EXPECT_EQ(Sps(Hex("00 00 01 68 11 22 33")).result, 0);
    EXPECT_EQ(Sps(Hex("00 00 01 77 11 22 33")).result, 0);
    EXPECT_EQ(Pps(Hex("00 00 01 67 11 22 33")).result, 0);
}

TEST(CAvcConvert, TakesTheFirstOfTwoParameterSets)
{
    const Bytes data = Hex("00 00 01 67 AA 00 00 01 67 BB 00 00 01 68 CC 00 00 01 68 DD");
    EXPECT_EQ(Sps(data).written, Hex("67 AA"));
    EXPECT_EQ(Pps(data).written, Hex("68 CC"));
}

TEST(CAvcConvert, EndsAParameterSetAtEitherStartCode)
{
    EXPECT_EQ(Sps(Hex("00 00 01 67 AA 00 00 01 09 10")).written, Hex("67 AA"));
    EXPECT_EQ(Sps(Hex("00 00 01 67 AA 00 00 00 01 09")).written, Hex("67 AA"));
    // A further zero byte ahead of the four-byte form stays with the parameter set.
    EXPECT_EQ(Sps(Hex("00 00 01 67 AA 00 00 00 00 01 09")).written, Hex("67 AA 00"));
}

TEST(CAvcConvert, KeepsTheLastThreeBytesOfAParameterSetThatRunsToTheEnd)
{
    EXPECT_EQ(Sps(Hex("00 00 01 67 AA BB CC")).written, Hex("67 AA BB CC"));
    // With only three bytes left nothing ends a set any more, not even a start code.
    EXPECT_EQ(Sps(Hex("00 00 01 67 AA 00 00 01")).written, Hex("67 AA 00 00 01"));
    EXPECT_EQ(Sps(Hex("00 00 01 67 AA 00 00 00 01")).written, Hex("67 AA"));
    EXPECT_EQ(Sps(Hex("00 00 01 67 AA 00 00 01 09")).written, Hex("67 AA"));
}

TEST(CAvcConvert, FindsAParameterSetOfItsHeaderByteAlone)
{
    EXPECT_EQ(Sps(Hex("00 00 01 67")).written, Hex("67"));
    EXPECT_EQ(Sps(Hex("00 00 00 01 67")).written, Hex("67"));
    EXPECT_EQ(Sps(Hex("00 00 01 67 00 00 01 68")).written, Hex("67"));
    EXPECT_EQ(Pps(Hex("00 00 01 67 00 00 01 68")).written, Hex("68"));
}

TEST(CAvcConvert, FindsNothingInFewerThanFourBytes)
{
    for (const Bytes& data :
         {Bytes(), Hex("00"), Hex("67"), Hex("00 00"), Hex("00 00 01"), Hex("00 00 00")})
    {
        EXPECT_EQ(Sps(data).result, 0);
        EXPECT_EQ(Pps(data).result, 0);
        EXPECT_EQ(Avc(data).result, 0);
    }
}

TEST(CAvcConvert, AcceptsNullInputOfLengthZero)
{
    unsigned char out[8];
    CAvcConvert convert;
    EXPECT_EQ(convert.getSPS(nullptr, 0, out, sizeof(out)), 0);
    EXPECT_EQ(convert.getPPS(nullptr, 0, out, sizeof(out)), 0);
    EXPECT_EQ(convert.H264ToAvc(nullptr, 0, out, sizeof(out)), 0);
}

TEST(CAvcConvert, WritesNothingWhenTheParameterSetDoesNotFit)
{
    const Bytes data = Hex("00 00 01 67 42 00 1F 00 00 01 68 CE 3C");
    EXPECT_EQ(Sps(data, 3).result, 0);
    EXPECT_EQ(Sps(data, 4).result, 4);
    EXPECT_EQ(Sps(data, 5).result, 4);
    EXPECT_EQ(Pps(data, 2).result, 0);
    EXPECT_EQ(Pps(data, 3).result, 3);
}

TEST(CAvcConvert, DoesNotLookForASmallerParameterSetWhenTheFirstDoesNotFit)
{
    EXPECT_EQ(Sps(Hex("00 00 01 67 AA BB CC 00 00 01 67 DD"), 2).result, 0);
}

TEST(CAvcConvert, AsksForAnOutputInItsOwnWayInEachOperation)
{
    const Bytes data = Hex("00 00 01 67 42 00 00 01 68 CE");
    const auto size = static_cast<unsigned int>(data.size());
    unsigned char out[16];
    CAvcConvert convert;

    EXPECT_EQ(convert.getSPS(data.data(), size, nullptr, 16), -1);
    EXPECT_EQ(convert.getSPS(data.data(), size, out, 0), -1);
    EXPECT_EQ(convert.getSPS(data.data(), size, nullptr, 0), -1);

    // Kept: getPPS refuses only when both are missing. One alone is simply no room.
    EXPECT_EQ(convert.getPPS(data.data(), size, nullptr, 0), -1);
    EXPECT_EQ(convert.getPPS(data.data(), size, out, 0), 0);
    EXPECT_EQ(convert.getPPS(data.data(), size, nullptr, 16), 0);
    // Without a set to write, nothing hangs on the output.
    EXPECT_EQ(convert.getPPS(data.data(), 4, nullptr, 16), 0);

    EXPECT_EQ(convert.H264ToAvc(data.data(), size, nullptr, 16), -1);
    EXPECT_EQ(convert.H264ToAvc(data.data(), size, out, 0), -1);
    EXPECT_EQ(convert.H264ToAvc(data.data(), size, nullptr, 0), -1);
}

TEST(CAvcConvert, PutsALengthInThePlaceOfAStartCode)
{
    const Bytes data = Hex("00 00 01 65 AA BB");
    EXPECT_EQ(Avc(data).result, 7);
    EXPECT_TRUE(Same(Avc(data).written,
                     Hex("00 00 00 03 "  // length of the unit
                         "65 AA BB")));  // the unit
    EXPECT_EQ(Avc(data, 6).result, 0);
    EXPECT_EQ(Avc(data, 7).result, 7);
}

TEST(CAvcConvert, KeepsEveryUnitWhateverItsType)
{
    const Bytes data =
        Hex("00 00 00 01 09 10 "     // access unit delimiter
            "00 00 00 01 67 42 1F "  // sequence parameter set
            "00 00 01 68 CE "        // picture parameter set
            "00 00 01 06 05 01 "     // supplemental enhancement information
            "00 00 01 65 88 84");    // slice
    const Bytes expected =
        Hex("00 00 00 02 09 10 "
            "00 00 00 03 67 42 1F "
            "00 00 00 02 68 CE "
            "00 00 00 03 06 05 01 "
            "00 00 00 03 65 88 84");
    EXPECT_TRUE(Same(Avc(data).written, expected));
}

TEST(CAvcConvert, LeavesOutWhatStandsAheadOfTheFirstStartCode)
{
    EXPECT_EQ(Avc(Hex("12 34 00 00 01 65 AA")).written, Hex("00 00 00 02 65 AA"));
    EXPECT_EQ(Avc(Hex("12 34 56 78 9A")).result, 0);
}

TEST(CAvcConvert, KeepsTheUnitsAheadOfTheOneThatDoesNotFit)
{
    const Bytes data = Hex("00 00 01 67 42 00 00 01 68 CE 38 00 00 01 65 11");
    const Bytes first = Hex("00 00 00 02 67 42");
    EXPECT_EQ(Avc(data, 5).result, 0);
    EXPECT_EQ(Avc(data, 6).written, first);
    EXPECT_EQ(Avc(data, 9).written, first);   // no room for the length
    EXPECT_EQ(Avc(data, 10).written, first);  // room for the length only
    EXPECT_EQ(Avc(data, 12).written, first);  // the shorter third unit would fit, but stays out
    EXPECT_EQ(Avc(data, 13).written, Join({first, Hex("00 00 00 03 68 CE 38")}));
    EXPECT_EQ(Avc(data, 19).result, 19);
}

TEST(CAvcConvert, WritesAUnitOfLengthZero)
{
    EXPECT_EQ(Avc(Hex("00 00 00 01")).written, Hex("00 00 00 00"));
    EXPECT_EQ(Avc(Hex("00 00 01 00 00 01 65 11")).written, Hex("00 00 00 00 00 00 00 02 65 11"));
    EXPECT_EQ(Avc(Hex("00 00 00 01 00 00 00 01")).written, Hex("00 00 00 00 00 00 00 00"));
    EXPECT_EQ(Avc(Hex("00 00 00 01"), 3).result, 0);
    EXPECT_EQ(Avc(Hex("00 00 00 01"), 4).result, 4);
}

TEST(CAvcConvert, SeesNoThreeByteCodeInTheLastThreeBytes)
{
    EXPECT_EQ(Avc(Hex("00 00 01")).result, 0);
    EXPECT_EQ(Avc(Hex("FF 00 00 01")).result, 0);
    EXPECT_EQ(Avc(Hex("00 00 01 65 00 00 01")).written, Hex("00 00 00 04 65 00 00 01"));
    EXPECT_EQ(Avc(Hex("00 00 01 65 00 00 00 01")).written, Hex("00 00 00 01 65 00 00 00 00"));
}

TEST(CAvcConvert, WritesALengthThatNeedsAllFourBytes)
{
    const Bytes unit = Payload(0x01020304);
    const Bytes data = Join({Hex("00 00 01"), unit});
    const ReferenceResult came = Avc(data, unit.size() + 4);
    EXPECT_TRUE(Same(came.written, Join({Hex("01 02 03 04"), unit})));
}

TEST(CAvcConvert, ConvertsWholeFramesOrNothing)
{
    const Bytes data = Hex("00 00 01 67 42 00 00 01 65 11");
    Bytes out(12);
    EXPECT_EQ(CAvcConvert::ConvertWhole(data, out), 12u);
    EXPECT_EQ(out, Hex("00 00 00 02 67 42 00 00 00 02 65 11"));
    EXPECT_EQ(CAvcConvert::ConvertWhole(data, std::span(out).first(11)), std::nullopt);
    EXPECT_EQ(CAvcConvert::ConvertWhole(data, {}), std::nullopt);
    EXPECT_EQ(CAvcConvert::ConvertWhole({}, {}), 0u);
}

/// Compares all three operations with the reference, at capacities around the one that is needed.
void CompareWithReference(const Bytes& data)
{
    const std::size_t sps = ReferenceParameterSet(data, 7, data.size()).written.size();
    const std::size_t pps = ReferenceParameterSet(data, 8, data.size()).written.size();
    const std::size_t avc = ReferenceH264ToAvc(data, data.size() * 3 + 8).written.size();
    for (const std::size_t less : {0u, 1u, 2u, 5u})
    {
        const std::size_t spsRoom = std::max<std::size_t>(sps + 1 - std::min(sps, less), 1);
        const std::size_t ppsRoom = std::max<std::size_t>(pps + 1 - std::min(pps, less), 1);
        const std::size_t avcRoom = std::max<std::size_t>(avc + 1 - std::min(avc, less), 1);
        const ReferenceResult spsExpected = ReferenceParameterSet(data, 7, spsRoom);
        const ReferenceResult ppsExpected = ReferenceParameterSet(data, 8, ppsRoom);
        const ReferenceResult avcExpected = ReferenceH264ToAvc(data, avcRoom);
        const std::string shown = Support::ToHex(data);
        ASSERT_EQ(Sps(data, spsRoom).written, spsExpected.written) << shown;
        ASSERT_EQ(Pps(data, ppsRoom).written, ppsExpected.written) << shown;
        ASSERT_EQ(Avc(data, avcRoom).result, avcExpected.result) << shown;
        ASSERT_TRUE(Same(Avc(data, avcRoom).written, avcExpected.written)) << shown;
    }
}

TEST(CAvcConvert, AgreesWithTheReferenceOnEveryShortInput)
{
    // Every word of these letters up to a length at which two start codes fit.
    static constexpr unsigned char kLetters[] = {0x00, 0x01, 0x67};
    for (std::size_t length = 0; length <= 9; ++length)
    {
        Bytes data(length, kLetters[0]);
        std::vector<std::size_t> digits(length, 0);
        while (true)
        {
            CompareWithReference(data);
            if (HasFatalFailure()) return;
            std::size_t at = 0;
            while (at < length && ++digits[at] == std::size(kLetters))
            {
                digits[at] = 0;
                data[at] = kLetters[0];
                ++at;
            }
            if (at == length) break;
            data[at] = kLetters[digits[at]];
        }
    }
}

TEST(CAvcConvert, AgreesWithTheReferenceOnRandomInputRichInStartCodes)
{
    static constexpr unsigned char kLetters[] = {
        0x00, 0x00, 0x00, 0x00, 0x01, 0x01, 0x03, 0x67, 0x68, 0x65, 0x27, 0x28, 0xFF, 0x09};
    std::mt19937 random(20240229);
    for (std::size_t length = 0; length < 120; ++length)
    {
        for (int round = 0; round < 60; ++round)
        {
            Bytes data(length);
            for (unsigned char& byte : data)
            {
                byte = kLetters[random() % std::size(kLetters)];
            }
            CompareWithReference(data);
            if (HasFatalFailure()) return;
        }
    }
}

}  // namespace
}  // namespace Orbel::Wrapton

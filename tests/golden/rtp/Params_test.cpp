// SG_SetParam() and SG_GetParam().
#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>

#include "golden/rtp/Session.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Hex;
using Support::Payload;

/// A record with a distinct value in every field.
SGRtpPackageParam Filled(const Bytes& extension, const Bytes& custom)
{
    SGRtpPackageParam params{};
    params.struct_size = 3;  // not read
    params.max_packet_length = 1400;
    params.sequence_number = 1000;
    params.timestamp = 90001;
    params.ssrc = 0x11223344;
    params.audio_sample = 8000;
    params.payload_type = 0x1234567F;
    params.extension_data = extension.data();
    params.extension_data_length = static_cast<uint32_t>(extension.size());
    params.custom_data = custom.data();
    params.custom_data_length = static_cast<uint32_t>(custom.size());
    params.rtp_output_all_flag = 77;
    return params;
}

Bytes BytesAt(const unsigned char* data, uint32_t length)
{
    return data != nullptr ? Bytes(data, data + length) : Bytes();
}

TEST(RtpGetParam, GivesEveryFieldBackTheSequenceNumberOneLower)
{
    const Bytes extension = Payload(9, 2);
    const Bytes custom = Payload(5, 3);
    Session session(Filled(extension, custom));
    const SGRtpPackageParam params = session.Get();
    EXPECT_EQ(params.struct_size, 64u);
    EXPECT_EQ(params.max_packet_length, 1400u);
    EXPECT_EQ(params.sequence_number, 999u);
    EXPECT_EQ(params.timestamp, 90001u);
    EXPECT_EQ(params.ssrc, 0x11223344u);
    EXPECT_EQ(params.audio_sample, 8000u);
    EXPECT_EQ(params.payload_type, 0x1234567Fu);
    EXPECT_EQ(BytesAt(params.extension_data, params.extension_data_length), extension);
    EXPECT_NE(params.extension_data, extension.data());
    EXPECT_EQ(BytesAt(params.custom_data, params.custom_data_length), custom);
    EXPECT_NE(params.custom_data, custom.data());
    EXPECT_EQ(params.rtp_output_all_flag, 77u);
}

TEST(RtpGetParam, OfAFreshHandleGivesDefaults)
{
    Support::AppendingSink sink;
    Support::Recorder calls(SG_STREAM_TYPE_RTP, sink);
    SGRtpPackageParam params;
    std::memset(&params, 0xEE, sizeof(params));
    unsigned int length = 64;
    ASSERT_EQ(SG_GetParam(calls.Handle(), 0, &params, &length), SG_ERR_NOERR);
    EXPECT_EQ(params.struct_size, 64u);
    EXPECT_EQ(params.max_packet_length, 1000u);
    EXPECT_EQ(params.sequence_number, 0u);
    EXPECT_EQ(params.timestamp, 0u);
    EXPECT_EQ(params.audio_sample, 0u);
    EXPECT_EQ(params.payload_type, 0u);
    EXPECT_EQ(params.extension_data, nullptr);
    EXPECT_EQ(params.extension_data_length, 0u);
    EXPECT_EQ(params.custom_data, nullptr);
    EXPECT_EQ(params.custom_data_length, 0u);
    EXPECT_EQ(params.rtp_output_all_flag, 0u);
}

TEST(RtpGetParam, TellsTheNumberOfTheLastPacket)
{
    Session session;
    session.Input(Sound(3000));
    EXPECT_EQ(session.Get().sequence_number, 4u);
}

TEST(RtpGetParam, GivesAMaximumBackAsItWasSetAndZeroAs1000)
{
    for (const uint32_t maximum : {1u, 999u, 1000u, 65537u, 65538u, 0x7FFFFFFFu, 0xFFFFFFFFu})
    {
        SGRtpPackageParam params = Params();
        params.max_packet_length = maximum;
        EXPECT_EQ(Session(params).Get().max_packet_length, maximum);
    }
    SGRtpPackageParam params = Params();
    params.max_packet_length = 0;
    EXPECT_EQ(Session(params).Get().max_packet_length, 1000u);
}

TEST(RtpSetParam, SequenceNumberIsThatOfTheNextPacketIn16Bits)
{
    struct Case
    {
        uint32_t set;
        uint32_t got;
        uint32_t next;
    };
    for (const Case& c : {Case{100, 99, 100},
                          Case{1, 0, 1},
                          Case{0, 65535, 0},
                          Case{65536, 65535, 0},
                          Case{0x12345, 0x2344, 0x2345}})
    {
        SGRtpPackageParam params = Params();
        params.sequence_number = c.set;
        Session session(params);
        EXPECT_EQ(session.Get().sequence_number, c.got);
        EXPECT_EQ(session.Packets(Sound(1)).at(0).sequence, c.next);
    }
}

TEST(RtpSetParam, WorksBetweenFrames)
{
    Session session;
    session.Input(Sound(1));
    SGRtpPackageParam params = Params();
    params.sequence_number = 500;
    params.ssrc = 5;
    params.payload_type = 8;
    session.Set(params);
    const auto packets = session.Packets(Sound(1));
    ASSERT_EQ(packets.size(), 1u);
    EXPECT_EQ(packets[0].sequence, 500u);
    EXPECT_EQ(packets[0].ssrc, 5u);
    EXPECT_EQ(packets[0].payloadType, 8u);
}

TEST(RtpSetParam, CopiesWhatThePointersPointTo)
{
    Bytes extension = Hex("01 02 03 04");
    Bytes custom = Hex("05 06");
    Session session(Filled(extension, custom));
    extension.assign(4, 0xFF);
    custom.assign(2, 0xFF);
    const auto packets = session.Packets(Sound(1));
    ASSERT_EQ(packets.size(), 1u);
    ASSERT_TRUE(packets[0].extension.has_value());
    EXPECT_EQ(packets[0].extension->words, Hex("01 02 03 04"));
    EXPECT_EQ(packets[0].custom, Hex("05 06"));
}

TEST(RtpSetParam, TakesTheRecordThatAGetGave)
{
    const Bytes extension = Payload(1001, 2);
    const Bytes custom = Payload(127, 3);
    Session session(Filled(extension, custom));
    session.Set(session.Get());
    const SGRtpPackageParam params = session.Get();
    EXPECT_EQ(BytesAt(params.extension_data, params.extension_data_length), extension);
    EXPECT_EQ(BytesAt(params.custom_data, params.custom_data_length), custom);
    EXPECT_EQ(params.sequence_number, 998u);

    // A part of what is there already, from its middle.
    SGRtpPackageParam part = params;
    part.extension_data += 500;
    part.extension_data_length = 300;
    part.custom_data += 27;
    part.custom_data_length = 100;
    session.Set(part);
    const SGRtpPackageParam got = session.Get();
    EXPECT_EQ(BytesAt(got.extension_data, got.extension_data_length),
              Support::Slice(extension, 500, 300));
    EXPECT_EQ(BytesAt(got.custom_data, got.custom_data_length), Support::Slice(custom, 27, 100));
}

TEST(RtpSetParam, NullOrNoLengthClearsTheExtension)
{
    const Bytes extension = Hex("01 02 03 04");
    for (const bool null : {true, false})
    {
        Session session(Filled(extension, {}));
        SGRtpPackageParam params = Filled(extension, {});
        if (null)
            params.extension_data = nullptr;
        else
            params.extension_data_length = 0;
        session.Set(params);
        EXPECT_EQ(session.Get().extension_data, nullptr);
        EXPECT_EQ(session.Get().extension_data_length, 0u);
        EXPECT_FALSE(session.Packets(Sound(1)).at(0).extension.has_value());
    }
}

TEST(RtpSetParam, ExtensionOf65535WordsIsTakenAndALongerOneIsNot)
{
    const Bytes former = Hex("01 02 03 04");
    const Bytes most = Payload(65535 * 4);
    Session session(Filled(most, {}));
    EXPECT_EQ(session.Get().extension_data_length, 65535u * 4);

    session.Set(Filled(former, {}));
    SGRtpPackageParam params = Filled(former, {});
    params.ssrc = 9;
    // Lengths without bytes behind them: the refusal must not read.
    for (const uint32_t length : {65535u * 4 + 1, 65536u * 4, 0x80000000u, 0xFFFFFFFFu})
    {
        params.extension_data_length = length;
        session.Set(params);
        const SGRtpPackageParam got = session.Get();
        EXPECT_EQ(BytesAt(got.extension_data, got.extension_data_length), former) << length;
        EXPECT_EQ(got.ssrc, 9u) << "the other fields are set all the same";
    }
}

TEST(RtpSetParam, LengthOfCustomBytesIsASigned8BitNumber)
{
    struct Case
    {
        uint32_t set;
        uint32_t got;
    };
    const Bytes custom = Payload(1024);
    for (const Case& c : {Case{0, 0},
                          Case{1, 1},
                          Case{127, 127},
                          Case{128, 0},   // -128
                          Case{200, 0},   // -56
                          Case{255, 0},   // -1
                          Case{256, 0},   //
                          Case{300, 44},  //
                          Case{0xFFFFFFFFu, 0}})
    {
        SGRtpPackageParam params = Filled({}, custom);
        Session session(params);  // 1024 is 0 in 8 bits
        EXPECT_EQ(session.Get().custom_data, nullptr);
        params.custom_data_length = 2;
        session.Set(params);
        params.custom_data_length = c.set;
        session.Set(params);
        const SGRtpPackageParam got = session.Get();
        EXPECT_EQ(got.custom_data_length, c.got) << c.set;
        EXPECT_EQ(got.custom_data == nullptr, c.got == 0) << c.set;
        EXPECT_EQ(session.Packets(Sound(1)).at(0).custom, Support::Slice(custom, 0, c.got));
    }
}

TEST(RtpSetParam, NullClearsTheCustomBytes)
{
    const Bytes custom = Hex("01 02");
    Session session(Filled({}, custom));
    SGRtpPackageParam params = Filled({}, custom);
    params.custom_data = nullptr;
    session.Set(params);
    EXPECT_EQ(session.Get().custom_data, nullptr);
    EXPECT_EQ(session.Get().custom_data_length, 0u);
}

TEST(RtpSetParam, ChecksItsArgumentsInOrder)
{
    Session session;
    SGRtpPackageParam params = Params();
    void* const handle = session.Handle();
    EXPECT_EQ(SG_SetParam(nullptr, 0, nullptr, 0), SG_ERR_HANDLE_EMPTY);
    EXPECT_EQ(SG_SetParam(handle, 0, nullptr, 64), SG_ERR_PARAM_ERR);
    EXPECT_EQ(SG_SetParam(handle, 1, nullptr, 64), SG_ERR_PARAM_ERR);
    params.ssrc = 1;
    EXPECT_EQ(SG_SetParam(handle, 1, &params, 0), SG_ERR_NOERR);
    EXPECT_EQ(SG_SetParam(handle, 1, &params, 64), SG_ERR_NOERR);
    EXPECT_EQ(SG_SetParam(handle, 0, &params, 0), SG_ERR_PARAM_ERR);
    EXPECT_EQ(SG_SetParam(handle, 0, &params, 63), SG_ERR_PARAM_ERR);
    EXPECT_EQ(session.Get().ssrc, kSsrc) << "none of these sets anything";
    EXPECT_EQ(SG_SetParam(handle, 0, &params, 64), SG_ERR_NOERR);
    EXPECT_EQ(session.Get().ssrc, 1u);
    params.ssrc = 2;
    EXPECT_EQ(SG_SetParam(handle, 0, &params, 65), SG_ERR_NOERR);
    EXPECT_EQ(session.Get().ssrc, 2u);
}

TEST(RtpGetParam, ChecksItsArgumentsInOrder)
{
    Session session;
    SGRtpPackageParam params{};
    unsigned int length = 64;
    void* const handle = session.Handle();
    EXPECT_EQ(SG_GetParam(nullptr, 0, nullptr, nullptr), SG_ERR_HANDLE_EMPTY);
    EXPECT_EQ(SG_GetParam(handle, 0, nullptr, &length), SG_ERR_PARAM_ERR);
    EXPECT_EQ(SG_GetParam(handle, 0, &params, nullptr), SG_ERR_PARAM_ERR);
    EXPECT_EQ(SG_GetParam(handle, 1, nullptr, &length), SG_ERR_PARAM_ERR);
    EXPECT_EQ(length, 64u);
    length = 63;
    EXPECT_EQ(SG_GetParam(handle, 0, &params, &length), SG_ERR_PARAM_ERR);
    EXPECT_EQ(length, 63u);
    EXPECT_EQ(params.struct_size, 0u) << "a refused get writes nothing";
    EXPECT_EQ(SG_GetParam(handle, 1, &params, &length), SG_ERR_NOERR);
    EXPECT_EQ(length, 0u);
    EXPECT_EQ(params.struct_size, 0u);
    length = 100;
    EXPECT_EQ(SG_GetParam(handle, 0, &params, &length), SG_ERR_NOERR);
    EXPECT_EQ(length, 64u);
    EXPECT_EQ(params.struct_size, 64u);
}

TEST(RtpParams, BeginWithASourceOfTheProgramsRandomSequence)
{
    for (const unsigned int seed : {1u, 7u})
    {
        std::srand(seed);
        const auto expected =
            static_cast<uint32_t>(std::rand());  // NOLINT(cert-msc30-c,cert-msc50-cpp)
        std::srand(seed);
        Support::AppendingSink sink;
        Support::Recorder calls(SG_STREAM_TYPE_RTP, sink);
        SGRtpPackageParam params{};
        unsigned int length = sizeof(params);
        EXPECT_EQ(SG_GetParam(calls.Handle(), 0, &params, &length), SG_ERR_NOERR);
        EXPECT_EQ(params.ssrc, expected) << seed;
    }
}

TEST(RtpParams, NeedNoAlignment)
{
    Session session;
    const std::unique_ptr<unsigned char[]> memory(new unsigned char[65]);
    SGRtpPackageParam params = Params();
    params.ssrc = 0x55667788;
    std::memcpy(memory.get() + 1, &params, sizeof(params));
    EXPECT_EQ(SG_SetParam(session.Handle(), 0, memory.get() + 1, 64), SG_ERR_NOERR);
    std::memset(memory.get(), 0, 65);
    unsigned int length = 64;
    EXPECT_EQ(SG_GetParam(session.Handle(), 0, memory.get() + 1, &length), SG_ERR_NOERR);
    std::memcpy(&params, memory.get() + 1, sizeof(params));
    EXPECT_EQ(params.ssrc, 0x55667788u);
}

}  // namespace
}  // namespace Golden

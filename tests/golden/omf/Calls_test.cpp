// What each call answers and emits, in and out of order.
#include <climits>

#include "golden/omf/Native.h"

namespace Golden
{
namespace
{

using namespace Orbel::Wrapton;
using Support::Hex;
using Support::Same;

TEST(OmfCalls, HeaderAndTailerEmitNothing)
{
    Native native;
    native.Give(Picture(), Hex("01"));
    const Bytes before = native.Sink().Image();
    native.Sink().ForgetBlocks();
    EXPECT_EQ(native.Calls().Tailer(), SG_ERR_NOERR);
    EXPECT_EQ(native.Calls().Header(), SG_ERR_NOERR);
    EXPECT_EQ(native.Calls().Tailer(), SG_ERR_NOERR);
    EXPECT_TRUE(native.Sink().Blocks().empty());
    EXPECT_TRUE(Same(native.Sink().Image(), before));
}

TEST(OmfCalls, HeaderRecordMayBeNull)
{
    Native native;
    EXPECT_EQ(native.Calls().HeaderWith(nullptr), SG_ERR_NOERR);
}

TEST(OmfCalls, FramesAreTakenWithoutAHeaderAndAfterTheTailer)
{
    Support::SeekingSink sink;
    Support::Recorder calls(SG_STREAM_TYPE_OMF, sink);
    EXPECT_EQ(calls.Tailer(), SG_ERR_NOERR);
    EXPECT_EQ(calls.Input(Picture(), Hex("01")), SG_ERR_NOERR);
    EXPECT_EQ(calls.Tailer(), SG_ERR_NOERR);
    EXPECT_EQ(calls.Input(Picture(SG_FRAME_SUB_TYPE_P), Hex("02")), SG_ERR_NOERR);
    ASSERT_EQ(sink.Blocks().size(), 2u);
    EXPECT_EQ(NumberOf(sink.Blocks()[1].data), 2u);
    EXPECT_EQ(sink.Image().size(), sink.Blocks()[0].data.size() + sink.Blocks()[1].data.size());
}

TEST(OmfCalls, WrongFramesAreRefusedWith3AndCountNothing)
{
    Native native;
    for (const SGFrameInfo& good : {Picture(), Sound(), Extension()})
    {
        native.Sink().ForgetBlocks();
        SGFrameInfo record = good;
        unsigned char byte = 1;
        record.frame_pointer = nullptr;
        record.frame_size = 1;
        EXPECT_EQ(SG_InputFrame(native.Calls().Handle(), &record), SG_ERR_PARAM_ERR);
        record.frame_pointer = &byte;
        record.frame_size = 0;
        EXPECT_EQ(SG_InputFrame(native.Calls().Handle(), &record), SG_ERR_PARAM_ERR);
        for (const uint32_t size : {111u, 113u})
        {
            record.frame_size = 1;
            record.struct_size = size;
            EXPECT_EQ(SG_InputFrame(native.Calls().Handle(), &record), SG_ERR_PARAM_ERR);
        }
        EXPECT_TRUE(native.Sink().Blocks().empty());
    }
    for (const uint32_t type : {0u, 4u, 5u, 0xFFFFFFFFu})
    {
        SGFrameInfo record = Picture();
        record.frame_type = type;
        native.Refuse(record, Hex("01"));
    }
    EXPECT_EQ(SG_InputFrame(native.Calls().Handle(), nullptr), SG_ERR_PARAM_ERR);
    EXPECT_EQ(NumberOf(native.Give(Sound(), Hex("01"))), 1u);
    EXPECT_EQ(NumberOf(native.Give(Picture(), Hex("01"))), 1u);
}

TEST(OmfCalls, ARefusedKeyFrameDescribesNothing)
{
    Native native;
    unsigned char byte = 1;
    SGFrameInfo record = Picture();
    record.frame_pointer = &byte;
    record.frame_size = 0;
    EXPECT_EQ(SG_InputFrame(native.Calls().Handle(), &record), SG_ERR_PARAM_ERR);
    // The length of this frame would not fit 31 bits; the byte behind the pointer is not read.
    record.frame_size = INT_MAX - 31;
    EXPECT_EQ(SG_InputFrame(native.Calls().Handle(), &record), SG_ERR_PARAM_ERR);
    record.frame_size = 0xFFFFFFFF;
    EXPECT_EQ(SG_InputFrame(native.Calls().Handle(), &record), SG_ERR_PARAM_ERR);
    native.Refuse(Picture(SG_FRAME_SUB_TYPE_P), Hex("01"));
    EXPECT_TRUE(native.Sink().Image().empty());
}

TEST(OmfCalls, PayloadsOfEverySizeKeepTheirBytes)
{
    Native native;
    for (const std::size_t size :
         {1u, 2u, 3u, 4u, 63u, 64u, 65u, 16344u, 16345u, 300000u, 1u << 20})
    {
        const Bytes payload = Support::Payload(size, static_cast<uint32_t>(size));
        const Bytes frame = native.Give(Extension(), payload);
        ASSERT_EQ(frame.size(), 24 + 8 + size + 8);
        EXPECT_TRUE(Same(Support::Slice(frame, 32, size), payload));
        EXPECT_TRUE(Same(ExHeadersOf(frame), DataCheck(payload)));
    }
}

TEST(OmfCalls, WhatTheSinkSaysItTookChangesNothing)
{
    for (const int32_t answer : {0, 1, -5, INT_MAX})
    {
        Support::ResizingSink sink([answer](std::size_t, int32_t) { return answer; });
        Support::Recorder calls(SG_STREAM_TYPE_OMF, sink);
        EXPECT_EQ(calls.Input(Picture(), Hex("01")), SG_ERR_NOERR);
        EXPECT_EQ(calls.Input(Picture(SG_FRAME_SUB_TYPE_P), Hex("01")), SG_ERR_NOERR);
        ASSERT_EQ(sink.Blocks().size(), 2u);
        EXPECT_EQ(sink.Blocks()[1].origin, 1);
        EXPECT_EQ(sink.Blocks()[1].position, 0);
        EXPECT_EQ(NumberOf(sink.Blocks()[1].data), 2u);
    }
}

TEST(OmfCalls, OutputWithoutACallbackIsDiscarded)
{
    void* const handle = SG_CreateHandle(SG_STREAM_TYPE_OMF, nullptr);
    ASSERT_NE(handle, nullptr);
    EXPECT_EQ(SG_CreateHeader(handle, nullptr), SG_ERR_NOERR);
    unsigned char byte = 1;
    SGFrameInfo record = Picture();
    record.frame_pointer = &byte;
    record.frame_size = 1;
    EXPECT_EQ(SG_InputFrame(handle, &record), SG_ERR_NOERR);
    EXPECT_EQ(SG_CreateTailer(handle, nullptr), SG_ERR_NOERR);
    EXPECT_EQ(SG_DestroyHandle(handle), SG_ERR_NOERR);
}

TEST(OmfCalls, ThereIsNoBackupAndThereAreNoParameters)
{
    Native native;
    native.Give(Picture(), Hex("01"));
    SGOutputData backup{};
    backup.struct_size = 7;
    backup.data_size = 1;
    backup.offset_pos64 = 9;
    EXPECT_EQ(native.Calls().Backup(backup), SG_ERR_NOERR);
    EXPECT_EQ(backup.data_pointer, nullptr);
    EXPECT_EQ(backup.data_size, 0);
    EXPECT_EQ(backup.struct_size, 7u);
    EXPECT_EQ(backup.offset_pos64, 9);
    SGRtpPackageParam param{};
    unsigned int length = sizeof(param);
    EXPECT_EQ(SG_SetParam(native.Calls().Handle(), 0, &param, 0), SG_ERR_NOERR);
    EXPECT_EQ(SG_GetParam(native.Calls().Handle(), 0, &param, &length), SG_ERR_NOERR);
    EXPECT_EQ(length, 0u);
}

TEST(OmfCalls, HandlesAreIndependent)
{
    Native one;
    Native other;
    one.Give(Picture(), Hex("01"));
    other.Refuse(Picture(SG_FRAME_SUB_TYPE_P), Hex("01"));
    EXPECT_EQ(NumberOf(other.Give(Picture(), Hex("01"))), 1u);
    EXPECT_EQ(NumberOf(one.Give(Picture(), Hex("01"))), 2u);
}

}  // namespace
}  // namespace Golden

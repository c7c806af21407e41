/* Sizes, offsets and numbers of the public interface, as a program in C sees them. */
#include <stddef.h>
#include <stdio.h>
#include <wrapton/Wrapton.h>

static int g_failures = 0;

static void Check(const char* what, long came, long expected)
{
    if (came == expected) return;

    printf("%s is %ld, not %ld\n", what, came, expected);
    ++g_failures;
}

#define SIZE(record, size) Check("sizeof " #record, (long)sizeof(record), size)
/* A field at its offset, with its size. */
#define FIELD(record, field, offset, size)                                             \
    do                                                                                 \
    {                                                                                  \
        Check("offset of " #record "." #field, (long)offsetof(record, field), offset); \
        Check("size of " #record "." #field, (long)sizeof(((record*)0)->field), size); \
    } while (0)
#define NUMBER(name, value) Check(#name, (long)(name), value)

static void CheckRecords(void)
{
    SIZE(SGCreateParam, 40);
    FIELD(SGCreateParam, struct_size, 0, 4);
    FIELD(SGCreateParam, user, 8, 8);
    FIELD(SGCreateParam, sg_malloc, 16, 8);
    FIELD(SGCreateParam, sg_free, 24, 8);
    FIELD(SGCreateParam, sg_datacb, 32, 8);

    SIZE(SGVideoInfo, 20);
    FIELD(SGVideoInfo, bVideo, 0, 4);
    FIELD(SGVideoInfo, videoencode, 4, 4);
    FIELD(SGVideoInfo, width, 8, 4);
    FIELD(SGVideoInfo, height, 12, 4);
    FIELD(SGVideoInfo, framerate, 16, 4);

    SIZE(SGAudioInfo, 20);
    FIELD(SGAudioInfo, bAudio, 0, 4);
    FIELD(SGAudioInfo, audioencode, 4, 4);
    FIELD(SGAudioInfo, channels, 8, 4);
    FIELD(SGAudioInfo, sampledepth, 12, 4);
    FIELD(SGAudioInfo, samplerate, 16, 4);

    SIZE(SGHeaderInfo, 48);
    FIELD(SGHeaderInfo, video, 0, 20);
    FIELD(SGHeaderInfo, audio, 20, 20);
    FIELD(SGHeaderInfo, pre_header_len, 40, 4);
    FIELD(SGHeaderInfo, struct_size, 44, 4); /* stands last */

    SIZE(SGBlockInfo, 16);
    FIELD(SGBlockInfo, left, 0, 2);
    FIELD(SGBlockInfo, top, 2, 2);
    FIELD(SGBlockInfo, right, 4, 2);
    FIELD(SGBlockInfo, bottom, 6, 2);
    FIELD(SGBlockInfo, offset, 8, 4);
    FIELD(SGBlockInfo, reserved, 12, 4);

    SIZE(SGSplitInfo, 24);
    FIELD(SGSplitInfo, flag, 0, 4);
    FIELD(SGSplitInfo, block_n, 4, 4);
    FIELD(SGSplitInfo, block_m, 8, 4);
    FIELD(SGSplitInfo, pblock, 16, 8);

    SIZE(SGFrameInfo, 112);
    FIELD(SGFrameInfo, struct_size, 0, 4);
    FIELD(SGFrameInfo, frame_pointer, 8, 8);
    FIELD(SGFrameInfo, frame_size, 16, 4);
    FIELD(SGFrameInfo, frame_type, 20, 4);
    FIELD(SGFrameInfo, frame_sub_type, 24, 4);
    FIELD(SGFrameInfo, frame_encode, 28, 4);
    FIELD(SGFrameInfo, frame_time, 32, 4);
    FIELD(SGFrameInfo, frame_data, 36, 4);
    FIELD(SGFrameInfo, width, 40, 4);
    FIELD(SGFrameInfo, heigth, 44, 4);
    FIELD(SGFrameInfo, frame_rate, 48, 4);
    FIELD(SGFrameInfo, deinter_lace, 52, 4);
    FIELD(SGFrameInfo, sample_rate, 56, 4);
    FIELD(SGFrameInfo, bit_per_sample, 60, 4);
    FIELD(SGFrameInfo, channels, 64, 4);
    FIELD(SGFrameInfo, split_info, 72, 24);
    FIELD(SGFrameInfo, rotation_angle, 96, 4);
    FIELD(SGFrameInfo, company_type, 100, 2);
    FIELD(SGFrameInfo, _3rdstream_header_length, 102, 2);
    FIELD(SGFrameInfo, bit_rate, 104, 4);

    SIZE(SGTailerInfo, 4);
    FIELD(SGTailerInfo, struct_size, 0, 4);

    SIZE(SGOutputData, 40);
    FIELD(SGOutputData, struct_size, 0, 4);
    FIELD(SGOutputData, data_pointer, 8, 8);
    FIELD(SGOutputData, data_size, 16, 4);
    FIELD(SGOutputData, offset_type, 20, 4);
    FIELD(SGOutputData, offset_pos, 24, 4);
    FIELD(SGOutputData, offset_pos64, 32, 8);

    SIZE(SGRtpPackageParam, 64);
    FIELD(SGRtpPackageParam, struct_size, 0, 4);
    FIELD(SGRtpPackageParam, max_packet_length, 4, 4);
    FIELD(SGRtpPackageParam, sequence_number, 8, 4);
    FIELD(SGRtpPackageParam, timestamp, 12, 4);
    FIELD(SGRtpPackageParam, ssrc, 16, 4);
    FIELD(SGRtpPackageParam, audio_sample, 20, 4);
    FIELD(SGRtpPackageParam, payload_type, 24, 4);
    FIELD(SGRtpPackageParam, extension_data, 32, 8);
    FIELD(SGRtpPackageParam, extension_data_length, 40, 4);
    FIELD(SGRtpPackageParam, custom_data, 48, 8);
    FIELD(SGRtpPackageParam, custom_data_length, 56, 4);
    FIELD(SGRtpPackageParam, rtp_output_all_flag, 60, 4);
}

static void CheckSigns(void)
{
    SGVideoInfo video;
    SGBlockInfo block;
    SGFrameInfo frame;
    SGOutputData output;

    video.width = -1;
    block.left = -1;
    block.offset = -1;
    frame.width = 0;
    --frame.width;
    frame.company_type = 0xFFFF;
    output.data_size = -1;
    output.offset_type = -1;
    output.offset_pos = 0;
    --output.offset_pos;
    output.offset_pos64 = -1;
    Check("SGVideoInfo.width is signed", video.width < 0, 1);
    Check("SGBlockInfo.left is signed", block.left < 0, 1);
    Check("SGBlockInfo.offset is signed", block.offset < 0, 1);
    Check("SGFrameInfo.width is unsigned", frame.width > 0, 1);
    Check("SGFrameInfo.company_type is unsigned", frame.company_type > 0, 1);
    Check("SGOutputData.data_size is signed", output.data_size < 0, 1);
    Check("SGOutputData.offset_type is signed", output.offset_type < 0, 1);
    Check("SGOutputData.offset_pos is unsigned", output.offset_pos > 0, 1);
    Check("SGOutputData.offset_pos64 is signed", output.offset_pos64 < 0, 1);
}

static void CheckNumbers(void)
{
    Check("sizeof an enumeration", (long)sizeof(SG_ERR_TYPE), 4);

    NUMBER(SG_ERR_NOERR, 0);
    NUMBER(SG_ERR_HANDLE_EMPTY, 1);
    NUMBER(SG_ERR_INIT_FAIL, 2);
    NUMBER(SG_ERR_PARAM_ERR, 3);
    NUMBER(SG_ERR_MEMORY_OUT, 4);
    NUMBER(SG_ERR_ENCODE_UNSUPPORT, 5);
    NUMBER(SG_ERR_EMPTY_POINTER, 6);

    NUMBER(SG_STREAM_TYPE_MP4, 0);
    NUMBER(SG_STREAM_TYPE_ASF, 1);
    NUMBER(SG_STREAM_TYPE_AVI, 2);
    NUMBER(SG_STREAM_TYPE_OMF, 3);
    NUMBER(SG_STREAM_TYPE_FLV, 4);
    NUMBER(SG_STREAM_TYPE_STREAM_ASF, 5);
    NUMBER(SG_STREAM_TYPE_MOV, 6);
    NUMBER(SG_STREAM_TYPE_3GP, 7);
    NUMBER(SG_STREAM_TYPE_STREAM_FLV, 8);
    NUMBER(SG_STREAM_TYPE_RTP, 9);
    NUMBER(SG_STREAM_TYPE_TS, 10);
    NUMBER(SG_STREAM_TYPE_PS, 11);
    NUMBER(SG_STREAM_TYPE_MP4_NOSEEK, 12);
    NUMBER(SG_STREAM_TYPE_MKV, 13);
    NUMBER(SG_STREAM_TYPE_MP4_64, 14);
    NUMBER(SG_STREAM_TYPE_MOV_64, 15);
    NUMBER(SG_STREAM_TYPE_WAV, 16);
    NUMBER(SG_STREAM_TYPE_QVPS, 17);
    NUMBER(SG_STREAM_TYPE_GAYSPS, 18);

    NUMBER(SG_FRAME_TYPE_UNKNOW, 0);
    NUMBER(SG_FRAME_TYPE_VIDEO, 1);
    NUMBER(SG_FRAME_TYPE_AUDIO, 2);
    NUMBER(SG_FRAME_TYPE_EXT, 3);

    NUMBER(SG_FRAME_SUB_TYPE_I, 0);
    NUMBER(SG_FRAME_SUB_TYPE_P, 1);
    NUMBER(SG_FRAME_SUB_TYPE_B, 2);
    NUMBER(SG_FRAME_SUB_TYPE_JPEG_FRAME, 8);
    NUMBER(SG_FRAME_SUB_TYPE_UNKNOW, 9);

    NUMBER(SG_ENCODE_VIDEO_UNKNOWN, 0);
    NUMBER(SG_ENCODE_VIDEO_MPEG4, 1);
    NUMBER(SG_ENCODE_VIDEO_HI_H264, 2);
    NUMBER(SG_ENCODE_VIDEO_JPEG, 3);
    NUMBER(SG_ENCODE_VIDEO_QV_H264, 4);
    NUMBER(SG_ENCODE_VIDEO_JPEG2000, 6);
    NUMBER(SG_ENCODE_VIDEO_AVS, 7);
    NUMBER(SG_ENCODE_VIDEO_STD_H264, 8);
    NUMBER(SG_ENCODE_VIDEO_MPEG2, 9);
    NUMBER(SG_ENCODE_VIDEO_VNC, 10);
    NUMBER(SG_ENCODE_VIDEO_SVAC, 11);
    NUMBER(SG_ENCODE_VIDEO_QV_H265, 12);
    NUMBER(SG_ENCODE_VIDEO_H263, 35);
    NUMBER(SG_ENCODE_VIDEO_PACKET, 36);
    NUMBER(SG_ENCODE_VIDEO_MSMPEG4V1, 37);
    NUMBER(SG_ENCODE_VIDEO_MSMPEG4V2, 38);
    NUMBER(SG_ENCODE_VIDEO_MSMPEG4V3, 39);
    NUMBER(SG_ENCODE_VIDEO_WMV1, 40);
    NUMBER(SG_ENCODE_VIDEO_WMV2, 41);
    NUMBER(SG_ENCODE_VIDEO_HIK_H264, 129);
    NUMBER(SG_ENCODE_VIDEO_HIK_HKH4, 130);

    NUMBER(SG_ENCODE_AUDIO_UNKNOWN, 0);
    NUMBER(SG_ENCODE_AUDIO_PCM, 7);
    NUMBER(SG_ENCODE_AUDIO_G729, 8);
    NUMBER(SG_ENCODE_AUDIO_IMA, 9);
    NUMBER(SG_ENCODE_PCM_MULAW, 10);
    NUMBER(SG_ENCODE_AUDIO_G721, 11);
    NUMBER(SG_ENCODE_PCM8_VWIS, 12);
    NUMBER(SG_ENCODE_MS_ADPCM, 13);
    NUMBER(SG_ENCODE_AUDIO_G711A, 14);
    NUMBER(SG_ENCODE_AUDIO_AMR, 15);
    NUMBER(SG_ENCODE_AUDIO_PCM16, 16);
    NUMBER(SG_ENCODE_AUDIO_G711U, 22);
    NUMBER(SG_ENCODE_AUDIO_G723, 25);
    NUMBER(SG_ENCODE_AUDIO_AAC, 26);
    NUMBER(SG_ENCODE_AUDIO_G726_40, 27);
    NUMBER(SG_ENCODE_AUDIO_G726_32, 28);
    NUMBER(SG_ENCODE_AUDIO_G726_24, 29);
    NUMBER(SG_ENCODE_AUDIO_G726_16, 30);
    NUMBER(SG_ENCODE_AUDIO_MP2, 31);
    NUMBER(SG_ENCODE_AUDIO_OGG, 32);
    NUMBER(SG_ENCODE_AUDIO_MP3, 33);
    NUMBER(SG_ENCODE_AUDIO_G722_1, 34);
    NUMBER(SG_ENCODE_AUDIO_TALK, 48);

    NUMBER(SG_RTP_PARAM_TYPE_PACKAGE, 0);
}

/* The signatures, as function pointers that take nothing else. */
static void CheckFunctions(void)
{
    void* (*create_handle)(unsigned int, SGCreateParam*) = SG_CreateHandle;
    int (*create_header)(void*, SGHeaderInfo*) = SG_CreateHeader;
    int (*input_frame)(void*, SGFrameInfo*) = SG_InputFrame;
    int (*create_tailer)(void*, SGTailerInfo*) = SG_CreateTailer;
    int (*get_backup)(void*, SGOutputData*) = SG_GetBackup;
    int (*set_param)(void*, unsigned int, void*, unsigned int) = SG_SetParam;
    int (*get_param)(void*, unsigned int, void*, unsigned int*) = SG_GetParam;
    int (*destroy_handle)(void*) = SG_DestroyHandle;

    Check("SG_CreateHandle", create_handle(7, NULL) == NULL, 1);
    Check("SG_CreateHeader", create_header(NULL, NULL), SG_ERR_HANDLE_EMPTY);
    Check("SG_InputFrame", input_frame(NULL, NULL), SG_ERR_HANDLE_EMPTY);
    Check("SG_CreateTailer", create_tailer(NULL, NULL), SG_ERR_HANDLE_EMPTY);
    Check("SG_GetBackup", get_backup(NULL, NULL), SG_ERR_HANDLE_EMPTY);
    Check("SG_SetParam", set_param(NULL, 0, NULL, 0), SG_ERR_HANDLE_EMPTY);
    Check("SG_GetParam", get_param(NULL, 0, NULL, NULL), SG_ERR_HANDLE_EMPTY);
    Check("SG_DestroyHandle", destroy_handle(NULL), SG_ERR_HANDLE_EMPTY);
}

int main(void)
{
    CheckRecords();
    CheckSigns();
    CheckNumbers();
    CheckFunctions();
    return g_failures == 0 ? 0 : 1;
}

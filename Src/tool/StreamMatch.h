#ifndef WRAPTON_TOOL_STREAMMATCH_H
#define WRAPTON_TOOL_STREAMMATCH_H

namespace Orbel::Wrapton
{

/// Encodings as the component interfaces number them.
enum EncodeType : unsigned int
{
    encodeTypeUnknown = 0,
    encodeTypeMpeg4 = 1,
    encodeTypeH264 = 2,
    encodeTypeJpeg = 3,
    encodeTypeSvac = 4,
    encodeTypeHevc = 5,
    encodeTypeMpeg2 = 6,
    encodeTypeH263 = 7,
    encodeTypeMsmpe4v1 = 8,
    encodeTypeMsmpe4v2 = 9,
    encodeTypeMsmpe4v3 = 10,
    encodeTypeWmv1 = 11,
    encodeTypeWmv2 = 12,
    encodeTypeHikH264 = 13,
    encodeTypeVideoMax = 20,
    encodeTypePcm = 21,
    encodeTypeG729 = 22,
    encodeTypeIma = 23,
    encodeTypeMulaw = 24,
    encodeTypeG721 = 25,
    encodeTypeVmis = 26,
    encodeTypeAdpcm = 27,
    encodeTypeG711a = 28,
    encodeTypeAmr = 29,
    encodeTypePcm16 = 30,
    encodeTypeG711u = 31,
    encodeTypeG723 = 32,
    encodeTypeAac = 33,
    encodeTypeG726_40 = 34,
    encodeTypeG726_32 = 35,
    encodeTypeG726_24 = 36,
    encodeTypeG726_16 = 37,
    encodeTypeMp2 = 38,
    encodeTypeOgg = 39,
    encodeTypeMp3 = 40,
    encodeTypeG722_1 = 41,
    encodeTypeAudioMax = 42
};

/// Kinds of frame as the component interfaces number them.
enum FrameSubtype : unsigned int
{
    frameSubtypeUnknown = 0,
    frameSubtypeIFrame = 1,
    frameSubtypePFrame = 2,
    frameSubtypeBFrame = 3,
    frameSubtypeSFrame = 4,
    frameSubtypeWatermarkText = 5,
    frameSubtypeWatermarkJpeg = 6,
    frameSubtypeWatermarkBmp = 7,
    frameSubtypeIntlData = 8,
    frameSubtypeJpegFrame = 9,
    frameSubtypeItsData = 10,
    frameSubtypeGpsData = 11,
    frameSubtypeIntlexData = 12,
    frameSubtypeMotionFullData = 13,
    frameSubtypeMotionCardData = 14,
    frameSubtypeLightData = 15,
    frameSubtypeRawData = 16,
    frameSubtypeIndexI = 17,
    frameSubtypeMotionData = 18,
    frameSubtypeLabelData = 19,
    frameSubtypeScreenCaptionData = 20,
    frameSubtypeEventData = 21,
    frameSubtypeFileHeadData = 22,
    frameSubtypeSdpData = 23,
    frameSubtypeMax = 24
};

/// Result codes of the component interfaces.
enum FuncResult : unsigned int
{
    errorNoError = 0,
    errorInvalidHandle = 1,
    errorNoSupport = 2,
    errorThread = 3,
    errorParam = 4,
    errorFileOpen = 5,
    errorFileRead = 6,
    errorFormat = 7,
    errorBufferOverFlow = 8,
    errorSysOutOfMem = 9,
    errorNoOutPut = 10
};

/// EncodeType to SG_ENCODE_VIDEO_TYPE or SG_ENCODE_AUDIO_TYPE; 0 for what the library does not
/// know.
unsigned int ConvertEncodeType(unsigned int encodeType) noexcept;

/// The characters 'A', 'V' and 'X' to SG_FRAME_TYPE; SG_FRAME_TYPE_UNKNOW for any other.
unsigned int ConvertFrameType(unsigned int frameType) noexcept;

/// FrameSubtype to SG_FRAME_SUB_TYPE; SG_FRAME_SUB_TYPE_UNKNOW for what is no picture.
unsigned int ConvertFrameSubType(unsigned int frameSubType) noexcept;

/// SG_ERR_TYPE to FuncResult. Kept: codes above SG_ERR_PARAM_ERR count as no error.
unsigned int ConvertErrorMsg(unsigned int error) noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_STREAMMATCH_H

#ifndef WRAPTON_TOOL_STREAMMATCH_H
#define WRAPTON_TOOL_STREAMMATCH_H

#include "IWrapton.h"

namespace Orbel::Wrapton
{

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

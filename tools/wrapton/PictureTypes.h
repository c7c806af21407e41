#pragma once

#include "AvTypes.h"
#include "FrameSource.h"

namespace Orbel::Wrapton::Command
{

/// Tells I, P and B pictures apart by libavcodec's parser of the encoding.
class PictureTypes
{
public:
    explicit PictureTypes(const AVStream& stream);

    /// A key frame is I whatever its pictures are; an intra picture that is none cannot begin a
    /// recording and counts as P.
    SG_FRAME_SUB_TYPE Of(const Frame& frame, bool key);

private:
    AvPtr<AVCodecContext> m_pCodec;
    AvPtr<AVCodecParserContext> m_pParser;  ///< null: the encoding has no parser
};

}  // namespace Orbel::Wrapton::Command

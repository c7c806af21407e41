#include "PictureTypes.h"

#include <climits>

#include "Failure.h"

namespace Orbel::Wrapton::Command
{

PictureTypes::PictureTypes(const AVStream& stream)
    : m_pCodec(avcodec_alloc_context3(nullptr)),
      m_pParser(av_parser_init(stream.codecpar->codec_id))
{
    if (m_pCodec == nullptr) throw Failure(AvErrorText(AVERROR(ENOMEM)));
    // No configuration from the file: the frames that are parsed here carry their own.
    m_pCodec->codec_id = stream.codecpar->codec_id;
    m_pCodec->codec_type = AVMEDIA_TYPE_VIDEO;
    if (m_pParser != nullptr) m_pParser->flags |= PARSER_FLAG_COMPLETE_FRAMES;
}

SG_FRAME_SUB_TYPE PictureTypes::Of(const Frame& frame, bool key)
{
    int picture = AV_PICTURE_TYPE_NONE;
    if (m_pParser != nullptr && frame.bytes.size() <= INT_MAX - AV_INPUT_BUFFER_PADDING_SIZE)
    {
        // Parsers read a little past the frame.
        std::vector<unsigned char> padded(frame.bytes);
        padded.resize(frame.bytes.size() + AV_INPUT_BUFFER_PADDING_SIZE);
        unsigned char* out = nullptr;
        int out_size = 0;
        av_parser_parse2(m_pParser.get(),
                         m_pCodec.get(),
                         &out,
                         &out_size,
                         padded.data(),
                         static_cast<int>(frame.bytes.size()),
                         AV_NOPTS_VALUE,
                         AV_NOPTS_VALUE,
                         0);
        picture = m_pParser->pict_type;
    }
    if (key) return SG_FRAME_SUB_TYPE_I;
    return picture == AV_PICTURE_TYPE_B ? SG_FRAME_SUB_TYPE_B : SG_FRAME_SUB_TYPE_P;
}

}  // namespace Orbel::Wrapton::Command

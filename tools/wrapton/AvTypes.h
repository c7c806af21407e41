#pragma once

// libavformat and libavcodec behind owning pointers, included here and nowhere else in a header.

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavcodec/bsf.h>
#include <libavformat/avformat.h>
}

#include <memory>
#include <string>

namespace Orbel::Wrapton::Command
{

struct AvDelete
{
    void operator()(AVFormatContext* p) const { avformat_close_input(&p); }
    void operator()(AVPacket* p) const { av_packet_free(&p); }
    void operator()(AVBSFContext* p) const { av_bsf_free(&p); }
    void operator()(AVCodecContext* p) const { avcodec_free_context(&p); }
    void operator()(AVCodecParserContext* p) const { av_parser_close(p); }
};

template <typename T>
using AvPtr = std::unique_ptr<T, AvDelete>;

/// The library's words for one of its codes.
std::string AvErrorText(int code);

}  // namespace Orbel::Wrapton::Command

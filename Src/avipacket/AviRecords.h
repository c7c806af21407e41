#ifndef WRAPTON_AVIPACKET_AVIRECORDS_H
#define WRAPTON_AVIPACKET_AVIRECORDS_H

#include <cstdint>
#include <span>

#include "avipacket/AviDefs.h"
#include "avipacket/AviIndxObject.h"
#include "tool/SizeCheck.h"

namespace Orbel::Wrapton
{

// The chunks of the header list, AVI 1.0 (RIFF) with the OpenDML AVI File Format Extensions 1.02.
// In each record `size` is the chunk's size field and `total_size` what its writer must produce,
// header included; a writer that produces another count prints its line and goes on.

/// avih: AVIMAINHEADER.
struct Avi_MainHeader
{
    uint32_t dwMicroSecPerFrame = 0;
    uint32_t dwMaxBytesPerSec = 0;
    uint32_t dwTotalFrames = 0;
    uint32_t dwStreams = 0;
    uint32_t dwSuggestedBufferSize = 0;
    uint32_t dwWidth = 0;
    uint32_t dwHeight = 0;
    uint32_t total_size = 64;
};

/// strh: AVISTREAMHEADER.
struct Avi_StreamHeader
{
    fourcc_t fccType = 0;
    fourcc_t fccHandler = 0;
    uint32_t dwScale = 0;
    uint32_t dwRate = 0;
    uint32_t dwLength = 0;
    uint32_t dwSuggestedBufferSize = 0;
    uint32_t dwSampleSize = 2;  // kept: of both streams
    uint32_t width = 0;         // of rcFrame
    uint32_t height = 0;
    uint32_t total_size = 64;
};

/// strf of a video stream: BITMAPINFOHEADER.
struct Avi_BitmapInfo
{
    uint32_t biWidth = 0;
    uint32_t biHeight = 0;
    fourcc_t biCompression = 0;
    uint32_t biSizeImage = 0;
    uint32_t total_size = 48;
};

/// strf of an audio stream: WAVEFORMATEX.
struct Avi_WaveFormat
{
    uint32_t wFormatTag = 0;
    uint32_t nChannels = 0;
    uint32_t nSamplesPerSec = 0;
    uint32_t nAvgBytesPerSec = 0;
    uint32_t nBlockAlign = 0;
    uint32_t wBitsPerSample = 0;
    uint32_t total_size = 26;
};

/// strl of the video stream.
struct Avi_VideoStreamHeader
{
    uint32_t size = 1148;
    Avi_StreamHeader stream_header = {};
    Avi_BitmapInfo bitmap_info = {};
    uint32_t total_size = 1156;
};

/// strl of the audio stream.
struct Avi_AudioStreamHeader
{
    uint32_t size = 1126;
    Avi_StreamHeader stream_header = {};
    Avi_WaveFormat waveformat = {};
    uint32_t total_size = 1134;
};

/// odml.
struct Avi_OdmlList
{
    uint32_t totalcount = 0;  // dwTotalFrames of dmlh
    uint32_t total_size = 268;
};

/// JUNK: what is left of the header list behind list header and avih, as long as there is neither
/// stream nor odml.
struct Avi_Junk
{
    uint32_t size = 4020;
    uint32_t total_size = 4028;
};

/// A stream's index reservation as it stands in the file.
using IndxBytes = std::span<const unsigned char, CAviIndxObject::kLength>;

void PutMainHeader(CLsbCursor& w, const Avi_MainHeader& header);
void PutStreamHeader(CLsbCursor& w, const Avi_StreamHeader& header);
void PutBitmapInfo(CLsbCursor& w, const Avi_BitmapInfo& info);
void PutWaveformat(CLsbCursor& w, const Avi_WaveFormat& format);
void PutVideoStreamList(CLsbCursor& w, const Avi_VideoStreamHeader& stream, IndxBytes index);
void PutAudioStreamList(CLsbCursor& w, const Avi_AudioStreamHeader& stream, IndxBytes index);
void PutOdmlList(CLsbCursor& w, const Avi_OdmlList& list);
void PutJunk(CLsbCursor& w, const Avi_Junk& junk);
/// "RIFF", size and form type, 12 bytes.
void PutRiffHeader(CLsbCursor& w, const Avi_FileHeader& header, fourcc_t type);
/// "LIST", size and "movi", 12 bytes.
void PutMovieList(CLsbCursor& w, const Avi_MovieList& list);

/// Compares what a record's writer produced with what the record declares.
class CRecordCheck : public CSizeCheck
{
public:
    /// @param line a printf format; takes the declared and the produced size as %d
    CRecordCheck(const CByteCursor& w, uint32_t declared, const char* line) noexcept
        : CSizeCheck(w, declared, line, Order::kDeclaredFirst)
    {
    }
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_AVIPACKET_AVIRECORDS_H

#include "avipacket/AviRecords.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr uint32_t kMainHeaderSize = 10 * 4 + 16;
constexpr uint32_t kStreamHeaderSize = 4 + 4 + 4 + 2 + 2 + 8 * 4 + 4 * 2;
constexpr uint32_t kBitmapInfoSize = 40;
constexpr uint32_t kWaveFormatSize = 18;
constexpr uint32_t kOdmlSize = 260;
constexpr uint32_t kDmlhSize = 248;
static_assert(kMainHeaderSize == 56);
static_assert(kStreamHeaderSize == 56);

constexpr uint32_t kHasIndex = 0x10;      // AVIF_HASINDEX
constexpr uint32_t kTrustCkType = 0x800;  // AVIF_TRUSTCKTYPE
constexpr uint32_t kDefaultQuality = 0xFFFFFFFF;
constexpr uint32_t kPlanes = 1;
constexpr uint32_t kBitsPerPixel = 24;

}  // namespace

void PutMainHeader(CLsbCursor& w, const Avi_MainHeader& header)
{
    const CRecordCheck check(
        w, header.total_size, "WriteMainHeader Error! MainHeader Size = %d, Actual Size = %d \n");

    w.FourCC("avih");
    w.U32(kMainHeaderSize);
    w.U32(header.dwMicroSecPerFrame);
    w.U32(header.dwMaxBytesPerSec);
    w.U32(0);  // dwPaddingGranularity
    w.U32(kHasIndex | kTrustCkType);
    w.U32(header.dwTotalFrames);
    w.U32(0);  // dwInitialFrames
    w.U32(header.dwStreams);
    w.U32(header.dwSuggestedBufferSize);
    w.U32(header.dwWidth);
    w.U32(header.dwHeight);
    w.Fill(16, 0);  // dwReserved[4]
}

void PutStreamHeader(CLsbCursor& w, const Avi_StreamHeader& header)
{
    const CRecordCheck check(
        w,
        header.total_size,
        "WriteStreamHeader Error! StreamHeader Size = %d, Actual Size = %d \n");

    w.FourCC("strh");
    w.U32(kStreamHeaderSize);
    PutFourCC(w, header.fccType);
    PutFourCC(w, header.fccHandler);
    w.U32(0);  // dwFlags
    w.U16(0);  // wPriority
    w.U16(0);  // wLanguage
    w.U32(0);  // dwInitialFrames
    w.U32(header.dwScale);
    w.U32(header.dwRate);
    w.U32(0);  // dwStart
    w.U32(header.dwLength);
    w.U32(header.dwSuggestedBufferSize);
    w.U32(kDefaultQuality);
    w.U32(header.dwSampleSize);
    w.U16(0);              // rcFrame.left
    w.U16(0);              // rcFrame.top
    w.U16(header.width);   // rcFrame.right: the field's 16 bits of it
    w.U16(header.height);  // rcFrame.bottom
}

void PutBitmapInfo(CLsbCursor& w, const Avi_BitmapInfo& info)
{
    const CRecordCheck check(
        w, info.total_size, "WriteBitmapInfo Error! Bitmap Size = %d, Actual Size = %d \n");

    w.FourCC("strf");
    w.U32(kBitmapInfoSize);
    w.U32(kBitmapInfoSize);  // biSize
    w.U32(info.biWidth);
    w.U32(info.biHeight);
    w.U16(kPlanes);
    w.U16(kBitsPerPixel);
    PutFourCC(w, info.biCompression);
    w.U32(info.biSizeImage);
    w.U32(0);  // biXPelsPerMeter
    w.U32(0);  // biYPelsPerMeter
    w.U32(0);  // biClrUsed
    w.U32(0);  // biClrImportant
}

void PutWaveformat(CLsbCursor& w, const Avi_WaveFormat& format)
{
    const CRecordCheck check(
        w, format.total_size, "WriteWaveformat Error! WaveFormat Size = %d, Actual Size = %d \n");

    w.FourCC("strf");
    w.U32(kWaveFormatSize);
    w.U16(format.wFormatTag);
    w.U16(format.nChannels);
    w.U32(format.nSamplesPerSec);
    w.U32(format.nAvgBytesPerSec);
    w.U16(format.nBlockAlign);
    w.U16(format.wBitsPerSample);
    w.U16(0);  // cbSize
}

void PutVideoStreamList(CLsbCursor& w, const Avi_VideoStreamHeader& stream, IndxBytes index)
{
    const CRecordCheck check(
        w,
        stream.total_size,
        "WriteVideoStreamList Error! VideoStream Size = %d, Actual Size = %d \n");

    w.FourCC("LIST");
    w.U32(stream.size);
    w.FourCC("strl");
    PutStreamHeader(w, stream.stream_header);
    PutBitmapInfo(w, stream.bitmap_info);
    w.Bytes(index);
}

void PutAudioStreamList(CLsbCursor& w, const Avi_AudioStreamHeader& stream, IndxBytes index)
{
    const CRecordCheck check(
        w,
        stream.total_size,
        "WriteAudioStreamList Error! AudioStream Size = %d, Actual Size = %d \n");

    w.FourCC("LIST");
    w.U32(stream.size);
    w.FourCC("strl");
    PutStreamHeader(w, stream.stream_header);
    PutWaveformat(w, stream.waveformat);
    w.Bytes(index);
}

void PutOdmlList(CLsbCursor& w, const Avi_OdmlList& list)
{
    w.FourCC("odml");  // kept: where a list would carry "LIST"
    w.U32(kOdmlSize);
    w.FourCC("odml");
    w.FourCC("dmlh");
    w.U32(kDmlhSize);
    w.U32(list.totalcount);
    w.Fill(kDmlhSize - 4, 0);
}

void PutJunk(CLsbCursor& w, const Avi_Junk& junk)
{
    const CRecordCheck check(
        w, junk.total_size, "WriteJunk Error! Junk Size = %d, Actual Size = %d \n");

    w.FourCC("JUNK");
    w.U32(junk.size);
    w.Fill(junk.size, 0);
}

void PutRiffHeader(CLsbCursor& w, const Avi_FileHeader& header, fourcc_t type)
{
    w.FourCC("RIFF");
    w.U32(header.filesize);
    PutFourCC(w, type);
}

void PutMovieList(CLsbCursor& w, const Avi_MovieList& list)
{
    w.FourCC("LIST");
    w.U32(list.size);
    w.FourCC("movi");
}

}  // namespace Orbel::Wrapton

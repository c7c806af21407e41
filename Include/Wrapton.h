/**
 * @file Wrapton.h
 * The flat interface of Wrapton: coded audio and video frames in, container bytes out.
 *
 * The header compiles alone as C99 and as C++11 and later. In C++ the records, callback types and
 * enumerations live in the namespace Orbel::Wrapton; the eight functions have C linkage and plain
 * names in both languages.
 *
 * A recording runs through five functions:
 *
 *     handle = SG_CreateHandle(SG_STREAM_TYPE_MP4, &create);
 *     SG_CreateHeader(handle, &header);
 *     SG_InputFrame(handle, &frame);        once for every coded frame
 *     SG_CreateTailer(handle, NULL);
 *     SG_DestroyHandle(handle);
 *
 * Output contract. Bytes leave through the data callback only, inside the call that produced them
 * and on its thread, as SGOutputData blocks. Each block says where it belongs: at offset_pos64,
 * counted from the origin offset_type (0 start, 1 current position, 2 end), exactly like a file
 * seek. A consumer that seeks and writes every block as it comes ends with a correct file. The
 * bytes are the library's and are valid inside the callback only.
 *
 * Threads. The library starts none. One handle is used by one thread at a time; different handles
 * are independent of each other.
 */
#ifndef WRAPTON_WRAPTON_H
#define WRAPTON_WRAPTON_H

#include <stdint.h>

#if defined(__GNUC__)
#define WRAPTON_API __attribute__((visibility("default")))
#else
#define WRAPTON_API
#endif

#ifdef __cplusplus
#define WRAPTON_NOEXCEPT noexcept
namespace Orbel
{
namespace Wrapton
{
extern "C" {
#else
#define WRAPTON_NOEXCEPT
#endif

/** Result codes of every function. */
typedef enum SG_ERR_TYPE
{
    SG_ERR_NOERR = 0,            /**< done */
    SG_ERR_HANDLE_EMPTY = 1,     /**< the handle is null */
    SG_ERR_INIT_FAIL = 2,        /**< not given by the flat interface */
    SG_ERR_PARAM_ERR = 3,        /**< a bad argument, or a step that failed */
    SG_ERR_MEMORY_OUT = 4,       /**< an allocation failed */
    SG_ERR_ENCODE_UNSUPPORT = 5, /**< the container cannot hold this encoding */
    SG_ERR_EMPTY_POINTER = 6     /**< a pointer inside the library was null */
} SG_ERR_TYPE;

/** Containers, for SG_CreateHandle(). */
typedef enum SG_STREAM_TYPE
{
    SG_STREAM_TYPE_MP4 = 0,         /**< ISO base media file, ISO/IEC 14496-12 and -14 */
    SG_STREAM_TYPE_ASF = 1,         /**< Advanced Systems Format, file */
    SG_STREAM_TYPE_AVI = 2,         /**< AVI with the OpenDML extension */
    SG_STREAM_TYPE_OMF = 3,         /**< the native recording format */
    SG_STREAM_TYPE_FLV = 4,         /**< Flash video, file */
    SG_STREAM_TYPE_STREAM_ASF = 5,  /**< Advanced Systems Format, broadcast */
    SG_STREAM_TYPE_MOV = 6,         /**< QuickTime file */
    SG_STREAM_TYPE_3GP = 7,         /**< not offered by SG_CreateHandle() */
    SG_STREAM_TYPE_STREAM_FLV = 8,  /**< Flash video, stream */
    SG_STREAM_TYPE_RTP = 9,         /**< RTP packets, RFC 3550 */
    SG_STREAM_TYPE_TS = 10,         /**< not offered by SG_CreateHandle() */
    SG_STREAM_TYPE_PS = 11,         /**< MPEG-2 program stream, ISO/IEC 13818-1 */
    SG_STREAM_TYPE_MP4_NOSEEK = 12, /**< MP4 with one mdat box per sample, for sinks that append */
    SG_STREAM_TYPE_MKV = 13,        /**< Matroska, RFC 9559 */
    SG_STREAM_TYPE_MP4_64 = 14,     /**< MP4 with 64-bit chunk offsets and media data size */
    SG_STREAM_TYPE_MOV_64 = 15,     /**< QuickTime file with 64-bit offsets and size */
    SG_STREAM_TYPE_WAV = 16,        /**< RIFF/WAVE */
    SG_STREAM_TYPE_QVPS = 17,       /**< program stream, QV flavour */
    SG_STREAM_TYPE_GAYSPS = 18      /**< program stream, GAYS flavour */
} SG_STREAM_TYPE;

/** Kinds of frame, SGFrameInfo::frame_type. */
typedef enum SG_FRAME_TYPE
{
    SG_FRAME_TYPE_UNKNOW = 0, /**< spelled so in the interface */
    SG_FRAME_TYPE_VIDEO = 1,
    SG_FRAME_TYPE_AUDIO = 2,
    SG_FRAME_TYPE_EXT = 3 /**< extension data */
} SG_FRAME_TYPE;

/** Kinds of video frame, SGFrameInfo::frame_sub_type. */
typedef enum SG_FRAME_SUB_TYPE
{
    SG_FRAME_SUB_TYPE_I = 0,
    SG_FRAME_SUB_TYPE_P = 1,
    SG_FRAME_SUB_TYPE_B = 2,
    SG_FRAME_SUB_TYPE_JPEG_FRAME = 8,
    SG_FRAME_SUB_TYPE_UNKNOW = 9 /**< spelled so in the interface */
} SG_FRAME_SUB_TYPE;

/** Video encodings, SGFrameInfo::frame_encode of a video frame. Value 5 is not assigned. */
typedef enum SG_ENCODE_VIDEO_TYPE
{
    SG_ENCODE_VIDEO_UNKNOWN = 0,
    SG_ENCODE_VIDEO_MPEG4 = 1,   /**< MPEG-4 Part 2, ISO/IEC 14496-2 */
    SG_ENCODE_VIDEO_HI_H264 = 2, /**< H.264 as an Annex B byte stream, ISO/IEC 14496-10 */
    SG_ENCODE_VIDEO_JPEG = 3,    /**< motion JPEG, ISO/IEC 10918-1 */
    SG_ENCODE_VIDEO_QV_H264 = 4, /**< H.264 as an Annex B byte stream */
    SG_ENCODE_VIDEO_JPEG2000 = 6,
    SG_ENCODE_VIDEO_AVS = 7,
    SG_ENCODE_VIDEO_STD_H264 = 8,
    SG_ENCODE_VIDEO_MPEG2 = 9,
    SG_ENCODE_VIDEO_VNC = 10,
    SG_ENCODE_VIDEO_SVAC = 11,
    SG_ENCODE_VIDEO_QV_H265 = 12,
    SG_ENCODE_VIDEO_H263 = 35,
    SG_ENCODE_VIDEO_PACKET = 36,
    SG_ENCODE_VIDEO_MSMPEG4V1 = 37,
    SG_ENCODE_VIDEO_MSMPEG4V2 = 38,
    SG_ENCODE_VIDEO_MSMPEG4V3 = 39,
    SG_ENCODE_VIDEO_WMV1 = 40,
    SG_ENCODE_VIDEO_WMV2 = 41,
    SG_ENCODE_VIDEO_HIK_H264 = 129,
    SG_ENCODE_VIDEO_HIK_HKH4 = 130
} SG_ENCODE_VIDEO_TYPE;

/** Audio encodings, SGFrameInfo::frame_encode of an audio frame. */
typedef enum SG_ENCODE_AUDIO_TYPE
{
    SG_ENCODE_AUDIO_UNKNOWN = 0,
    SG_ENCODE_AUDIO_PCM = 7,
    SG_ENCODE_AUDIO_G729 = 8,
    SG_ENCODE_AUDIO_IMA = 9,
    SG_ENCODE_PCM_MULAW = 10, /**< spelled so in the interface */
    SG_ENCODE_AUDIO_G721 = 11,
    SG_ENCODE_PCM8_VWIS = 12, /**< spelled so in the interface */
    SG_ENCODE_MS_ADPCM = 13,  /**< spelled so in the interface */
    SG_ENCODE_AUDIO_G711A = 14,
    SG_ENCODE_AUDIO_AMR = 15,
    SG_ENCODE_AUDIO_PCM16 = 16, /**< signed 16-bit little-endian samples */
    SG_ENCODE_AUDIO_G711U = 22,
    SG_ENCODE_AUDIO_G723 = 25,
    SG_ENCODE_AUDIO_AAC = 26, /**< one raw data block, usually behind an ADTS header */
    SG_ENCODE_AUDIO_G726_40 = 27,
    SG_ENCODE_AUDIO_G726_32 = 28,
    SG_ENCODE_AUDIO_G726_24 = 29,
    SG_ENCODE_AUDIO_G726_16 = 30,
    SG_ENCODE_AUDIO_MP2 = 31, /**< MPEG audio layer II, ISO/IEC 11172-3 */
    SG_ENCODE_AUDIO_OGG = 32,
    SG_ENCODE_AUDIO_MP3 = 33,
    SG_ENCODE_AUDIO_G722_1 = 34,
    SG_ENCODE_AUDIO_TALK = 48
} SG_ENCODE_AUDIO_TYPE;

/** Parameter records of SG_SetParam() and SG_GetParam(). */
typedef enum SG_RTPPARAMTYPE
{
    SG_RTP_PARAM_TYPE_PACKAGE = 0 /**< SGRtpPackageParam */
} SG_RTPPARAMTYPE;

/** One block of output. The library fills it; only data_size may be changed by the callback. */
typedef struct SGOutputData
{
    uint32_t struct_size;        /**< 40 */
    unsigned char* data_pointer; /**< the block; the library's, to be read inside the callback */
    int32_t data_size;           /**< bytes. A callback that stored fewer lowers it, and the
                                      following positions count what it stored; a negative
                                      value means none, a raised one means all */
    int32_t offset_type;         /**< origin: 0 start, 1 current position, 2 end */
    uint32_t offset_pos;         /**< low 32 bits of the position */
    int64_t offset_pos64;        /**< the position in bytes from the origin */
} SGOutputData;

/**
 * Allocator for a packager's working buffers.
 *
 * @param size bytes, positive
 * @return fresh memory of that size, or null when there is none. Must not throw.
 */
typedef void* (*SGMalloc_t)(int size);

/**
 * Releases what the allocator gave.
 *
 * @param memory from SGMalloc_t, not null
 * @param size the size it was allocated with, in bytes
 */
typedef void (*SGFree_t)(void* memory, int size);

/**
 * Receives one block of output. Must not throw, and must not call back into the same handle.
 *
 * @param block valid, like the bytes it points to, until the callback returns
 * @param user SGCreateParam::user
 */
typedef void (*SGDataCB_t)(SGOutputData* block, void* user);

/** How a handle gets memory and gives output. Each field that is null leaves its default. */
typedef struct SGCreateParam
{
    uint32_t struct_size; /**< size of the record in bytes; not checked */
    void* user;           /**< second argument of every data callback; never dereferenced */
    SGMalloc_t sg_malloc; /**< default: the C++ array allocator */
    SGFree_t sg_free;     /**< default: the C++ array release */
    SGDataCB_t sg_datacb; /**< default: discards the output */
} SGCreateParam;

/** The video stream as far as the caller knows it before the first frame. */
typedef struct SGVideoInfo
{
    int32_t bVideo;      /**< nonzero when the stream has video */
    int32_t videoencode; /**< SG_ENCODE_VIDEO_TYPE */
    int32_t width;       /**< pixels */
    int32_t height;      /**< pixels */
    int32_t framerate;   /**< frames per second */
} SGVideoInfo;

/** The audio stream as far as the caller knows it before the first frame. */
typedef struct SGAudioInfo
{
    int32_t bAudio;      /**< nonzero when the stream has audio */
    int32_t audioencode; /**< SG_ENCODE_AUDIO_TYPE */
    int32_t channels;    /**< channel count */
    int32_t sampledepth; /**< bits per sample */
    int32_t samplerate;  /**< Hz */
} SGAudioInfo;

/** Argument of SG_CreateHeader(). */
typedef struct SGHeaderInfo
{
    SGVideoInfo video;
    SGAudioInfo audio;
    uint32_t pre_header_len; /**< MP4 family: bytes to reserve for the movie box ahead of the
                                  media data, at most 64 MiB; 0 reserves none */
    uint32_t struct_size;    /**< stands last in this record; not checked */
} SGHeaderInfo;

/** One rectangle of a split-screen picture. */
typedef struct SGBlockInfo
{
    int16_t left;     /**< pixels */
    int16_t top;      /**< pixels */
    int16_t right;    /**< pixels */
    int16_t bottom;   /**< pixels */
    int32_t offset;   /**< bytes into the frame */
    int32_t reserved; /**< 0 */
} SGBlockInfo;

/** The split-screen layout of a frame. */
typedef struct SGSplitInfo
{
    int32_t flag;        /**< nonzero when the frame is a split-screen picture */
    int32_t block_n;     /**< blocks across */
    int32_t block_m;     /**< blocks down */
    SGBlockInfo* pblock; /**< block_n * block_m records; the caller's, read during the call;
                            null: none */
} SGSplitInfo;

/** One coded frame, argument of SG_InputFrame(). */
typedef struct SGFrameInfo
{
    uint32_t struct_size;              /**< must be 112 */
    unsigned char* frame_pointer;      /**< the coded frame; the caller's, read during the call
                                            only. Matroska alone writes to it: start codes of 4
                                            bytes in SG_ENCODE_VIDEO_HI_H264 and _QV_H264 become
                                            lengths in place, also when the frame is then dropped
                                            or refused, unless its block does not fit 2 MiB or
                                            there is no header yet */
    uint32_t frame_size;               /**< bytes at frame_pointer */
    uint32_t frame_type;               /**< SG_FRAME_TYPE */
    uint32_t frame_sub_type;           /**< SG_FRAME_SUB_TYPE of a video frame */
    uint32_t frame_encode;             /**< SG_ENCODE_VIDEO_TYPE or SG_ENCODE_AUDIO_TYPE */
    uint32_t frame_time;               /**< milliseconds; 0: none, the packager derives one */
    uint32_t frame_data;               /**< seconds since 1970-01-01 UTC; 0: none, the packager
                                            takes the current time */
    uint32_t width;                    /**< pixels */
    uint32_t heigth;                   /**< pixels; spelled so in the interface */
    uint32_t frame_rate;               /**< frames per second; 0: not known */
    uint32_t deinter_lace;             /**< 0 progressive, 1 interlaced */
    uint32_t sample_rate;              /**< Hz */
    uint32_t bit_per_sample;           /**< bits */
    uint32_t channels;                 /**< channel count */
    SGSplitInfo split_info;            /**< all 0: an ordinary picture */
    uint32_t rotation_angle;           /**< picture rotation; 0: none */
    uint16_t company_type;             /**< code of the maker of the coded stream; 0: none */
    uint16_t _3rdstream_header_length; /**< bytes of a foreign stream header at the frame's front */
    uint32_t bit_rate;                 /**< bits per second of an audio stream; 0: not known */
} SGFrameInfo;

/** Argument of SG_CreateTailer(). */
typedef struct SGTailerInfo
{
    uint32_t struct_size; /**< size of the record in bytes; not checked */
} SGTailerInfo;

/** RTP parameters for SG_SetParam() and SG_GetParam(), RFC 3550 5.1. */
typedef struct SGRtpPackageParam
{
    uint32_t struct_size;       /**< not read; set to 64 by SG_GetParam() */
    uint32_t max_packet_length; /**< bytes of a packet and its length field; 0: 1000, and so it
                                     reads back. More than 65537 counts as 65537. Too little for
                                     header and payload, or more than 31 bits: every frame is
                                     refused */
    uint32_t sequence_number;   /**< of the next packet, 16 bits. Stored, and read back, one
                                     lower */
    uint32_t timestamp;         /**< of the first frame, in RTP clock units */
    uint32_t ssrc;              /**< synchronisation source; until it is set a value of rand() */
    uint32_t audio_sample;      /**< audio clock in Hz; 0: audio frames do not advance it */
    uint32_t payload_type;      /**< RTP payload type; 7 bits of it are written */
    const unsigned char* extension_data; /**< body of the header extension, at most 262140 bytes: a
                                            longer one is not taken, the former stays. The caller's,
                                            copied by a set; null: none. A get gives the library's
                                            copy, valid until the next set */
    uint32_t extension_data_length;      /**< bytes */
    const unsigned char* custom_data;    /**< bytes to stand ahead of every packet's length field;
                                            owned like extension_data */
    uint32_t custom_data_length;         /**< bytes; narrowed to a signed 8-bit count by a set, what
                                              is then not positive clears custom_data */
    uint32_t rtp_output_all_flag;        /**< 1: all packets of a frame in one block; otherwise a
                                              block for each */
} SGRtpPackageParam;

#ifdef __cplusplus
} /* extern "C" */
} /* namespace Wrapton */
} /* namespace Orbel */
#define WRAPTON_RECORD(name) Orbel::Wrapton::name
extern "C" {
#else
#define WRAPTON_RECORD(name) name
#endif

/**
 * Creates a packager for one container.
 *
 * @param nType SG_STREAM_TYPE
 * @param pCreateParam allocator, output callback and user value; null leaves every default. The
 *        record is read during the call only; its functions and user value are kept until
 *        SG_DestroyHandle()
 * @return the handle, to be given back with SG_DestroyHandle(); null for SG_STREAM_TYPE_3GP,
 *         SG_STREAM_TYPE_TS, a container that this version does not build, an unknown number, and
 *         when there is no memory for the packager itself. When sg_malloc has no memory for its
 *         work buffer there is a handle, which refuses every frame; the MP4 family and Matroska
 *         refuse the header, too
 * @note Nothing is emitted.
 */
WRAPTON_API void* SG_CreateHandle(unsigned int nType,
                                  WRAPTON_RECORD(SGCreateParam) * pCreateParam) WRAPTON_NOEXCEPT;

/**
 * Begins a recording and emits what the container puts first.
 *
 * @param handle from SG_CreateHandle()
 * @param pHeader what is known of the streams; the caller's, read during the call only. Whether
 * it may be null is the container's choice: all of this version accept it
 * @return SG_ERR_NOERR; SG_ERR_HANDLE_EMPTY handle is null; SG_ERR_PARAM_ERR the packager
 * refused, for example because a recording is under way; SG_ERR_MEMORY_OUT an allocation failed
 */
WRAPTON_API int SG_CreateHeader(void* handle,
                                WRAPTON_RECORD(SGHeaderInfo) * pHeader) WRAPTON_NOEXCEPT;

/**
 * Packages one coded frame.
 *
 * @param handle from SG_CreateHandle(), after SG_CreateHeader()
 * @param pFrame struct_size must be 112. Record and frame bytes stay the caller's and are used
 *        during the call only: read, and by Matroska written to, see SGFrameInfo::frame_pointer
 * @return SG_ERR_NOERR, also when the container drops the frame (video ahead of the first I
 *         frame; with AVI any frame ahead of the header); SG_ERR_HANDLE_EMPTY handle is null;
 * SG_ERR_PARAM_ERR pFrame is null or its struct_size is wrong; otherwise the packager's own code,
 * unchanged
 * @note Output arrives through the data callback before this returns.
 */
WRAPTON_API int SG_InputFrame(void* handle, WRAPTON_RECORD(SGFrameInfo) * pFrame) WRAPTON_NOEXCEPT;

/**
 * Ends a recording: emits indexes and the sizes that are known only now.
 *
 * @param handle from SG_CreateHandle()
 * @param pTailer ignored, may be null
 * @return SG_ERR_NOERR; SG_ERR_HANDLE_EMPTY handle is null; SG_ERR_PARAM_ERR the packager
 * refused, for example because no header was written; SG_ERR_MEMORY_OUT an allocation failed.
 * After a refusal the recording is still open and the call can be repeated
 */
WRAPTON_API int SG_CreateTailer(void* handle,
                                WRAPTON_RECORD(SGTailerInfo) * pTailer) WRAPTON_NOEXCEPT;

/**
 * Gives a snapshot of the file header as it would be written now, to be kept as a recovery
 * copy.
 *
 * @param handle from SG_CreateHandle()
 * @param backup filled with the block and its position; the bytes are the library's and are
 * valid until the next call on the handle. Containers without such a snapshot give a null
 * pointer and size 0; WAV, Matroska and the program streams leave the record as it is
 * @return the packager's own result. MP4 family: the size of the snapshot in bytes, 0 when
 * there is none, SG_ERR_PARAM_ERR backup is null or there is no memory for the snapshot.
 * WAV, Matroska and the program streams: SG_ERR_NOERR. Others: SG_ERR_NOERR, or SG_ERR_PARAM_ERR
 * backup is null. SG_ERR_HANDLE_EMPTY handle is null
 * @note Nothing is emitted.
 */
WRAPTON_API int SG_GetBackup(void* handle, WRAPTON_RECORD(SGOutputData) * backup) WRAPTON_NOEXCEPT;

/**
 * Sets packager parameters; only RTP has any.
 *
 * @param handle from SG_CreateHandle()
 * @param nParamType SG_RTPPARAMTYPE
 * @param pParam an SGRtpPackageParam; the caller's, read during the call only
 * @param nParamLength bytes at pParam, at least 64
 * @return SG_ERR_NOERR, also (with nothing done) for a container other than RTP and for another
 *         nParamType; SG_ERR_HANDLE_EMPTY handle is null; SG_ERR_PARAM_ERR pParam is null or
 *         nParamLength is below 64; SG_ERR_MEMORY_OUT an allocation failed, nothing is set
 */
WRAPTON_API int SG_SetParam(void* handle,
                            unsigned int nParamType,
                            void* pParam,
                            unsigned int nParamLength) WRAPTON_NOEXCEPT;

/**
 * Reads packager parameters back; only RTP has any.
 *
 * @param handle from SG_CreateHandle()
 * @param nParamType SG_RTPPARAMTYPE
 * @param pParam receives an SGRtpPackageParam
 * @param pParamLength in: bytes at pParam, at least 64; out: bytes filled, 64, or 0 for a
 * container other than RTP and for another nParamType
 * @return SG_ERR_NOERR; SG_ERR_HANDLE_EMPTY handle is null; SG_ERR_PARAM_ERR pParam or
 *         pParamLength is null or the length is below 64
 */
WRAPTON_API int SG_GetParam(void* handle,
                            unsigned int nParamType,
                            void* pParam,
                            unsigned int* pParamLength) WRAPTON_NOEXCEPT;

/**
 * Destroys a packager and releases all its memory. Emits nothing: a recording whose tailer was
 * not written stays unfinished.
 *
 * @param handle from SG_CreateHandle(); not usable afterwards
 * @return SG_ERR_NOERR; SG_ERR_HANDLE_EMPTY handle is null
 */
WRAPTON_API int SG_DestroyHandle(void* handle) WRAPTON_NOEXCEPT;

#ifdef __cplusplus
} /* extern "C" */
#endif

#undef WRAPTON_RECORD

/* The sizes are part of the binary interface; 112, 40 and 64 are compared at run time. */
#ifdef __cplusplus
#define WRAPTON_ASSERT_SIZE(name, size) \
    static_assert(sizeof(Orbel::Wrapton::name) == (size), #name " has another layout")
#else
#define WRAPTON_ASSERT_SIZE(name, size) \
    typedef char wrapton_assert_size_of_##name[sizeof(name) == (size) ? 1 : -1]
#endif
WRAPTON_ASSERT_SIZE(SGCreateParam, 40);
WRAPTON_ASSERT_SIZE(SGVideoInfo, 20);
WRAPTON_ASSERT_SIZE(SGAudioInfo, 20);
WRAPTON_ASSERT_SIZE(SGHeaderInfo, 48);
WRAPTON_ASSERT_SIZE(SGBlockInfo, 16);
WRAPTON_ASSERT_SIZE(SGSplitInfo, 24);
WRAPTON_ASSERT_SIZE(SGFrameInfo, 112);
WRAPTON_ASSERT_SIZE(SGTailerInfo, 4);
WRAPTON_ASSERT_SIZE(SGOutputData, 40);
WRAPTON_ASSERT_SIZE(SGRtpPackageParam, 64);
#undef WRAPTON_ASSERT_SIZE

#endif /* WRAPTON_WRAPTON_H */

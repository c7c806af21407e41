/**
 * @file IWrapton.h
 * The stream component: coded frames in, with their properties by name, blocks of a stream
 * container out, one at a time.
 *
 * The header compiles alone as C++17 and later. A stream:
 *
 *     initWraptonComponentLibrary();
 *     IComponentFactory* factory = IComponentFactory::find(kWraptonClsid);
 *     IWrapton* stream = static_cast<IWrapton*>(factory->create("ps"));
 *     stream->inputFrame(bytes, size, {{"frametype", 'V'}, ...});    for every coded frame
 *     stream->getPacket(block);                                      what became of it
 *     stream->release();
 *
 * Results are true or false; the reason for false is in getLastError(), as far as the operation
 * says so. A success does not clear it. No operation throws.
 *
 * Threads. A component is used by one thread at a time; different components are independent of
 * each other.
 */
#ifndef WRAPTON_IWRAPTON_H
#define WRAPTON_IWRAPTON_H

#include <cstdint>
#include <map>
#include <string>

#include "Platform.h"

/**
 * Registers the factories of the library's components: kWraptonClsid (IWrapton) and
 * kFilePackageClsid (IFilePackage, IFilePackage.h).
 *
 * May be called any number of times and on several threads at once; the factories are there when
 * any call returns, and until the process exits.
 */
extern "C" WRAPTON_API void initWraptonComponentLibrary(void) noexcept;

namespace Orbel::Wrapton
{

/// Class id of the stream component. Its types: "asf", "flv", "omf", "rtp", "ts", "ps", "qvps" and
/// "gaysps", each in small or in capital letters throughout.
inline constexpr char kWraptonClsid[] = "Wrapton";

/// Encodings, for the attribute "encodetype". Those that are marked so reach a container as
/// unknown.
enum EncodeType : unsigned int
{
    encodeTypeUnknown = 0,
    encodeTypeMpeg4 = 1,
    encodeTypeH264 = 2,  ///< an Annex B byte stream, ISO/IEC 14496-10
    encodeTypeJpeg = 3,
    encodeTypeSvac = 4,
    encodeTypeHevc = 5,  ///< unknown to every container
    encodeTypeMpeg2 = 6,
    encodeTypeH263 = 7,
    encodeTypeMsmpe4v1 = 8,   ///< spelled so in the interface; unknown to every container
    encodeTypeMsmpe4v2 = 9,   ///< unknown to every container
    encodeTypeMsmpe4v3 = 10,  ///< unknown to every container
    encodeTypeWmv1 = 11,      ///< unknown to every container
    encodeTypeWmv2 = 12,      ///< unknown to every container
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
    encodeTypeG723 = 32,  ///< unknown to every container
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

/// Kinds of frame, for the attribute "framesubtype". The first three pictures and the JPEG frame
/// are told apart, everything else is the same to every container.
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

/// Codes that the components leave in getLastError(), beside those of Platform.h.
enum FuncResult : unsigned int
{
    errorNoError = 0,
    errorInvalidHandle = 1,  ///< the component was made for a type that it does not know
    errorNoSupport = 2,
    errorThread = 3,
    errorParam = 4,     ///< the packager refused the frame, or there is no memory
    errorFileOpen = 5,  ///< there is no path, or the file could not be opened
    errorFileRead = 6,
    errorFormat = 7,
    errorBufferOverFlow = 8,
    errorSysOutOfMem = 9,
    errorNoOutPut = 10  ///< no block is waiting; spelled so in the interface
};

/**
 * Properties of a frame by name. What is absent counts as 0; other names are not looked at. Values
 * are cut to the 32 bits of a frame record's fields, where nothing else is said.
 *
 * Every frame:
 *     "frametype"      'V' video, 'A' audio, 'X' extension data
 *     "framesubtype"   FrameSubtype
 *     "encodetype"     EncodeType
 *     "timestamp"      milliseconds
 *     "year" (since 2000), "month" (from 1), "day", "hour", "minute", "second"
 *                      local time, without daylight saving; 6, 4, 5, 5, 6 and 6 bits count
 *     "rotationangle"  of the picture
 * Video frames:
 *     "width", "height" in pixels, "rate" in frames per second, "deinterlace" 0 or 1
 * Audio frames:
 *     "samplespersec" in Hz, "bitspersample", "channels", "bitrate" in bits per second
 * Split-screen pictures:
 *     "n_slice", "m_slice"  blocks across and down, together at most 4096; otherwise the picture
 *                           counts as whole
 *     "blockpos_top_K", "blockpos_right_K", "blockpos_bottom_K"  in pixels, 16 bits, and
 *     "blockdata_offset_K"  in bytes, each for the blocks K = 1, 2, ... The left edge of a block is
 *                           taken from its top
 * IWrapton::inputFrameEx() only:
 *     "tpcompanytype", "tpstreamheaderlen"  16 bits; maker of the coded stream, and length in bytes
 *                           of its own header at the frame's front
 */
using FrameAttributes = std::map<std::string, long>;

/// A look at bytes that belong to somebody else.
class IWraptonData
{
public:
    IWraptonData() noexcept = default;
    IWraptonData(const IWraptonData&) = default;
    IWraptonData& operator=(const IWraptonData&) = default;
    virtual ~IWraptonData() = default;

    /// The bytes; how long they are valid is said where the object comes from. Null for none.
    [[nodiscard]] virtual const unsigned char* getBuffer() const noexcept = 0;
    /// Their number.
    [[nodiscard]] virtual unsigned int getLen() const noexcept = 0;
};

/**
 * Packages frames into a stream container. Made by the factory kWraptonClsid; for a type that it
 * does not know there is a component, too, which answers false to everything.
 *
 * The operations that stand here as defaults leave kErrorNotImplemented in getLastError() and give
 * false.
 */
class IWrapton : public IComponentBase
{
public:
    /**
     * Packages one frame. A block that it gave waits for getPacket(); of several, the last one.
     *
     * @param data the coded frame; the caller's, read during the call only
     * @param len its length in bytes
     * @param attrs its properties, read during the call only
     * @return false with errorParam when the packager refuses the frame or there is no memory;
     * false alone for a component of an unknown type
     */
    virtual bool inputFrame(const void* /*data*/,
                            unsigned int /*len*/,
                            const FrameAttributes& /*attrs*/)
    {
        return NotImplemented();
    }

    /**
     * Hands the waiting block out, once.
     *
     * @param out gets a new object over the block, whose bytes belong to the component and are
     * valid until its next input or its end; left alone when there is none
     * @return false with errorNoOutPut when no block is waiting, with errorParam when there is no
     *         memory for the object: the block then goes on waiting
     */
    virtual bool getPacket(SharedPtr<IWraptonData>& /*out*/) { return NotImplemented(); }

    /**
     * Packages one frame into the caller's packet. "ts" is packaged in this way only; "asf" and
     * "flv" leave the packet alone and package nothing.
     *
     * @param data, len, attrs as for inputFrame(), but that the date reaches the container as a
     *        packed word: second, minute, hour, day, month and year from bit 0, 6, 12, 17, 22 and
     * 26
     * @param packet must be valid, may hold the frame itself, and grows as needed. Afterwards it is
     *        as long as what was packaged: with "rtp" 0 after a refused frame that has bytes, with
     *        "ts" 0 for a frame that is not sent. With "ps", "qvps" and "gaysps" it has the length
     *        it had before, and getPacket() tells that of the block
     * @return as for inputFrame(); false alone, too, when the packet is not valid
     * @note "omf", "rtp" and the program streams leave a copy of the last block for getPacket().
     */
    virtual bool inputFrameEx(const void* /*data*/,
                              unsigned int /*len*/,
                              const FrameAttributes& /*attrs*/,
                              PacketBuffer& /*packet*/)
    {
        return NotImplemented();
    }

    /**
     * Sets a parameter of "rtp", in the units of SGRtpPackageParam (Wrapton.h):
     * "max_rtp_packet_length", "rtp_sequence_number" (of the next packet; stored one lower),
     * "rtp_timestamp", "rtp_ssrc", "rtp_audio_sample", "rtp_payload_type",
     * "rtp_packet_output_all_flag"; "rtp_encode_type" is taken without effect.
     *
     * @return false for a component of an unknown type; otherwise true, with nothing done for
     * another name and for the other containers
     */
    virtual bool setParam(const char* /*name*/, long /*value*/) { return NotImplemented(); }

    /// Reads a parameter of "rtp" back: the sequence number is that of the last packet. @return as
    /// for setParam(), with @p value left alone where nothing is done
    virtual bool getParam(const char* /*name*/, long& /*value*/) { return NotImplemented(); }

    /**
     * Sets bytes that "rtp" adds to its packets: "rtp_custom_data" ahead of every packet's length,
     * at most 127 of them, and "rtp_extension_data", the body of the header extension.
     *
     * @param data the caller's, copied; null takes the bytes away
     * @param len bytes. For custom data it is cut to 8 bits with a sign: what is then not positive
     *        takes the bytes away
     * @return false for a component of an unknown type, for an extension of more than 262140 bytes,
     *         and with errorParam when there is no memory; otherwise true
     */
    virtual bool setExtInfo(const char* /*name*/, const void* /*data*/, unsigned int /*len*/)
    {
        return NotImplemented();
    }

    /**
     * Reads the header extension of "rtp" back.
     *
     * @param name must be the pointer that rtpExtensionDataName() gives; any other one, the same
     *        text or not, names nothing
     * @param out gets a new object over the component's copy, valid until the extension is set
     * again
     * @return false for a component of an unknown type, and with errorParam when there is no
     * memory; otherwise true, with @p out left alone where nothing is named
     */
    virtual bool getExtInfo(const char* /*name*/, SharedPtr<IWraptonData>& /*out*/)
    {
        return NotImplemented();
    }

    // Reserved, so that the interface can grow without moving an operation.
    virtual bool rev_func24() { return NotImplemented(); }
    virtual bool rev_func23() { return NotImplemented(); }
    virtual bool rev_func22() { return NotImplemented(); }
    virtual bool rev_func21() { return NotImplemented(); }
    virtual bool rev_func20() { return NotImplemented(); }
    virtual bool rev_func19() { return NotImplemented(); }
    virtual bool rev_func18() { return NotImplemented(); }
    virtual bool rev_func17() { return NotImplemented(); }
    virtual bool rev_func16() { return NotImplemented(); }
    virtual bool rev_func15() { return NotImplemented(); }
    virtual bool rev_func14() { return NotImplemented(); }
    virtual bool rev_func13() { return NotImplemented(); }
    virtual bool rev_func12() { return NotImplemented(); }
    virtual bool rev_func11() { return NotImplemented(); }
    virtual bool rev_func10() { return NotImplemented(); }
    virtual bool rev_func9() { return NotImplemented(); }
    virtual bool rev_func8() { return NotImplemented(); }
    virtual bool rev_func7() { return NotImplemented(); }
    virtual bool rev_func6() { return NotImplemented(); }
    virtual bool rev_func5() { return NotImplemented(); }
    virtual bool rev_func4() { return NotImplemented(); }
    virtual bool rev_func3() { return NotImplemented(); }
    virtual bool rev_func2() { return NotImplemented(); }
    virtual bool rev_func1() { return NotImplemented(); }

private:
    static bool NotImplemented() noexcept
    {
        setLastError(kErrorNotImplemented);
        return false;
    }
};

/// The text "rtp_extension_data" of the library, for IWrapton::getExtInfo().
WRAPTON_API const char* rtpExtensionDataName() noexcept;

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_IWRAPTON_H

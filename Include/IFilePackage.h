/**
 * @file IFilePackage.h
 * The file component: coded frames in, with their properties by name, and a finished file on disk.
 *
 * The header compiles alone as C++17 and later. A recording:
 *
 *     initWraptonComponentLibrary();
 *     IComponentFactory* factory = IComponentFactory::find(kFilePackageClsid);
 *     IFilePackage* file = static_cast<IFilePackage*>(factory->create("mp4"));
 *     file->open("camera.mp4");
 *     file->inputFrame(bytes, size, {{"frametype", 'V'}, ...});    for every coded frame
 *     file->close();
 *     file->release();
 *
 * Results, errors and threads are as in IWrapton.h. One thing more: open(), inputFrame() and
 * close() answer for the packager only. Whether the bytes reached the file is told by
 * getLastError(): it is kErrorWrite after the call during which a seek or a write failed, and again
 * after close(). Clear it with setLastError(0) before close() to ask about the whole recording.
 */
#ifndef WRAPTON_IFILEPACKAGE_H
#define WRAPTON_IFILEPACKAGE_H

#include "IWrapton.h"

namespace Orbel::Wrapton
{

/// Class id of the file component. Its types: "mp4", "mp464", "mp4noseek", "mov", "mov64", "3gp",
/// "asf", "mkv", "avi", "omf", "flv" and "wav", each in small or in capital letters throughout.
inline constexpr char kFilePackageClsid[] = "FilePackage";

/**
 * Takes the place of a file: called with every block, during open(), inputFrame() or close() and on
 * their thread.
 *
 * The first argument has "fileoffset", the block's position in bytes, and "offsettype", where that
 * counts from: 0 start, 1 current position, 2 end. The second one is the block; its bytes are valid
 * during the call only. The answer is not looked at. Must not call the component.
 */
using FilePackageProc = Callable<FrameAttributes&, IWraptonData&>;

/**
 * Packages frames into a file. Made by the factory kFilePackageClsid; for a type that it does not
 * know there is a component, too, which answers false to everything, with errorInvalidHandle.
 *
 * The operations that stand here as defaults leave kErrorNotImplemented in getLastError() and give
 * false.
 */
class IFilePackage : public IComponentBase
{
public:
    /**
     * Begins a recording into a file, which is created or emptied.
     *
     * A file that is still open is given up for the new one without an end; when the new one cannot
     * be opened, it goes on.
     *
     * @param path the caller's, read during the call only
     * @return false with errorInvalidHandle; with errorFileOpen when path is null or cannot be
     *         opened; with errorParam when there is no memory. A packager that refuses to begin,
     * for example inside a recording, is not told of
     */
    virtual bool open(const char* /*path*/) { return NotImplemented(); }

    /**
     * Packages one frame.
     *
     * @param data the coded frame; the caller's, read during the call only
     * @param len its length in bytes
     * @param attrs its properties (IWrapton.h), read during the call only. The date reaches the
     *        container as a packed word: second, minute, hour, day, month and year from bit 0, 6,
     * 12, 17, 22 and 26
     * @return false with errorInvalidHandle; with errorParam when the packager refuses the frame or
     *         there is no memory
     */
    virtual bool inputFrame(const void* /*data*/,
                            unsigned int /*len*/,
                            const FrameAttributes& /*attrs*/)
    {
        return NotImplemented();
    }

    /// Ends the recording: writes the rest and closes the file. @return false with
    /// errorInvalidHandle; otherwise true, whatever became of it
    virtual bool close() { return NotImplemented(); }

    /**
     * Begins a recording into a callable, which the component keeps. While a file is open the
     * blocks go there instead; once it is closed they go to the callable again.
     *
     * @return false alone for an empty callable; false with errorInvalidHandle; with errorParam
     * when there is no memory
     */
    virtual bool open(const FilePackageProc& /*proc*/) { return NotImplemented(); }

    /**
     * Gives the file header as it would be written now, for the recovery of a file that is never
     * closed. Only the MP4 family has one, while a recording is open.
     *
     * @param out gets a new object over the header, whose bytes belong to the component and are
     * valid until its next call
     * @param info gets "seekpos", where in the file the header belongs, 32 bits of it, and
     *        "seektype", where that counts from; other entries stay
     * @return false alone when there is none, out and info are then left alone; false with
     *         errorInvalidHandle; with errorParam when there is no memory
     */
    virtual bool getbackup(SharedPtr<IWraptonData>& /*out*/, FrameAttributes& /*info*/)
    {
        return NotImplemented();
    }

    // Reserved, so that the interface can grow without moving an operation.
    virtual bool rev_func26() { return NotImplemented(); }
    virtual bool rev_func25() { return NotImplemented(); }
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

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_IFILEPACKAGE_H

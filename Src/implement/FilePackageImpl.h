#ifndef WRAPTON_IMPLEMENT_FILEPACKAGEIMPL_H
#define WRAPTON_IMPLEMENT_FILEPACKAGEIMPL_H

#include <memory>
#include <string>

#include "IFilePackage.h"
#include "Package.h"
#include "implement/FrameRecord.h"
#include "implement/StreamDataImpl.h"

namespace Orbel::Wrapton
{

/// The file component: one packager, and the file or callable that its blocks go to.
class CFilePackage final : public IFilePackage
{
public:
    /// Throws std::bad_alloc.
    explicit CFilePackage(const std::string& type);

    [[nodiscard]] VersionInfo getVersion() const override;

    bool open(const char* path) override;
    bool inputFrame(const void* data, unsigned int len, const FrameAttributes& attrs) override;
    bool close() override;
    bool open(const FilePackageProc& proc) override;
    bool getbackup(SharedPtr<IWraptonData>& out, FrameAttributes& info) override;

    /// Makes components; registered as kFilePackageClsid.
    class CFactory final : public IComponentFactory
    {
    public:
        CFactory() noexcept;
        CFactory(const CFactory&) = delete;
        CFactory& operator=(const CFactory&) = delete;
        ~CFactory() override;

        IFilePackage* create(const std::string& type) override;
    };

private:
    static void FileDataCallBack(SGOutputData* block, void* user);
    /// @return false when the block did not get to where it belongs
    bool Place(const SGOutputData& block);
    bool WriteBlock(const SGOutputData& block);
    void NoteFailure() noexcept;
    /// Leaves errorInvalidHandle when there is no packager.
    [[nodiscard]] bool HasPackager() const noexcept;
    bool Begin();
    /// The bytes of a frame as the packager may have them; null when there is no memory.
    const void* FrameBytes(const void* data, unsigned int len);

    std::unique_ptr<CPackage> m_handle;  // null: an unknown type
    CWraptonDataImpl m_backup;           // the header that was fetched last
    LargeFile m_file;
    FilePackageProc m_proc;
    PacketBuffer m_frame;       // the copy of a frame for the packager that writes to it
    bool m_bLostBlock = false;  // since the last close()
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_IMPLEMENT_FILEPACKAGEIMPL_H

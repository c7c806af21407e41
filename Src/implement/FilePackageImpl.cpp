#include "implement/FilePackageImpl.h"

#include <array>
#include <cstring>
#include <new>

#include "implement/Defs.h"

namespace Orbel::Wrapton
{
namespace
{

constexpr std::array kTypes = {
    ComponentType{"mov64", "MOV64", SG_STREAM_TYPE_MOV_64},
    ComponentType{"mp464", "MP464", SG_STREAM_TYPE_MP4_64},
    ComponentType{"mp4noseek", "MP4NOSEEK", SG_STREAM_TYPE_MP4_NOSEEK},
    ComponentType{"mp4", "MP4", SG_STREAM_TYPE_MP4},
    ComponentType{"3gp", "3GP", SG_STREAM_TYPE_3GP},
    ComponentType{"mov", "MOV", SG_STREAM_TYPE_MOV},
    ComponentType{"asf", "ASF", SG_STREAM_TYPE_ASF},
    ComponentType{"mkv", "MKV", SG_STREAM_TYPE_MKV},
    ComponentType{"avi", "AVI", SG_STREAM_TYPE_AVI},
    ComponentType{"omf", "OMF", SG_STREAM_TYPE_OMF},
    ComponentType{"flv", "FLV", SG_STREAM_TYPE_FLV},
    ComponentType{"wav", "WAV", SG_STREAM_TYPE_WAV},
};

constexpr uint32_t kCreateAndWrite = LargeFile::kModeCreate | LargeFile::kModeWrite;
static_assert(kCreateAndWrite == 4097);

}  // namespace

CFilePackage::CFilePackage(const std::string& type) : m_handle(CreateComponentPackage(kTypes, type))
{
}

VersionInfo CFilePackage::getVersion() const
{
    return ComponentVersion();
}

void CFilePackage::FileDataCallBack(SGOutputData* block, void* user)
{
    auto& self = *static_cast<CFilePackage*>(user);
    if (!self.Place(*block)) self.NoteFailure();
}

bool CFilePackage::Place(const SGOutputData& block)
{
    if (m_file.isOpen()) return WriteBlock(block);
    if (!m_proc) return true;

    try
    {
        FrameAttributes info = {{"fileoffset", block.offset_pos64},
                                {"offsettype", block.offset_type}};
        CWraptonDataImpl data(block.data_pointer, static_cast<uint32_t>(block.data_size));
        m_proc(info, data);
    }
    catch (...)  // no packager expects what a callable may throw
    {
        return false;
    }
    return true;
}

bool CFilePackage::WriteBlock(const SGOutputData& block)
{
    // Each step is taken whatever became of the one before it.
    const bool sought = m_file.seek(block.offset_pos64, block.offset_type);
    const bool written = m_file.write(block.data_pointer, static_cast<size_t>(block.data_size));
    const bool flushed = m_file.flush();
    return sought && written && flushed;
}

void CFilePackage::NoteFailure() noexcept
{
    m_bLostBlock = true;
    setLastError(kErrorWrite);
}

bool CFilePackage::HasPackager() const noexcept
{
    if (m_handle == nullptr) setLastError(errorInvalidHandle);
    return m_handle != nullptr;
}

bool CFilePackage::Begin()
{
    m_handle->SetDataCallBack(FileDataCallBack, this);
    m_handle->Init();
    m_handle->CreateHeader(nullptr, 0);
    return true;
}

bool CFilePackage::open(const char* path)
{
    if (!HasPackager()) return false;
    if (path == nullptr)
    {
        setLastError(errorFileOpen);
        return false;
    }

    // Kept: a file that is open is left to open(), which gives it up only for the new one.
    if (!m_file.isOpen()) m_file.close();
    if (!m_file.open(path, kCreateAndWrite))
    {
        setLastError(errorFileOpen);
        return false;
    }
    return Guarded([this] { return Begin(); });
}

bool CFilePackage::open(const FilePackageProc& proc)
{
    if (!proc) return false;
    if (!HasPackager()) return false;

    return Guarded(
        [&]
        {
            m_proc = proc;
            return Begin();
        });
}

const void* CFilePackage::FrameBytes(const void* data, unsigned int len)
{
    // Matroska turns start codes into lengths where they stand; the caller's bytes are not ours.
    if (m_handle->GetType() != SG_STREAM_TYPE_MKV || data == nullptr || len == 0) return data;
    if (!m_frame.Resize(len)) throw std::bad_alloc();

    std::memcpy(m_frame.Data(), data, len);
    return m_frame.Data();
}

bool CFilePackage::inputFrame(const void* data, unsigned int len, const FrameAttributes& attrs)
{
    if (!HasPackager()) return false;

    return Guarded(
        [&]
        {
            CFrameRecord record(
                FrameBytes(data, len), len, attrs, DateForm::kPacked, MakerKeys::kLeft);
            if (m_handle->InputData(record.Get(), 0) == SG_ERR_NOERR) return true;

            setLastError(errorParam);
            return false;
        });
}

bool CFilePackage::close()
{
    if (!HasPackager()) return false;

    const bool ended = Guarded(
        [this]
        {
            m_handle->CreateTailer(nullptr, 0);
            return true;
        });
    m_handle->Deinit();
    const bool closed = !m_file.isOpen() || m_file.close();
    if (!ended || !closed || m_bLostBlock) setLastError(kErrorWrite);
    m_bLostBlock = false;
    return true;
}

bool CFilePackage::getbackup(SharedPtr<IWraptonData>& out, FrameAttributes& info)
{
    if (!HasPackager()) return false;

    return Guarded(
        [&]
        {
            SGOutputData header{};
            header.struct_size = sizeof(header);
            if (m_handle->GetFileHeader(&header) <= 0) return false;
            if (header.data_pointer == nullptr || header.data_size <= 0) return false;

            m_backup.setBuffer(header.data_pointer, static_cast<uint32_t>(header.data_size));
            auto data = std::make_shared<CWraptonDataImpl>(m_backup);
            info["seekpos"] = long{header.offset_pos};
            info["seektype"] = long{header.offset_type};
            out = std::move(data);
            return true;
        });
}

CFilePackage::CFactory::CFactory() noexcept : IComponentFactory(kFilePackageClsid) {}

CFilePackage::CFactory::~CFactory()
{
    remove(*this);  // ahead of the base class: until then it is whole
}

IFilePackage* CFilePackage::CFactory::create(const std::string& type)
{
    return CreateComponent<CFilePackage>(type);
}

}  // namespace Orbel::Wrapton

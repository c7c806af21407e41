#ifndef WRAPTON_PACKAGE_H
#define WRAPTON_PACKAGE_H

#include <cstdint>

#include "Platform.h"
#include "Wrapton.h"
#include "tool/CallerBuffer.h"

namespace Orbel::Wrapton
{

/// The default allocator: @p size bytes, not zeroed; null when there is no memory.
void* SGMalloc(int size);
/// The default release; @p size is ignored.
void SGFree(void* memory, int size);
/// The default output callback: discards the block.
void SGDataCB(SGOutputData* block, void* user);

/**
 * Base of every packager.
 *
 * The flat interface drives the operations in this order: Init, CreateHeader, InputData for every
 * frame, CreateTailer, Deinit. It keeps no state of its own: out of order, a packager answers with
 * its own checks. Results are SG_ERR_TYPE codes.
 */
class CPackage
{
public:
    CPackage(uint32_t nType, const SGCreateParam* pCreateParam);
    virtual ~CPackage();
    CPackage(const CPackage&) = delete;
    CPackage& operator=(const CPackage&) = delete;

    /// Stores both as given: a null callback does not bring the default back, it discards.
    virtual int SetDataCallBack(SGDataCB_t callback, void* user);
    virtual int Init() = 0;
    virtual int Deinit() = 0;
    /// The second argument of these three is 0 in every call of the flat interface.
    virtual int CreateHeader(SGHeaderInfo* pHeader, unsigned int nReserved) = 0;
    virtual int InputData(SGFrameInfo* pFrame, unsigned int nReserved) = 0;
    /// Packages into the caller's packet where a container offers that; by default does nothing.
    virtual int InputData(SGFrameInfo* pFrame, PacketBuffer& packet);
    virtual int CreateTailer(SGTailerInfo* pTailer, unsigned int nReserved) = 0;
    virtual int SetParam(const void* pParam, int nLength);
    virtual int GetParam(void*& pParam, int& nLength);
    /// Describes the current file header in @p pOutput; by default there is none.
    virtual int GetFileHeader(SGOutputData* pOutput);

    [[nodiscard]] uint32_t GetType() const noexcept { return m_nType; }

protected:
    /// True for a frame with bytes; most packagers refuse all others.
    [[nodiscard]] static bool IsFrame(const SGFrameInfo* pFrame) noexcept
    {
        return pFrame != nullptr && pFrame->frame_pointer != nullptr && pFrame->frame_size != 0;
    }

    /// Where a block belongs, SGOutputData::offset_type.
    enum class Origin : int32_t
    {
        kStart = 0,
        kCurrent = 1,
        kEnd = 2
    };

    /**
     * Hands one block to the callback.
     *
     * @return the bytes that the callback says it took, from 0 to @p size: positions count these
     */
    uint32_t Emit(const unsigned char* bytes, uint32_t size, Origin origin, int64_t position);

    /// A working buffer from the caller's allocator; null when it has none.
    [[nodiscard]] CallerBuffer Allocate(int size) const noexcept
    {
        return AllocateCallerBuffer(func_malloc, func_free, size);
    }

    uint32_t m_nType;
    void* m_pUser = nullptr;
    SGMalloc_t func_malloc = SGMalloc;
    SGFree_t func_free = SGFree;
    SGDataCB_t func_datacb = SGDataCB;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_PACKAGE_H

#include "Wrapton.h"

#include <new>

#include "PackageImpl.h"

using namespace Orbel::Wrapton;

namespace
{

constexpr unsigned int kFrameInfoSize = 112;
static_assert(sizeof(SGFrameInfo) == kFrameInfoSize);

CPackage* Packager(void* handle)
{
    return static_cast<CPackage*>(handle);
}

/// Runs a step of a packager. Nothing but a failed allocation is thrown inside the library.
template <class Step>
int Guarded(Step step) noexcept
{
    try
    {
        return step();
    }
    catch (const std::bad_alloc&)
    {
        return SG_ERR_MEMORY_OUT;
    }
}

int Folded(int result)
{
    return result == SG_ERR_NOERR ? SG_ERR_NOERR : SG_ERR_PARAM_ERR;
}

}  // namespace

void* SG_CreateHandle(unsigned int nType, SGCreateParam* pCreateParam) noexcept
{
    try
    {
        return CreatePackage(nType, pCreateParam).release();
    }
    catch (const std::bad_alloc&)
    {
        return nullptr;
    }
}

int SG_CreateHeader(void* handle, SGHeaderInfo* pHeader) noexcept
{
    if (handle == nullptr) return SG_ERR_HANDLE_EMPTY;

    return Guarded(
        [&]
        {
            CPackage* const package = Packager(handle);
            if (package->Init() != SG_ERR_NOERR) return int{SG_ERR_PARAM_ERR};
            return Folded(package->CreateHeader(pHeader, 0));
        });
}

int SG_InputFrame(void* handle, SGFrameInfo* pFrame) noexcept
{
    if (handle == nullptr) return SG_ERR_HANDLE_EMPTY;
    if (pFrame == nullptr) return SG_ERR_PARAM_ERR;
    if (pFrame->struct_size != kFrameInfoSize) return SG_ERR_PARAM_ERR;

    return Guarded([&] { return Packager(handle)->InputData(pFrame, 0); });
}

int SG_CreateTailer(void* handle, SGTailerInfo* /*pTailer*/) noexcept
{
    if (handle == nullptr) return SG_ERR_HANDLE_EMPTY;

    return Guarded(
        [&]
        {
            CPackage* const package = Packager(handle);
            if (package->CreateTailer(nullptr, 0) != SG_ERR_NOERR) return int{SG_ERR_PARAM_ERR};
            return Folded(package->Deinit());
        });
}

int SG_GetBackup(void* handle, SGOutputData* backup) noexcept
{
    if (handle == nullptr) return SG_ERR_HANDLE_EMPTY;

    return Guarded([&] { return Packager(handle)->GetFileHeader(backup); });
}

int SG_SetParam(void* handle,
                unsigned int /*nParamType*/,
                void* pParam,
                unsigned int /*nParamLength*/) noexcept
{
    if (handle == nullptr) return SG_ERR_HANDLE_EMPTY;
    if (pParam == nullptr) return SG_ERR_PARAM_ERR;

    return SG_ERR_NOERR;  // no packager of this version has parameters
}

int SG_GetParam(void* handle,
                unsigned int /*nParamType*/,
                void* pParam,
                unsigned int* pParamLength) noexcept
{
    if (handle == nullptr) return SG_ERR_HANDLE_EMPTY;
    if (pParam == nullptr) return SG_ERR_PARAM_ERR;
    if (pParamLength == nullptr) return SG_ERR_PARAM_ERR;

    *pParamLength = 0;  // no packager of this version has parameters
    return SG_ERR_NOERR;
}

int SG_DestroyHandle(void* handle) noexcept
{
    if (handle == nullptr) return SG_ERR_HANDLE_EMPTY;

    delete Packager(handle);
    return SG_ERR_NOERR;
}

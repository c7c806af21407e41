#include "Package.h"

#include <algorithm>
#include <cassert>
#include <climits>
#include <new>

namespace Orbel::Wrapton
{

void* SGMalloc(int size)
{
    if (size < 0) return nullptr;
    return new (std::nothrow) unsigned char[static_cast<unsigned int>(size)];
}

void SGFree(void* memory, int /*size*/)
{
    delete[] static_cast<unsigned char*>(memory);
}

void SGDataCB(SGOutputData* /*block*/, void* /*user*/) {}

CPackage::CPackage(uint32_t nType, const SGCreateParam* pCreateParam) : m_nType(nType)
{
    if (pCreateParam == nullptr) return;

    if (pCreateParam->user != nullptr) m_pUser = pCreateParam->user;
    if (pCreateParam->sg_malloc != nullptr) func_malloc = pCreateParam->sg_malloc;
    if (pCreateParam->sg_free != nullptr) func_free = pCreateParam->sg_free;
    if (pCreateParam->sg_datacb != nullptr) func_datacb = pCreateParam->sg_datacb;
}

CPackage::~CPackage()
{
    m_pUser = nullptr;
    func_datacb = nullptr;
}

int CPackage::SetDataCallBack(SGDataCB_t callback, void* user)
{
    m_pUser = user;
    func_datacb = callback;
    return SG_ERR_NOERR;
}

int CPackage::InputData(SGFrameInfo* /*pFrame*/, PacketBuffer& /*packet*/)
{
    return SG_ERR_NOERR;
}

int CPackage::SetParam(const void* /*pParam*/, int /*nLength*/)
{
    return SG_ERR_NOERR;
}

int CPackage::GetParam(void*& /*pParam*/, int& /*nLength*/)
{
    return SG_ERR_NOERR;
}

int CPackage::GetFileHeader(SGOutputData* pOutput)
{
    if (pOutput == nullptr) return SG_ERR_PARAM_ERR;

    // Kept: struct_size and offset_pos64 stay as the caller left them.
    pOutput->data_pointer = nullptr;
    pOutput->data_size = 0;
    pOutput->offset_type = 0;
    pOutput->offset_pos = 0;
    return SG_ERR_NOERR;
}

uint32_t CPackage::Emit(const unsigned char* bytes, uint32_t size, Origin origin, int64_t position)
{
    assert(size <= INT_MAX);
    if (func_datacb == nullptr) return size;

    SGOutputData block{};
    block.struct_size = sizeof(block);
    block.data_pointer = const_cast<unsigned char*>(bytes);  // consumers only read
    block.data_size = static_cast<int32_t>(size);
    block.offset_type = static_cast<int32_t>(origin);
    block.offset_pos = static_cast<uint32_t>(position);
    block.offset_pos64 = position;
    func_datacb(&block, m_pUser);
    return std::min(static_cast<uint32_t>(std::max(block.data_size, 0)), size);
}

}  // namespace Orbel::Wrapton

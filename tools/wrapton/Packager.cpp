#include "Packager.h"

#include "Failure.h"

namespace Orbel::Wrapton::Command
{

Packager::Packager(const Container& container, OutputFile& output)
    : m_container(container), m_output(output)
{
    SGCreateParam create = {};
    create.struct_size = sizeof create;
    create.user = this;
    create.sg_datacb = OnBlock;
    m_pHandle = SG_CreateHandle(container.type, &create);
    if (m_pHandle == nullptr)
        throw Failure("the library gives no packager for " + std::string(container.name));
}

Packager::~Packager()
{
    SG_DestroyHandle(m_pHandle);
}

int Packager::CreateHeader(SGHeaderInfo& header)
{
    m_bStored = false;
    return SG_CreateHeader(m_pHandle, &header);
}

int Packager::InputFrame(SGFrameInfo& frame)
{
    m_bStored = false;
    return SG_InputFrame(m_pHandle, &frame);
}

int Packager::CreateTailer()
{
    m_bStored = false;
    m_bClosing = true;
    return SG_CreateTailer(m_pHandle, nullptr);
}

void Packager::OnBlock(SGOutputData* block, void* self) noexcept
{
    static_cast<Packager*>(self)->Place(*block);
}

void Packager::Place(SGOutputData& block)
{
    if (block.data_pointer == nullptr || block.data_size <= 0) return;

    const bool at_start = block.offset_type == 0 && block.offset_pos64 == 0;
    if (at_start && m_bClosing && m_container.ignores_closing_block_at_start) return;

    const auto size = static_cast<std::size_t>(block.data_size);
    const std::size_t placed =
        m_output.Place(block.offset_pos64, block.offset_type, {block.data_pointer, size});
    block.data_size = static_cast<int32_t>(placed);
    m_bStored = m_bStored || !at_start;
}

}  // namespace Orbel::Wrapton::Command

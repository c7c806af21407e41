#ifndef WRAPTON_TOOL_BUFFER_H
#define WRAPTON_TOOL_BUFFER_H

#include <cstdint>
#include <memory>

namespace Orbel::Wrapton
{

/// A buffer whose size is chosen once.
class CAutoBuffer
{
public:
    /// Allocates @p size zeroed bytes. @return 0; -1 when called before, when @p size is below 1
    /// or when there is no memory (the one chance is used up then, too).
    int Init(int size) noexcept;

    [[nodiscard]] char* GetPointer() noexcept { return m_pBuffer.get(); }
    [[nodiscard]] uint32_t GetBufferLen() const noexcept { return m_nBufferLen; }
    [[nodiscard]] bool HadInit() const noexcept { return m_bHadInit; }

private:
    bool m_bHadInit = false;
    std::unique_ptr<char[]> m_pBuffer;
    uint32_t m_nBufferLen = 0;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_TOOL_BUFFER_H

#include "Platform.h"

namespace Orbel::Wrapton
{
namespace
{

thread_local constinit uint32_t s_nLastError = 0;

}  // namespace

uint32_t getLastError() noexcept
{
    return s_nLastError;
}

void setLastError(uint32_t error) noexcept
{
    s_nLastError = error;
}

}  // namespace Orbel::Wrapton

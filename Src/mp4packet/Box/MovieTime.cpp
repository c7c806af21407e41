#include "mp4packet/Box/MovieTime.h"

#include <cassert>

namespace Orbel::Wrapton
{

uint32_t ToMovieUnits(uint32_t total, uint32_t timescale) noexcept
{
    assert(timescale != 0);
    constexpr float kFirstThatDoesNotFit = 4294967296.0f;
    const float units = static_cast<float>(total) / static_cast<float>(timescale) *
                        static_cast<float>(kMovieTimeScale);
    return units < kFirstThatDoesNotFit ? static_cast<uint32_t>(units) : 0xFFFFFFFF;
}

}  // namespace Orbel::Wrapton

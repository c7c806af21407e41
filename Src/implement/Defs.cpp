#include "implement/Defs.h"

#include <algorithm>

#include "PackageImpl.h"
#include "mp4packet/Mp4Packet.h"
#include "tspacket/TsPacket.h"

namespace Orbel::Wrapton
{

std::unique_ptr<CPackage> CreateComponentPackage(std::span<const ComponentType> types,
                                                 const std::string& name)
{
    const auto found = std::find_if(types.begin(),
                                    types.end(),
                                    [&](const auto& entry)
                                    { return name == entry.small || name == entry.capital; });
    if (found == types.end()) return nullptr;

    switch (found->type)
    {
        // The flat interface does not offer these two.
        case SG_STREAM_TYPE_3GP:
            return std::make_unique<CMp4Packet>(found->type, nullptr);
        case SG_STREAM_TYPE_TS:
            return std::make_unique<CTsPacket>(nullptr);
        default:
            return CreatePackage(found->type, nullptr);
    }
}

VersionInfo ComponentVersion() noexcept
{
    return {.name = "Application",
            .majorNumber = 1,
            .minorNumber = 0,
            .revisionNumber = 0,
            .revision = "$Rev: 23572 $",
            .buildDate = "Nov  6 2015"};
}

}  // namespace Orbel::Wrapton

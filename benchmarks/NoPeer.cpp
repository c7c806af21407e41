// Stands in for Peer.cpp where libavformat is not installed.
#include "Peer.h"

namespace Bench
{

std::string PeerVersion()
{
    return {};
}

std::optional<Run> RunPeer(const Container& /*container*/,
                           const Recording& /*recording*/,
                           uint32_t /*count*/)
{
    return std::nullopt;
}

}  // namespace Bench

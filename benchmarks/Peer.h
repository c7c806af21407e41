/**
 * @file Peer.h
 * The same recordings through libavformat.
 */
#ifndef WRAPTON_BENCHMARKS_PEER_H
#define WRAPTON_BENCHMARKS_PEER_H

#include <optional>
#include <string>

#include "Containers.h"

namespace Bench
{

/// "libavformat 59.27.100"; empty when the benchmarks were built without it.
std::string PeerVersion();

/// Muxes as RunPackager() does, with the library's own buffer sizes; nothing when the container has
/// no peer. Prints why when the peer refuses.
std::optional<Run> RunPeer(const Container& container, const Recording& recording, uint32_t count);

}  // namespace Bench

#endif  // WRAPTON_BENCHMARKS_PEER_H

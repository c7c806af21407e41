#pragma once

#include <vector>

namespace Orbel::Wrapton::Command
{

/**
 * Prepares an H.264 picture for a container that splits it at start codes of four bytes, leaves out
 * what stands ahead of the first one, and cuts only the last piece to a length that fits.
 *
 * A picture that would lose bytes or get a piece that is too long becomes one group: its first unit
 * behind a start code of four bytes, all others behind three. Every other picture stays as it is.
 */
void GroupUnits(std::vector<unsigned char>& picture);

}  // namespace Orbel::Wrapton::Command

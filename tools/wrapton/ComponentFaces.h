#pragma once

#include <memory>

#include "Face.h"

namespace Orbel::Wrapton::Command
{

/// The component that packages a stream; null when the library does not know the container.
std::unique_ptr<Face> MakeStreamFace(const Container& container, Face::Receiver receiver);

/// The component that packages a file; null when the library does not know the container.
std::unique_ptr<Face> MakeFileFace(const Container& container, Face::Receiver receiver);

}  // namespace Orbel::Wrapton::Command

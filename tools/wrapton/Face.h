#pragma once

#include <functional>
#include <memory>
#include <span>

#include <wrapton/wrapton.hpp>

#include "Containers.h"
#include "RtpStream.h"

namespace Orbel::Wrapton::Command
{

/// One packager of the library, behind the flat interface or behind a component: not every
/// container is offered by both.
class Face
{
public:
    /// Gets every block, and gives the bytes that it stored.
    using Receiver = std::function<std::size_t(const Block& block)>;

    Face() = default;
    Face(const Face&) = delete;
    Face& operator=(const Face&) = delete;
    virtual ~Face() = default;

    /// Each gives 0, or the library's own code.
    virtual int DescribeRtp(const RtpStream& /*stream*/) { return SG_ERR_NOERR; }
    virtual int CreateHeader(const SGHeaderInfo* /*header*/) { return SG_ERR_NOERR; }
    virtual int InputFrame(std::span<unsigned char> bytes, const SGFrameInfo& frame) = 0;
    virtual int CreateTailer() { return SG_ERR_NOERR; }
};

/// A packager for the container; null when the library has none.
std::unique_ptr<Face> MakeFace(const Container& container, Face::Receiver receiver);

}  // namespace Orbel::Wrapton::Command

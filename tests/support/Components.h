/**
 * @file Components.h
 * Components to hand frames to, and the attributes of frames.
 */
#ifndef WRAPTON_TESTS_SUPPORT_COMPONENTS_H
#define WRAPTON_TESTS_SUPPORT_COMPONENTS_H

#include <memory>
#include <string>

#include <wrapton/IFilePackage.h>
#include <wrapton/IWrapton.h>

#include "support/Frames.h"

namespace Support
{

struct Releaser
{
    void operator()(Orbel::Wrapton::IComponentBase* component) const { component->release(); }
};

using Stream = std::unique_ptr<Orbel::Wrapton::IWrapton, Releaser>;
using File = std::unique_ptr<Orbel::Wrapton::IFilePackage, Releaser>;

/// A component from its registered factory; never null.
Stream MakeStream(const std::string& type);
File MakeFile(const std::string& type);

/// What the frame's record says, by name; no date.
Orbel::Wrapton::FrameAttributes AttributesOf(const Frame& frame);

/// Calls @p input with the frame's bytes in an allocation of exactly their size, its length and its
/// attributes. Fails the test when the call wrote to the bytes.
template <class Input>
bool WithExactBytes(const Frame& frame, Input input)
{
    const std::size_t size = frame.bytes.size();
    const std::unique_ptr<unsigned char[]> exact(new unsigned char[size]);
    std::copy(frame.bytes.begin(), frame.bytes.end(), exact.get());
    const bool result = input(exact.get(), static_cast<unsigned int>(size), AttributesOf(frame));
    EXPECT_TRUE(std::equal(frame.bytes.begin(), frame.bytes.end(), exact.get()))
        << "the caller's frame was written to";
    return result;
}

/// inputFrame() of a stream or file component.
template <class Component>
bool Input(Component& component, const Frame& frame)
{
    return WithExactBytes(frame,
                          [&](const void* data, unsigned int len, const auto& attrs)
                          { return component.inputFrame(data, len, attrs); });
}

bool InputEx(Orbel::Wrapton::IWrapton& stream,
             const Frame& frame,
             Orbel::Wrapton::PacketBuffer& packet);

/// The bytes that getPacket() gives; a test failure when it gives none.
Bytes Packet(Orbel::Wrapton::IWrapton& stream);
Bytes BytesOf(const Orbel::Wrapton::IWraptonData& data);
Bytes BytesOf(const Orbel::Wrapton::PacketBuffer& packet);

}  // namespace Support

#endif  // WRAPTON_TESTS_SUPPORT_COMPONENTS_H

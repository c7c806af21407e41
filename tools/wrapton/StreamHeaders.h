#pragma once

#include <optional>
#include <span>
#include <vector>

#include "Codecs.h"

namespace Orbel::Wrapton::Command
{

/// The headers that a decoder needs ahead of a key picture: H.264 parameter sets, MPEG-4 object
/// layers. Encoders may send them once only; a file that begins later has to get them again.
class StreamHeaders
{
public:
    explicit StreamHeaders(std::optional<Codec> codec) : m_codec(codec) {}

    /// Remembers what headers the picture carries.
    void Note(std::span<const unsigned char> picture);

    /// Puts the newest headers ahead of a picture that carries none.
    void Complete(std::vector<unsigned char>& picture) const;

private:
    /// The bytes of the picture that are headers.
    [[nodiscard]] std::vector<unsigned char> HeadersIn(
        std::span<const unsigned char> picture) const;

    std::optional<Codec> m_codec;
    std::vector<unsigned char> m_headers;
};

}  // namespace Orbel::Wrapton::Command

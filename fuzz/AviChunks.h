#ifndef WRAPTON_FUZZ_AVICHUNKS_H
#define WRAPTON_FUZZ_AVICHUNKS_H

#include <span>
#include <string>
#include <vector>

#include "StoredFrames.h"

namespace Fuzz
{

/// Frames that have to come back as chunks of an AVI file.
class AviChunks final : public StoredFrames
{
public:
    void Add(const Orbel::Wrapton::SGFrameInfo& record,
             std::span<const unsigned char> bytes) override;
    void Compare(std::span<const unsigned char> file) const override;

private:
    struct Stored
    {
        std::string code;
        std::vector<unsigned char> bytes;
    };

    std::vector<Stored> m_stored;
};

}  // namespace Fuzz

#endif  // WRAPTON_FUZZ_AVICHUNKS_H

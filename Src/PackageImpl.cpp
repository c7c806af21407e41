#include "PackageImpl.h"

#include "wavpacket/WavPacket.h"

namespace Orbel::Wrapton
{

std::unique_ptr<CPackage> CreatePackage(unsigned int nType, const SGCreateParam* pCreateParam)
{
    switch (nType)
    {
        case SG_STREAM_TYPE_WAV:
            return std::make_unique<CWavPacket>(nType, pCreateParam);
        default:
            return nullptr;
    }
}

}  // namespace Orbel::Wrapton

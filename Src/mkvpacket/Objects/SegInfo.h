#ifndef WRAPTON_MKVPACKET_OBJECTS_SEGINFO_H
#define WRAPTON_MKVPACKET_OBJECTS_SEGINFO_H

#include "mkvpacket/Objects/Basicatom.h"

namespace Orbel::Wrapton
{

/// Info, RFC 9559 5.1.2, without a Duration.
class CSegInfo final : public CBasicatom
{
public:
    uint32_t Write(CMsbCursor& w) override;
    uint32_t Size() override;
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_MKVPACKET_OBJECTS_SEGINFO_H

#ifndef WRAPTON_IMPLEMENT_WRAPTONIMPL_H
#define WRAPTON_IMPLEMENT_WRAPTONIMPL_H

#include <cstdint>
#include <memory>
#include <string>

#include "IWrapton.h"
#include "Package.h"
#include "implement/FrameRecord.h"
#include "implement/StreamDataImpl.h"

namespace Orbel::Wrapton
{

class CRtpPacket;

/// The stream component: one packager, and the block that it gave last.
class CWrapton final : public IWrapton
{
public:
    /// Throws std::bad_alloc.
    explicit CWrapton(const std::string& type);
    CWrapton(const CWrapton&) = delete;
    CWrapton& operator=(const CWrapton&) = delete;
    ~CWrapton() override;

    [[nodiscard]] VersionInfo getVersion() const override;

    bool inputFrame(const void* data, unsigned int len, const FrameAttributes& attrs) override;
    bool getPacket(SharedPtr<IWraptonData>& out) override;
    bool inputFrameEx(const void* data,
                      unsigned int len,
                      const FrameAttributes& attrs,
                      PacketBuffer& packet) override;
    bool setParam(const char* name, long value) override;
    bool getParam(const char* name, long& value) override;
    bool setExtInfo(const char* name, const void* data, unsigned int len) override;
    bool getExtInfo(const char* name, SharedPtr<IWraptonData>& out) override;

    /// Makes components; registered as kWraptonClsid.
    class CFactory final : public IComponentFactory
    {
    public:
        CFactory() noexcept;
        CFactory(const CFactory&) = delete;
        CFactory& operator=(const CFactory&) = delete;
        ~CFactory() override;

        IWrapton* create(const std::string& type) override;
    };

private:
    static void DataCallBack(SGOutputData* block, void* user);
    /// The packager when it is that of RTP, otherwise null.
    [[nodiscard]] CRtpPacket* Rtp() const noexcept;
    /// Takes the waiting block's bytes over, out of memory that will be written to.
    void KeepBlock() noexcept;

    std::unique_ptr<CPackage> m_handle;  // null: an unknown type
    CWraptonDataImpl m_packet;           // the last block
    int32_t m_datacount = 0;             // 1: it is waiting
    PacketBuffer m_kept;                 // its bytes, once they were taken over
    bool m_bIntoPacket = false;          // blocks stand in the caller's packet
};

}  // namespace Orbel::Wrapton

#endif  // WRAPTON_IMPLEMENT_WRAPTONIMPL_H

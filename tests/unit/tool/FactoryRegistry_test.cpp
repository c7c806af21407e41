#include <atomic>
#include <memory>
#include <thread>

#include <gtest/gtest.h>

#include "Platform.h"

namespace Orbel::Wrapton
{
namespace
{

class Thing final : public IComponentBase
{
public:
    [[nodiscard]] VersionInfo getVersion() const override { return {}; }
};

class Factory final : public IComponentFactory
{
public:
    explicit Factory(const char* clsid) : IComponentFactory(clsid) {}

    IComponentBase* create(const std::string& type) override
    {
        return type == "thing" ? new Thing : nullptr;
    }

    void TakeOut() { remove(*this); }
};

TEST(FactoryRegistry, FindsAFactoryFromItsConstructionToItsEnd)
{
    EXPECT_EQ(IComponentFactory::find("Alpha"), nullptr);
    {
        Factory alpha("Alpha");
        Factory beta("Beta");
        EXPECT_EQ(IComponentFactory::find("Alpha"), &alpha);
        EXPECT_EQ(IComponentFactory::find("Beta"), &beta);
        EXPECT_STREQ(alpha.clsid(), "Alpha");
        EXPECT_EQ(IComponentFactory::find("alpha"), nullptr);
        EXPECT_EQ(IComponentFactory::find("Alph"), nullptr);
        EXPECT_EQ(IComponentFactory::find("Alpha "), nullptr);
        EXPECT_EQ(IComponentFactory::find(""), nullptr);
        EXPECT_EQ(IComponentFactory::find(nullptr), nullptr);
    }
    EXPECT_EQ(IComponentFactory::find("Alpha"), nullptr);
    EXPECT_EQ(IComponentFactory::find("Beta"), nullptr);
}

TEST(FactoryRegistry, ComparesIdsAsText)
{
    const Factory factory("Alpha");
    const std::string copy = "Alpha";
    EXPECT_EQ(IComponentFactory::find(copy.c_str()), &factory);
}

TEST(FactoryRegistry, GivesTheLatestOfSeveralAndTheFormerAfterIt)
{
    const Factory first("Same");
    auto second = std::make_unique<Factory>("Same");
    EXPECT_EQ(IComponentFactory::find("Same"), second.get());
    second.reset();
    EXPECT_EQ(IComponentFactory::find("Same"), &first);
}

TEST(FactoryRegistry, TakesFactoriesOutInAnyOrderAndTwice)
{
    auto first = std::make_unique<Factory>("One");
    auto second = std::make_unique<Factory>("Two");
    auto third = std::make_unique<Factory>("Three");
    second->TakeOut();
    second->TakeOut();
    EXPECT_EQ(IComponentFactory::find("Two"), nullptr);
    EXPECT_EQ(IComponentFactory::find("One"), first.get());
    second.reset();
    first.reset();
    EXPECT_EQ(IComponentFactory::find("Three"), third.get());
}

TEST(FactoryRegistry, TakesAFactoryWithoutAnId)
{
    const Factory nameless(nullptr);
    const Factory named("Named");
    EXPECT_EQ(nameless.clsid(), nullptr);
    EXPECT_EQ(IComponentFactory::find("Named"), &named);
    EXPECT_EQ(IComponentFactory::find("Other"), nullptr);
}

TEST(FactoryRegistry, IsSafeWhileThreadsRegisterAndLookUp)
{
    const Factory lasting("Lasting");
    std::atomic<bool> go = false;
    std::atomic<int> wrong = 0;
    const auto work = [&](const char* own)
    {
        while (!go)
        {
        }
        for (int i = 0; i < 2000; ++i)
        {
            const Factory mine(own);
            if (IComponentFactory::find(own) != &mine) ++wrong;
            if (IComponentFactory::find("Lasting") != &lasting) ++wrong;
        }
    };
    std::thread one(work, "First thread");
    std::thread two(work, "Second thread");
    go = true;
    one.join();
    two.join();
    EXPECT_EQ(wrong, 0);
    EXPECT_EQ(IComponentFactory::find("First thread"), nullptr);
}

TEST(Component, LivesAsLongAsItsReferences)
{
    class Counted final : public IComponentBase
    {
    public:
        explicit Counted(bool& gone) : m_gone(gone) {}
        Counted(const Counted&) = delete;
        Counted& operator=(const Counted&) = delete;
        ~Counted() override { m_gone = true; }
        [[nodiscard]] VersionInfo getVersion() const override { return {}; }

    private:
        bool& m_gone;
    };
    bool gone = false;
    IComponentBase* const component = new Counted(gone);
    EXPECT_EQ(component->addRef(), 2);
    EXPECT_EQ(component->addRef(), 3);
    EXPECT_EQ(component->release(), 2);
    EXPECT_EQ(component->release(), 1);
    EXPECT_FALSE(gone);
    EXPECT_EQ(component->release(), 0);
    EXPECT_TRUE(gone);

    gone = false;
    IComponentBase* const other = new Counted(gone);
    other->addRef();
    other->destroy();
    EXPECT_TRUE(gone);
}

TEST(LastError, IsEachThreadsOwn)
{
    setLastError(7);
    uint32_t before = 1;
    uint32_t after = 0;
    std::thread other(
        [&]
        {
            before = getLastError();
            setLastError(0x10030010);
            after = getLastError();
        });
    other.join();
    EXPECT_EQ(before, 0u);
    EXPECT_EQ(after, 0x10030010u);
    EXPECT_EQ(getLastError(), 7u);
    setLastError(0);
    EXPECT_EQ(getLastError(), 0u);
}

}  // namespace
}  // namespace Orbel::Wrapton

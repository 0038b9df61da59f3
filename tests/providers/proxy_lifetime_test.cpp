#include <algorithm>
#include <random>

#include "support/test_provider.h"
#include "support/values_test.h"

namespace zephmetadata {
namespace {

using support::Callback;
using support::TestProvider;

class ProxyLifetimes : public support::TreeTest {
protected:
    sp<TestProvider> Source() {
        Load("<dc:source>a</dc:source>");
        return std::make_shared<TestProvider>(Tree());
    }
};

TEST_F(ProxyLifetimes, AProxyThatIsGoneIsNotCalled) {
    const auto source = Source();
    auto aggregate = std::make_shared<AggregateProvider>(std::vector<sp<MetaDataProvider>>{source});
    int calls = 0;
    aggregate->NotifyWhenMetaDataChanged(Callback([&](XMPMetaHandle) { ++calls; }));
    source->MetaDataChanged();
    aggregate.reset();
    source->MetaDataChanged();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(source.use_count(), 1);
}

TEST_F(ProxyLifetimes, AProxyMayGoWhileItTellsOfAChange) {
    const auto source = Source();
    const auto other = Source();
    sp<AggregateProvider> aggregate =
        std::make_shared<AggregateProvider>(std::vector<sp<MetaDataProvider>>{source, other});
    sp<AggregateProvider> outer = std::make_shared<AggregateProvider>(std::vector<sp<MetaDataProvider>>{aggregate});
    int calls = 0;
    aggregate->NotifyWhenMetaDataChanged(Callback([&](XMPMetaHandle) {
        ++calls;
        outer.reset();
        aggregate.reset();
    }));
    source->MetaDataChanged();
    EXPECT_EQ(calls, 1);
    EXPECT_EQ(source.use_count() + other.use_count(), 2);
}

TEST_F(ProxyLifetimes, CallbacksMayChangeTheProvidersDuringAPass) {
    const auto source = Source();
    const auto aggregate = std::make_shared<AggregateProvider>(std::vector<sp<MetaDataProvider>>{source});
    int calls = 0;
    const auto callback = Callback([&](XMPMetaHandle) {
        if (++calls == 1) {
            aggregate->AddProvider(Source(), true);
        } else if (calls == 2) {
            aggregate->ResetProviders();
        }
    });
    aggregate->NotifyWhenMetaDataChanged(callback);
    source->MetaDataChanged();
    EXPECT_EQ(calls, 3);
    EXPECT_EQ(*MetaDataReadAccess(aggregate), nullptr);
}

TEST_F(ProxyLifetimes, AThrowingCallbackReachesWhoMadeTheChangeAndLeavesTheProxyWhole) {
    const auto source = Source();
    const auto aggregate = std::make_shared<AggregateProvider>(std::vector<sp<MetaDataProvider>>{source, Source()});
    const auto callback = Callback([](XMPMetaHandle) { throw std::runtime_error("host"); });
    aggregate->NotifyWhenMetaDataChanged(callback);
    EXPECT_THROW(source->ResetToEmptyMetaData(true), std::runtime_error);
    *callback = nullptr;
    MetaDataUpdateAccess access(aggregate);
    EXPECT_TRUE(SetValue(*access, At("dc:source"), "n"));
}

TEST_F(ProxyLifetimes, AProviderThatWritesMayReplaceItsTreeAndThrow) {
    const auto first = Source();
    const auto second = Source();
    const auto aggregate = std::make_shared<AggregateProvider>(std::vector<sp<MetaDataProvider>>{first, second});
    first->mDuringWrite = [&] {
        second->ResetToEmptyMetaData(true);
        aggregate->AddProvider(Source(), true);
        throw std::runtime_error("disk");
    };
    {
        MetaDataUpdateAccess access(aggregate);
        SetValue(*access, At("dc:source"), "n");
        access.AddChange(At("dc:source"));
    }
    std::string text;
    EXPECT_TRUE(GetValue(*MetaDataReadAccess(second), At("dc:source"), text));
    EXPECT_EQ(text, "n") << "a failing source keeps the edit from no other";
}

TEST_F(ProxyLifetimes, AProxyCannotHoldItself) {
    const auto inner = std::make_shared<AggregateProvider>();
    const auto outer = std::make_shared<AggregateProvider>();
    outer->AddProvider(inner, true);
    inner->AddProvider(outer, true);
    outer->AddProvider(outer, true);
    const auto source = Source();
    inner->AddProvider(source, true);
    source->MetaDataChanged();
    inner->ResetProviders();
    outer->ResetProviders();
    EXPECT_EQ(inner.use_count() + outer.use_count(), 2);

    const auto disjoint = std::make_shared<DisjointSchemaProxyProvider>();
    const auto around = std::make_shared<AggregateProvider>(std::vector<sp<MetaDataProvider>>{disjoint});
    disjoint->RegisterBaseProvider(around);
    disjoint->RegisterProvider(NamespaceDefinition(At("dc:source").mNamespace), disjoint);
    EXPECT_TRUE(around->QueryPathStatus(At("dc:source"), kPathWritable)) << "as without providers";
    EXPECT_EQ(around.use_count(), 1);
}

TEST_F(ProxyLifetimes, AProviderThatThrowsWhenAskedWritesNothingTwice) {
    class Throwing : public TestProvider {
    public:
        using TestProvider::TestProvider;
        bool QueryPathStatus(const Path& path, PathStatus status) const override {
            return mThrows ? throw std::runtime_error("host") : TestProvider::QueryPathStatus(path, status);
        }
        bool mThrows = true;
        bool mHidesTree = false;

    private:
        XMPMetaHandle MetaDataAccess() const override {
            return mHidesTree ? throw std::runtime_error("host") : TestProvider::MetaDataAccess();
        }
    };
    const auto first = Source();
    Load("");
    const auto second = std::make_shared<Throwing>(Tree());
    const auto aggregate = std::make_shared<AggregateProvider>(std::vector<sp<MetaDataProvider>>{first, second});
    for (const char* const item : {"n", "m"}) {
        MetaDataUpdateAccess access(aggregate);
        const int count = CountArrayItems(*access, At("dc:creator"));
        SetValue(*access, CreatePathFromArrayItem(At("dc:creator"), count + 1), item);
        access.AddChange(At("dc:creator"));
        if (*item == 'm') {
            second->mThrows = false;
        }
    }
    for (const sp<MetaDataProvider>& source : std::vector<sp<MetaDataProvider>>{first, second}) {
        EXPECT_EQ(CountArrayItems(*MetaDataReadAccess(source), At("dc:creator")), 2);
    }
    MetaDataUpdateAccess throughAggregate(aggregate);
    MetaDataUpdateAccess direct(second);
    second->mHidesTree = true;
    for (MetaDataUpdateAccess* const access : {&throughAggregate, &direct}) {
        access->AddChange(At("dc:creator"));
        EXPECT_EQ(access->Commit().mFailures.at(0).mStatus, kFileStatus_NotWritten);
    }
}

/// Sources, proxies over any of them and accesses to all, dropped in a random order with edits and changes between.
TEST_F(ProxyLifetimes, AnyOrderOfDestructionIsGood) {
    constexpr unsigned kSeed = 20261123;
    constexpr int kRounds = 300;
    std::mt19937 random(kSeed);
    for (int round = 0; round < kRounds; ++round) {
        std::vector<sp<MetaDataProvider>> providers;
        for (int i = 0; i < 4; ++i) {
            providers.push_back(Source());
        }
        for (int i = 0; i < 4; ++i) {
            const auto some = [&] { return providers[random() % providers.size()]; };
            if (random() % 3 == 0) {
                const auto disjoint = std::make_shared<DisjointSchemaProxyProvider>();
                disjoint->RegisterBaseProvider(some());
                disjoint->RegisterProvider(NamespaceDefinition(At("dc:source").mNamespace), some());
                providers.push_back(disjoint);
            } else {
                providers.push_back(
                    std::make_shared<AggregateProvider>(std::vector<sp<MetaDataProvider>>{some(), some(), some()}));
            }
            providers.back()->NotifyWhenMetaDataChanged(Callback([&](XMPMetaHandle) {
                if (random() % 4 == 0 && !providers.empty()) {
                    std::erase(providers, providers[random() % providers.size()]);
                }
            }));
        }
        while (!providers.empty()) {
            const sp<MetaDataProvider> one = providers[random() % providers.size()];
            if (const auto source = std::dynamic_pointer_cast<TestProvider>(one); source && random() % 2 == 0) {
                source->ResetToEmptyMetaData(true);
            }
            MetaDataUpdateAccess access(one);
            SetValue(*access, At("dc:source"), std::to_string(random() % 3));
            access.AddChange(At("dc:source"));
            std::erase(providers, one);
        }
    }
    EXPECT_FALSE(HasErrors());
}

}  // namespace
}  // namespace zephmetadata

#include <fstream>

#include "host.h"

using namespace zephmetadata;

namespace host {

namespace {

/// A host's provider over a packet that it keeps in memory.
class MemoryProvider : public BufferProviderImpl {
public:
    explicit MemoryProvider(const std::string& packet) : BufferProviderImpl(Bytes(packet), packet.size()) {}

    void Load(const std::string& packet) { ResetBuffer(Bytes(packet), packet.size()); }
    const std::string& Stored() const { return mStored; }
    int Changes() const { return mChanges; }

private:
    static const unsigned char* Bytes(const std::string& text) {
        return reinterpret_cast<const unsigned char*>(text.data());
    }
    void WriteBuffer(const std::vector<Path>& changes, const char* data, std::size_t size) override {
        mChanges += static_cast<int>(changes.size());
        mStored.assign(data, size);
    }

    std::string mStored;
    int mChanges = 0;
};

/// A host's provider that counts what it is asked to write.
class CountingProvider : public TypicalProviderImpl {
public:
    explicit CountingProvider(XMPMetaHandle tree) : TypicalProviderImpl(tree) {}

    using TypicalProviderImpl::MetaDataChanged;
    using TypicalProviderImpl::ResetMetaData;
    using TypicalProviderImpl::ResetToEmptyMetaData;

    void WriteNow(const Path& path) { GuardedWriteChanges({path}); }
    int mWrites = 0;
    bool mSawFlag = false;

private:
    void WriteChanges(const std::vector<Path>& /*changes*/) override {
        ++mWrites;
        mSawFlag = IsInWrite();
    }
};

/// A host's provider from the ground up.
class BareProvider : public MetaDataProvider {
public:
    std::vector<std::vector<Path>> mWritten;

private:
    XMPMetaHandle MetaDataAccess() const override { return mTree.get(); }
    void WriteChanges(const std::vector<Path>& changes) override { mWritten.push_back(changes); }
    void DoWriteChanges(const std::vector<Path>& changes) override { MetaDataProvider::DoWriteChanges(changes); }

    XMPMetaPtr mTree = CreateXMPMeta();
};

/// A host's own way to present other providers: the tree of the first that has one.
class FirstOf : public ProxyProviderImpl {
public:
    FirstOf() = default;
    explicit FirstOf(const std::vector<sp<MetaDataProvider>>& providers)
        : ProxyProviderImpl(providers), mProviders(providers) {
        OnProxyMetaDataChange(nullptr);
    }

    void Add(const sp<MetaDataProvider>& provider) {
        mProviders.push_back(provider);
        AddProxyProvider(provider);
        OnProxyMetaDataChange(nullptr);
    }
    void Replace(const std::vector<sp<MetaDataProvider>>& providers) {
        mProviders = providers;
        ResetProxyProviders(providers);
    }
    void Clear() { ResetProxyProviders(); }
    int mRebuilds = 0;

private:
    void OnProxyMetaDataChange(XMPMetaHandle /*changed*/) override {
        ++mRebuilds;
        for (const auto& provider : mProviders) {
            if (const XMPMetaPtr tree = *MetaDataReadAccess(provider)) {
                GetAllDynamicSchemas(tree.get());
                ResetMetaData(tree.get(), true);
                return;
            }
        }
    }
    void DoWriteChanges(const std::vector<Path>& changes) override { ProxyProviderImpl::DoWriteChanges(changes); }
    void WriteChanges(const std::vector<Path>& changes) override {
        MetaDataUpdateAccess access(mProviders.front());
        for (const Path& path : changes) {
            access.AddChange(path);
        }
    }

    std::vector<sp<MetaDataProvider>> mProviders;
};

/// What only a subclass of the library's own proxies can call.
class TellingAggregate : public AggregateProvider {
public:
    void Tell() { AggregateProvider::OnProxyMetaDataChange(nullptr); }
};
class TellingDisjoint : public DisjointSchemaProxyProvider {
public:
    void Tell() { DisjointSchemaProxyProvider::OnProxyMetaDataChange(nullptr); }
};

Path At(const char* expression) {
    return PathForExpression(expression);
}

template <typename Provider>
void Edit(const sp<Provider>& provider, const char* expression, const char* value) {
    MetaDataUpdateAccess access(provider);
    if (SetValue(*access, At(expression), value)) {
        access.AddChange(At(expression));
    }
}

std::string Read(const sp<MetaDataProvider>& provider, const char* expression) {
    std::string text;
    return GetValue(*MetaDataReadAccess(provider), At(expression), text) ? text : "<none>";
}

int CheckMemoryProvider() {
    const XMPMetaPtr tree = CreateXMPMeta();
    SetValue(tree.get(), At("xmp:Label"), "Red");
    const auto provider = std::make_shared<MemoryProvider>(SerializeXMPMeta(tree.get()));
    Edit(provider, "xmp:Label", "Red");
    CHECK(provider->Changes() == 0);
    Edit(provider, "xmp:Label", "Blue");
    CHECK(provider->Changes() == 1);
    CHECK(Read(std::make_shared<MemoryProvider>(provider->Stored()), "xmp:Label") == "Blue");

    const std::string before = provider->Stored();
    SetMinimalFloatValue({At("xmp:Rating"), provider}, 0.1);
    CHECK(provider->Stored() != before);
    double rating = 0;
    CHECK(GetValue(*MetaDataReadAccess(provider), At("xmp:Rating"), rating) && rating == 0.1);
    provider->Load("no packet");
    CHECK(*MetaDataReadAccess(provider) == nullptr);
    return 0;
}

int CheckNotification() {
    const auto provider = std::make_shared<CountingProvider>(nullptr);
    std::vector<XMPMetaHandle> told;
    const auto listener =
        std::make_shared<std::function<void(XMPMetaHandle)>>([&](XMPMetaHandle t) { told.push_back(t); });
    provider->NotifyWhenMetaDataChanged(listener);
    const XMPMetaPtr tree = CreateXMPMeta();
    provider->ResetMetaData(tree.get(), true);
    provider->ResetToEmptyMetaData(false);
    CHECK(told == std::vector<XMPMetaHandle>{tree.get()});
    CHECK(*MetaDataReadAccess(provider) != nullptr && *MetaDataReadAccess(provider) != tree.get());
    provider->MetaDataChanged();
    CHECK(told.size() == 2);
    provider->NotifyWhenMetaDataWritten(listener);
    const Path title = PathForExpression("dc:title");
    const std::vector<ValueEdit> edits = {{kEditKind_Set, title, "de", "Hafen", {}, {}},
                                          {kEditKind_Set, title, {}, "Port", {}, {}}};
    CHECK(RehearseEdits(tree.get(), edits).IsChanged() && !HasValue(tree.get(), title));
    CHECK(ApplyEdits(provider, edits).IsChanged() && told.size() == 3);
    CHECK(!ApplyEdits(provider, edits).IsChanged() && told.size() == 3);
    CHECK(ApplyEdits(provider, {{kEditKind_Add, title, {}, "x", {}, {}}}).IsRefused());
    CHECK(!WhyRefused({kEditKind_Set, title, {}, {}, {}, {}}).empty());
    provider->RemoveMetaDataWrittenNotification(listener);
    provider->RemoveMetaDataChangedNotification(listener);
    provider->MetaDataChanged();
    CHECK(told.size() == 3);

    provider->WriteNow(At("xmp:Label"));
    CHECK(provider->mWrites == 2 && provider->mSawFlag);
    return 0;
}

int CheckBareProvider() {
    const auto provider = std::make_shared<BareProvider>();
    {
        MetaDataUpdateAccess access(provider);
        CHECK(!access.HasChanges());
        access.AddChange(At("xmp:Label"));
        CHECK(access.HasChanges());
    }
    CHECK(provider->mWritten == std::vector<std::vector<Path>>{{At("xmp:Label")}});
    CHECK(!provider->WritesOwnChangeList() && Read(provider, "xmpMM:History[1]/stEvt:action") == "saved");
    CHECK(Read(provider, "xmpMM:History[1]/stEvt:softwareAgent") == "Consumer 1.0");
    CHECK(provider->DebugSerializedXMP().empty() && provider->DebugDescription(true, 0).empty());
    CHECK(provider->QueryPathStatus(At("xmp:Label"), PathStatus::kPathReadable));

    std::vector<sp<PropertyDefinition>> properties;
    provider->GetAllPathsForDynamicSchema("urn:host:dynamic:", properties);
    CHECK(properties.empty());
    const auto schema = std::make_shared<SchemaDefinition>();
    schema->mNamespace = "urn:host:dynamic:";
    schema->mPrefix = "hostdyn";
    schema->mDynamic = true;
    CHECK(!provider->DoesDynamicNamespaceExist(schema->mNamespace));
    provider->AddDynamicSchemaDefinition(schema);
    CHECK(provider->DoesDynamicNamespaceExist(schema->mNamespace));
    CHECK(provider->DynamicSchemaDefinitions().front() == schema && NamespaceDefinition(schema->mNamespace) == schema);
    return 0;
}

sp<CountingProvider> Labelled(const char* label) {
    const XMPMetaPtr tree = CreateXMPMeta();
    SetValue(tree.get(), At("xmp:Label"), label);
    return std::make_shared<CountingProvider>(tree.get());
}

int CheckAggregate() {
    const auto red = Labelled("Red");
    const auto blue = Labelled("Blue");
    const auto aggregate = std::make_shared<TellingAggregate>();
    aggregate->AddProvider(red, false);
    aggregate->Tell();
    CHECK(Read(aggregate, "xmp:Label") == "Red");
    const std::vector<sp<MetaDataProvider>> both = {red, blue};
    aggregate->ResetProviders(both);
    CHECK(IsMixed(*MetaDataReadAccess(aggregate), At("xmp:Label")));
    CHECK(aggregate->AggregateProvider::QueryPathStatus(At("xmp:Label"), kPathWritable));
    Edit(aggregate, "xmp:Label", "Green");
    CHECK(red->mWrites == 1 && blue->mWrites == 1 && Read(blue, "xmp:Label") == "Green");
    CHECK(OriginOf(*MetaDataReadAccess(aggregate), At("xmp:Label")) == kValueOrigin_XMP);
    CHECK(IsInstanceData(At("xmpMM:DocumentID")) && !IsInstanceData(At("xmp:Label")));

    std::vector<sp<PropertyDefinition>> properties;
    aggregate->AggregateProvider::GetAllPathsForDynamicSchema(MakeDynamicSchemaNamespace("none"), properties);
    CHECK(properties.empty());
    aggregate->ResetProviders();
    CHECK(*MetaDataReadAccess(aggregate) == nullptr);
    CHECK(Read(std::make_shared<AggregateProvider>(both), "xmp:Label") == "Green");
    return 0;
}

int CheckDisjoint() {
    const auto base = Labelled("Red");
    const auto titles = Labelled("Blue");
    const auto provider = std::make_shared<TellingDisjoint>();
    provider->RegisterBaseProvider(base);
    provider->RegisterProvider(NamespaceDefinition(At("dc:title").mNamespace), titles);
    Edit(provider, "dc:title", "Tide");
    CHECK(titles->mWrites == 1 && base->mWrites == 0 && Read(provider, "xmp:Label") == "Red");
    CHECK(provider->DisjointSchemaProxyProvider::QueryPathStatus(At("dc:title"), kPathReadable));
    provider->Tell();
    CHECK(Read(provider, "dc:title") == "Tide");
    provider->ClearProviders();
    CHECK(*MetaDataReadAccess(provider) == nullptr && Read(base, "dc:title") == "<none>");
    return 0;
}

int CheckHostProxy() {
    const auto red = Labelled("Red");
    const auto first = std::make_shared<FirstOf>();
    first->Add(red);
    red->MetaDataChanged();
    CHECK(first->mRebuilds == 2 && Read(first, "xmp:Label") == "Red");
    Edit(first, "xmp:Label", "Green");
    CHECK(red->mWrites == 1 && !first->ProxyProviderImpl::WritesOwnChangeList());
    first->Replace({Labelled("Blue")});
    first->Clear();
    red->MetaDataChanged();
    CHECK(first->mRebuilds == 2);
    CHECK(Read(std::make_shared<FirstOf>(std::vector<sp<MetaDataProvider>>{red}), "xmp:Label") == "Green");
    return 0;
}

int CheckPhoto(const std::string& photo) {
    const UTF16String path = zephcore::PathFromNative(photo);
    const auto provider = std::make_shared<FileProvider>(path);
    CHECK(provider->LastRead().mStatus == FileStatus::kFileStatus_Success && provider->FilePath() == path);
    CHECK(!provider->StartMetaData());
    Edit(provider, "xmp:Label", "Blue");
    CHECK(provider->LastWrite().mStatus == FileStatus::kFileStatus_Success);
    provider->ReloadFile();
    CHECK(Read(provider, "xmp:Label") == "Blue");
    const auto media = std::make_shared<MediaProvider>(path, SidecarPolicy::kSidecarPolicy_Never);
    media->ReloadFile();
    CHECK(media->FilePath() == path && Read(media, "xmp:Label") == "Blue");
    provider->ResetFilePath(path + u".none");
    CHECK(provider->LastRead().mStatus == FileStatus::kFileStatus_NoFile && *MetaDataReadAccess(provider) == nullptr);
    return 0;
}

/// A photo with four gigabytes of nothing behind it, which counts what is read of it.
class CountingSource : public ByteSource {
public:
    explicit CountingSource(std::string photo) : mPhoto(std::move(photo)) {}

    std::uint64_t Size() const override { return mPhoto.size() + (std::uint64_t{1} << 32U); }
    bool ReadAt(std::uint64_t offset, void* into, std::size_t size) const override {
        for (std::size_t i = 0; i < size; ++i) {
            static_cast<char*>(into)[i] = offset + i < mPhoto.size() ? mPhoto[offset + i] : '\0';
        }
        mRead += size;
        return true;
    }

    mutable std::size_t mRead = 0;

private:
    std::string mPhoto;
};

int CheckSource(const std::string& photo) {
    std::ifstream file(photo, std::ios::binary);
    const std::string bytes{std::istreambuf_iterator<char>(file), std::istreambuf_iterator<char>()};
    const auto source = std::make_shared<CountingSource>(bytes);
    const auto provider = std::make_shared<SourceProvider>(source);
    CHECK(provider->LastRead().mStatus == FileStatus::kFileStatus_Success && !provider->StartMetaData());
    CHECK(Read(provider, "xmp:Label") == "Blue" && source->mRead < std::size_t{1} << 20U);
    CHECK(!provider->SourceProvider::QueryPathStatus(At("xmp:Label"), PathStatus::kPathWritable));
    ValueEdit edit;
    edit.mPath = At("xmp:Label");
    edit.mValue = "Red";
    CHECK(RehearseEdits(*MetaDataReadAccess(provider), {edit}).IsChanged());
    CHECK(ApplyEdits(provider, {edit}).mStatus == FileStatus::kFileStatus_ReadOnly);
    CHECK(Read(provider, "xmp:Label") == "Red" && provider->LastWrite().mStatus == FileStatus::kFileStatus_ReadOnly);
    CHECK(SourceProvider(nullptr).LastRead().mStatus == FileStatus::kFileStatus_NoFile);

    const auto writable = std::make_shared<SourceProvider>(std::make_shared<BufferSource>(bytes));
    const auto target = std::make_shared<BufferTarget>();
    writable->SetTarget(target);
    CHECK(writable->QueryPathStatus(At("xmp:Label"), PathStatus::kPathWritable));
    CHECK(ApplyEdits(writable, {edit}).mStatus == FileStatus::kFileStatus_Success && target->Committed() != nullptr);
    CHECK(Read(std::make_shared<SourceProvider>(target->Committed()), "xmp:Label") == "Red");
    return 0;
}

/// A host's provider whose storage is full, and one that writes through it.
class FullProvider : public TypicalProviderImpl {
public:
    explicit FullProvider(sp<MetaDataProvider> inner = nullptr)
        : TypicalProviderImpl(CreateXMPMeta().get()), mInner(std::move(inner)) {}

private:
    void WriteChanges(const std::vector<Path>& changes) override {
        if (!mInner) {
            ReportWriting(u"/full", {FileStatus::kFileStatus_NotWritten, "no space"});
            return;
        }
        MetaDataUpdateAccess access(mInner);
        access.AddChange(changes.front());
        ReportWriting(access.Commit());
    }

    sp<MetaDataProvider> mInner;
};

int CheckCommit(const std::string& folder) {
    const Path label = At("xmp:Label");
    MetaDataUpdateAccess access(std::make_shared<FullProvider>(std::make_shared<FullProvider>()));
    CHECK(access.Set(label, std::string_view("Blue")).mResult == kEditResult_Changed && access.HasChanges());
    const WriteReport failed = access.Commit();
    CHECK(failed.mHadChanges && !failed.IsWritten() && failed.mFailures.size() == 1);
    CHECK(Describe(failed.mFailures.front()) == "/full: could not be written (no space)");
    CHECK(Describe(FileStatus::kFileStatus_ReadOnly) == "the file is read-only");
    CHECK(!access.HasChanges() && !access.Commit().mHadChanges);

    const std::string name = folder + "/committed.xmp";
    std::ofstream(name) << SerializeXMPMeta(CreateXMPMeta().get());
    const auto sidecar = std::make_shared<SidecarProvider>(zephcore::PathFromNative(name));
    MetaDataUpdateAccess edit(sidecar);
    CHECK(edit.Set(label, u"Blue").mResult == kEditResult_Changed && edit.Commit().IsWritten());
    CHECK(Read(std::make_shared<SidecarProvider>(sidecar->FilePath()), "xmp:Label") == "Blue");
    CHECK(edit.Delete(label).mResult == kEditResult_Changed && edit.Delete(label).mResult == kEditResult_Unchanged);
    ValueEdit keyword;
    keyword.mKind = EditKind::kEditKind_Add;
    keyword.mPath = At("dc:subject");
    keyword.mValue = "sea";
    CHECK(edit.Apply(keyword).mResult == kEditResult_Changed && edit.Commit().IsWritten());
    CHECK(Read(std::make_shared<SidecarProvider>(sidecar->FilePath()), "dc:subject") == "sea");
    return 0;
}

int CheckSidecar(const std::string& folder) {
    const std::string name = folder + "/photo.xmp";
    std::ofstream(name) << SerializeXMPMeta(CreateXMPMeta().get());
    const auto provider = std::make_shared<SidecarProvider>(zephcore::PathFromNative(name));
    CHECK(provider->LastRead().mStatus == FileStatus::kFileStatus_Success);
    Edit(provider, "xmp:Label", "Blue");
    CHECK(provider->LastWrite().mStatus == FileStatus::kFileStatus_Success);
    CHECK(Read(std::make_shared<SidecarProvider>(provider->FilePath()), "xmp:Label") == "Blue");
    return 0;
}

}  // namespace

int CheckProviders(const Arguments& arguments) {
    const Session session;
    return CheckMemoryProvider() | CheckNotification() | CheckBareProvider() | CheckAggregate() | CheckDisjoint() |
           CheckHostProxy() | CheckPhoto(arguments.mPhoto) | CheckSource(arguments.mPhoto) |
           CheckSidecar(arguments.mFolder) | CheckCommit(arguments.mFolder);
}

}  // namespace host

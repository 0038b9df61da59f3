#pragma once

#include <map>
#include <memory>
#include <set>
#include <vector>

#include "zephcore/files.h"
#include "zephmetadata/definitions.h"
#include "zephmetadata/file_status.h"
#include "zephmetadata/media.h"
#include "zephmetadata/paths.h"
#include "zephmetadata/values.h"

/// Providers own an XMP tree, hand it out under scoped access and write changes back.
///
/// The usual edit: make a MetaDataUpdateAccess, Set values through it, and Commit, which tells whether they were written
/// back. Providers live in shared pointers. Threads: one at a time for each provider (docs/threads.md).
/// Without the library initialised none has a tree, which an error record (ErrorReadingXMP) says.
namespace zephmetadata {

struct ValueEdit;

enum PathStatus : std::int32_t { kPathReadable = 0, kPathWritable = 1 };

using MetaDataCallback = sp<std::function<void(XMPMetaHandle)>>;

class ZEPHMETADATA_EXPORT MetaDataProvider {
public:
    MetaDataProvider();
    MetaDataProvider(const MetaDataProvider&) = delete;
    MetaDataProvider& operator=(const MetaDataProvider&) = delete;
    /// Empties every registered function object, so that no other holder calls it either.
    virtual ~MetaDataProvider();

    /// Whether the provider can supply (may write) the path.
    virtual bool QueryPathStatus(const Path& path, PathStatus status) const;
    /// Whether WriteChanges keeps its own record of changes; the tree's document history is then left alone.
    virtual bool WritesOwnChangeList();
    /// The properties found below a dynamic namespace; the base knows none.
    virtual void GetAllPathsForDynamicSchema(const UTF8String& namespaceURI,
                                             std::vector<sp<PropertyDefinition>>& properties);
    virtual std::string DebugSerializedXMP() const;
    virtual std::string DebugDescription(bool verbose, int indent) const;

    /// Has @p callback called with the tree (or null) whenever the provider's tree is replaced. A function object
    /// registered twice is called twice. To be called no more, remove it or empty it.
    void NotifyWhenMetaDataChanged(const MetaDataCallback& callback);
    /// Takes back the first registration of that very function object.
    void RemoveMetaDataChangedNotification(const MetaDataCallback& callback);

    /// Has @p callback called with the tree after every write-back of an update access that has changes, however it
    /// went: the tree has the edits in any case, of which NotifyWhenMetaDataChanged does not tell. Panels that show the
    /// tree register one function object with both. Exceptions that it throws are discarded and end the pass.
    void NotifyWhenMetaDataWritten(const MetaDataCallback& callback);
    void RemoveMetaDataWrittenNotification(const MetaDataCallback& callback);

    /// Keeps a dynamic schema with this provider, the first of each namespace, and registers it when the registry has none.
    void AddDynamicSchemaDefinition(sp<SchemaDefinition> schema);
    bool DoesDynamicNamespaceExist(const UTF8String& namespaceURI);
    PolyRange<sp<SchemaDefinition>> DynamicSchemaDefinitions();

protected:
    /// The current tree or null.
    virtual XMPMetaHandle MetaDataAccess() const = 0;
    /// Stores the tree wherever the provider keeps it.
    virtual void WriteChanges(const std::vector<Path>& changes) = 0;
    /// Records the changes in the tree's document history and calls WriteChanges.
    virtual void DoWriteChanges(const std::vector<Path>& changes);

    /// Runs the callbacks; exceptions they throw pass through. Nothing happens while WriteChanges runs.
    void MetaDataChanged();
    /// Runs WriteChanges with the in-write flag set; the flag is cleared however it ends.
    void GuardedWriteChanges(const std::vector<Path>& changes);
    bool IsInWrite() const;

    /// Says how the writing of this provider's source went, of @p path where it is a file: for WriteChanges to call, the
    /// last call of a write-back holds. An exception that WriteChanges throws is a failure, too.
    void ReportWriting(const UTF16String& path, const FileReport& report);
    /// The same of another provider that this one writes through.
    void ReportWriting(WriteReport written);

private:
    /// DoWriteChanges, then the callbacks.
    WriteReport WriteBack(const std::vector<Path>& changes);
    WriteReport TakeReport();
    void CallWriteCallbacks();

    friend class MetaDataReadAccess;
    friend class MetaDataUpdateAccess;
    struct State;
    std::unique_ptr<State> mState;
};

/// Read access to a provider's tree, which stays valid for the life of the access even if the provider replaces it. It
/// does not keep the provider alive.
class ZEPHMETADATA_EXPORT MetaDataReadAccess {
public:
    explicit MetaDataReadAccess(const sp<MetaDataProvider>& provider);
    MetaDataReadAccess(const MetaDataReadAccess&) = delete;
    MetaDataReadAccess& operator=(const MetaDataReadAccess&) = delete;
    ~MetaDataReadAccess();

    /// The tree, or null.
    XMPMetaHandle operator*() const { return mTree.get(); }

private:
    XMPMetaPtr mTree;
};

/// Access for an edit. What is set through it is recorded as changed and written back by Commit, or else when it ends.
class ZEPHMETADATA_EXPORT MetaDataUpdateAccess : public MetaDataReadAccess {
public:
    explicit MetaDataUpdateAccess(const sp<MetaDataProvider>& provider);
    ~MetaDataUpdateAccess();

    /// Sets a value as TrySetValue does, and records it when it was not there already.
    template <SettableType T>
    EditOutcome Set(const Path& path, const T& value) {
        return Recorded(path, TrySetValue(**this, path, value));
    }
    /// Deletes what is at @p path, and records it when there was something.
    EditOutcome Delete(const Path& path);
    /// Carries out any other edit (edits.h), of a language or of an item for example, and records it when it changed
    /// something.
    EditOutcome Apply(const ValueEdit& edit);

    /// Records what was changed on the tree directly.
    void AddChange(const Path& path);
    /// Whether there are changes that were not written back yet.
    bool HasChanges() const;

    /// Writes the recorded changes back now, and says how that went. What is changed afterwards is the next Commit's; one
    /// without changes writes nothing. A failure leaves the edits in the tree and makes no error record. Throws nothing;
    /// without the memory for a report it says that nothing was written.
    WriteReport Commit() noexcept;

private:
    EditOutcome Recorded(const Path& path, EditOutcome outcome);

    sp<MetaDataProvider> mProvider;
    std::vector<Path> mChanges;
    bool mIsCommitted = false;
};

/// A provider with a tree of its own; base of the concrete ones here and in hosts.
class ZEPHMETADATA_EXPORT TypicalProviderImpl : public MetaDataProvider {
public:
    ~TypicalProviderImpl() override;

protected:
    /// Shares @p tree, which may be null.
    explicit TypicalProviderImpl(XMPMetaHandle tree);

    XMPMetaHandle MetaDataAccess() const override;
    void ResetMetaData(XMPMetaHandle tree, bool notify);
    void ResetToEmptyMetaData(bool notify);

private:
    XMPMetaPtr mTree;
};

/// A provider over a serialised packet in memory. A host derives from it and stores what WriteBuffer hands over.
class ZEPHMETADATA_EXPORT BufferProviderImpl : public TypicalProviderImpl {
public:
    /// Replaces the tree by what the packet holds (null when it is no XMP) and notifies. Packets of 4 GiB and more are
    /// no XMP.
    void ResetBuffer(const unsigned char* data, std::size_t size);

protected:
    BufferProviderImpl(const unsigned char* data, std::size_t size);

    /// Stores the packet; its bytes are valid during the call only. An exception is a failure, which Commit reports. Not
    /// called, but an error record made (ErrorWritingXMP), for a tree that cannot be made a packet.
    virtual void WriteBuffer(const std::vector<Path>& changes, const char* data, std::size_t size) = 0;
    void WriteChanges(const std::vector<Path>& changes) override;
};

/// A provider over the metadata of a media file: its XMP packet, joined with what its native metadata (Exif, IPTC-IIM, the
/// format's own fields) says. It never looks at sidecars.
///
/// An edit changes the packet and the native fields that mirror the changed properties; every other byte stays as it is.
/// Writing never leaves a damaged file behind: the new content is made in a copy, read back, and only then takes the
/// file's place, with owner, mode, extended attributes and links as they were. What could not be read is never written
/// over.
class ZEPHMETADATA_EXPORT FileProvider : public TypicalProviderImpl {
public:
    /// Reads the file; an empty path reads nothing. Without XMP, or when the file cannot be read, the tree is null.
    explicit FileProvider(const UTF16String& path);
    ~FileProvider() override;

    const UTF16String& FilePath() const;
    /// Reads another file; nothing happens when the path is the same.
    void ResetFilePath(const UTF16String& path);
    /// Reads the file again and notifies.
    void ReloadFile();

    /// Gives a file that has no XMP (kFileStatus_NoXMP) an empty tree, so that an update access can fill it. False, and
    /// nothing happens, for any other file and where the format cannot carry XMP.
    bool StartMetaData();

    /// How the last reading went.
    const FileReport& LastRead() const;
    /// How the last write-back went; kFileStatus_Success before the first.
    const FileReport& LastWrite() const;

private:
    void WriteChanges(const std::vector<Path>& changes) override;

    struct FileState;
    std::unique_ptr<FileState> mFile;
};

/// A provider over a media file and its sidecar, as one.
///
/// The sidecar of photo.cr2 is photo.cr2.xmp or photo.xmp, whichever exists; a photo.xmp that says that it belongs to a
/// file of another extension, or that lies beside another file of its name while this file can be written itself, is not
/// taken. What stands in the sidecar wins over what stands in the file. A missing sidecar is made at the first write:
/// photo.xmp for raw pictures, photo.jpg.xmp for others.
class ZEPHMETADATA_EXPORT MediaProvider : public TypicalProviderImpl {
public:
    /// Reads both. Without metadata in either, or when the file cannot be read, the tree is null.
    explicit MediaProvider(const UTF16String& path, SidecarPolicy policy = SidecarPolicy::kSidecarPolicy_Automatic);
    ~MediaProvider() override;

    const UTF16String& FilePath() const;
    /// Where changes go when it is not into the file; empty when they go into the file.
    const UTF16String& SidecarPath() const;
    /// Reads both again and notifies.
    void ReloadFile();
    /// As FileProvider::StartMetaData, also for a file whose changes go to a sidecar.
    bool StartMetaData();

    /// How the last reading went.
    const FileReport& LastRead() const;
    /// How the last write-back went; kFileStatus_Success before the first.
    const FileReport& LastWrite() const;

private:
    void WriteChanges(const std::vector<Path>& changes) override;

    struct MediaState;
    std::unique_ptr<MediaState> mMedia;
};

/// A media file with its sidecar.
ZEPHMETADATA_EXPORT sp<MediaProvider> OpenMedia(const UTF16String& path,
                                                SidecarPolicy policy = SidecarPolicy::kSidecarPolicy_Automatic);

/// A provider over a `.xmp` sidecar: a file that is an XMP packet. Written as FileProvider writes, and stays a sidecar.
class ZEPHMETADATA_EXPORT SidecarProvider : public BufferProviderImpl {
public:
    explicit SidecarProvider(const UTF16String& path);
    ~SidecarProvider() override;

    const UTF16String& FilePath() const;
    const FileReport& LastRead() const;
    const FileReport& LastWrite() const;

private:
    void WriteChanges(const std::vector<Path>& changes) override;
    void WriteBuffer(const std::vector<Path>& changes, const char* data, std::size_t size) override;

    struct FileState;
    std::unique_ptr<FileState> mFile;
};

/// A provider that presents other providers (its inner providers) as one tree and writes changes back through them. It
/// builds its tree anew whenever one of them says that its tree was replaced, and registers the dynamic schemas that it
/// finds in their trees. Inner providers stay alive with it; a proxy may itself be an inner provider of another.
class ZEPHMETADATA_EXPORT ProxyProviderImpl : public TypicalProviderImpl {
public:
    /// Detaches from the inner providers, which call back no more.
    ~ProxyProviderImpl() override;

    /// Whether every inner provider does; true for none.
    bool WritesOwnChangeList() override;

protected:
    ProxyProviderImpl();
    explicit ProxyProviderImpl(const PolyRange<sp<MetaDataProvider>>& providers);

    /// Listens to @p provider from now on; no rebuild happens. False, and nothing happens, for a null pointer, for this
    /// provider and for a proxy that has this provider among its own.
    bool AddProxyProvider(const sp<MetaDataProvider>& provider);
    void ResetProxyProviders();
    void ResetProxyProviders(const PolyRange<sp<MetaDataProvider>>& providers);

    /// Calls WriteChanges. Document history is recorded by each inner provider as it is written.
    void DoWriteChanges(const std::vector<Path>& changes) override;
    /// Builds the tree anew of all inner providers and notifies; which of them changed plays no part.
    virtual void OnProxyMetaDataChange(XMPMetaHandle changed) = 0;
    /// Adds the dynamic schemas known to the library, and those found in @p tree, to this provider.
    void GetAllDynamicSchemas(XMPMetaHandle tree);

private:
    bool Reaches(const MetaDataProvider* provider) const;

    std::vector<sp<MetaDataProvider>> mInnerProviders;
    std::vector<MetaDataCallback> mCallbacks;  // one of each inner provider
};

/// Whether @p path holds what tells one document from another (xmpMM identifiers, versions and history), which an
/// aggregate never takes from one source to the others.
ZEPHMETADATA_EXPORT bool IsInstanceData(const Path& path);

/// Several providers as one, for example the XMP of several files that are edited together.
///
/// With one provider the tree is that provider's own. With more it is a merged tree, in which a property that the sources
/// hold with different values, or that only some hold, reads as mixed (kGetValueResult_Mixed): structures field by field,
/// arrays and alternatives as a whole. Providers without a tree are passed over.
///
/// A write-back takes to each provider what was changed at or below the changed paths and nothing else: a value that is
/// still mixed stays as it is in each source, one that was removed or set to an empty text is removed from all, one
/// language or one item leaves the others as they are. Document identifiers and the history stay each source's own. A
/// provider that may not write one of the changed paths is left out, and reported as a failure, as is one without a tree.
class ZEPHMETADATA_EXPORT AggregateProvider : public ProxyProviderImpl {
public:
    AggregateProvider();
    explicit AggregateProvider(const PolyRange<sp<MetaDataProvider>>& providers);
    ~AggregateProvider() override;

    /// Nothing for a null pointer, for this provider and for a proxy that holds it. A provider that is added twice is
    /// written once. Without @p rebuild the tree stays as it is, but what is edited from here on is edited in all.
    void AddProvider(const sp<MetaDataProvider>& provider, bool rebuild);
    void ResetProviders();
    void ResetProviders(const PolyRange<sp<MetaDataProvider>>& providers);

    /// Whether at least one provider answers so.
    bool QueryPathStatus(const Path& path, PathStatus status) const override;
    void GetAllPathsForDynamicSchema(const UTF8String& namespaceURI,
                                     std::vector<sp<PropertyDefinition>>& properties) override;

protected:
    void OnProxyMetaDataChange(XMPMetaHandle changed) override;

private:
    void WriteChanges(const std::vector<Path>& changes) override;
    void WriteMerged(const std::vector<Path>& changes);
    void RememberTree();

    struct Merge;
    std::vector<sp<MetaDataProvider>> mProviders;
    std::unique_ptr<Merge> mMerge;
};

/// A provider in which some schemas live in providers of their own and everything else in a base provider.
///
/// The tree is the base provider's own, into which the properties of the routed schemas are copied. What the base holds
/// of these schemas itself is shown where the route has no such property. Through this provider the base is written as if
/// there were no routes; whoever writes the base by itself writes their properties too. A base belongs to one such
/// provider at a time.
///
/// A change of a routed schema is written to its provider, a property that was only the base's as a whole. One that was
/// removed goes from the base as well, which is then written too.
class ZEPHMETADATA_EXPORT DisjointSchemaProxyProvider : public ProxyProviderImpl {
public:
    DisjointSchemaProxyProvider();
    ~DisjointSchemaProxyProvider() override;

    /// Everything that has no route; null for none. A base provider before it still causes rebuilds.
    void RegisterBaseProvider(const sp<MetaDataProvider>& provider);
    /// Routes @p schema to @p provider, instead of where it was routed before. Nothing when either is null.
    void RegisterProvider(const sp<SchemaDefinition>& schema, const sp<MetaDataProvider>& provider);
    void ClearProviders();

    /// The answer of the provider that the path is routed to.
    bool QueryPathStatus(const Path& path, PathStatus status) const override;

protected:
    void OnProxyMetaDataChange(XMPMetaHandle changed) override;

private:
    using Routes = std::map<sp<SchemaDefinition>, sp<MetaDataProvider>, std::owner_less<sp<SchemaDefinition>>>;

    void WriteChanges(const std::vector<Path>& changes) override;
    void WriteBase(const std::vector<Path>& changes);
    bool CopyRoutes(XMPMetaHandle tree);
    void TakeRoutesOut();

    struct Copies;
    Routes mRoutes;
    sp<MetaDataProvider> mBase;
    std::unique_ptr<Copies> mCopies;
};

}  // namespace zephmetadata

#include "xmp/core/toolkit.h"

#include <algorithm>
#include <atomic>
#include <mutex>
#include <string>
#include <unordered_map>

#include "xmp/core/exempi_handles.h"
#include "xmp/core/xmp_paths.h"

namespace zephmetadata::toolkit {
namespace {

/// Of a prefix or a namespace URI: both stand in packets again and again.
constexpr std::size_t kMaxNameBytes = 2048;

std::mutex startMutex;
std::atomic<bool> running{false};

/// How many prefixes were made of a prefix that is taken; guarded by its mutex.
struct Inventions {
    std::mutex mMutex;
    std::unordered_map<UTF8String, std::size_t> mCounts;
};

// Made when the library is loaded, so that it outlives a host's object that stops the library at exit.
Inventions inventions;

std::atomic<std::size_t> phase{0};

/// Answers of the toolkit about namespaces, which are asked for again with every path. What has a prefix keeps it until
/// the toolkit is stopped; what has none may get one.
class Remembered {
public:
    /// Null when there is no answer yet. Holds until the next call.
    const UTF8String* Find(const UTF8String& name) {
        if (mPhase != phase) {
            mAnswers.clear();
            mPhase = phase;
        }
        const auto found = mAnswers.find(name);
        return found == mAnswers.end() ? nullptr : &found->second;
    }
    const UTF8String& Keep(const UTF8String& name, UTF8String answer) {
        constexpr std::size_t kMostNames = 4096;  // packets may hold any number of them
        if (mAnswers.size() >= kMostNames) {
            mAnswers.clear();
        }
        return mAnswers.insert_or_assign(name, std::move(answer)).first->second;
    }

private:
    std::unordered_map<UTF8String, UTF8String> mAnswers;
    std::size_t mPhase = 0;
};

// The toolkit tells its version only in the packets that it writes, as x:xmptk="...".
UTF8String WrittenVersion() {
    const TreeHandle tree(xmp_new_empty());
    const ToolkitString packet;
    if (!tree || !xmp_serialize(tree.get(), packet.Get(), XMP_SERIAL_OMITPACKETWRAPPER, 0)) {
        return {};
    }
    constexpr std::string_view kMark = "x:xmptk=\"";
    const std::string_view text = packet.View();
    const std::size_t mark = text.find(kMark);
    if (mark == std::string_view::npos) {
        return {};
    }
    const std::size_t begin = mark + kMark.size();
    return UTF8String(text.substr(begin, text.find('"', begin) - begin));
}

// A namespace goes into the packets as it stands, without escapes.
bool IsWritableURI(std::string_view uri) {
    const auto unfit = [](char c) {
        return static_cast<unsigned char>(c) <= 0x20 || c == '"' || c == '<' || c == '>' || c == '&' || c == '\x7F';
    };
    return !uri.empty() && std::none_of(uri.begin(), uri.end(), unfit);
}

UTF8String WithoutColon(UTF8String prefix) {
    if (prefix.ends_with(':')) {
        prefix.pop_back();
    }
    return prefix;
}

/// A free prefix in the toolkit's own form, prefix_1_. The toolkit would try the numbers from 1 for each namespace.
UTF8String InventedPrefix(const UTF8String& prefix) {
    const std::lock_guard lock(inventions.mMutex);
    std::size_t& count = inventions.mCounts[prefix];
    UTF8String invented;
    do {
        invented = prefix + "_" + std::to_string(++count) + "_";
    } while (NamespaceOf(invented));
    return invented;
}

UTF8String QualifiedStep(const UTF8String& schema, const UTF8String& path, const UTF8String& fieldNamespace,
                         const UTF8String& name, std::string_view separator) {
    CheckedSchema(schema, path);
    const std::optional<UTF8String> prefix = PrefixOf(fieldNamespace);
    if (!prefix) {
        ThrowError(XMPErr_BadSchema, "path of \"" + name + "\" in \"" + fieldNamespace + "\"");
    }
    if (!IsNCName(name)) {
        ThrowError(XMPErr_BadXPath, "path of \"" + name + "\"");
    }
    return UTF8String(path).append(separator).append(*prefix).append(":").append(name);
}

}  // namespace

void Start() {
    const std::lock_guard lock(startMutex);
    if (running) {
        return;
    }
    InstallQuietFilter();
    const QuietToolkit quiet;
    if (!xmp_init()) {
        RemoveQuietFilter();
        ThrowToolkitError("start of the XMP toolkit");
    }
    ++phase;
    running = true;
}

// Namespaces that were registered are forgotten by the toolkit; it can be started again.
void Stop() noexcept {
    const std::lock_guard lock(startMutex);
    if (!running.exchange(false)) {
        return;
    }
    ++phase;
    {
        const QuietToolkit quiet;
        xmp_terminate();
    }
    RemoveQuietFilter();
    const std::lock_guard inventionsLock(inventions.mMutex);
    inventions.mCounts.clear();
}

std::size_t Phase() noexcept {
    return phase;
}

bool IsRunning() noexcept {
    return running;
}

UTF8String CoreVersion() {
    static UTF8String version;
    const std::lock_guard lock(startMutex);
    if (!version.empty()) {
        return version;
    }
    if (running) {
        version = WrittenVersion();
    } else if (xmp_init()) {
        version = WrittenVersion();
        xmp_terminate();
    }
    return version;
}

UTF8String FilesVersion() {
    return "Exempi " ZEPHMETADATA_EXEMPI_VERSION;
}

bool RegisterNamespace(const UTF8String& namespaceURI, const UTF8String& prefix) {
    const bool isTooLong = prefix.size() > kMaxNameBytes || namespaceURI.size() > kMaxNameBytes;
    if (!IsRunning() || isTooLong || !IsNCName(prefix) || !IsWritableURI(namespaceURI) || prefix == "xmlns") {
        return false;
    }
    if (const std::optional<UTF8String> present = PrefixOf(namespaceURI)) {
        return *present == prefix;
    }
    // With a prefix that is taken the namespace gets another one: properties of such a namespace can then be read.
    const UTF8String own = NamespaceOf(prefix) ? InventedPrefix(prefix) : prefix;
    const QuietToolkit quiet;
    const ToolkitString registered;
    return xmp_register_namespace(namespaceURI.c_str(), own.c_str(), registered.Get()) &&
           WithoutColon(registered.Text()) == prefix;
}

std::optional<UTF8String> PrefixOf(const UTF8String& namespaceURI) {
    if (!IsRunning() || namespaceURI.empty()) {
        return std::nullopt;
    }
    thread_local Remembered prefixes;
    if (const UTF8String* const known = prefixes.Find(namespaceURI)) {
        return *known;
    }
    const QuietToolkit quiet;
    const ToolkitString prefix;
    if (!xmp_namespace_prefix(namespaceURI.c_str(), prefix.Get())) {
        return std::nullopt;
    }
    return prefixes.Keep(namespaceURI, WithoutColon(prefix.Text()));
}

std::optional<UTF8String> NamespaceOf(const UTF8String& prefix) {
    if (!IsRunning() || prefix.empty()) {
        return std::nullopt;
    }
    thread_local Remembered namespaces;
    if (const UTF8String* const known = namespaces.Find(prefix)) {
        return *known;
    }
    const QuietToolkit quiet;
    const ToolkitString uri;
    if (!xmp_prefix_namespace_uri(prefix.c_str(), uri.Get())) {
        return std::nullopt;
    }
    return namespaces.Keep(prefix, uri.Text());
}

UTF8String ComposeStructFieldPath(const UTF8String& schema, const UTF8String& structPath,
                                  const UTF8String& fieldNamespace, const UTF8String& fieldName) {
    return QualifiedStep(schema, structPath, fieldNamespace, fieldName, "/");
}

UTF8String ComposeArrayItemPath(const UTF8String& schema, const UTF8String& arrayPath, int index) {
    CheckedSchema(schema, arrayPath);
    if (index == 0 || index < -1) {
        ThrowError(XMPErr_BadIndex, "path of item " + std::to_string(index) + " of \"" + arrayPath + "\"");
    }
    return arrayPath + (index == -1 ? "[last()]" : "[" + std::to_string(index) + "]");
}

UTF8String ComposeQualifierPath(const UTF8String& schema, const UTF8String& propertyPath,
                                const UTF8String& qualifierNamespace, const UTF8String& qualifierName) {
    return QualifiedStep(schema, propertyPath, qualifierNamespace, qualifierName, "/?");
}

}  // namespace zephmetadata::toolkit

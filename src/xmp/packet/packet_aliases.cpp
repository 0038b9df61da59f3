#include "xmp/packet/packet_aliases.h"

#include <algorithm>
#include <array>

#include "xmp/core/xmp_paths.h"
#include "xmp/packet/packet_text.h"
#include "xmp/tree/node_copy.h"
#include "xmp/tree/xmp_meta_handle.h"
#include "xmp/tree/xmp_tree.h"

namespace zephmetadata::toolkit {

namespace {

struct AliasNamespace {
    std::string_view mURI;
    std::string_view mPrefix;
};

constexpr auto kNamespaces = std::to_array<AliasNamespace>({
    {"http://ns.adobe.com/tiff/1.0/", "tiff"},
    {"http://ns.adobe.com/exif/1.0/", "exif"},
    {"http://ns.adobe.com/pdf/1.3/", "pdf"},
    {"http://ns.adobe.com/photoshop/1.0/", "photoshop"},
    {"http://ns.adobe.com/png/1.0/", "png"},
    {"http://ns.adobe.com/xap/1.0/", "xmp"},
    {"http://ns.adobe.com/xap/1.0/rights/", "xmpRights"},
});

/// The names that are others' in one of the namespaces, in their order. Which are is asked of the toolkit.
constexpr auto kNames = std::to_array<std::string_view>({"Artist",
                                                         "Author",
                                                         "Authors",
                                                         "BaseURL",
                                                         "Caption",
                                                         "Copyright",
                                                         "CreationDate",
                                                         "CreationTime",
                                                         "Creator",
                                                         "DateTime",
                                                         "DateTimeDigitized",
                                                         "Description",
                                                         "Format",
                                                         "ImageDescription",
                                                         "Keywords",
                                                         "Locale",
                                                         "Marked",
                                                         "ModDate",
                                                         "ModificationTime",
                                                         "Software",
                                                         "Subject",
                                                         "Title",
                                                         "WebStatement"});
static_assert(std::is_sorted(kNames.begin(), kNames.end()));

/// What is put behind a namespace and before a prefix, so that the toolkit does not know them.
constexpr std::string_view kShadowMark = "zephmetadata-alias/";
constexpr std::string_view kShadowPrefix = "zephmetadata-alias-";

UTF8String ShadowURI(const AliasNamespace& row) {
    return UTF8String(row.mURI).append(kShadowMark);
}

/// Null for a namespace that was not moved aside.
const AliasNamespace* RowOf(const UTF8String& shadowURI) {
    const auto* const row = std::find_if(kNamespaces.begin(), kNamespaces.end(),
                                         [&](const AliasNamespace& one) { return ShadowURI(one) == shadowURI; });
    return row == kNamespaces.end() ? nullptr : row;
}

UTF8String ShadowPrefix(const AliasNamespace& row) {
    return UTF8String(kShadowPrefix).append(row.mPrefix);
}

/// What a packet calls one of the namespaces.
struct Declared {
    std::string_view mPrefix;  ///< empty for the default namespace
    const AliasNamespace* mRow;
};

constexpr std::string_view kBlanks = " \t\r\n";

std::string_view WithoutBlanks(std::string_view text) {
    return text.substr(std::min(text.find_first_not_of(kBlanks), text.size()));
}

/// The declarations in a packet; absent when one of them is not to be read without a parser.
std::optional<std::vector<Declared>> Declarations(std::string_view packet) {
    constexpr std::string_view kDeclaration = "xmlns";
    std::vector<Declared> found;
    for (std::size_t at = packet.find(kDeclaration); at != std::string_view::npos; at = packet.find(kDeclaration, at)) {
        at += kDeclaration.size();
        std::string_view rest = packet.substr(at);
        const std::size_t nameEnd = std::min(rest.find_first_of("= \t\r\n<>\"'"), rest.size());
        const std::string_view prefix = rest.substr(0, nameEnd).substr(rest.starts_with(':') ? 1 : 0);
        rest = WithoutBlanks(rest.substr(nameEnd));
        rest = WithoutBlanks(rest.substr(rest.starts_with('=') ? 1 : 0));
        const std::string_view value = rest.substr(0, rest.empty() ? 0 : rest.find(rest.front(), 1));
        if (value.find('&') != std::string_view::npos) {
            return std::nullopt;
        }
        const auto* const row = std::find_if(kNamespaces.begin(), kNamespaces.end(), [&](const AliasNamespace& known) {
            return value.substr(std::min<std::size_t>(1, value.size())) == known.mURI;
        });
        if (row != kNamespaces.end()) {
            found.push_back({prefix, row});
        }
    }
    return found;
}

void ReplaceAll(UTF8String& text, std::string_view from, std::string_view to) {
    for (std::size_t at = text.find(from); at != UTF8String::npos; at = text.find(from, at + to.size())) {
        text.replace(at, from.size(), to);
    }
}

/// Whether the quoted text at @p at is the value of an attribute that declares a namespace.
bool IsDeclaration(std::string_view text, std::size_t at) {
    const std::size_t equals = text.find_last_not_of(kBlanks, at - 1);
    if (at == 0 || equals == std::string_view::npos || text[equals] != '=') {
        return false;
    }
    const std::size_t begin = text.find_last_of(kBlanks, text.find_last_not_of(kBlanks, equals - 1));
    return begin != std::string_view::npos && text.substr(begin + 1).starts_with("xmlns");
}

void MoveNamespace(UTF8String& text, const AliasNamespace& row) {
    for (const char quote : {'"', '\''}) {
        const UTF8String quoted = quote + UTF8String(row.mURI) + quote;
        const UTF8String shadow = quote + ShadowURI(row) + quote;
        for (std::size_t at = text.find(quoted); at != UTF8String::npos; at = text.find(quoted, at + 1)) {
            if (IsDeclaration(text, at)) {
                text.replace(at, quoted.size(), shadow);
            }
        }
    }
}

/// The packet with the namespaces moved aside, parsed.
XMPMetaPtr ShadowTree(std::string_view packet) {
    UTF8String text(packet);
    for (const AliasNamespace& row : kNamespaces) {
        RegisterNamespace(ShadowURI(row), ShadowPrefix(row));
        MoveNamespace(text, row);
    }
    XMPMetaPtr tree = NewTree();
    const QuietToolkit quiet;
    if (!xmp_parse(Native(tree.get()), text.data(), text.size())) {
        return nullptr;
    }
    MendAlternatives(tree.get(), text);
    return tree;
}

/// Where the toolkit looks for a property; absent when that is where its name says.
std::optional<Place> MeantPlace(XMPMetaHandle tree, const AliasNamespace& row, const UTF8String& name) {
    const UTF8String schema(row.mURI);
    const auto prefix = PrefixOf(schema);
    if (!prefix) {
        return std::nullopt;
    }
    Place meant = NormalPlace(tree, schema, *prefix + ":" + name);
    const bool isItself = meant.mSchema == schema && meant.mPath == *prefix + ":" + name;
    return isItself ? std::nullopt : std::optional(std::move(meant));
}

bool IsAnothers(XMPMetaHandle tree, std::string_view prefix, std::string_view name,
                const std::vector<Declared>& declarations) {
    return std::any_of(declarations.begin(), declarations.end(), [&](const Declared& declared) {
        return declared.mPrefix == prefix && MeantPlace(tree, *declared.mRow, UTF8String(name));
    });
}

/// Told from the names alone, so that most packets need not be parsed a second time.
bool MayHoldAliases(XMPMetaHandle tree, std::string_view packet) {
    const std::optional<std::vector<Declared>> declarations = Declarations(packet);
    if (!declarations || std::any_of(declarations->begin(), declarations->end(),
                                     [](const Declared& declared) { return declared.mPrefix.empty(); })) {
        return true;
    }
    for (std::size_t colon = packet.find(':'); colon != std::string_view::npos; colon = packet.find(':', colon + 1)) {
        const char first = colon + 1 < packet.size() ? packet[colon + 1] : '\0';
        if (first < kNames.front().front() || first > kNames.back().front()) {
            continue;
        }
        const std::size_t end = std::min(packet.find_first_of(" \t\r\n=/>", colon + 1), packet.size());
        const std::string_view name = packet.substr(colon + 1, end - colon - 1);
        if (std::binary_search(kNames.begin(), kNames.end(), name)) {
            const std::size_t start = packet.find_last_of(" \t\r\n</", colon) + 1;  // npos + 1 is 0
            if (IsAnothers(tree, packet.substr(start, colon - start), name, *declarations)) {
                return true;
            }
        }
    }
    return false;
}

bool IsArray(XMPMetaHandle tree, const Place& place) {
    const std::optional<Property> property = GetProperty(tree, place.mSchema, place.mPath);
    return property && (property->mOptions & kPropValueIsArray) != 0;
}

/// The property itself, of which a place may be an item.
Place WholeOf(Place place) {
    place.mPath.resize(std::min(place.mPath.find('['), place.mPath.size()));
    return place;
}

/// An array stands for an array, also where the toolkit takes the name for an item of it.
std::optional<Place> MeantPlace(XMPMetaHandle tree, const AliasNamespace& row, const UTF8String& name, bool isArray) {
    std::optional<Place> meant = MeantPlace(tree, row, name);
    return meant && isArray ? WholeOf(*std::move(meant)) : meant;
}

/// All that a place holds, as one text to compare by; absent when it holds nothing.
std::optional<UTF8String> ContentAt(XMPMetaHandle tree, const Place& place) {
    const std::optional<Property> property = GetProperty(tree, place.mSchema, place.mPath);
    if (!property) {
        return std::nullopt;
    }
    UTF8String content = property->mValue;
    for (const Node& node : Nodes(tree, place.mSchema, place.mPath, Walk::kSubtree)) {
        content.append(1, '\n').append(node.mPath).append(1, '=').append(node.mValue);
    }
    return content;
}

/// The texts that a place holds, whatever they are called within it.
std::vector<UTF8String> TextsAt(XMPMetaHandle tree, const Place& place) {
    std::vector<UTF8String> texts;
    const std::optional<Property> property = GetProperty(tree, place.mSchema, place.mPath);
    if (property && (property->mOptions & kPropCompositeMask) == 0) {
        texts.push_back(property->mValue);
    }
    for (Node& node : Nodes(tree, place.mSchema, place.mPath, Walk::kSubtree)) {
        if ((node.mOptions & (kPropCompositeMask | kPropIsQualifier)) == 0) {
            texts.push_back(std::move(node.mValue));
        }
    }
    return texts;
}

UTF8String NameIn(const UTF8String& path) {
    return path.substr(path.find(':') + 1);
}

void CopyTree(XMPMetaHandle from, const Place& place, XMPMetaHandle to, const UTF8String& schema,
              const UTF8String& path) {
    const std::optional<Property> root = GetProperty(from, place.mSchema, place.mPath);
    if (!root) {
        return;
    }
    CopyNode(to, {schema, path, root->mValue, root->mOptions}, path);
    for (Node& node : Nodes(from, place.mSchema, place.mPath, Walk::kSubtree)) {
        const UTF8String below = path + node.mPath.substr(place.mPath.size());
        node.mSchema = schema;
        CopyNode(to, node, below);
    }
}

/// The toolkit makes an array that it takes for an item of another (tiff:ImageDescription with its languages, for the
/// x-default of dc:description) an array within that one, which no program understands and the toolkit itself empties
/// when it reads it again.
void Unnest(XMPMetaHandle tree, const Place& array, XMPMetaHandle shadow, const Place& alias) {
    for (const Node& item : Nodes(tree, array.mSchema, array.mPath, Walk::kJustChildren)) {
        if ((item.mOptions & kPropValueIsArray) == 0) {
            continue;
        }
        const bool isAlone = CountArrayItems(tree, array.mSchema, array.mPath) == 1;
        DeleteProperty(tree, array.mSchema, isAlone ? array.mPath : item.mPath);
        if (isAlone) {
            CopyTree(shadow, alias, tree, array.mSchema, array.mPath);
        }
        return;
    }
}

/// The toolkit makes arrays of Dublin Core's texts where they stand under their own names alone: it would do so with what
/// it took from other names when it reads it again.
void MakeArray(XMPMetaHandle tree, const Place& place) {
    constexpr std::string_view kDublinCore = "http://purl.org/dc/elements/1.1/";
    const std::optional<Property> property = GetProperty(tree, place.mSchema, place.mPath);
    if (place.mSchema != kDublinCore || place.mPath.ends_with(']') || !property ||
        (property->mOptions & kPropCompositeMask) != 0) {
        return;
    }
    const XMPMetaPtr own = NewTree();
    const XMPMetaPtr again = NewTree();
    CopyTree(tree, place, own.get(), place.mSchema, place.mPath);
    if (ParsePacket(again.get(), SerializePacket(own.get(), PacketForm::kBareRDF)) && IsArray(again.get(), place)) {
        DeleteProperty(tree, place.mSchema, place.mPath);
        CopyTree(again.get(), place, tree, place.mSchema, place.mPath);
    }
}

/// Whether the packet has the property under the name by which the toolkit knows it.
bool IsInPacket(XMPMetaHandle shadow, const Place& meant) {
    Place place = WholeOf(meant);
    for (const AliasNamespace& row : kNamespaces) {
        if (row.mURI == meant.mSchema) {
            place = {ShadowURI(row), ShadowPrefix(row) + ":" + NameIn(place.mPath)};
        }
    }
    return PropertyExists(shadow, place.mSchema, place.mPath);
}

}  // namespace

sp<const KeptAliases> AliasesOf(XMPMetaHandle tree, std::string_view packet) {
    if (!MayHoldAliases(tree, packet)) {
        return nullptr;
    }
    const auto aliases = std::make_shared<KeptAliases>();
    const XMPMetaPtr shadow = ShadowTree(packet);
    aliases->mTree = NewTree();
    for (const AliasNamespace& row : kNamespaces) {
        const UTF8String schema = ShadowURI(row);
        for (const Node& node : shadow ? Nodes(shadow.get(), schema, {}, Walk::kJustChildren) : std::vector<Node>()) {
            const bool isArray = (node.mOptions & kPropValueIsArray) != 0;
            const std::optional<Place> meant = MeantPlace(tree, row, NameIn(node.mPath), isArray);
            if (meant && isArray && IsArray(tree, *meant)) {
                Unnest(tree, *meant, shadow.get(), {schema, node.mPath});
            }
            if (meant) {
                MakeArray(tree, *meant);
            }
            const auto content = meant ? ContentAt(tree, *meant) : std::nullopt;
            if (content) {
                CopyTree(shadow.get(), {schema, node.mPath}, aliases->mTree.get(), schema, node.mPath);
                const bool isTheSame = TextsAt(shadow.get(), {schema, node.mPath}) == TextsAt(tree, *meant);
                aliases->mMeant.emplace(Place{schema, node.mPath},
                                        KeptAliases::Meant{*content, isTheSame, IsInPacket(shadow.get(), *meant)});
            }
        }
    }
    return aliases->mMeant.empty() ? nullptr : aliases;
}

bool HasAliases(XMPMetaHandle tree) {
    return tree->mAliases != nullptr;
}

void MergeAliases(XMPMetaHandle tree, XMPMetaHandle part, const std::set<Place>& taken) {
    if (!part->mAliases) {
        return;
    }
    const KeptAliases& added = *part->mAliases;
    const auto merged = std::make_shared<KeptAliases>();
    merged->mTree = tree->mAliases ? CloneTree(tree->mAliases->mTree.get()) : NewTree();
    merged->mMeant = tree->mAliases ? tree->mAliases->mMeant : std::map<Place, KeptAliases::Meant>();
    for (const auto& [place, before] : added.mMeant) {
        const bool isArray = IsArray(added.mTree.get(), place);
        const std::optional<Place> meant = MeantPlace(tree, *RowOf(place.mSchema), NameIn(place.mPath), isArray);
        const auto content = meant ? ContentAt(tree, *meant) : std::nullopt;
        const bool isTheSame = meant && TextsAt(added.mTree.get(), place) == TextsAt(tree, *meant);
        const bool isInPacket = before.mIsInPacket || (meant && !taken.contains(WholeOf(*meant)));
        if (content && merged->mMeant.emplace(place, KeptAliases::Meant{*content, isTheSame, isInPacket}).second) {
            CopyTree(added.mTree.get(), place, merged->mTree.get(), place.mSchema, place.mPath);
        }
    }
    tree->mAliases = merged;
}

bool ParseByNames(XMPMetaHandle tree, std::string_view packet) {
    const XMPMetaPtr shadow = MayHoldAliases(tree, packet) ? ShadowTree(packet) : nullptr;
    if (!shadow) {
        return false;
    }
    std::vector<std::pair<Node, Place>> others;
    bool isOther = false;  // what follows belongs to such a property
    for (Node& node : Nodes(shadow.get(), {}, {}, Walk::kSubtree)) {
        if ((node.mOptions & kSchemaNode) != 0) {
            continue;
        }
        const AliasNamespace* const row = RowOf(node.mSchema);
        if (node.mPath.find_first_of("/[") == UTF8String::npos) {
            const bool isArray = (node.mOptions & kPropValueIsArray) != 0;
            const auto meant = row == nullptr ? std::nullopt : MeantPlace(tree, *row, NameIn(node.mPath), isArray);
            isOther = meant.has_value();
            if (isOther) {
                others.emplace_back(node, WholeOf(*meant));
            }
        }
        if (!isOther) {
            node.mSchema = row == nullptr ? node.mSchema : UTF8String(row->mURI);
            ReplaceAll(node.mPath, kShadowPrefix, {});
            CopyNode(tree, node, node.mPath);
        }
    }
    for (const auto& [node, whole] : others) {
        if (PropertyExists(tree, whole.mSchema, whole.mPath)) {
            continue;
        }
        if ((node.mOptions & kPropValueIsArray) != 0) {
            CopyTree(shadow.get(), {node.mSchema, node.mPath}, tree, whole.mSchema, whole.mPath);
        } else {
            SetProperty(tree, UTF8String(RowOf(node.mSchema)->mURI), NameIn(node.mPath), node.mValue);
            MakeArray(tree, whole);
        }
    }
    return true;
}

void PutAliases(const KeptAliases& aliases, XMPMetaHandle tree) {
    std::map<Place, bool> isSaidByOthers;  // by all of them, as it is
    for (const auto& entry : aliases.mMeant) {
        const Place& place = entry.first;
        const KeptAliases::Meant& before = entry.second;
        const AliasNamespace* const row = RowOf(place.mSchema);
        const bool isArray = IsArray(aliases.mTree.get(), place);
        const std::optional<Place> meant = MeantPlace(tree, *row, NameIn(place.mPath), isArray);
        const auto now = meant ? ContentAt(tree, *meant) : std::nullopt;
        if (now && (*now == before.mContent || !before.mIsTheSame)) {
            CopyTree(aliases.mTree.get(), place, tree, place.mSchema, place.mPath);
        } else if (now && isArray) {
            CopyTree(tree, *meant, tree, place.mSchema, place.mPath);
        } else if (now) {
            const std::vector<UTF8String> texts = TextsAt(tree, *meant);
            SetProperty(tree, place.mSchema, place.mPath, texts.empty() ? UTF8String() : texts.front());
        }
        if (now) {
            const bool isSaid = *now == before.mContent && before.mIsTheSame && !before.mIsInPacket;
            bool& isSaidByAll = isSaidByOthers.emplace(WholeOf(*meant), true).first->second;
            isSaidByAll = isSaidByAll && isSaid;
        }
    }
    for (const auto& [property, isSaid] : isSaidByOthers) {
        if (isSaid) {
            DeleteProperty(tree, property.mSchema, property.mPath);
        }
    }
}

void NameAliases(UTF8String& packet) {
    for (const AliasNamespace& row : kNamespaces) {
        const UTF8String shadow = "xmlns:" + ShadowPrefix(row) + "=\"" + ShadowURI(row) + "\"";
        const UTF8String own = "xmlns:" + UTF8String(row.mPrefix) + "=";
        for (std::size_t at = packet.find(shadow); at != UTF8String::npos; at = packet.find(shadow, at)) {
            // An element that declares the namespace already cannot do so twice.
            const std::size_t open = packet.rfind('<', at);
            const std::string_view tag = std::string_view(packet).substr(open, packet.find('>', at) - open);
            const bool isDeclared = tag.find(own) != std::string_view::npos;
            packet.replace(at, shadow.size(), isDeclared ? "" : own + "\"" + UTF8String(row.mURI) + "\"");
        }
        ReplaceAll(packet, ShadowPrefix(row) + ":", UTF8String(row.mPrefix) + ":");
    }
}

}  // namespace zephmetadata::toolkit

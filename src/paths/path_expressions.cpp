#include <algorithm>
#include <charconv>
#include <string_view>

#include "xmp/core/toolkit.h"
#include "xmp/core/xmp_paths.h"
#include "zephmetadata/paths.h"

namespace zephmetadata {

namespace {

/// Far beyond what metadata holds, and small enough for every reader of the expression.
constexpr std::size_t kMaxExpressionSteps = 100;

/// Reads an expression from its front.
class ExpressionReader {
public:
    explicit ExpressionReader(std::string_view text) : mRest(text) {}

    bool AtEnd() const { return mRest.empty(); }

    bool Take(std::string_view start) {
        if (!mRest.starts_with(start)) {
            return false;
        }
        mRest.remove_prefix(start.size());
        return true;
    }

    /// Everything before the next character of @p delimiters.
    std::string_view TakeUntil(std::string_view delimiters) {
        const std::string_view taken = mRest.substr(0, mRest.find_first_of(delimiters));
        mRest.remove_prefix(taken.size());
        return taken;
    }

private:
    std::string_view mRest;
};

struct Name {
    UTF8String mNamespace;
    UTF8String mLocal;
};

/// prefix ":" name, the prefix being one that the toolkit knows.
std::optional<Name> TakeName(ExpressionReader& reader) {
    const std::string_view prefix = reader.TakeUntil(":/[");
    if (!toolkit::IsNCName(prefix) || !reader.Take(":")) {
        return std::nullopt;
    }
    const std::string_view local = reader.TakeUntil(":/[]\"'= ");
    const auto namespaceURI = toolkit::NamespaceOf(UTF8String(prefix));
    if (!namespaceURI || !toolkit::IsNCName(local)) {
        return std::nullopt;
    }
    return Name{*namespaceURI, UTF8String(local)};
}

/// The path of a node that no definition describes.
Path Undefined(const Path& parent, UTF8String description) {
    return {.mInternal = parent.mInternal,
            .mNamespace = parent.mNamespace,
            .mPathDescription = std::move(description),
            .mEntryName = {},
            .mParentId = {}};
}

template <typename Definition>
sp<Definition> FindQualified(const std::vector<sp<Definition>>& definitions, const Name& name) {
    const auto found = std::find_if(definitions.begin(), definitions.end(), [&](const auto& definition) {
        return definition && definition->mName == name.mLocal &&
               (definition->mNamespace.empty() || definition->mNamespace == name.mNamespace);
    });
    return found == definitions.end() ? nullptr : *found;
}

Path PropertyPath(const Name& name) {
    if (const sp<SchemaDefinition> schema = NamespaceDefinition(name.mNamespace); schema && schema->mDynamic) {
        return {.mInternal = false,
                .mNamespace = name.mNamespace,
                .mPathDescription = name.mLocal,
                .mEntryName = name.mLocal,
                .mParentId = name.mNamespace};
    }
    Path path = PathForSchemaNameAndPropertyName(name.mNamespace, name.mLocal);
    if (!(path == Path())) {
        return path;
    }
    Path schemaLevel;
    schemaLevel.mNamespace = name.mNamespace;
    return Undefined(schemaLevel, name.mLocal);
}

Path FieldStep(const Path& parent, const Name& name) {
    const sp<EntryDefinition> entry = PathEntryDefinition(parent);
    const sp<TypeDefinition> type = entry && entry->mType ? TypeIdDefinition(*entry->mType) : nullptr;
    const sp<FieldDefinition> field = type ? FindQualified(type->mFields, name) : nullptr;
    if (field) {
        return CreatePathFromStructureField(parent, field);
    }
    return Undefined(parent, toolkit::ComposeStructFieldPath(parent.mNamespace, parent.mPathDescription,
                                                             name.mNamespace, name.mLocal));
}

Path QualifierStep(const Path& parent, const Name& name) {
    const sp<EntryDefinition> entry = PathEntryDefinition(parent);
    const sp<QualifierDefinition> qualifier = entry ? FindQualified(entry->mQualifiers, name) : nullptr;
    if (qualifier) {
        return CreatePathFromQualifier(parent, qualifier);
    }
    return Undefined(parent, toolkit::ComposeQualifierPath(parent.mNamespace, parent.mPathDescription, name.mNamespace,
                                                           name.mLocal));
}

/// A number, "last()", or a language as in ?xml:lang="de".
std::optional<UTF8String> ItemSelector(std::string_view text) {
    if (text == "last()") {
        return UTF8String(text);
    }
    int index = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), index);
    const bool isNumber = error == std::errc() && end == text.data() + text.size();
    if (isNumber && index > 0 && !text.starts_with('0')) {  // an item has one expression
        return UTF8String(text);
    }
    constexpr std::string_view kLanguage = "?xml:lang=\"";
    const bool isLanguage = text.starts_with(kLanguage) && text.size() > kLanguage.size() + 1 && text.ends_with('"');
    const std::string_view language = isLanguage ? text.substr(kLanguage.size()) : std::string_view();
    return isLanguage && language.find('"') == language.size() - 1 ? std::optional(UTF8String(text)) : std::nullopt;
}

Path ItemStep(const Path& parent, const UTF8String& selector) {
    Path item = CreatePathFromArrayItem(parent, -1);  // for its definition; the last item always composes
    if (item == Path()) {
        return Undefined(parent, parent.mPathDescription + "[" + selector + "]");
    }
    item.mPathDescription = parent.mPathDescription + "[" + selector + "]";
    return item;
}

/// One step after the first; the empty path when there is no such step.
Path TakeStep(ExpressionReader& reader, const Path& parent) {
    if (reader.Take("[")) {
        const auto selector = ItemSelector(reader.TakeUntil("]"));
        return selector && reader.Take("]") ? ItemStep(parent, *selector) : Path();
    }
    const bool isQualifier = reader.Take("/?");
    if (!isQualifier && !reader.Take("/")) {
        return {};
    }
    const auto name = TakeName(reader);
    if (!name) {
        return {};
    }
    return isQualifier ? QualifierStep(parent, *name) : FieldStep(parent, *name);
}

}  // namespace

Path PathForExpression(const UTF8String& expression) {
    ExpressionReader reader(expression);
    const auto name = TakeName(reader);
    if (!name) {
        return {};
    }
    Path path = PropertyPath(*name);
    for (std::size_t step = 0; !reader.AtEnd(); ++step) {
        path = step < kMaxExpressionSteps ? TakeStep(reader, path) : Path();
        if (path == Path()) {
            return {};
        }
    }
    return path;
}

UTF8String ExpressionForPath(const Path& path) {
    const auto prefix = toolkit::PrefixOf(path.mNamespace);
    return prefix ? *prefix + ":" + path.mPathDescription : path.mPathDescription;
}

}  // namespace zephmetadata

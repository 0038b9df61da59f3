#include <pybind11/stl.h>

#include "module.h"
#include "panel/sheet.h"
#include "zephcore/language_tags.h"
#include "zephcore/localizer.h"
#include "zephmetadata/extensions.h"
#include "zephmetadata/paths.h"
#include "zephmetadata/suggestions.h"
#include "zephmetadata/values.h"

namespace zephpython {

namespace py = pybind11;
using namespace zephmetadata;

py::str Shown(const UTF16String& text) {
    return Text(zephcore::UTF16to8(zephcore::ResolveDisplayEscapes(text)));
}

namespace {

/// The kind of the values of a type, followed from choices to what they are made of.
std::string KindOf(const EntryDefinition& entry) {
    std::optional<PrimitiveType> kind = PrimitiveTypeOf(entry);
    if (kind && PrimitiveTypeIsChoice(*kind)) {
        kind = PrimitiveTypeOf(ElementTypeIdOf(entry).value_or(kTypeText));
    }
    return kind ? PrimitiveTypeAsPrimitiveTypeId(*kind) : std::string();
}

py::list Choices(const EntryDefinition& entry) {
    py::list choices;
    for (const sp<ChoiceDefinition>& choice : entry.mChoices) {
        choices.append(py::make_tuple(Text(choice->mRawValue), Shown(choice->mLabel)));
    }
    return choices;
}

py::dict Described(const EntryDefinition& entry) {
    py::dict description;
    description["type"] = Text(entry.mType.value_or(entry.mName));
    description["kind"] = Text(KindOf(entry));
    description["items"] = Text(ElementTypeIdOf(entry).value_or(std::string()));
    description["label"] = Shown(entry.mLabel);
    description["description"] = Shown(entry.mDescription);
    description["choices"] = Choices(entry);
    return description;
}

/// None when no definition describes the path. An item of a choice of arrays is described by its array.
py::object Definition(const std::string& expression) {
    sp<EntryDefinition> entry = PathEntryDefinition(PathForExpression(expression));
    if (entry && expression.ends_with(']') && IsArrayType(entry->mName)) {
        entry = TypeIdDefinition(ElementTypeIdOf(*entry).value_or(kTypeText));
    }
    return entry ? py::object(Described(*entry)) : py::none();
}

py::str Label(const std::string& expression, const std::string& language) {
    const InLanguage inLanguage(language);
    const sp<EntryDefinition> entry = PathEntryDefinition(PathForExpression(expression));
    return entry ? Shown(LabelOf(*entry)) : py::str();
}

void AddColumns(const std::vector<sp<ViewItem>>& items, py::list& columns) {
    for (const sp<ViewItem>& item : items) {
        const std::string path = item->mPath.mNamespace.empty() ? std::string() : ExpressionForPath(item->mPath);
        if (!path.empty() && !columns.contains(path)) {
            columns.append(Text(path));
        } else if (path.empty()) {
            AddColumns(item->mChildItems, columns);
        }
    }
}

/// The paths that a view shows, in its order; None where there is no such view.
py::object Columns(const std::string& name) {
    const sp<ViewDefinition> view = zephmeta::FindView(name);
    if (!view) {
        return py::none();
    }
    py::list columns;
    AddColumns(view->mItems, columns);
    return columns;
}

py::list Schemas() {
    py::list schemas;
    for (const sp<SchemaDefinition>& schema : RegisteredSchemaDefinitions()) {
        py::dict properties;
        for (const sp<PropertyDefinition>& property : schema->mProperties) {
            properties[Text(schema->mPrefix + ":" + property->mName)] = Described(*property);
        }
        schemas.append(py::make_tuple(Text(schema->mNamespace), Text(schema->mPrefix), Shown(schema->mLabel),
                                      Shown(schema->mDescription), properties));
    }
    return schemas;
}

}  // namespace

void AddDefinitions(py::module_& module) {
    module.def("definition", Definition);
    module.def("label", Label);
    module.def("schemas", Schemas);
    module.def("columns", Columns);
    module.def("views", zephmeta::ViewNames);
    module.def("nearest_name", NearestName);
    module.def("nearest_path", [](const std::string& expression) { return Text(NearestExpression(expression)); });
    module.def("is_known_language", zephcore::IsKnownLanguage);
    module.def("canonical", [](const std::string& expression) {
        const Path path = PathForExpression(expression);
        return Text(path.mNamespace.empty() ? std::string() : ExpressionForPath(path));
    });
}

}  // namespace zephpython

#include "extensions/conversion_log.h"

#include <array>
#include <cstddef>
#include <string_view>

#include "zephcore/localizer.h"

namespace zephmetadata {

namespace {

struct EntryRow {
    Conversion mEvent;
    std::u16string_view mText;
};

/// Not translated: hosts tell successes from failures by how the entries begin.
constexpr auto kEntries = std::to_array<EntryRow>({
    {Conversion::kNoPanels, u"INFO - No Generic Panels found in folder '@0' to convert.\n\n"},
    {Conversion::kConverted, u"SUCCESS - Converted '@0' to '@1'\n\n"},
    {Conversion::kInvalidXML, u"FAILURE - Cannot convert '@0'. Found invalid XML in '@1'.\n\n"},
    {Conversion::kNoExtensionsFolder,
     u"FAILURE - The folder '@0' cannot be created. Please make sure to run the application as administrator.\n\n"},
    {Conversion::kPackageExists, u"INFO - Cannot convert '@0'. Extension Package folder '@1' already exists.\n\n"},
    {Conversion::kPackageFolderFailed,
     u"FAILURE - Cannot convert '@0'. Extension Package folder '@1' cannot be created. Please make sure to run the "
     u"application as administrator.\n\n"},
    {Conversion::kSchemaFolderFailed,
     u"FAILURE - Cannot convert '@0'. Schema definition folder '@1' cannot be created.\n\n"},
    {Conversion::kViewFolderFailed,
     u"FAILURE - Cannot convert '@0'. View definition folder '@1' cannot be created.\n\n"},
    {Conversion::kManifestFailed, u"FAILURE - Cannot convert '@0'. Manifest file '@1' cannot be created.\n\n"},
    {Conversion::kSchemaFileFailed,
     u"FAILURE - Cannot convert '@0'. Schema definition file '@1' cannot be created.\n\n"},
    {Conversion::kViewFileFailed, u"FAILURE - Cannot convert '@0'. View definition file '@1' cannot be created.\n\n"},
    {Conversion::kTranslationsFolderFailed,
     u"FAILURE - Cannot convert '@0'. Localization folder '@1' cannot be created.\n\n"},
    {Conversion::kTranslationsFailed,
     u"FAILURE - Cannot convert '@0'. Localization file '@1' cannot be converted.\n\n"},
});

constexpr bool AreInOrder() {
    for (std::size_t i = 0; i < kEntries.size(); ++i) {
        if (kEntries[i].mEvent != static_cast<Conversion>(i)) {
            return false;
        }
    }
    return kEntries.size() == static_cast<std::size_t>(Conversion::kTranslationsFailed) + 1;
}
static_assert(AreInOrder());

}  // namespace

void ConversionLog::Add(Conversion event, const UTF16String& place, const UTF16String& other) {
    mText += zephcore::ReplaceInString(kEntries[static_cast<std::size_t>(event)].mText, {place, other});
}

}  // namespace zephmetadata

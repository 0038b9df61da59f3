#include "panel/overview.h"

#include <algorithm>
#include <array>
#include <map>
#include <set>

#include "listing.h"
#include "text.h"
#include "zephmetadata/definitions.h"
#include "zephmetadata/values.h"
#include "zephmetadata/xmp_meta.h"

namespace zephmeta {

namespace {

using namespace zephmetadata;

/// One section. Paths stand in order, with a minus where nobody misses a value; "@camera" stands for the items of that
/// view, those of its labelled sections where it has any.
struct SectionRow {
    const char* mLabel;
    std::string_view mPaths;
};

enum Section : std::size_t { kDescription, kPeople, kPlace, kCamera, kVideo, kAudio, kFile };

constexpr auto kSections = std::to_array<SectionRow>({
    {"$$$/metadataui/overview/description_label=Description",
     "photoshop:Headline -tessera:Headline dc:title dc:description -Iptc4xmpCore:AltTextAccessibility "
     "-Iptc4xmpCore:ExtDescrAccessibility dc:subject xmp:Rating -xmp:Label -Iptc4xmpExt:Event "
     "-photoshop:CaptionWriter -tessera:CaptionWriter -photoshop:Instructions -tessera:Instructions"},
    {"$$$/metadataui/overview/people_label=People and Rights",
     "dc:creator -photoshop:AuthorsPosition -tessera:AuthorsPosition -Iptc4xmpCore:CreatorContactInfo "
     "-Iptc4xmpExt:PersonInImage -Iptc4xmpExt:OrganisationInImageName photoshop:Credit -tessera:Credit "
     "photoshop:Source -tessera:Source -xmpRights:Marked dc:rights -xmpRights:UsageTerms -xmpRights:WebStatement "
     "-plus:Licensor"},
    {"$$$/metadataui/overview/place_label=Place",
     "-Iptc4xmpCore:Location photoshop:City -tessera:City photoshop:State -tessera:State photoshop:Country "
     "-tessera:Country -Iptc4xmpCore:CountryCode -Iptc4xmpExt:LocationCreated -Iptc4xmpExt:LocationShown @gps"},
    {"$$$/metadataui/overview/camera_label=Camera", "@camera"},
    {"$$$/metadataui/overview/video_label=Video", "@video"},
    {"$$$/metadataui/overview/audio_label=Sound", "@audio"},
    {"$$$/metadataui/overview/file_label=File",
     "-exif:DateTimeOriginal -photoshop:DateCreated -tessera:DateCreated -xmp:CreateDate -xmp:ModifyDate "
     "-xmp:CreatorTool -dc:format -photoshop:TransmissionReference -tessera:TransmissionReference"},
});

/// The order of the sections, and of the views, by kind of file; views without a row come before the last two.
struct KindRow {
    std::array<Section, kSections.size()> mSections;
    std::array<std::string_view, 8> mViews;
};
constexpr std::array<KindRow, 3> kKinds = {{
    {{kDescription, kPeople, kPlace, kCamera, kVideo, kAudio, kFile},
     {"basic", "camera", "gps", "origin", "iptccore", "iptcextension", "video", "audio"}},
    {{kDescription, kVideo, kPeople, kAudio, kPlace, kCamera, kFile},
     {"basic", "video", "audio", "camera", "gps", "origin", "iptccore", "iptcextension"}},
    {{kAudio, kDescription, kPeople, kPlace, kVideo, kCamera, kFile},
     {"audio", "basic", "video", "origin", "iptccore", "iptcextension", "gps", "camera"}},
}};
constexpr auto kLastViews = std::to_array<std::string_view>({"dicom", "tessera"});

/// The facts beside the name. The first path of a label that has a value is shown; several joined by + are one value.
struct FactRow {
    const char* mLabel;
    const char* mFormat;
    std::string_view mPaths;
};
constexpr auto kFacts = std::to_array<FactRow>({
    {"$$$/metadataui/overview/size_label=Size", "$$$/metadataui/view/camera/imageSize_format=@0 pixels",
     "corvid:ImageSize"},
    {"$$$/metadataui/overview/size_label=Size", "$$$/metadataui/overview/frameSize_format=@0 x @1 pixels",
     "xmpDM:videoFrameSize/stDim:w+xmpDM:videoFrameSize/stDim:h"},
    {"$$$/metadataui/overview/length_label=Length", "", "xmpDM:duration"},
    {"$$$/metadataui/overview/camera_label=Camera", "", "tiff:Make+tiff:Model"},
    {"$$$/metadataui/overview/date_label=Date", "",
     "exif:DateTimeOriginal photoshop:DateCreated tessera:DateCreated xmpDM:shotDate xmp:CreateDate"},
});

/// What sections call differently.
constexpr auto kLabels = std::to_array<std::pair<std::string_view, const char*>>(
    {{"xmp:CreateDate", "$$$/metadataui/overview/fileCreated_label=File Created"}});

/// Dates of a picture that mostly are one moment.
constexpr auto kCreated = std::to_array<std::string_view>(
    {"exif:DateTimeOriginal", "photoshop:DateCreated", "tessera:DateCreated", "xmp:CreateDate"});

constexpr const char* kOthers =
    "$$$/metadataui/overview/others_message=Kept by cameras and programs, and not shown here: @0";

std::vector<std::string> Split(std::string_view text, char separator) {
    std::vector<std::string> parts;
    while (!text.empty()) {
        const std::size_t end = std::min(text.find(separator), text.size());
        parts.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return parts;
}

sp<ViewItem> Labelled(const char* widget, const std::string& label) {
    auto item = std::make_shared<ViewItem>(UTF8String(widget));
    item->mLabel = label;
    return item;
}

class OverviewMaker {
public:
    explicit OverviewMaker(XMPMetaHandle tree) : mTree(tree) {
        if (const auto basic = GetViewDefinitionForName(std::string(kOwnViews) + "basic")) {
            for (const auto& item : basic->mItems) {
                mKnown.emplace(ExpressionForPath(item->mPath), item);
            }
        }
    }

    sp<ViewDefinition> Make(MediaKind kind) {
        auto view = std::make_shared<ViewDefinition>();
        view->mName = kOverview;
        view->mLabel = "$$$/metadataui/overview_label=Overview";
        view->mItems.push_back(Facts());
        for (const Section section : kKinds[static_cast<std::size_t>(kind)].mSections) {
            view->mItems.push_back(SectionOf(kSections[section]));
        }
        AddRest(*view);
        return view;
    }

private:
    sp<ViewItem> Facts() {
        mShown.insert({"corvid:ImageSize", "xmpDM:duration"});
        sp<ViewItem> facts = Labelled("section", "");
        for (const FactRow& row : kFacts) {
            for (const std::string& paths : Split(row.mPaths, ' ')) {
                if (const sp<ViewItem> fact = Fact(row, Split(paths, '+'))) {
                    facts->AddItem(fact);
                }
            }
        }
        return facts;
    }

    static sp<ViewItem> Fact(const FactRow& row, const std::vector<std::string>& expressions) {
        const sp<ViewItem> fact = Labelled("formatter", row.mLabel);
        for (const std::string& expression : expressions) {
            Path path = PathForExpression(expression);
            if (!PathEntryDefinition(path)) {
                return nullptr;
            }
            fact->AddItem(std::make_shared<ViewItem>(std::move(path)));
        }
        const bool isOne = expressions.size() == 1;
        sp<ViewItem> item = isOne ? fact->mChildItems.front() : fact;
        item->mLabel = row.mLabel;
        if (row.mFormat[0] != '\0') {
            item->SetParameter("format", UTF8String(row.mFormat));
        }
        if (!isOne) {
            item->SetParameter("separator", UTF8String(" "));
        }
        return item;
    }

    sp<ViewItem> SectionOf(const SectionRow& row) {
        sp<ViewItem> section = Labelled("section", row.mLabel);
        for (std::string path : Split(row.mPaths, ' ')) {
            if (path.front() == '@') {
                Borrow(path.substr(1), *section);
                continue;
            }
            const bool isMissed = path.front() != '-';
            path.erase(0, isMissed ? 0 : 1);
            if (const sp<ViewItem> item = ItemAt(path)) {
                if (isMissed) {
                    item->SetParameter("expected", true);
                }
                section->AddItem(item);
            }
        }
        return section;
    }

    /// As the basic view has it, else as the definition says; null for what is not known.
    sp<ViewItem> ItemAt(const std::string& expression) {
        const Path path = PathForExpression(expression);
        // Hardly any file has this schema: its fields would only repeat those of the IPTC standard.
        const bool isRare = expression.starts_with("tessera:") && (mTree == nullptr || !HasValue(mTree, path));
        if (isRare || !PathEntryDefinition(path) || !mShown.insert(expression).second) {
            return nullptr;
        }
        const auto known = mKnown.find(expression);
        auto item =
            known == mKnown.end() ? std::make_shared<ViewItem>(path) : std::make_shared<ViewItem>(*known->second);
        for (const auto& [labelled, label] : kLabels) {
            item->mLabel = labelled == expression ? label : item->mLabel;
        }
        return item;
    }

    void Borrow(const std::string& name, ViewItem& section) {
        const sp<ViewDefinition> view = GetViewDefinitionForName(std::string(kOwnViews) + name);
        for (const auto& item : view ? view->mItems : std::vector<sp<ViewItem>>()) {
            if (item->mWidgetName != "section") {
                AddNew(item, section);
                continue;
            }
            for (const auto& child : item->mLabel.empty() ? std::vector<sp<ViewItem>>() : item->mChildItems) {
                AddNew(child, section);
            }
        }
    }

    /// What the last section shows, whatever other views have it.
    static const std::set<std::string>& OfFile() {
        static const std::set<std::string> paths = [] {
            std::set<std::string> made;
            for (const std::string& path : Split(kSections[kFile].mPaths, ' ')) {
                made.insert(path.substr(path.front() == '-' ? 1 : 0));
            }
            return made;
        }();
        return paths;
    }

    /// Adds an item that shows anything that is not shown yet.
    void AddNew(const sp<ViewItem>& item, ViewItem& section) {
        std::vector<sp<ViewItem>> shown = item->mChildItems;
        shown.push_back(item);
        bool isNew = false;
        for (const auto& part : shown) {
            const std::string expression = ExpressionForPath(part->mPath);
            const bool isOfFile = OfFile().contains(expression);
            isNew = (!expression.empty() && !isOfFile && mShown.insert(expression).second) || isNew;
        }
        if (isNew) {
            section.AddItem(item);
        }
    }

    /// What else people recorded by schema, and how much there is that programs did.
    void AddRest(ViewDefinition& view) {
        std::set<std::string> tops;
        for (const std::string& expression : mShown) {
            tops.insert(PropertyOf(expression));
        }
        std::map<std::string, sp<ViewItem>> sections;
        std::size_t others = 0;
        for (const XMPNode& node : mTree != nullptr ? XMPNodes(mTree) : std::vector<XMPNode>()) {
            if (PropertyOf(node.mPath) != node.mPath || tops.contains(node.mPath)) {
                continue;
            }
            const Path path = PathForExpression(node.mPath);
            const sp<SchemaDefinition> schema = NamespaceDefinition(node.mNamespace);
            if (!schema || !PathEntryDefinition(path) || path.mInternal) {
                ++others;
                continue;
            }
            sp<ViewItem>& section = sections[node.mNamespace];
            if (!section) {
                section = Labelled("section", Shown(schema->mLabel));
                view.mItems.push_back(section);
            }
            section->AddItem(std::make_shared<ViewItem>(path));
        }
        if (others > 0) {
            const auto note = std::make_shared<ViewItem>(UTF8String("note"));
            note->SetParameter("message", Localized(kOthers, {std::to_string(others)}));
            view.mItems.push_back(note);
        }
    }

    XMPMetaHandle mTree;
    std::map<std::string, sp<ViewItem>> mKnown;
    std::set<std::string> mShown;
};

/// Whether one of two XMP dates says what the other does, with more or fewer parts; the zone is the last of them.
bool IsSameMoment(const std::string& left, const std::string& right) {
    constexpr std::size_t kDay = 10;     // "2008-05-30"
    constexpr std::size_t kSecond = 19;  // "2008-05-30T15:56:01"
    const std::size_t size = std::min({left.size(), right.size(), kSecond});
    return size >= kDay && left.compare(0, size, right, 0, size) == 0;
}

bool SaysWhenCreated(const PanelItem& item) {
    return std::find(kCreated.begin(), kCreated.end(), item.mPath) != kCreated.end();
}

/// Leaves of dates that are one moment the first, with all parts that any of them has.
void DropSameMoments(std::vector<PanelItem>& items) {
    std::vector<PanelItem> kept;
    for (PanelItem& item : items) {
        // A section may have any number of other items.
        const auto from = SaysWhenCreated(item) ? kept.begin() : kept.end();
        const auto same = std::find_if(from, kept.end(), [&](const PanelItem& other) {
            return SaysWhenCreated(other) && IsSameMoment(other.mRaw, item.mRaw);
        });
        if (same == kept.end()) {
            kept.push_back(std::move(item));
        } else if (item.mRaw.size() > same->mRaw.size()) {
            same->mRaw = item.mRaw;
            same->mValue = item.mValue;
        }
    }
    items = std::move(kept);
}

/// Of facts that share a label the first; elsewhere what is said twice is said once.
void DropRepeated(std::vector<PanelItem>& items, bool areFacts) {
    std::set<std::pair<std::string, std::string>> seen;
    std::erase_if(items, [&](const PanelItem& item) {
        const bool isText = item.mItems.empty() || item.mKind == PanelItem::Kind::kFormatter;
        return isText && item.HasValue() && item.mKind != PanelItem::Kind::kSeparator &&
               !seen.emplace(item.mLabel, areFacts ? std::string() : item.mValue).second;
    });
}

}  // namespace

MediaKind MediaKindOf(const std::string& file, XMPMetaHandle tree) {
    constexpr std::string_view kFilms = " 3g2 3gp asf avi m4v mkv mov mp4 mpg mpeg mts mxf ogv webm wmv ";
    constexpr std::string_view kSounds = " aac aif aifc aiff flac m4a mp3 oga ogg opus wav wma ";
    std::string format;
    if (tree != nullptr) {
        GetRawStringValue(tree, PathForExpression("dc:format"), format);
    }
    const std::string extension = " " + Lower(file.substr(file.rfind('.') + 1)) + " ";
    if (format.starts_with("video/") || kFilms.find(extension) != std::string_view::npos) {
        return MediaKind::kFilm;
    }
    const bool isSound = format.starts_with("audio/") || kSounds.find(extension) != std::string_view::npos;
    return isSound ? MediaKind::kSound : MediaKind::kPicture;
}

sp<ViewDefinition> MakeOverview(MediaKind kind, XMPMetaHandle tree) {
    return OverviewMaker(tree).Make(kind);
}

void ShortenOverview(Panel& panel, bool keepEmpty) {
    std::set<std::string> recorded;
    std::vector<std::string> expected;
    for (const PanelItem& section : panel.mItems) {
        for (const PanelItem& item : section.mItems) {
            if (item.HasValue()) {
                recorded.insert(item.mLabel);
            } else if (item.mIsExpected) {
                expected.push_back(item.mLabel);
            }
        }
    }
    std::copy_if(expected.begin(), expected.end(), std::back_inserter(panel.mUnrecorded),
                 [&](const std::string& label) { return !recorded.contains(label); });
    if (!keepEmpty) {
        Prune(panel.mItems);
    }
    for (PanelItem& section : panel.mItems) {
        DropSameMoments(section.mItems);
        DropRepeated(section.mItems, section.mKind == PanelItem::Kind::kSection && section.mLabel.empty());
    }
}

std::vector<sp<ViewDefinition>> ViewsByUse(MediaKind kind) {
    const auto& order = kKinds[static_cast<std::size_t>(kind)].mViews;
    const auto rank = [&](const sp<ViewDefinition>& view) {
        const std::string_view name = view->mName;
        const bool isOwn = name.starts_with(kOwnViews);
        const std::string_view known = isOwn ? name.substr(kOwnViews.size()) : std::string_view();
        const bool isLast = std::find(kLastViews.begin(), kLastViews.end(), known) != kLastViews.end();
        return std::find(order.begin(), order.end(), known) - order.begin() + (isLast ? 1 : 0);
    };
    std::vector<sp<ViewDefinition>> views;
    for (const sp<ViewDefinition>& view : CommonViewDefinitions()) {
        views.push_back(view);
    }
    std::stable_sort(views.begin(), views.end(),
                     [&](const auto& left, const auto& right) { return rank(left) < rank(right); });
    return views;
}

}  // namespace zephmeta

// A small desk for photos: photo_desk PACKAGE-FOLDER FILE...
//
// Loads a package of its own, shows a panel of the first photo, edits a title, a structure and a list in it while it
// watches, and then gives all photos a credit as one. Whatever can fail is told to the user.
#include <zephcore/localizer.h>
#include <zephcore/text.h>
#include <zephmetadata/zephmetadata.h>

#include <functional>
#include <iostream>
#include <string>
#include <vector>

using zephmetadata::PathForExpression;
using Photo = zephmetadata::sp<zephmetadata::MediaProvider>;

namespace {

std::string Shown(const zephmetadata::UTF16String& text) {
    return zephcore::UTF16to8(zephcore::ResolveDisplayEscapes(text));
}

/// What went wrong, for the user; the exit status follows from it.
struct Troubles {
    void Add(const std::string& what) {
        std::cerr << what << '\n';
        mHasAny = true;
    }
    void Add(const zephmetadata::Path& path, const zephmetadata::EditOutcome& outcome) {
        if (outcome.mResult == zephmetadata::kEditResult_Refused) {
            Add(ExpressionForPath(path) + ": " + Describe(outcome));
        }
    }
    void Add(const zephmetadata::WriteReport& report) {
        for (const zephmetadata::WriteFailure& failure : report.mFailures) {
            Add(Describe(failure));
        }
    }
    void Add(zephmetadata::ErrorScope& errors) {
        for (const zephmetadata::ErrorInfo& error : errors.Take()) {
            Add(Describe(error));
        }
    }

    bool mHasAny = false;
};

/// One line for each value that a view shows and a photo has.
class Lines : public zephmetadata::ViewBuilderInterface {
public:
    explicit Lines(zephmetadata::XMPMetaHandle tree) : mTree(tree) {}

    void BeginView(const zephmetadata::ViewHeader& header) override {
        std::cout << "== " << Shown(zephmetadata::LocalizedText(header.mLabel)) << '\n';
    }
    void AddViewItem(const zephmetadata::sp<zephmetadata::ViewItem>& item) override {
        std::string text;
        if (GetValue(mTree, item->GetPath(), text)) {
            std::cout << Shown(item->GetLabel()) << ": " << text << '\n';
        }
        for (const auto& child : item->mChildItems) {
            AddViewItem(child);
        }
    }
    void EndView(zephmetadata::ViewDefinition& /*view*/) override {}

private:
    zephmetadata::XMPMetaHandle mTree;
};

void ShowPanel(const Photo& photo, const std::string& name, Troubles& troubles) {
    const auto view = zephmetadata::GetViewDefinitionForName(name);
    if (!view) {
        troubles.Add(name + ": no such view");
        return;
    }
    Lines lines(*zephmetadata::MetaDataReadAccess(photo));
    BuildView(view, lines);
}

void EditOne(const Photo& photo, Troubles& troubles) {
    const auto watch =
        std::make_shared<std::function<void(zephmetadata::XMPMetaHandle)>>([](zephmetadata::XMPMetaHandle tree) {
            std::string title;
            GetValue(tree, PathForExpression("dc:title"), title);
            std::cout << "the title is now " << title << '\n';
        });
    photo->NotifyWhenMetaDataWritten(watch);
    const auto title = PathForExpression("dc:title");
    const auto city = PathForExpression("Iptc4xmpCore:CreatorContactInfo/Iptc4xmpCore:CiAdrCity");
    const auto rating = PathForExpression("xmp:Rating");
    zephmetadata::ValueEdit keyword;
    keyword.mKind = zephmetadata::kEditKind_Add;
    keyword.mPath = PathForExpression("dc:subject");
    keyword.mValue = "desk";
    zephmetadata::MetaDataUpdateAccess access(photo);
    troubles.Add(title, access.Set(title, "From the desk"));
    troubles.Add(city, access.Set(city, u"Marlhaven"));
    troubles.Add(keyword.mPath, access.Apply(keyword));
    troubles.Add(rating, access.Set(rating, 9L));  // no such rating: refused, and said so
    troubles.Add(access.Commit());
    photo->RemoveMetaDataWrittenNotification(watch);
}

void EditTogether(const std::vector<zephmetadata::sp<zephmetadata::MetaDataProvider>>& photos, Troubles& troubles) {
    const auto selection = std::make_shared<zephmetadata::AggregateProvider>(photos);
    const auto credit = PathForExpression("photoshop:Credit");
    zephmetadata::MetaDataUpdateAccess access(selection);
    troubles.Add(credit, access.Set(credit, "The desk"));
    troubles.Add(access.Commit());
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        return 2;
    }
    const zephmetadata::Library library;
    Troubles troubles;
    zephmetadata::LoadAllViewDefinitions();
    zephmetadata::RegisterBundledPackages();  // the IPTC fields among them
    std::string view = "com.corvid.xmp.view.basic";
    {
        zephmetadata::ErrorScope errors;
        if (const auto package = zephmetadata::LoadExtensionPackage(zephcore::PathFromNative(argv[1]))) {
            std::cout << "loaded " << Shown(package->name) << '\n';
            view = package->views.empty() ? view : package->views.front();
        }
        troubles.Add(errors);
    }
    std::vector<zephmetadata::sp<zephmetadata::MetaDataProvider>> photos;
    for (int i = 2; i < argc; ++i) {
        const auto photo = zephmetadata::OpenMedia(zephcore::PathFromNative(argv[i]));
        // A file without metadata gets its first.
        if (*zephmetadata::MetaDataReadAccess(photo) == nullptr && !photo->StartMetaData()) {
            troubles.Add(argv[i] + (": " + Describe(photo->LastRead())));
            continue;
        }
        if (photos.empty()) {
            EditOne(photo, troubles);
            ShowPanel(photo, view, troubles);
        }
        photos.push_back(photo);
    }
    if (!photos.empty()) {
        EditTogether(photos, troubles);
    }
    return troubles.mHasAny ? 1 : 0;
}

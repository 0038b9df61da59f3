// Views documents, from parsing to a host that walks the views.
#include "library_session.h"
#include "support.h"
#include "zephmetadata/library.h"
#include "zephmetadata/views.h"

using namespace zephmetadata;

namespace {

/// Does with the items what hosts do: asks for all that there is to show.
class Walker : public ViewBuilderInterface {
public:
    void BeginView(const ViewHeader& header) override {
        fuzz::Require(!header.mName.empty(), "a view has a name");
        mExpected = header.mItemCount;
    }
    void EndView(ViewDefinition& /*view*/) override {
        fuzz::Require(mItems == mExpected, "a view has as many items as announced");
    }
    void AddViewItem(const sp<ViewItem>& item) override {
        ++mItems;
        fuzz::Require(!item->mWidgetName.empty() || IsWhole(item->mPath), "an item at the top shows something");
        Walk(*item);
    }

private:
    static bool IsWhole(const Path& path) { return !path.mNamespace.empty() && !path.mPathDescription.empty(); }

    static void Walk(const ViewItem& item) {
        item.GetLabel();
        item.GetDescription();
        fuzz::Require(item.mPath.mNamespace.empty() || PathEntryDefinition(item.mPath) != nullptr,
                      "the path of an item has a definition");
        for (const auto& [key, text] : item.mParameters) {
            fuzz::Require(item.GetParameter(key, UTF8String()) == text, "a text parameter is unchanged");
            item.GetParameter(key, 0);
            item.GetParameter(key, 0.0);
            LocalizedText(text, {u"argument"});
        }
        for (const auto& child : item.mChildItems) {
            Walk(*child);
        }
    }

    std::size_t mExpected = 0;
    std::size_t mItems = 0;
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    fuzz::StartLibrary();
    for (const auto& view : ParseViewDefinitionsFromBuffer(std::string(fuzz::Text(data, size)), u"fuzz")) {
        Walker walker;
        BuildView(view, walker);
    }
    return 0;
}

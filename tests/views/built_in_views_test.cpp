#include <fstream>
#include <map>
#include <sstream>

#include "support/library_test.h"
#include "zephcore/text.h"
#include "zephmetadata/views.h"

namespace zephmetadata {
namespace {

using Row = std::vector<std::string>;

/// The rows of catalogue.tsv without its comment, split at tabs.
std::vector<Row> ReadCatalogue() {
    std::ifstream in(ZEPHMETADATA_SOURCE_DIR "/tests/views/catalogue.tsv");
    std::vector<Row> rows;
    for (std::string line; std::getline(in, line);) {
        if (line.starts_with('#')) {
            continue;
        }
        Row row(1);
        for (const char c : line) {
            if (c == '\t') {
                row.emplace_back();
            } else {
                row.back() += c;
            }
        }
        rows.push_back(row);
    }
    return rows;
}

/// A view as rows of the catalogue, from "view" on.
class ViewRows {
public:
    explicit ViewRows(std::string resource) : mResource(std::move(resource)) {}

    std::vector<Row> Of(const ViewDefinition& view) {
        for (const auto& item : view.mItems) {
            AddItem(*item, 0);
        }
        std::ostringstream elements;
        for (const auto& [kind, count] : mCounts) {
            elements << (elements.str().empty() ? "" : " ") << kind << '=' << count;
        }
        mRows.insert(mRows.begin(), {"view", mResource, view.mName, view.mLabel, elements.str()});
        return mRows;
    }

private:
    void AddItem(const ViewItem& item, int depth) {
        const bool showsProperty = !item.mPath.mNamespace.empty();
        const std::string kind = showsProperty ? "property" : item.mWidgetName;
        std::string text = showsProperty ? ExpressionForPath(item.mPath) : "";
        if (kind == "section") {
            text = zephcore::UTF16to8(item.GetLabel());
        }
        mRows.push_back({"item", mResource, std::to_string(depth), kind, text});
        ++mCounts[kind];
        for (const auto& choice : item.mChoices) {
            EXPECT_NE(choice->mLabel, u"") << mResource << ' ' << text << ' ' << choice->mRawValue;
            ++mCounts["choice"];
        }
        for (const auto& child : item.mChildItems) {
            AddItem(*child, depth + 1);
        }
    }

    std::string mResource;
    std::vector<Row> mRows;
    std::map<std::string, int> mCounts;
};

class BuiltInViews : public support::LibraryTest {
protected:
    BuiltInViews() { LoadAllViewDefinitions(); }
};

TEST_F(BuiltInViews, ShowExactlyWhatTheCatalogueLists) {
    std::vector<std::vector<Row>> expected;
    for (const Row& row : ReadCatalogue()) {
        if (row[0] == "view") {
            expected.emplace_back();
        }
        expected.back().push_back(row);
    }
    ASSERT_EQ(expected.size(), 10U);
    std::size_t at = 0;
    for (const sp<ViewDefinition>& view : CommonViewDefinitions()) {
        ASSERT_LT(at, expected.size()) << view->mName;
        EXPECT_EQ(ViewRows(expected[at][0][1]).Of(*view), expected[at]) << view->mName;
        ++at;
    }
    EXPECT_EQ(at, expected.size());
    EXPECT_FALSE(HasErrors()) << Records().front();
}

/// Every text of an item that is shown, by what it is.
std::map<std::string, std::string> TextsOf(const ViewItem& item) {
    std::map<std::string, std::string> texts(item.mParameters.begin(), item.mParameters.end());
    texts["label"] = item.mLabel;
    texts["description"] = item.mDescription;
    for (const auto& choice : item.mChoices) {
        texts["choice " + choice->mRawValue] = zephcore::UTF16to8(choice->mLabelZString);
    }
    return texts;
}

void CheckTexts(const ViewItem& item, std::map<std::string, std::string>& textsByKey) {
    if (!item.mPath.mNamespace.empty()) {
        EXPECT_NE(item.GetLabel(), u"") << ExpressionForPath(item.mPath);
    }
    for (const auto& [what, text] : TextsOf(item)) {
        if (!text.starts_with("$$$")) {
            continue;
        }
        const std::string key = text.substr(0, text.find('='));
        EXPECT_TRUE(key.starts_with("$$$/metadataui/view/") || key.starts_with("$$$/xmp/")) << what << ' ' << text;
        EXPECT_GT(text.size(), key.size() + 1) << what << " is empty: " << text;
        EXPECT_EQ(textsByKey.emplace(key, text).first->second, text) << "two texts for one key";
    }
    for (const auto& child : item.mChildItems) {
        CheckTexts(*child, textsByKey);
    }
}

TEST_F(BuiltInViews, HaveATextBehindEveryKey) {
    std::map<std::string, std::string> textsByKey;
    for (const sp<ViewDefinition>& view : CommonViewDefinitions()) {
        EXPECT_TRUE(view->mDescription.starts_with("$$$/metadataui/view/")) << view->mName;
        for (const auto& item : view->mItems) {
            CheckTexts(*item, textsByKey);
        }
    }
    EXPECT_GT(textsByKey.size(), 50U);
}

}  // namespace
}  // namespace zephmetadata

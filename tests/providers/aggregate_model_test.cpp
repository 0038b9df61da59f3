#include <algorithm>
#include <map>
#include <random>

#include "support/test_provider.h"
#include "support/values_test.h"

namespace zephmetadata {
namespace {

using support::TestProvider;

using Texts = std::vector<std::string>;
using Languages = std::map<std::string, std::string>;

/// What one source holds, without the library: the model knows no trees and no merging. An edit of several sources is
/// the same edit of each.
struct Model {
    std::map<std::string, std::string> mSimple;
    std::map<std::string, Texts> mArrays;
    Languages mTitle;

    friend bool operator==(const Model&, const Model&) = default;
    friend std::ostream& operator<<(std::ostream& out, const Model& model) {
        for (const auto& [path, text] : model.mSimple) {
            out << path << "=" << text << " ";
        }
        for (const auto& [path, items] : model.mArrays) {
            out << path << "=(";
            std::copy(items.begin(), items.end(), std::ostream_iterator<std::string>(out, ","));
            out << ") ";
        }
        for (const auto& [language, text] : model.mTitle) {
            out << "dc:title[" << language << "]=" << text << " ";
        }
        return out;
    }
};

const Texts kSimple = {"dc:source",
                       "dc:format",
                       "xmp:Label",
                       "xmpMM:DocumentID",
                       "xmpMM:DerivedFrom/stRef:documentID",
                       "xmpMM:DerivedFrom/stRef:instanceID",
                       "Iptc4xmpCore:CreatorContactInfo/Iptc4xmpCore:CiAdrCity"};
const Texts kArrays = {"dc:subject", "dc:creator"};
const Texts kLanguages = {"x-default", "de", "fr"};
const std::string kIdentifier = "xmpMM:DocumentID";

class AggregateModel : public support::TreeTest, public ::testing::WithParamInterface<unsigned> {
protected:
    std::size_t Below(std::size_t count) { return mRandom() % count; }
    bool Chance(unsigned outOfTen) { return Below(10) < outOfTen; }
    template <typename T>
    const T& One(const std::vector<T>& of) {
        return of[Below(of.size())];
    }
    std::string Text() { return std::string(1, static_cast<char>('a' + Below(3))); }
    /// One that no source holds yet.
    std::string NewText() { return "n" + std::to_string(++mTexts); }

    Model RandomModel() {
        Model model;
        for (const std::string& path : kSimple) {
            if (Chance(6)) {
                model.mSimple[path] = Text();
            }
        }
        for (const std::string& path : kArrays) {
            if (Chance(6)) {
                model.mArrays[path] = Chance(5) ? Texts{"x"} : Texts{"x", Text()};
            }
        }
        for (const std::string& language : Chance(7) ? kLanguages : Texts()) {
            if (language == "x-default" || Chance(4)) {
                model.mTitle[language] = Text();
            }
        }
        return model;
    }

    static XMPMetaPtr TreeOf(const Model& model) {
        XMPMetaPtr tree = CreateXMPMeta();
        for (const auto& [path, text] : model.mSimple) {
            EXPECT_TRUE(SetValue(tree.get(), At(path), text)) << path;
        }
        for (const auto& [path, items] : model.mArrays) {
            std::string joined = items.front();
            std::for_each(items.begin() + 1, items.end(), [&](const std::string& item) { joined += "; " + item; });
            EXPECT_TRUE(SetValue(tree.get(), At(path), joined));
        }
        if (!model.mTitle.empty()) {
            SetLanguage(tree.get(), At("dc:title"), "x-default", model.mTitle.at("x-default"));
        }
        for (const auto& [language, text] : model.mTitle) {
            SetLanguage(tree.get(), At("dc:title"), language, text);
        }
        return tree;
    }

    static Model ModelOf(XMPMetaHandle tree) {
        Model model;
        for (const std::string& path : kSimple) {
            std::string text;
            if (GetRawStringValue(tree, At(path), text)) {
                model.mSimple[path] = text;
            }
        }
        for (const std::string& path : kArrays) {
            if (HasValue(tree, At(path))) {
                model.mArrays[path] = GetItems(tree, At(path));
            }
        }
        model.mTitle = GetLanguages(tree, At("dc:title"));
        return model;
    }

    /// One edit of the aggregate's tree and, when the tree took it, of the models.
    void EditSimple(XMPMetaHandle tree, std::vector<Model>& models) {
        const std::string path = One(kSimple);
        const std::string text = Chance(3) ? std::string() : Text();
        const bool changed = text.empty() ? DeleteValue(tree, At(path)) : SetValue(tree, At(path), text);
        if (!changed) {
            return;
        }
        const std::size_t field = path.find('/');
        mChanges.push_back(At(field != std::string::npos && Chance(3) ? path.substr(0, field) : path));
        for (Model& model : models) {
            if (path == kIdentifier) {
                continue;
            }
            if (text.empty()) {
                model.mSimple.erase(path);
            } else {
                model.mSimple[path] = text;
            }
        }
    }

    void EditArray(XMPMetaHandle tree, std::vector<Model>& models) {
        const std::string path = One(kArrays);
        const std::size_t kind = Below(3);
        if (kind == 0) {
            if (DeleteValue(tree, At(path))) {
                std::for_each(models.begin(), models.end(), [&](Model& model) { model.mArrays.erase(path); });
                mChanges.push_back(At(path));
            }
        } else if (kind == 1) {
            const std::string item = NewText();
            if (SetValue(tree, At(path), "x; " + item)) {
                std::for_each(models.begin(), models.end(), [&](Model& model) { model.mArrays[path] = {"x", item}; });
                mChanges.push_back(At(path));
            }
        } else {
            const std::string item = NewText();
            const int count = CountArrayItems(tree, At(path));
            EXPECT_TRUE(AddArrayItem(tree, At(path), count));
            EXPECT_TRUE(SetValue(tree, CreatePathFromArrayItem(At(path), count + 1), item));
            std::for_each(models.begin(), models.end(), [&](Model& model) { model.mArrays[path].push_back(item); });
            mChanges.push_back(Chance(5) ? At(path) : CreatePathFromArrayItem(At(path), count + 1));
        }
    }

    void EditTitle(XMPMetaHandle tree, std::vector<Model>& models) {
        const std::string language = One(kLanguages);
        const std::string text = Chance(3) ? std::string() : NewText();
        if (!SetLanguage(tree, At("dc:title"), language, text)) {
            return;
        }
        mChanges.push_back(At("dc:title"));
        for (Model& model : models) {
            if (text.empty()) {
                model.mTitle.erase(language);
                continue;
            }
            if (model.mTitle.empty()) {
                model.mTitle["x-default"] = text;  // what a first text brings along
            }
            model.mTitle[language] = text;
        }
    }

    /// Edits through the aggregate in one access; the sources in @p readOnly may not write one of the schemas.
    void EditAll(const sp<AggregateProvider>& aggregate, std::vector<Model>& models) {
        std::vector<Model> edited = models;
        mChanges.clear();
        {
            MetaDataUpdateAccess access(aggregate);
            for (std::size_t edits = 1 + Below(4); edits > 0 && *access != nullptr; --edits) {
                Chance(5) ? EditSimple(*access, edited) : EditArray(*access, edited);
            }
            if (Chance(4) && *access != nullptr) {
                EditTitle(*access, edited);
            }
            std::for_each(mChanges.begin(), mChanges.end(), [&](const Path& path) { access.AddChange(path); });
        }
        for (std::size_t i = 0; i < models.size(); ++i) {
            const auto& closed = mSources[i]->mReadOnlyNamespaces;
            const bool isClosed = std::any_of(mChanges.begin(), mChanges.end(),
                                              [&](const Path& path) { return closed.contains(path.mNamespace); });
            models[i] = isClosed ? models[i] : edited[i];
        }
    }

    /// What a merged tree has to show at each simple path.
    void ExpectShown(const sp<AggregateProvider>& aggregate, const std::vector<Model>& models) const {
        const MetaDataReadAccess access(aggregate);
        for (const std::string& path : kSimple) {
            std::set<std::string> texts;
            for (const Model& model : models) {
                texts.insert(model.mSimple.contains(path) ? model.mSimple.at(path) : "");
            }
            std::string text;
            GetValueResult result = kGetValueResult_NoDefinition;
            GetRawStringValue(*access, At(path), text, &result);
            const auto wanted = texts.size() > 1         ? kGetValueResult_Mixed
                                : texts.begin()->empty() ? kGetValueResult_NoValue
                                                         : kGetValueResult_Success;
            EXPECT_EQ(result, wanted) << path;
            EXPECT_EQ(text, wanted == kGetValueResult_Success ? *texts.begin() : "") << path;
        }
    }

    void ExpectSources(const std::vector<Model>& models) const {
        for (std::size_t i = 0; i < models.size(); ++i) {
            EXPECT_EQ(ModelOf(*MetaDataReadAccess(mSources[i])), models[i]) << "source " << i;
        }
    }

    void RunCase() {
        std::vector<Model> models(2 + Below(4));
        mSources.clear();
        const Model common = RandomModel();
        for (Model& model : models) {
            model = Chance(4) ? common : RandomModel();
            const XMPMetaPtr tree = TreeOf(model);
            model = ModelOf(tree.get());
            mSources.push_back(std::make_shared<TestProvider>(tree.get()));
            mSources.back()->mOwnChangeList = true;
            if (Chance(1)) {
                mSources.back()->mReadOnlyNamespaces = {At("dc:source").mNamespace};
            }
        }
        const auto aggregate =
            std::make_shared<AggregateProvider>(std::vector<sp<MetaDataProvider>>(mSources.begin(), mSources.end()));
        ExpectShown(aggregate, models);
        for (std::size_t round = 1 + Below(3); round > 0; --round) {
            EditAll(aggregate, models);
            ExpectSources(models);
            if (Chance(5)) {
                mSources[Below(mSources.size())]->MetaDataChanged();
                ExpectShown(aggregate, models);
            }
        }
        // The sources outlive the aggregate, or it them.
        std::shuffle(mSources.begin(), mSources.end(), mRandom);
        mSources.resize(Below(mSources.size() + 1));
    }

    std::mt19937 mRandom{GetParam()};
    int mTexts = 0;
    std::vector<sp<TestProvider>> mSources;
    std::vector<Path> mChanges;
};

TEST_P(AggregateModel, SourcesHoldWhatTheModelSays) {
    constexpr int kCases = 1000;
    for (int i = 0; i < kCases && !HasFailure(); ++i) {
        SCOPED_TRACE("case " + std::to_string(i));
        RunCase();
    }
    EXPECT_FALSE(HasErrors()) << Records().front();
}

INSTANTIATE_TEST_SUITE_P(Seeds, AggregateModel, ::testing::Range(1U, 11U));

}  // namespace
}  // namespace zephmetadata

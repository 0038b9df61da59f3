#include "collections/index_reader.h"

#include <sqlite3.h>

#include <charconv>
#include <optional>
#include <stdexcept>

#include "collections/index_format.h"
#include "text.h"
#include "zephmetadata/values.h"

namespace zephmeta {

namespace {

/// The values of one file after the other as an index has them.
class IndexValues : public ValueSource {
public:
    explicit IndexValues(const Database& database)
        : mRows(database, "SELECT stored, language FROM value WHERE file = ?1 AND path = ?2 ORDER BY item"),
          mItem(database, "SELECT stored FROM value WHERE file = ?1 AND path = ?2 AND item = ?3"),
          mBelow(database,
                 "SELECT 1 FROM value WHERE file = ?1 AND path > ?2 || '/' AND path < ?2 || '0' UNION ALL "
                 "SELECT 1 FROM value WHERE file = ?1 AND path > ?2 || '[' AND path < ?2 || '\\' UNION ALL "
                 "SELECT 1 FROM value WHERE file = ?1 AND path = ?2 LIMIT 1") {}

    void SetFile(std::int64_t file) { mFile = file; }

    std::vector<std::string> Texts(const Target& target) const override {
        const std::string path = zephmetadata::ExpressionForPath(target.mPath);
        const bool isAlternative = zephmetadata::PrimitiveTypeOfPath(target.mPath) == zephmetadata::kPrimitiveType_Alt;
        std::vector<Row> rows = RowsAt(path);
        if (isAlternative && !target.mLanguage.empty()) {
            std::erase_if(rows, [&](const Row& row) { return Lower(row.mLanguage) != Lower(target.mLanguage); });
        }
        std::vector<std::string> texts;
        for (const Row& row : rows) {
            texts.insert(Lower(row.mLanguage) == "x-default" ? texts.begin() : texts.end(), row.mStored);
        }
        const bool isOne = !isAlternative && !zephmetadata::IsPathAnArray(target.mPath, true);
        return isOne ? AsOne(rows, texts, path) : texts;
    }

    bool Has(const Target& target) const override {
        const std::string path = zephmetadata::ExpressionForPath(target.mPath);
        return mBelow.Bind(1, mFile).BindText(2, path).Once() || ItemAt(path);
    }

private:
    struct Row {
        std::string mStored;
        std::string mLanguage;
    };

    std::vector<Row> RowsAt(const std::string& path) const {
        std::vector<Row> rows;
        mRows.Bind(1, mFile).BindText(2, path);
        while (mRows.Next()) {
            rows.push_back({mRows.Text(0), mRows.Text(1)});
        }
        return rows;
    }

    /// The text of a path such as dc:subject[2], which stands in the rows of its list.
    std::optional<std::string> ItemAt(const std::string& path) const {
        const std::size_t open = path.ends_with(']') ? path.rfind('[') : std::string::npos;
        std::int64_t number = 0;
        if (open == std::string::npos ||
            std::from_chars(&path[open + 1], path.data() + path.size(), number).ec != std::errc()) {
            return std::nullopt;
        }
        mItem.Bind(1, mFile).BindText(2, std::string_view(path).substr(0, open)).Bind(3, number);
        std::optional<std::string> text;
        while (mItem.Next()) {
            text = mItem.Text(0);
        }
        return text;
    }

    /// What a list, or a text in several languages, is as one text where no definition says that it is more.
    std::vector<std::string> AsOne(const std::vector<Row>& rows, const std::vector<std::string>& texts,
                                   const std::string& path) const {
        if (rows.empty()) {
            const auto item = ItemAt(path);
            return item ? std::vector<std::string>{*item} : std::vector<std::string>();
        }
        std::string joined = texts.front();
        for (std::size_t i = 1; i < texts.size() && rows.front().mLanguage.empty(); ++i) {
            joined.append("; ").append(texts[i]);
        }
        return {joined};
    }

    std::int64_t mFile = 0;
    // Asking changes where a statement is, and nothing else.
    mutable Statement mRows;
    mutable Statement mItem;
    mutable Statement mBelow;
};

}  // namespace

IndexReader::IndexReader(const std::string& name) : mDatabase((CheckIsFile(name), name)) {
    mDatabase.Run("PRAGMA query_only=ON");
    CheckIsIndex(mDatabase);
}

void IndexReader::ForEach(const std::string& words, const Visit& visit) const {
    const char* const matching = " AND id IN (SELECT rowid FROM words WHERE words MATCH ?1)";
    Statement files(mDatabase, std::string("SELECT id, name FROM file WHERE error IS NULL") +
                                   (words.empty() ? "" : matching) + " ORDER BY name");
    if (!words.empty()) {
        files.BindText(1, words);
    }
    IndexValues values(mDatabase);
    try {
        while (files.Next()) {
            values.SetFile(files.Number(0));
            visit(files.Text(1), values);
        }
    } catch (const DatabaseError& error) {
        if (!words.empty() && error.Code() == SQLITE_ERROR) {
            throw std::invalid_argument("--text: " + std::string(error.what()) +
                                        "; words with such signs stand in double quotes");
        }
        throw;
    }
}

}  // namespace zephmeta

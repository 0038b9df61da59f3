#include "batch/condition.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <vector>

#include "console.h"
#include "listing.h"
#include "suggestions.h"
#include "zephmetadata/values.h"

namespace zephmeta {

namespace {

using zephmetadata::Path;
using ConditionPointer = std::unique_ptr<const Condition>;

class Both : public Condition {
public:
    Both(ConditionPointer left, ConditionPointer right, bool isAnd)
        : mLeft(std::move(left)), mRight(std::move(right)), mIsAnd(isAnd) {}
    bool Holds(const ValueSource& values) const override {
        return mLeft->Holds(values) == mIsAnd ? mRight->Holds(values) : !mIsAnd;
    }

private:
    ConditionPointer mLeft;
    ConditionPointer mRight;
    bool mIsAnd;
};

class Not : public Condition {
public:
    explicit Not(ConditionPointer inner) : mInner(std::move(inner)) {}
    bool Holds(const ValueSource& values) const override { return !mInner->Holds(values); }

private:
    ConditionPointer mInner;
};

class Exists : public Condition {
public:
    explicit Exists(Target target) : mTarget(std::move(target)) {}
    bool Holds(const ValueSource& values) const override {
        return !values.Texts(mTarget).empty() || values.Has(mTarget);
    }

private:
    Target mTarget;
};

enum class Relation { kEqual, kUnequal, kLess, kLessOrEqual, kGreater, kGreaterOrEqual, kContains };

struct RelationRow {
    std::string_view mWritten;
    Relation mRelation;
};

/// The longer ones first.
constexpr auto kRelations = std::to_array<RelationRow>({{"!=", Relation::kUnequal},
                                                        {"<=", Relation::kLessOrEqual},
                                                        {">=", Relation::kGreaterOrEqual},
                                                        {"==", Relation::kEqual},
                                                        {"=", Relation::kEqual},
                                                        {"<", Relation::kLess},
                                                        {">", Relation::kGreater},
                                                        {"has", Relation::kEqual},
                                                        {"contains", Relation::kContains}});

std::optional<double> NumberIn(std::string_view text) {
    double number = 0;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data(), end, number);
    if (error != std::errc()) {
        return std::nullopt;
    }
    if (rest == end) {
        return number;
    }
    double divisor = 0;  // a rational: 1/250
    const auto [last, noDivisor] = std::from_chars(rest + 1, end, divisor);
    const bool isRational = *rest == '/' && noDivisor == std::errc() && last == end && divisor != 0;
    return isRational ? std::optional(number / divisor) : std::nullopt;
}

bool IsDatePath(const Path& path) {
    const auto entry = zephmetadata::PathEntryDefinition(path);
    const auto type = entry ? zephmetadata::PropertyTypeOf(*entry) : nullptr;
    return type && type->mName == "date";
}

class Compares : public Condition {
public:
    Compares(Target target, Relation relation, std::string value)
        : mTarget(std::move(target)),
          mRelation(relation),
          mValue(std::move(value)),
          mLower(Lower(mValue)),
          mNumber(NumberIn(mValue)),
          mIsDate(IsDatePath(mTarget.mPath)) {}

    bool Holds(const ValueSource& values) const override {
        const std::vector<std::string> texts = values.Texts(mTarget);
        if (mRelation == Relation::kUnequal) {
            return std::none_of(texts.begin(), texts.end(), [&](const auto& text) { return Order(text) == 0; });
        }
        return std::any_of(texts.begin(), texts.end(), [&](const auto& text) { return IsMet(text); });
    }

private:
    bool IsMet(const std::string& text) const {
        if (mRelation == Relation::kContains) {
            return Lower(text).find(mLower) != std::string::npos;
        }
        const int order = Order(text);
        switch (mRelation) {
            case Relation::kLess:
                return order < 0;
            case Relation::kLessOrEqual:
                return order <= 0;
            case Relation::kGreater:
                return order > 0;
            case Relation::kGreaterOrEqual:
                return order >= 0;
            default:
                return order == 0;
        }
    }

    /// Less than, equal to or greater than 0, as the stored text comes before, with or after the value.
    int Order(const std::string& text) const {
        const std::optional<double> number = mIsDate ? std::nullopt : NumberIn(text);
        if (number && mNumber) {
            return *number < *mNumber ? -1 : *number > *mNumber ? 1 : 0;
        }
        // Dates are written from the year down to the second: as far as the value goes, they compare as texts.
        return mIsDate ? text.compare(0, mValue.size(), mValue) : text.compare(mValue);
    }

    Target mTarget;
    Relation mRelation;
    std::string mValue;
    std::string mLower;
    std::optional<double> mNumber;
    bool mIsDate;
};

class Reader {
public:
    explicit Reader(std::string_view text) : mText(text) {}

    ConditionPointer Read() {
        ConditionPointer condition = ReadOr();
        SkipBlanks();
        if (mAt < mText.size()) {
            Fail("\"" + std::string(mText.substr(mAt)) + "\" is left over");
        }
        return condition;
    }

private:
    /// Deeper brackets than anybody writes would only use up the stack.
    static constexpr int kMaxDepth = 100;

    [[noreturn]] static void Fail(const std::string& reason) { throw std::invalid_argument(reason); }

    ConditionPointer ReadOr() {
        ConditionPointer left = ReadAnd();
        while (TakeWord("or")) {
            left = std::make_unique<Both>(std::move(left), ReadAnd(), false);
        }
        return left;
    }

    ConditionPointer ReadAnd() {
        ConditionPointer left = ReadNot();
        while (TakeWord("and")) {
            left = std::make_unique<Both>(std::move(left), ReadNot(), true);
        }
        return left;
    }

    ConditionPointer ReadNot() {
        if (++mDepth > kMaxDepth) {
            Fail("too many brackets");
        }
        ConditionPointer condition;
        if (TakeWord("not")) {
            condition = std::make_unique<Not>(ReadNot());
        } else if (TakeWord("missing")) {
            condition = std::make_unique<Not>(std::make_unique<Exists>(ReadPath()));
        } else if (Take("(")) {
            condition = ReadOr();
            if (!Take(")")) {
                Fail("a bracket is not closed");
            }
        } else {
            condition = ReadComparison();
        }
        --mDepth;
        return condition;
    }

    ConditionPointer ReadComparison() {
        Target target = ReadPath();
        for (const RelationRow& row : kRelations) {
            const bool isWord = row.mWritten.front() >= 'a';
            if (isWord ? TakeWord(row.mWritten) : Take(row.mWritten)) {
                return std::make_unique<Compares>(std::move(target), row.mRelation, ReadValue());
            }
        }
        return std::make_unique<Exists>(std::move(target));
    }

    Target ReadPath() {
        SkipBlanks();
        const std::size_t begin = mAt;
        int open = 0;
        while (mAt < mText.size() &&
               (open > 0 || std::string_view(" \t=!<>()").find(mText[mAt]) == std::string_view::npos)) {
            open += mText[mAt] == '[' ? 1 : mText[mAt] == ']' ? -1 : 0;
            ++mAt;
        }
        const std::string expression(mText.substr(begin, mAt - begin));
        Target target = ResolveTarget(expression);
        if (expression.empty()) {
            Fail("a path is missing at the end");
        }
        if (const std::string problem = WhyUnreadable(expression, target); !problem.empty()) {
            Fail(problem);
        }
        return target;
    }

    std::string ReadValue() {
        SkipBlanks();
        const char quote = mAt < mText.size() && (mText[mAt] == '"' || mText[mAt] == '\'') ? mText[mAt] : '\0';
        const std::size_t begin = mAt + (quote != '\0' ? 1 : 0);
        const std::size_t end = quote != '\0' ? mText.find(quote, begin) : mText.find_first_of(" \t)", begin);
        if (begin >= mText.size() || (quote != '\0' && end == std::string_view::npos)) {
            Fail(quote != '\0' ? "a quote is not closed" : "a value is missing at the end");
        }
        mAt = std::min(end, mText.size()) + (quote != '\0' ? 1 : 0);
        return std::string(mText.substr(begin, end == std::string_view::npos ? end : end - begin));
    }

    void SkipBlanks() { mAt = std::min(mText.find_first_not_of(" \t", mAt), mText.size()); }

    bool Take(std::string_view sign) {
        SkipBlanks();
        const bool isThere = mText.substr(mAt).starts_with(sign);
        mAt += isThere ? sign.size() : 0;
        return isThere;
    }

    bool TakeWord(std::string_view word) {
        SkipBlanks();
        const std::string_view rest = mText.substr(mAt);
        const bool isThere =
            rest.starts_with(word) && (rest.size() == word.size() ||
                                       std::string_view(" \t(\"'").find(rest[word.size()]) != std::string_view::npos);
        mAt += isThere ? word.size() : 0;
        return isThere;
    }

    std::string_view mText;
    std::size_t mAt = 0;
    int mDepth = 0;
};

}  // namespace

std::vector<std::string> TreeValues::Texts(const Target& target) const {
    return TextsAt(mTree, target);
}

bool TreeValues::Has(const Target& target) const {
    return zephmetadata::HasValue(mTree, target.mPath);
}

ConditionReading ReadCondition(const std::string& text) {
    ConditionReading reading;
    try {
        if (!text.empty()) {
            reading.mCondition = Reader(text).Read();
        }
    } catch (const std::invalid_argument& error) {
        reading.mProblem = error.what();
    }
    return reading;
}

}  // namespace zephmeta

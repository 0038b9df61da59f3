// XML documents: events are balanced, and come in document order.
#include <vector>

#include "support.h"
#include "zephcore/xml.h"

namespace {

using zephcore::UTF16String;

struct Outcome {
    std::vector<UTF16String> mOpen;
    bool mEnded = false;
};

class BalanceChecker : public zephcore::AbstractParseHandler {
public:
    explicit BalanceChecker(Outcome& outcome) : mOutcome(outcome) {}

    void StartElement(const UTF16String& name, const zephcore::AttributeMap& /*attributes*/) override {
        fuzz::Require(zephcore::CurrentDocumentLine() > 0, "every event has a line");
        fuzz::Require(mOutcome.mOpen.size() < zephcore::kMaxElementDepth, "nesting is bounded");
        mOutcome.mOpen.push_back(name);
    }
    void EndElement(const UTF16String& name) override {
        fuzz::Require(!mOutcome.mOpen.empty() && mOutcome.mOpen.back() == name, "elements end as they began");
        mOutcome.mOpen.pop_back();
    }
    void Characters(const UTF16String& text) override {
        fuzz::Require(!mOutcome.mOpen.empty() && !text.empty(), "text stands in elements");
    }
    void EndDocument() override { mOutcome.mEnded = true; }

private:
    Outcome& mOutcome;
};

}  // namespace

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    Outcome outcome;
    const auto parser = zephcore::GetParser(std::make_unique<BalanceChecker>(outcome));
    const bool wellFormed = parser->ParseBuffer(std::string(fuzz::Text(data, size))) == 0;
    fuzz::Require(wellFormed == outcome.mEnded, "the document ends exactly when it is well formed");
    fuzz::Require(wellFormed == (parser->ErrorLine() == 0), "a failure has a line");
    fuzz::Require(!wellFormed || outcome.mOpen.empty(), "no element stays open");
    return 0;
}

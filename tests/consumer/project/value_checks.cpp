#include "host.h"

using namespace zephmetadata;

namespace host {

namespace {

Path At(const char* expression) {
    return PathForExpression(expression);
}

int CheckTypedValues() {
    const XMPMetaPtr tree = CreateXMPMeta();
    XMPMetaHandle handle = tree.get();
    int integer = 0;
    GetValueResult result = kGetValueResult_Success;
    CHECK(!GetValue(handle, At("xmpDM:trackNumber"), integer, &result) && result == kGetValueResult_NoValue);
    CHECK(SetValue(handle, At("xmpDM:trackNumber"), 12) && !SetValue(handle, At("xmpDM:trackNumber"), 12));
    CHECK(GetValue(handle, At("xmpDM:trackNumber"), integer) && integer == 12);

    long long large = 0;
    CHECK(SetValue(handle, At("xmpDM:trackNumber"), 1LL << 40));
    CHECK(GetValue(handle, At("xmpDM:trackNumber"), large) && large == 1LL << 40);
    double rating = 0;
    CHECK(SetValue(handle, At("xmp:Rating"), 3.5) && GetValue(handle, At("xmp:Rating"), rating) && rating == 3.5);
    bool marked = false;
    CHECK(SetValue(handle, At("xmpRights:Marked"), true));
    CHECK(GetValue(handle, At("xmpRights:Marked"), marked) && marked);
    Date date;
    CHECK(SetValue(handle, At("xmp:CreateDate"), "2024-01-01T00:30:00+01:00"));
    CHECK(GetValue(handle, At("xmp:CreateDate"), date) && date == (Date{2023, 12, 31, 23, 30, 0}));
    CHECK(ValidateXMP(nullptr).empty());
    CHECK(!HasErrors());
    return 0;
}

int CheckTexts() {
    const XMPMetaPtr tree = CreateXMPMeta();
    XMPMetaHandle handle = tree.get();
    CHECK(SetValue(handle, At("dc:title"), "Harbour") && SetLanguage(handle, At("dc:title"), "de", "Hafen"));
    CHECK((GetLanguages(handle, At("dc:title")) ==
           std::map<UTF8String, UTF8String>{{"x-default", "Harbour"}, {"de", "Hafen"}}));
    CHECK(SetValue(handle, At("dc:subject"), UTF8String("boats; \"a;b\"")));
    CHECK((GetItems(handle, At("dc:subject")) == std::vector<UTF8String>{"boats", "a;b"}));
    CHECK(CountArrayItems(handle, At("dc:subject")) == 2 && AddArrayItem(handle, At("dc:subject"), 0));
    CHECK(GetItems(handle, At("dc:subject"))[0].empty() && DeleteArrayItem(handle, At("dc:subject"), 0));
    UTF8String text;
    CHECK(GetValue(handle, At("dc:subject"), text) && text == "boats; \"a;b\"");
    CHECK(GetRawStringValue(handle, At("dc:subject[1]"), text) && text == "boats");
    CHECK(WhyNotAllowed(At("xmp:Rating"), "4").empty() && !WhyNotAllowed(At("xmp:Rating"), "many").empty());
    CHECK(HasValue(handle, At("dc:subject")) && DeleteValue(handle, At("dc:subject")));
    CHECK(!HasValue(handle, At("dc:subject")));
    return 0;
}

int CheckTrees() {
    XMPMetaPtr shared = CreateXMPMeta();
    const XMPMetaPtr tree = shared;
    shared = nullptr;
    CHECK(tree && XMPNodes(tree.get()).empty());
    CHECK(SetValue(tree.get(), At("dc:subject"), "boats"));
    const XMPMetaPtr again = ParseXMPMeta(SerializeXMPMeta(tree.get()));
    CHECK(again && !ParseXMPMeta("no packet"));
    const std::vector<XMPNode> nodes = XMPNodes(again.get());
    CHECK(nodes.size() == 2 && nodes[0].mKind == NodeKind::kNodeKind_Bag);
    CHECK(nodes[1].mPath == "dc:subject[1]" && nodes[1].mValue == "boats");
    return 0;
}

static_assert(SettableType<const char*> && SettableType<char[5]> && SettableType<std::u16string>);
static_assert(SettableType<std::string_view> && SettableType<unsigned long> && SettableType<Date>);
static_assert(!SettableType<const void*> && !SettableType<int*>, "a pointer would become a truth value");

int CheckOutcomes() {
    const XMPMetaPtr owner = CreateXMPMeta();
    const XMPMetaHandle tree = owner.get();
    CHECK(SetValue(tree, At("dc:source"), u"wide") && SetValue(tree, At("xmp:Rating"), 4UL));
    CHECK(SetValue(tree, At("xmp:CreateDate"), Date{2024, 5, 17, 0, 0, 0}));
    CHECK(TrySetValue(tree, At("dc:source"), std::string_view("wide")).mResult == kEditResult_Unchanged);
    CHECK(TrySetValue(tree, At("dc:source"), UTF8String("other")).mResult == kEditResult_Changed);
    CHECK(TrySetValue(tree, At("xmp:Rating"), 4).mResult == kEditResult_Unchanged);
    CHECK(TrySetValue(tree, At("xmp:CreateDate"), Date{2025, 5, 17, 0, 0, 0}).mResult == kEditResult_Changed);
    CHECK(TrySetValue(tree, At("xmpRights:Marked"), true).mResult == kEditResult_Changed);
    CHECK(TrySetValue(tree, At("xmpDM:projectRef"), 1.5).mRefusal == kEditRefusal_NoSuchShape);
    CHECK(TrySetValue(tree, At("xmp:Rating"), 9).mRefusal == kEditRefusal_NotAllowed);
    CHECK(TrySetValue(tree, Path(), "x").mRefusal == kEditRefusal_NoDefinition);
    CHECK(TrySetValue(nullptr, At("dc:source"), "x").mRefusal == kEditRefusal_NoTree);
    CHECK(!Describe(TrySetValue(tree, At("xmp:Rating"), "")).empty() && Describe(EditOutcome()).empty());
    return 0;
}

int CheckTemplate() {
    const XMPMetaPtr source = CreateXMPMeta();
    const XMPMetaPtr tree = CreateXMPMeta();
    CHECK(SetValue(source.get(), At("dc:source"), "template") && SetValue(tree.get(), At("dc:source"), "own"));
    CHECK(SetValue(source.get(), At("xmp:Rating"), 3));
    UTF8String text;
    CHECK(ApplyTemplate(tree.get(), source.get(), kTemplateImport_Add) && HasValue(tree.get(), At("xmp:Rating")));
    CHECK(GetValue(tree.get(), At("dc:source"), text) && text == "own");
    CHECK(ApplyTemplate(tree.get(), source.get(), kTemplateImport_Replace));
    CHECK(GetValue(tree.get(), At("dc:source"), text) && text == "template");
    return 0;
}

int CheckConstructedValue() {
    // Cameras wrote the lens elsewhere before Exif 2.3 was mapped to XMP.
    const XMPMetaPtr tree = ParseXMPMeta(
        "<x:xmpmeta xmlns:x='adobe:ns:meta/'><rdf:RDF xmlns:rdf='http://www.w3.org/1999/02/22-rdf-syntax-ns#'>"
        "<rdf:Description rdf:about='' xmlns:aux='http://ns.adobe.com/exif/1.0/aux/' "
        "aux:Lens='Lumenta 24-70mm F4'/></rdf:RDF></x:xmpmeta>");
    UTF8String text;
    GetValueResult result = kGetValueResult_Success;
    CHECK(!GetConstructedValue(tree.get(), At("dc:source"), text, &result));
    CHECK(GetConstructedValue(tree.get(), At("exifEX:LensModel"), text, &result) && text == "Lumenta 24-70mm F4");
    CHECK(result == kGetValueResult_Success);
    return 0;
}

}  // namespace

int CheckValues(const Arguments& /*arguments*/) {
    const Session session;
    return CheckTypedValues() | CheckTexts() | CheckTrees() | CheckOutcomes() | CheckTemplate() |
           CheckConstructedValue();
}

}  // namespace host

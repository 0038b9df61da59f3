// Pages of panels as a browser renders them: what people see, on which paper, at which width.
#include <cstdlib>

#include "cli/cli_runner.h"
#include "extensions/iptc_rows.h"

namespace cli {
namespace {

using ::testing::HasSubstr;

/// Looks at the pages in frames, each at the widths of a telephone and of a wide screen and as it is printed, and leaves
/// what it found as base64 of JSON. The contrast is that of WCAG 2.1, 1.4.3.
constexpr const char* kMeasure = R"html(<!DOCTYPE html><meta charset="utf-8"><body><script>
const colour = text => (text.match(/[\d.]+/g) || [0, 0, 0, 0]).map(Number);
const luminance = ([r, g, b]) => {
  const part = c => (c /= 255) <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4;
  return 0.2126 * part(r) + 0.7152 * part(g) + 0.0722 * part(b);
};
const behind = (view, e) => {
  for (; e; e = e.parentElement) {
    const paint = colour(view.getComputedStyle(e).backgroundColor);
    if (paint.length < 4 || paint[3] === 1) return paint;
  }
  return [255, 255, 255];
};
const faint = (view, page) => {
  const found = [], texts = page.createTreeWalker(page.body, NodeFilter.SHOW_TEXT);
  for (let text; (text = texts.nextNode());) {
    const e = text.parentElement;
    if (!text.data.trim() || e.tagName === 'SCRIPT' || !e.checkVisibility({contentVisibilityAuto: true})) continue;
    const [a, b] = [colour(view.getComputedStyle(e).color), behind(view, e)].map(luminance);
    const ratio = (Math.max(a, b) + 0.05) / (Math.min(a, b) + 0.05);
    if (ratio < 4.5) found.push(text.data.trim() + ': ' + ratio.toFixed(2));
  }
  return found;
};
const seen = frame => {
  const view = frame.contentWindow, page = frame.contentDocument, root = page.documentElement;
  if (frame.dataset.print)
    for (const rule of page.styleSheets[0].cssRules) if (rule.media?.mediaText === 'print') rule.media.mediaText = 'all';
  const shown = name => [...page.querySelectorAll(name)].filter(e => e.offsetParent);
  return {text: page.body.innerText, overflows: root.scrollWidth > root.clientWidth, faint: faint(view, page),
    picture: (page.querySelector('img') || {}).naturalWidth || 0, paper: view.getComputedStyle(page.body).backgroundColor,
    beside: shown('dt').filter(t => t.nextSibling.offsetTop === t.offsetTop).length,
    unlabelled: shown('dd').filter(
        d => page.getElementById(d.getAttribute('aria-labelledby')) !== d.previousSibling).length,
    folded: shown('summary').length};
};
addEventListener('load', () => {
  const all = {};
  for (const frame of document.querySelectorAll('iframe')) all[frame.title] = seen(frame);
  document.body.innerHTML = '<pre id="seen">' + btoa(unescape(encodeURIComponent(JSON.stringify(all)))) + '</pre>';
});
</script>
)html";

constexpr const char* kPages[] = {"photo", "film", "iptc", "together"};

class Pages : public CliTest {
protected:
    void SetUp() override {
        if (RunProgram(At(""), "/bin/sh", {"-c", "command -v chromium && command -v exiftool"}).mStatus == 0) {
            return;
        }
        // A person may go without; where changes are checked nothing else would look at the pages.
        ASSERT_STREQ(std::getenv("CI"), nullptr) << "chromium or exiftool is missing";
        GTEST_SKIP() << "no chromium or no exiftool on this machine";
    }

    void MakePages() const {
        const Arguments thumbnail = {"-q", "-overwrite_original", "-ThumbnailImage<=plain.jpg", "harbour.jpg"};
        ASSERT_EQ(RunProgram(At(""), "exiftool", thumbnail), (Outcome{0, "", ""}));
        Set("harbour.jpg", {"dc:source=<script>document.title=1</script>&amp;", "dc:title=<b>Boats",
                            "dc:description=" + std::string(400, 'x')});
        Set("packet.mp4", {"xmpDM:duration/xmpDM:value=95", "xmpDM:duration/xmpDM:scale=1/1",
                           "xmpDM:videoFrameSize/stDim:w=1920", "xmpDM:videoFrameSize/stDim:h=1080"});
        Arguments fields;
        for (const support::IptcField& field :
             support::FieldsOf(support::ReadIptcRows(ZEPHMETADATA_TEST_DATA "/../extensions/iptc_rows.tsv"))) {
            fields.push_back(field.mPath + "=" + field.mValue);
        }
        Set("plain.jpg", fields);
        Make("photo", {"harbour.jpg", "--all"});
        Make("film", {"packet.mp4"});
        Make("iptc", {"plain.jpg"});
        Make("together", {"harbour.jpg", "packet.mp4", "plain.jpg", "--side-by-side"});
    }
    /// What is seen of each page at each width, by "photo 360" and "photo 360 print".
    Json Seen(const std::string& option) const {
        std::string frames = kMeasure;
        for (const std::string page : kPages) {
            for (const std::string width : {"360", "1600"}) {
                for (const std::string print : {"", " print"}) {
                    frames.append("<iframe title=\"").append(page).append(" ").append(width).append(print);
                    frames.append("\" width=").append(width).append(" height=900 data-print=\"").append(print);
                    frames.append("\" src=\"").append(page).append(".html\"></iframe>\n");
                }
            }
        }
        Write("frames.html", frames);
        const Outcome outcome = RunProgram(
            At(""), "chromium",
            {"--headless", "--no-sandbox", "--allow-file-access-from-files", option,
             "--user-data-dir=" + At("profile").string(), "--dump-dom", "file://" + At("frames.html").string()});
        const std::size_t begin = outcome.mOutput.find("<pre id=\"seen\">");
        if (begin == std::string::npos) {
            ADD_FAILURE() << outcome;
            return Json::object();
        }
        Write("seen.b64", outcome.mOutput.substr(begin + 15, outcome.mOutput.find("</pre>") - begin - 15));
        return Json::parse(RunProgram(At(""), "base64", {"-d", "seen.b64"}).mOutput);
    }

private:
    void Set(const std::string& file, Arguments values) const {
        values.insert(values.begin(), {"set", file});
        EXPECT_EQ(Zephmeta(values).mStatus, 0) << file;
    }
    void Make(const std::string& name, Arguments arguments) const {
        arguments.insert(arguments.begin(), {"panel", "--format", "html"});
        const Outcome page = Zephmeta(arguments);
        EXPECT_EQ(page.mStatus, 0) << page.mErrors;
        EXPECT_EQ(page.mOutput.find("src=\"http"), std::string::npos) << name << " needs the network";
        Write(name + ".html", page.mOutput);
    }
};

TEST_F(Pages, AreReadableOnEveryPaperAtEveryWidth) {
    MakePages();
    const Json light = Seen("--disable-gpu");
    const Json dark = Seen("--blink-settings=preferredColorScheme=0");
    ASSERT_EQ(light.size(), 16U);
    for (const auto& [name, seen] : light.items()) {
        SCOPED_TRACE(name);
        const bool isPrinted = name.ends_with("print");
        for (const Json& either : {seen, dark.at(name)}) {
            EXPECT_FALSE(either.at("overflows"));
            EXPECT_EQ(either.at("faint"), Json::array()) << "texts of too little contrast";
            EXPECT_EQ(either.at("unlabelled"), 0) << "each value is labelled for screen readers";
            EXPECT_TRUE(!isPrinted || either.at("folded") == 0) << "paper has no folds";
        }
        EXPECT_EQ(dark.at(name).at("text"), seen.at("text"));
        EXPECT_EQ(dark.at(name).at("paper") == seen.at("paper"), isPrinted);
        const bool isTable = name.starts_with("together");
        EXPECT_EQ(seen.at("beside") > 5, name.find("1600") != std::string::npos && !isTable)
            << "labels stand beside their values where there is room";
    }
    EXPECT_GT(light.at("photo 360").at("picture"), 0) << "the thumbnail";
}

TEST_F(Pages, ShowTheirValuesInABrowser) {
    MakePages();
    const Json seen = Seen("--disable-gpu");
    const std::vector<std::pair<std::string, std::vector<std::string>>> rows = {
        {"photo 1600",
         {"harbour.jpg", "<b>Boats", "1/250 sec, f/8, ISO 200, Aperture Priority, Pattern",
          "58° 58' 11.89\" N, 5° 43' 59.2\" E Map", "Copyrighted", "https://calder.example/licence", "DICOM"}},
        {"photo 1600 print", {"<b>Boats", "de: Hafen im Morgengrauen"}},
        {"film 360", {"packet.mp4", "0:01:35", "1920 x 1080 pixels", "Low tide"}},
        {"iptc 1600", {"Some Headline", "Some City", "Some Credit", "Some Source", "Some PersonName"}},
        {"together 1600", {"harbour.jpg", "packet.mp4", "<b>Boats", "Low tide", "Some Headline", "Date\t5/18/2024"}},
    };
    for (const auto& [page, texts] : rows) {
        for (const std::string& text : texts) {
            EXPECT_THAT(seen.at(page).at("text").get<std::string>(), HasSubstr(text)) << page;
        }
    }
}

}  // namespace
}  // namespace cli

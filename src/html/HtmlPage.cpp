#include "html/HtmlPage.h"

#include <algorithm>
#include <cstdlib>
#include <vector>

#include "FontFiles.h"
#include "VellCmpErrors.h"
#include "dumpers/TTableDumper.h"
#include "framework/VellNames.h"
#include "html/HtmlDrawings.h"

THtmlPage* gHtmlPage = nullptr;

namespace {

// The page's only style: original outlines red, modified ones blue, each
// half-transparent so that the overlap reads; points that moved are ringed in
// orange. The policy forbids every script and every fetch: a name that slipped
// past the escaping could still run nothing and load nothing.
constexpr const char* kPageStart = R"(<!DOCTYPE html>
<html lang="en">
<head>
<meta charset="utf-8">
<meta http-equiv="Content-Security-Policy" content="default-src 'none'; style-src 'unsafe-inline'">
<title>vellcmp report</title>
<style>
body { font: 14px/1.4 sans-serif; margin: 1em 2em; color: #222; }
h1 { font-size: 1.4em; } h2 { font-size: 1.2em; border-top: 2px solid #888; padding-top: .5em; }
h3 { font-size: 1.05em; margin-top: 1.5em; }
table.header td, table.header th { text-align: left; padding: .1em 1em .1em 0; }
tr.mod td:first-child, div.mod b { color: #1f5fbf; } tr.orig td:first-child, div.orig b { color: #c62828; }
pre.account { background: #f6f6f6; border: 1px solid #ddd; padding: .5em; overflow: auto; max-height: 40em;
  font: 12px/1.3 monospace; tab-size: 8; }
.drawings { display: flex; flex-wrap: wrap; gap: .75em; }
figure.glyph, figure.kern { margin: 0; border: 1px solid #ccc; padding: .25em; background: #fff; }
figcaption { font-size: 12px; max-width: 220px; overflow-wrap: anywhere; }
figcaption .note { color: #555; font-style: italic; }
svg .em { fill: #fafafa; stroke: #ddd; stroke-width: calc(var(--r) / 2); }
svg .baseline { stroke: #bbb; stroke-width: calc(var(--r) / 2); }
svg .outline.orig { fill: rgba(198, 40, 40, .18); stroke: #c62828; stroke-width: calc(var(--r) / 1.5); }
svg .outline.mod { fill: rgba(31, 95, 191, .18); stroke: #1f5fbf; stroke-width: calc(var(--r) / 1.5); }
svg .advance { stroke-width: calc(var(--r) / 1.5); stroke-dasharray: calc(var(--r) * 3); }
svg .advance.orig { stroke: #c62828; } svg .advance.mod { stroke: #1f5fbf; }
svg .advance.changed { stroke-width: var(--r); }
svg .points.orig .on { fill: #c62828; } svg .points.mod .on { fill: #1f5fbf; }
svg .points .off { fill: #fff; stroke-width: calc(var(--r) / 2); }
svg .points.orig .off { stroke: #c62828; } svg .points.mod .off { stroke: #1f5fbf; }
svg .moved { fill: none; stroke: #ef8f00; stroke-width: calc(var(--r) / 1.2); }
p.more, p.cut { color: #a00; }
nav ul { columns: 4 10em; }
</style>
</head>
<body>
<h1>vellcmp report</h1>
<p>Original outlines are drawn in <b style="color:#c62828">red</b>, modified ones in <b style="color:#1f5fbf">blue</b>;
filled dots are on-curve points, hollow ones off-curve points, orange rings mark the points that moved, and the
dashed lines are the advance widths.</p>
)";

constexpr const char* kPageEnd = "</body>\n</html>\n";

// A name for the page: the font's name record, or nothing when it cannot be read.
std::string FontName(VellFontRef font, int32_t code) {
    std::string text;
    ErrorRecord record;
    VellFindFontNameAsUTF8(font, code, 0, 0, 0, &text, 0, &record);
    return record.code == 0 ? text : std::string();
}

// The report's colour codes (ESC '[' ... 'm') mean nothing on a page.
std::string WithoutColorCodes(std::string_view text) {
    std::string plain;
    plain.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\x1b' && i + 1 < text.size() && text[i + 1] == '[') {
            size_t end = text.find('m', i);
            if (end != std::string_view::npos) {
                i = end;
                continue;
            }
        }
        plain += text[i];
    }
    return plain;
}

std::string TagText(VellTag tag) { return HtmlEscape("'" + VellTagText(tag) + "'"); }

}  // namespace

struct THtmlPage::Pair {
    struct Section {
        VellTag tag = 0;
        std::string listing;  // the line of the changed-table list
        std::string drawings;
        std::string account;
        bool hasAccount = false;
    };
    std::string header;
    std::string added, deleted;
    std::vector<Section> changed;
};

THtmlPage::THtmlPage(FILE* out, uint32_t maxDrawings) : fOut(out), fMaxDrawings(maxDrawings) {
    std::fputs(kPageStart, fOut);
}

THtmlPage::~THtmlPage() = default;

void THtmlPage::BeginPair(const char* modifiedPath, const char* originalPath, VellFontRef modified,
                          VellFontRef original) {
    fPair = std::make_unique<Pair>();
    ++fPairCount;
    auto row = [](const char* side, const char* label, const char* path, VellFontRef font) {
        return VellFormat("<tr class=\"%s\"><td>%s</td><td>", side, label) + HtmlEscape(path) + "</td><td>" +
               HtmlEscape(FontName(font, kFullNameCode)) + "</td><td>" + HtmlEscape(FontName(font, kVersionNameCode)) +
               "</td></tr>\n";
    };
    fPair->header = "<table class=\"header\">\n<tr><th></th><th>File name</th><th>Full name</th><th>Version</th></tr>\n" +
                    row("orig", "Original font", originalPath, original) +
                    row("mod", "Modified font", modifiedPath, modified) + "</table>\n";
}

void THtmlPage::ListTable(TableList list, VellTag tag, uint32_t length, uint32_t originalLength) {
    if (!fPair) return;
    if (list == TableList::kAdded) {
        fPair->added += "<li>" + TagText(tag) + VellFormat(" %u bytes</li>\n", length);
    } else if (list == TableList::kDeleted) {
        fPair->deleted += "<li>" + TagText(tag) + VellFormat(" %u bytes</li>\n", length);
    } else {
        Pair::Section section;
        section.tag = tag;
        section.listing = TagText(tag) + VellFormat(" %u bytes (%u bytes in the original font)", length, originalLength);
        fPair->changed.push_back(std::move(section));
    }
}

void THtmlPage::AddAccount(std::string_view text, size_t size) {
    // Under --json the accounts are records, and no text reaches the page.
    if (!fPair || fPair->changed.empty() || size == 0) return;
    Pair::Section& section = fPair->changed.back();
    section.hasAccount = true;
    text = text.substr(0, kMostAccountBytes);
    section.account = "<pre class=\"account\">" + HtmlEscape(WithoutColorCodes(text)) + "</pre>\n";
    if (size > text.size())
        section.account += VellFormat("<p class=\"cut\">The account is cut here, after %zu of its %zu bytes; the text "
                                      "report holds it whole.</p>\n",
                                      text.size(), size);
}

void THtmlPage::AddDrawings(VellTag tag, TFontContext& modified, TFontContext& original) {
    if (!fPair || fPair->changed.empty()) return;
    if (!fModifiedGlyphs) fModifiedGlyphs = std::make_unique<TGlyphSource>(modified);
    if (!fOriginalGlyphs) fOriginalGlyphs = std::make_unique<TGlyphSource>(original);
    uint32_t drawn = 0;
    fPair->changed.back().drawings = DrawTableChanges(tag, *fModifiedGlyphs, *fOriginalGlyphs, fMaxDrawings, &drawn);
}

void THtmlPage::EndTables() {
    fModifiedGlyphs.reset();
    fOriginalGlyphs.reset();
}

void THtmlPage::EndPair() {
    EndTables();
    if (!fPair) return;
    std::string html = VellFormat("<section class=\"pair\" id=\"pair%d\">\n<h2>Pair %d</h2>\n", fPairCount, fPairCount);
    html += fPair->header;
    auto list = [](const char* heading, const std::string& items) {
        return std::string("<h3>") + heading + "</h3>\n" + (items.empty() ? "<p>None</p>\n" : "<ul>\n" + items + "</ul>\n");
    };
    html += list("Tables added (in modified font and not original font)", fPair->added);
    html += list("Tables deleted (in original font but not in modified font)", fPair->deleted);
    std::string changedItems;
    for (size_t i = 0; i < fPair->changed.size(); ++i) {
        const Pair::Section& section = fPair->changed[i];
        bool shown = section.hasAccount || !section.drawings.empty();
        changedItems += shown ? VellFormat("<li><a href=\"#pair%d-table%zu\">", fPairCount, i) + section.listing +
                                    "</a></li>\n"
                              : "<li>" + section.listing + "</li>\n";
    }
    html += "<nav>\n" + list("Tables changed", changedItems) + "</nav>\n";
    for (size_t i = 0; i < fPair->changed.size(); ++i) {
        const Pair::Section& section = fPair->changed[i];
        if (!section.hasAccount && section.drawings.empty()) continue;
        html += VellFormat("<section class=\"table\" id=\"pair%d-table%zu\" data-tag=\"", fPairCount, i) +
                HtmlEscape(VellTagText(section.tag)) + "\">\n<h3>Table " + TagText(section.tag) + "</h3>\n" +
                section.drawings + section.account + "</section>\n";
    }
    html += "</section>\n";
    std::fwrite(html.data(), 1, html.size(), fOut);
    fPair.reset();
}

bool THtmlPage::Finish() {
    EndPair();
    std::fputs(kPageEnd, fOut);
    return std::fflush(fOut) == 0 && !std::ferror(fOut);
}

// ---- The account's way to the page ----

namespace {

ssize_t PassOn(void* cookie, const char* bytes, size_t size) {
    auto* passed = static_cast<TAccountCapture::Passed*>(cookie);
    size_t written = std::fwrite(bytes, 1, size, gReportFile);
    if (passed->kept.size() < THtmlPage::kMostAccountBytes)
        passed->kept.append(bytes, std::min(size, THtmlPage::kMostAccountBytes - passed->kept.size()));
    passed->size += size;
    return static_cast<ssize_t>(written);
}

}  // namespace

TAccountCapture::TAccountCapture() {
    fStream = gReportFile;
    if (gHtmlPage == nullptr) return;
    FILE* passing = fopencookie(&fPassed, "w", cookie_io_functions_t{nullptr, PassOn, nullptr, nullptr});
    if (passing == nullptr) return;
    // Large blocks, as the report stream itself is written.
    std::setvbuf(passing, nullptr, _IOFBF, size_t{1} << 16);
    fStream = passing;
}

// An account cut short by a failure still reaches the report as far as it went.
TAccountCapture::~TAccountCapture() { Close(); }

void TAccountCapture::Finish() {
    bool captured = fStream != gReportFile;
    Close();
    if (captured && gHtmlPage != nullptr) gHtmlPage->AddAccount(fPassed.kept, fPassed.size);
}

void TAccountCapture::Close() {
    if (fStream != gReportFile) std::fclose(fStream);
    fStream = gReportFile;
}

// The --html page: one self-contained HTML file for a whole run, with inline
// CSS and inline SVG and no script. For each pair of fonts: the header, the
// three table lists with their sizes, a list of the changed tables linking to
// their sections, and for each changed table its drawings and its account as
// the text report gives it. The driver hands the page what it learns; the page
// never reads the text report back.
#pragma once

#include <cstdio>
#include <memory>
#include <string>
#include <string_view>

#include "dumpers/TFontContext.h"
#include "framework/VellFontFile.h"

class TGlyphSource;

enum class TableList { kAdded, kDeleted, kChanged };

class THtmlPage {
public:
    // A table's account is kept on the page up to this size; a longer one (a CJK
    // font whose every outline moved) is cut there with a line saying so, so that
    // the page still opens in a browser. The text report keeps it whole.
    static constexpr size_t kMostAccountBytes = size_t{2} << 20;

    THtmlPage(FILE* out, uint32_t maxDrawings);
    ~THtmlPage();
    THtmlPage(const THtmlPage&) = delete;
    THtmlPage& operator=(const THtmlPage&) = delete;

    // A pair of fonts: its header from both fonts' full names and versions.
    void BeginPair(const char* modifiedPath, const char* originalPath, VellFontRef modified, VellFontRef original);
    // A table in one of the pair's three lists; for a changed table both sizes.
    void ListTable(TableList list, VellTag tag, uint32_t length, uint32_t originalLength);
    // The account of the changed table listed last, as the text report has it:
    // its first bytes (at most kMostAccountBytes) and its whole size.
    void AddAccount(std::string_view text, size_t size);
    // The drawings of the changed table listed last, from both fonts.
    void AddDrawings(VellTag tag, TFontContext& modified, TFontContext& original);
    // The fonts' contexts are gone: what was read from them is dropped.
    void EndTables();
    // Writes the pair's part of the page.
    void EndPair();
    // Writes the end of the page; false when the file could not be written.
    bool Finish();

private:
    struct Pair;
    FILE* fOut;
    uint32_t fMaxDrawings;
    int fPairCount = 0;
    std::unique_ptr<Pair> fPair;
    std::unique_ptr<TGlyphSource> fModifiedGlyphs, fOriginalGlyphs;
};

// The page of this run, or null without --html.
extern THtmlPage* gHtmlPage;

// Where a changed table's account is written while the page is drawn: a stream
// that passes every byte on to the report stream as it comes, and keeps the
// account's first bytes for the page (a CJK font's 'glyf' account can run to
// hundreds of megabytes, which are never held). Without a page it is the report
// stream itself.
class TAccountCapture {
public:
    TAccountCapture();
    ~TAccountCapture();
    TAccountCapture(const TAccountCapture&) = delete;
    TAccountCapture& operator=(const TAccountCapture&) = delete;

    FILE* Stream() const { return fStream; }
    // Ends the account and hands it to the page.
    void Finish();

    // What the stream has passed on (public for the stream's write function).
    struct Passed {
        std::string kept;
        size_t size = 0;
    };

private:
    void Close();
    FILE* fStream = nullptr;
    Passed fPassed;
};

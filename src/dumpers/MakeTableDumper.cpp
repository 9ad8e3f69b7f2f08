#include "dumpers/MakeTableDumper.h"

#include <exception>

#include "VellCmpErrors.h"
#include "dumpers/TableHandlers.h"
#include "framework/VellTables.h"

std::unique_ptr<TTableDumper> MakeTableDumper(TFontContext& font, VellTag tag, FILE* out) {
    // What any dumper may ask of the font is read first; a failing framework call
    // here has no report of its own: the run ends.
    try {
        font.Table(tag);
        font.GlyphCount();
        font.Post();
        font.Table(VellMakeTag("hhea"));
    } catch (const TVellCmpException&) {
        std::terminate();
    }
    if (!font.HasTable(tag)) return nullptr;
    const TableHandler* handler = FindDumperHandler(tag, false);
    if (handler) return handler->dumper(font, tag, out);
    return std::make_unique<TTableDumper>(font, tag, out);
}

bool CanMakeTableDumper(VellFontRef font, VellTag tag, ErrorRecord* record) {
    for (VellTag read : {tag, VellMakeTag("maxp"), VellMakeTag("post"), VellMakeTag("hhea")}) {
        VellFontTableView(font, read, record);
        if (record->code != 0) return false;
    }
    return true;
}

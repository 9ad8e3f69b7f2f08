#include "VellDumpFonts.h"

#include "dumpers/MakeTableDumper.h"
#include "dumpers/TableHandlers.h"
#include "framework/VellNames.h"
#include "framework/VellTables.h"

std::unique_ptr<TTableDumper> MakeFontTableDumper(TFontContext& font, VellTag tag, FILE* out, ErrorRecord* record) {
    // A table the framework cannot read is reported here, not by the factory.
    if (!CanMakeTableDumper(font.Font(), tag, record)) return nullptr;
    const TableHandler* handler = FindDumperHandler(tag, true);
    // A listing that names things from 'name' would end the run on a name lookup
    // that fails; so a 'name' past the end of the file is reported first, as the
    // comparison's pairing of fonts does.
    if (handler && handler->dumperReadsNames) VellCountFontNames(font.Font(), record);
    if (record->code != 0) return nullptr;
    if (!handler || handler->reach == DumperReach::Factory || !font.HasTable(tag))
        return MakeTableDumper(font, tag, out);
    return handler->dumper(font, tag, out);
}

int DumpFont(VellFontRef font, std::vector<VellTag> tags) {
    ErrorRecord record;
    if (tags.empty()) {
        uint32_t count = VellCountFontTables(font, &record);
        for (uint32_t index = 1; index <= count && record.code == 0; ++index) {
            VellTag tag = 0;
            VellGetFontTable(font, index, nullptr, &tag, &record);
            tags.push_back(tag);
        }
        if (ReportFrameworkError(&record)) return 1;
    }
    TFontContext context(font);
    for (VellTag tag : tags) {
        try {
            std::unique_ptr<TTableDumper> dumper = MakeFontTableDumper(context, tag, gReportFile, &record);
            if (ReportFrameworkError(&record)) return 1;
            if (!dumper) {
                std::fprintf(stderr, "##### WARNING! The font has no '%s' table!\n", VellTagText(tag).c_str());
                continue;
            }
            dumper->DumpTable();
        } catch (const TVellCmpException&) {
            record.code = kVellCmpInternalError;
            ReportError(&record);
            return 1;
        }
    }
    return 0;
}

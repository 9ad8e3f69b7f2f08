#include "VellDumpFonts.h"

#include "dumpers/MakeTableDumper.h"
#include "framework/VellNames.h"
#include "framework/VellTables.h"
#include "tables/EBSC.h"
#include "tables/feat.h"
#include "tables/glyf.h"
#include "tables/gvar.h"
#include "tables/hhea_vhea.h"
#include "tables/hmtx_vmtx.h"
#include "tables/hsty.h"
#include "tables/loca.h"
#include "tables/mort_morx.h"
#include "tables/prop.h"

std::unique_ptr<TTableDumper> MakeFontTableDumper(VellFontRef font, VellTag tag, FILE* out, ErrorRecord* record) {
    // A table the framework cannot read is reported here, not by the factory.
    if (!CanMakeTableDumper(font, tag, record)) return nullptr;
    // The 'feat' listing names its features from 'name', and a name lookup that
    // fails there ends the run; so a 'name' past the end of the file is reported
    // first, as the comparison's pairing of fonts does.
    if (tag == VellMakeTag("feat")) VellCountFontNames(font, record);
    if (record->code != 0) return nullptr;
    VellHandle table = VellGetFontTableHandle(font, tag, nullptr, record);
    if (record->code != 0) return nullptr;
    if (!table) return MakeTableDumper(font, tag, out);
    std::unique_ptr<TTableDumper> dumper;
    switch (tag) {
        case VellMakeTag("EBSC"):
            dumper = std::make_unique<TEBSCTableDumper>(std::move(table), out);
            break;
        case VellMakeTag("feat"):
            dumper = std::make_unique<TFEATTableDumper>(std::move(table), out);
            break;
        case VellMakeTag("glyf"):
            dumper = std::make_unique<TGLYFTableDumper>(std::move(table), out);
            break;
        case VellMakeTag("gvar"):
            dumper = std::make_unique<TGVARTableDumper>(std::move(table), out);
            break;
        case VellMakeTag("hsty"):
            dumper = std::make_unique<THSTYTableDumper>(std::move(table), out);
            break;
        case VellMakeTag("loca"):
            dumper = std::make_unique<TLOCATableDumper>(font, std::move(table), out);
            break;
        case VellMakeTag("mort"):
            dumper = std::make_unique<TMORTTableDumper>(std::move(table), out);
            break;
        case VellMakeTag("morx"):
            dumper = std::make_unique<TMORXTableDumper>(std::move(table), out);
            break;
        case VellMakeTag("prop"):
            dumper = std::make_unique<TPROPTableDumper>(std::move(table), out);
            break;
        case VellMakeTag("vhea"):
            dumper = std::make_unique<TVHEATableDumper>(std::move(table), out);
            break;
        case VellMakeTag("vmtx"): {
            VellHandle post = VellGetFontTableHandle(font, VellMakeTag("post"), nullptr, record);
            uint16_t longMetrics = VellFontTableView(font, VellMakeTag("vhea")).u16(34);
            dumper = std::make_unique<TVMTXTableDumper>(std::move(table), post, longMetrics,
                                                        VellCountFontGlyphs(font, record), out);
            if (record->code != 0) return nullptr;
            break;
        }
        default:
            return MakeTableDumper(font, tag, out);
    }
    dumper->SetTableTag(tag);
    dumper->SetFont(font);
    return dumper;
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
    for (VellTag tag : tags) {
        try {
            std::unique_ptr<TTableDumper> dumper = MakeFontTableDumper(font, tag, gReportFile, &record);
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

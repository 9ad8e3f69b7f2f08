// velldump: prints tables of one font file in full, through the same dumpers the
// comparison report is built on.
#include <unistd.h>

#include <cstdio>
#include <cstring>
#include <string>
#include <vector>

#include "CommandLine.h"
#include "FontFiles.h"
#include "VellCmpErrors.h"
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

namespace {

// The long options velldump takes: those that make sense for one font.
constexpr unsigned kVelldumpLongOptions = kLongHelp | kLongVersion | kLongColor;

void PrintUsage(const std::string& name, bool longOptions) {
    PrintVersion(name);
    std::printf("Usage:  %s [-hpuV] [-f font name] [-o output file] fontfile [tag ...] \n", name.c_str());
    std::printf("Options:\n");
    std::printf("\t-f The name of the font within the font file to dump; use single quotes if the font name has "
                "spaces in it\n");
    std::printf("\t-o An optional output file for the dump; stdout is used if this parameter is not specified\n");
    std::printf("\t-h Output this message\n");
    std::printf("\t-p Show the PostScript names of glyphs\n");
    std::printf("\t-u Show the Unicode names of characters\n");
    std::printf("\t-V Output the tool's version to stdout\n");
    std::printf("Without tags, every table of the font is printed, in directory order.\n");
    if (longOptions) PrintLongOptionUsage(kVelldumpLongOptions);
}

// The dumpers that the factory does not make are built here, from the arguments
// their tables need; every other tag goes to the factory.
std::unique_ptr<TTableDumper> MakeDumper(VellFontRef font, VellTag tag, FILE* out, ErrorRecord* record) {
    // A table the framework cannot read is reported here, not by the factory.
    if (!CanMakeTableDumper(font, tag, record)) return nullptr;
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

// Dumps the named tables of one font (all of them, in directory order, when none
// is named). Returns 1 after a reported failure.
int DumpFont(VellFontRef font, const std::vector<std::string>& tagTexts) {
    ErrorRecord record;
    std::vector<VellTag> tags;
    for (const std::string& text : tagTexts) tags.push_back(TagFromText(text));
    if (tags.empty()) {
        uint32_t count = VellCountFontTables(font, &record);
        for (uint32_t index = 1; index <= count && record.code == 0; ++index) {
            VellTag tag = 0;
            VellGetFontTable(font, index, nullptr, &tag, &record);
            tags.push_back(tag);
        }
        if (record.code != 0) {
            MapFrameworkError(&record);
            ReportError(&record);
            return 1;
        }
    }
    for (VellTag tag : tags) {
        try {
            std::unique_ptr<TTableDumper> dumper = MakeDumper(font, tag, gReportFile, &record);
            if (record.code != 0) {
                MapFrameworkError(&record);
                ReportError(&record);
                return 1;
            }
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

int DumpFontFile(const char* path, const std::vector<std::string>& tags) {
    ErrorRecord record;
    VellFSSpec fileRef;
    if (OpenFontFile(path, &fileRef, true) != 0) return 1;
    uint32_t count = 0;
    VellFontListRef list = VellFSSpecToFontList(fileRef, 1, &count, &record);
    if (record.code != 0) {
        MapFrameworkError(&record);
        ReportError(&record);
        return 1;
    }
    if (!gFontName.empty()) {
        uint32_t index = FindFontByName(list.get(), count, gFontName, &record);
        if (record.code != 0 || index >= count) return 1;
        return DumpFont(list->entries[index].font, tags);
    }
    for (uint32_t f = 0; f < count; ++f) {
        VellFontRef font = list->entries[f].font;
        if (count > 1) {
            std::string fullName;
            VellFindFontNameAsUTF8(font, kFullNameCode, 0, 0, 0, &fullName, 0, &record);
            std::fprintf(gReportFile, "##### Font %u: %s\n", f + 1, fullName.c_str());
        }
        if (DumpFont(font, tags) != 0) return 1;
    }
    return 0;
}

}  // namespace

int main(int argc, char* argv[]) {
    CommandLineOptions options = ParseOptions(argc, argv, "f:ho:puV", kVelldumpLongOptions);
    int error = options.error;
    std::string name = BaseName(argv[0]);
    if (options.help || optind == argc) PrintUsage(name, options.longHelp);
    if (options.version) PrintVersion(name);
    if (optind == argc) return error;
    std::vector<std::string> tags(argv + optind + 1, argv + argc);
    if (DumpFontFile(argv[optind], tags) == 0) return error;
    std::fprintf(stderr, "##### ERROR:  Aborting after failure to dump %s.\n", argv[optind]);
    return 1;
}

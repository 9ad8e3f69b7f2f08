#include "dumpers/MakeTableDumper.h"

#include <exception>

#include "VellCmpErrors.h"
#include "framework/VellTables.h"
#include "tables/cvt.h"
#include "tables/hdmx.h"
#include "tables/hhea_vhea.h"
#include "tables/hmtx_vmtx.h"
#include "tables/maxp.h"
#include "tables/name.h"

namespace {

constexpr uint32_t kMetricHeaderBytes = 36;

// A failing framework call here has no report of its own: the run ends.
void TerminateOnError(const ErrorRecord& record) {
    if (record.code != 0) std::terminate();
}

std::unique_ptr<TTableDumper> ConstructDumper(VellTag tag, VellHandle table, const VellHandle& post, uint16_t longMetrics,
                                              uint32_t glyphCount, FILE* out) {
    switch (tag) {
        case VellMakeTag("cvt "):
            return std::make_unique<TCVTTableDumper>(std::move(table), out);
        case VellMakeTag("hdmx"):
            return std::make_unique<THDMXTableDumper>(std::move(table), glyphCount, out);
        case VellMakeTag("hhea"):
            return std::make_unique<THHEATableDumper>(std::move(table), out);
        case VellMakeTag("hmtx"):
            return std::make_unique<THMTXTableDumper>(std::move(table), post, longMetrics, glyphCount, out);
        case VellMakeTag("maxp"):
            return std::make_unique<TMAXPTableDumper>(std::move(table), out);
        case VellMakeTag("name"):
            return std::make_unique<TNAMETableDumper>(std::move(table), out);
        default:
            return std::make_unique<TTableDumper>(std::move(table), out, nullptr);
    }
}

}  // namespace

std::unique_ptr<TTableDumper> MakeTableDumper(VellFontRef font, VellTag tag, FILE* out) {
    ErrorRecord record;
    VellHandle table = VellGetFontTableHandle(font, tag, nullptr, &record);
    TerminateOnError(record);
    uint32_t glyphCount = VellCountFontGlyphs(font, &record);
    TerminateOnError(record);
    VellHandle post = VellGetFontTableHandle(font, VellMakeTag("post"), nullptr, &record);
    TerminateOnError(record);
    uint32_t size = kMetricHeaderBytes;
    VellHandle hhea = VellGetFontTablePtr(font, VellMakeTag("hhea"), &size, &record);
    TerminateOnError(record);
    if (!table) return nullptr;

    uint16_t longMetrics = VelmView(hhea).u16(34);
    std::unique_ptr<TTableDumper> dumper = ConstructDumper(tag, std::move(table), post, longMetrics, glyphCount, out);
    dumper->SetTableTag(tag);
    dumper->SetFont(font);
    return dumper;
}

bool CanMakeTableDumper(VellFontRef font, VellTag tag, ErrorRecord* record) {
    for (VellTag read : {tag, VellMakeTag("maxp"), VellMakeTag("post"), VellMakeTag("hhea")}) {
        VellFontTableView(font, read, record);
        if (record->code != 0) return false;
    }
    return true;
}

// The handler table: one row per tag with a handler of its own.
#include "dumpers/TableHandlers.h"

#include <algorithm>

#include "VellCmpErrors.h"
#include "tables/CFF.h"
#include "tables/EBSC.h"
#include "tables/GDEF.h"
#include "tables/GPOS.h"
#include "tables/GSUB.h"
#include "tables/HVAR_VVAR.h"
#include "tables/MVAR.h"
#include "tables/OS2.h"
#include "tables/STAT.h"
#include "tables/avar.h"
#include "tables/bdat.h"
#include "tables/cmap.h"
#include "tables/cvt.h"
#include "tables/feat.h"
#include "tables/fvar.h"
#include "tables/glyf.h"
#include "tables/glyf_outlines.h"
#include "tables/gvar.h"
#include "tables/hdmx.h"
#include "tables/head.h"
#include "tables/hhea_vhea.h"
#include "tables/hmtx_vmtx.h"
#include "tables/hsty.h"
#include "tables/kern.h"
#include "tables/loca.h"
#include "tables/maxp.h"
#include "tables/mort_morx.h"
#include "tables/name.h"
#include "tables/post.h"
#include "tables/prop.h"

namespace {

// A changed 'bdat' is reported by the 'head' comparator over the two 'bdat'
// tables, as it always has been; the bitmap comparator is still built first, so
// that a damaged 'bloc' fails the comparison.
std::unique_ptr<TTableComparator> MakeBitmapDataComparator(TFontContext& modified, TFontContext& original,
                                                           VellTag tag, FILE* out) {
    TBDATTableComparator bitmaps(modified, original, tag, out);
    return std::make_unique<THEADTableComparator>(modified, original, tag, out);
}

// A changed 'loca' gets only the driver's tag line: its offsets say nothing that
// the 'glyf' comparison does not.
std::unique_ptr<TTableComparator> MakeNoComparator(TFontContext&, TFontContext&, VellTag, FILE*) { return nullptr; }

constexpr auto kFactory = DumperReach::Factory;
constexpr auto kVelldump = DumperReach::VelldumpOnly;
constexpr auto kClassic = HandlerSet::Classic;
constexpr auto kOpenType = HandlerSet::OpenType;

const TableHandler kTableHandlers[] = {
    {VellMakeTag("CFF "), kOpenType, MakeComparator<TCFFTableComparator>, MakeDumper<TCFFTableDumper>, kVelldump},
    {VellMakeTag("CFF2"), kOpenType, MakeComparator<TCFFTableComparator>, MakeDumper<TCFFTableDumper>, kVelldump},
    {VellMakeTag("EBSC"), kClassic, MakeComparator<TEBSCTableComparator>, MakeDumper<TEBSCTableDumper>, kVelldump},
    {VellMakeTag("OS/2"), kClassic, MakeComparator<TOS2TableComparator>, nullptr},
    {VellMakeTag("bdat"), kClassic, MakeBitmapDataComparator, nullptr},
    {VellMakeTag("bhed"), kClassic, MakeComparator<THEADTableComparator>, nullptr},
    {VellMakeTag("cmap"), kClassic, MakeComparator<TCMAPTableComparator>, nullptr},
    {VellMakeTag("cvt "), kClassic, nullptr, MakeDumper<TCVTTableDumper>, kFactory},
    {VellMakeTag("feat"), kClassic, MakeComparator<TFEATTableComparator>, MakeDumper<TFEATTableDumper>, kVelldump,
     true},
    {VellMakeTag("glyf"), kClassic, MakeComparator<TGLYFTableComparator>, MakeDumper<TGLYFTableDumper>, kVelldump},
    {VellMakeTag("glyf"), kOpenType, MakeComparator<TGLYFOutlineTableComparator>, MakeDumper<TGLYFOutlineTableDumper>,
     kVelldump},
    {VellMakeTag("gvar"), kClassic, nullptr, MakeDumper<TGVARTableDumper>, kVelldump},
    {VellMakeTag("hdmx"), kClassic, MakeComparator<THDMXTableComparator>, MakeDumper<THDMXTableDumper>, kFactory},
    {VellMakeTag("head"), kClassic, MakeComparator<THEADTableComparator>, nullptr},
    {VellMakeTag("hhea"), kClassic, MakeComparator<THHEATableComparator>, MakeDumper<THHEATableDumper>, kFactory},
    {VellMakeTag("hmtx"), kClassic, MakeComparator<THMTXTableComparator>, MakeDumper<THMTXTableDumper>, kFactory},
    {VellMakeTag("hsty"), kClassic, MakeComparator<THSTYTableComparator>, MakeDumper<THSTYTableDumper>, kVelldump},
    {VellMakeTag("loca"), kClassic, MakeNoComparator, MakeDumper<TLOCATableDumper>, kVelldump},
    {VellMakeTag("maxp"), kClassic, MakeComparator<TMAXPTableComparator>, MakeDumper<TMAXPTableDumper>, kFactory},
    {VellMakeTag("mort"), kClassic, MakeComparator<TMORTTableComparator>, MakeDumper<TMORTTableDumper>, kVelldump},
    {VellMakeTag("morx"), kClassic, MakeComparator<TMORXTableComparator>, MakeDumper<TMORXTableDumper>, kVelldump},
    {VellMakeTag("name"), kClassic, MakeComparator<TNAMETableComparator>, MakeDumper<TNAMETableDumper>, kFactory},
    {VellMakeTag("post"), kClassic, MakeComparator<TPOSTTableComparator>, nullptr},
    {VellMakeTag("prop"), kClassic, MakeComparator<TPROPTableComparator>, MakeDumper<TPROPTableDumper>, kVelldump},
    {VellMakeTag("vhea"), kClassic, MakeComparator<TVHEATableComparator>, MakeDumper<TVHEATableDumper>, kVelldump},
    {VellMakeTag("vmtx"), kClassic, MakeComparator<TVMTXTableComparator>, MakeDumper<TVMTXTableDumper>, kVelldump},

    // Under --opentype: the layout tables.
    {VellMakeTag("GDEF"), kOpenType, MakeComparator<TGDEFTableComparator>, MakeDumper<TGDEFTableDumper>, kVelldump},
    {VellMakeTag("GPOS"), kOpenType, MakeComparator<TGPOSTableComparator>, MakeDumper<TGPOSTableDumper>, kVelldump},
    {VellMakeTag("GSUB"), kOpenType, MakeComparator<TGSUBTableComparator>, MakeDumper<TGSUBTableDumper>, kVelldump},
    {VellMakeTag("kern"), kOpenType, MakeComparator<TKERNTableComparator>, MakeDumper<TKERNTableDumper>, kVelldump},

    // Under --opentype: the variable tables; 'gvar' keeps its classic dumper.
    {VellMakeTag("HVAR"), kOpenType, MakeComparator<THVARTableComparator>, MakeDumper<THVARTableDumper>, kVelldump},
    {VellMakeTag("MVAR"), kOpenType, MakeComparator<TMVARTableComparator>, MakeDumper<TMVARTableDumper>, kVelldump},
    {VellMakeTag("STAT"), kOpenType, MakeComparator<TSTATTableComparator>, MakeDumper<TSTATTableDumper>, kVelldump,
     true},
    {VellMakeTag("VVAR"), kOpenType, MakeComparator<TVVARTableComparator>, MakeDumper<TVVARTableDumper>, kVelldump},
    {VellMakeTag("avar"), kOpenType, MakeComparator<TAVARTableComparator>, MakeDumper<TAVARTableDumper>, kVelldump},
    {VellMakeTag("fvar"), kOpenType, MakeComparator<TFVARTableComparator>, MakeDumper<TFVARTableDumper>, kVelldump,
     true},
    {VellMakeTag("gvar"), kOpenType, MakeComparator<TGVARTableComparator>, nullptr},

    // With --opentype velldump lists the tables whose comparisons already know every field.
    {VellMakeTag("OS/2"), kOpenType, nullptr, MakeDumper<TOS2TableDumper>, kVelldump},
    {VellMakeTag("cmap"), kOpenType, nullptr, MakeDumper<TCMAPTableDumper>, kVelldump},
    {VellMakeTag("head"), kOpenType, nullptr, MakeDumper<THEADTableDumper>, kVelldump},
    {VellMakeTag("post"), kOpenType, nullptr, MakeDumper<TPOSTTableDumper>, kVelldump},
};

// The first row of this tag that has what `has` asks for: an OpenType row under
// --opentype, else a classic row.
template <typename Has>
const TableHandler* FindRow(VellTag tag, Has has) {
    for (HandlerSet set : {HandlerSet::OpenType, HandlerSet::Classic}) {
        if (set == HandlerSet::OpenType && !gOpenType) continue;
        for (const TableHandler& row : kTableHandlers)
            if (row.tag == tag && row.set == set && has(row)) return &row;
    }
    return nullptr;
}

}  // namespace

std::span<const TableHandler> TableHandlers() { return kTableHandlers; }

const TableHandler* FindComparatorHandler(VellTag tag) {
    return FindRow(tag, [](const TableHandler& row) { return row.comparator != nullptr; });
}

const TableHandler* FindDumperHandler(VellTag tag, bool velldump) {
    return FindRow(tag, [velldump](const TableHandler& row) {
        return row.dumper != nullptr && (velldump || row.reach == DumperReach::Factory);
    });
}

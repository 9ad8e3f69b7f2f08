// The handler table: for each tag with a handler of its own, how to build its
// comparator and its dumper. The registry, the dumper factory and velldump all
// choose their handlers here, and nowhere else.
//
// Adding a table: its pair of files under src/tables/, one row in
// src/tables/TableHandlers.cpp, its test file, and its line in the manual pages.
#pragma once

#include <cstdint>
#include <cstdio>
#include <memory>
#include <span>

#include "framework/VellTypes.h"

class TFontContext;
class TTableComparator;
class TTableDumper;

using ComparatorMaker = std::unique_ptr<TTableComparator> (*)(TFontContext& modified, TFontContext& original,
                                                              VellTag tag, FILE* out);
using DumperMaker = std::unique_ptr<TTableDumper> (*)(TFontContext& font, VellTag tag, FILE* out);

// Which dumpers build a table's dumper: the factory (MakeTableDumper) builds the
// classic set, which velldump uses too; some only velldump builds.
enum class DumperReach : uint8_t { Factory, VelldumpOnly };

// Classic rows always apply; OpenType rows only under --opentype, and then they
// come before the classic row of the same tag.
enum class HandlerSet : uint8_t { Classic, OpenType };

struct TableHandler {
    VellTag tag;
    HandlerSet set;
    ComparatorMaker comparator;  // null: the tag has no comparator of its own here
    DumperMaker dumper;          // null: the tag has no dumper of its own here
    DumperReach reach = DumperReach::Factory;
    // The dumper names things from 'name': velldump reads the font's names before
    // building it, so that a 'name' it cannot read is reported, not fatal.
    bool dumperReadsNames = false;
};

// Every row, in the table's order.
std::span<const TableHandler> TableHandlers();

// The row whose comparator handles this tag (OpenType rows first under
// --opentype), or null: then the tag gets the generic hex difference.
const TableHandler* FindComparatorHandler(VellTag tag);
// The row whose dumper prints this tag for the factory, or for velldump when
// `velldump` is set; null: a hex dump.
const TableHandler* FindDumperHandler(VellTag tag, bool velldump);

// The row makers: every handler class is built in the one form.
template <typename Comparator>
std::unique_ptr<TTableComparator> MakeComparator(TFontContext& modified, TFontContext& original, VellTag tag,
                                                 FILE* out) {
    return std::make_unique<Comparator>(modified, original, tag, out);
}
template <typename Dumper>
std::unique_ptr<TTableDumper> MakeDumper(TFontContext& font, VellTag tag, FILE* out) {
    return std::make_unique<Dumper>(font, tag, out);
}

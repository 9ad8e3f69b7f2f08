// The diff engine: the font diff driver and the registry of table comparators.
#pragma once

#include <cstdio>
#include <memory>

#include "VellCmpErrors.h"
#include "dumpers/TFontContext.h"
#include "framework/VellFontFile.h"

// ---- The font diff driver and the registry ----
class TTableComparator;

// Compares the table directories of a modified and an original font and reports
// every changed table: its account, or with --summary its sizes alone, and under
// --tables or --exclude-tables its tag alone when it is not chosen. Sets
// gFontsDiffer when a table was added, deleted or changed. On failure the record
// holds -7 (already reported).
void DiffFonts(VellFontRef modifiedFont, VellFontRef originalFont, ErrorRecord* record);

// The comparator for a changed table of this tag, from the handler table (the
// generic hex difference for a tag without a row), or null (for 'loca', or when
// either font lacks the table). A table either font cannot read throws.
std::unique_ptr<TTableComparator> MakeTableComparator(TFontContext& modified, TFontContext& original, VellTag tag,
                                                      FILE* out);

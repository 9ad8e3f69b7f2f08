// The diff engine: the font diff driver and the registry of table comparators.
#pragma once

#include <cstdio>
#include <memory>

#include "VellCmpErrors.h"
#include "framework/VellFontFile.h"

// ---- The font diff driver and the registry ----
class TTableComparator;

// Compares the table directories of a modified and an original font and reports
// every changed table: its account, or with --summary its sizes alone, and under
// --tables or --exclude-tables its tag alone when it is not chosen. Sets
// gFontsDiffer when a table was added, deleted or changed. On failure the record
// holds -7 (already reported).
void DiffFonts(VellFontRef modifiedFont, VellFontRef originalFont, ErrorRecord* record);

// The comparator for a changed table of this tag, with both tables and the side
// data it needs, or null (for 'loca', or when either font lacks the table).
std::unique_ptr<TTableComparator> MakeTableComparator(VellFontRef modifiedFont, VellFontRef originalFont,
                                                      VellTag tag, FILE* out);

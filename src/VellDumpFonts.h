// The one-font dump: every table of a font printed in full through its dumper:
// the factory's, or one the handler table gives velldump alone.
#pragma once

#include <cstdio>
#include <memory>
#include <vector>

#include "VellCmpErrors.h"
#include "dumpers/TTableDumper.h"

// The dumper for the font's table with this tag, or null when the font has none.
// A table the framework cannot read leaves its code in the record (the factory
// itself would end the run), and null is returned.
std::unique_ptr<TTableDumper> MakeFontTableDumper(TFontContext& font, VellTag tag, FILE* out, ErrorRecord* record);

// Prints the tables of one font with these tags (all of them, in directory order,
// when there are none) to the report stream. A missing table is a warning on
// standard error. Returns 1 after a reported failure.
int DumpFont(VellFontRef font, std::vector<VellTag> tags);

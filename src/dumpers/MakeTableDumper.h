// The factory of dumpers that print one table of one font in full.
#pragma once

#include <cstdio>
#include <memory>

#include "dumpers/TTableDumper.h"

// The dumper for the font's table with this tag (a hex dump where the tag has no
// dumper of its own), or null when the font has no such table.
std::unique_ptr<TTableDumper> MakeTableDumper(VellFontRef font, VellTag tag, FILE* out);

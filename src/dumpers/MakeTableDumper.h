// The factory of dumpers that print one table of one font in full.
#pragma once

#include <cstdio>
#include <memory>

#include "dumpers/TTableDumper.h"

// The dumper for the font's table with this tag (a hex dump where the tag has no
// dumper the factory builds), or null when the font has no such table. The
// context outlives the dumper.
std::unique_ptr<TTableDumper> MakeTableDumper(TFontContext& font, VellTag tag, FILE* out);

// Whether the framework can read every table the factory reads for this tag: the
// factory has no report of its own for a failing call (the run ends), so callers
// that want to report such a font check it first. On failure the record holds the
// framework's code.
bool CanMakeTableDumper(VellFontRef font, VellTag tag, ErrorRecord* record);

// 'bdat' with 'bloc': bitmap data compared glyph bitmap by glyph bitmap, through
// each font's bitmap locations sorted by data offset. The registry builds this
// comparator (a damaged 'bloc' fails there) but reports a changed 'bdat' through
// the 'head' comparator over the two 'bdat' tables, as reports always have.
#pragma once

#include "comparators/TTableComparator.h"

class TBDATTableComparator : public TTableComparator {
public:
    // (modified font, modified table, original font, original table, out)
    TBDATTableComparator(VellFontRef modifiedFont, VellHandle modifiedTable, VellFontRef originalFont,
                         VellHandle originalTable, FILE* out);
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 20; }
};

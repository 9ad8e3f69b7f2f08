// 'cmap': added, deleted and changed encodings, and within each changed encoding
// the added, deleted and changed character mappings. Encodings are listed and
// matched through the framework, and each one's mapping comes from it as an array
// sorted by character code. There is no 'cmap' dumper.
#pragma once

#include "comparators/TTableComparator.h"

class TCMAPTableComparator : public TTableComparator {
public:
    // (modified table, modified font, original table, original font, out)
    TCMAPTableComparator(VellHandle modifiedTable, VellFontRef modifiedFont, VellHandle originalTable,
                         VellFontRef originalFont, FILE* out);
    int32_t DumpTableDeltas() override;
    int GetHandlerKind() const override { return 9; }
};

#include "tables/cvt.h"

namespace {

constexpr size_t kControlValueBytes = 2;

}  // namespace

int32_t TCVTTableDumper::DumpTableContents() {
    // A trailing odd byte is no control value.
    VellView table = GetTableView();
    size_t count = table.size() / kControlValueBytes;
    PrintInt32Field(1, "Number of control values", static_cast<int32_t>(count), false, true);
    for (size_t i = 0; i < count; ++i)
        PrintInt16Field(2, VellFormat("%d", static_cast<int>(i)), table.s16(kControlValueBytes * i), false);
    return 0;
}

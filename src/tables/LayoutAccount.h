// The account of a layout table read as rule lists ('GSUB', 'GPOS', 'GDEF' and
// 'kern' under --opentype): every rule for a dump, and for a comparison the rules
// added, deleted and changed in each list. Rules are matched by glyph name when
// both fonts name every glyph, else by glyph number.
#pragma once

#include "comparators/TTableComparator.h"
#include "framework/VellLayout.h"

// Every list under "### <what>:", one rule a line.
void DumpLayoutAccount(TTableDumper& dumper, const VellLayoutAccount& account);
// The two fonts' lists paired by name; a feature tag's list that has no namesake
// (its language systems differ) pairs with the list of that tag sharing most of
// its language systems. Lists of only one font pair with nothing.
std::vector<std::pair<const VellLayoutRuleList*, const VellLayoutRuleList*>> PairLayoutLists(
    const VellLayoutAccount& modified, const VellLayoutAccount& original);
// The lists of the two fonts matched by name; nothing for a list whose rules agree.
void CompareLayoutAccounts(TTableComparator& comparator, const VellLayoutAccount& modified,
                           const VellLayoutAccount& original);

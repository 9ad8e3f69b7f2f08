// --ignore: the differences a run leaves out of its report, named by their JSON
// paths. A rule is a table's tag, alone (the whole table), or followed by the
// steps of a path, dot-separated ("head.checkSumAdjustment", "name.5",
// "hmtx.*.advanceWidth"); "*" stands for any one step, and a rule names every
// difference whose path begins with its steps. "build" names what a rebuild
// changes without an edit: 'head' checkSumAdjustment, created and modified, and
// the 'DSIG' table.
#pragma once

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "dumpers/TJsonReport.h"
#include "framework/VellTypes.h"

struct IgnoreRule {
    VellTag tag;
    std::vector<std::string> steps;  // empty: the whole table
};

// The rules of this run (--ignore), empty without it.
extern std::vector<IgnoreRule> gIgnoreRules;

// Adds the rules of a comma-separated list; false, after an error line on
// standard error, for an empty rule or a tag longer than four characters.
bool AddIgnoreRules(std::string_view list, std::vector<IgnoreRule>& rules);

// Whether a rule names this whole table.
bool TableIgnored(VellTag tag);
// Whether a rule names fields of this table (and not the whole of it): its
// differences must be counted before the table is listed as changed.
bool TableHasIgnoredFields(VellTag tag);
// Whether a rule names the difference at this path of this table.
bool DifferenceIgnored(VellTag tag, std::span<const PathStep> path);

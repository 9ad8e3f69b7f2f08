#include "dumpers/IgnoreRules.h"

#include <algorithm>
#include <cstdio>

#include "CommandLine.h"

std::vector<IgnoreRule> gIgnoreRules;

namespace {

// The preset of a rebuild: the checksum, both dates and the signature.
constexpr std::string_view kBuildRules = "head.checkSumAdjustment,head.created,head.modified,DSIG";

// A rule's tag: up to four characters, which may hold a dot only as 'OS/2' does
// not; the tag ends at the first dot after the first character.
bool AddRule(std::string_view text, std::vector<IgnoreRule>& rules) {
    size_t dot = text.find('.', 1);
    std::string_view tag = text.substr(0, dot);
    if (tag.empty() || tag.size() > 4) return false;
    IgnoreRule rule{TagFromText(tag), {}};
    while (dot != std::string_view::npos) {
        text.remove_prefix(dot + 1);
        dot = text.find('.');
        std::string_view step = text.substr(0, dot);
        if (step.empty()) return false;
        rule.steps.emplace_back(step);
    }
    rules.push_back(std::move(rule));
    return true;
}

}  // namespace

bool AddIgnoreRules(std::string_view list, std::vector<IgnoreRule>& rules) {
    while (true) {
        size_t comma = list.find(',');
        std::string_view text = list.substr(0, comma);
        bool added = text == "build" ? AddIgnoreRules(kBuildRules, rules) : AddRule(text, rules);
        if (!added) {
            std::fprintf(stderr, "#### ERROR:  Invalid --ignore rule \"%.*s\"\n", static_cast<int>(text.size()),
                         text.data());
            return false;
        }
        if (comma == std::string_view::npos) return true;
        list.remove_prefix(comma + 1);
    }
}

bool TableIgnored(VellTag tag) {
    return std::any_of(gIgnoreRules.begin(), gIgnoreRules.end(),
                       [tag](const IgnoreRule& rule) { return rule.tag == tag && rule.steps.empty(); });
}

bool TableHasIgnoredFields(VellTag tag) {
    return !TableIgnored(tag) && std::any_of(gIgnoreRules.begin(), gIgnoreRules.end(),
                                             [tag](const IgnoreRule& rule) { return rule.tag == tag; });
}

bool DifferenceIgnored(VellTag tag, std::span<const PathStep> path) {
    for (const IgnoreRule& rule : gIgnoreRules) {
        if (rule.tag != tag || rule.steps.size() > path.size()) continue;
        bool named = true;
        for (size_t i = 0; i < rule.steps.size() && named; ++i)
            named = rule.steps[i] == "*" || rule.steps[i] == path[i].Text();
        if (named) return true;
    }
    return false;
}

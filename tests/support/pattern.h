// Matchers for texts by regular expression (ECMAScript's). GoogleTest's own know neither brackets nor groups in a
// Windows program.
#pragma once

#include <gmock/gmock.h>

#include <regex>
#include <string>

/// The whole text fits the pattern.
MATCHER_P(FitsPattern, pattern, "") {
    *result_listener << "wanted " << pattern;
    return std::regex_match(arg, std::regex(pattern));
}

/// Some part of the text fits the pattern.
MATCHER_P(HoldsPattern, pattern, "") {
    *result_listener << "wanted " << pattern;
    return std::regex_search(arg, std::regex(pattern));
}

#pragma once
// The language label tables that the console fetches at login. Each language
// is a UTF-8 file "KEY = TEXT" compiled into the program (server/labels).

#include <map>
#include <string>
#include <string_view>
#include <vector>

namespace veldrano::server {

struct LabelTable {
    std::string language;
    std::string stamp;  // changes whenever a text changes
    std::vector<std::pair<std::string, std::string>> entries;
};

// Parses a label file: "#" comments and blank lines are skipped; the key is
// everything before the first " = "; a text in double quotes keeps its outer
// blanks; "\n" is a line break.
std::vector<std::pair<std::string, std::string>> ParseLabels(std::string_view text);

// The table of a language; unknown languages fall back to English.
const LabelTable& Labels(const std::string& language);
std::vector<std::string> LabelLanguages();

}  // namespace veldrano::server

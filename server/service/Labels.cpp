#include "service/Labels.h"

#include <functional>
#include <mutex>

namespace veldrano::server {

const std::map<std::string, std::string_view>& EmbeddedLabelFiles();

namespace {

std::string Unescape(std::string_view text) {
    std::string out;
    out.reserve(text.size());
    for (size_t i = 0; i < text.size(); ++i) {
        if (text[i] == '\\' && i + 1 < text.size() && text[i + 1] == 'n') {
            out += '\n';
            ++i;
        } else {
            out += text[i];
        }
    }
    return out;
}

std::string_view TrimRight(std::string_view s) {
    while (!s.empty() && (s.back() == '\r' || s.back() == ' ' || s.back() == '\t'))
        s.remove_suffix(1);
    return s;
}

}  // namespace

std::vector<std::pair<std::string, std::string>> ParseLabels(std::string_view text) {
    std::vector<std::pair<std::string, std::string>> entries;
    while (!text.empty()) {
        size_t end = text.find('\n');
        std::string_view line = TrimRight(text.substr(0, end));
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
        if (line.empty() || line.front() == '#') continue;
        size_t sep = line.find(" = ");
        if (sep == std::string_view::npos) continue;
        std::string_view value = line.substr(sep + 3);
        if (value.size() >= 2 && value.front() == '"' && value.back() == '"')
            value = value.substr(1, value.size() - 2);
        entries.emplace_back(std::string(line.substr(0, sep)), Unescape(value));
    }
    return entries;
}

const LabelTable& Labels(const std::string& language) {
    static std::mutex mutex;
    static std::map<std::string, LabelTable> tables;
    std::lock_guard lock(mutex);
    const auto& files = EmbeddedLabelFiles();
    std::string code = files.count(language) ? language : "en";
    auto it = tables.find(code);
    if (it != tables.end()) return it->second;
    LabelTable table;
    table.language = code;
    std::string_view text = files.at(code);
    table.entries = ParseLabels(text);
    table.stamp = code + "-" + std::to_string(std::hash<std::string_view>{}(text));
    return tables.emplace(code, std::move(table)).first->second;
}

std::vector<std::string> LabelLanguages() {
    std::vector<std::string> codes;
    for (const auto& [code, text] : EmbeddedLabelFiles()) codes.push_back(code);
    return codes;
}

}  // namespace veldrano::server

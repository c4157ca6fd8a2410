#pragma once
// Field checks shared by every kind. Each throws ServiceError with the
// protocol's number and a description that names the record and the field,
// so the administrator sees at once what was refused.

#include <cstdint>
#include <string>
#include <string_view>

#include "store/ServiceError.h"

namespace veldrano::server {

// Number of characters (UTF-8 code points) in s.
size_t CharCount(std::string_view s);

struct FieldCheck {
    std::string what;  // e.g. "user 'alice'"

    // A text of at most maxChars characters; required refuses an empty text;
    // keyText refuses "(" and ")" (they delimit references in the console).
    void Text(const char* field, const std::string& value, size_t maxChars, bool required = false,
              bool keyText = false) const;
    void Range(const char* field, int64_t value, int64_t low, int64_t high) const;
    [[noreturn]] void Fail(pb::Error code, const std::string& message) const;
};

// The display name of a user reference, "user@host".
std::string RefText(const pb::UserRef& ref);
inline bool IsEmptyRef(const pb::UserRef& ref) {
    return ref.user_name().empty() && ref.host_name().empty();
}

}  // namespace veldrano::server

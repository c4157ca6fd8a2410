#include "store/Validate.h"

namespace veldrano::server {

size_t CharCount(std::string_view s) {
    size_t count = 0;
    for (unsigned char c : s)
        if ((c & 0xC0) != 0x80) ++count;
    return count;
}

void FieldCheck::Fail(pb::Error code, const std::string& message) const {
    throw ServiceError(code, what + ": " + message);
}

void FieldCheck::Text(const char* field, const std::string& value, size_t maxChars, bool required,
                      bool keyText) const {
    if (required && value.find_first_not_of(' ') == std::string::npos)
        Fail(pb::ERROR_REQUIRED, std::string(field) + " must not be empty");
    if (CharCount(value) > maxChars)
        Fail(pb::ERROR_TOO_LONG,
             std::string(field) + " takes at most " + std::to_string(maxChars) + " characters");
    if (value.find('\0') != std::string::npos ||
        (keyText && value.find_first_of("()") != std::string::npos))
        Fail(pb::ERROR_INVALID_CHARACTER,
             std::string(field) + (keyText ? " must not hold parentheses" : " holds a NUL"));
}

void FieldCheck::Range(const char* field, int64_t value, int64_t low, int64_t high) const {
    if (value < low || value > high)
        Fail(pb::ERROR_OUT_OF_RANGE, std::string(field) + " must lie between " +
                                         std::to_string(low) + " and " + std::to_string(high) +
                                         " (got " + std::to_string(value) + ")");
}

std::string RefText(const pb::UserRef& ref) {
    return ref.user_name() + "@" + ref.host_name();
}

}  // namespace veldrano::server

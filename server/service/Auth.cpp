#include "service/Auth.h"

#include <sodium.h>

#include <stdexcept>

#include "store/Store.h"

namespace veldrano::server {

namespace {

constexpr const char* kPasswordKey = "admin_password_hash";
// At least the recommended 19 MiB and two passes of argon2id.
constexpr size_t kMemLimit = 19u * 1024u * 1024u;
constexpr unsigned long long kOpsLimit = 2;

void InitSodium() {
    static const bool ok = sodium_init() >= 0;
    if (!ok) throw std::runtime_error("libsodium cannot be initialised");
}

std::string ToHex(const unsigned char* data, size_t size) {
    std::string hex(size * 2 + 1, '\0');
    sodium_bin2hex(hex.data(), hex.size(), data, size);
    hex.pop_back();
    return hex;
}

}  // namespace

std::string HashPassword(const std::string& password) {
    InitSodium();
    char out[crypto_pwhash_STRBYTES];
    if (crypto_pwhash_str_alg(out, password.data(), password.size(), kOpsLimit, kMemLimit,
                              crypto_pwhash_ALG_ARGON2ID13) != 0)
        throw ServiceError(pb::ERROR_SERVER_BUSY, "not enough memory to hash the password");
    return out;
}

bool VerifyPassword(const std::string& hash, const std::string& password) {
    InitSodium();
    return !hash.empty() &&
           crypto_pwhash_str_verify(hash.c_str(), password.data(), password.size()) == 0;
}

std::string RandomPassword() {
    InitSodium();
    unsigned char bytes[9];
    randombytes_buf(bytes, sizeof bytes);
    return ToHex(bytes, sizeof bytes);
}

Auth::Auth(Store& store, int attemptsPerWindow, std::chrono::milliseconds window)
    : store_(store), attemptsPerWindow_(attemptsPerWindow), window_(window) {}

bool Auth::HasPassword() {
    return !store_.GetMeta(kPasswordKey).empty();
}

void Auth::SetPassword(const std::string& password) {
    if (password.empty())
        throw ServiceError(pb::ERROR_REQUIRED, "the administrator password must not be empty");
    store_.SetMeta(kPasswordKey, HashPassword(password));
}

void CheckNewPassword(const std::string& password) {
    size_t characters = 0;
    for (const char byte : password)
        if ((static_cast<unsigned char>(byte) & 0xC0) != 0x80) ++characters;
    if (characters < kMinPasswordLength)
        throw ServiceError(
            pb::ERROR_PASSWORD_TOO_SHORT,
            "it must have at least " + std::to_string(kMinPasswordLength) + " characters");
    if (password.size() > 256)
        throw ServiceError(pb::ERROR_TOO_LONG, "the password takes at most 256 characters");
}

void Auth::ChangePassword(const std::string& password, const std::string& keepToken) {
    CheckNewPassword(password);
    store_.SetMeta(kPasswordKey, HashPassword(password));
    std::lock_guard lock(mutex_);
    for (auto it = tokens_.begin(); it != tokens_.end();)
        it = it->first == keepToken ? std::next(it) : tokens_.erase(it);
}

void Auth::CountAttempt(const std::string& client) {
    std::lock_guard lock(mutex_);
    const auto now = Clock::now();
    const auto expired = [&](const std::deque<Clock::time_point>& tries) {
        return tries.empty() || now - tries.back() >= window_;
    };
    // Many addresses (a scan, a spoofing flood) must not grow the table
    // without end: forget the ones whose attempts have all aged out.
    if (tries_.size() > 4096)
        std::erase_if(tries_, [&](const auto& entry) { return expired(entry.second); });
    auto& tries = tries_[client];
    while (!tries.empty() && now - tries.front() >= window_) tries.pop_front();
    if (static_cast<int>(tries.size()) >= attemptsPerWindow_)
        throw ServiceError(pb::ERROR_THROTTLED, "");  // the description says it all
    tries.push_back(now);
}

std::string Auth::Login(const std::string& client, const std::string& password) {
    CountAttempt(client);
    // Hashing takes a while and much memory: do it outside the lock.
    const bool ok = VerifyPassword(store_.GetMeta(kPasswordKey), password);
    if (!ok) throw ServiceError(pb::ERROR_ACCESS_DENIED, "the password was refused");
    unsigned char bytes[32];
    randombytes_buf(bytes, sizeof bytes);
    std::string token = ToHex(bytes, sizeof bytes);
    std::lock_guard lock(mutex_);
    tries_.erase(client);
    tokens_[token] = Clock::now();
    return token;
}

void Auth::Check(const std::string& token) {
    std::lock_guard lock(mutex_);
    auto it = tokens_.find(token);
    if (it == tokens_.end())
        throw ServiceError(pb::ERROR_ACCESS_DENIED, "the session token is missing or unknown");
    auto now = Clock::now();
    if (now - it->second > idleLimit_) {
        tokens_.erase(it);
        throw ServiceError(pb::ERROR_ACCESS_DENIED, "the session has expired");
    }
    it->second = now;
}

}  // namespace veldrano::server

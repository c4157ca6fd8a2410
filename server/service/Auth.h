#pragma once
// The administrator password and the session tokens handed out at login.
//
// The password is stored as an argon2id hash (libsodium, 19 MiB and two
// passes at least). Tokens are random, live in memory, and expire after an
// idle period; a restarted server therefore asks every console to log in again.
// Repeated failures from one client are throttled with a growing delay.

#include <chrono>
#include <map>
#include <mutex>
#include <string>

namespace veldrano::server {

class Store;

std::string HashPassword(const std::string& password);
bool VerifyPassword(const std::string& hash, const std::string& password);
std::string RandomPassword();

// The fewest characters a password set through the protocol may have.
constexpr size_t kMinPasswordLength = 8;
// Refuses a password shorter than kMinPasswordLength characters (not bytes)
// with ERROR_PASSWORD_TOO_SHORT, and one over 256 bytes with ERROR_TOO_LONG.
void CheckNewPassword(const std::string& password);

class Auth {
public:
    using Clock = std::chrono::steady_clock;

    Auth(Store& store, int failuresBeforeThrottle);

    bool HasPassword();
    // The password given at start-up.
    void SetPassword(const std::string& password);
    // A change through the protocol: checked with CheckNewPassword, and every
    // session but keepToken's ends, so that whoever knew the old password is
    // out at once.
    void ChangePassword(const std::string& password, const std::string& keepToken);

    // Answers a token, or throws ServiceError: ERROR_ACCESS_DENIED for a wrong
    // password, ERROR_THROTTLED while the client must wait.
    std::string Login(const std::string& client, const std::string& password);
    // Throws ERROR_ACCESS_DENIED unless the token is known and not expired.
    void Check(const std::string& token);

    std::chrono::seconds IdleLimit() const { return idleLimit_; }
    void SetIdleLimit(std::chrono::seconds limit) { idleLimit_ = limit; }

private:
    struct Failures {
        int count = 0;
        Clock::time_point blockedUntil{};
    };

    Store& store_;
    int failuresBeforeThrottle_;
    std::chrono::seconds idleLimit_{8 * 3600};
    std::mutex mutex_;
    std::map<std::string, Clock::time_point> tokens_;  // token -> last use
    std::map<std::string, Failures> failures_;         // client -> recent failures
};

}  // namespace veldrano::server

#pragma once
// The administrator password and the session tokens handed out at login.
//
// The password is stored as an argon2id hash (libsodium, 19 MiB and two
// passes at least). Tokens are random, live in memory, and expire after an
// idle period; a restarted server therefore asks every console to log in again.
// Login attempts are throttled per client address: at most
// kLoginAttemptsPerWindow password checks in any kLoginWindow. An attempt is
// counted before its password is checked, so parallel guesses gain nothing;
// attempts leave the count as they grow older than the window, and a
// successful login clears it.

#include <chrono>
#include <deque>
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

constexpr int kLoginAttemptsPerWindow = 5;
constexpr std::chrono::seconds kLoginWindow{60};

class Auth {
public:
    using Clock = std::chrono::steady_clock;

    explicit Auth(Store& store, int attemptsPerWindow = kLoginAttemptsPerWindow,
                  std::chrono::milliseconds window = kLoginWindow);

    bool HasPassword();
    // The password given at start-up, or by the offline reset.
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
    // Takes one attempt of client's allowance, or throws ERROR_THROTTLED.
    void CountAttempt(const std::string& client);

    Store& store_;
    int attemptsPerWindow_;
    std::chrono::milliseconds window_;
    std::chrono::seconds idleLimit_{8 * 3600};
    std::mutex mutex_;
    std::map<std::string, Clock::time_point> tokens_;             // token -> last use
    std::map<std::string, std::deque<Clock::time_point>> tries_;  // client -> recent attempts
};

}  // namespace veldrano::server

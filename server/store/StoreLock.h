#pragma once
// Exclusive ownership of a store: a serving process (and an offline tool
// such as the password reset) holds a lock on "<store>.lock" for as long as
// it uses the store, so that a second one is refused with the first one's
// process id instead of both writing to one file. The kernel drops the lock
// when the process ends, however it ends.

#include <string>

namespace veldrano::server {

class StoreLock {
public:
    // Throws ServiceError(ERROR_STORE_FAILURE) naming the store and the
    // process that holds it.
    explicit StoreLock(const std::string& storePath);
    ~StoreLock();
    StoreLock(const StoreLock&) = delete;
    StoreLock& operator=(const StoreLock&) = delete;

private:
    int fd_ = -1;
};

}  // namespace veldrano::server

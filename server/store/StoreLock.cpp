#include "store/StoreLock.h"

#include <fcntl.h>
#include <sys/file.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>

#include "store/ServiceError.h"

namespace veldrano::server {

StoreLock::StoreLock(const std::string& storePath) {
    const std::string path = storePath + ".lock";
    fd_ = ::open(path.c_str(), O_RDWR | O_CREAT | O_CLOEXEC, 0600);
    if (fd_ < 0)
        throw ServiceError(pb::ERROR_STORE_FAILURE,
                           "cannot open the lock file " + path + ": " + std::strerror(errno));
    if (::flock(fd_, LOCK_EX | LOCK_NB) != 0) {
        char holder[32] = {};
        [[maybe_unused]] const auto read = ::pread(fd_, holder, sizeof holder - 1, 0);
        ::close(fd_);
        fd_ = -1;
        std::string who = holder[0] ? "process " + std::string(holder) : "another process";
        while (!who.empty() && (who.back() == '\n' || who.back() == ' ')) who.pop_back();
        throw ServiceError(pb::ERROR_STORE_FAILURE,
                           "the store " + storePath + " is in use by " + who);
    }
    const std::string pid = std::to_string(::getpid()) + "\n";
    if (::ftruncate(fd_, 0) == 0) {
        [[maybe_unused]] const auto written = ::pwrite(fd_, pid.data(), pid.size(), 0);
    }
}

StoreLock::~StoreLock() {
    if (fd_ >= 0) ::close(fd_);  // closing releases the lock
}

}  // namespace veldrano::server

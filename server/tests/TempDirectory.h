#pragma once
// A directory of its own for one test, removed with everything in it; a store
// on a fresh file in such a directory; and the options of a server host whose
// store lies in one.

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <string>

#include "service/ServerHost.h"
#include "store/Store.h"

namespace veldrano::server::testing {

struct TempDirectory {
    explicit TempDirectory(const std::string& prefix = "veldrano-test")
        : path(std::filesystem::temp_directory_path() /
               (prefix + "-" + std::to_string(::getpid()) + "-" +
                std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()) + "-" +
                std::to_string(serial++))) {
        std::filesystem::create_directories(path);
    }
    ~TempDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    TempDirectory(const TempDirectory&) = delete;
    TempDirectory& operator=(const TempDirectory&) = delete;
    std::string File(const std::string& name) const { return (path / name).string(); }

    std::filesystem::path path;
    static inline std::atomic<int> serial{0};
};

class TempStore {
public:
    Store& operator*() { return store_; }
    Store* operator->() { return &store_; }

private:
    TempDirectory dir_{"veldrano-store"};
    Store store_{dir_.File("store.sqlite")};
};

inline constexpr const char* kHostPassword = "right horse battery";

// A host on dir's store with kHostPassword, listening on listen ("" for
// none), without the background simulation.
inline ServerOptions HostOptions(const TempDirectory& dir, const std::string& listen) {
    ServerOptions options;
    options.dataPath = dir.File("store.db");
    options.listen = listen;
    options.password = kHostPassword;
    options.simulate = false;
    return options;
}

}  // namespace veldrano::server::testing

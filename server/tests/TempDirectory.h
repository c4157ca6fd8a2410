#pragma once
// A directory of its own for one test, removed with everything in it.

#include <unistd.h>

#include <chrono>
#include <filesystem>
#include <string>

namespace veldrano::server::testing {

struct TempDirectory {
    explicit TempDirectory(const std::string& prefix = "veldrano-test")
        : path(std::filesystem::temp_directory_path() /
               (prefix + "-" + std::to_string(::getpid()) + "-" +
                std::to_string(std::chrono::steady_clock::now().time_since_epoch().count()))) {
        std::filesystem::create_directories(path);
    }
    ~TempDirectory() {
        std::error_code ignored;
        std::filesystem::remove_all(path, ignored);
    }
    std::string File(const std::string& name) const { return (path / name).string(); }

    std::filesystem::path path;
};

}  // namespace veldrano::server::testing

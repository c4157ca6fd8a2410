#pragma once
// A store on a fresh SQLite file in a directory of its own, removed again when
// the test ends, for the simulator, demo data and generator suites.

#include <unistd.h>

#include <atomic>
#include <chrono>
#include <filesystem>
#include <memory>
#include <string>
#include <vector>

#include "store/Store.h"

namespace veldrano::server::testing {

class TempStore {
public:
    TempStore() {
        static std::atomic<int> serial{0};
        auto stamp = std::chrono::steady_clock::now().time_since_epoch().count();
        dir_ = std::filesystem::temp_directory_path() /
               ("veldrano-sim-" + std::to_string(::getpid()) + "-" + std::to_string(stamp) + "-" +
                std::to_string(serial++));
        std::filesystem::create_directories(dir_);
        store_ = std::make_unique<Store>((dir_ / "store.sqlite").string());
    }
    ~TempStore() {
        store_.reset();
        std::error_code ignored;
        std::filesystem::remove_all(dir_, ignored);
    }
    TempStore(const TempStore&) = delete;
    TempStore& operator=(const TempStore&) = delete;

    Store& operator*() { return *store_; }
    Store* operator->() { return store_.get(); }

private:
    std::filesystem::path dir_;
    std::unique_ptr<Store> store_;
};

// Newest events of a server, newest first.
inline std::vector<pb::Event> Events(Store& store, const std::string& host, int max = 0) {
    pb::EventRequest req;
    req.set_host_name(host);
    req.set_max_count(max);
    std::vector<pb::Event> out;
    store.ForEachEvent(req, [&](const pb::Event& e) { out.push_back(e); });
    return out;
}

}  // namespace veldrano::server::testing

// veldrano-server: the reference message server that the VELDRANO
// Administrator console administers.

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <thread>

#include "demo/Generator.h"
#include "service/ServerHost.h"
#include "store/Store.h"

namespace fs = std::filesystem;
using namespace veldrano::server;

namespace {

constexpr const char* kDemoPassword = "veldrano";

void PrintHelp() {
    std::cout <<
        R"(Usage: veldrano-server [options]

  --data FILE           the store (SQLite); default: $XDG_DATA_HOME/veldrano/server.db
                        or ~/.local/share/veldrano/server.db
  --listen HOST:PORT    address to serve on; default 127.0.0.1:47110
  --demo                fill an empty store with the demo installation; a store
                        without a password gets the demo password "veldrano"
  --brand WORD          brand word reported to consoles (kelvar, quorel); stored
  --language CODE       language of the label texts (en, de); stored
  --password-file FILE  first password of a store that has none (first line of FILE)
  --generate LIST       fill the store with a large installation, then exit
  --no-simulation       do not run the background simulation
  --help                this text

On the first start of a store without a password, and without --password-file
or --demo, a password is generated and printed once.

)" << GenerateHelp()
              << "\n";
}

std::string DefaultDataPath() {
    const char* xdg = std::getenv("XDG_DATA_HOME");
    const char* home = std::getenv("HOME");
    fs::path base = xdg && *xdg ? fs::path(xdg) : fs::path(home ? home : ".") / ".local/share";
    return (base / "veldrano" / "server.db").string();
}

std::string FirstLine(const std::string& path) {
    std::ifstream in(path);
    if (!in) throw std::runtime_error("cannot read the password file " + path);
    std::string line;
    std::getline(in, line);
    while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) line.pop_back();
    return line;
}

}  // namespace

int main(int argc, char** argv) {
    ServerOptions options;
    options.dataPath = DefaultDataPath();
    std::string generate, passwordFile;
    auto value = [&](int& i) -> std::string {
        if (i + 1 >= argc) {
            std::cerr << "veldrano-server: " << argv[i] << " needs a value\n";
            std::exit(2);
        }
        return argv[++i];
    };
    for (int i = 1; i < argc; ++i) {
        std::string arg = argv[i];
        if (arg == "--help" || arg == "-h") {
            PrintHelp();
            return 0;
        } else if (arg == "--data") {
            options.dataPath = value(i);
        } else if (arg == "--listen") {
            options.listen = value(i);
        } else if (arg == "--demo") {
            options.demo = true;
        } else if (arg == "--brand") {
            options.brand = value(i);
        } else if (arg == "--language") {
            options.language = value(i);
        } else if (arg == "--password-file") {
            passwordFile = value(i);
        } else if (arg == "--generate") {
            generate = value(i);
        } else if (arg == "--no-simulation") {
            options.simulate = false;
        } else {
            std::cerr << "veldrano-server: unknown option " << arg << " (see --help)\n";
            return 2;
        }
    }

    // Block the stop signals in every thread; one thread waits for them.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    try {
        fs::path data(options.dataPath);
        if (data.has_parent_path()) fs::create_directories(data.parent_path());
        if (!passwordFile.empty())
            options.initialPassword = FirstLine(passwordFile);
        else if (options.demo)
            options.initialPassword = kDemoPassword;

        if (!generate.empty()) {
            auto sizes = ParseGenerateSizes(generate);
            Store store(options.dataPath);
            Generate(store, sizes);
            std::cout << "Generated into " << options.dataPath << "\n";
            return 0;
        }

        ServerHost host(options);
        if (!host.GeneratedPassword().empty())
            std::cout << "Administrator password (shown once): " << host.GeneratedPassword()
                      << std::endl;
        std::cout << "veldrano-server serving " << options.dataPath << " on " << options.listen
                  << " (port " << host.Port() << ")" << std::endl;
        int received = 0;
        sigwait(&signals, &received);
        std::cout << "veldrano-server stopping" << std::endl;
        host.Shutdown();
        return 0;
    } catch (const std::exception& e) {
        std::cerr << "veldrano-server: " << e.what() << "\n";
        return 1;
    }
}

// veldrano-server: the reference message server that the VELDRANO
// Administrator console administers.

#include <getopt.h>
#include <sys/stat.h>

#include <csignal>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <optional>

#include "demo/Generator.h"
#include "service/Auth.h"
#include "service/ListenAddress.h"
#include "service/Log.h"
#include "service/ServerHost.h"
#include "store/Store.h"
#include "store/StoreLock.h"
#include "tls/Certificates.h"

namespace fs = std::filesystem;
using namespace veldrano::server;

namespace {

constexpr const char* kVersion = "1.0.0";
constexpr const char* kDemoPassword = "veldrano";

void PrintHelp() {
    std::cout
        << "Usage: veldrano-server [options]\n"
           "\n"
           "  --data FILE           the store (SQLite); default: $XDG_DATA_HOME/veldrano/"
           "server.db\n"
           "                        or ~/.local/share/veldrano/server.db\n"
           "  --listen HOST[:PORT]  address to serve on; default 127.0.0.1:"
        << kDefaultPort << " (port " << kDefaultPort
        << " when\n"
           "                        none is given, 0 for any free one). Loopback\n"
           "                        addresses are served in plain text, every other\n"
           "                        address with TLS; [v6]:PORT for IPv6\n"
           "  --certificate FILE    TLS certificate (PEM) to present; default server.crt\n"
           "                        beside the store, made on first need\n"
           "  --key FILE            its private key (PEM); default server.key\n"
           "  --demo                fill an empty store with the demo installation; a store\n"
           "                        without a password gets the demo password \""
        << kDemoPassword
        << "\"\n"
           "  --brand WORD          brand word reported to consoles (kelvar, quorel); stored\n"
           "  --language CODE       language of the label texts (en, de); stored\n"
           "  --password-file FILE  first password of a store that has none (first line\n"
           "                        of FILE); with --set-password, the new password\n"
           "  --set-password        set the administrator password of a store that is\n"
           "                        not being served, read from --password-file or from\n"
           "                        standard input, then exit; at least "
        << kMinPasswordLength
        << " characters\n"
           "  --generate LIST       fill the store with a large installation, then exit\n"
           "  --no-simulation       do not run the background simulation\n"
           "  --log-level LEVEL     error, warning, notice, info (default) or debug\n"
           "  --version             print the version and exit\n"
           "  --help                this text\n"
           "\n"
           "On the first start of a store without a password, and without --password-file\n"
           "or --demo, a password is generated and printed once.\n"
           "\n"
        << GenerateHelp() << "\n";
}

std::string DefaultDataPath() {
    const char* xdg = std::getenv("XDG_DATA_HOME");
    const char* home = std::getenv("HOME");
    fs::path base = xdg && *xdg ? fs::path(xdg) : fs::path(home ? home : ".") / ".local/share";
    return (base / "veldrano" / "server.db").string();
}

std::string FirstLine(std::istream& in) {
    std::string line;
    std::getline(in, line);
    while (!line.empty() && (line.back() == '\r' || line.back() == '\n')) line.pop_back();
    return line;
}

std::string FirstLineOf(const std::string& path) {
    std::ifstream in(path);
    if (!in) throw std::runtime_error("cannot read the password file " + path);
    return FirstLine(in);
}

struct CommandLine {
    ServerOptions options;
    std::string generate;
    std::string passwordFile;
    bool setPassword = false;
    LogLevel logLevel = LogLevel::Info;
};

[[noreturn]] void Usage(const std::string& message) {
    std::cerr << "veldrano-server: " << message << " (see --help)\n";
    std::exit(2);
}

CommandLine Parse(int argc, char** argv) {
    enum Option {
        Data = 1000,
        Listen,
        Certificate,
        Key,
        Demo,
        Brand,
        Language,
        PasswordFile,
        SetPassword,
        Generate,
        NoSimulation,
        LogLevelOption,
        Version,
        Help
    };
    static const option options[] = {
        {"data", required_argument, nullptr, Data},
        {"listen", required_argument, nullptr, Listen},
        {"certificate", required_argument, nullptr, Certificate},
        {"key", required_argument, nullptr, Key},
        {"demo", no_argument, nullptr, Demo},
        {"brand", required_argument, nullptr, Brand},
        {"language", required_argument, nullptr, Language},
        {"password-file", required_argument, nullptr, PasswordFile},
        {"set-password", no_argument, nullptr, SetPassword},
        {"generate", required_argument, nullptr, Generate},
        {"no-simulation", no_argument, nullptr, NoSimulation},
        {"log-level", required_argument, nullptr, LogLevelOption},
        {"version", no_argument, nullptr, Version},
        {"help", no_argument, nullptr, Help},
        {nullptr, 0, nullptr, 0},
    };
    CommandLine line;
    line.options.dataPath = DefaultDataPath();
    opterr = 0;  // our own messages, in our own words
    for (;;) {
        const int previous = optind;
        const int chosen = getopt_long(argc, argv, ":h", options, nullptr);
        if (chosen == -1) break;
        const std::string given = previous < argc ? argv[previous] : "";
        switch (chosen) {
            case Data:
                line.options.dataPath = optarg;
                break;
            case Listen: {
                std::string error;
                const auto address = ParseListenAddress(optarg, &error);
                if (!address) Usage(error);
                line.options.listen = address->Target();
                break;
            }
            case Certificate:
                line.options.certificateFile = optarg;
                break;
            case Key:
                line.options.keyFile = optarg;
                break;
            case Demo:
                line.options.demo = true;
                break;
            case Brand:
                line.options.brand = optarg;
                break;
            case Language:
                line.options.language = optarg;
                break;
            case PasswordFile:
                line.passwordFile = optarg;
                break;
            case SetPassword:
                line.setPassword = true;
                break;
            case Generate:
                line.generate = optarg;
                break;
            case NoSimulation:
                line.options.simulate = false;
                break;
            case LogLevelOption: {
                const auto level = ParseLogLevel(optarg);
                if (!level) Usage(std::string("unknown log level ") + optarg);
                line.logLevel = *level;
                break;
            }
            case Version:
                std::cout << "veldrano-server " << kVersion << "\n";
                std::exit(0);
            case Help:
            case 'h':
                PrintHelp();
                std::exit(0);
            case ':':
                Usage(given + " needs a value");
            default:
                Usage("unknown option " + given);
        }
    }
    if (optind < argc) Usage(std::string("unexpected argument ") + argv[optind]);
    return line;
}

// --set-password: the offline reset, for an administrator who lost the
// password. The store must not be served meanwhile (a running server would
// keep the sessions of whoever knew the old one); StoreLock refuses that.
int ResetPassword(const CommandLine& line) {
    const std::string& path = line.options.dataPath;
    if (!fs::exists(path)) throw std::runtime_error("there is no store at " + path);
    StoreLock lock(path);
    std::string password;
    if (!line.passwordFile.empty()) {
        password = FirstLineOf(line.passwordFile);
    } else {
        if (isatty(STDIN_FILENO)) std::cerr << "New administrator password: " << std::flush;
        password = FirstLine(std::cin);
    }
    CheckNewPassword(password);
    Store store(path);
    Auth(store).SetPassword(password);
    std::cout << "The administrator password of " << path << " is set." << std::endl;
    return 0;
}

}  // namespace

int main(int argc, char** argv) {
    CommandLine line = Parse(argc, argv);
    ServerOptions& options = line.options;
    SetLogLevel(line.logLevel);
    // Every file the server makes (store, lock, key) is its user's alone.
    umask(077);

    // Block the stop signals in every thread; one thread waits for them.
    sigset_t signals;
    sigemptyset(&signals);
    sigaddset(&signals, SIGINT);
    sigaddset(&signals, SIGTERM);
    pthread_sigmask(SIG_BLOCK, &signals, nullptr);

    try {
        fs::path data(options.dataPath);
        if (data.has_parent_path()) fs::create_directories(data.parent_path());
        if (line.setPassword) return ResetPassword(line);

        if (!line.generate.empty()) {
            auto sizes = ParseGenerateSizes(line.generate);
            StoreLock lock(options.dataPath);
            Store store(options.dataPath);
            Generate(store, sizes);
            std::cout << "Generated into " << options.dataPath << "\n";
            return 0;
        }

        if (!line.passwordFile.empty()) {
            options.initialPassword = FirstLineOf(line.passwordFile);
            CheckNewPassword(options.initialPassword);
        } else if (options.demo) {
            options.initialPassword = kDemoPassword;
        }

        ServerHost host(options);
        if (!line.passwordFile.empty() && !host.InitialPasswordUsed())
            std::cerr << "veldrano-server: the store already has an administrator password; "
                         "--password-file was not used. To change the password, stop the server "
                         "and run veldrano-server --set-password.\n";
        if (!host.GeneratedPassword().empty())
            std::cout << "Administrator password (shown once): " << host.GeneratedPassword()
                      << std::endl;
        std::string how = "plain text (loopback only)";
        if (host.Encrypted())
            how = std::string("TLS, certificate SHA-256 ") +
                  veldrano::tls::Fingerprint(host.CertificatePem()) +
                  (host.CertificateCreated() ? " (made now)" : "");
        // The one start line, on standard output so that the journal has it
        // whatever the log level, with the fingerprint a console will show.
        std::cout << "veldrano-server " << kVersion << " serving " << options.dataPath << " on "
                  << options.listen << " (port " << host.Port() << "), " << how << std::endl;
        int received = 0;
        sigwait(&signals, &received);
        Log(LogLevel::Notice, "stopping");
        host.Shutdown();
        return 0;
    } catch (const std::exception& e) {
        std::cerr << "veldrano-server: " << e.what() << "\n";
        return 1;
    }
}

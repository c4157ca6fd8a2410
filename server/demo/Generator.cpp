#include "demo/Generator.h"

#include <algorithm>
#include <charconv>
#include <climits>
#include <cstdio>
#include <ctime>
#include <stdexcept>

#include "demo/DemoData.h"
#include "sim/Simulator.h"

namespace veldrano::server {
namespace {

// Big fills are cut into transactions of this many rows: large enough that
// commit cost vanishes, small enough that a refusal does not roll back minutes.
constexpr long kChunk = 50000;

std::string Trim(const std::string& s) {
    size_t b = s.find_first_not_of(" \t");
    if (b == std::string::npos) return "";
    size_t e = s.find_last_not_of(" \t");
    return s.substr(b, e - b + 1);
}

long ParseCount(const std::string& name, const std::string& value, long max) {
    long n = 0;
    const char* first = value.data();
    const char* last = value.data() + value.size();
    auto [end, ec] = std::from_chars(first, last, n);
    if (value.empty() || ec != std::errc() || end != last || n < 0 || n > max)
        throw std::invalid_argument("Generate: \"" + value + "\" is not a valid count for \"" +
                                    name + "\" (a whole number from 0 to " + std::to_string(max) +
                                    ")");
    return n;
}

std::string Numbered(const char* prefix, long n, int width) {
    char buf[32];
    std::snprintf(buf, sizeof buf, "%s%0*ld", prefix, width, n);
    return buf;
}

std::string ServerName(int i) {
    return Numbered("srv", i + 1, 5) + ".bench.example.net";
}

void AddServer(Store& store, const std::string& name, int index) {
    pb::Server s = demo::MakeServer(name, "Benchmark server " + std::to_string(index + 1), true,
                                    true, true, index % 2 == 0 ? "rpc" : "rrpc");
    s.set_remote(index % 10 == 9);
    store.CommitServer(s);
    store.SetServerOnline(name, true);
}

void AddPrinters(Store& store, const std::string& host, int count) {
    for (int i = 0; i < count; ++i) {
        pb::Printer p = demo::MakePrinter(host, Numbered("p", i + 1, 4),
                                          "Benchmark printer " + std::to_string(i + 1), i % 12);
        p.set_paper_size(i % 12 == 11 ? 0 : i % 3);
        store.CommitPrinter(p);
    }
}

void AddDevices(Store& store, const std::string& host, int count) {
    const std::vector<pb::DeviceType>& types = Store::DeviceTypes();
    if (types.empty()) return;
    for (int i = 0; i < count; ++i) {
        const pb::DeviceType& t = types[i % types.size()];
        pb::Device d = demo::MakeDevice(host, Numbered("d", i + 1, 4), t, host,
                                        "Benchmark line " + std::to_string(i + 1));
        d.mutable_primary()->set_physical_device("/dev/ttyV" + std::to_string(i));
        store.CommitDevice(d);
        store.SetDeviceState(host, d.name(), pb::DEVICE_RUNNING);
    }
}

void AddUsers(Store& store, const std::string& host, long count) {
    pb::User u = demo::MakeUser(host, "", "");
    auto* extra = u.add_extras();
    extra->set_name("costcenter");
    u.set_mail_if_new_received(true);
    for (long done = 0; done < count;) {
        long end = std::min(count, done + kChunk);
        store.Bulk([&] {
            for (long i = done; i < end; ++i) {
                u.set_name(Numbered("u", i + 1, 7));
                u.set_comment("Benchmark user " + std::to_string(i + 1));
                u.set_mail_address(u.name() + "@bench.example.net");
                u.set_priority(1 + static_cast<int>(i % 100));
                extra->set_value(std::to_string(4000 + i % 900));
                store.CommitUser(u);
            }
        });
        done = end;
    }
}

void AddZones(Store& store, int count, int servers) {
    store.Bulk([&] {
        for (int i = 0; i < count; ++i) {
            pb::Zone z;
            z.set_name(Numbered("Zone ", i + 1, 5));
            z.set_is_local(i % 4 == 0);
            if (!z.is_local()) {
                z.set_primary_host(ServerName(i % servers));
                if (servers > 1 && i % 2 == 1) z.set_secondary_host(ServerName((i + 1) % servers));
            }
            z.set_is_new(true);
            store.CommitZone(z);
            for (int r = 0; r < 2; ++r) {
                pb::Rate rate;
                rate.set_zone(z.name());
                rate.set_monday(r == 0);
                rate.set_tuesday(r == 0);
                rate.set_wednesday(r == 0);
                rate.set_thursday(r == 0);
                rate.set_friday(r == 0);
                rate.set_saturday(r == 1);
                rate.set_sunday(r == 1);
                rate.set_start_hour(r == 0 ? 8 : 0);
                rate.set_stop_hour(r == 0 ? 18 : 24);
                rate.set_is_new(true);
                store.CommitRate(rate);
                pb::Destination d;
                d.set_zone(z.name());
                d.set_type(r == 0 ? pb::DEST_FAX : pb::DEST_SMS);
                d.set_prefix("+" + std::to_string(100 + i));
                d.set_name("Destination " + std::to_string(i + 1) + "/" + std::to_string(r + 1));
                d.set_external(r == 0);
                d.set_is_new(true);
                store.CommitDestination(d);
            }
        }
    });
}

// A server's log in ordinary operation: per 10,000 events 6,500 notes, 3,000
// warnings, 400 without severity, 90 errors, 9 fatal and 1 panic. Each block
// of 10,000 has exactly these counts, spread over it rather than in runs
// (7919 is prime to 10,000, so it visits every place of the block once).
int GeneratedSeverity(long i) {
    const long place = (i % 10000) * 7919 % 10000;
    if (place < 1) return 5;
    if (place < 10) return 4;
    if (place < 100) return 3;
    if (place < 500) return 0;
    if (place < 3500) return 2;
    return 1;
}

void AddEvents(Store& store, const std::string& host, long count) {
    static constexpr int kClasses[] = {0x01, 0x02, 0x04, 0x08,  0x10,
                                       0x20, 0x40, 0x80, 0x100, 0x200};
    static const char* const kTexts[] = {"Job queued for dispatch",    "Fax sent, 2 pages",
                                         "Receive job completed",      "Print job printed",
                                         "Line busy, retry scheduled", "Mail accepted"};
    // One event a second, ending now, so time filters and sorting see a spread.
    const int64_t now = static_cast<int64_t>(std::time(nullptr));
    pb::Event e;
    for (long done = 0; done < count;) {
        long end = std::min(count, done + kChunk);
        store.Bulk([&] {
            for (long i = done; i < end; ++i) {
                e.set_time(now - (count - i));
                e.set_severity(GeneratedSeverity(i));
                e.set_originator_type(static_cast<int>(i % 20));
                e.set_originator_id(4100 + static_cast<int>(i % 900));
                e.set_message_class(kClasses[i % 10]);
                e.set_text(std::string(kTexts[i % 6]) + " (#" + std::to_string(i + 1) + ")");
                store.AppendEvent(host, e);
            }
        });
        done = end;
    }
}

}  // namespace

GenerateSizes ParseGenerateSizes(const std::string& text) {
    GenerateSizes sizes;
    size_t start = 0;
    while (start <= text.size()) {
        size_t comma = text.find(',', start);
        std::string item = Trim(
            text.substr(start, comma == std::string::npos ? std::string::npos : comma - start));
        start = comma == std::string::npos ? text.size() + 1 : comma + 1;
        if (item.empty()) continue;
        size_t eq = item.find('=');
        if (eq == std::string::npos)
            throw std::invalid_argument("Generate: \"" + item +
                                        "\" is not of the form name=number");
        std::string name = Trim(item.substr(0, eq));
        std::string value = Trim(item.substr(eq + 1));
        if (name == "servers")
            sizes.servers = static_cast<int>(ParseCount(name, value, 99999));
        else if (name == "users")
            sizes.firstServerUsers = static_cast<int>(ParseCount(name, value, 9999999));
        else if (name == "printers")
            sizes.printersPerServer = static_cast<int>(ParseCount(name, value, 9999));
        else if (name == "devices")
            sizes.devicesPerServer = static_cast<int>(ParseCount(name, value, 9999));
        else if (name == "zones")
            sizes.zones = static_cast<int>(ParseCount(name, value, 99999));
        else if (name == "events")
            sizes.events = ParseCount(name, value, LONG_MAX);
        else if (name == "eventhost")
            sizes.eventHost = value;
        else
            throw std::invalid_argument("Generate: unknown size \"" + name + "\"; " +
                                        GenerateHelp());
    }
    return sizes;
}

const char* GenerateHelp() {
    return "sizes are name=number pairs separated by commas: servers (each with every role), "
           "users (on the first server), printers (per server), devices (per server), zones, "
           "events (on the first server), eventhost=NAME (the server that gets the events); "
           "for example users=100000,events=1000000,servers=200,printers=100,devices=100,"
           "zones=1000";
}

void Generate(Store& store, const GenerateSizes& sizes) {
    bool anything = sizes.firstServerUsers > 0 || sizes.printersPerServer > 0 ||
                    sizes.devicesPerServer > 0 || sizes.zones > 0 || sizes.events > 0;
    int servers = std::max(sizes.servers, anything ? 1 : 0);
    if (servers == 0) return;
    for (int s = 0; s < servers; ++s) {
        std::string host = ServerName(s);
        store.Bulk([&] {
            AddServer(store, host, s);
            AddPrinters(store, host, sizes.printersPerServer);
            AddDevices(store, host, sizes.devicesPerServer);
        });
    }
    AddUsers(store, ServerName(0), sizes.firstServerUsers);
    AddZones(store, sizes.zones, servers);
    std::string eventHost = sizes.eventHost.empty() ? ServerName(0) : sizes.eventHost;
    if (sizes.events > 0 && store.GetServer(eventHost).is_new())
        throw ServiceError(pb::ERROR_NOT_FOUND,
                           "Generate: the event server '" + eventHost + "' does not exist");
    AddEvents(store, eventHost, sizes.events);
    Simulator(store).EnsureProcessSlots();
}

}  // namespace veldrano::server

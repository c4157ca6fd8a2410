#include "demo/DemoData.h"

#include <ctime>
#include <iterator>

#include "demo/DemoTables.h"
#include "sim/Simulator.h"

namespace veldrano::server {
namespace demo {

pb::Server MakeServer(const std::string& name, const std::string& comment, bool users,
                      bool printers, bool devices, const std::string& netType) {
    pb::Server s;
    s.set_name(name);
    s.set_comment(comment);
    s.set_user_server(users);
    s.set_printer_server(printers);
    s.set_device_server(devices);
    s.set_net_type(netType);
    s.set_dispatch_count(4);
    s.set_debug_level(0);
    s.set_is_new(true);
    return s;
}

pb::User MakeUser(const std::string& host, const std::string& name, const std::string& comment) {
    pb::User u;
    u.set_host_name(host);
    u.set_name(name);
    u.set_comment(comment);
    u.set_admin_priority(100);
    u.set_priority(50);
    u.set_resolution(1);
    for (int paper = 0; paper < 9; ++paper) u.add_background_paper(0);
    u.set_is_new(true);
    return u;
}

pb::Printer MakePrinter(const std::string& host, const std::string& name,
                        const std::string& comment, int type) {
    pb::Printer p;
    p.set_host_name(host);
    p.set_name(name);
    p.set_comment(comment);
    p.set_type(type);
    p.set_paper_size(0);
    p.set_filter_command("/opt/veldrano/filters/prfilter");
    p.set_split_page(0);
    p.set_is_new(true);
    return p;
}

pb::LineSettings MakeLine(const pb::DeviceType& type, const std::string& userServer,
                          const std::string& comment) {
    const pb::DeviceFeatures& f = type.features();
    pb::LineSettings l;
    l.set_comment(comment);
    l.set_user_server(userServer);
    l.set_enable_send(f.fax() == 1 || f.telex() == 1 || f.sms() == 1);
    l.set_enable_receive(true);
    l.set_enable_fax(f.fax() == 1);
    l.set_enable_sms(f.sms() == 1);
    l.set_get_line_type(3);
    l.set_dial_type(0);
    l.set_max_digits(f.inbound_routing() == 1 ? 4 : 0);
    l.set_wait_digit_timeout(f.inbound_routing() == 1 ? 5 : 0);
    l.set_account_factor(f.accounting() == 1 ? 0.12 : 0.0);
    l.set_account_unit(f.accounting() == 1 ? "EUR" : "");
    l.set_enable_scan(type.is_scanner());
    l.set_scanner_page_wait(type.is_scanner() ? 10 : 1);
    l.set_reservation_timeout(type.is_scanner() ? 120 : 1);
    l.set_enable_print(f.builtin_printer() == 1);
    l.set_enable_voice(f.voice() == 1);
    l.set_max_recording_time(f.voice() == 1 ? 180 : 0);
    l.set_silence_timeout(f.voice() == 1 ? 5 : 0);
    return l;
}

pb::Device MakeDevice(const std::string& host, const std::string& name, const pb::DeviceType& type,
                      const std::string& userServer, const std::string& comment) {
    pb::Device d;
    d.set_host_name(host);
    d.set_name(name);
    d.set_type(type.id());
    d.set_configured_lines(type.default_lines() > 0 ? type.default_lines() : type.min_lines());
    *d.mutable_primary() = MakeLine(type, userServer, comment);
    d.set_is_new(true);
    return d;
}

pb::Event MakeEvent(int64_t time, int severity, int originatorType, int originatorId,
                    int messageClass, const std::string& text) {
    pb::Event e;
    e.set_time(time);
    e.set_severity(severity);
    e.set_originator_type(originatorType);
    e.set_originator_id(originatorId);
    e.set_message_class(messageClass);
    e.set_text(text);
    return e;
}

}  // namespace demo

namespace {

using namespace demo;

void FillServers(Store& store) {
    for (const DemoServer& s : kServers) {
        pb::Server rec = MakeServer(s.name, s.comment, s.users, s.printers, s.devices, s.netType);
        rec.set_remote(s.remote);
        rec.set_serialize_same_number(s.netType == std::string("rpc"));
        rec.set_dispatch_count(s.users ? 8 : 2);
        store.CommitServer(rec);
        store.SetServerOnline(s.name, s.online);
    }
}

void FillPrinters(Store& store) {
    for (const DemoPrinter& p : kPrinters) {
        pb::Printer rec = MakePrinter(p.host, p.name, p.comment, p.type);
        rec.set_filter_command(p.filter);
        rec.set_paper_size(p.type == 11 ? 0 : p.paper);
        rec.set_split_page(p.type == 11 ? 0 : p.split);
        store.CommitPrinter(rec);
    }
}

// Devices are named after what the line is for, so the lists read like a
// real line room rather than "device1..n".
std::string DevicePrefix(const pb::DeviceType& t) {
    const pb::DeviceFeatures& f = t.features();
    if (f.telex() == 1) return "telex";
    if (f.voice() == 1) return "voice";
    if (f.sms() == 1) return "sms";
    if (t.is_scanner() && f.builtin_printer() == 1) return "prnscan";
    if (t.is_scanner()) return "scan";
    if (f.builtin_printer() == 1) return "prn";
    if (f.fax() == 1) return t.max_lines() > 1 ? "isdn" : "fax";
    return "line";
}

const DemoServer& NamedServer(const char* name) {
    for (const DemoServer& s : kServers)
        if (name == std::string(s.name)) return s;
    return kServers[0];
}

const DemoServer& ServerFor(const pb::DeviceType& t, size_t i) {
    // Scanners and voice ports go to the head office, where the users sit;
    // telex to the line room, SMS to the field service. Everything else
    // rotates over the line servers, the standby one included.
    static const char* const rotation[] = {"fxline01", "remote-hq.example.net", "fxbackup",
                                           "fxsales"};
    const pb::DeviceFeatures& f = t.features();
    const char* host = rotation[i % std::size(rotation)];
    if (t.is_scanner() || f.voice() == 1) host = "fxmaster";
    if (f.telex() == 1) host = "fxline01";
    if (f.sms() == 1) host = "fxsales";
    return NamedServer(host);
}

// "ISDN primary rate (30 channels)" becomes "ISDN primary rate 7".
std::string DeviceComment(const pb::DeviceType& t, int serial) {
    std::string base = t.name().substr(0, t.name().find(" ("));
    return base.substr(0, 26) + " " + std::to_string(serial);
}

// The user server that a device delivers to: its own host when it has users.
std::string UserServerFor(const DemoServer& s) {
    return s.users ? s.name : "fxmaster";
}

// Configures lines 2 .. setUpTo; the device's lines above them stay counted
// but not configured.
void AddSecondaryLines(Store& store, const pb::Device& d, const pb::DeviceType& t, int setUpTo) {
    for (int n = 2; n <= setUpTo; ++n) {
        pb::DeviceLine line;
        line.set_number(n);
        *line.mutable_settings() = MakeLine(t, d.primary().user_server(),
                                            d.primary().comment() + ", line " + std::to_string(n));
        line.mutable_settings()->set_physical_device("/dev/isdn" + std::to_string(n - 1));
        store.SaveDeviceLine(d.host_name(), d.name(), line);
    }
}

// Commits one device of type t, named after it and its serial number, with
// its lines as lines says (without it: the type's default count, no secondary
// line configured).
std::string AddDevice(Store& store, const DemoServer& host, const pb::DeviceType& t, int serial,
                      const DemoLines* lines) {
    std::string name = DevicePrefix(t) + std::to_string(serial);
    pb::Device d = MakeDevice(host.name, name, t, UserServerFor(host), DeviceComment(t, serial));
    d.mutable_primary()->set_physical_device("/dev/ttyV" + std::to_string(serial));
    if (t.features().fax() == 1) {
        d.mutable_primary()->set_tsi("+49 89 5550 " + std::to_string(100 + serial));
        d.mutable_primary()->set_headline("Example Industries AG");
    }
    if (lines) d.set_configured_lines(lines->configured);
    store.CommitDevice(d);
    if (lines) AddSecondaryLines(store, d, t, lines->setUpTo);
    return name;
}

void FillDevices(Store& store) {
    const std::vector<pb::DeviceType>& types = Store::DeviceTypes();
    int serial = 0, running = 0;
    // The second line that runs is shown stopped and the fourth terminated,
    // so the console shows every device state.
    auto setState = [&](const DemoServer& host, const std::string& name) {
        if (!host.online) return;
        ++running;
        pb::DeviceRunState state = pb::DEVICE_RUNNING;
        if (running == 2) state = pb::DEVICE_STOPPED;
        if (running == 4) state = pb::DEVICE_TERMINATED;
        store.SetDeviceState(host.name, name, state);
    };
    for (size_t i = 0; i < types.size(); ++i) {
        const pb::DeviceType& t = types[i];
        const DemoServer& host = ServerFor(t, i);
        const DemoLines* lines = nullptr;
        for (const DemoLines& l : kLines)
            if (!l.host && l.type == t.id()) lines = &l;
        // A second device of each type on the line server gives the lists some
        // depth; its number keeps names unique when two types share a prefix.
        for (int copy = 0; copy < (host.name == std::string("fxline01") ? 2 : 1); ++copy)
            setState(host, AddDevice(store, host, t, ++serial, lines));
    }
    for (const DemoLines& l : kLines) {
        if (!l.host) continue;
        const DemoServer& host = NamedServer(l.host);
        for (const pb::DeviceType& t : types)
            if (t.id() == l.type) setState(host, AddDevice(store, host, t, ++serial, &l));
    }
}

void FillUsers(Store& store) {
    // Only the scan stations, not every line that has the dialling group.
    std::vector<std::string> scanners;
    for (const std::string& name : store.ListScanners("fxmaster")) {
        int type = store.GetDevice("fxmaster", name).type();
        for (const pb::DeviceType& t : Store::DeviceTypes())
            if (t.id() == type && t.is_scanner()) scanners.push_back(name);
    }
    std::string previous[3];
    int i = 0;
    for (const DemoUser& du : kUsers) {
        pb::User u = MakeUser(du.host, du.name, du.comment);
        u.set_admin_priority(du.name == std::string("admin") ? 32000 : 100 + i * 10);
        u.set_priority(1 + (i * 7) % 100);
        u.set_tsi("+49 89 5550 " + std::to_string(2000 + i));
        u.set_headlines(du.comment);
        u.set_bar_code("EXI" + std::to_string(100000 + i * 37));
        u.set_mail_address(std::string(du.name) + "@example.com");
        u.set_mail_if_new_received(true);
        u.set_mail_if_send_failed(i % 2 == 0);
        u.set_background_default(i % 4);
        for (int paper = 0; paper < 9; ++paper)
            u.set_background_paper(paper, paper < 3 ? (i + paper) % 5 : 0);
        u.set_resolution(i % 3);
        u.set_keep_copy(i % 5 == 0);
        if (du.printer[0] != '\0') {
            u.set_printer(du.printer);
            u.set_print_if_new_received(true);
            u.set_print_if_send_failed(i % 3 == 0);
        }
        if (i % 6 == 1) {
            u.set_phone_signal_nr(std::to_string(2000 + i));
            u.set_light_if_new_received(true);
            u.set_voice_if_send_failed(i % 4 == 1);
        }
        if (!scanners.empty() && du.host == std::string("fxmaster") && i % 3 == 0)
            u.set_scanner(scanners[i % scanners.size()]);
        // Substitutes point at a colleague committed earlier, sometimes on
        // another server, the way holiday cover works across sites.
        int slot = i % 3;
        if (i % 3 != 2 && !previous[slot].empty()) {
            size_t at = previous[slot].find('@');
            u.mutable_substitute()->set_user_name(previous[slot].substr(0, at));
            u.mutable_substitute()->set_host_name(previous[slot].substr(at + 1));
        }
        previous[slot] = std::string(du.name) + "@" + du.host;
        auto* cc = u.add_extras();
        cc->set_name("costcenter");
        cc->set_value(du.costCenter);
        auto* lang = u.add_extras();
        lang->set_name("language");
        lang->set_value(du.language);
        if (i % 4 == 0) {
            auto* cover = u.add_extras();
            cover->set_name("coverpage");
            cover->set_value(i % 8 == 0 ? "letterhead" : "standard");
        }
        store.CommitUser(u);
        ++i;
    }
    // The scan station reserves pages for the front desk.
    if (!scanners.empty()) {
        pb::Device scan = store.GetDevice("fxmaster", scanners.front());
        scan.mutable_primary()->mutable_scanner_user()->set_user_name("reception");
        scan.mutable_primary()->mutable_scanner_user()->set_host_name("fxmaster");
        scan.mutable_primary()->set_reservation_timeout(300);
        store.CommitDevice(scan);
    }
}

void FillGroups(Store& store) {
    for (const DemoGroup& g : kGroups) {
        pb::Group rec;
        rec.set_name(g.name);
        rec.set_comment(g.comment);
        rec.set_is_new(true);
        for (const DemoUser& u : kUsers) {
            if (!g.takes(u)) continue;
            pb::UserRef* m = rec.add_members();
            m->set_user_name(u.name);
            m->set_host_name(u.host);
        }
        store.CommitGroup(rec);
    }
}

void FillRouting(Store& store) {
    for (const DemoRoute& r : kRoutes) {
        pb::Route rec;
        rec.set_name(r.name);
        rec.set_comment(r.comment);
        rec.set_match_extension(r.extension);
        rec.set_match_tsi(r.tsi);
        rec.mutable_user()->set_user_name(r.user);
        rec.mutable_user()->set_host_name(r.userHost);
        rec.set_group(r.group);
        rec.set_poll_server(r.pollServer);
        rec.set_poll_document(r.pollDocument);
        rec.set_is_new(true);
        store.CommitRoute(rec);
    }
    for (const DemoMapping& m : kMappings) {
        pb::NumberMapping rec;
        rec.set_match(m.match);
        rec.set_replace(m.replace);
        rec.set_is_new(true);
        store.CommitNumberMapping(rec);
    }
    for (const DemoGateway& g : kGateways) {
        pb::Gateway rec;
        rec.set_name(g.name);
        rec.set_comment(g.comment);
        rec.set_is_new(true);
        store.CommitGateway(rec);
        for (const DemoGatewayUser& gu : g.users) {
            if (gu.address == nullptr) break;
            pb::GatewayUser u;
            u.set_gateway(g.name);
            u.set_mail_address(gu.address);
            u.set_extension(gu.extension);
            u.set_is_new(true);
            store.CommitGatewayUser(u);
        }
    }
}

void FillLeastCostRouting(Store& store) {
    for (const DemoZone& z : kZones) {
        pb::Zone rec;
        rec.set_name(z.name);
        rec.set_is_local(z.local);
        rec.set_is_daemon(z.daemonUser[0] != '\0');
        rec.mutable_daemon()->set_user_name(z.daemonUser);
        rec.mutable_daemon()->set_host_name(z.daemonHost);
        rec.set_primary_host(z.primary);
        rec.set_secondary_host(z.secondary);
        rec.set_is_new(true);
        store.CommitZone(rec);
        for (const DemoRate& r : z.rates) {
            if (r.days == 0) break;
            pb::Rate rate;
            rate.set_zone(z.name);
            rate.set_monday(r.days & 0x01);
            rate.set_tuesday(r.days & 0x02);
            rate.set_wednesday(r.days & 0x04);
            rate.set_thursday(r.days & 0x08);
            rate.set_friday(r.days & 0x10);
            rate.set_saturday(r.days & 0x20);
            rate.set_sunday(r.days & 0x40);
            rate.set_start_hour(r.startHour);
            rate.set_start_minute(r.startMinute);
            rate.set_stop_hour(r.stopHour);
            rate.set_stop_minute(r.stopMinute);
            rate.set_is_new(true);
            store.CommitRate(rate);
        }
        for (const DemoDestination& d : z.destinations) {
            if (d.name == nullptr) break;
            pb::Destination dest;
            dest.set_zone(z.name);
            dest.set_type(static_cast<pb::DestinationType>(d.type));
            dest.set_prefix(d.prefix);
            dest.set_name(d.name);
            dest.set_external(d.external);
            dest.set_is_new(true);
            store.CommitDestination(dest);
        }
    }
}

void FillAdminSettings(Store& store) {
    pb::AdminSettings s = store.GetAdminSettings();
    s.set_login_idle_timeout(1800);
    s.mutable_send_copy_user()->set_user_name("accounts");
    s.mutable_send_copy_user()->set_host_name("fxmaster");
    s.mutable_receive_copy_user()->set_user_name("legal");
    s.mutable_receive_copy_user()->set_host_name("fxmaster");
    s.set_mail_language("en");
    // The second choice when there is one, so the editor does not just show
    // the default.
    if (s.map_error_choices_size() > 0)
        s.set_map_error_to_busy(s.map_error_choices(s.map_error_choices_size() > 1 ? 1 : 0).code());
    s.set_smtp_gateway_user("helpdesk@fxmaster");
    s.set_address_book_blocksize(50);
    s.set_journal_blocksize(200);
    s.set_disable_least_cost_routing(false);
    store.CommitAdminSettings(s);
}

void FillEvents(Store& store) {
    // The log starts a few hours back so the viewer shows a history, oldest
    // first, one entry every seven minutes.
    const int64_t now = static_cast<int64_t>(std::time(nullptr));
    const int64_t count = static_cast<int64_t>(std::size(kEvents));
    for (int64_t i = 0; i < count; ++i) {
        const DemoEvent& e = kEvents[i];
        store.AppendEvent(e.host, MakeEvent(now - (count - i) * 420, e.severity, e.originatorType,
                                            e.originatorId, e.messageClass, e.text));
    }
}

}  // namespace

void FillDemo(Store& store) {
    if (!store.IsEmpty())
        throw ServiceError(pb::ERROR_ALREADY_EXISTS,
                           "The store already holds an installation; the demo data fills only an "
                           "empty store");
    store.Bulk([&] {
        FillServers(store);
        FillPrinters(store);
        FillDevices(store);
        FillUsers(store);
        FillGroups(store);
        FillRouting(store);
        FillLeastCostRouting(store);
        FillAdminSettings(store);
        FillEvents(store);
    });
    Simulator(store).EnsureProcessSlots();
}

}  // namespace veldrano::server

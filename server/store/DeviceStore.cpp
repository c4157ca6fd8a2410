// Printers and line devices of a server, with the device types they come in.

#include <algorithm>
#include <cmath>

#include "store/Store.h"
#include "store/StoreDetail.h"

namespace veldrano::server {

using namespace detail;

// ---------------------------------------------------------------------------
// Printers

namespace {

const KeyedTable kPrinters{"printers", "name", "server_id"};

FieldCheck PrinterCheck(const std::string& host, const std::string& name) {
    return {"printer '" + name + "' of " + host};
}

pb::Printer ReadPrinter(Statement& st, const std::string& host) {
    auto p = ParseBody<pb::Printer>(st.Blob(2));
    p.set_host_name(host);
    p.set_name(st.Text(0));
    p.set_version(st.Int(1));
    return p;
}

}  // namespace

std::vector<pb::Printer> Store::ListPrinters(const std::string& host) {
    std::lock_guard lock(mutex_);
    int64_t server = RequireServer(*db_, host);
    std::vector<pb::Printer> result;
    auto st =
        db_->Prepare("SELECT name, version, body FROM printers WHERE server_id = ? ORDER BY name");
    st.Bind(1, server);
    while (st.Step()) result.push_back(ReadPrinter(st, host));
    return result;
}

pb::Printer Store::GetPrinter(const std::string& host, const std::string& name) {
    std::lock_guard lock(mutex_);
    int64_t server = RequireServer(*db_, host);
    auto st =
        db_->Prepare("SELECT name, version, body FROM printers WHERE server_id = ? AND name = ?");
    st.Bind(1, server).Bind(2, name);
    if (st.Step()) return ReadPrinter(st, host);
    pb::Printer p;
    p.set_host_name(host);
    p.set_name(name);
    p.set_type(8);  // PostScript: what most office printers take
    p.set_is_new(true);
    return p;
}

int64_t Store::CommitPrinter(const pb::Printer& p) {
    std::lock_guard lock(mutex_);
    auto check = PrinterCheck(p.host_name(), p.name());
    check.Text("the printer name", p.name(), 10, true, true);
    check.Text("the comment", p.comment(), 30, true);
    check.Range("the printer type", p.type(), 0, 11);
    check.Range("the paper size", p.paper_size(), 0, 2);
    check.Text("the filter command", p.filter_command(), 80, true);
    check.Range("the split page", p.split_page(), 0, 999);
    Transaction tx(*db_);
    int64_t server = RequireServer(*db_, p.host_name());
    RequireRole(*db_, server, &pb::Server::printer_server, check, "printer server");
    pb::Printer body = p;
    body.clear_host_name();
    body.clear_name();
    int64_t version =
        Upsert(*db_, kPrinters, server, p.name(), check, p.is_new(), p.version(), Body(body));
    tx.Commit();
    return version;
}

void Store::DeletePrinter(const std::string& host, const std::string& name,
                          int64_t expectedVersion) {
    std::lock_guard lock(mutex_);
    Transaction tx(*db_);
    const int64_t server = RequireServer(*db_, host);
    DeleteRow(*db_, kPrinters, server, name, PrinterCheck(host, name), expectedVersion);
    RefuseDanglingReferences(*db_, PrinterCheck(host, name), server);
    tx.Commit();
}

// ---------------------------------------------------------------------------
// Device types

namespace {

pb::DeviceType MakeType(int id, const char* name, int minLines, int maxLines, bool editable,
                        int defaultLines, std::initializer_list<int> features,
                        bool scanner = false) {
    pb::DeviceType t;
    t.set_id(id);
    t.set_name(name);
    t.set_min_lines(minLines);
    t.set_max_lines(maxLines);
    t.set_lines_editable(editable);
    t.set_default_lines(defaultLines);
    t.set_is_scanner(scanner);
    auto it = features.begin();
    auto* f = t.mutable_features();
    for (auto set : {&pb::DeviceFeatures::set_fax, &pb::DeviceFeatures::set_inbound_routing,
                     &pb::DeviceFeatures::set_accounting, &pb::DeviceFeatures::set_builtin_printer,
                     &pb::DeviceFeatures::set_scanner, &pb::DeviceFeatures::set_telex,
                     &pb::DeviceFeatures::set_sms, &pb::DeviceFeatures::set_voice,
                     &pb::DeviceFeatures::set_csi_prefix})
        (f->*set)(*it++);
    return t;
}

}  // namespace

const std::vector<pb::DeviceType>& Store::DeviceTypes() {
    // Feature order: fax, inbound routing, accounting, built-in printer,
    // scanner/dialling, telex, SMS, voice, CSI prefix.
    static const std::vector<pb::DeviceType> types = {
        MakeType(1, "Analogue fax line", 1, 1, false, 1, {1, 1, 1, 0, 1, 0, 0, 0, 1}),
        MakeType(2, "ISDN basic rate (2 channels)", 1, 2, true, 2, {1, 1, 1, 0, 0, 0, 0, 0, 1}),
        MakeType(3, "ISDN primary rate (30 channels)", 1, 30, true, 30,
                 {1, 1, 1, 0, 0, 0, 0, 0, 1}),
        MakeType(4, "DID trunk", 1, 8, true, 4, {1, 1, 1, 0, 1, 0, 0, 0, 0}),
        MakeType(5, "Telex line", 1, 1, false, 1, {0, 0, 1, 0, 0, 1, 0, 0, 0}),
        MakeType(6, "Voice port", 1, 4, true, 2, {0, 1, 0, 0, 0, 0, 0, 1, 0}),
        MakeType(7, "SMS modem", 1, 1, false, 1, {0, 0, 1, 0, 0, 0, 1, 0, 0}),
        MakeType(8, "Fax scanner", 1, 1, false, 1, {1, 0, 0, 0, 1, 0, 0, 0, 0}, true),
        MakeType(9, "Fax with built-in printer", 1, 1, false, 1, {1, 0, 0, 1, 1, 0, 0, 0, 0}, true),
    };
    return types;
}

// ---------------------------------------------------------------------------
// Devices

namespace {

FieldCheck DeviceCheck(const std::string& host, const std::string& name) {
    return {"device '" + name + "' of " + host};
}

const pb::DeviceType* FindType(int id) {
    for (const auto& t : Store::DeviceTypes())
        if (t.id() == id) return &t;
    return nullptr;
}

pb::LineSettings LineDefaults() {
    pb::LineSettings l;
    l.set_enable_fax(true);
    l.set_get_line_type(3);
    l.set_dial_type(0);
    l.set_reservation_timeout(1);
    l.set_scanner_page_wait(1);
    return l;
}

// A secondary line not yet configured starts from the defaults, delivering to
// the same user server under the same comment as the device's primary line.
pb::LineSettings FreshLine(const pb::LineSettings& primary) {
    pb::LineSettings l = LineDefaults();
    l.set_comment(primary.comment());
    l.set_user_server(primary.user_server());
    return l;
}

// What one line of a device is called in the line selector: its number, the
// kind of line that the type's hardware has, and the primary line marked.
std::string LineName(int type, int number) {
    const char* kind = "Line";
    switch (type) {
        case 2:  // ISDN basic rate
        case 3:  // ISDN primary rate
            kind = "B-channel";
            break;
        case 4:  // DID trunk
            kind = "Trunk line";
            break;
        case 6:  // voice port
            kind = "Port";
            break;
    }
    return std::to_string(number) + " " + kind + (number == 1 ? " (primary)" : "");
}

void ValidateLine(Database& db, const FieldCheck& check, const pb::LineSettings& l) {
    check.Text("the comment", l.comment(), 30, true);
    check.Text("the physical device", l.physical_device(), 30);
    if (l.user_server().empty()) check.Fail(pb::ERROR_REQUIRED, "a user server must be chosen");
    if (!ServerId(db, l.user_server()))
        check.Fail(pb::ERROR_UNKNOWN_REFERENCE,
                   "the user server '" + l.user_server() + "' is unknown");
    check.Text("the TSI", l.tsi(), 20);
    check.Text("the headline", l.headline(), 80);
    check.Text("the external line code", l.get_external_line(), 10);
    check.Text("the internal line code", l.get_internal_line(), 20);
    check.Range("the line type", l.get_line_type(), 0, 3);
    check.Range("the dial type", l.dial_type(), 0, 1);
    check.Range("the minimum digits", l.min_digits(), 0, 31);
    check.Range("the maximum digits", l.max_digits(), 0, 31);
    check.Range("the skipped digits", l.skip_digits(), 0, 20);
    check.Range("the digit time-out", l.wait_digit_timeout(), 0, 30);
    check.Text("the number prefix", l.number_prefix(), 20);
    check.Text("the CSI prefix", l.csi_prefix(), 20);
    if (!(l.account_factor() >= 0.0 && l.account_factor() <= 3.402823e38))
        check.Fail(pb::ERROR_OUT_OF_RANGE,
                   "the account factor must lie between 0 and 3.402823E+38");
    check.Text("the account unit", l.account_unit(), 10);
    check.Text("the called party number", l.called_party_number(), 20);
    check.Text("the called party subaddress", l.called_party_subaddress(), 20);
    check.Text("the calling party number", l.calling_party_number(), 20);
    check.Text("the calling party subaddress", l.calling_party_subaddress(), 20);
    check.Range("the scanner page wait", l.scanner_page_wait(), 1, 60);
    RequireUserRef(db, check, "the scanner user", l.scanner_user());
    check.Range("the reservation time-out", l.reservation_timeout(), 1, 3600);
    check.Range("the maximum recording time", l.max_recording_time(), 0, 2147483647);
    check.Range("the silence time-out", l.silence_timeout(), 0, 2147483647);
    check.Text("telex key pad one", l.telex_key_pad_one(), 20);
    check.Text("telex key pad two", l.telex_key_pad_two(), 80);
    check.Text("the extra parameters", l.extra_parameters(), 80);
}

const KeyedTable kDevices{"devices", "name", "server_id"};

int64_t DeviceId(Database& db, int64_t server, const std::string& name) {
    return RowId(db, kDevices, server, name);
}

int64_t RequireDevice(Database& db, const std::string& host, const std::string& name) {
    int64_t id = DeviceId(db, RequireServer(db, host), name);
    if (!id) DeviceCheck(host, name).Fail(pb::ERROR_NOT_FOUND, "does not exist");
    return id;
}

pb::Device ReadDevice(Database& db, Statement& st, const std::string& host) {
    auto d = ParseBody<pb::Device>(st.Blob(4));
    int64_t id = st.Int(0);
    d.set_host_name(host);
    d.set_name(st.Text(1));
    d.set_version(st.Int(2));
    d.set_state(static_cast<pb::DeviceRunState>(st.Int(3)));
    auto lines = db.Prepare(
        "SELECT number, version, body FROM device_lines WHERE device_id = ? ORDER BY number");
    lines.Bind(1, id);
    while (lines.Step()) {
        auto* line = d.add_secondary_lines();
        line->set_number(static_cast<int32_t>(lines.Int(0)));
        line->set_version(lines.Int(1));
        *line->mutable_settings() = ParseBody<pb::LineSettings>(lines.Blob(2));
    }
    return d;
}

constexpr const char* kDeviceColumns = "SELECT id, name, version, state, body FROM devices ";

}  // namespace

std::vector<pb::Device> Store::ListDevices(const std::string& host) {
    std::lock_guard lock(mutex_);
    int64_t server = RequireServer(*db_, host);
    std::vector<pb::Device> result;
    auto st = db_->Prepare(std::string(kDeviceColumns) + "WHERE server_id = ? ORDER BY name");
    st.Bind(1, server);
    while (st.Step()) result.push_back(ReadDevice(*db_, st, host));
    return result;
}

pb::Device Store::GetDevice(const std::string& host, const std::string& name) {
    std::lock_guard lock(mutex_);
    int64_t server = RequireServer(*db_, host);
    auto st = db_->Prepare(std::string(kDeviceColumns) + "WHERE server_id = ? AND name = ?");
    st.Bind(1, server).Bind(2, name);
    if (st.Step()) return ReadDevice(*db_, st, host);
    pb::Device d;
    d.set_host_name(host);
    d.set_name(name);
    d.set_type(DeviceTypes().front().id());
    d.set_configured_lines(DeviceTypes().front().default_lines());
    *d.mutable_primary() = LineDefaults();
    d.set_is_new(true);
    return d;
}

pb::Device Store::OpenDevice(const std::string& host, const std::string& name, int newType) {
    std::lock_guard lock(mutex_);
    pb::Device d = GetDevice(host, name);
    if (d.is_new()) {
        const auto* type = FindType(newType);
        if (!type) type = &DeviceTypes().front();
        d.set_type(type->id());
        d.set_configured_lines(type->default_lines());
    }
    // Every line the count includes, the configured ones as stored and the
    // others as a fresh line, so the editor never has to make one up.
    std::vector<pb::DeviceLine> stored(d.secondary_lines().begin(), d.secondary_lines().end());
    d.clear_secondary_lines();
    auto next = stored.begin();
    for (int n = 2; n <= d.configured_lines(); ++n) {
        while (next != stored.end() && next->number() < n) ++next;
        auto* line = d.add_secondary_lines();
        if (next != stored.end() && next->number() == n) {
            *line = *next;
            continue;
        }
        line->set_number(n);
        *line->mutable_settings() = FreshLine(d.primary());
    }
    d.clear_line_names();
    for (int n = 1; n <= d.configured_lines(); ++n) *d.add_line_names() = LineName(d.type(), n);
    return d;
}

int64_t Store::CommitDevice(const pb::Device& d) {
    std::lock_guard lock(mutex_);
    auto check = DeviceCheck(d.host_name(), d.name());
    check.Text("the device name", d.name(), 10, true, true);
    const auto* type = FindType(d.type());
    if (!type) check.Fail(pb::ERROR_UNKNOWN_REFERENCE, "the device type is unknown");
    check.Range("the configured lines", d.configured_lines(), type->min_lines(), type->max_lines());
    Transaction tx(*db_);
    int64_t server = RequireServer(*db_, d.host_name());
    RequireRole(*db_, server, &pb::Server::device_server, check, "device server");
    ValidateLine(*db_, check, d.primary());
    pb::Device body = d;
    body.clear_host_name();
    body.clear_name();
    body.clear_secondary_lines();
    body.clear_line_names();
    body.clear_state();
    int64_t id = 0;
    int64_t version =
        Upsert(*db_, kDevices, server, d.name(), check, d.is_new(), d.version(), Body(body), &id);
    // Lines beyond the configured count no longer exist.
    db_->Prepare("DELETE FROM device_lines WHERE device_id = ? AND number > ?")
        .Bind(1, id)
        .Bind(2, d.configured_lines())
        .Run();
    tx.Commit();
    return version;
}

void Store::DeleteDevice(const std::string& host, const std::string& name,
                         int64_t expectedVersion) {
    std::lock_guard lock(mutex_);
    Transaction tx(*db_);
    DeleteRow(*db_, kDevices, RequireServer(*db_, host), name, DeviceCheck(host, name),
              expectedVersion);
    tx.Commit();
}

int64_t Store::SaveDeviceLine(const std::string& host, const std::string& device,
                              const pb::DeviceLine& line) {
    std::lock_guard lock(mutex_);
    auto check = DeviceCheck(host, device);
    Transaction tx(*db_);
    int64_t id = RequireDevice(*db_, host, device);
    auto st = db_->Prepare("SELECT body FROM devices WHERE id = ?");
    st.Bind(1, id);
    st.Step();
    int configured = ParseBody<pb::Device>(st.Blob(0)).configured_lines();
    check.Range("the line number", line.number(), 2, configured);
    ValidateLine(*db_, check, line.settings());
    auto stored =
        db_->Prepare("SELECT version FROM device_lines WHERE device_id = ? AND number = ?");
    stored.Bind(1, id).Bind(2, line.number());
    bool exists = stored.Step();
    int64_t version = NextVersion(check, line.version() == 0, exists ? 1 : 0,
                                  exists ? stored.Int(0) : 0, line.version());
    db_->Prepare(
           "INSERT INTO device_lines(device_id, number, version, body) VALUES(?, ?, ?, ?) "
           "ON CONFLICT(device_id, number) DO UPDATE SET version = excluded.version, "
           "body = excluded.body")
        .Bind(1, id)
        .Bind(2, line.number())
        .Bind(3, version)
        .BindBlob(4, line.settings().SerializeAsString())
        .Run();
    tx.Commit();
    return version;
}

void Store::DeleteDeviceLine(const std::string& host, const std::string& device, int number) {
    std::lock_guard lock(mutex_);
    Transaction tx(*db_);
    int64_t id = RequireDevice(*db_, host, device);
    if (number == 1)
        DeviceCheck(host, device)
            .Fail(pb::ERROR_INVALID_ARGUMENT, "the primary line cannot be deleted");
    db_->Prepare("DELETE FROM device_lines WHERE device_id = ? AND number = ?")
        .Bind(1, id)
        .Bind(2, number)
        .Run();
    if (db_->Changes() == 0)
        DeviceCheck(host, device)
            .Fail(pb::ERROR_LINE_NOT_CONFIGURED,
                  "line " + std::to_string(number) + " is not configured");
    tx.Commit();
}

int64_t Store::ChangeDeviceType(const std::string& host, const std::string& device, int type,
                                int64_t expectedVersion) {
    std::lock_guard lock(mutex_);
    auto check = DeviceCheck(host, device);
    Transaction tx(*db_);
    int64_t id = RequireDevice(*db_, host, device);
    auto st = db_->Prepare("SELECT version, body FROM devices WHERE id = ?");
    st.Bind(1, id);
    st.Step();
    int64_t version = NextVersion(check, false, id, st.Int(0), expectedVersion);
    const auto* newType = FindType(type);
    if (!newType) check.Fail(pb::ERROR_UNKNOWN_REFERENCE, "the device type is unknown");
    auto body = ParseBody<pb::Device>(st.Blob(1));
    body.set_type(type);
    body.set_configured_lines(
        std::clamp(body.configured_lines(), newType->min_lines(), newType->max_lines()));
    // The secondary lines were set up for the old type's hardware; none of
    // them carries over.
    db_->Prepare("DELETE FROM device_lines WHERE device_id = ?").Bind(1, id).Run();
    db_->Prepare("UPDATE devices SET version = ?, body = ? WHERE id = ?")
        .Bind(1, version)
        .BindBlob(2, body.SerializeAsString())
        .Bind(3, id)
        .Run();
    tx.Commit();
    return version;
}

void Store::SetDeviceState(const std::string& host, const std::string& device,
                           pb::DeviceRunState state) {
    std::lock_guard lock(mutex_);
    int64_t id = RequireDevice(*db_, host, device);
    db_->Prepare("UPDATE devices SET state = ? WHERE id = ?")
        .Bind(1, static_cast<int>(state))
        .Bind(2, id)
        .Run();
}

}  // namespace veldrano::server

#pragma once
// The content of the demo installation: a head office, a print room, a line
// server, a sales office, a remote headquarters and a standby line server.
// Kept as plain tables so that the fill code stays short and the data can be
// read (and corrected) at a glance. Only DemoData.cpp includes this.

#include <cstdint>
#include <string>

namespace veldrano::server::demo {

struct DemoServer {
    const char* name;
    const char* comment;
    bool users, printers, devices;
    const char* netType;
    bool remote;
    bool online;
};

inline const DemoServer kServers[] = {
    {"fxmaster", "Head office message server", true, true, true, "rpc", false, true},
    {"fxprint01", "Print room, building B", false, true, false, "rpc", false, true},
    {"fxline01", "Fax and telex lines, floor 2", false, false, true, "rrpc", false, true},
    {"fxsales", "Sales and field service", true, false, true, "rpc", false, true},
    {"remote-hq.example.net", "Headquarters Zurich", true, true, true, "rrpc", true, true},
    {"fxbackup", "Standby line server", false, false, true, "rpc", false, false},
};

// How far the multi-line devices are set up: their line count and the last
// line configured on the server. The lines above it are counted but not
// configured yet, so the device editor shows both kinds of line. An entry
// without a host shapes the device of its type that FillDevices places; one
// with a host adds a further device there (a basic-rate connection has a
// single secondary line, so it takes two devices to show both kinds).
struct DemoLines {
    const char* host;
    int type;        // a device type id
    int configured;  // the device's line count
    int setUpTo;     // lines 2 .. setUpTo are configured on the server
};

inline const DemoLines kLines[] = {
    {nullptr, 2, 2, 2},    // ISDN basic rate: both channels
    {nullptr, 3, 30, 24},  // ISDN primary rate: channels 25 to 30 still to come
    {nullptr, 4, 4, 3},    // DID trunk: the fourth line still to come
    {nullptr, 6, 3, 2},    // voice port: the third port still to come
    {"fxsales", 2, 2, 1},  // a new basic-rate connection, second channel still to come
};

struct DemoPrinter {
    const char* host;
    const char* name;
    const char* comment;
    int type;
    int paper;
    int split;
    const char* filter;
};

// Every printer type of the server's numbering appears at least once.
inline const DemoPrinter kPrinters[] = {
    {"fxmaster", "lj-acc", "LaserJet accounts, room 104", 2, 0, 0,
     "/opt/veldrano/filters/pcl -r 300"},
    {"fxmaster", "ps-board", "Board room PostScript", 8, 0, 20, "/opt/veldrano/filters/ps -c"},
    {"fxmaster", "fax-out", "Outgoing fax copies", 1, 0, 0, "/opt/veldrano/filters/g3copy"},
    {"fxprint01", "ascii-log", "Journal line printer", 0, 2, 0, "/opt/veldrano/filters/ascii"},
    {"fxprint01", "ljcomp", "LaserJet compatible, mail rm", 3, 0, 0,
     "/opt/veldrano/filters/pcl -r 150"},
    {"fxprint01", "ljiip-hr", "Human resources LaserJet IIP", 4, 0, 0,
     "/opt/veldrano/filters/pcl -r 300"},
    {"fxprint01", "lj3-pool", "Print pool, LaserJet III", 5, 0, 50,
     "/opt/veldrano/filters/pcl -r 300 -d"},
    {"fxprint01", "dj-design", "Design studio DeskJet", 6, 2, 0, "/opt/veldrano/filters/dj"},
    {"fxprint01", "dj500-mkt", "Marketing DeskJet 500", 7, 1, 0, "/opt/veldrano/filters/dj -5"},
    {"fxprint01", "ps-comp", "PostScript compatible", 9, 0, 100, "/opt/veldrano/filters/ps"},
    {"fxprint01", "ljfast", "Fast LaserJet, dispatch", 10, 0, 0,
     "/opt/veldrano/filters/pcl -r 600 -f"},
    {"fxprint01", "win-share", "Windows share PRINTSRV1", 11, 0, 0,
     "/opt/veldrano/filters/smbprint"},
    {"remote-hq.example.net", "hq-ps", "HQ executive floor", 8, 0, 0,
     "/opt/veldrano/filters/ps -c"},
    {"remote-hq.example.net", "hq-fast", "HQ mail room", 10, 1, 0,
     "/opt/veldrano/filters/pcl -r 600 -f"},
    {"remote-hq.example.net", "hq-win", "HQ Windows queue", 11, 0, 0,
     "/opt/veldrano/filters/smbprint"},
};

struct DemoUser {
    const char* host;
    const char* name;
    const char* comment;
    const char* printer;  // "" for none; the print actions follow it
    const char* costCenter;
    const char* language;
};

inline const DemoUser kUsers[] = {
    {"fxmaster", "admin", "System administrator", "", "4100", "en"},
    {"fxmaster", "jmueller", "Julia Mueller, Accounts", "lj-acc", "4310", "de"},
    {"fxmaster", "abecker", "Andreas Becker, Accounts", "lj-acc", "4310", "de"},
    {"fxmaster", "tschmidt", "Tanja Schmidt, Purchasing", "", "4320", "de"},
    {"fxmaster", "kwagner", "Klaus Wagner, Purchasing", "", "4320", "de"},
    {"fxmaster", "lfischer", "Lena Fischer, Legal", "ps-board", "4400", "de"},
    {"fxmaster", "mweber", "Markus Weber, Managing Dir.", "ps-board", "4000", "de"},
    {"fxmaster", "nkoch", "Nina Koch, Assistant to MD", "ps-board", "4000", "de"},
    {"fxmaster", "phoffmann", "Peter Hoffmann, IT", "", "4100", "en"},
    {"fxmaster", "rschulz", "Rita Schulz, Human Resources", "lj-acc", "4500", "de"},
    {"fxmaster", "sbauer", "Stefan Bauer, Logistics", "", "4600", "de"},
    {"fxmaster", "ukrause", "Ute Krause, Logistics", "fax-out", "4600", "de"},
    {"fxmaster", "vlange", "Volker Lange, Quality", "", "4700", "de"},
    {"fxmaster", "wbrandt", "Wiebke Brandt, Quality", "", "4700", "en"},
    {"fxmaster", "reception", "Front desk, building A", "fax-out", "4100", "de"},
    {"fxmaster", "accounts", "Accounts payable mailbox", "lj-acc", "4310", "de"},
    {"fxmaster", "legal", "Legal department mailbox", "ps-board", "4400", "de"},
    {"fxmaster", "helpdesk", "IT help desk", "", "4100", "en"},
    {"fxsales", "dmoreau", "Didier Moreau, Sales France", "", "5100", "fr"},
    {"fxsales", "cdubois", "Claire Dubois, Sales France", "", "5100", "fr"},
    {"fxsales", "elaurent", "Emile Laurent, Key Accounts", "", "5200", "fr"},
    {"fxsales", "fgarcia", "Fernando Garcia, Sales Iberia", "", "5300", "es"},
    {"fxsales", "gmartin", "Gabriel Martin, Field Service", "", "5400", "fr"},
    {"fxsales", "hsimon", "Helene Simon, Field Service", "", "5400", "fr"},
    {"fxsales", "imichel", "Isabelle Michel, Inside Sales", "", "5500", "fr"},
    {"fxsales", "jlefevre", "Jean Lefevre, Inside Sales", "", "5500", "fr"},
    {"fxsales", "kleroy", "Karine Leroy, Tenders", "", "5600", "fr"},
    {"fxsales", "lroux", "Luc Roux, Sales Director", "", "5000", "fr"},
    {"fxsales", "sales", "Sales team mailbox", "", "5000", "en"},
    {"fxsales", "orders", "Order entry", "", "5500", "en"},
    {"fxsales", "support", "Customer support line", "", "5400", "en"},
    {"remote-hq.example.net", "bkeller", "Beat Keller, CEO", "hq-ps", "1000", "de"},
    {"remote-hq.example.net", "cmeier", "Corinne Meier, CFO", "hq-ps", "1100", "de"},
    {"remote-hq.example.net", "dhuber", "Daniel Huber, Treasury", "hq-fast", "1100", "de"},
    {"remote-hq.example.net", "egerber", "Esther Gerber, Controlling", "", "1200", "de"},
    {"remote-hq.example.net", "fbrunner", "Franz Brunner, Tax", "", "1200", "de"},
    {"remote-hq.example.net", "gsteiner", "Gabi Steiner, Group Legal", "hq-ps", "1300", "de"},
    {"remote-hq.example.net", "hmoser", "Hans Moser, Communications", "", "1400", "fr"},
    {"remote-hq.example.net", "iwyss", "Irene Wyss, Investor Rel.", "", "1400", "en"},
    {"remote-hq.example.net", "jfrei", "Jonas Frei, Group IT", "", "1500", "en"},
    {"remote-hq.example.net", "kbaumann", "Karin Baumann, Group HR", "hq-fast", "1600", "de"},
    {"remote-hq.example.net", "hqdesk", "Headquarters front desk", "hq-fast", "1000", "de"},
    {"remote-hq.example.net", "treasury", "Treasury mailbox", "hq-fast", "1100", "en"},
};

inline bool Has(const char* text, const char* part) {
    return std::string(text).find(part) != std::string::npos;
}

struct DemoGroup {
    const char* name;
    const char* comment;
    bool (*takes)(const DemoUser&);
};

inline const DemoGroup kGroups[] = {
    {"AllStaff", "Everybody, all sites", [](const DemoUser&) { return true; }},
    {"Finance", "Accounts, treasury, control",
     [](const DemoUser& u) {
         return Has(u.comment, "Accounts") || Has(u.comment, "Treasury") || Has(u.comment, "CFO") ||
                Has(u.comment, "Controlling") || Has(u.comment, "Tax");
     }},
    {"Management", "Directors of all sites",
     [](const DemoUser& u) {
         return Has(u.comment, "Dir") || Has(u.comment, "CEO") || Has(u.comment, "CFO");
     }},
    {"SalesTeam", "Sales offices and key accounts",
     [](const DemoUser& u) { return Has(u.comment, "Sales") || Has(u.comment, "Key Acc"); }},
    {"Legal", "Legal at head office and HQ",
     [](const DemoUser& u) { return Has(u.comment, "Legal"); }},
    {"FrontDesks", "Receptions, night fax watch",
     [](const DemoUser& u) { return Has(u.comment, "front desk") || Has(u.comment, "Front"); }},
    {"ITSupport", "Help desk and group IT", [](const DemoUser& u) { return Has(u.comment, "IT"); }},
};

struct DemoRoute {
    const char* name;
    const char* comment;
    const char* extension;
    const char* tsi;
    const char* user;
    const char* userHost;
    const char* group;
    const char* pollServer;
    const char* pollDocument;
};

inline const DemoRoute kRoutes[] = {
    {"acc-in", "Invoices to accounts payable", "310", "", "accounts", "fxmaster", "Finance", "",
     ""},
    {"legal-in", "Contracts and court mail", "440", "", "legal", "fxmaster", "Legal", "", ""},
    {"sales-in", "Sales enquiries", "200", "", "sales", "fxsales", "SalesTeam", "", ""},
    {"orders", "Order forms, polled hourly", "250", "", "orders", "fxsales", "SalesTeam", "fxsales",
     "ORDERFORM"},
    {"hq-rates", "Daily rates from HQ treasury", "", "+41 44 555", "treasury",
     "remote-hq.example.net", "Finance", "remote-hq.example.net", "DAILYRATES"},
    {"night", "Unmatched mail after hours", "999", "", "reception", "fxmaster", "FrontDesks", "",
     ""},
};

struct DemoMapping {
    const char* match;
    const char* replace;
};

inline const DemoMapping kMappings[] = {
    {"00", "+"},
    {"0", "+49"},
    {"+49890", "+4989"},
    {"110", "+4989110"},
    {"*31#", "+41445551000"},
    {"0041", "+41"},
};

struct DemoGatewayUser {
    const char* address;  // nullptr ends the list
    const char* extension;
};

struct DemoGateway {
    const char* name;
    const char* comment;
    DemoGatewayUser users[5];
};

inline const DemoGateway kGateways[] = {
    {"smtp.example.com",
     "Company mail relay",
     {{"jmueller@example.com", "2231"},
      {"accounts@example.com", "310"},
      {"sales@example.com", "200"},
      {"orders@example.com", "250"},
      {nullptr, nullptr}}},
    {"x400.example.net",
     "Legacy X.400 gateway",
     {{"treasury@hq.example.net", "4110"},
      {"bkeller@hq.example.net", "4100"},
      {"legal@hq.example.net", "4300"},
      {nullptr, nullptr}}},
};

struct DemoRate {
    int days;  // bit 0 Monday .. bit 6 Sunday; 0 ends the list
    int startHour, startMinute, stopHour, stopMinute;
};

struct DemoDestination {
    const char* name;  // nullptr ends the list
    int type;          // pb::DestinationType
    const char* prefix;
    bool external;
};

constexpr int kWeekdays = 0x1F;
constexpr int kWeekend = 0x60;

struct DemoZone {
    const char* name;
    bool local;
    const char* daemonUser;
    const char* daemonHost;
    const char* primary;
    const char* secondary;
    DemoRate rates[4];
    DemoDestination destinations[6];
};

// One zone of each kind: local host, host pair, single host, daemon user.
inline const DemoZone kZones[] = {
    {"Local extensions",
     true,
     "",
     "",
     "",
     "",
     {{0x7F, 0, 0, 24, 0}, {}},
     {{"Internal fax extensions", 0, "2", false}, {"Internal voice mail", 2, "8", false}, {}}},
    {"Germany national",
     false,
     "",
     "",
     "fxmaster",
     "fxline01",
     {{kWeekdays, 8, 0, 18, 0}, {kWeekdays, 18, 0, 24, 0}, {kWeekend, 0, 0, 24, 0}, {}},
     {{"German landlines", 0, "+49", true},
      {"German telex", 1, "41", true},
      {"German mobiles", 3, "+4917", true},
      {"Munich office voice", 2, "+4989", true},
      {}}},
    {"Switzerland via HQ",
     false,
     "",
     "",
     "remote-hq.example.net",
     "",
     {{kWeekdays, 7, 30, 19, 0}, {kWeekend, 9, 0, 17, 30}, {}},
     {{"Swiss landlines", 0, "+41", true},
      {"Swiss mobiles", 3, "+417", true},
      {"HQ internal", 0, "+41445551", false},
      {}}},
    {"Overseas, least cost daemon",
     false,
     "treasury",
     "remote-hq.example.net",
     "",
     "",
     {{kWeekdays, 22, 0, 24, 0}, {kWeekdays, 0, 0, 6, 0}, {kWeekend, 0, 0, 24, 0}, {}},
     {{"North America", 0, "+1", true},
      {"North America voice", 2, "+1", true},
      {"Asia Pacific telex", 1, "+8", true},
      {}}},
    {"Europe",
     false,
     "",
     "",
     "fxline01",
     "fxbackup",
     {{kWeekdays | kWeekend, 0, 0, 24, 0}, {}},
     {{"France", 0, "+33", true}, {"France SMS", 3, "+336", true}, {"Spain", 0, "+34", true}, {}}},
};

struct DemoEvent {
    const char* host;
    int severity;
    int originatorType;
    int originatorId;
    int messageClass;
    const char* text;
};

// Message class bits as the server sets them.
constexpr int kUnix = 0x01, kRpc = 0x02, kNet = 0x04, kServer = 0x08, kDriver = 0x10,
              kFilter = 0x20, kAppl = 0x40, kAsync = 0x80, kSetup = 0x100, kSignal = 0x200;

inline const DemoEvent kEvents[] = {
    {"fxmaster", 1, 0, 4101, kServer | kAppl, "Message server started, 8 dispatchers"},
    {"fxmaster", 0, 10, 0, kSetup, "Configuration loaded: 18 users, 3 printers"},
    {"fxline01", 1, 7, 4211, kDriver, "Line isdn1: ISDN layer 2 established"},
    {"fxline01", 2, 8, 4214, kDriver | kSignal, "Telex line: answerback missing, retrying"},
    {"fxprint01", 0, 15, 4302, kAppl, "Print spooler ready, 9 queues"},
    {"fxsales", 1, 1, 4410, kAppl | kAsync, "Send job 10233 queued for +33 1 4555 0100"},
    {"fxsales", 0, 2, 4411, kAppl, "Received fax for extension 200, 3 pages"},
    {"remote-hq.example.net", 1, 18, 4520, kRpc | kNet, "Least-cost tables reloaded, 5 zones"},
    {"remote-hq.example.net", 3, 17, 4530, kNet, "Mail relay x400.example.net not answering"},
    {"fxmaster", 2, 6, 4150, kFilter, "Filter pcl: page 4 of job 10240 clipped to A4"},
    {"fxmaster", 0, 13, 4160, kAppl, "Notification sent to jmueller"},
    {"fxline01", 3, 7, 4212, kDriver, "Line fax2: no dial tone on /dev/ttyV2"},
    {"fxline01", 4, 7, 4212, kDriver | kUnix, "Line fax2: modem does not respond, line closed"},
    {"fxprint01", 3, 16, 4303, kFilter, "PostScript job 10245 failed: syntax error"},
    {"fxsales", 2, 11, 4412, kRpc, "Client session from 10.1.4.23 timed out"},
    {"remote-hq.example.net", 5, 0, 4501, kServer | kUnix,
     "Dispatcher: queue file damaged, rebuilt"},
    {"fxmaster", 1, 12, 4170, kRpc | kNet, "Windows client WS-ACC-07 logged in"},
    {"fxmaster", 4, 5, 4120, kServer | kUnix, "Journal disk 95% full"},
    {"fxline01", 0, 9, 4220, kAppl, "ASCII document 10250 rendered, 2 pages"},
    {"fxsales", 5, 3, 4420, kServer | kSignal, "Address book server crashed (signal 11)"},
    {"fxsales", 1, 3, 4420, kServer, "Address book server restarted"},
    {"remote-hq.example.net", 2, 19, 4540, kAppl | kAsync, "SMS to +41 79 555 0123 delayed"},
    {"remote-hq.example.net", 0, 14, 4550, kAppl, "Desktop notification sent to bkeller"},
    {"fxmaster", 3, 4, 4130, kAppl, "Number 0049 89 555 not dialable, check mappings"},
    {"fxmaster", 5, 1, 4102, kServer | kAsync, "Send queue locked by stale process 3977"},
    {"fxbackup", 2, 10, 0, kSetup, "Standby server stopped by the administrator"},
    {"fxline01", 1, 8, 4214, kDriver, "Telex line: message 7781 delivered"},
    {"fxprint01", 4, 15, 4302, kAppl | kUnix, "Printer lj3-pool: out of paper for 30 min"},
    {"fxsales", 4, 17, 4430, kNet | kRpc, "Gateway smtp.example.com refused 12 mails"},
    {"remote-hq.example.net", 4, 7, 4560, kDriver, "Line isdn3: D channel down"},
    {"remote-hq.example.net", 3, 2, 4570, kAppl, "Receive job 3311 aborted after page 2"},
    {"fxmaster", 5, 7, 4180, kDriver | kSignal, "Line driver killed by signal 9"},
    {"fxmaster", 0, 15, 4190, kAppl, "Job 10261 printed on lj-acc"},
    {"fxline01", 5, 18, 4230, kServer | kRpc, "Routing engine lost its tables, restarting"},
    {"fxprint01", 1, 16, 4304, kFilter, "PostScript job 10262 converted, 6 pages"},
    {"fxsales", 3, 19, 4440, kAppl, "SMS to +33 6 5555 0199 rejected by carrier"},
    {"remote-hq.example.net", 1, 10, 0, kSetup | kAppl, "Administrator changed user cmeier"},
};

}  // namespace veldrano::server::demo

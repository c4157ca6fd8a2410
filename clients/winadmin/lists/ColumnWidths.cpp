#include "lists/ColumnWidths.h"

#include <cmath>
#include <limits>
#include <utility>

#include "common/Settings.h"

namespace winadmin {

namespace {

struct ColumnDefault {
    const char* key;
    int16_t width;
};

struct ViewDefaults {
    const char* section;
    std::initializer_list<ColumnDefault> columns;
};

// The section and value names are the ones existing installations have in
// their stores; "Destext" keeps its lower-case "t" for that reason. The
// defaults (twips, see common/Twips.h) show their header, with the sort
// indicator, and the column's usual content whole: a date and time of day, a
// five-digit process id, a comment of 30 characters, the longer German
// headers as well.
const ViewDefaults kDefaults[] = {
    {"AdmView", {{"Name", 3000}}},
    {"GroupView", {{"GroupName", 2000}, {"GroupComment", 3000}}},
    {"RouteView",
     {{"RouteName", 2000},
      {"RouteComment", 3000},
      {"RouteMatchExtension", 1900},
      {"RouteMatchTSI", 2000}}},
    {"NumberMappingsView", {{"NumberMappingsMatch", 2000}, {"NumberMappingsReplace", 2000}}},
    {"ServerView",
     {{"ServerName", 2000},
      {"ServerComment", 3000},
      {"ServerRemote", 1200},
      {"ServerUser", 1700},
      {"ServerPrinter", 1700},
      {"ServerDevice", 1700}}},
    {"UserView", {{"UserName", 2500}, {"UserComment", 3500}, {"MemberName", 1850}}},
    {"PrinterView", {{"PrinterName", 2500}, {"PrinterComment", 3000}, {"PrinterType", 2500}}},
    {"DeviceView", {{"DeviceName", 2500}, {"DeviceComment", 3000}, {"DeviceTypeComment", 3500}}},
    {"ProcessView",
     {{"ProcessSlot", 1500},
      {"ProcessID", 900},
      {"ProcessDirectory", 2000},
      {"ProcessCommand", 2000},
      {"ProcessStatus", 1500}}},
    {"EventView",
     {{"EventTime", 2200},
      {"EventSeverity", 1300},
      {"EventOriginatorID", 1500},
      {"EventOriginatorType", 2000},
      {"EventMessageClass", 1700},
      {"EventMessageText", 3000}}},
    {"GatewayView",
     {{"GatewayName", 2500}, {"GatewayComment", 3000}, {"MailAddress", 2500}, {"Extension", 2000}}},
    {"RateView", {{"RateDays", 3000}, {"RateStart", 2500}, {"RateStop", 2500}}},
    {"DestView", {{"DestName", 2500}, {"DestType", 2000}, {"Destext", 1200}, {"DestPrefix", 2000}}},
    {"ZoneView",
     {{"ZoneComment", 3000},
      {"IsLocal", 900},
      {"PrimaryHost", 1800},
      {"Secondary", 1900},
      {"IsDaemon", 1000},
      {"Daemon", 1800}}},
};

bool IsUsableWidth(double twips) {
    return std::isfinite(twips) && twips >= 0 && twips <= std::numeric_limits<int16_t>::max();
}

}  // namespace

ColumnWidths::ColumnWidths() {
    for (const ViewDefaults& view : kDefaults) {
        View& added = views_.emplace_back();
        added.section = QString::fromLatin1(view.section);
        for (const ColumnDefault& column : view.columns)
            added.columns.push_back({QString::fromLatin1(column.key), column.width, column.width});
    }
}

ColumnWidths::Column* ColumnWidths::Find(const QString& section, const QString& key) {
    return const_cast<Column*>(std::as_const(*this).Find(section, key));
}

const ColumnWidths::Column* ColumnWidths::Find(const QString& section, const QString& key) const {
    for (const View& view : views_) {
        if (view.section != section) continue;
        for (const Column& column : view.columns)
            if (column.key == key) return &column;
    }
    return nullptr;
}

int ColumnWidths::Width(const QString& section, const QString& key) const {
    const Column* column = Find(section, key);
    return column ? column->width : UnknownColumnWidth;
}

bool ColumnWidths::SetWidth(const QString& section, const QString& key, int twips) {
    Column* column = Find(section, key);
    if (!column || !IsUsableWidth(twips)) return false;
    column->width = int16_t(twips);
    return true;
}

void ColumnWidths::Load(const QString& productKey) {
    for (View& view : views_) {
        for (Column& column : view.columns) {
            const QString fallback = QString::number(column.defaultWidth);
            const double stored = LeadingNumber(
                GetSectionSetting(kVendor, productKey, view.section, column.key, fallback),
                column.defaultWidth);
            column.width =
                IsUsableWidth(stored) ? int16_t(std::trunc(stored)) : column.defaultWidth;
        }
    }
}

void ColumnWidths::Save(const QString& productKey) const {
    for (const View& view : views_)
        for (const Column& column : view.columns)
            SaveSectionSetting(kVendor, productKey, view.section, column.key,
                               QString::number(column.width));
}

}  // namespace winadmin

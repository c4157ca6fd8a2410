#include "lists/ViewSettings.h"

#include <cmath>
#include <limits>

#include "common/AppContext.h"
#include "common/Settings.h"
#include "session/ServerSession.h"

namespace winadmin {

QString GetProductKeyName() {
    const ServerSession* session = TheSession();
    return ProductTitle(session ? session->GetBrand() : QString());
}

QString GetMainFormSetting(const QString& name, const QString& defaultValue) {
    return GetSectionSetting(kVendor, GetProductKeyName(), kMainFormSection, name, defaultValue);
}

void SaveMainFormSetting(const QString& name, int value) {
    SaveSectionSetting(kVendor, GetProductKeyName(), kMainFormSection, name,
                       QString::number(value));
}

int ReadMainFormNumber(const QString& name, int fallback, int low, int high) {
    const double stored =
        LeadingNumber(GetMainFormSetting(name, QString::number(fallback)), fallback);
    if (!std::isfinite(stored)) return fallback;
    const double whole = std::trunc(stored);
    if (whole < low || whole > high) return fallback;
    return int(whole);
}

int StoredServerTimeout() {
    const ServerSession* session = TheSession();
    const int current = session ? session->GetTimeout() : kMinServerTimeout;
    return ReadMainFormNumber(QStringLiteral("Server Timeout"), current, kMinServerTimeout,
                              kMaxServerTimeout);
}

int StoredSeverity() {
    return ReadMainFormNumber(QStringLiteral("Severity"), 0, std::numeric_limits<int16_t>::min(),
                              std::numeric_limits<int16_t>::max());
}

}  // namespace winadmin

#include "common/CodeTables.h"

#include <array>
#include <utility>

#include "common/Labels.h"

namespace winadmin {

namespace {

const QString kUnknown = QStringLiteral("<Unknown>");

// The label of keys[code], or of "<Unknown>" outside the table.
template <size_t N>
QString TableText(const std::array<const char*, N>& keys, int code) {
    if (code < 0 || code >= static_cast<int>(N)) return GetLabel(kUnknown);
    return GetLabel(QString::fromLatin1(keys[static_cast<size_t>(code)]));
}

// The server's numbering: not alphabetical, and the fast LaserJet (10) comes
// after the PostScript codes.
constexpr std::array<const char*, 12> kPrinterTypes = {
    "PRN_ASCII", "PRN_FAX",      "PRN_HP_LJ", "PRN_HP_LJ_COMP", "PRN_HP_LJ_IIP",  "PRN_HP_LJ_III",
    "PRN_HP_DJ", "PRN_HP_DJ500", "PRN_PS",    "PRN_PS_COMP",    "PRN_HP_LJ_FAST", "PRN_WINDOWS"};

constexpr std::array<const char*, 6> kSeverities = {"SeverityNone",    "SeverityNote",
                                                    "SeverityWarning", "SeverityError",
                                                    "SeverityFatal",   "SeverityPanic"};

constexpr std::array<const char*, 20> kOriginators = {
    "OriginatorAlpha",       "OriginatorGammaS",  "OriginatorGammaE",  "OriginatorTheta",
    "OriginatorNue",         "OriginatorOmega",   "OriginatorFilter",  "OriginatorDriverFax",
    "OriginatorDriverTelex", "OriginatorFaxAsc",  "OriginatorFaxAdm",  "OriginatorFaxX",
    "OriginatorFaxWin",      "OriginatorBiffX",   "OriginatorBiffWin", "OriginatorFaxPR",
    "OriginatorFaxPSPR",     "OriginatorGateway", "OriginatorSigma",   "OriginatorPi"};

// Tested in this order, which is also the order of the output.
constexpr std::array<std::pair<int32_t, const char*>, 10> kMessageClasses = {{
    {0x40, "MsgClassAppl"},
    {0x80, "MsgClassAsync"},
    {0x10, "MsgClassDriver"},
    {0x20, "MsgClassFilter"},
    {0x04, "MsgClassNet"},
    {0x02, "MsgClassRpc"},
    {0x08, "MsgClassServer"},
    {0x100, "MsgClassSetup"},
    {0x200, "MsgClassSignal"},
    {0x01, "MsgClassUnix"},
}};

constexpr std::array<const char*, 3> kPaperSizes = {"PAPER_A4", "PAPER_LEGAL", "PAPER_LETTER"};

template <size_t N>
QStringList KeyList(const std::array<const char*, N>& keys) {
    QStringList list;
    for (const char* key : keys) list << QString::fromLatin1(key);
    return list;
}

}  // namespace

QString PrinterTypeText(int16_t code) {
    return TableText(kPrinterTypes, code);
}

QString SeverityText(int16_t code) {
    return TableText(kSeverities, code);
}

QString OriginatorText(int16_t code) {
    return TableText(kOriginators, code);
}

QString MessageClassText(int32_t bits) {
    QString text;
    for (const auto& [bit, key] : kMessageClasses)
        if (bits & bit) text += GetLabel(QString::fromLatin1(key)) + QLatin1Char(' ');
    return text;
}

QString ProcessStatusText(int32_t exitStatus, int32_t runState) {
    if (runState == 0) return GetLabel(QStringLiteral("ProcessStarting"));
    if (runState == -1) return GetLabel(QStringLiteral("ProcessFailed"));
    switch (exitStatus) {
        case -2:
            return GetLabel(QStringLiteral("ProcessInit"));
        case -1:
            return GetLabel(QStringLiteral("ProcessRun"));
        case 0:
            return GetLabel(QStringLiteral("ProcessTerminated"));
        default:
            // A negative status shows as its 32-bit two's complement.
            return GetLabel(QStringLiteral("ProcessExit")) + QStringLiteral(" (0x") +
                   QString::number(static_cast<uint32_t>(exitStatus), 16).toUpper() +
                   QLatin1Char(')');
    }
}

QString CountOrDashText(int32_t value) {
    return value > 0 ? QLatin1Char(' ') + QString::number(value) : QStringLiteral("---");
}

QString YesNoText(bool flag) {
    return GetLabel(flag ? QStringLiteral("Yes") : QStringLiteral("No"));
}

QStringList PrinterTypeKeys() {
    return KeyList(kPrinterTypes);
}
QStringList PaperSizeKeys() {
    return KeyList(kPaperSizes);
}
QStringList SeverityKeys() {
    return KeyList(kSeverities);
}

}  // namespace winadmin

#include "common/AppContext.h"

#include <QLocale>

namespace winadmin {

namespace {

// The title the program is built with; a brand the table does not know
// leaves it in place.
const QString kBuiltInTitle = QStringLiteral("VELDRANO");
const QString kAdministrator = QStringLiteral(" Administrator");

QString& Separator() {
    static QString separator = QStringLiteral(".");
    return separator;
}

QString& Title() {
    static QString title = kBuiltInTitle;
    return title;
}

}  // namespace

QString DecimalSeparator() {
    return Separator();
}

QString NumericCharacters() {
    return Separator() + QStringLiteral("0123456789");
}

void SetDecimalSeparator(const QString& separator) {
    // Numeric fields need some separator to accept; "." is the one every
    // stored number uses.
    Separator() = separator.isEmpty() ? QStringLiteral(".") : separator;
}

void LoadDecimalSeparator() {
    SetDecimalSeparator(QLocale::system().decimalPoint());
}

QString ApplicationTitle() {
    return Title();
}

void SetApplicationTitle(const QString& title) {
    Title() = title;
}

Brand BrandFor(const QString& brandWord) {
    const QString word = brandWord.toLower();
    if (word == QLatin1String("kelvar"))
        return {QStringLiteral("VELDRANO"), QStringLiteral(":/brand/veldrano.svg")};
    if (word == QLatin1String("quorel"))
        return {QStringLiteral("Quorel"), QStringLiteral(":/brand/quorel.svg")};
    return {kBuiltInTitle, {}};
}

QString ProductTitle(const QString& brandWord) {
    const QString word = brandWord.toLower();
    if (word == QLatin1String("kelvar")) return QStringLiteral("VELDRANO") + kAdministrator;
    if (word == QLatin1String("quorel")) return QStringLiteral("Quorel") + kAdministrator;
    // An unknown brand is named as the server spells it: the caption and the
    // settings key built from it must not depend on our case rules.
    return brandWord + kAdministrator;
}

}  // namespace winadmin

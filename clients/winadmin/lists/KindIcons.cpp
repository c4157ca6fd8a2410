#include "lists/KindIcons.h"

#include <QFile>
#include <QHash>

// Q_INIT_RESOURCE names a function of the global namespace.
static void InitConsoleResources() {
    Q_INIT_RESOURCE(resources);
}

namespace winadmin {

void LoadConsoleResources() {
    static const bool loaded = (InitConsoleResources(), true);
    Q_UNUSED(loaded);
}

const QStringList& KnownKinds() {
    static const QStringList kinds = {
        QStringLiteral("Administrator"), QStringLiteral("Servers"),
        QStringLiteral("Server"),        QStringLiteral("Users"),
        QStringLiteral("User"),          QStringLiteral("Groups"),
        QStringLiteral("Group"),         QStringLiteral("Printers"),
        QStringLiteral("Printer"),       QStringLiteral("Devices"),
        QStringLiteral("Device"),        QStringLiteral("Processes"),
        QStringLiteral("Process"),       QStringLiteral("Events"),
        QStringLiteral("Event"),         QStringLiteral("Routes"),
        QStringLiteral("Route"),         QStringLiteral("NumberMappings"),
        QStringLiteral("NumberMapping"), QStringLiteral("Gateways"),
        QStringLiteral("Gateway"),       QStringLiteral("GatewayUser"),
        QStringLiteral("LCR"),           QStringLiteral("Zone"),
        QStringLiteral("Rates"),         QStringLiteral("Rate"),
        QStringLiteral("Destinations"),  QStringLiteral("Destination"),
    };
    return kinds;
}

QIcon KindIcon(const QString& kind) {
    // Lists of many thousand rows ask for the same few icons again and
    // again; a QIcon per row would parse the SVG per row.
    static QHash<QString, QIcon> cache;
    const auto found = cache.constFind(kind);
    if (found != cache.cend()) return found.value();

    LoadConsoleResources();
    QIcon icon;
    // Only the known words: a resource path built from an arbitrary word
    // ("../brand/veldrano") must not find some other picture.
    if (KnownKinds().contains(kind)) {
        const QString path = QStringLiteral(":/kinds/%1.svg").arg(kind);
        if (QFile::exists(path)) icon = QIcon(path);
    }
    cache.insert(kind, icon);
    return icon;
}

}  // namespace winadmin

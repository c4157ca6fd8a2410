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

QIcon KindIcon(const QString& kind) {
    // Lists of many thousand rows ask for the same few icons again and
    // again; a QIcon per row would parse the SVG per row.
    static QHash<QString, QIcon> cache;
    const auto found = cache.constFind(kind);
    if (found != cache.cend()) return found.value();

    LoadConsoleResources();
    QIcon icon;
    // Only the table's pictures: a resource path built from an arbitrary word
    // ("../brand/veldrano") must not find some other picture.
    if (const char* path = TraitsOfKind(kind).icon; path && QFile::exists(QLatin1String(path)))
        icon = QIcon(QLatin1String(path));
    cache.insert(kind, icon);
    return icon;
}

}  // namespace winadmin

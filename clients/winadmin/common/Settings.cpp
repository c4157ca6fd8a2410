#include "common/Settings.h"

#include <QDir>
#include <QSettings>
#include <QStandardPaths>
#include <memory>

namespace winadmin {

namespace {

// Empty while the native store is in use.
QString& SettingsFilePath() {
    static QString path;
    return path;
}

QString NativeLocation() {
#ifdef Q_OS_WIN
    return QStringLiteral("HKEY_CURRENT_USER");
#else
    // Not the application's own config folder: the store belongs to the
    // vendor, like the registry key, whatever the program is called.
    return QDir(QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation))
        .filePath(QStringLiteral("Tarnex/settings.ini"));
#endif
}

// One open store, reopened when its location changes. QSettings reads the
// file once and syncs on demand, so keeping it open saves a parse per read.
QSettings* Store() {
    static std::unique_ptr<QSettings> store;
    static QString openedAt;
    const QString& file = SettingsFilePath();
    const QString location = file.isEmpty() ? NativeLocation() : file;
    if (!store || openedAt != location) {
#ifdef Q_OS_WIN
        const auto format = file.isEmpty() ? QSettings::NativeFormat : QSettings::IniFormat;
#else
        const auto format = QSettings::IniFormat;
#endif
        store = std::make_unique<QSettings>(location, format);
        openedAt = location;
    }
    return store.get();
}

int& BatchDepth() {
    static int depth = 0;
    return depth;
}

void SyncStore() {
    QSettings* store = Store();
    store->sync();
    if (store->status() != QSettings::NoError || !store->isWritable())
        throw SettingsError(store->fileName());
}

// The setting is the default value of a subkey named after it; in the
// registry QSettings reaches a key's default value through "Default".
QString PlainKey(const QString& vendor, const QString& name) {
    return QStringLiteral("Software/%1/%2/Default").arg(vendor, name);
}

QString SectionKey(const QString& vendor, const QString& productKey, const QString& section,
                   const QString& name) {
    return QStringLiteral("Software/%1/%2/%3/%4/Default").arg(vendor, productKey, section, name);
}

// Blanks only: a tab or line break that someone stored is part of the value.
QString TrimBlanks(const QString& text) {
    qsizetype first = 0;
    qsizetype last = text.size();
    while (first < last && text.at(first) == u' ') ++first;
    while (last > first && text.at(last - 1) == u' ') --last;
    return text.mid(first, last - first);
}

QString ReadKey(const QString& key, const QString& defaultValue) {
    const QVariant stored = Store()->value(key);
    if (!stored.isValid()) return defaultValue;
    // The classic read filled a 200-character buffer and stopped at the
    // terminator, so longer values and anything after a NUL never arrived.
    QString text = stored.toString().left(199);
    const qsizetype nul = text.indexOf(QChar(u'\0'));
    if (nul >= 0) text.truncate(nul);
    text = TrimBlanks(text);
    return text.isEmpty() ? defaultValue : text;
}

bool WriteKey(const QString& key, const QString& value) {
    QSettings* store = Store();
    if (!store->isWritable()) throw SettingsError(store->fileName());
    store->setValue(key, TrimBlanks(value));
    // Inside a batch the file is written once, when the batch ends.
    if (BatchDepth() == 0) SyncStore();
    return true;
}

}  // namespace

SettingsBatch::SettingsBatch() {
    ++BatchDepth();
}

SettingsBatch::~SettingsBatch() {
    if (finished_) return;
    // Unwinding already: write what was set, but never throw from here.
    if (--BatchDepth() == 0) Store()->sync();
}

void SettingsBatch::Finish() {
    if (finished_) return;
    finished_ = true;
    if (--BatchDepth() == 0) SyncStore();
}

SettingsError::SettingsError(const QString& where)
    : std::runtime_error(
          QStringLiteral("The settings store %1 cannot be written.").arg(where).toStdString()) {}

void UseSettingsFile(const QString& path) {
    SettingsFilePath() = path;
}

void UseNativeSettings() {
    SettingsFilePath().clear();
}

QString SettingsLocation() {
    const QString& file = SettingsFilePath();
    return file.isEmpty() ? NativeLocation() : file;
}

QString GetSetting(const QString& vendor, const QString& name, const QString& defaultValue) {
    return ReadKey(PlainKey(vendor, name), defaultValue);
}

QString GetSectionSetting(const QString& vendor, const QString& productKey, const QString& section,
                          const QString& name, const QString& defaultValue) {
    return ReadKey(SectionKey(vendor, productKey, section, name), defaultValue);
}

bool SaveSetting(const QString& vendor, const QString& name, const QString& value) {
    return WriteKey(PlainKey(vendor, name), value);
}

bool SaveSectionSetting(const QString& vendor, const QString& productKey, const QString& section,
                        const QString& name, const QString& value) {
    return WriteKey(SectionKey(vendor, productKey, section, name), value);
}

double LeadingNumber(const QString& text, double fallback) {
    // Scans what a number may start with and converts only that part, in the
    // C locale: stored settings always use ".", whatever the user's locale.
    const QString trimmed = TrimBlanks(text);
    qsizetype end = 0;
    const qsizetype size = trimmed.size();
    auto isDigit = [&](qsizetype i) {
        return i < size && trimmed.at(i).isDigit() && trimmed.at(i).unicode() < 128;
    };
    if (end < size && (trimmed.at(end) == u'-' || trimmed.at(end) == u'+')) ++end;
    qsizetype digits = 0;
    while (isDigit(end)) ++end, ++digits;
    if (end < size && trimmed.at(end) == u'.') {
        ++end;
        while (isDigit(end)) ++end, ++digits;
    }
    if (digits == 0) return fallback;
    // An exponent counts only when digits follow it ("2e" is 2).
    if (end < size && (trimmed.at(end) == u'e' || trimmed.at(end) == u'E')) {
        qsizetype exponent = end + 1;
        if (exponent < size && (trimmed.at(exponent) == u'-' || trimmed.at(exponent) == u'+'))
            ++exponent;
        if (isDigit(exponent)) {
            while (isDigit(exponent)) ++exponent;
            end = exponent;
        }
    }
    bool ok = false;
    const double value = trimmed.left(end).toDouble(&ok);
    return ok ? value : fallback;
}

}  // namespace winadmin

#pragma once
// The console's one settings store: per-user strings under
//   Software\<vendor>\<product key>\<section>\<name>
// A setting N under a key K lives as the default value of the subkey K\N, the
// layout the console has always used in the registry, so that existing
// settings are found. On Windows this is HKEY_CURRENT_USER; elsewhere a
// per-user file with the same key paths. Tests point the store at a file of
// their own with UseSettingsFile.

#include <QString>
#include <stdexcept>

namespace winadmin {

inline const QString kVendor = QStringLiteral("Tarnex");

// A write that the store refused (read-only file, denied registry key). The
// message names the store so that the administrator knows what to fix.
class SettingsError : public std::runtime_error {
public:
    explicit SettingsError(const QString& where);
};

// Where the store lives; by default the user's native store.
void UseSettingsFile(const QString& path);
void UseNativeSettings();
// The file or registry root that reads and writes go to, for messages.
QString SettingsLocation();

// Reads are cut to 199 characters (the classic 200-character buffer with its
// terminator) and trimmed; an empty or missing value gives the default.
QString GetSetting(const QString& vendor, const QString& name, const QString& defaultValue);
QString GetSectionSetting(const QString& vendor, const QString& productKey, const QString& section,
                          const QString& name, const QString& defaultValue);
// Writes the trimmed text. Answers true; a store that cannot be written
// throws SettingsError.
bool SaveSetting(const QString& vendor, const QString& name, const QString& value);
bool SaveSectionSetting(const QString& vendor, const QString& productKey, const QString& section,
                        const QString& name, const QString& value);

// Groups many writes into one write of the store (closing the main window
// saves dozens of values). Finish writes and throws SettingsError when the
// store cannot be written; a batch left by an exception writes silently.
class SettingsBatch {
public:
    SettingsBatch();
    ~SettingsBatch();
    SettingsBatch(const SettingsBatch&) = delete;
    SettingsBatch& operator=(const SettingsBatch&) = delete;
    void Finish();

private:
    bool finished_ = false;
};

// The leading number of a stored text ("12abc" gives 12), with "." as the
// decimal point; fallback when the text does not start with a number.
double LeadingNumber(const QString& text, double fallback);

}  // namespace winadmin

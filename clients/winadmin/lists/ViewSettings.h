#pragma once
// Where the console keeps its view settings: section "MainForm" and the
// column-width sections under Software\Tarnex\<product key>. The product key
// follows the brand of the server the console is logged in to, so the two
// brands keep their settings apart.

#include <QString>

namespace winadmin {

inline const QString kMainFormSection = QStringLiteral("MainForm");

// The time-out is kept as a 16-bit number of seconds; 0 would mean no
// deadline at all, which no call may have.
constexpr int kMinServerTimeout = 1;
constexpr int kMaxServerTimeout = 32767;

// "VELDRANO Administrator" for "kelvar", "Quorel Administrator" for "quorel"
// (compared in lower case), otherwise the brand word as the session gave it
// followed by " Administrator".
QString GetProductKeyName();

QString GetMainFormSetting(const QString& name, const QString& defaultValue);
// Throws SettingsError when the store cannot be written.
void SaveMainFormSetting(const QString& name, int value);

// The whole part of the setting's leading number ("12abc" is 12); fallback
// when the text is no number or the number lies outside [low, high].
int ReadMainFormNumber(const QString& name, int fallback, int low, int high);

// "Server Timeout" in seconds; the session's current time-out when nothing
// usable is stored.
int StoredServerTimeout();
// "Severity": the lowest event severity the event views show, 0 by default.
int StoredSeverity();

}  // namespace winadmin

#pragma once
// What every editor does with its fields: key filtering (typed, pasted and
// dropped text alike), the mandatory-field and range checks with their
// messages, combo selection by item data, the display formats of object
// references, the busy pointer, enabling whole pages, and focus that also
// copes with controls on hidden pages.

#include <QString>
#include <QStringList>
#include <optional>

class QComboBox;
class QLineEdit;
class QWidget;

namespace winadmin {

// Which characters a field takes (besides control keys, which always pass).
enum KeyFilter {
    kKeyDigits = 1,         // "0123456789"
    kKeyAnyText = 2,        // anything (the length limit only)
    kKeyNumberForms = 3,    // "0123456789./": dates, versions, dotted numbers
    kKeyDecimal = 4,        // the digits and the user's decimal separator
    kKeyNoParentheses = 5,  // anything but "(" and ")", which the reference format reserves
};

// Whether kind takes the printable character c (kinds outside 1 to 5 take any).
bool KeyFilterAccepts(int kind, QChar c);

// The key handler of a field: keyAscii is the character code of the key (13
// Enter, 8 backspace, printable characters from 32 up; editing keys that the
// platform sends with a character, such as Delete with U+007F, are no typing
// and pass); a refused key comes back as 0.
// For a combo box: a disabled one does nothing; Enter while its list is
// dropped down closes the list and is swallowed. Everything else goes on to
// FilterKey.
void ComboKeyPress(QWidget* control, int kind, int maxLength, int& keyAscii);
// Swallows Enter in a right-aligned text field; refuses (with a beep) a
// printable key that would make the text longer than maxLength while nothing
// is selected, or that the kind does not take. Always answers true.
bool FilterKey(QWidget* control, int kind, int maxLength, int& keyAscii);

// Puts the key filter on a text field or an editable combo box for good: typed
// keys go through ComboKeyPress, and pasted or dropped text is held to the
// same characters and cut at maxLength (0: no limit). A field that is (or
// later becomes) the line edit of a spin box keeps its filter for the keys
// typed while the spin box has the focus.
void InstallKeyFilter(QWidget* field, int kind, int maxLength);

// The index of the first entry whose item data is value; -1 when none is.
int FindItemData(const QComboBox* combo, int value);

// The text a field shows (line edit, combo box, spin box, label).
QString FieldText(const QWidget* control);

// An enabled field whose trimmed text is empty: beep, the message with the
// exclamation icon and the form's caption as title, the focus on the field,
// and true. A disabled field is never empty.
bool IsFieldEmpty(QWidget* control, const QString& message);
// text("Field") + caption without its colon + text("CannotBeEmpty").
QString FieldEmptyMessage(const QString& labelCaption);
// A disabled field passes. Otherwise the text must be a number from..to
// (both included); when it is not: beep, the "ValidRangeForField" message,
// focus on the field, and false.
bool CheckFieldRange(QWidget* control, const QString& labelCaption, double from, double to);

// A number as the administrator types it (the user's decimal separator);
// nothing for a text that is no number.
std::optional<double> ParseDecimal(const QString& text);
// value with exactly decimals places and the user's decimal separator: the
// format "#0.0000" for decimals 4.
QString FormatDecimal(double value, int decimals);
// "1..99".
QString FormatRange(double from, double to);
// The text that stands for no object: no user, no printer, no host.
QString NoneText();
// The "(None)" text when there is no user, else user@host.
QString FormatUserAtHost(const QString& user, const QString& host);
// The "(None)" text when there is no user, else display name (user@host).
QString FormatUserRef(const QString& displayName, const QString& user, const QString& host);
// The "(None)" text when there is no object (no name), else name (second).
QString FormatNamed(const QString& name, const QString& second);
// A user reference given as its parts {user, host}: "(user@host)", and ""
// when there is none (no parts, or both empty), so that it can follow
// a name as it is.
QString ParenthesizedUserAtHost(const QStringList& userAndHost);
// The same, but the "(None)" text when there is no reference.
QString ParenthesizedUserAtHostOrNone(const QStringList& userAndHost);
// a (b), or a alone when b is blank.
QString AppendParenthesized(const QString& a, const QString& b);
// The text between the last "(" and the ")" after it: user@host out of
// "Name (user@host)". "" for an empty text, the "(None)" text or a text
// without ")".
QString ExtractParenthesized(const QString& s);
// The part before the first NUL.
QString CutAtNul(const QString& s);

// The hourglass pointer, and back. Every BeginBusy needs its EndBusy; the
// guard below pairs them on every path.
void BeginBusy();
void EndBusy();
class BusyPointer {
public:
    BusyPointer() { BeginBusy(); }
    ~BusyPointer() { EndBusy(); }
    BusyPointer(const BusyPointer&) = delete;
    BusyPointer& operator=(const BusyPointer&) = delete;
};

// Enables or disables a page (or frame) and every control on it; text fields
// that end up enabled and editable get the window colour, all others the
// button-face colour, so read-only fields look grey.
void DisableContainer(QWidget* container);
void EnableContainer(QWidget* container);
void SetContainerEnabled(QWidget* container, bool enabled);
// A key field: locked (read-only, button-face colour) once its object is
// loaded, open (window colour) while a key may be typed.
void SetFieldLocked(QLineEdit* field, bool locked);

// Focuses the control and selects its text, when it and its parent are
// enabled and visible; a control on a hidden or disabled page is left alone.
void CTRLSetFocus(QWidget* control);
void SelectAllText(QWidget* control);

}  // namespace winadmin

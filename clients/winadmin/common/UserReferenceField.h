#pragma once
// A field that holds a reference to a user of some server: it shows user@host,
// or the "(None)" text when no user is chosen, and its chooser button (inside
// the field, at its end) opens the user selection dialog to choose another.
//
// The dialog is reached through a hook, because it lives with the editors
// that use this field: whoever builds it registers one opener at start-up.
// The exchange goes through the form-parameter list: the field puts in
// ("HostName", host) and ("UserName", user) of the current choice, the opener
// shows the dialog modally, and a confirmed choice comes back as
// ("Refresh", "-1") followed by the chosen ("HostName", ...) and
// ("UserName", ...); without a chosen user the field shows "(None)".

#include <QLineEdit>

class QToolButton;

namespace winadmin {

// Shows the user selection dialog modally over parent.
using UserSelectionOpener = void (*)(QWidget* parent);
// Registers the opener (nullptr takes it away). Choosers shown without one
// are disabled.
void SetUserSelectionOpener(UserSelectionOpener opener);
UserSelectionOpener TheUserSelectionOpener();

struct UserReference {
    QString user;
    QString host;
    bool IsNone() const { return user.isEmpty() && host.isEmpty(); }
    friend bool operator==(const UserReference&, const UserReference&) = default;
};

// The text of the field is the reference, so that the field helpers
// (FieldText, IsFieldEmpty, clear()) and an editable field (setReadOnly(false),
// for references typed as user@host) see what Value() answers. It is
// read-only unless made editable.
class UserReferenceField : public QLineEdit {
    Q_OBJECT

public:
    explicit UserReferenceField(QWidget* parent = nullptr);

    // The reference shown: none for an empty text or the "(None)" text;
    // otherwise the text split at its last "@" (a text without "@" is a user
    // name without host).
    UserReference Value() const;
    // Shows user@host, or "(None)" when both are empty. Does not signal:
    // loading a value is no change.
    void SetValue(const QString& user, const QString& host);
    void SetValue(const UserReference& reference) { SetValue(reference.user, reference.host); }
    // Shows "(None)".
    void Clear();

    // Whether the selection dialog offers "(None)" (the default); a field
    // that must name a user asks with ("NoneAllowed", "0").
    void SetNoneAllowed(bool allowed) { noneAllowed_ = allowed; }

    QToolButton* Chooser() const { return chooser_; }
    // What the chooser button does: asks the selection dialog for a user.
    // Answers true when a choice was confirmed (and shown).
    bool Choose();

signals:
    // The administrator confirmed a choice in the selection dialog, even the
    // user shown before; the editor counts that as a change.
    void ValueChanged();

protected:
    void showEvent(QShowEvent* event) override;
    void resizeEvent(QResizeEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void PlaceChooser();
    void UpdateChooser();

    QToolButton* chooser_;
    bool noneAllowed_ = true;
};

}  // namespace winadmin

#pragma once
// Drives a dialog through its named controls as a person does: typing into
// fields, clicking buttons and list rows, reading the answer it leaves.

#include <QLineEdit>
#include <QStringList>

#include "common/FormParameters.h"
#include "support/ConsoleFixture.h"

namespace winadmin {

class ListModel;

class EditorDriver {
public:
    // A window that is already shown.
    explicit EditorDriver(QWidget& window) : window_(window) {}

    template <class W = QLineEdit>
    W* Field(const char* name) const {
        return Child<W>(window_, name);
    }
    bool Enabled(const char* control) const { return Field<QWidget>(control)->isEnabled(); }
    void Type(const char* field, const QString& text) { Retype(Field(field), text); }
    void Key(const char* field, Qt::Key key);
    void Click(const char* button);
    // Sets a control as a person does, its page brought to the front first:
    // types into a text field, picks a list entry by its text, presses Space
    // on a box or option whose state is to change. assignment: "name=value".
    void Set(const QString& assignment);
    // What a control shows, as Set takes it: its text, or "1" for a checked
    // box or option and "0" for one that is not.
    static QString Shown(const QWidget* control);

    // A list view's rows and their first column.
    const ListModel& List(const char* list) const;
    QStringList Names(const char* list) const;
    // Clicks the rows with these names, the first plainly, the others with Ctrl.
    void Select(const char* list, const QStringList& names, bool doubleClick = false);

    // Presses OK. With no message the dialog must close; with one it must
    // stay, refuse with that message, and have the focus on the control
    // named (or on the spin box around it) when one is named.
    void ExpectOK(ScriptedPrompter& prompter, const QString& message, const QString& focus = {});

    // The "Refresh" answer a closed dialog leaves.
    static QString Answer() { return FormParameterValue(QStringLiteral("Refresh")); }

    // Shows the window with the request and waits out its start-up tick.
    void Show(const FormParameterList& request);

private:
    QWidget& window_;
};

// Types both entries into the password dialog once it shows and presses OK
// (or Cancel when cancel is set); a dialog a mismatch keeps open is closed.
void WhenAskedForPassword(const QString& entry, const QString& confirmation, bool cancel = false);

// The message of an empty mandatory field, as the English labels make it.
QString EmptyMessage(const char* field);

template <class Dialog>
struct DialogHolder {
    Dialog dialog;
};

// A dialog of its own, shown with a request and past its start-up tick.
template <class Dialog>
struct ShownEditor : DialogHolder<Dialog>, EditorDriver {
    explicit ShownEditor(const FormParameterList& request) : EditorDriver(this->dialog) {
        Show(request);
    }
    using DialogHolder<Dialog>::dialog;
};

}  // namespace winadmin

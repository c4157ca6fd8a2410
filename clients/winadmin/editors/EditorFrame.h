#pragma once
// The frame of every properties dialog. The explorer hands a dialog a request
// through the form-parameter list (a key, a position, or "New"); the dialog
// loads a moment after it shows, tracks whether the object is new and whether
// it was changed, validates and commits through the session, and answers
// whether anything was saved (("Refresh", "-1"), followed by ("SavedKey", the
// key shown last) for a keyed object, so that the explorer can select it). The lifecycle is all
// here; an editor supplies its form, its bindings and its calls (RecordEditor.h).
//
// The dialog holds the identity of its object and its own copy of the
// record, never a pointer into the explorer. A save works on a copy: the kept
// record changes only once the server accepted the commit, so a failed or
// declined save leaves the dialog exactly as it was and the next attempt asks
// every question again.

#include <QDialog>
#include <QString>

#include "common/FieldHelpers.h"
#include "common/Prompter.h"

class QAbstractButton;
class QLabel;
class QLineEdit;
class QTimer;

namespace winadmin {

enum class EditorState : int16_t {
    Empty = 0,      // no object: key field cleared, details disabled
    Shown = 1,      // an existing object, unchanged since it was loaded
    Changed = 2,    // an existing object, edited
    NewKey = 3,     // a new object: only its key may be typed
    NewObject = 4,  // the new object's details being filled in (counts as modified)
};

// What the confirmations before a save decided.
enum class Confirmation {
    Proceed,       // write and commit
    Stay,          // write nothing, the dialog stays open with the edits
    CloseUnsaved,  // write nothing and close the dialog
};

// What a fetch by identity found.
enum class Lookup {
    Exists,        // a stored object; its record is kept
    NoSuchObject,  // nothing stored under it; the kept record holds the defaults
};

// What a commit answers: the new version, and the position of objects that
// are addressed by their place in a list.
struct Committed {
    int64_t version = 0;
    int index = 0;
};

class EditorFrame : public QDialog {
    Q_OBJECT

public:
    enum Action { Insert = 1, Update = 2, Delete = 3 };

    EditorState State() const { return state_; }
    // -1 once any apply succeeded while the dialog was open, else 0.
    int16_t Saved() const { return saved_; }

    void accept() override;  // OK
    void reject() override;  // Cancel, the close box, Escape

protected:
    // How a dialog names its object.
    enum class Identity {
        Key,       // a typed key field; "New" starts by typing a key
        Position,  // a place in a list; "New" creates at once, without a key
        Single,    // one object of its kind: no key, never new, never deleted
    };
    // What the frame needs to know of the form. The details container (a tab
    // control or a plain frame) is required; the dialog's own Delete button
    // is wired only when given.
    struct Controls {
        Identity identity = Identity::Key;
        QLineEdit* keyField = nullptr;  // Identity::Key only
        QLabel* keyLabel = nullptr;     // its caption names the key in messages
        KeyFilter keyFilter = kKeyNoParentheses;
        int keyMaxLength = 0;
        QWidget* details = nullptr;
        QWidget* firstDetail = nullptr;  // focused when the details open
        QAbstractButton* ok = nullptr;
        QAbstractButton* cancel = nullptr;
        QAbstractButton* remove = nullptr;
        // The anchor of the guide's section that F1 shows.
        const char* helpTopic = "editors";
    };
    // The request pair that opens an existing object ("HostName",
    // "RateModify") and the messages of a missing and of a taken key.
    struct Messages {
        QString requestName = {};
        QString notExist = {};
        QString exists = {};
    };

    explicit EditorFrame(QWidget* parent);
    // Called last by the editor's constructor, once its form is set up and
    // its fields are bound. A form the frame cannot run (no details
    // container, no key field for a keyed editor, a field loaded but never
    // written) throws std::logic_error here rather than misbehave later.
    void SetUpFrame(const Controls& controls, const Messages& messages);

    // Called by every field edit: an existing object becomes Changed.
    bool MarkModified();
    // The trimmed key field; the position of a positioned object (0 while
    // it is not stored yet).
    QString Key() const;
    int Index() const { return index_; }
    bool IsLoading() const { return loading_; }
    // Runs write while the dialog itself fills its fields.
    template <class Write>
    void Loading(Write&& write) {
        const bool was = loading_;
        loading_ = true;
        write();
        loading_ = was;
    }
    // Keeps the typed key (selected) instead of clearing it when the dialog
    // goes back to NewKey or Empty.
    void SetKeepKey(bool keep) { keepKey_ = keep; }
    // The field that takes the focus when the details open, where it
    // depends on the record (a key typed only for a new object).
    void SetFirstDetail(QWidget* field) { controls_.firstDetail = field; }

    // Changes of the field mark the dialog changed.
    void WatchField(QWidget* field);

    // Fetches the object again and shows what the server holds, after the
    // editor wrote something of it on its own (a device's lines, say). A new
    // object stays new; an existing one is shown unchanged.
    bool ReloadRecord();
    // Something was written to the server outside a save: the caller's
    // list is refreshed when the dialog closes.
    void NoteSaved() { saved_ = -1; }

    // The exclamation message by key, titled with the dialog's caption; the
    // focus goes to the field (its page brought to the front). Answers false
    // so that a check can end with it.
    bool Warn(const QString& key, QWidget* focus = nullptr);
    // A Yes/No question by key; answers whether Yes was given.
    bool AskYesNo(const QString& key, PromptIcon icon, bool noIsDefault);

    // For the editor of a server's objects (users, printers, devices): names
    // the server in the caption and answers whether it is there, after
    // "ServerNotExist" when it is not (or when the request names none).
    bool FindOwningServer(const QString& host, const QString& captionKey);
    // For the editor of a zone's rates or destinations: the zone at the
    // request's place ("ZoneIndex"), named in the caption; "" after
    // "ZoneNotExist" when there is none.
    QString FindOwningZone(const QString& captionKey);

    // The name that the delete question quotes.
    virtual QString ObjectName() const { return Key(); }
    // Checks what the editor declared; throws std::logic_error.
    virtual void FinishSetUp() {}

    // --- What every editor supplies --------------------------------------
    // Fills the lists that do not depend on the object.
    virtual void FillFixedLists() {}
    // Reads the request's context pairs; false refuses the request (the
    // editor has said why) and the dialog closes answering "0".
    virtual bool ReadRequest() { return true; }
    virtual void ClearFields() = 0;
    virtual void LoadFields() = 0;
    virtual bool ValidateFields() = 0;
    virtual void EnableRules() {}
    // Asked after validation and before anything is written.
    virtual Confirmation ConfirmSave(Action) { return Confirmation::Proceed; }
    // Asked after a save that would close the dialog: true keeps it open
    // (the editor holds edits that this save did not write, and shows them).
    virtual bool KeepOpenAfterSave() { return false; }
    // Fetches the object that Key() or Index() names and keeps its record.
    // Throws SessionError.
    virtual Lookup FetchRecord() = 0;
    virtual void ReleaseRecord() = 0;
    // Writes the fields into a copy of the kept record; false stops the save.
    virtual bool WriteFields() = 0;
    // Commits the copy (insert, update) or deletes the kept object. Throws
    // SessionError.
    virtual Committed CommitRecord(Action action) = 0;
    // The server took the commit: the copy becomes the kept record.
    virtual void AcceptCommit(const Committed& committed) = 0;

    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    friend class EditorFrameProbe;  // the tests' view of the lifecycle

    enum class SaveResult { Saved, KeptOpen, Failed, ClosedUnsaved };

    void StartUp();
    void SetEditorState(EditorState state);
    bool LoadByIdentity();
    bool FindExisting();
    bool AcceptNewKey();
    bool CreateAtOnce();
    bool ApplyAction(Action action, Confirmation* confirmation = nullptr);
    SaveResult SaveIfModified();
    bool AskSaveChanges();
    bool DeleteObject();
    void PressOK();
    void Unload(int result);
    void TranslateTabs();

    Controls controls_;
    Messages messages_;
    QTimer* timStartUp_;
    EditorState state_ = EditorState::Empty;
    int index_ = 0;
    int16_t saved_ = 0;
    bool loading_ = false;
    bool keepKey_ = false;
    bool activated_ = false;
    bool closing_ = false;
};

// Opens an editor modally for the request in the form-parameter list; the
// answer is left there when it closes.
template <class Editor>
void OpenEditor(QWidget* parent) {
    Editor editor(parent);
    editor.exec();
}

}  // namespace winadmin

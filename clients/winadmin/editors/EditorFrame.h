#pragma once
// The frame of every properties dialog. The explorer hands a dialog a key, or
// asks for a new object, through the form-parameter list; the dialog loads a
// moment after it shows, tracks whether the object is new and whether it was
// changed, validates and commits through the session, and answers whether
// anything was saved. An editor supplies only its fields, its checks and its
// calls (the virtual functions below); the lifecycle is all here.
//
// The dialog holds the key and its own copy of the record, never a pointer
// into the explorer. A failing call goes to the common error dialog and
// leaves the dialog open and as it was.

#include <QDialog>
#include <QString>
#include <functional>

class QAbstractButton;
class QLabel;
class QLineEdit;
class QTabWidget;
class QTimer;

namespace winadmin {

enum class EditorState : int16_t {
    Empty = 0,      // no object: key field cleared, details disabled
    Shown = 1,      // an existing object, unchanged since it was loaded
    Changed = 2,    // an existing object, edited
    NewKey = 3,     // a new object: only its key may be typed
    NewObject = 4,  // the new key is accepted; details being filled (counts as modified)
};

class EditorFrame : public QDialog {
    Q_OBJECT

public:
    enum Action { Insert = 1, Update = 2, Delete = 3 };

    EditorState State() const { return state_; }
    // -1 once any apply succeeded while the dialog was open, else 0.
    int16_t Saved() const { return saved_; }
    bool IsLoading() const { return loading_; }

    void SetEditorState(EditorState state);
    bool LoadByKey();
    bool FindExisting();
    bool AcceptNewKey();
    bool MarkModified();
    bool ApplyAction(int action);
    bool SaveIfModified();
    bool AskSaveChanges();
    bool DeleteObject();

    // The buttons: OK saves what is modified and closes; Cancel closes,
    // asking first about unsaved changes.
    void PressOK();

    void accept() override;
    void reject() override;

protected:
    // What the frame needs to know of the editor's form. The details page
    // and the buttons are found by their names (tabDetails, cmdOK, cmdCancel,
    // cmdDelete) unless given.
    struct Controls {
        QLineEdit* keyField = nullptr;
        QLabel* keyLabel = nullptr;      // its caption names the field in messages
        QWidget* firstDetail = nullptr;  // focused when the details open
        int keyFilter = 5;               // key filter kind of the key field
        int keyMaxLength = 0;
        QTabWidget* details = nullptr;
        QAbstractButton* ok = nullptr;
        QAbstractButton* cancel = nullptr;
        QAbstractButton* remove = nullptr;  // the dialog's Delete, optional
    };
    // The request pair that opens an existing object ("HostName") and the
    // messages of a missing and of a taken key ("ServerNotExist", "ServerExist").
    struct Messages {
        QString keyName;
        QString notExist;
        QString exists;
    };
    explicit EditorFrame(QWidget* parent);
    // Called by the editor's constructor once its form is set up.
    void SetUpFrame(const Controls& controls, const Messages& messages);

    // Changes in these fields mark the dialog changed (unless it is loading).
    void WatchFields(std::initializer_list<QWidget*> fields);
    // Runs write while the fields are being filled by the dialog itself.
    template <class Write>
    void Loading(Write&& write) {
        const bool was = loading_;
        loading_ = true;
        write();
        loading_ = was;
    }
    QString Key() const;
    // Keeps the typed key (selected) instead of clearing it when the dialog
    // goes back to NewKey or Empty.
    void SetKeepKey(bool keep) { keepKey_ = keep; }

    // --- What every editor supplies ------------------------------------------
    // Fills the fixed lists (combo entries that do not depend on the object).
    virtual void FillFixedLists() {}
    // Reads the request beyond its first pair (context such as a gateway).
    virtual void ReadRequest() {}
    virtual void ClearFields() = 0;
    virtual void LoadFields() = 0;
    virtual bool WriteFields() = 0;
    virtual bool ValidateFields() = 0;
    virtual void EnableRules() {}
    // Confirmations before an update writes anything; false declines.
    virtual bool ConfirmUpdate() { return true; }
    // Fetches the object with this key and keeps its record; answers whether
    // the key names no stored object (the record then holds defaults).
    // Throws SessionError.
    virtual bool FetchObject(const QString& key) = 0;
    virtual void ReleaseObject() = 0;
    // Commits the kept record (insert or update) or deletes the object.
    // Throws SessionError.
    virtual void CommitObject(int action) = 0;

    void showEvent(QShowEvent* event) override;
    bool eventFilter(QObject* watched, QEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    void StartUp();
    void Unload(int result);
    void TranslateTabs();

    Controls controls_;
    Messages messages_;
    QTimer* timStartUp_;
    EditorState state_ = EditorState::Empty;
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

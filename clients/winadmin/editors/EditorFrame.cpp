#include "editors/EditorFrame.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>

#include "common/FieldHelpers.h"
#include "common/Labels.h"
#include "common/Prompter.h"
#include "editors/FormParameters.h"
#include "session/CallSession.h"

namespace winadmin {

namespace {

constexpr char kDesignCaption[] = "designCaption";

bool IsModified(EditorState state) {
    return state == EditorState::Changed || state == EditorState::NewObject;
}

}  // namespace

EditorFrame::EditorFrame(QWidget* parent) : QDialog(parent), timStartUp_(new QTimer(this)) {
    timStartUp_->setObjectName(QStringLiteral("timStartUp"));
    timStartUp_->setSingleShot(true);
    connect(timStartUp_, &QTimer::timeout, this, &EditorFrame::StartUp);
}

void EditorFrame::SetUpFrame(const Controls& controls, const Messages& messages) {
    controls_ = controls;
    messages_ = messages;
    auto named = [this](auto* given, const char* name) {
        using Control = std::remove_pointer_t<decltype(given)>;
        return given ? given : findChild<Control*>(QLatin1String(name));
    };
    controls_.details = named(controls.details, "tabDetails");
    controls_.ok = named(controls.ok, "cmdOK");
    controls_.cancel = named(controls.cancel, "cmdCancel");
    controls_.remove = named(controls.remove, "cmdDelete");
    if (controls_.keyField) {
        InstallKeyFilter(controls_.keyField, controls_.keyFilter, controls_.keyMaxLength);
        // Installed after the key filter so that it sees Enter first.
        controls_.keyField->installEventFilter(this);
    }
    if (controls_.ok) connect(controls_.ok, &QAbstractButton::clicked, this, &EditorFrame::PressOK);
    if (controls_.cancel)
        connect(controls_.cancel, &QAbstractButton::clicked, this, &EditorFrame::reject);
    if (controls_.remove)
        connect(controls_.remove, &QAbstractButton::clicked, this, &EditorFrame::DeleteObject);
}

// The form's load: labels, then the deferred start so that the dialog is
// painted before the server is asked anything.
void EditorFrame::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (activated_) return;
    activated_ = true;
    if (ApplyFormLabels(this)) TranslateTabs();
    saved_ = 0;
    closing_ = false;
    SetEditorState(EditorState::Empty);
    timStartUp_->start(1);
}

void EditorFrame::TranslateTabs() {
    QTabWidget* tabs = controls_.details;
    if (!tabs) return;
    for (int i = 0; i < tabs->count(); ++i) {
        QWidget* page = tabs->widget(i);
        if (!page->property(kDesignCaption).isValid())
            page->setProperty(kDesignCaption, tabs->tabText(i));
        tabs->setTabText(i, GetLabel(page->property(kDesignCaption).toString()));
    }
}

void EditorFrame::StartUp() {
    if (!isVisible()) return;  // closed before the first tick
    FillFixedLists();
    const FormParameter request = FirstFormParameter();
    ReadRequest();
    if (request.name == messages_.keyName && !messages_.keyName.isEmpty()) {
        Loading([&] { controls_.keyField->setText(request.value); });
        LoadByKey();
    } else if (request.name == QLatin1String("New")) {
        SetEditorState(EditorState::NewKey);
    }
}

QString EditorFrame::Key() const {
    return controls_.keyField ? controls_.keyField->text().trimmed() : QString();
}

void EditorFrame::WatchFields(std::initializer_list<QWidget*> fields) {
    for (QWidget* field : fields) {
        if (auto* edit = qobject_cast<QLineEdit*>(field))
            connect(edit, &QLineEdit::textChanged, this, [this] { MarkModified(); });
        else if (auto* button = qobject_cast<QAbstractButton*>(field))
            connect(button, &QAbstractButton::toggled, this, [this] { MarkModified(); });
        else if (auto* combo = qobject_cast<QComboBox*>(field))
            connect(combo, &QComboBox::currentIndexChanged, this, [this] { MarkModified(); });
    }
}

void EditorFrame::SetEditorState(EditorState state) {
    state_ = state;
    QLineEdit* key = controls_.keyField;
    switch (state) {
        case EditorState::Empty:
            loading_ = false;
            ReleaseObject();
            if (!keepKey_ && key) {
                Loading([&] { key->clear(); });
                SetFieldLocked(key, false);
                CTRLSetFocus(key);
            }
            Loading([&] { ClearFields(); });
            DisableContainer(controls_.details);
            break;
        case EditorState::Shown:
            loading_ = false;
            Loading([&] { LoadFields(); });
            SetFieldLocked(key, true);
            EnableContainer(controls_.details);
            Loading([&] { EnableRules(); });
            CTRLSetFocus(controls_.firstDetail);
            break;
        case EditorState::Changed:
            SetFieldLocked(key, true);
            break;
        case EditorState::NewKey:
            if (keepKey_ && key) {
                key->selectAll();
            } else {
                ReleaseObject();
                if (key) Loading([&] { key->clear(); });
                Loading([&] { ClearFields(); });
            }
            SetFieldLocked(key, false);
            CTRLSetFocus(key);
            DisableContainer(controls_.details);
            break;
        case EditorState::NewObject:
            loading_ = false;
            SetFieldLocked(key, true);
            EnableContainer(controls_.details);
            Loading([&] { EnableRules(); });
            CTRLSetFocus(controls_.firstDetail);
            break;
    }
    // While a new key is typed, Enter belongs to the key field and Escape
    // to Cancel.
    if (controls_.ok) controls_.ok->setEnabled(state != EditorState::NewKey);
    if (auto* ok = qobject_cast<QPushButton*>(controls_.ok))
        ok->setDefault(state != EditorState::NewKey);
    if (controls_.remove)
        controls_.remove->setEnabled(state == EditorState::Shown || state == EditorState::Changed);
}

bool EditorFrame::LoadByKey() {
    if (Key().isEmpty()) {
        Prompt prompt;
        prompt.text = GetLabel(QStringLiteral("FillEntrypoint"));
        prompt.title = windowTitle();
        prompt.icon = PromptIcon::Exclamation;
        ThePrompter().Show(prompt);
        CTRLSetFocus(controls_.keyField);
        return false;
    }
    if (!FindExisting()) return false;
    SetEditorState(EditorState::Shown);
    return true;
}

bool EditorFrame::FindExisting() {
    BusyPointer busy;
    const QString key = Key();
    bool isNew = false;
    if (!CallSession([&] { isNew = FetchObject(key); })) return false;
    if (state_ != EditorState::NewKey && isNew) {
        Prompt prompt;
        prompt.text = GetLabel(messages_.notExist);
        prompt.title = windowTitle();
        prompt.icon = PromptIcon::Exclamation;
        ThePrompter().Show(prompt);
        Unload(QDialog::Rejected);
        return false;
    }
    return true;
}

bool EditorFrame::AcceptNewKey() {
    BusyPointer busy;
    const QString caption = controls_.keyLabel ? controls_.keyLabel->text() : QString();
    if (IsFieldEmpty(controls_.keyField, FieldEmptyMessage(caption))) return false;
    bool isNew = false;
    const QString key = Key();
    if (!CallSession([&] { isNew = FetchObject(key); })) return false;
    if (isNew) {
        // Enter again in the (locked) key of a new object must not put the
        // defaults back over what the administrator filled in.
        if (state_ != EditorState::NewObject) Loading([&] { LoadFields(); });
        SetEditorState(EditorState::NewObject);
        return true;
    }
    Prompt question;
    question.text = GetLabel(messages_.exists);
    question.title = windowTitle();
    question.icon = PromptIcon::Question;
    question.buttons = PromptButtons::YesNo;
    if (ThePrompter().Show(question) == Answer::Yes)
        LoadByKey();
    else
        CTRLSetFocus(controls_.keyField);
    return false;
}

bool EditorFrame::MarkModified() {
    if (loading_) return false;
    if (state_ == EditorState::Shown) SetEditorState(EditorState::Changed);
    return true;
}

bool EditorFrame::ApplyAction(int action) {
    if (action == Insert || action == Update) {
        if (!ValidateFields()) return false;
    }
    if (action == Update && !ConfirmUpdate()) return false;
    if (action == Insert || action == Update) {
        if (!WriteFields()) return false;
    }
    if (!CallSession([&] { CommitObject(action); })) return false;
    saved_ = -1;
    return true;
}

bool EditorFrame::SaveIfModified() {
    BusyPointer busy;
    if (!IsModified(state_)) return false;
    const bool applied = ApplyAction(state_ == EditorState::Changed ? Update : Insert);
    if (!applied) return false;
    return LoadByKey();
}

bool EditorFrame::AskSaveChanges() {
    if (!IsModified(state_)) return true;
    Prompt question;
    question.text = GetLabel(QStringLiteral("SaveChanges"));
    question.title = windowTitle();
    question.icon = PromptIcon::Question;
    question.buttons = PromptButtons::YesNoCancel;
    switch (ThePrompter().Show(question)) {
        case Answer::Yes:
            return SaveIfModified();
        case Answer::No:
            return true;
        default:
            return false;
    }
}

bool EditorFrame::DeleteObject() {
    Prompt question;
    question.text = GetLabel(QStringLiteral("QuestionDelete")) + QLatin1Char('\r') +
                    QLatin1Char('\'') + Key() + QLatin1Char('\'');
    question.title = windowTitle();
    question.icon = PromptIcon::Question;
    question.buttons = PromptButtons::YesNo;
    question.defaultButton = 2;
    if (ThePrompter().Show(question) != Answer::Yes) return false;
    BusyPointer busy;
    if (!ApplyAction(Delete)) return false;
    SetEditorState(EditorState::Empty);
    return true;
}

void EditorFrame::PressOK() {
    if (IsModified(state_) && !SaveIfModified()) return;
    accept();
}

void EditorFrame::accept() {
    if (!AskSaveChanges()) return;
    Unload(QDialog::Accepted);
}

void EditorFrame::reject() {
    // Cancel, the close box and Escape all come here.
    if (!AskSaveChanges()) return;
    Unload(QDialog::Rejected);
}

void EditorFrame::Unload(int result) {
    if (closing_) return;
    closing_ = true;
    timStartUp_->stop();
    activated_ = false;
    AnswerRefresh(saved_ != 0);
    QDialog::done(result);
}

bool EditorFrame::eventFilter(QObject* watched, QEvent* event) {
    if (watched == controls_.keyField && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            if (state_ == EditorState::NewKey || state_ == EditorState::NewObject)
                AcceptNewKey();
            else
                LoadByKey();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void EditorFrame::keyPressEvent(QKeyEvent* event) {
    // Escape cancels only while a new key is typed; elsewhere the
    // administrator closes with Cancel or the close box.
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        if (state_ == EditorState::NewKey && controls_.cancel && controls_.cancel->isEnabled())
            controls_.cancel->click();
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

}  // namespace winadmin

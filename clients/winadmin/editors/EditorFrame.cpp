#include "editors/EditorFrame.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTabWidget>
#include <QTimer>
#include <stdexcept>
#include <string>

#include "common/DialogHelp.h"
#include "common/FieldHelpers.h"
#include "common/FormParameters.h"
#include "common/Labels.h"
#include "common/Pages.h"
#include "common/UserReferenceField.h"
#include "lists/ExplorerNodes.h"
#include "session/CallSession.h"
#include "session/ServerSession.h"

namespace winadmin {

namespace {

constexpr char kDesignCaption[] = "designCaption";
const QString kNew = QStringLiteral("New");

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
    const auto refuse = [this](const char* what) {
        throw std::logic_error(std::string(metaObject()->className()) + ": " + what);
    };
    if (!controls_.details) refuse("the form names no details container");
    if (controls_.identity == Identity::Key && !controls_.keyField)
        refuse("a keyed editor names no key field");
    if (!controls_.ok || !controls_.cancel) refuse("the form names no OK or Cancel button");
    FinishSetUp();
    if (QLineEdit* key = controls_.keyField) {
        InstallKeyFilter(key, controls_.keyFilter, controls_.keyMaxLength);
        // Installed after the key filter so that it sees Enter first.
        key->installEventFilter(this);
    }
    InstallHelpKey(this, QString::fromLatin1(controls_.helpTopic));
    if (auto* tabs = qobject_cast<QTabWidget*>(controls_.details)) InstallPageKeys(tabs);
    connect(controls_.ok, &QAbstractButton::clicked, this, &EditorFrame::PressOK);
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
    auto* tabs = qobject_cast<QTabWidget*>(controls_.details);
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
    if (!ReadRequest()) {
        Unload(QDialog::Rejected);
        return;
    }
    const FormParameter request = FirstFormParameter();
    switch (controls_.identity) {
        case Identity::Key:
            if (request.name == messages_.requestName) {
                Loading([&] { controls_.keyField->setText(request.value); });
                LoadByIdentity();
            } else if (request.name == kNew) {
                SetEditorState(EditorState::NewKey);
            }
            break;
        case Identity::Position:
            if (request.name == messages_.requestName) {
                index_ = request.value.toInt();
                LoadByIdentity();
            } else if (request.name == kNew) {
                CreateAtOnce();
            }
            break;
        case Identity::Single:
            LoadByIdentity();
            break;
    }
}

QString EditorFrame::Key() const {
    return controls_.keyField ? controls_.keyField->text().trimmed() : QString();
}

void EditorFrame::WatchField(QWidget* field) {
    // A reference changes by a confirmed choice, or by typing where it may
    // be typed; its text set by loading is no change.
    if (auto* reference = qobject_cast<UserReferenceField*>(field)) {
        connect(reference, &UserReferenceField::ValueChanged, this, &EditorFrame::MarkModified);
        connect(reference, &QLineEdit::textEdited, this, &EditorFrame::MarkModified);
    } else if (auto* edit = qobject_cast<QLineEdit*>(field))
        connect(edit, &QLineEdit::textChanged, this, &EditorFrame::MarkModified);
    else if (auto* button = qobject_cast<QAbstractButton*>(field))
        connect(button, &QAbstractButton::toggled, this, &EditorFrame::MarkModified);
    else if (auto* combo = qobject_cast<QComboBox*>(field))
        connect(combo, &QComboBox::currentIndexChanged, this, &EditorFrame::MarkModified);
    else
        throw std::logic_error(std::string(metaObject()->className()) +
                               ": no change signal to watch on " +
                               (field ? field->objectName().toStdString() : "a missing field"));
}

bool EditorFrame::Warn(const QString& key, QWidget* focus) {
    Prompt prompt;
    prompt.text = GetLabel(key);
    prompt.title = windowTitle();
    prompt.icon = PromptIcon::Exclamation;
    ThePrompter().Show(prompt);
    if (focus) {
        ShowPageOf(focus);
        CTRLSetFocus(focus);
    }
    return false;
}

bool EditorFrame::AskYesNo(const QString& key, PromptIcon icon, bool noIsDefault) {
    Prompt question;
    question.text = GetLabel(key);
    question.title = windowTitle();
    question.icon = icon;
    question.buttons = PromptButtons::YesNo;
    question.defaultButton = noIsDefault ? 2 : 1;
    return ThePrompter().Show(question) == Answer::Yes;
}

void EditorFrame::SetEditorState(EditorState state) {
    state_ = state;
    QLineEdit* key = controls_.keyField;
    switch (state) {
        case EditorState::Empty:
            loading_ = false;
            ReleaseRecord();
            if (!keepKey_ && key) {
                Loading([&] { key->clear(); });
                SetFieldLocked(key, false);
                CTRLSetFocus(key);
            }
            Loading([&] { ClearFields(); });
            DisableContainer(controls_.details);
            break;
        case EditorState::Shown:
        case EditorState::NewObject:
            loading_ = false;
            if (state == EditorState::Shown) Loading([&] { LoadFields(); });
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
                ReleaseRecord();
                if (key) Loading([&] { key->clear(); });
                Loading([&] { ClearFields(); });
            }
            SetFieldLocked(key, false);
            CTRLSetFocus(key);
            DisableContainer(controls_.details);
            break;
    }
    // While a new key is typed, Enter belongs to the key field and Escape
    // to Cancel.
    controls_.ok->setEnabled(state != EditorState::NewKey);
    if (auto* ok = qobject_cast<QPushButton*>(controls_.ok))
        ok->setDefault(state != EditorState::NewKey);
    if (controls_.remove)
        controls_.remove->setEnabled(
            controls_.identity != Identity::Single &&
            (state == EditorState::Shown || state == EditorState::Changed));
}

bool EditorFrame::LoadByIdentity() {
    if (controls_.identity == Identity::Key && Key().isEmpty()) {
        Warn(QStringLiteral("FillEntrypoint"), controls_.keyField);
        return false;
    }
    if (!FindExisting()) return false;
    SetEditorState(EditorState::Shown);
    return true;
}

bool EditorFrame::FindExisting() {
    BusyPointer busy;
    Lookup found = Lookup::NoSuchObject;
    if (!CallSession([&] { found = FetchRecord(); })) return false;
    if (found == Lookup::Exists || state_ == EditorState::NewKey) return true;
    Warn(messages_.notExist);
    Unload(QDialog::Rejected);
    return false;
}

bool EditorFrame::AcceptNewKey() {
    BusyPointer busy;
    const QString caption = controls_.keyLabel ? controls_.keyLabel->text() : QString();
    if (IsFieldEmpty(controls_.keyField, FieldEmptyMessage(caption))) return false;
    Lookup found = Lookup::Exists;
    if (!CallSession([&] { found = FetchRecord(); })) return false;
    if (found == Lookup::NoSuchObject) {
        // Enter again in the (locked) key of a new object must not put the
        // defaults back over what the administrator filled in.
        if (state_ != EditorState::NewObject) Loading([&] { LoadFields(); });
        SetEditorState(EditorState::NewObject);
        return true;
    }
    if (AskYesNo(messages_.exists, PromptIcon::Question, false))
        LoadByIdentity();
    else
        CTRLSetFocus(controls_.keyField);
    return false;
}

bool EditorFrame::CreateAtOnce() {
    BusyPointer busy;
    index_ = 0;
    if (!CallSession([&] { FetchRecord(); })) return false;
    Loading([&] { LoadFields(); });
    SetEditorState(EditorState::NewObject);
    return true;
}

bool EditorFrame::FindOwningServer(const QString& host, const QString& captionKey) {
    setWindowTitle(AppendParenthesized(GetLabel(captionKey), host));
    ServerRecord server;
    if (!host.isEmpty() && !CallSession([&] { server = TheSession()->GetServer(host); }))
        return false;
    if (!host.isEmpty() && !server.is_new()) return true;
    Warn(QStringLiteral("ServerNotExist"));
    return false;
}

QString EditorFrame::FindOwningZone(const QString& captionKey) {
    const int place = FormParameterValue(QStringLiteral("ZoneIndex")).toInt();
    QString zone;
    if (!CallSession([&] {
            const ZoneListRecord zones = TheSession()->Zones();
            if (const ZoneRecord* found = ZoneAtPlace(zones, place)) zone = Text(found->name());
        }))
        return {};
    setWindowTitle(AppendParenthesized(GetLabel(captionKey), zone));
    if (zone.isEmpty()) Warn(QStringLiteral("ZoneNotExist"));
    return zone;
}

bool EditorFrame::MarkModified() {
    if (loading_) return false;
    if (state_ == EditorState::Shown) SetEditorState(EditorState::Changed);
    return true;
}

bool EditorFrame::ApplyAction(Action action, Confirmation* confirmation) {
    if (action != Delete) {
        if (!ValidateFields()) return false;
        const Confirmation decided = ConfirmSave(action);
        if (confirmation) *confirmation = decided;
        if (decided != Confirmation::Proceed) return false;
        if (!WriteFields()) return false;
    }
    Committed committed;
    if (!CallSession([&] { committed = CommitRecord(action); })) return false;
    AcceptCommit(committed);
    // A record kept by its place is shown again from where it stands now: a
    // new one at the end, a saved one perhaps moved up by another console's
    // delete.
    if (controls_.identity == Identity::Position && action != Delete && committed.index)
        index_ = committed.index;
    saved_ = -1;
    return true;
}

EditorFrame::SaveResult EditorFrame::SaveIfModified() {
    BusyPointer busy;
    if (!IsModified(state_)) return SaveResult::Failed;
    Confirmation confirmation = Confirmation::Proceed;
    if (!ApplyAction(state_ == EditorState::Changed ? Update : Insert, &confirmation))
        return confirmation == Confirmation::CloseUnsaved ? SaveResult::ClosedUnsaved
                                                          : SaveResult::Failed;
    // Show what the server stored, back in Shown.
    if (!LoadByIdentity()) return SaveResult::Failed;
    return KeepOpenAfterSave() ? SaveResult::KeptOpen : SaveResult::Saved;
}

bool EditorFrame::ReloadRecord() {
    if (state_ != EditorState::NewObject) return LoadByIdentity();
    BusyPointer busy;
    if (!CallSession([&] { FetchRecord(); })) return false;
    Loading([&] {
        LoadFields();
        EnableRules();
    });
    return true;
}

bool EditorFrame::AskSaveChanges() {
    if (!IsModified(state_)) return true;
    Prompt question;
    question.text = GetLabel(QStringLiteral("SaveChanges"));
    question.title = windowTitle();
    question.icon = PromptIcon::Question;
    question.buttons = PromptButtons::YesNoCancel;
    switch (ThePrompter().Show(question)) {
        case Answer::Yes: {
            const SaveResult result = SaveIfModified();
            return result == SaveResult::Saved || result == SaveResult::ClosedUnsaved;
        }
        case Answer::No:
            return true;
        default:
            return false;
    }
}

bool EditorFrame::DeleteObject() {
    if (controls_.identity == Identity::Single) return false;
    Prompt question;
    question.text = GetLabel(QStringLiteral("QuestionDelete")) + QLatin1Char('\r') +
                    QLatin1Char('\'') + ObjectName() + QLatin1Char('\'');
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
    if (IsModified(state_)) {
        switch (SaveIfModified()) {
            case SaveResult::Failed:
            case SaveResult::KeptOpen:
                return;
            case SaveResult::ClosedUnsaved:
                Unload(QDialog::Rejected);
                return;
            case SaveResult::Saved:
                break;
        }
    }
    accept();
}

void EditorFrame::accept() {
    if (!AskSaveChanges()) return;
    Unload(QDialog::Accepted);
}

void EditorFrame::reject() {
    if (!AskSaveChanges()) return;
    Unload(QDialog::Rejected);
}

void EditorFrame::Unload(int result) {
    if (closing_) return;
    closing_ = true;
    timStartUp_->stop();
    activated_ = false;
    AnswerRefresh(saved_ != 0);
    // The explorer selects the saved object's row by the key shown last.
    if (saved_ != 0 && controls_.identity == Identity::Key && !Key().isEmpty())
        FormParameters().append({QStringLiteral("SavedKey"), Key()});
    QDialog::done(result);
}

bool EditorFrame::eventFilter(QObject* watched, QEvent* event) {
    if (watched == controls_.keyField && event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            if (state_ == EditorState::NewKey || state_ == EditorState::NewObject)
                AcceptNewKey();
            else
                LoadByIdentity();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void EditorFrame::keyPressEvent(QKeyEvent* event) {
    // Escape cancels only while a new key is typed; elsewhere the
    // administrator closes with Cancel or the close box.
    if (event->key() == Qt::Key_Escape && event->modifiers() == Qt::NoModifier) {
        if (state_ == EditorState::NewKey && controls_.cancel->isEnabled())
            controls_.cancel->click();
        event->accept();
        return;
    }
    QDialog::keyPressEvent(event);
}

}  // namespace winadmin

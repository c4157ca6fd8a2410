#include "editors/frmDeviceDetails.h"

#include "common/FieldHelpers.h"
#include "common/FormParameters.h"
#include "common/Labels.h"
#include "common/Prompter.h"
#include "editors/DeviceLines.h"
#include "editors/frmServerSelection.h"
#include "session/CallSession.h"
#include "session/ServerSession.h"
#include "ui_frmDeviceDetails.h"

namespace winadmin {

namespace {

bool SameSettings(const LineSettingsRecord& a, const LineSettingsRecord& b) {
    return a.SerializeAsString() == b.SerializeAsString();
}

}  // namespace

frmDeviceDetails::frmDeviceDetails(QWidget* parent)
    : RecordEditor(parent), ui(std::make_unique<Ui::frmDeviceDetails>()) {
    ui->setupUi(this);
    // Line names such as "1 B-channel (primary)" are shown whole.
    ui->cboLine->setSizeAdjustPolicy(QComboBox::AdjustToContents);
    ui->updMaxLines->Bind(ui->edtMaxLines, 1, 1);
    // A button without a caption of its own says what it does.
    ui->cmdUserServer->setToolTip(GetLabel(QStringLiteral("Select Server")));
    ui->cmdUserServer->setAccessibleName(ui->cmdUserServer->toolTip());
    BindFields();
    SetUpFrame({.keyField = ui->edtDeviceName,
                .keyLabel = ui->lblDeviceName,
                .keyFilter = kKeyNoParentheses,
                .keyMaxLength = kDeviceNameLength,
                .details = ui->tabDetails,
                .firstDetail = ui->edtComment,
                .ok = ui->cmdOK,
                .cancel = ui->cmdCancel,
                .helpTopic = "devices"},
               {QStringLiteral("DeviceName"), QStringLiteral("DeviceNotExist"),
                QStringLiteral("DeviceAlreadyExist")});

    connect(ui->cboDeviceType, &QComboBox::currentIndexChanged, this,
            &frmDeviceDetails::TypeChanged);
    connect(ui->cboLine, &QComboBox::currentIndexChanged, this, &frmDeviceDetails::LineSelected);
    connect(ui->cmdDelete, &QAbstractButton::clicked, this, &frmDeviceDetails::DeleteLine);
    connect(ui->cmdUserServer, &QAbstractButton::clicked, this,
            &frmDeviceDetails::ChooseUserServer);
    // The check boxes that govern other fields apply their rules at once.
    for (QAbstractButton* box : {ui->chkEnableFax, ui->chkEnableDID, ui->chkEnableVoice})
        connect(box, &QAbstractButton::toggled, this, [this] {
            if (!IsLoading()) CheckBoxRules();
        });
    connect(ui->edtScannerUser, &UserReferenceField::ValueChanged, this,
            &frmDeviceDetails::CheckBoxRules);
}

frmDeviceDetails::~frmDeviceDetails() = default;

void frmDeviceDetails::FillFixedLists() {
    Loading([&] {
        ui->cboDeviceType->clear();
        for (const DeviceTypeRecord& type : types_)
            ui->cboDeviceType->addItem(Text(type.name()), type.id());
        ui->cboDeviceType->setCurrentIndex(-1);
    });
}

bool frmDeviceDetails::ReadRequest() {
    // The name is a key only within its server, which the caption names.
    const FormParameter server = FormParameters().value(1);
    host_ = server.name == QLatin1String("HostName") ? server.value : QString();
    if (!FindOwningServer(host_, QStringLiteral("Device details"))) return false;
    if (!CallSession([&] { types_ = TheSession()->DeviceTypes(); })) return false;
    FillFixedLists();
    return true;
}

const DeviceTypeRecord* frmDeviceDetails::TypeShown() const {
    const int id = SelectedType();
    for (const DeviceTypeRecord& type : types_)
        if (type.id() == id) return &type;
    return nullptr;
}

int frmDeviceDetails::SelectedType() const {
    return ui->cboDeviceType->currentIndex() < 0 ? 0 : ui->cboDeviceType->currentData().toInt();
}

void frmDeviceDetails::SelectType(int type) {
    Loading([&] { ui->cboDeviceType->setCurrentIndex(FindItemData(ui->cboDeviceType, type)); });
}

DeviceRecord frmDeviceDetails::Fetch() {
    // Every load shows the primary line. A device not stored yet comes as
    // the server makes one of the type chosen.
    line_ = 1;
    return TheSession()->GetDevice(host_, Key(), SelectedType());
}

void frmDeviceDetails::LoadMore() {
    Loading([&] {
        ui->cboLine->clear();
        for (const std::string& name : Kept().line_names()) ui->cboLine->addItem(Text(name));
        ui->cboLine->setCurrentIndex(ui->cboLine->count() > 0 ? 0 : -1);
    });
    typeShown_ = Kept().type();
    FitLinesSpin();
    // Edits of the primary line that a save of another line left alone.
    if (const auto kept = edits_.find(1); kept != edits_.end()) {
        DeviceRecord shown = Kept();
        *shown.mutable_primary() = kept->second;
        ShowFields(shown);
    }
}

void frmDeviceDetails::FitLinesSpin() {
    const DeviceTypeRecord* type = TypeShown();
    const QString shown = ui->edtMaxLines->text();
    ui->updMaxLines->Bind(ui->edtMaxLines, 1, type ? std::max(type->max_lines(), 1) : 1);
    Loading([&] { ui->edtMaxLines->setText(shown); });
}

bool frmDeviceDetails::WriteMore() {
    if (CsiPrefixRetired()) MutableLineOf(Edited(), line_)->clear_csi_prefix();
    return true;
}

Confirmation frmDeviceDetails::ConfirmSave(Action) {
    // A device reads its primary line when it starts; a secondary line is
    // saved without asking.
    if (line_ != 1) return Confirmation::Proceed;
    restartChoice_ = frmAskRestartDevice::Ask(this);
    switch (restartChoice_) {
        case DeviceRestartChoice::Save:
        case DeviceRestartChoice::SaveAndRestart:
            return Confirmation::Proceed;
        case DeviceRestartChoice::DontSave:
            return Confirmation::CloseUnsaved;
        case DeviceRestartChoice::Cancel:
            break;
    }
    return Confirmation::Stay;
}

Committed frmDeviceDetails::Commit(Action action) {
    ServerSession& session = *TheSession();
    const QString name = Text(Kept().name());
    if (action == Delete) {
        session.DeleteDevice(host_, name, Kept().version());
        return {};
    }
    if (line_ == 1) {
        const int64_t version = session.CommitDevice(Edited());
        edits_.erase(1);
        // The save stands even when the restart fails; that failure is
        // reported on its own.
        if (restartChoice_ == DeviceRestartChoice::SaveAndRestart) RestartDevice();
        return {version};
    }
    DeviceLineRecord* line = MutableSecondaryLineOf(Edited(), line_);
    line->set_version(session.SaveDeviceLine(host_, name, *line));
    edits_.erase(line_);
    Prompt saved;
    saved.text = GetLabel(QStringLiteral("SelectedLineSaved"));
    saved.title = windowTitle();
    saved.icon = PromptIcon::Information;
    ThePrompter().Show(saved);
    return {Kept().version()};
}

void frmDeviceDetails::RestartDevice() {
    const QString name = Text(Kept().name());
    CallSession([&] {
        TheSession()->StopDevice(host_, name);
        TheSession()->StartDevice(host_, name);
    });
}

bool frmDeviceDetails::KeepOpenAfterSave() {
    if (edits_.empty()) return false;
    // Another line holds edits this save did not write: show them.
    SelectLine(edits_.begin()->first);
    MarkModified();
    return true;
}

void frmDeviceDetails::SelectLine(int number) {
    for (int i = 0; i < ui->cboLine->count(); ++i)
        if (LineNumberOf(ui->cboLine->itemText(i)) == number) ui->cboLine->setCurrentIndex(i);
}

void frmDeviceDetails::LineSelected() {
    if (IsLoading()) return;
    const int number = LineNumberOf(ui->cboLine->currentText());
    if (number <= 0 || number == line_) return;
    KeepLineEdits();
    ShowLine(number);
}

void frmDeviceDetails::KeepLineEdits() {
    DeviceRecord shown = Kept();
    CollectFields(shown);
    const LineSettingsRecord& edited = LineOf(shown, line_);
    if (SameSettings(edited, LineOf(Kept(), line_)))
        edits_.erase(line_);
    else
        edits_[line_] = edited;
}

void frmDeviceDetails::ShowLine(int number) {
    // The header keeps what it shows; the pages show the line.
    DeviceRecord shown = Kept();
    CollectFields(shown);
    line_ = number;
    const auto kept = edits_.find(number);
    *MutableLineOf(shown, number) = kept != edits_.end() ? kept->second : LineOf(Kept(), number);
    ShowFields(shown);
    Loading([&] { EnableRules(); });
}

void frmDeviceDetails::Refresh() {
    if (!ReloadRecord()) return;
    if (!edits_.empty()) KeepOpenAfterSave();
}

void frmDeviceDetails::TypeChanged() {
    if (IsLoading()) return;
    const int type = SelectedType();
    if (type == typeShown_) return;
    switch (State()) {
        case EditorState::Empty:
        case EditorState::NewKey:
            // The type the new device will be made with.
            typeShown_ = type;
            return;
        case EditorState::NewObject:
            // Nothing is stored yet: the server makes the device anew with
            // the type's lines; what was typed on the primary line stays.
            KeepLineEdits();
            typeShown_ = type;
            Refresh();
            return;
        case EditorState::Shown:
        case EditorState::Changed:
            break;
    }
    if (Kept().configured_lines() < 2) {
        typeShown_ = type;
        MarkModified();
        FitLinesSpin();
        Loading([&] { EnableRules(); });
        return;
    }
    // The secondary lines do not fit another type: they go, and the type is
    // stored with their deletion in one commit.
    if (!AskYesNo(QStringLiteral("DeleteSecondaryLines"), PromptIcon::Question, true)) {
        SelectType(typeShown_);
        return;
    }
    KeepLineEdits();
    edits_.erase(edits_.upper_bound(1), edits_.end());
    if (!CallSession([&] {
            TheSession()->ChangeDeviceType(host_, Text(Kept().name()), type, Kept().version());
        })) {
        SelectType(typeShown_);
        return;
    }
    NoteSaved();
    typeShown_ = type;
    Refresh();
}

void frmDeviceDetails::DeleteLine() {
    if (line_ == 1) return;
    const DeviceLineRecord* line = SecondaryLineOf(Kept(), line_);
    if (!line || line->version() == 0) {
        Warn(QStringLiteral("LineNotConfigured"));
        return;
    }
    Prompt question;
    question.text = GetLabel(QStringLiteral("DeleteDeviceLine")) + ui->cboLine->currentText() +
                    QLatin1String(" ?");
    question.title = windowTitle();
    question.icon = PromptIcon::Question;
    question.buttons = PromptButtons::YesNo;
    question.defaultButton = 2;
    if (ThePrompter().Show(question) != Answer::Yes) return;
    KeepLineEdits();
    const int number = line_;
    if (!CallSession([&] { TheSession()->DeleteDeviceLine(host_, Text(Kept().name()), number); }))
        return;
    edits_.erase(number);
    NoteSaved();
    Refresh();
}

void frmDeviceDetails::ChooseUserServer() {
    const QString shown = ui->edtUserServer->text();
    const QString chosen =
        frmServerSelection::Choose(this, shown == NoneText() ? QString() : shown);
    if (!chosen.isEmpty()) ui->edtUserServer->setText(chosen);
}

}  // namespace winadmin

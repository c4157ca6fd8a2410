#include "editors/frmUserDetails.h"

#include <QDir>
#include <QItemSelectionModel>
#include <QSaveFile>
#include <limits>
#include <optional>
#include <utility>

#include "common/FieldHelpers.h"
#include "common/FormParameters.h"
#include "common/Labels.h"
#include "common/Prompter.h"
#include "editors/frmChangePassword.h"
#include "lists/ListModel.h"
#include "session/CallSession.h"
#include "session/ServerSession.h"
#include "ui_frmUserDetails.h"

namespace winadmin {

namespace {

constexpr double kMaxInt32 = std::numeric_limits<int32_t>::max();

bool AnyChecked(std::initializer_list<const QAbstractButton*> boxes) {
    for (const QAbstractButton* box : boxes)
        if (box->isChecked()) return true;
    return false;
}

// "(None)" first, then the server's names; the stored name is the item data.
void FillChoices(QComboBox* combo, const QStringList& names) {
    combo->clear();
    combo->addItem(NoneText(), QString());
    for (const QString& name : names) combo->addItem(name, name);
    combo->setCurrentIndex(-1);
}

ListRow ExtraRow(const QString& name, const QString& value) {
    ListRow row;
    row.cells = QStringList{name, value};
    row.key = name;
    return row;
}

}  // namespace

frmUserDetails::frmUserDetails(QWidget* parent)
    : RecordEditor(parent),
      ui(std::make_unique<Ui::frmUserDetails>()),
      extras_(new ListModel(this)) {
    ui->setupUi(this);
    using U = UserRecord;
    // Declared in the order the checks run; fields without checks where
    // they sit on the pages.
    Bind(ui->edtUserName, ui->lblUserName, false).KeyField().Text(&U::name, &U::set_name);
    Bind(ui->edtComment, ui->lblComment)
        .Filter(kKeyAnyText, kCommentLength)
        .Text(&U::comment, &U::set_comment)
        .Mandatory();
    Bind(ui->edtAdminPriority, ui->lblAdminPriority)
        .Filter(kKeyDigits, 5)
        .Range(1, 32000)
        .Spin(ui->updAdminPriority)
        .Number(&U::admin_priority, &U::set_admin_priority)
        .Mandatory();
    Bind(ui->edtBarCode).Filter(kKeyAnyText, kCodeLength).Text(&U::bar_code, &U::set_bar_code);

    Bind(ui->edtCPI).Filter(kKeyAnyText, kCodeLength).Text(&U::cpi, &U::set_cpi);
    Bind(ui->edtPinCode).Filter(kKeyAnyText, kCodeLength).Text(&U::pin_code, &U::set_pin_code);
    Bind(ui->edtHeadlines)
        .Filter(kKeyAnyText, kLongTextLength)
        .Text(&U::headlines, &U::set_headlines);
    Bind(ui->edtPriority, ui->lblPriority)
        .Filter(kKeyDigits, 3)
        .Range(1, 100)
        .Spin(ui->updPriority)
        .Number(&U::priority, &U::set_priority)
        .Mandatory();
    Bind(ui->edtTSI).Filter(kKeyAnyText, kCodeLength).Text(&U::tsi, &U::set_tsi);

    Bind(ui->cboScanner)
        .Loads([this](const U& user) {
            SelectStored(ui->cboScanner, user.scanner(), "ScannerNotExist");
        })
        .Writes([this](U& user) {
            user.set_scanner(FieldValue(ui->cboScanner->currentData().toString()));
        });
    // The codes behind the options are the server's: 0 normal, 1 fine,
    // 2 halftone.
    const std::pair<QAbstractButton*, int> resolutions[] = {
        {ui->optResolutionNormal, 0}, {ui->optResolutionFine, 1}, {ui->optResolutionHalftone, 2}};
    for (const auto& [option, code] : resolutions) {
        Bind(option)
            .Loads([option, code](const U& user) { option->setChecked(user.resolution() == code); })
            .Writes([option, code](U& user) {
                if (option->isChecked()) user.set_resolution(code);
            });
    }
    Bind(ui->chkKeepCopy).Checked(&U::keep_copy, &U::set_keep_copy);

    Bind(ui->edtSubstitute).Reference(&U::substitute, &U::mutable_substitute);

    Bind(ui->chkMailIfNewReceived).Checked(&U::mail_if_new_received, &U::set_mail_if_new_received);
    Bind(ui->chkMailIfSendFailed).Checked(&U::mail_if_send_failed, &U::set_mail_if_send_failed);
    Bind(ui->chkMailIfSendSucceded)
        .Checked(&U::mail_if_send_succeeded, &U::set_mail_if_send_succeeded);
    Bind(ui->chkPrintIfNewReceived)
        .Checked(&U::print_if_new_received, &U::set_print_if_new_received);
    Bind(ui->chkPrintIfSendFailed).Checked(&U::print_if_send_failed, &U::set_print_if_send_failed);
    Bind(ui->chkPrintIfSendSucceded)
        .Checked(&U::print_if_send_succeeded, &U::set_print_if_send_succeeded);
    Bind(ui->chkLightIfNewReceived)
        .Checked(&U::light_if_new_received, &U::set_light_if_new_received);
    Bind(ui->chkLightIfSendFailed).Checked(&U::light_if_send_failed, &U::set_light_if_send_failed);
    Bind(ui->chkLightIfSendSucceded)
        .Checked(&U::light_if_send_succeeded, &U::set_light_if_send_succeeded);
    Bind(ui->chkVoiceIfNewReceived)
        .Checked(&U::voice_if_new_received, &U::set_voice_if_new_received);
    Bind(ui->chkVoiceIfSendFailed).Checked(&U::voice_if_send_failed, &U::set_voice_if_send_failed);
    Bind(ui->chkVoiceIfSendSucceded)
        .Checked(&U::voice_if_send_succeeded, &U::set_voice_if_send_succeeded);
    // Each action needs where it goes: a mail its address, a print its
    // printer, the light and the voice call the number to signal.
    Bind(ui->edtMailAddress, ui->lblMailAddress)
        .Filter(kKeyAnyText, kLongTextLength)
        .Text(&U::mail_address, &U::set_mail_address)
        .Mandatory([this] {
            return AnyChecked(
                {ui->chkMailIfNewReceived, ui->chkMailIfSendFailed, ui->chkMailIfSendSucceded});
        });
    Bind(ui->cboPrinter)
        .Loads([this](const U& user) {
            SelectStored(ui->cboPrinter, user.printer(), "PrinterNotExist");
        })
        .Writes([this](U& user) {
            user.set_printer(FieldValue(ui->cboPrinter->currentData().toString()));
        });
    Check([this] {
        return !AnyChecked({ui->chkPrintIfNewReceived, ui->chkPrintIfSendFailed,
                            ui->chkPrintIfSendSucceded}) ||
               !ui->cboPrinter->currentData().toString().isEmpty() ||
               Warn(QStringLiteral("PrinterNotChoosed"), ui->cboPrinter);
    });
    Bind(ui->edtPhoneSignalNr, ui->lblPhoneSignalNr)
        .Filter(kKeyAnyText, kCodeLength)
        .Text(&U::phone_signal_nr, &U::set_phone_signal_nr)
        .Mandatory([this] {
            return AnyChecked({ui->chkLightIfNewReceived, ui->chkLightIfSendFailed,
                               ui->chkLightIfSendSucceded, ui->chkVoiceIfNewReceived,
                               ui->chkVoiceIfSendFailed, ui->chkVoiceIfSendSucceded});
        });

    Bind(ui->edtDefault, ui->lblDefault)
        .Filter(kKeyDigits, 10)
        .Range(0, kMaxInt32)
        .Spin(ui->updDefault)
        .Number(&U::background_default, &U::set_background_default)
        .Mandatory();
    QLineEdit* const papers[kPaperCount] = {ui->edtPaper1, ui->edtPaper2, ui->edtPaper3,
                                            ui->edtPaper4, ui->edtPaper5, ui->edtPaper6,
                                            ui->edtPaper7, ui->edtPaper8, ui->edtPaper9};
    QLabel* const paperLabels[kPaperCount] = {ui->lblPaper1, ui->lblPaper2, ui->lblPaper3,
                                              ui->lblPaper4, ui->lblPaper5, ui->lblPaper6,
                                              ui->lblPaper7, ui->lblPaper8, ui->lblPaper9};
    UpDown* const paperSpins[kPaperCount] = {ui->updPaper1, ui->updPaper2, ui->updPaper3,
                                             ui->updPaper4, ui->updPaper5, ui->updPaper6,
                                             ui->updPaper7, ui->updPaper8, ui->updPaper9};
    for (int i = 0; i < kPaperCount; ++i) {
        QLineEdit* paper = papers[i];
        Bind(paper, paperLabels[i])
            .Filter(kKeyDigits, 10)
            .Range(0, kMaxInt32)
            .Spin(paperSpins[i])
            .Loads([paper, i](const U& user) {
                paper->setText(i < user.background_paper_size()
                                   ? QString::number(user.background_paper(i))
                                   : QString());
            })
            .Writes([paper, i](U& user) {
                // The server keeps exactly nine values.
                while (user.background_paper_size() < kPaperCount) user.add_background_paper(0);
                bool ok = false;
                const qlonglong value = paper->text().trimmed().toLongLong(&ok);
                if (ok) user.set_background_paper(i, value);
            })
            .Mandatory();
    }

    SetUpFrame(
        {.keyField = ui->edtUserName,
         .keyLabel = ui->lblUserName,
         .keyFilter = kKeyNoParentheses,
         .keyMaxLength = kUserNameLength,
         .details = ui->tabDetails,
         .firstDetail = ui->edtComment,
         .ok = ui->cmdOK,
         .cancel = ui->cmdCancel,
         .remove = ui->cmdDeleteUser,
         .helpTopic = "users"},
        {QStringLiteral("UserName"), QStringLiteral("UserNotExist"), QStringLiteral("UserExist")});

    ui->ListView1->setModel(extras_);
    // The list has no label of its own; its page's title says what it holds.
    ui->ListView1->setAccessibleName(
        ui->tabDetails->tabText(ui->tabDetails->indexOf(ui->tabExtras)).remove(QLatin1Char('&')));
    ui->ListView1->setEditTriggers(QAbstractItemView::NoEditTriggers);
    ui->ListView1->setSelectionBehavior(QAbstractItemView::SelectRows);
    InstallKeyFilter(ui->edtName, kKeyAnyText, kExtraNameLength);
    InstallKeyFilter(ui->edtValue, kKeyAnyText, kLongTextLength);
    connect(ui->ListView1->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &frmUserDetails::ShowSelectedExtra);
    connect(ui->cmdSet, &QAbstractButton::clicked, this, &frmUserDetails::SetExtra);
    connect(ui->cmdDelete, &QAbstractButton::clicked, this, &frmUserDetails::DeleteExtra);
    connect(ui->cmdExport, &QAbstractButton::clicked, this, &frmUserDetails::ExportExtras);
    connect(ui->cmdChangePassword, &QAbstractButton::clicked, this,
            &frmUserDetails::ChangePassword);
}

frmUserDetails::~frmUserDetails() = default;

void frmUserDetails::FillFixedLists() {
    // Captions are looked up once the form shows, like its other texts.
    std::vector<ListColumn> columns;
    for (const char* key : {"Name", "Value"}) {
        ListColumn& column = columns.emplace_back();
        column.key = QLatin1String(key);
        column.header = GetLabel(column.key);
    }
    extras_->SetColumns(std::move(columns));
    // A check box of the actions grid is named by its column and its row.
    const std::pair<QLabel*, QList<QAbstractButton*>> actions[] = {
        {ui->lblMail,
         {ui->chkMailIfNewReceived, ui->chkMailIfSendFailed, ui->chkMailIfSendSucceded}},
        {ui->lblPrint,
         {ui->chkPrintIfNewReceived, ui->chkPrintIfSendFailed, ui->chkPrintIfSendSucceded}},
        {ui->lblLight,
         {ui->chkLightIfNewReceived, ui->chkLightIfSendFailed, ui->chkLightIfSendSucceded}},
        {ui->lblVoice,
         {ui->chkVoiceIfNewReceived, ui->chkVoiceIfSendFailed, ui->chkVoiceIfSendSucceded}},
    };
    const QLabel* const events[] = {ui->lblNewReceived, ui->lblSendFailed, ui->lblSendSucceeded};
    for (const auto& [action, boxes] : actions)
        for (int i = 0; i < boxes.size(); ++i)
            boxes[i]->setAccessibleName(action->text() + QLatin1String(": ") + events[i]->text());
}

bool frmUserDetails::ReadRequest() {
    // The name is a key only within its server, which the caption names.
    host_ = FormParameterValue(QStringLiteral("HostName"));
    if (!FindOwningServer(host_, QStringLiteral("User Details"))) return false;
    QStringList scanners;
    QStringList printers;
    if (!CallSession([&] {
            scanners = TheSession()->Scanners(host_);
            printers.clear();
            for (const PrinterRecord& printer : TheSession()->Printers(host_))
                printers.append(Text(printer.name()));
        }))
        return false;
    Loading([&] {
        FillChoices(ui->cboScanner, scanners);
        FillChoices(ui->cboPrinter, printers);
    });
    return true;
}

void frmUserDetails::SelectStored(QComboBox* combo, const std::string& name,
                                  const char* missingMessage) {
    const int index = combo->findData(Text(name));
    combo->setCurrentIndex(std::max(index, 0));
    if (index < 0) Warn(QLatin1String(missingMessage));
}

void frmUserDetails::ClearMore() {
    ui->optResolutionNormal->setChecked(true);
    extras_->SetRows({});
    ui->edtName->clear();
    ui->edtValue->clear();
}

void frmUserDetails::LoadMore() {
    std::vector<ListRow> rows;
    rows.reserve(static_cast<size_t>(Kept().extras_size()));
    for (const pb::NameValue& extra : Kept().extras())
        rows.push_back(ExtraRow(Text(extra.name()), Text(extra.value())));
    extras_->SetRows(std::move(rows));
    ui->edtName->clear();
    ui->edtValue->clear();
}

bool frmUserDetails::WriteMore() {
    UserRecord& user = Edited();
    user.clear_extras();
    for (int i = 0; i < extras_->rowCount(); ++i) {
        const ListRow& row = extras_->Row(i);
        pb::NameValue* extra = user.add_extras();
        extra->set_name(FieldValue(row.cells.at(0)));
        extra->set_value(FieldValue(row.cells.at(1)));
    }
    return true;
}

void frmUserDetails::EnableRules() {
    // Only a stored user has a password to change.
    ui->cmdChangePassword->setEnabled(State() == EditorState::Shown ||
                                      State() == EditorState::Changed);
}

UserRecord frmUserDetails::Fetch() {
    return TheSession()->GetUser(host_, Key());
}

Committed frmUserDetails::Commit(Action action) {
    ServerSession& session = *TheSession();
    if (action == Delete) {
        session.DeleteUser(host_, Text(Kept().name()), Kept().version());
        return {};
    }
    return {session.CommitUser(Edited())};
}

void frmUserDetails::TellExtras(const char* message, const char* title, QWidget* focus) {
    Prompt prompt;
    prompt.text = GetLabel(QLatin1String(message));
    prompt.title = GetLabel(QLatin1String(title));
    prompt.icon = PromptIcon::Information;
    ThePrompter().Show(prompt);
    CTRLSetFocus(focus);
}

int frmUserDetails::SelectedExtra() const {
    const QModelIndexList rows = ui->ListView1->selectionModel()->selectedRows();
    return rows.isEmpty() ? -1 : rows.front().row();
}

void frmUserDetails::ShowSelectedExtra() {
    const int row = SelectedExtra();
    if (row < 0) return;
    ui->edtName->setText(extras_->Row(row).cells.at(0));
    ui->edtValue->setText(extras_->Row(row).cells.at(1));
}

void frmUserDetails::SetExtra() {
    const QString name = ui->edtName->text().trimmed();
    if (name.isEmpty()) {
        TellExtras("NoItem", "Insert/Change Error", ui->edtName);
        return;
    }
    // A name that is there already takes the new value.
    std::vector<ListRow> rows;
    rows.reserve(static_cast<size_t>(extras_->rowCount()) + 1);
    for (int i = 0; i < extras_->rowCount(); ++i) rows.push_back(extras_->Row(i));
    const ListRow changed = ExtraRow(name, ui->edtValue->text().trimmed());
    const int existing = extras_->FindKey(name);
    if (existing >= 0)
        rows[static_cast<size_t>(existing)] = changed;
    else
        rows.push_back(changed);
    extras_->SetRows(std::move(rows));
    ui->ListView1->setCurrentIndex(extras_->index(extras_->FindKey(name), 0));
    MarkModified();
}

void frmUserDetails::DeleteExtra() {
    const int row = SelectedExtra();
    if (row < 0) {
        TellExtras("ItemNotSelect", "Remove Error", ui->ListView1);
        return;
    }
    const QString name = extras_->Row(row).cells.at(0);
    Prompt question;
    question.text = GetLabel(QStringLiteral("QuestionDelete")) + QLatin1Char('\r') +
                    QLatin1Char('\'') + name + QLatin1Char('\'');
    question.title = windowTitle();
    question.icon = PromptIcon::Question;
    question.buttons = PromptButtons::YesNo;
    question.defaultButton = 2;
    if (ThePrompter().Show(question) != Answer::Yes) return;
    std::vector<ListRow> rows;
    for (int i = 0; i < extras_->rowCount(); ++i)
        if (i != row) rows.push_back(extras_->Row(i));
    extras_->SetRows(std::move(rows));
    ui->edtName->clear();
    ui->edtValue->clear();
    MarkModified();
}

void frmUserDetails::ExportExtras() {
    const QString fileName = ThePrompter().AskSaveFileName(
        GetLabel(QStringLiteral("Export")), GetLabel(QStringLiteral("Text Files(*.txt)|*.txt")));
    if (fileName.isEmpty()) return;
    // Written whole or not at all: a failed export leaves no half file.
    QSaveFile file(fileName);
    bool written = file.open(QIODevice::WriteOnly | QIODevice::Text);
    for (int i = 0; written && i < extras_->rowCount(); ++i) {
        const ListRow& row = extras_->Row(i);
        const QString line =
            row.cells.at(0) + QLatin1Char(' ') + row.cells.at(1) + QLatin1Char('\n');
        written = file.write(line.toUtf8()) >= 0;
    }
    if (written && file.commit()) return;
    Prompt failure;
    failure.text = QDir::toNativeSeparators(fileName) + QLatin1String(": ") + file.errorString();
    failure.title = GetLabel(QStringLiteral("Export"));
    failure.icon = PromptIcon::Exclamation;
    ThePrompter().Show(failure);
}

void frmUserDetails::ChangePassword() {
    // The server refuses a password that breaks its rules and says why; the
    // dialog then stays as it was.
    const QString user = Text(Kept().name());
    frmChangePassword::ChangePassword(this, [this, user](const QString& password) {
        TheSession()->SetUserPassword(host_, user, password);
    });
}

}  // namespace winadmin

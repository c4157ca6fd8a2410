#include "editors/frmAdministratorDetails.h"

#include "common/Labels.h"
#include "editors/frmChangePassword.h"
#include "session/CallSession.h"
#include "session/ServerSession.h"
#include "ui_frmAdministratorDetails.h"

namespace winadmin {

const QString frmAdministratorDetails::kSmtpNative = QStringLiteral("SMTPnative");

namespace {

constexpr int kMaxNumber = 2147483647;

QString SmtpNativeText() {
    return GetLabel(frmAdministratorDetails::kSmtpNative);
}

}  // namespace

frmAdministratorDetails::frmAdministratorDetails(QWidget* parent)
    : RecordEditor(parent), ui(std::make_unique<Ui::frmAdministratorDetails>()) {
    ui->setupUi(this);
    using A = AdminSettingsRecord;
    // Declared in the order the checks run: the block sizes first, then the
    // idle timeout, then the SMTP gateway user.
    Bind(ui->edtAddressBookBlocksize, ui->lblAddressBookBlocksize)
        .Filter(kKeyDigits, kNumberLength)
        .Range(2, kMaxNumber)
        .Spin(ui->updAddressBookBlocksize)
        .Cleared(QStringLiteral("2"))
        .Number(&A::address_book_blocksize, &A::set_address_book_blocksize)
        .Mandatory();
    Bind(ui->edtJournalBlocksize, ui->lblJournalBlocksize)
        .Filter(kKeyDigits, kNumberLength)
        .Range(2, kMaxNumber)
        .Spin(ui->updJournalBlocksize)
        .Cleared(QStringLiteral("2"))
        .Number(&A::journal_blocksize, &A::set_journal_blocksize)
        .Mandatory();
    Bind(ui->edtLoginIdleTimeout, ui->lblLoginIdleTimeout)
        .Filter(kKeyDigits, kNumberLength)
        .Range(0, kMaxNumber)
        .Spin(ui->updLoginIdleTimeout)
        .Cleared(QStringLiteral("0"))
        .Number(&A::login_idle_timeout, &A::set_login_idle_timeout)
        .Mandatory();
    Bind(ui->edtSendCopyUser, ui->lblSendCopyUser)
        .Reference(&A::send_copy_user, &A::mutable_send_copy_user);
    Bind(ui->edtReceiveCopyUser, ui->lblReceiveCopyUser)
        .Reference(&A::receive_copy_user, &A::mutable_receive_copy_user);
    Bind(ui->edtMailLanguageIdentifier)
        .Filter(kKeyAnyText, kMailLanguageLength)
        .Text(&A::mail_language, &A::set_mail_language);
    Bind(ui->cboMapErrorToBusy).ItemCode(&A::map_error_to_busy, &A::set_map_error_to_busy);
    // Typed as user@host or chosen; the server's own SMTP service is shown
    // by its label text and stored by its word.
    ui->edtSMTPGwUsr->setReadOnly(false);
    Bind(ui->edtSMTPGwUsr, ui->lblSMTPGwUsr)
        .Filter(kKeyAnyText, kTextLength)
        .Loads([this](const A& settings) {
            const QString stored = Text(settings.smtp_gateway_user());
            if (stored == kSmtpNative)
                ui->edtSMTPGwUsr->setText(SmtpNativeText());
            else if (stored.isEmpty())
                ui->edtSMTPGwUsr->Clear();
            else
                ui->edtSMTPGwUsr->setText(stored);
            ui->edtSMTPGwUsr->setCursorPosition(0);
        })
        .Writes([this](A& settings) {
            settings.set_smtp_gateway_user(StoredSmtpUser().toStdString());
        });
    Check([this] { return CheckSmtpUser(); });
    Bind(ui->edtCompatibility)
        .Filter(kKeyAnyText, kTextLength)
        .Text(&A::compatibility, &A::set_compatibility);
    Bind(ui->chkDisableLeastCostRouting)
        .Checked(&A::disable_least_cost_routing, &A::set_disable_least_cost_routing);
    connect(ui->cmdChangePassword, &QAbstractButton::clicked, this,
            &frmAdministratorDetails::ChangePassword);
    SetUpFrame({.identity = Identity::Single,
                .details = ui->fraGeneralData,
                .firstDetail = ui->edtLoginIdleTimeout,
                .ok = ui->cmdOK,
                .cancel = ui->cmdCancel,
                .helpTopic = "administrator"},
               {});
}

frmAdministratorDetails::~frmAdministratorDetails() = default;

QString frmAdministratorDetails::StoredSmtpUser() const {
    const QString shown = ui->edtSMTPGwUsr->text().trimmed();
    if (shown.compare(SmtpNativeText(), Qt::CaseInsensitive) == 0 ||
        shown.compare(kSmtpNative, Qt::CaseInsensitive) == 0)
        return kSmtpNative;
    if (ui->edtSMTPGwUsr->Value().IsNone()) return {};
    return shown;
}

bool frmAdministratorDetails::CheckSmtpUser() {
    const QString stored = StoredSmtpUser();
    if (stored.isEmpty() || stored == kSmtpNative || stored.contains(QLatin1Char('@'))) return true;
    return Warn(QStringLiteral("ProvideUser@Host"), ui->edtSMTPGwUsr);
}

void frmAdministratorDetails::ChangePassword() {
    frmChangePassword::ChangePassword(
        this, [](const QString& password) { TheSession()->SetAdminPassword(password); });
}

AdminSettingsRecord frmAdministratorDetails::Fetch() {
    AdminSettingsRecord settings = TheSession()->GetAdminSettings();
    // The choices come with the settings; the list is filled before the
    // fields load, so that the stored code finds its entry.
    Loading([&] {
        ui->cboMapErrorToBusy->clear();
        for (const auto& choice : settings.map_error_choices())
            ui->cboMapErrorToBusy->addItem(GetLabel(Text(choice.label_key())), choice.code());
        ui->cboMapErrorToBusy->setCurrentIndex(-1);
    });
    return settings;
}

Committed frmAdministratorDetails::Commit(Action) {
    return {TheSession()->CommitAdminSettings(Edited())};
}

}  // namespace winadmin

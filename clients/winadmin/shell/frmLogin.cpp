#include "shell/frmLogin.h"

#include <QIcon>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "common/DialogHelp.h"
#include "common/Labels.h"
#include "common/Prompter.h"
#include "common/Settings.h"
#include "lists/KindIcons.h"
#include "session/ErrorDialog.h"
#include "session/GrpcServerSession.h"
#include "ui_frmLogin.h"

namespace winadmin {

namespace {

namespace pb = veldrano::admin::v1;

// A failure that is no session error (the settings store, above all) still
// reaches the administrator through the common error dialog; it has no
// number of its own, so it gets the general failure, which offers no Retry.
constexpr uint32_t kGeneralFailure = 0x80004005u;
const QString kSettingsSource = QStringLiteral("RegSetValue");

frmLogin::SessionFactory& Factory() {
    static frmLogin::SessionFactory factory;
    return factory;
}

std::unique_ptr<ServerSession> CreateSession() {
    if (Factory()) return Factory()();
    return std::make_unique<GrpcServerSession>();
}

}  // namespace

void frmLogin::SetSessionFactory(SessionFactory factory) {
    Factory() = std::move(factory);
}

frmLogin::frmLogin(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::frmLogin>()) {
    LoadConsoleResources();
    ui->setupUi(this);
    InstallHelpKey(this, QStringLiteral("login"));
    ui->picIcon->setPixmap(QIcon(QStringLiteral(":/app/icon.svg")).pixmap(48, 48));
    connect(ui->cmdOK, &QPushButton::clicked, this, &frmLogin::cmdOK_Click);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &frmLogin::cmdCancel_Click);
    Form_Load();
}

frmLogin::~frmLogin() = default;

void frmLogin::Form_Load() {
    try {
        // The session is created here and lives until the program ends; a
        // failed login leaves it in place for the next attempt.
        SetTheSession(CreateSession());
        if (ApplyFormLabels(this)) {
            // Before the first login no label table is loaded and a caption
            // shows its key, which has no colon; field labels have one in
            // every dialog, this one included.
            for (QLabel* label : {ui->lblHostName, ui->lblPassword})
                if (!label->text().endsWith(QLatin1Char(':')))
                    label->setText(label->text() + QLatin1Char(':'));
            // Selected whole so that typing replaces the remembered host.
            ui->edtHostName->setText(
                GetSetting(kVendor, QStringLiteral("LastAdminServer"), QString()).trimmed());
            SelectWhole(ui->edtHostName);
        }
    } catch (const SessionError& error) {
        ShowErrorMessage(error);
    } catch (const std::exception& error) {
        ShowErrorMessage(kGeneralFailure, QString::fromLocal8Bit(error.what()), kSettingsSource);
    }
}

void frmLogin::cmdOK_Click() {
    ServerSession* session = TheSession();
    if (!session) return;
    if (!RunStep([&] { session->SetHostName(ui->edtHostName->text()); })) return;
    if (!RunStep([&] { session->SetPassword(ui->edtPassword->text()); })) return;
    if (!RunStep([&] { session->Login(); })) return;
    // Set only now: whatever failed before never reaches the main window.
    loginResult_ = true;
    accept();
    // The host is remembered as the server reported it, and only after a
    // login that worked.
    RunStep(
        [&] { SaveSetting(kVendor, QStringLiteral("LastAdminServer"), session->GetHostName()); });
}

void frmLogin::cmdCancel_Click() {
    loginResult_ = false;
    reject();
}

bool frmLogin::RunStep(const std::function<void()>& step) {
    for (;;) {
        AfterError after = AfterError::Stop;
        try {
            step();
            return true;
        } catch (const SessionError& error) {
            after = TreatError(error.Number(), error.Description(), error.Source());
        } catch (const std::exception& error) {
            after =
                TreatError(kGeneralFailure, QString::fromLocal8Bit(error.what()), kSettingsSource);
        }
        if (after == AfterError::Continue) return true;
        if (after == AfterError::Stop) return false;
    }
}

frmLogin::AfterError frmLogin::TreatError(uint32_t number, const QString& description,
                                          const QString& source) {
    if (number == ErrorNumber(pb::ERROR_ACCESS_DENIED)) {
        ShowLoginRefusal(number, description, source);
        ui->edtPassword->setFocus();
        SelectWhole(ui->edtPassword);
        return AfterError::Stop;
    }
    if (number == ErrorNumber(pb::ERROR_HOST_UNREACHABLE)) {
        ShowLoginRefusal(number, description, source);
        ui->edtHostName->setFocus();
        SelectWhole(ui->edtHostName);
        return AfterError::Stop;
    }
    switch (ShowErrorMessage(number, description, source)) {
        case Answer::Retry:
            return AfterError::Repeat;
        case Answer::Ignore:
            return AfterError::Continue;
        default:
            return AfterError::Stop;
    }
}

void frmLogin::ShowLoginRefusal(uint32_t number, const QString& description,
                                const QString& source) {
    // Not the common error dialog: a refused password or a wrong host is
    // the administrator's to correct, not a failure of the console.
    Prompt prompt;
    prompt.text = FormatErrorText(description, number);
    prompt.title = source;
    prompt.icon = PromptIcon::Exclamation;
    prompt.buttons = PromptButtons::OK;
    ThePrompter().Show(prompt);
}

void frmLogin::SelectWhole(QLineEdit* field) {
    field->setSelection(0, int(field->text().size()));
}

}  // namespace winadmin

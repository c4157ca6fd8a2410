#include "editors/frmChangePassword.h"

#include <QKeyEvent>

#include "common/FieldHelpers.h"
#include "common/FormParameters.h"
#include "common/Labels.h"
#include "common/Prompter.h"
#include "session/CallSession.h"
#include "ui_frmChangePassword.h"

namespace winadmin {

namespace {

const QString kPasswordChanged = QStringLiteral("PasswordChanged");
const QString kNewPassword = QStringLiteral("NewPassword");

}  // namespace

frmChangePassword::frmChangePassword(QWidget* parent)
    : QDialog(parent), ui(std::make_unique<Ui::frmChangePassword>()) {
    ui->setupUi(this);
    ApplyFormLabels(this);
    for (QLineEdit* field : {ui->edtEnterNewPassword, ui->edtConfirmNewPassword})
        field->installEventFilter(this);
    connect(ui->cmdOK, &QAbstractButton::clicked, this, &frmChangePassword::accept);
    connect(ui->cmdCancel, &QAbstractButton::clicked, this, &frmChangePassword::reject);
}

frmChangePassword::~frmChangePassword() = default;

std::optional<QString> frmChangePassword::AskNewPassword(QWidget* parent) {
    frmChangePassword dialog(parent);
    dialog.exec();
    if (FormParameterValue(kPasswordChanged) != QStringLiteral("-1")) return std::nullopt;
    return FormParameterValue(kNewPassword);
}

bool frmChangePassword::ChangePassword(QWidget* parent,
                                       const std::function<void(const QString&)>& setPassword) {
    const std::optional<QString> password = AskNewPassword(parent);
    if (!password || !CallSession([&] { setPassword(*password); })) return false;
    Prompt done;
    done.text = GetLabel(QStringLiteral("NewPasswordSet"));
    done.title = parent ? parent->windowTitle() : QString();
    done.icon = PromptIcon::Information;
    ThePrompter().Show(done);
    return true;
}

bool frmChangePassword::eventFilter(QObject* watched, QEvent* event) {
    // Enter in a field goes on to the next control rather than pressing OK,
    // so that a password is never confirmed before it was typed twice.
    if (event->type() == QEvent::KeyPress) {
        const int key = static_cast<QKeyEvent*>(event)->key();
        if (key == Qt::Key_Return || key == Qt::Key_Enter) {
            focusNextChild();
            return true;
        }
    }
    return QDialog::eventFilter(watched, event);
}

void frmChangePassword::accept() {
    const QString entered = ui->edtEnterNewPassword->text();
    if (entered != ui->edtConfirmNewPassword->text()) {
        Prompt prompt;
        prompt.text = GetLabel(QStringLiteral("IncorrectConfirmPassword"));
        prompt.title = windowTitle();
        prompt.icon = PromptIcon::Exclamation;
        ThePrompter().Show(prompt);
        ui->edtConfirmNewPassword->clear();
        CTRLSetFocus(ui->edtConfirmNewPassword);
        return;
    }
    SetFormParameters({{kPasswordChanged, QStringLiteral("-1")}, {kNewPassword, entered}});
    QDialog::accept();
}

void frmChangePassword::reject() {
    SetFormParameters({{kPasswordChanged, QStringLiteral("0")}});
    QDialog::reject();
}

}  // namespace winadmin

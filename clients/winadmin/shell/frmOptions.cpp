#include "shell/frmOptions.h"

#include <QRegularExpressionValidator>

#include "common/DialogHelp.h"
#include "common/Labels.h"
#include "common/Prompter.h"
#include "lists/ViewSettings.h"
#include "session/ServerSession.h"
#include "ui_frmOptions.h"

namespace winadmin {

const QStringList& frmOptions::SeverityKeys() {
    static const QStringList keys = {
        QStringLiteral("SeverityNone"),    QStringLiteral("SeverityNote"),
        QStringLiteral("SeverityWarning"), QStringLiteral("SeverityError"),
        QStringLiteral("SeverityFatal"),   QStringLiteral("SeverityPanic")};
    return keys;
}

frmOptions::frmOptions(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::frmOptions>()) {
    ui->setupUi(this);
    InstallHelpKey(this, QStringLiteral("menus"));
    ApplyFormLabels(this);

    // Digits only: the time-out is a whole number of seconds.
    ui->edtServerTimeout->setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("[0-9]{0,5}")), ui->edtServerTimeout));
    ui->edtServerTimeout->setText(QString::number(StoredServerTimeout()));

    for (int severity = 0; severity < SeverityKeys().size(); ++severity)
        ui->cboSeverity->addItem(GetLabel(SeverityKeys().at(severity)), severity);
    // A stored severity the list does not offer shows the default.
    const int stored = ui->cboSeverity->findData(StoredSeverity());
    ui->cboSeverity->setCurrentIndex(stored >= 0 ? stored : 0);

    connect(ui->cmdOK, &QPushButton::clicked, this, &frmOptions::accept);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &frmOptions::reject);
}

frmOptions::~frmOptions() = default;

void frmOptions::RefuseTimeout(const QString& message) {
    ThePrompter().Show({message, windowTitle(), PromptIcon::Exclamation, PromptButtons::OK, 1});
    ui->edtServerTimeout->setFocus();
    ui->edtServerTimeout->selectAll();
}

bool frmOptions::ValidateFields() {
    const QString field = CaptionWithoutColon(ui->lblServerTimeout->text());
    const QString text = ui->edtServerTimeout->text().trimmed();
    if (text.isEmpty()) {
        RefuseTimeout(GetLabel(QStringLiteral("Field")) + field +
                      GetLabel(QStringLiteral("CannotBeEmpty")));
        return false;
    }
    bool ok = false;
    const int seconds = text.toInt(&ok);
    if (!ok || seconds < kMinServerTimeout || seconds > kMaxServerTimeout) {
        RefuseTimeout(GetLabel(QStringLiteral("ValidRangeForField")) + field +
                      GetLabel(QStringLiteral("IsFrom")) + QString::number(kMinServerTimeout) +
                      QLatin1Char(' ') + GetLabel(QStringLiteral("To")) +
                      QString::number(kMaxServerTimeout) + QLatin1Char('.'));
        return false;
    }
    return true;
}

void frmOptions::accept() {
    if (!ValidateFields()) return;
    const int seconds = ui->edtServerTimeout->text().trimmed().toInt();
    if (ServerSession* session = TheSession()) session->SetTimeout(seconds);
    try {
        SaveMainFormSetting(QStringLiteral("Server Timeout"), seconds);
        SaveMainFormSetting(QStringLiteral("Severity"), ui->cboSeverity->currentData().toInt());
    } catch (const std::exception& error) {
        // The session already works with the new time-out; only the next
        // start would not know it.
        ThePrompter().Show({QString::fromLocal8Bit(error.what()), windowTitle(),
                            PromptIcon::Exclamation, PromptButtons::OK, 1});
        return;
    }
    QDialog::accept();
}

}  // namespace winadmin

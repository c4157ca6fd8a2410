#include "shell/frmAbout.h"

#include <QIcon>
#include <QProcess>
#include <QPushButton>
#include <QStandardPaths>

#include "common/AppContext.h"
#include "common/Labels.h"
#include "common/Prompter.h"
#include "lists/KindIcons.h"
#include "session/ServerSession.h"
#include "shell/frmSplash.h"
#include "ui_frmAbout.h"

namespace winadmin {

frmAbout::frmAbout(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::frmAbout>()) {
    LoadConsoleResources();
    ui->setupUi(this);
    connect(ui->cmdOK, &QPushButton::clicked, this, &frmAbout::cmdOK_Click);
    connect(ui->cmdSysInfo, &QPushButton::clicked, this, &frmAbout::cmdSysInfo_Click);
    Form_Load();
}

frmAbout::~frmAbout() = default;

void frmAbout::Form_Load() {
    ApplyFormLabels(this);
    setWindowTitle(GetLabel(QStringLiteral("About")) + QLatin1Char(' ') + ApplicationTitle());
    ui->picIcon->setPixmap(QIcon(QStringLiteral(":/app/icon.svg")).pixmap(64, 64));
    ui->lblProductName->setText(ApplicationTitle());
    // The console's own version beside the server's: the two are installed
    // apart and a fault report needs both.
    ui->lblVersion->setText(
        GetLabel(QStringLiteral("ConsoleVersion"))
            .arg(QStringLiteral(VELDRANO_VERSION), QStringLiteral(VELDRANO_BUILD)) +
        QLatin1Char('\n') +
        GetLabel(QStringLiteral("ServerVersion")).arg(GetLabel(QStringLiteral("version"))));
    // The brand's logo, as on the splash; a brand without one shows none.
    QString brandWord;
    try {
        if (ServerSession* session = TheSession()) brandWord = session->GetBrand();
    } catch (const std::exception&) {
    }
    const Brand brand = BrandFor(brandWord);
    ui->picLogo->clear();
    if (!brand.logoPath.isEmpty())
        ui->picLogo->setPixmap(
            LogoPixmap(brand.logoPath, ui->picLogo->minimumSize(), devicePixelRatioF()));
}

void frmAbout::cmdOK_Click() {
    accept();
}

QString frmAbout::SystemInfoTool() {
    for (const QString& name : {QStringLiteral("hardinfo"), QStringLiteral("kinfocenter")}) {
        const QString path = QStandardPaths::findExecutable(name);
        if (!path.isEmpty()) return path;
    }
    return {};
}

void frmAbout::cmdSysInfo_Click() {
    const QString tool = SystemInfoTool();
    // Detached: the tool is the workstation's, and closing the About box
    // or the console must not end it.
    if (!tool.isEmpty() && QProcess::startDetached(tool, {})) return;

    Prompt prompt;
    prompt.text = GetLabel(QStringLiteral("System Information Is Unavailable At This Time"));
    prompt.title = ApplicationTitle();
    prompt.buttons = PromptButtons::OK;
    ThePrompter().Show(prompt);
}

void ShowAbout(QWidget* parent) {
    frmAbout about(parent);
    about.exec();
}

}  // namespace winadmin

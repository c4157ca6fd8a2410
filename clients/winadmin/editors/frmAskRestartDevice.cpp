#include "editors/frmAskRestartDevice.h"

#include "common/Labels.h"
#include "ui_frmAskRestartDevice.h"

namespace winadmin {

frmAskRestartDevice::frmAskRestartDevice(QWidget* parent, DeviceRestartChoice* choice)
    : QDialog(parent), ui(std::make_unique<Ui::frmAskRestartDevice>()), choice_(choice) {
    ui->setupUi(this);
    ApplyFormLabels(this);
    ui->txtMessageText->setPlainText(GetLabel(QStringLiteral("AskRestartDeviceMsg")));
    // The text is read, not scrolled: room for the question whole.
    ui->txtMessageText->setMinimumHeight(ui->txtMessageText->fontMetrics().lineSpacing() * 7);
    const std::pair<QPushButton*, DeviceRestartChoice> buttons[] = {
        {ui->cmdSave, DeviceRestartChoice::Save},
        {ui->cmdSaveRestart, DeviceRestartChoice::SaveAndRestart},
        {ui->cmdDontSave, DeviceRestartChoice::DontSave},
        {ui->cmdCancel, DeviceRestartChoice::Cancel},
    };
    for (const auto& [button, answer] : buttons)
        connect(button, &QPushButton::clicked, this, [this, answer] { Choose(answer); });
}

frmAskRestartDevice::~frmAskRestartDevice() = default;

void frmAskRestartDevice::Choose(DeviceRestartChoice choice) {
    *choice_ = choice;
    accept();
}

DeviceRestartChoice frmAskRestartDevice::Ask(QWidget* parent) {
    DeviceRestartChoice choice = DeviceRestartChoice::Cancel;
    frmAskRestartDevice dialog(parent, &choice);
    dialog.exec();
    return choice;
}

}  // namespace winadmin

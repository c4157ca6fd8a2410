#pragma once
// Asked when the primary line of a device is saved: a device reads its
// settings when it starts, so the administrator chooses whether to save, to
// save and restart the device now, to drop the changes or to go back to them.

#include <QDialog>
#include <cstdint>
#include <memory>

namespace Ui {
class frmAskRestartDevice;
}

namespace winadmin {

enum class DeviceRestartChoice : int16_t {
    Save = 1,
    SaveAndRestart = 2,
    DontSave = 3,
    Cancel = 4,
};

class frmAskRestartDevice : public QDialog {
    Q_OBJECT

public:
    // choice receives the button pressed; closing the window leaves it as
    // it was.
    frmAskRestartDevice(QWidget* parent, DeviceRestartChoice* choice);
    ~frmAskRestartDevice() override;

    // Shows the question modally; the choice, Cancel when the window was
    // closed without one.
    static DeviceRestartChoice Ask(QWidget* parent);

private:
    void Choose(DeviceRestartChoice choice);

    std::unique_ptr<Ui::frmAskRestartDevice> ui;
    DeviceRestartChoice* choice_;
};

}  // namespace winadmin

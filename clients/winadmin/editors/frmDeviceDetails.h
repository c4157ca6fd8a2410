#pragma once
// The properties of one device of a server: a line group, a voice or SMS
// port, a scanner or a built-in printer. A device has numbered lines; line 1,
// the primary line, carries the device's own settings and each further line
// its own. The pages show one line at a time, chosen in the line selector;
// edits of a line survive switching to another, and OK saves the line shown
// (for line 1 the whole device, after asking whether to restart it). What
// the pages offer follows the device type's features.

#include <map>
#include <memory>
#include <vector>

#include "editors/RecordEditor.h"
#include "editors/frmAskRestartDevice.h"
#include "session/Records.h"

namespace Ui {
class frmDeviceDetails;
}

class QAbstractButton;
class QLineEdit;

namespace winadmin {

class UpDown;

class frmDeviceDetails : public RecordEditor<DeviceRecord> {
    Q_OBJECT

public:
    explicit frmDeviceDetails(QWidget* parent = nullptr);
    ~frmDeviceDetails() override;

    static constexpr int kDeviceNameLength = 10;
    static constexpr double kMaxAccountFactor = 3.402823E+38;

    QString Host() const { return host_; }
    // The line whose settings the pages show (1: the primary line).
    int Line() const { return line_; }
    DeviceRestartChoice RestartChoice() const { return restartChoice_; }

    // The line delete button (cmdDelete), the user server chooser
    // (cmdUserServer).
    void DeleteLine();
    void ChooseUserServer();

protected:
    void FillFixedLists() override;
    bool ReadRequest() override;
    void ClearMore() override;
    void LoadMore() override;
    bool WriteMore() override;
    void EnableRules() override;
    Confirmation ConfirmSave(Action action) override;
    bool KeepOpenAfterSave() override;
    DeviceRecord Fetch() override;
    Committed Commit(Action action) override;

private:
    using L = LineSettingsRecord;

    // Declarations of the fields that show the selected line's settings.
    FieldBinding<DeviceRecord>& LineText(QLineEdit* field, QLabel* label, KeyFilter kind,
                                         int maxLength, const std::string& (L::*get)() const,
                                         void (L::*set)(const std::string&));
    FieldBinding<DeviceRecord>& LineNumber(QLineEdit* field, QLabel* label, UpDown* spin,
                                           int maxLength, double from, double to,
                                           int32_t (L::*get)() const, void (L::*set)(int32_t));
    FieldBinding<DeviceRecord>& LineFlag(QAbstractButton* box, bool (L::*get)() const,
                                         void (L::*set)(bool));
    void BindOptions(std::initializer_list<std::pair<QAbstractButton*, int>> options,
                     int32_t (L::*get)() const, void (L::*set)(int32_t));
    void BindFields();

    const DeviceTypeRecord* TypeShown() const;
    int SelectedType() const;
    void SelectType(int type);
    void TypeChanged();
    void LineSelected();
    // Keeps what the pages show of the selected line when it differs from
    // the stored line, so that it survives a switch or a reload.
    void KeepLineEdits();
    void ShowLine(int number);
    void SelectLine(int number);
    // Fetches the device again after a change written on its own (a line
    // deleted, a new type); edits not saved yet stay shown.
    void Refresh();
    void FitLinesSpin();
    void CheckBoxRules();
    bool CsiPrefixRetired() const;
    bool CheckUserServer();
    void RestartDevice();

    std::unique_ptr<Ui::frmDeviceDetails> ui;
    QString host_;
    std::vector<DeviceTypeRecord> types_;
    int line_ = 1;
    int typeShown_ = 0;
    std::map<int, LineSettingsRecord> edits_;
    DeviceRestartChoice restartChoice_ = DeviceRestartChoice::Cancel;
};

}  // namespace winadmin

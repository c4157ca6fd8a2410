#pragma once
// The About box: product title, the server's version and a way to the
// system information tool of the workstation.

#include <QDialog>
#include <QString>
#include <memory>

namespace Ui {
class frmAbout;
}

namespace winadmin {

class frmAbout : public QDialog {
    Q_OBJECT

public:
    explicit frmAbout(QWidget* parent = nullptr);
    ~frmAbout() override;

    // The system information tool of this workstation, searched on PATH:
    // hardinfo, else kinfocenter; empty when neither is installed.
    static QString SystemInfoTool();

private:
    void Form_Load();
    void cmdOK_Click();
    void cmdSysInfo_Click();

    std::unique_ptr<Ui::frmAbout> ui;
};

// Shows the About box modally over parent (Help, About of the main window).
void ShowAbout(QWidget* parent);

}  // namespace winadmin

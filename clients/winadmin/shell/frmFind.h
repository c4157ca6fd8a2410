#pragma once
// The find dialog. It is loaded hidden at start-up and stays loaded, so the
// last search text and options are still there for the next search. Cancel
// only hides it for that reason.

#include <QDialog>
#include <memory>

namespace Ui {
class frmFind;
}

namespace winadmin {

class frmFind : public QDialog {
    Q_OBJECT

public:
    explicit frmFind(QWidget* parent = nullptr);
    ~frmFind() override;

private:
    std::unique_ptr<Ui::frmFind> ui;
};

}  // namespace winadmin

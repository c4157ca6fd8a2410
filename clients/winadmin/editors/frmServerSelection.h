#pragma once
// The servers of the installation, from which a caller takes one host name:
// ("HostName", current) in, ("Refresh", "-1") and ("HostName", chosen) out,
// or ("Refresh", "0") on cancel.

#include <memory>

#include "editors/SelectionDialog.h"

namespace Ui {
class frmServerSelection;
}

namespace winadmin {

class frmServerSelection : public SelectionDialog {
    Q_OBJECT

public:
    explicit frmServerSelection(QWidget* parent = nullptr);
    ~frmServerSelection() override;

    // Shows the dialog with current preselected; the host chosen, or "".
    static QString Choose(QWidget* parent, const QString& current);

protected:
    std::vector<ListRow> FetchRows() override;

private:
    std::unique_ptr<Ui::frmServerSelection> ui;
};

}  // namespace winadmin

#pragma once
// The groups of the installation, from which a caller (the route editor)
// takes one by name: ("GroupName", current) in, ("Refresh", "-1") and
// ("GroupName", chosen) out, or ("Refresh", "0") on cancel. When "(None)" is
// offered, choosing it answers ("GroupName", ""). Its list can be
// searched with the find dialog (caller code "FGROUPSELECTION").

#include <memory>

#include "editors/SelectionDialog.h"

namespace Ui {
class frmGroupSelection;
}

namespace winadmin {

class frmGroupSelection : public SelectionDialog {
    Q_OBJECT

public:
    explicit frmGroupSelection(QWidget* parent = nullptr);
    ~frmGroupSelection() override;

    // Shows the dialog with current preselected; the group chosen, or "".
    static QString Choose(QWidget* parent, const QString& current);

    // Offers "(None)" as the first row (not by default).
    void SetNoneAllowed(bool allowed) { noneAllowed_ = allowed; }

protected:
    std::vector<ListRow> FetchRows() override;
    void AnswerChoice(const QString& chosen) override;

private:
    std::unique_ptr<Ui::frmGroupSelection> ui;
    bool noneAllowed_ = false;
};

}  // namespace winadmin

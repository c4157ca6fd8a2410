#include "editors/frmGroupSelection.h"

#include "session/ServerSession.h"
#include "shell/Find.h"
#include "ui_frmGroupSelection.h"

namespace winadmin {

frmGroupSelection::frmGroupSelection(QWidget* parent)
    : SelectionDialog(parent), ui(std::make_unique<Ui::frmGroupSelection>()) {
    ui->setupUi(this);
    Controls controls;
    controls.choiceName = QStringLiteral("GroupName");
    controls.columnKeys = {QStringLiteral("GroupName"), QStringLiteral("GroupComment")};
    controls.list = ui->lvGroups;
    controls.ok = ui->cmdOK;
    controls.cancel = ui->cmdCancel;
    controls.find = ui->cmdFind;
    controls.findCode = kFindGroupSelection;
    SetUpSelection(controls);
}

frmGroupSelection::~frmGroupSelection() = default;

QString frmGroupSelection::Choose(QWidget* parent, const QString& current) {
    frmGroupSelection dialog(parent);
    return dialog.ExecChoice(current);
}

std::vector<ListRow> frmGroupSelection::FetchRows() {
    std::vector<ListRow> rows;
    for (const GroupRecord& group : TheSession()->Groups()) {
        ListRow& row = rows.emplace_back();
        row.cells = ListCells::FromUtf8({group.name(), group.comment()});
        row.iconKey = QStringLiteral("Group");
    }
    return rows;
}

}  // namespace winadmin

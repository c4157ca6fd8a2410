#include "editors/frmGroupSelection.h"

#include "common/FieldHelpers.h"
#include "lists/Find.h"
#include "session/ServerSession.h"
#include "ui_frmGroupSelection.h"

namespace winadmin {

frmGroupSelection::frmGroupSelection(QWidget* parent)
    : SelectionDialog(parent), ui(std::make_unique<Ui::frmGroupSelection>()) {
    ui->setupUi(this);
    SetUpSelection({.choiceName = QStringLiteral("GroupName"),
                    .columnKeys = {QStringLiteral("GroupName"), QStringLiteral("GroupComment")},
                    .list = ui->lvGroups,
                    .ok = ui->cmdOK,
                    .cancel = ui->cmdCancel,
                    .find = ui->cmdFind,
                    .findCode = kFindGroupSelection,
                    .helpTopic = "groups"});
}

frmGroupSelection::~frmGroupSelection() = default;

QString frmGroupSelection::Choose(QWidget* parent, const QString& current) {
    frmGroupSelection dialog(parent);
    return dialog.ExecChoice(current);
}

std::vector<ListRow> frmGroupSelection::FetchRows() {
    std::vector<ListRow> rows;
    if (noneAllowed_) {
        // Its text cannot name a group: group names take no parentheses.
        rows.emplace_back().cells = QStringList{NoneText(), QString()};
    }
    for (const GroupRecord& group : TheSession()->Groups()) {
        ListRow& row = rows.emplace_back();
        row.cells = ListCells::FromUtf8({group.name(), group.comment()});
        row.iconKey = QStringLiteral("Group");
    }
    return rows;
}

void frmGroupSelection::AnswerChoice(const QString& chosen) {
    SelectionDialog::AnswerChoice(noneAllowed_ && chosen == NoneText() ? QString() : chosen);
}

}  // namespace winadmin

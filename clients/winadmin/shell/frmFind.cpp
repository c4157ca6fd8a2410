#include "shell/frmFind.h"

#include "common/Labels.h"
#include "ui_frmFind.h"

namespace winadmin {

frmFind::frmFind(QWidget* parent) : QDialog(parent), ui(std::make_unique<Ui::frmFind>()) {
    ui->setupUi(this);
    ApplyFormLabels(this);
    setModal(false);
    connect(ui->cmdCancel, &QPushButton::clicked, this, &QDialog::reject);
}

frmFind::~frmFind() = default;

}  // namespace winadmin

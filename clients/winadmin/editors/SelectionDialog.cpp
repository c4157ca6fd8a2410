#include "editors/SelectionDialog.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QItemSelectionModel>
#include <QShortcut>
#include <QTimer>
#include <QTreeView>

#include "common/DialogHelp.h"
#include "common/FormParameters.h"
#include "common/Labels.h"
#include "common/Prompter.h"
#include "lists/Find.h"
#include "session/CallSession.h"

namespace winadmin {

SelectionDialog::SelectionDialog(QWidget* parent)
    : QDialog(parent), model_(new ListModel(this)), timStartUp_(new QTimer(this)) {
    timStartUp_->setObjectName(QStringLiteral("timStartUp"));
    timStartUp_->setSingleShot(true);
    connect(timStartUp_, &QTimer::timeout, this, &SelectionDialog::StartUp);
}

void SelectionDialog::SetUpSelection(const Controls& controls) {
    controls_ = controls;
    InstallHelpKey(this, QString::fromLatin1(controls_.helpTopic));
    QAbstractItemView* list = controls_.list;
    list->setModel(model_);
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    list->setSelectionBehavior(QAbstractItemView::SelectRows);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    connect(list->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &SelectionDialog::UpdateOK);
    // Only a double click on a row chooses it; Enter reaches the default
    // button, OK, on its own.
    connect(list, &QAbstractItemView::doubleClicked, this, &SelectionDialog::accept);
    connect(controls_.ok, &QAbstractButton::clicked, this, &SelectionDialog::accept);
    connect(controls_.cancel, &QAbstractButton::clicked, this, &SelectionDialog::reject);

    if (!controls_.findCode.isEmpty()) {
        RegisterFindList(controls_.findCode, list);
        connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, this,
                &SelectionDialog::ShowFind);
        if (controls_.find)
            connect(controls_.find, &QAbstractButton::clicked, this, &SelectionDialog::ShowFind);
    }
    UpdateOK();
}

QString SelectionDialog::ExecChoice(const QString& current) {
    FormParameterList request;
    if (!current.isEmpty()) request.append({controls_.choiceName, current});
    SetFormParameters(std::move(request));
    exec();
    return AnsweredRefresh() ? FormParameterValue(controls_.choiceName) : QString();
}

void SelectionDialog::showEvent(QShowEvent* event) {
    QDialog::showEvent(event);
    if (activated_) return;
    activated_ = true;
    ApplyFormLabels(this);
    // Read now: whatever runs before the first tick may use the list too.
    current_ = FormParameterValue(controls_.choiceName);
    std::vector<ListColumn> columns;
    for (const QString& key : controls_.columnKeys) {
        ListColumn& column = columns.emplace_back();
        column.key = key;
        column.header = GetLabel(key);
    }
    model_->SetColumns(std::move(columns));
    timStartUp_->start(1);
}

void SelectionDialog::StartUp() {
    if (!isVisible()) return;  // closed before the first tick
    Refill();
}

void SelectionDialog::Refill() {
    std::vector<ListRow> rows;
    // A failed call leaves an empty list; the administrator can only cancel.
    if (!CallSession([&] { rows = FetchRows(); })) rows.clear();
    model_->SetRows(std::move(rows));
    UpdateOK();
    if (auto* tree = qobject_cast<QTreeView*>(controls_.list)) {
        for (int column = 0; column < model_->columnCount(); ++column)
            tree->resizeColumnToContents(column);
    }
    if (model_->rowCount() == 0) return;
    const int found = current_.isEmpty() ? -1 : model_->FindText(current_);
    const QModelIndex row = model_->index(found >= 0 ? found : 0, 0);
    controls_.list->selectionModel()->setCurrentIndex(
        row, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    controls_.list->scrollTo(row);
    controls_.list->setFocus(Qt::OtherFocusReason);
}

QString SelectionDialog::SelectedName() const {
    const QModelIndexList rows = controls_.list->selectionModel()->selectedRows();
    if (rows.isEmpty()) return {};
    return model_->Row(rows.front().row()).cells.value(0);
}

void SelectionDialog::UpdateOK() {
    controls_.ok->setEnabled(controls_.list->selectionModel()->hasSelection());
}

void SelectionDialog::ShowFind() {
    ShowFindDialog(controls_.findCode, this);
}

void SelectionDialog::AnswerChoice(const QString& chosen) {
    FormParameters().append({controls_.choiceName, chosen});
}

void SelectionDialog::done(int result) {
    const QString chosen = result == QDialog::Accepted ? SelectedName() : QString();
    if (result == QDialog::Accepted && chosen.isEmpty()) {
        // Enter with nothing selected: nothing to take.
        ThePrompter().Beep();
        return;
    }
    timStartUp_->stop();
    activated_ = false;
    AnswerRefresh(!chosen.isEmpty());
    if (!chosen.isEmpty()) AnswerChoice(chosen);
    QDialog::done(result);
}

}  // namespace winadmin

#pragma once
// The modal lists from which a caller takes one object by name (a server, a
// group). The caller may put its current choice into the form-parameter list
// under the choice's name ("HostName", "GroupName"); the dialog preselects it.
// Confirming a row answers ("Refresh", "-1") and the chosen name under the
// same name; Cancel, Escape and the close box answer ("Refresh", "0") alone.
//
// The list arrives in one call, a moment after the dialog is painted, like
// an editor's record.

#include <QDialog>
#include <QString>
#include <QStringList>
#include <vector>

#include "lists/ListModel.h"

class QAbstractButton;
class QAbstractItemView;
class QTimer;

namespace winadmin {

class SelectionDialog : public QDialog {
    Q_OBJECT

public:
    // Runs the dialog modally with current as the choice to preselect (none
    // when empty); answers the name chosen, or "" when the administrator
    // cancelled.
    QString ExecChoice(const QString& current);

    // The name of the selected row; "" when no row is selected.
    QString SelectedName() const;

    void done(int result) override;

protected:
    // What the dialog needs of its form.
    struct Controls {
        QString choiceName;      // "HostName", "GroupName"
        QStringList columnKeys;  // header label keys; the first column is the name
        QAbstractItemView* list = nullptr;
        QAbstractButton* ok = nullptr;
        QAbstractButton* cancel = nullptr;
        QAbstractButton* find = nullptr;    // optional
        QString findCode = {};              // caller code for the find dialog; "" for none
        const char* helpTopic = "editors";  // the guide's section that F1 shows
    };
    explicit SelectionDialog(QWidget* parent);
    // Called by the dialog's constructor once its form is set up.
    void SetUpSelection(const Controls& controls);

    // The rows to offer, one per object, the name in the first cell.
    // Throws SessionError.
    virtual std::vector<ListRow> FetchRows() = 0;
    // Adds the chosen name to the answer after ("Refresh", "-1").
    virtual void AnswerChoice(const QString& chosen);
    // Fetches the rows again and selects the current choice, else the first.
    void Refill();

    void showEvent(QShowEvent* event) override;

private:
    void StartUp();
    void UpdateOK();
    void ShowFind();

    Controls controls_;
    ListModel* model_;
    QTimer* timStartUp_;
    QString current_;
    bool activated_ = false;
};

}  // namespace winadmin

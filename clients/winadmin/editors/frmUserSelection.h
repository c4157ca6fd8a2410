#pragma once
// The users of one server, from which a caller takes a user: the substitute
// of a user, the administrator's copy and gateway users, a route's user, a
// routing zone's daemon, a scanner's user. The administrator picks the
// server, then the user (Enter or a double click choose; the find dialog
// searches the list with caller code "FUSERSELECTION").
//
// The request is ("HostName", ...) and ("UserName", ...) of the current
// choice, both empty for none; ("NoneAllowed", "0") leaves the "(None)" row
// out. The answer is ("Refresh", "-1") with the chosen ("HostName", ...) and
// ("UserName", ...), both empty for "(None)", or ("Refresh", "0").

#include <QString>
#include <memory>

#include "editors/SelectionDialog.h"

namespace Ui {
class frmUserSelection;
}

namespace winadmin {

class frmUserSelection : public SelectionDialog {
    Q_OBJECT

public:
    explicit frmUserSelection(QWidget* parent = nullptr);
    ~frmUserSelection() override;

    // Shows the dialog modally for the request in the form-parameter list
    // (the user-reference fields' opener).
    static void Open(QWidget* parent);

    // The server whose users are offered.
    QString ChosenHost() const;

protected:
    std::vector<ListRow> FetchRows() override;
    void AnswerChoice(const QString& chosen) override;
    void showEvent(QShowEvent* event) override;

private:
    void FillServers();

    std::unique_ptr<Ui::frmUserSelection> ui;
    QString requestedHost_;
    bool noneAllowed_ = true;
};

}  // namespace winadmin

#pragma once
// The find dialog. It is loaded hidden at start-up and stays loaded, so the
// last search text and options are still there for the next search. Cancel
// only hides it for that reason. It is modeless and stays up after a find, so
// that Find (or Enter) goes on to the next match.

#include <QDialog>
#include <QPointer>
#include <QString>
#include <memory>

#include "lists/Find.h"

namespace Ui {
class frmFind;
}

namespace winadmin {

class frmMain;

class frmFind : public QDialog {
    Q_OBJECT

public:
    // parent is the dialog's home, the window it returns to after it was lent
    // to a modal one (normally the main window).
    explicit frmFind(QWidget* parent = nullptr);
    ~frmFind() override;

    // The find dialog of the session: the one loaded last that still exists.
    static frmFind* Loaded();

    // Shows the dialog for the list of callerCode with its text selected.
    // owner: see ShowFindDialog.
    void ShowFor(const QString& callerCode, QWidget* owner = nullptr);
    // Searches the list of the current caller code with the text and options
    // as they stand.
    bool FindNext();

    QString CallerCode() const { return callerCode_; }
    QString SearchText() const;
    FindOptions Options() const;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    void MoveTo(QWidget* window);
    void ComeHome();

    std::unique_ptr<Ui::frmFind> ui;
    QString callerCode_ = kFindMain;
    QPointer<QWidget> home_;
    QPointer<QWidget> lentTo_;
};

// Registers the main window's list as "FMAIN" and enables its Find (menu and
// toolbar) and Find Next.
void ConnectFind(frmMain& main);

}  // namespace winadmin

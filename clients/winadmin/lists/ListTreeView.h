#pragma once
// The report view of every list of the console (the explorer's details mode,
// the process and event viewers). Columns keep the width the administrator
// gave them, so a long name or comment is cut with an ellipsis; resting the
// pointer on such a cell shows its whole text, and on a cell shown whole
// shows nothing, so the tip never just repeats what is on the screen.

#include <QTreeView>

namespace winadmin {

class ListTreeView : public QTreeView {
    Q_OBJECT

public:
    explicit ListTreeView(QWidget* parent = nullptr);

    // Whether the cell's text needs more room than its column gives it.
    bool IsElided(const QModelIndex& index) const;

protected:
    bool viewportEvent(QEvent* event) override;
};

}  // namespace winadmin

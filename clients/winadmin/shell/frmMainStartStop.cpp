// The list's pop-up menu by what is selected, and the start, stop and
// terminate commands of servers, processes and devices.

#include <QAction>

#include "shell/frmMain.h"

namespace winadmin {

void frmMain::ConnectStartStop() {}

void frmMain::ShowListMenu(const QPoint& position) {
    Q_UNUSED(position);
}

void frmMain::UpdateStartStopItems(QAction* start, QAction* stop) {
    Q_UNUSED(start);
    Q_UNUSED(stop);
}

bool frmMain::StartStopObject(int action) {
    Q_UNUSED(action);
    return false;
}

}  // namespace winadmin

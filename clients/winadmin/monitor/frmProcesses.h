#pragma once
// The process viewer: the process slots of one server with their process
// ids, commands and states, refreshed on a timer (MonitorWindow). It is
// opened from the explorer for a server's "Processes" node or a process row.

#include <memory>

#include "monitor/MonitorWindow.h"

namespace Ui {
class frmProcesses;
}

namespace winadmin {

class frmProcesses : public MonitorWindow {
    Q_OBJECT

public:
    explicit frmProcesses(QWidget* parent = nullptr);
    ~frmProcesses() override;

protected:
    std::vector<ListRow> FetchRows(ServerSession& session, const QString& server) override;
    QString RowIdentity(const ListRow& row) const override;

private:
    std::unique_ptr<Ui::frmProcesses> ui;
};

// Shows the process viewer for the server named by the "HostName" form
// parameter, non-modal. There is one: opening it again switches its server
// and brings it to the front.
void OpenProcessViewer(QWidget* parent);

}  // namespace winadmin

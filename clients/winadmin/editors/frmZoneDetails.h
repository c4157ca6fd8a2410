#pragma once
// The properties of one least-cost-routing zone: served by the local host, by
// a daemon user (user@host), or by a primary server host with an optional
// secondary one. Zones are opened by their place in the routing list; the
// name is the zone's key, typed for a new zone and fixed afterwards.

#include <memory>

#include "editors/RecordEditor.h"
#include "session/Records.h"

namespace Ui {
class frmZoneDetails;
}

namespace winadmin {

class frmZoneDetails : public RecordEditor<ZoneRecord> {
    Q_OBJECT

public:
    explicit frmZoneDetails(QWidget* parent = nullptr);
    ~frmZoneDetails() override;

    static constexpr int kZoneNameLength = 30;

protected:
    bool ReadRequest() override;
    void LoadMore() override;
    void EnableRules() override;
    QString ObjectName() const override;
    ZoneRecord Fetch() override;
    Committed Commit(Action action) override;

private:
    // A click on one of the two boxes: each excludes the other.
    void IsLocalClicked();
    void IsDaemonClicked();
    // The daemon field left with a changed text: it must read user@host.
    void DaemonEdited();
    bool DaemonIsUserAtHost() const;
    // The zone's place in the routing list after a commit.
    int PlaceOf(const QString& name) const;

    std::unique_ptr<Ui::frmZoneDetails> ui;
};

}  // namespace winadmin

#pragma once
// The properties of one inbound route: received messages whose called
// extension and sender identification (TSI) match are delivered to a user
// and a group, and the route can carry a polling request (a document to poll
// from a poll server). User, group and poll server may each be "(None)",
// which the route stores as an empty name.

#include <memory>

#include "editors/RecordEditor.h"
#include "session/Records.h"

namespace Ui {
class frmRouteDetails;
}

namespace winadmin {

class frmRouteDetails : public RecordEditor<RouteRecord> {
    Q_OBJECT

public:
    explicit frmRouteDetails(QWidget* parent = nullptr);
    ~frmRouteDetails() override;

    static constexpr int kRouteNameLength = 10;
    static constexpr int kCommentLength = 30;
    // As long as the server stores it.
    static constexpr int kMatchExtensionLength = 20;
    static constexpr int kMatchTsiLength = 20;
    static constexpr int kPollDocumentLength = 20;
    // From this server level on the polling fields are checked.
    static constexpr int kPollingLevel = 5;

    // What cmdGroupSelection does: the group selection dialog, "(None)"
    // offered; a confirmed choice is shown and counts as a change.
    void ChooseGroup();

protected:
    bool ReadRequest() override;
    RouteRecord Fetch() override;
    Committed Commit(Action action) override;

private:
    std::unique_ptr<Ui::frmRouteDetails> ui;
};

}  // namespace winadmin

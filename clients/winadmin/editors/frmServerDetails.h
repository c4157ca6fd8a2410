#pragma once
// The properties of one message-server host: its comment, the roles it plays
// (user, printer and device server), its network type and its dispatch and
// debug settings. Taking a role away from a stored server deletes the objects
// of that role, after asking, in the same commit.

#include <memory>

#include "editors/RecordEditor.h"
#include "session/ServerSession.h"

namespace Ui {
class frmServerDetails;
}

namespace winadmin {

class frmServerDetails : public RecordEditor<ServerRecord> {
    Q_OBJECT

public:
    explicit frmServerDetails(QWidget* parent = nullptr);
    ~frmServerDetails() override;

    static constexpr int kHostNameLength = 35;
    static constexpr int kCommentLength = 30;
    static constexpr int kCompatibilityLength = 80;

protected:
    void FillFixedLists() override;
    void EnableRules() override;
    Confirmation ConfirmSave(Action action) override;
    ServerRecord Fetch() override;
    Committed Commit(Action action) override;

private:
    bool IsRemoteRpc() const;
    bool HasRole() const;

    std::unique_ptr<Ui::frmServerDetails> ui;
    // The roles whose objects the administrator agreed, for this save, to
    // delete with the server's commit.
    RoleObjectDeletion deletions_;
};

}  // namespace winadmin

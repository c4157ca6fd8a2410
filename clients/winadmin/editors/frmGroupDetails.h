#pragma once
// The properties of one user group: its name, a comment, and its members,
// who are users of any server, shown with their comments as the group
// answers them. The administrator picks a server, and that server's users
// who are not yet members are offered for adding; members are told apart by
// user and host, so equal names on two servers stay two members.

#include <map>
#include <memory>
#include <vector>

#include "editors/RecordEditor.h"
#include "lists/ListModel.h"
#include "session/Records.h"

namespace Ui {
class frmGroupDetails;
}

class QTreeView;

namespace winadmin {

class frmGroupDetails : public RecordEditor<GroupRecord> {
    Q_OBJECT

public:
    explicit frmGroupDetails(QWidget* parent = nullptr);
    ~frmGroupDetails() override;

    static constexpr int kGroupNameLength = 20;
    static constexpr int kCommentLength = 30;

    // A member row's key: "User" + user@host.
    static QString MemberKey(const QString& user, const QString& host);

    // Moves the selected users of the offer list into the group (button
    // cmdMoveToGrp, or a double click in lvSrvUsers).
    void MoveToGroup();
    // Takes the selected members out of the group (button cmdRemoveFromGrp,
    // or a double click in lvGrpMembers).
    void RemoveFromGroup();

protected:
    void FillFixedLists() override;
    void ClearMore() override;
    void LoadMore() override;
    bool WriteMore() override;
    void EnableRules() override;
    GroupRecord Fetch() override;
    Committed Commit(Action action) override;

private:
    // The rows of a server's users, each server asked once per loaded group.
    const std::vector<ListRow>& ServerUsers(const QString& host);
    // Offers the chosen server's users that are not members.
    void FillServerUsers();
    void UpdateRemoveButton();
    static std::vector<int> SelectedRows(const QTreeView* view);

    std::unique_ptr<Ui::frmGroupDetails> ui;
    ListModel* srvUsers_;
    ListModel* members_;
    // Kept in a map: ServerUsers hands out references that must outlive
    // the next insertion.
    std::map<QString, std::vector<ListRow>> usersByHost_;
};

}  // namespace winadmin

#include "editors/frmGroupDetails.h"

#include <QItemSelectionModel>
#include <QSet>
#include <QSignalBlocker>
#include <algorithm>

#include "common/FieldHelpers.h"
#include "common/Labels.h"
#include "session/CallSession.h"
#include "session/RowTable.h"
#include "session/ServerSession.h"
#include "ui_frmGroupDetails.h"

namespace winadmin {

namespace {

const QString kUser = QStringLiteral("User");

ListRow UserRow(const QString& user, const QString& comment, const QString& host) {
    ListRow row;
    row.cells = QStringList{user, comment};
    row.iconKey = kUser;
    row.tag = host;
    row.key = frmGroupDetails::MemberKey(user, host);
    return row;
}

std::vector<ListRow> RowsOf(const ListModel& model) {
    std::vector<ListRow> rows;
    rows.reserve(static_cast<size_t>(model.rowCount()));
    for (int i = 0; i < model.rowCount(); ++i) rows.push_back(model.Row(i));
    return rows;
}

}  // namespace

frmGroupDetails::frmGroupDetails(QWidget* parent)
    : RecordEditor(parent),
      ui(std::make_unique<Ui::frmGroupDetails>()),
      srvUsers_(new ListModel(this)),
      members_(new ListModel(this)) {
    ui->setupUi(this);
    using G = GroupRecord;
    Bind(ui->edtGroupName, ui->lblGroupName, false).KeyField().Text(&G::name, &G::set_name);
    // A group without a comment is refused on purpose.
    Bind(ui->edtComment, ui->lblComment)
        .Filter(kKeyAnyText, kCommentLength)
        .Text(&G::comment, &G::set_comment)
        .Mandatory();
    SetUpFrame({.keyField = ui->edtGroupName,
                .keyLabel = ui->lblGroupName,
                .keyFilter = kKeyNoParentheses,
                .keyMaxLength = kGroupNameLength,
                .details = ui->tabDetails,
                .firstDetail = ui->edtComment,
                .ok = ui->cmdOK,
                .cancel = ui->cmdCancel,
                .remove = ui->cmdDelete,
                .helpTopic = "groups"},
               {QStringLiteral("GroupName"), QStringLiteral("GroupNotExist"),
                QStringLiteral("GroupExist")});

    ui->lvSrvUsers->setModel(srvUsers_);
    ui->lvGrpMembers->setModel(members_);
    for (QTreeView* view : {ui->lvSrvUsers, ui->lvGrpMembers}) {
        view->setEditTriggers(QAbstractItemView::NoEditTriggers);
        view->setSelectionBehavior(QAbstractItemView::SelectRows);
        view->setSelectionMode(QAbstractItemView::ExtendedSelection);
    }
    // The server only chooses what is offered; it is not part of the group.
    connect(ui->cboServer, &QComboBox::currentIndexChanged, this,
            &frmGroupDetails::FillServerUsers);
    connect(ui->cmdMoveToGrp, &QAbstractButton::clicked, this, &frmGroupDetails::MoveToGroup);
    connect(ui->lvSrvUsers, &QAbstractItemView::doubleClicked, this, &frmGroupDetails::MoveToGroup);
    connect(ui->cmdRemoveFromGrp, &QAbstractButton::clicked, this,
            &frmGroupDetails::RemoveFromGroup);
    connect(ui->lvGrpMembers, &QAbstractItemView::doubleClicked, this,
            &frmGroupDetails::RemoveFromGroup);
    connect(ui->lvGrpMembers->selectionModel(), &QItemSelectionModel::selectionChanged, this,
            &frmGroupDetails::UpdateRemoveButton);
    UpdateRemoveButton();
}

frmGroupDetails::~frmGroupDetails() = default;

QString frmGroupDetails::MemberKey(const QString& user, const QString& host) {
    return kUser + FormatUserAtHost(user, host);
}

void frmGroupDetails::FillFixedLists() {
    // Header texts are looked up when the lists are first shown, like every
    // other caption of the form.
    std::vector<ListColumn> columns;
    for (const char* key : {"UserName", "UserComment"}) {
        ListColumn& column = columns.emplace_back();
        column.key = QLatin1String(key);
        column.header = GetLabel(column.key);
    }
    srvUsers_->SetColumns(columns);
    members_->SetColumns(columns);

    std::vector<ServerRecord> servers;
    CallSession([&] { servers = TheSession()->Servers(); });
    const QSignalBlocker quiet(ui->cboServer);
    ui->cboServer->clear();
    for (const ServerRecord& server : servers)
        ui->cboServer->addItem(Text(server.name()), Text(server.name()));
    ui->cboServer->setCurrentIndex(-1);
}

void frmGroupDetails::ClearMore() {
    {
        const QSignalBlocker quiet(ui->cboServer);
        ui->cboServer->setCurrentIndex(-1);
    }
    srvUsers_->SetRows({});
    members_->SetRows({});
    UpdateRemoveButton();
}

void frmGroupDetails::LoadMore() {
    const GroupRecord& group = Kept();
    std::vector<ListRow> members;
    members.reserve(static_cast<size_t>(group.members_size()));
    // The group answers its members' comments with them: opening it costs
    // one call however many users their servers have.
    for (int i = 0; i < group.members_size(); ++i) {
        const UserRefRecord& ref = group.members(i);
        const QString comment =
            i < group.member_comments_size() ? Text(group.member_comments(i)) : QString();
        members.push_back(UserRow(Text(ref.user_name()), comment, Text(ref.host_name())));
    }
    members_->SetRows(std::move(members));
    // No server's users are offered until the administrator picks the
    // server to add from (a server may have a hundred thousand); a reload
    // after a save keeps the one picked.
    FillServerUsers();
    UpdateRemoveButton();
}

bool frmGroupDetails::WriteMore() {
    GroupRecord& group = Edited();
    group.clear_members();
    // The comments are the users'; the server keeps none with the group.
    group.clear_member_comments();
    for (int i = 0; i < members_->rowCount(); ++i) {
        const ListRow& row = members_->Row(i);
        UserRefRecord* ref = group.add_members();
        ref->set_user_name(row.cells.front().toStdString());
        ref->set_host_name(row.tag.toStdString());
    }
    return true;
}

void frmGroupDetails::EnableRules() {
    UpdateRemoveButton();
}

GroupRecord frmGroupDetails::Fetch() {
    // Every load offers the users as they are now.
    usersByHost_.clear();
    return TheSession()->GetGroup(Key());
}

Committed frmGroupDetails::Commit(Action action) {
    ServerSession& session = *TheSession();
    if (action == Delete) {
        session.DeleteGroup(Text(Kept().name()), Kept().version());
        return {};
    }
    return {session.CommitGroup(Edited())};
}

const std::vector<ListRow>& frmGroupDetails::ServerUsers(const QString& host) {
    if (const auto found = usersByHost_.find(host); found != usersByHost_.end())
        return found->second;
    // The users list's own fields (name, comment) are all the offer shows.
    // A failure is reported once; the server then offers nobody instead of
    // being asked again for each of its members.
    RowTable users;
    CallSession([&] { users = TheSession()->UserListRows(host); });
    const auto text = [&](size_t row, int column) {
        const std::string_view cell = users.Cell(row, column);
        return QString::fromUtf8(cell.data(), qsizetype(cell.size()));
    };
    std::vector<ListRow> rows;
    rows.reserve(users.Size());
    for (size_t i = 0; i < users.Size(); ++i) rows.push_back(UserRow(text(i, 0), text(i, 1), host));
    return usersByHost_.emplace(host, std::move(rows)).first->second;
}

void frmGroupDetails::FillServerUsers() {
    const QString host = ui->cboServer->currentData().toString();
    std::vector<ListRow> offered;
    if (!host.isEmpty()) {
        QSet<QString> memberKeys;
        for (int i = 0; i < members_->rowCount(); ++i) memberKeys.insert(members_->Row(i).key);
        for (const ListRow& row : ServerUsers(host))
            if (!memberKeys.contains(row.key)) offered.push_back(row);
    }
    srvUsers_->SetRows(std::move(offered));
}

std::vector<int> frmGroupDetails::SelectedRows(const QTreeView* view) {
    std::vector<int> rows;
    for (const QModelIndex& index : view->selectionModel()->selectedRows())
        rows.push_back(index.row());
    std::sort(rows.begin(), rows.end());
    return rows;
}

void frmGroupDetails::MoveToGroup() {
    const std::vector<int> selected = SelectedRows(ui->lvSrvUsers);
    if (selected.empty()) return;
    std::vector<ListRow> members = RowsOf(*members_);
    std::vector<ListRow> offered;
    auto next = selected.begin();
    for (int i = 0; i < srvUsers_->rowCount(); ++i) {
        if (next != selected.end() && *next == i) {
            ++next;
            members.push_back(srvUsers_->Row(i));
        } else {
            offered.push_back(srvUsers_->Row(i));
        }
    }
    srvUsers_->SetRows(std::move(offered));
    members_->SetRows(std::move(members));
    UpdateRemoveButton();
    MarkModified();
}

void frmGroupDetails::RemoveFromGroup() {
    const std::vector<int> selected = SelectedRows(ui->lvGrpMembers);
    if (selected.empty()) return;
    std::vector<ListRow> members = RowsOf(*members_);
    // Last to first, so that a removal never shifts a row still to go.
    for (auto row = selected.rbegin(); row != selected.rend(); ++row)
        members.erase(members.begin() + *row);
    members_->SetRows(std::move(members));
    // A user of the chosen server is offered again.
    FillServerUsers();
    UpdateRemoveButton();
    MarkModified();
}

void frmGroupDetails::UpdateRemoveButton() {
    ui->cmdRemoveFromGrp->setEnabled(ui->lvGrpMembers->selectionModel() &&
                                     ui->lvGrpMembers->selectionModel()->hasSelection());
}

}  // namespace winadmin

#pragma once
// The properties of one message-server host: its comment, the roles it plays
// (user, printer and device server), its network type and its dispatch and
// debug settings. Taking a role away from a stored server deletes the objects
// of that role, after asking.

#include <memory>

#include "editors/EditorFrame.h"
#include "session/Records.h"

namespace Ui {
class frmServerDetails;
}

namespace winadmin {

class frmServerDetails : public EditorFrame {
    Q_OBJECT

public:
    explicit frmServerDetails(QWidget* parent = nullptr);
    ~frmServerDetails() override;

    static constexpr int kHostNameLength = 35;
    static constexpr int kCommentLength = 30;
    static constexpr int kCompatibilityLength = 80;

protected:
    void FillFixedLists() override;
    void ClearFields() override;
    void LoadFields() override;
    bool WriteFields() override;
    bool ValidateFields() override;
    void EnableRules() override;
    bool ConfirmUpdate() override;
    bool FetchObject(const QString& key) override;
    void ReleaseObject() override;
    void CommitObject(int action) override;

private:
    bool IsRemoteRpc() const;

    std::unique_ptr<Ui::frmServerDetails> ui;
    ServerRecord server_;
    // The roles whose objects the administrator agreed to delete with the
    // next update.
    bool deleteUsers_ = false;
    bool deletePrinters_ = false;
    bool deleteDevices_ = false;
};

}  // namespace winadmin

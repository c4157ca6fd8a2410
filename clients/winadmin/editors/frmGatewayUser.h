#pragma once
// The properties of one gateway user: a mail address known to a mail
// gateway, with the extension that belongs to it. The address is the key
// within its gateway, which the request names ("GatewayAddress").

#include <memory>

#include "editors/EditorFrame.h"
#include "session/Records.h"

namespace Ui {
class frmGatewayUser;
}

namespace winadmin {

class frmGatewayUser : public EditorFrame {
    Q_OBJECT

public:
    explicit frmGatewayUser(QWidget* parent = nullptr);
    ~frmGatewayUser() override;

    static constexpr int kMailAddressLength = 80;
    static constexpr int kExtensionLength = 20;

    QString Gateway() const { return gateway_; }

protected:
    void ReadRequest() override;
    void ClearFields() override;
    void LoadFields() override;
    bool WriteFields() override;
    bool ValidateFields() override;
    bool FetchObject(const QString& key) override;
    void ReleaseObject() override;
    void CommitObject(int action) override;

private:
    std::unique_ptr<Ui::frmGatewayUser> ui;
    QString gateway_;
    GatewayUserRecord user_;
};

}  // namespace winadmin

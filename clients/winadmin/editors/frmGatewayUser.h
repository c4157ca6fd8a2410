#pragma once
// The properties of one gateway user: a mail address known to a mail
// gateway, with the extension that belongs to it. The address is the key
// within its gateway, which the request names ("GatewayAddress").

#include <memory>

#include "editors/RecordEditor.h"
#include "session/Records.h"

namespace Ui {
class frmGatewayUser;
}

namespace winadmin {

class frmGatewayUser : public RecordEditor<GatewayUserRecord> {
    Q_OBJECT

public:
    explicit frmGatewayUser(QWidget* parent = nullptr);
    ~frmGatewayUser() override;

    static constexpr int kMailAddressLength = 80;
    static constexpr int kExtensionLength = 20;

    QString Gateway() const { return gateway_; }

protected:
    bool ReadRequest() override;
    GatewayUserRecord Fetch() override;
    Committed Commit(Action action) override;

private:
    std::unique_ptr<Ui::frmGatewayUser> ui;
    QString gateway_;
};

}  // namespace winadmin

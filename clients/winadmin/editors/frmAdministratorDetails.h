#pragma once
// The installation's own settings, on the explorer's root node: the login
// idle timeout, the users who get a copy of every sent and every received
// message, the mail language, how errors map to busy, the SMTP gateway user,
// the block sizes of address-book and journal transfers, compatibility and
// the switch that turns least-cost routing off. There is one such record, so
// the dialog has no key, is never new and deletes nothing. It also changes
// the administrator's password.

#include <memory>

#include "editors/RecordEditor.h"
#include "session/Records.h"

namespace Ui {
class frmAdministratorDetails;
}

namespace winadmin {

class frmAdministratorDetails : public RecordEditor<AdminSettingsRecord> {
    Q_OBJECT

public:
    explicit frmAdministratorDetails(QWidget* parent = nullptr);
    ~frmAdministratorDetails() override;

    static constexpr int kNumberLength = 10;
    static constexpr int kMailLanguageLength = 20;
    static constexpr int kTextLength = 80;

    // The word the server stores for mail through its own SMTP service; the
    // field shows the label text of that word instead.
    static const QString kSmtpNative;

    // cmdChangePassword: asks for the new password twice and sets it.
    void ChangePassword();

protected:
    AdminSettingsRecord Fetch() override;
    Committed Commit(Action action) override;

private:
    // The SMTP gateway user as stored: "SMTPnative", "" for none, else the
    // text as typed.
    QString StoredSmtpUser() const;
    bool CheckSmtpUser();

    std::unique_ptr<Ui::frmAdministratorDetails> ui;
};

}  // namespace winadmin

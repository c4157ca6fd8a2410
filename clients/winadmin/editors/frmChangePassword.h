#pragma once
// The new password, typed twice. The two entries must match before anything
// is answered, so a mistyped password never reaches the server. Enter in a
// field moves on like Tab; OK with matching entries answers
// ("PasswordChanged", "-1") and ("NewPassword", the entry), Cancel answers
// ("PasswordChanged", "0").

#include <QDialog>
#include <functional>
#include <memory>
#include <optional>

namespace Ui {
class frmChangePassword;
}

namespace winadmin {

class frmChangePassword : public QDialog {
    Q_OBJECT

public:
    explicit frmChangePassword(QWidget* parent = nullptr);
    ~frmChangePassword() override;

    // Runs the dialog modally; answers the confirmed new password, or
    // nothing when the administrator cancelled.
    static std::optional<QString> AskNewPassword(QWidget* parent);
    // Asks for the new password and hands it to setPassword through the
    // session (a refusal is shown there); once it is set, tells so with
    // "NewPasswordSet", titled as parent. Answers whether it was set.
    static bool ChangePassword(QWidget* parent,
                               const std::function<void(const QString&)>& setPassword);

    void accept() override;
    void reject() override;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;

private:
    std::unique_ptr<Ui::frmChangePassword> ui;
};

}  // namespace winadmin

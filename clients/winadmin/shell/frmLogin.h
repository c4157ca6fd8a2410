#pragma once
// The login dialog: creates the one server session, asks for host and
// password and opens the session. The start-up routine shows it modally and
// reads LoginResult afterwards.

#include <QDialog>
#include <functional>
#include <memory>

#include "session/ServerSession.h"

class QLineEdit;

namespace Ui {
class frmLogin;
}

namespace winadmin {

class frmLogin : public QDialog {
    Q_OBJECT

public:
    using SessionFactory = std::function<std::unique_ptr<ServerSession>()>;

    // Loads the dialog: creates the session, applies the labels and puts the
    // remembered host into the host field.
    explicit frmLogin(QWidget* parent = nullptr);
    ~frmLogin() override;

    // True only after the whole login sequence ran, up to hiding the dialog.
    bool LoginResult() const { return loginResult_; }

    // How the dialog creates the session. The program's session connects to
    // whatever host is typed; tests hand out sessions on an embedded server's
    // channel. An empty factory restores the program's one.
    static void SetSessionFactory(SessionFactory factory);

private:
    // What the OK handler does after a step failed.
    enum class AfterError { Repeat, Continue, Stop };

    void Form_Load();
    void cmdOK_Click();
    void cmdCancel_Click();

    // Runs one step of the OK sequence, treating its errors as the login
    // does. Answers false when the handler has to end.
    bool RunStep(const std::function<void()>& step);
    AfterError TreatError(uint32_t number, const QString& description, const QString& source);
    void ShowLoginRefusal(uint32_t number, const QString& description, const QString& source);
    static void SelectWhole(QLineEdit* field);

    std::unique_ptr<Ui::frmLogin> ui;
    bool loginResult_ = false;
};

}  // namespace winadmin

// The administrator settings and the password dialog, driven through their
// controls against the demo installation.

#include <QComboBox>
#include <QLineEdit>
#include <QTest>

#include "common/Labels.h"
#include "editors/frmAdministratorDetails.h"
#include "session/ServerSession.h"
#include "session/SessionError.h"
#include "store/Store.h"
#include "support/EditorDriver.h"
#include "support/EditorLifecycle.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

using AdminEditor = ShownEditor<frmAdministratorDetails>;

const FormParameterList kOpen = {{QStringLiteral("Administrator"), QString()}};

}  // namespace

class TestAdminEditor : public ExplorerSuite {
    Q_OBJECT

private slots:
    void Lifecycle();
    void LoadsTheServersChoices();
    void SmtpGatewayUserAsShownAndAsStored();
    void PasswordEntriesMustMatchBeforeAnythingIsSent();
    void PasswordChangeEndsTheOtherConsolesSession();
};

void TestAdminEditor::Lifecycle() {
    LifecycleSubject subject;
    subject.make = [] { return std::make_unique<frmAdministratorDetails>(); };
    subject.open = kOpen;
    subject.edit = TypeCounted("edtMailLanguageIdentifier", QStringLiteral("lang"));
    subject.storedVersion = [this] { return Store().GetAdminSettings().version(); };
    CheckLifecycle(subject, fx_->prompter);
}

void TestAdminEditor::LoadsTheServersChoices() {
    AdminEditor editor(kOpen);
    // The list holds the server's choices by their label texts; the stored
    // code (the second choice) is selected, and another choice is saved.
    auto* busy = editor.Field<QComboBox>("cboMapErrorToBusy");
    QCOMPARE(busy->count(), Store().GetAdminSettings().map_error_choices_size());
    QCOMPARE(busy->currentText(), GetLabel(QStringLiteral("MapErrorNoAnswer")));
    busy->setCurrentIndex(2);
    editor.ExpectOK(fx_->prompter, {});
    QCOMPARE(Store().GetAdminSettings().map_error_to_busy(), 2);
}

void TestAdminEditor::SmtpGatewayUserAsShownAndAsStored() {
    {
        // A typed user needs its host.
        AdminEditor editor(kOpen);
        editor.Type("edtSMTPGwUsr", QStringLiteral("helpdesk"));
        editor.ExpectOK(fx_->prompter, GetLabel(QStringLiteral("ProvideUser@Host")),
                        QStringLiteral("edtSMTPGwUsr"));
    }
    // The server's word is shown as its label text and stored as the word.
    const QString native = GetLabel(QStringLiteral("SMTPnative"));
    {
        AdminEditor editor(kOpen);
        editor.Type("edtSMTPGwUsr", native);
        editor.ExpectOK(fx_->prompter, {});
    }
    QCOMPARE(Store().GetAdminSettings().smtp_gateway_user(), std::string("SMTPnative"));
    AdminEditor again(kOpen);
    QCOMPARE(again.Field("edtSMTPGwUsr")->text(), native);
}

void TestAdminEditor::PasswordEntriesMustMatchBeforeAnythingIsSent() {
    const std::string hash = Store().GetMeta("admin_password_hash");
    AdminEditor editor(kOpen);
    // A mismatch is told and stays in the dialog; nothing reaches the server.
    fx_->prompter.Answer(Answer::OK);
    WhenAskedForPassword(QStringLiteral("new secret 1"), QStringLiteral("new secret 2"));
    editor.Click("cmdChangePassword");
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("IncorrectConfirmPassword")));
    QCOMPARE(Store().GetMeta("admin_password_hash"), hash);
}

void TestAdminEditor::PasswordChangeEndsTheOtherConsolesSession() {
    std::unique_ptr<ServerSession> other = fx_->server->Login();
    AdminEditor editor(kOpen);
    fx_->prompter.Answer(Answer::OK);
    WhenAskedForPassword(QStringLiteral("a longer secret"), QStringLiteral("a longer secret"));
    editor.Click("cmdChangePassword");
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("NewPasswordSet")));
    // This console goes on. The other one's login with the password it knew
    // is refused: it asks for the current one, and a cancel leaves the
    // refusal; the new password logs it in again.
    QVERIFY(TheSession()->Servers().size() > 0);
    fx_->prompter.AnswerPassword(std::nullopt);
    try {
        other->Servers();
        QFAIL("the other console's session outlived the password change");
    } catch (const SessionError& error) {
        QCOMPARE(error.Number(), 0x80070005u);
    }
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("LoginAgain")));
    fx_->prompter.AnswerPassword(QStringLiteral("wrong guess"));
    fx_->prompter.AnswerPassword(QStringLiteral("a longer secret"));
    QVERIFY(other->Servers().size() > 0);
    QCOMPARE(fx_->prompter.UnusedAnswers(), 0);
}

QTEST_MAIN(TestAdminEditor)
#include "tst_admineditor.moc"

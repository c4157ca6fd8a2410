// The administrator settings, the password dialog and the user selection,
// driven through their controls against the demo installation.

#include <QComboBox>
#include <QLineEdit>
#include <QPushButton>
#include <QTest>
#include <QToolButton>
#include <QTreeView>

#include "common/FormParameters.h"
#include "common/Labels.h"
#include "common/UserReferenceField.h"
#include "editors/frmAdministratorDetails.h"
#include "editors/frmUserSelection.h"
#include "lists/Find.h"
#include "lists/ListModel.h"
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

// Waits for the user selection to list its users, then lets act choose.
void WhenUsersListed(std::function<void(frmUserSelection&, QTreeView&)> act) {
    WhenShown<frmUserSelection>([act](frmUserSelection& dialog) {
        auto* list = Child<QTreeView>(dialog, "lvUsers");
        QTRY_VERIFY(list->model()->rowCount() > 0);
        act(dialog, *list);
    });
}

int RowNamed(QTreeView& list, const QString& name) {
    return static_cast<const ListModel*>(list.model())->FindText(name);
}

}  // namespace

class TestAdminEditor : public ExplorerSuite {
    Q_OBJECT

private slots:
    void Lifecycle();
    void LoadsTheServersChoices();
    void ValidationOrderAndBounds_data();
    void ValidationOrderAndBounds();
    void SmtpGatewayUserAsShownAndAsStored();
    void CopyUsersChosenThroughTheSelection();
    void PasswordEntriesMustMatchBeforeAnythingIsSent();
    void PasswordChangeEndsTheOtherConsolesSession();
    void SelectionOffersTheChosenServersUsersAndNone();
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
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    QCOMPARE(Store().GetAdminSettings().map_error_to_busy(), 2);
}

void TestAdminEditor::ValidationOrderAndBounds_data() {
    QTest::addColumn<QStringList>("typed");  // address book, journal, idle timeout, gateway user
    QTest::addColumn<QString>("field");      // the field the first failure focuses; "" saves
    QTest::addColumn<bool>("empty");         // the mandatory message rather than the range one
    const auto row = [](const char* name, QStringList typed, const char* field, bool empty) {
        QTest::newRow(name) << typed << QString(field) << empty;
    };
    const char* ok = "helpdesk@fxmaster";
    // Every field wrong: the block sizes come first.
    row("all wrong", {"1", "0", "", "helpdesk"}, "edtAddressBookBlocksize", false);
    row("idle empty", {"2", "2", "", "helpdesk"}, "edtLoginIdleTimeout", true);
    row("idle too big", {"2", "2", "2147483648", ok}, "edtLoginIdleTimeout", false);
    row("gateway without @", {"2", "2", "0", "helpdesk"}, "edtSMTPGwUsr", false);
    row("largest values", {"2147483647", "2147483647", "2147483647", ok}, "", false);
}

void TestAdminEditor::ValidationOrderAndBounds() {
    QFETCH(QStringList, typed);
    QFETCH(QString, field);
    QFETCH(bool, empty);
    AdminEditor editor(kOpen);
    const char* fields[] = {"edtAddressBookBlocksize", "edtJournalBlocksize", "edtLoginIdleTimeout",
                            "edtSMTPGwUsr"};
    for (int i = 0; i < 4; ++i) editor.Type(fields[i], typed[i]);
    const int64_t before = Store().GetAdminSettings().version();
    if (!field.isEmpty()) fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdOK");
    if (field.isEmpty()) {
        QVERIFY(!editor.dialog.isVisible());
        const auto saved = Store().GetAdminSettings();
        QCOMPARE(QString::number(saved.address_book_blocksize()), typed[0]);
        QCOMPARE(QString::number(saved.login_idle_timeout()), typed[2]);
        return;
    }
    const QString text = fx_->prompter.LastPrompt().text;
    if (field == QLatin1String("edtSMTPGwUsr"))
        QCOMPARE(text, GetLabel(QStringLiteral("ProvideUser@Host")));
    else
        QCOMPARE(text.contains(GetLabel(QStringLiteral("CannotBeEmpty"))), empty);
    // A number field with spin arrows has the focus through its spin box.
    QWidget* focused = QApplication::focusWidget();
    QWidget* expected = editor.Field(field.toLatin1().constData());
    QVERIFY(focused == expected || focused->isAncestorOf(expected));
    QCOMPARE(Store().GetAdminSettings().version(), before);
}

void TestAdminEditor::SmtpGatewayUserAsShownAndAsStored() {
    // The server's word is shown as its label text and stored as the word;
    // no user is shown as "(None)" and stored as nothing.
    const QString native = GetLabel(QStringLiteral("SMTPnative"));
    for (const auto& [typed, stored] :
         {std::pair(native, std::string("SMTPnative")), std::pair(QString(), std::string())}) {
        {
            AdminEditor editor(kOpen);
            editor.Type("edtSMTPGwUsr", typed);
            editor.Click("cmdOK");
            QVERIFY(!editor.dialog.isVisible());
        }
        QCOMPARE(Store().GetAdminSettings().smtp_gateway_user(), stored);
        AdminEditor again(kOpen);
        QCOMPARE(again.Field("edtSMTPGwUsr")->text(),
                 stored.empty() ? GetLabel(QStringLiteral("(None)")) : native);
    }
}

void TestAdminEditor::CopyUsersChosenThroughTheSelection() {
    AdminEditor editor(kOpen);
    auto* send = editor.Field<UserReferenceField>("edtSendCopyUser");
    // The selection starts at the current choice, on its server.
    WhenUsersListed([](frmUserSelection& dialog, QTreeView& list) {
        QCOMPARE(dialog.ChosenHost(), QStringLiteral("fxmaster"));
        QCOMPARE(list.currentIndex().row(), RowNamed(list, QStringLiteral("accounts")));
        ClickRow(&list, RowNamed(list, QStringLiteral("mweber")), {}, true);
    });
    QTest::mouseClick(send->Chooser(), Qt::LeftButton);
    QCOMPARE(editor.dialog.State(), EditorState::Changed);
    // "(None)" takes the receive copy user away; Enter chooses.
    WhenUsersListed([](frmUserSelection&, QTreeView& list) {
        ClickRow(&list, 0);
        QTest::keyClick(&list, Qt::Key_Return);
    });
    editor.Field<UserReferenceField>("edtReceiveCopyUser")->Chooser()->click();
    editor.Click("cmdOK");
    const auto saved = Store().GetAdminSettings();
    QCOMPARE(saved.send_copy_user().user_name() + '@' + saved.send_copy_user().host_name(),
             std::string("mweber@fxmaster"));
    QVERIFY(saved.receive_copy_user().user_name().empty());
    QVERIFY(saved.receive_copy_user().host_name().empty());
}

void TestAdminEditor::PasswordEntriesMustMatchBeforeAnythingIsSent() {
    const std::string hash = Store().GetMeta("admin_password_hash");
    AdminEditor editor(kOpen);
    // A mismatch is told and stays in the dialog; nothing reaches the server.
    fx_->prompter.Answer(Answer::OK);
    WhenAskedForPassword(QStringLiteral("new secret 1"), QStringLiteral("new secret 2"));
    editor.Click("cmdChangePassword");
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("IncorrectConfirmPassword")));
    // Cancel after matching entries sends nothing either.
    WhenAskedForPassword(QStringLiteral("new secret 1"), QStringLiteral("new secret 1"), true);
    editor.Click("cmdChangePassword");
    QCOMPARE(Store().GetMeta("admin_password_hash"), hash);
    QCOMPARE(fx_->prompter.Prompts().size(), 1);
}

void TestAdminEditor::PasswordChangeEndsTheOtherConsolesSession() {
    std::unique_ptr<ServerSession> other = fx_->server->Login();
    AdminEditor editor(kOpen);
    // Too short: the server's refusal is shown and the old password holds.
    fx_->prompter.Answer(Answer::OK);
    WhenAskedForPassword(QStringLiteral("short"), QStringLiteral("short"));
    editor.Click("cmdChangePassword");
    QVERIFY(fx_->prompter.LastPrompt().text.contains(QStringLiteral("at least 8")));
    QVERIFY(other->Servers().size() > 0);

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

void TestAdminEditor::SelectionOffersTheChosenServersUsersAndNone() {
    // Opened for a user of another server, with "(None)" not allowed.
    SetFormParameters({{QStringLiteral("HostName"), QStringLiteral("fxsales")},
                       {QStringLiteral("UserName"), QString()},
                       {QStringLiteral("NoneAllowed"), QStringLiteral("0")}});
    WhenUsersListed([](frmUserSelection& dialog, QTreeView& list) {
        const auto& model = *static_cast<const ListModel*>(list.model());
        QCOMPARE(dialog.ChosenHost(), QStringLiteral("fxsales"));
        QVERIFY(model.FindText(GetLabel(QStringLiteral("(None)"))) < 0);
        // Only servers with users are offered: fxprint01 has none.
        auto* servers = Child<QComboBox>(dialog, "cboServer");
        QCOMPARE(servers->findText("fxprint01"), -1);
        // Another server offers its own users.
        servers->setCurrentIndex(servers->findText("fxmaster"));
        QTRY_VERIFY(model.FindText(QStringLiteral("mweber")) >= 0);
        // The find command searches this list under its own caller code;
        // OK takes the row it found.
        QVERIFY(PressFind(kFindUserSelection, QStringLiteral("Assistant to MD"), {}));
        QCOMPARE(list.currentIndex().row(), model.FindText(QStringLiteral("nkoch")));
        QTest::mouseClick(Child<QPushButton>(dialog, "cmdOK"), Qt::LeftButton);
    });
    frmUserSelection::Open(nullptr);
    QVERIFY(AnsweredRefresh());
    QCOMPARE(FormParameterValue(QStringLiteral("HostName")), QStringLiteral("fxmaster"));
    QCOMPARE(FormParameterValue(QStringLiteral("UserName")), QStringLiteral("nkoch"));
}

QTEST_MAIN(TestAdminEditor)
#include "tst_admineditor.moc"

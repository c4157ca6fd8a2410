// The user editor, driven through its pages against the demo installation:
// its pages written and read back, its checks, references the server no
// longer has, the extras list and the password.

#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QScopeGuard>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>

#include "common/FormParameters.h"
#include "common/Labels.h"
#include "common/Pages.h"
#include "common/UserReferenceField.h"
#include "editors/frmUserDetails.h"
#include "store/Store.h"
#include "support/EditorDriver.h"
#include "support/EditorLifecycle.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

const QString kMaster = QStringLiteral("fxmaster");
using UserEditor = ShownEditor<frmUserDetails>;

FormParameterList Open(const QString& user, const QString& host = kMaster) {
    return {{QStringLiteral("UserName"), user}, {QStringLiteral("HostName"), host}};
}
FormParameterList New(const QString& host = kMaster) {
    return {{QStringLiteral("New"), QString()}, {QStringLiteral("HostName"), host}};
}

// The user selection as the real dialog answers a confirmed choice.
struct ChosenUser {
    static void Open(QWidget*) {
        SetFormParameters({{QStringLiteral("Refresh"), QStringLiteral("-1")},
                           {QStringLiteral("HostName"), QStringLiteral("fxsales")},
                           {QStringLiteral("UserName"), QStringLiteral("lroux")}});
    }
};

}  // namespace

class TestUserEditor : public ExplorerSuite {
    Q_OBJECT

private slots:
    void Lifecycle();
    void NewUserReadsBackAsSaved();
    void ChecksInOrderAndBounds();
    void VanishedScannerAndPrinterShowNone();
    void ExtrasAndPasswordKeepTheEdits();
};

void TestUserEditor::Lifecycle() {
    CheckLifecycle(
        {.make = [] { return std::make_unique<frmUserDetails>(); },
         .open = Open(QStringLiteral("jmueller")),
         .missing = Open(QStringLiteral("jmueller"), QStringLiteral("fxsales")),
         .notExistText = GetLabel(QStringLiteral("UserNotExist")),
         .missingServer = New(QStringLiteral("nosuchhost")),
         .create = New(),
         .keyField = "edtUserName",
         .takenKey = QStringLiteral("abecker"),
         .existsText = GetLabel(QStringLiteral("UserExist")),
         .edit = TypeCounted("edtComment", QStringLiteral("Edit ")),
         .storedVersion = [this] { return Store().GetUser("fxmaster", "jmueller").version(); }},
        fx_->prompter);
}

void TestUserEditor::NewUserReadsBackAsSaved() {
    const auto restore = qScopeGuard([] { SetUserSelectionOpener(nullptr); });
    SetUserSelectionOpener(&ChosenUser::Open);
    // A sample of each kind of control, on several pages.
    QStringList typed = QStringLiteral(
                            "edtComment=Night shift, building C;edtAdminPriority=32000;"
                            "optResolutionHalftone=1;chkKeepCopy=1;cboPrinter=lj-acc;"
                            "edtMailAddress=night@example.com;chkMailIfSendFailed=1;"
                            "edtPaper9=99;edtDefault=2147483647")
                            .split(u';');
    typed << "cboScanner=" + QString::fromStdString(Store().ListScanners("fxmaster").back());
    {
        UserEditor editor(New());
        editor.Type("edtUserName", QStringLiteral("nightshift99"));
        QCOMPARE(editor.Field("edtUserName")->text(), QStringLiteral("nightshift"));
        editor.Key("edtUserName", Qt::Key_Return);
        // Only a stored user has a password to set.
        QVERIFY(!editor.Enabled("cmdChangePassword"));
        for (const QString& assignment : typed) editor.Set(assignment);
        ShowPageOf(editor.Field<QWidget>("edtSubstitute"));
        editor.Click("cmdSubstitute");
        editor.ExpectOK(fx_->prompter, {});
    }
    // What the fields do not show as such: the option's code, the reference.
    const UserRecord stored = Store().GetUser("fxmaster", "nightshift");
    QCOMPARE(stored.resolution(), 2);
    QCOMPARE(stored.substitute().user_name() + "@" + stored.substitute().host_name(),
             std::string("lroux@fxsales"));

    UserEditor editor(Open(QStringLiteral("nightshift")));
    for (const QString& assignment : typed) {
        const QString name = assignment.section(u'=', 0, 0);
        QCOMPARE(name + '=' + EditorDriver::Shown(editor.Field<QWidget>(qPrintable(name))),
                 assignment);
    }
}

void TestUserEditor::ChecksInOrderAndBounds() {
    // tschmidt mails on new messages and has neither print nor signal actions.
    UserEditor editor(Open(QStringLiteral("tschmidt")));
    auto* pages = editor.Field<QTabWidget>("tabDetails");
    // Each step fixes what the last refusal named; a refusal brings the
    // field's page to the front, whichever was shown.
    const auto refused = [&](const QStringList& edits, const QString& message, const char* page,
                             const char* field) {
        for (const QString& edit : edits) editor.Set(edit);
        pages->setCurrentWidget(editor.Field<QWidget>("tabExtras"));
        editor.ExpectOK(fx_->prompter, message, QLatin1String(field));
        QCOMPARE(pages->currentWidget()->objectName(), QLatin1String(page));
    };
    refused({"edtPriority=101", "edtMailAddress=", "edtComment="}, EmptyMessage("Comment"),
            "tabGeneral", "edtComment");
    refused({"edtComment=Tom Schmidt"}, RangeMessage("Priority", "1", "100"), "tabSend",
            "edtPriority");
    refused({"edtPriority=100"}, EmptyMessage("Mail Address"), "tabActions", "edtMailAddress");
    // Without mail no address; a light needs a number (a printer for print
    // actions: VanishedScannerAndPrinterShowNone).
    refused({"chkMailIfNewReceived=0", "chkLightIfSendFailed=1", "edtDefault="},
            EmptyMessage("Phone Signal Number"), "tabActions", "edtPhoneSignalNr");
    refused({"chkLightIfSendFailed=0", "edtDefault=2147483648"},
            RangeMessage("Default", "0", "2147483647"), "tabBackground", "edtDefault");
    for (const char* bound : {"edtDefault=0", "edtPaper1=0", "edtPaper9=2147483647"})
        editor.Set(QLatin1String(bound));
    editor.ExpectOK(fx_->prompter, {});
    QCOMPARE(Store().GetUser("fxmaster", "tschmidt").background_paper(8), 2147483647);
}

void TestUserEditor::VanishedScannerAndPrinterShowNone() {
    // rschulz scans and prints on lj-acc; both go while nobody looks. The
    // server refuses to delete a printer that users print on, so the
    // printer goes as only a store of an older release can have lost it.
    const UserRecord before = Store().GetUser("fxmaster", "rschulz");
    Store().DeleteDevice("fxmaster", before.scanner());
    fx_->server->RunSqlBehindTheServer("DELETE FROM printers WHERE name = 'lj-acc'");
    fx_->prompter.Answer({Answer::OK, Answer::OK});
    UserEditor editor(Open(QStringLiteral("rschulz")));
    const auto& prompts = fx_->prompter.Prompts();
    QCOMPARE(prompts.size(), 2);
    QCOMPARE(prompts[0].prompt.text, GetLabel(QStringLiteral("ScannerNotExist")));
    QCOMPARE(prompts[1].prompt.text, GetLabel(QStringLiteral("PrinterNotExist")));
    const QString none = GetLabel(QStringLiteral("(None)"));
    QCOMPARE(editor.Field<QComboBox>("cboScanner")->currentText(), none);
    QCOMPARE(editor.Field<QComboBox>("cboPrinter")->currentText(), none);
    QCOMPARE(editor.dialog.State(), EditorState::Shown);
    // Its print actions now lack a printer; without them it saves, and the
    // gone names are no longer stored.
    editor.Type("edtComment", QStringLiteral("Rita Schulz, HR"));
    editor.ExpectOK(fx_->prompter, GetLabel(QStringLiteral("PrinterNotChoosed")));
    for (const char* box : {"chkPrintIfNewReceived=0", "chkPrintIfSendFailed=0"}) editor.Set(box);
    editor.ExpectOK(fx_->prompter, {});
    const UserRecord after = Store().GetUser("fxmaster", "rschulz");
    QVERIFY(after.scanner().empty() && after.printer().empty());
}

void TestUserEditor::ExtrasAndPasswordKeepTheEdits() {
    QVERIFY(!Store().GetUser("fxmaster", "jmueller").password_set());
    UserEditor editor(Open(QStringLiteral("jmueller")));
    ShowPageOf(editor.Field<QWidget>("ListView1"));
    // A pair needs a name; asking changes nothing.
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdSet");
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("NoItem")));
    QCOMPARE(editor.dialog.State(), EditorState::Shown);
    editor.Select("ListView1", {QStringLiteral("language")});
    QCOMPARE(editor.Field("edtValue")->text(), QStringLiteral("de"));
    editor.Type("edtValue", QStringLiteral("en"));
    editor.Click("cmdSet");
    editor.Type("edtName", QStringLiteral("fax header"));
    editor.Type("edtValue", QStringLiteral("Accounts, room 104"));
    editor.Click("cmdSet");
    // Remove needs a row; it asks, and No keeps it.
    editor.Field<QTreeView>("ListView1")->clearSelection();
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdDelete");
    QCOMPARE(fx_->prompter.LastPrompt().title, GetLabel(QStringLiteral("Remove Error")));
    editor.Select("ListView1", {QStringLiteral("costcenter")});
    fx_->prompter.Answer({Answer::No, Answer::Yes});
    editor.Click("cmdDelete");
    QVERIFY(fx_->prompter.LastPrompt().text.endsWith(QLatin1String("'costcenter'")));
    QCOMPARE(editor.Names("ListView1").size(), 3);
    editor.Click("cmdDelete");

    // The export writes the list as shown, unsaved changes and all.
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("extras.txt"));
    fx_->prompter.AnswerFileName(file);
    editor.Click("cmdExport");
    QFile exported(file);
    QVERIFY(exported.open(QIODevice::ReadOnly));
    QCOMPARE(exported.readAll(), QByteArray("language en\nfax header Accounts, room 104\n"));

    // A password is set at once; the edits made before still save over it.
    // Entries that differ are the dialog's to refuse (tst_admineditor).
    fx_->prompter.Answer(Answer::OK);
    WhenAskedForPassword(QStringLiteral("Harbour-Light-42"), QStringLiteral("Harbour-Light-42"));
    editor.Click("cmdChangePassword");
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("NewPasswordSet")));
    QVERIFY(Store().GetUser("fxmaster", "jmueller").password_set());
    editor.ExpectOK(fx_->prompter, {});
    const UserRecord stored = Store().GetUser("fxmaster", "jmueller");
    QCOMPARE(stored.extras_size(), 2);
    QCOMPARE(stored.extras(1).value(), std::string("Accounts, room 104"));
    QVERIFY(stored.password_set());
}

QTEST_MAIN(TestUserEditor)
#include "tst_usereditor.moc"

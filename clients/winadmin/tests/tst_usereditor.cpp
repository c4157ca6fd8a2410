// The user editor, driven through its pages against the demo installation:
// every page written and read back, the order of its checks, references the
// server no longer has, the extras list and the password.

#include <QAbstractButton>
#include <QApplication>
#include <QComboBox>
#include <QFile>
#include <QLineEdit>
#include <QScopeGuard>
#include <QTabWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QTreeView>

#include "common/FieldHelpers.h"
#include "common/FormParameters.h"
#include "common/Labels.h"
#include "common/Pages.h"
#include "common/UserReferenceField.h"
#include "editors/frmUserDetails.h"
#include "shell/ObjectEditors.h"
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
        asked = FormParameters();
        SetFormParameters({{QStringLiteral("Refresh"), QStringLiteral("-1")},
                           {QStringLiteral("HostName"), QStringLiteral("fxsales")},
                           {QStringLiteral("UserName"), QStringLiteral("lroux")}});
    }
    static inline FormParameterList asked;
};

}  // namespace

class TestUserEditor : public ExplorerSuite {
    Q_OBJECT

private slots:
    void Lifecycle();
    void NewUserOnEveryPageReadsBackAsSaved();
    void ValidationOrderAndBounds_data();
    void ValidationOrderAndBounds();
    void VanishedScannerAndPrinterShowNone();
    void ExtrasSetChangeDeleteExport();
    void PasswordSetKeepsTheEdits();
};

void TestUserEditor::Lifecycle() {
    LifecycleSubject subject;
    subject.make = [] { return std::make_unique<frmUserDetails>(); };
    subject.open = Open(QStringLiteral("jmueller"));
    subject.missing = Open(QStringLiteral("jmueller"), QStringLiteral("fxsales"));
    subject.notExistText = GetLabel(QStringLiteral("UserNotExist"));
    subject.missingServer = New(QStringLiteral("nosuchhost"));
    subject.create = New();
    subject.keyField = "edtUserName";
    subject.takenKey = QStringLiteral("abecker");
    subject.existsText = GetLabel(QStringLiteral("UserExist"));
    int edits = 0;
    subject.edit = [&edits](EditorDriver& editor) {
        editor.Type("edtComment", QStringLiteral("Edit %1").arg(++edits));
    };
    subject.storedVersion = [this] { return Store().GetUser("fxmaster", "jmueller").version(); };
    CheckLifecycle(subject, fx_->prompter);
}

void TestUserEditor::NewUserOnEveryPageReadsBackAsSaved() {
    const auto restore = qScopeGuard([] { SetUserSelectionOpener(nullptr); });
    SetUserSelectionOpener(&ChosenUser::Open);
    const QString scanner = QString::fromStdString(Store().ListScanners("fxmaster").back());
    QStringList typed = QStringLiteral(
                            "edtComment=Night shift, building C;edtAdminPriority=32000;"
                            "edtBarCode=EXI424242;edtCPI=CPI-7;edtPinCode=0815;"
                            "edtHeadlines=Night shift;edtPriority=100;edtTSI=+49 89 5550 9999;"
                            "optResolutionHalftone=1;chkKeepCopy=1;cboPrinter=lj-acc;"
                            "edtMailAddress=night@example.com;edtPhoneSignalNr=2999;"
                            "edtDefault=2147483647")
                            .split(u';');
    typed << "cboScanner=" + scanner;
    for (const char* action : {"Mail", "Print", "Light", "Voice"})
        for (const char* event : {"NewReceived", "SendFailed", "SendSucceded"})
            typed << QStringLiteral("chk%1If%2=1").arg(QLatin1String(action), QLatin1String(event));
    for (int paper = 1; paper <= frmUserDetails::kPaperCount; ++paper)
        typed << QStringLiteral("edtPaper%1=%2").arg(paper).arg(paper * 11);
    {
        UserEditor editor(New());
        QVERIFY(editor.dialog.windowTitle().endsWith(QLatin1String("(fxmaster)")));
        // No parentheses, ten characters at most.
        editor.Type("edtUserName", QStringLiteral("(night)shift99"));
        QCOMPARE(editor.Field("edtUserName")->text(), QStringLiteral("nightshift"));
        editor.Key("edtUserName", Qt::Key_Return);
        QCOMPARE(editor.dialog.State(), EditorState::NewObject);
        QCOMPARE(editor.Field("edtAdminPriority")->text(), QStringLiteral("100"));
        // Only a stored user has a password to set.
        QVERIFY(!editor.Field<QAbstractButton>("cmdChangePassword")->isEnabled());
        for (const QString& assignment : typed) editor.Set(assignment);
        auto* substitute = editor.Field<UserReferenceField>("edtSubstitute");
        ShowPageOf(substitute);
        editor.Click("cmdSubstitute");
        QCOMPARE(substitute->text(), QStringLiteral("lroux@fxsales"));
        for (const char* extra : {"edtName=costcenter", "edtValue=4711"}) editor.Set(extra);
        editor.Click("cmdSet");
        editor.Click("cmdOK");
        QVERIFY(!editor.dialog.isVisible());
        QCOMPARE(editor.Answer(), QStringLiteral("-1"));
    }
    // What the fields do not show as such: the option's code, the
    // reference, the nine papers and the pairs.
    const UserRecord stored = Store().GetUser("fxmaster", "nightshift");
    QCOMPARE(stored.resolution(), 2);
    QCOMPARE(stored.substitute().user_name() + "@" + stored.substitute().host_name(),
             std::string("lroux@fxsales"));
    QCOMPARE(stored.background_paper(8), 99);
    QCOMPARE(stored.extras(0).name() + " " + stored.extras(0).value(),
             std::string("costcenter 4711"));

    // As the explorer opens it; the request for the next choice is the
    // substitute shown.
    WhenShown<frmUserDetails>([&](frmUserDetails& dialog) {
        QTRY_COMPARE(dialog.State(), EditorState::Shown);
        EditorDriver editor(dialog);
        for (const QString& assignment : typed) {
            const QString name = assignment.section(u'=', 0, 0);
            QCOMPARE(name + '=' + EditorDriver::Shown(editor.Field<QWidget>(qPrintable(name))),
                     assignment);
        }
        QCOMPARE(editor.Names("ListView1"), QStringList{QStringLiteral("costcenter")});
        ShowPageOf(editor.Field("edtSubstitute"));
        editor.Click("cmdSubstitute");
        QCOMPARE(ChosenUser::asked.front().value, QStringLiteral("fxsales"));
        QCOMPARE(ChosenUser::asked.back().value, QStringLiteral("lroux"));
        fx_->prompter.Answer(Answer::Yes);
        editor.Click("cmdDeleteUser");
        QCOMPARE(dialog.State(), EditorState::Empty);
        editor.Click("cmdCancel");
    });
    ObjectRequest request;
    request.kind = QStringLiteral("User");
    request.name = QStringLiteral("nightshift");
    request.hostName = kMaster;
    QVERIFY(OpenObjectEditor(nullptr, request));
    QVERIFY(Store().GetUser("fxmaster", "nightshift").is_new());
}

void TestUserEditor::ValidationOrderAndBounds_data() {
    QTest::addColumn<QStringList>("edits");
    QTest::addColumn<QString>("message");  // "" when the save goes through
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("field");
    const auto row = [](const char* name, QStringList edits, const QString& message = {},
                        const char* page = "", const char* field = "") {
        QTest::newRow(name) << edits << message << QString(page) << QString(field);
    };
    const QString adminRange = RangeMessage("Admin Priority", "1", "32000");
    const QString priorityRange = RangeMessage("Priority", "1", "100");
    // tschmidt mails on new messages and has neither print nor signal actions.
    row("admin priority 32000", {"edtAdminPriority=32000"});
    row("admin priority 32001", {"edtAdminPriority=32001"}, adminRange, "tabGeneral",
        "edtAdminPriority");
    row("admin priority 0", {"edtAdminPriority=0"}, adminRange, "tabGeneral", "edtAdminPriority");
    row("priority 100", {"edtPriority=100"});
    row("priority 101", {"edtPriority=101"}, priorityRange, "tabSend", "edtPriority");
    row("priority empty", {"edtPriority="}, EmptyMessage("Priority"), "tabSend", "edtPriority");
    row("comment before the priorities", {"edtPriority=0", "edtAdminPriority=0", "edtComment="},
        EmptyMessage("Comment"), "tabGeneral", "edtComment");
    row("mail needs its address", {"edtMailAddress="}, EmptyMessage("Mail Address"), "tabActions",
        "edtMailAddress");
    row("no mail, no address", {"chkMailIfNewReceived=0", "edtMailAddress="});
    row("priority before the actions", {"edtMailAddress=", "edtPriority=101"}, priorityRange,
        "tabSend", "edtPriority");
    row("print needs a printer", {"chkPrintIfSendSucceded=1", "chkLightIfSendFailed=1"},
        QStringLiteral("Please choose a printer for the print actions."), "tabActions",
        "cboPrinter");
    row("print with a printer", {"chkPrintIfSendSucceded=1", "cboPrinter=lj-acc"});
    row("light needs a number", {"chkLightIfSendFailed=1", "edtDefault="},
        EmptyMessage("Phone Signal Number"), "tabActions", "edtPhoneSignalNr");
    row("voice with a number", {"chkVoiceIfNewReceived=1", "edtPhoneSignalNr=2003"});
    row("default past 32 bits", {"edtDefault=2147483648"},
        RangeMessage("Default", "0", "2147483647"), "tabBackground", "edtDefault");
    row("paper empty", {"edtPaper5="}, EmptyMessage("Paper 5"), "tabBackground", "edtPaper5");
    row("background at its bounds", {"edtDefault=0", "edtPaper1=0", "edtPaper9=2147483647"});
}

void TestUserEditor::ValidationOrderAndBounds() {
    QFETCH(QStringList, edits);
    QFETCH(QString, message);
    const int64_t before = Store().GetUser("fxmaster", "tschmidt").version();
    UserEditor editor(Open(QStringLiteral("tschmidt")));
    for (const QString& edit : edits) editor.Set(edit);
    auto* pages = editor.Field<QTabWidget>("tabDetails");
    pages->setCurrentWidget(editor.Field<QWidget>("tabExtras"));
    QFETCH(QString, field);
    editor.ExpectOK(fx_->prompter, message, field);
    QCOMPARE(Store().GetUser("fxmaster", "tschmidt").version() > before, message.isEmpty());
    if (!message.isEmpty()) QTEST(pages->currentWidget()->objectName(), "page");
}

void TestUserEditor::VanishedScannerAndPrinterShowNone() {
    // rschulz scans and prints on lj-acc; both go while nobody looks. The
    // server refuses to delete a printer that users print on, so the
    // printer goes as only a store of an older release can have lost it.
    const UserRecord before = Store().GetUser("fxmaster", "rschulz");
    QVERIFY(!before.scanner().empty() && before.print_if_new_received());
    Store().DeleteDevice("fxmaster", before.scanner());
    fx_->server->RunSqlBehindTheServer("DELETE FROM printers WHERE name = 'lj-acc'");
    QVERIFY(Store().GetPrinter("fxmaster", before.printer()).is_new());
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
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    const UserRecord after = Store().GetUser("fxmaster", "rschulz");
    QVERIFY(after.scanner().empty() && after.printer().empty());
}

void TestUserEditor::ExtrasSetChangeDeleteExport() {
    UserEditor editor(Open(QStringLiteral("jmueller")));
    ShowPageOf(editor.Field<QWidget>("ListView1"));
    QCOMPARE(editor.Names("ListView1"), (QStringList{"costcenter", "language"}));
    // A pair needs a name; asking changes nothing.
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdSet");
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("NoItem")));
    QCOMPARE(fx_->prompter.LastPrompt().title, GetLabel(QStringLiteral("Insert/Change Error")));
    QCOMPARE(fx_->prompter.LastPrompt().icon, PromptIcon::Information);
    QCOMPARE(editor.dialog.State(), EditorState::Shown);
    // A row picked shows its pair; Set with its name changes its value.
    editor.Select("ListView1", {QStringLiteral("language")});
    QCOMPARE(editor.Field("edtValue")->text(), QStringLiteral("de"));
    editor.Type("edtValue", QStringLiteral("en"));
    editor.Click("cmdSet");
    QCOMPARE(editor.dialog.State(), EditorState::Changed);
    editor.Type("edtName", QStringLiteral("fax header"));
    editor.Type("edtValue", QStringLiteral("Accounts, room 104"));
    editor.Click("cmdSet");
    const QStringList three = {"costcenter", "language", "fax header"};
    QCOMPARE(editor.Names("ListView1"), three);

    editor.Field<QTreeView>("ListView1")->clearSelection();
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdDelete");
    QCOMPARE(fx_->prompter.LastPrompt().title, GetLabel(QStringLiteral("Remove Error")));
    editor.Select("ListView1", {QStringLiteral("costcenter")});
    fx_->prompter.Answer({Answer::No, Answer::Yes});
    editor.Click("cmdDelete");
    QVERIFY(fx_->prompter.LastPrompt().text.endsWith(QLatin1String("'costcenter'")));
    QCOMPARE(editor.Names("ListView1"), three);
    editor.Click("cmdDelete");
    QCOMPARE(editor.Names("ListView1"), (QStringList{"language", "fax header"}));

    // The export writes the list as shown, unsaved changes and all.
    QTemporaryDir dir;
    const QString file = dir.filePath(QStringLiteral("extras.txt"));
    fx_->prompter.AnswerFileName(file);
    editor.Click("cmdExport");
    QCOMPARE(fx_->prompter.FileDialogTitles().last(), GetLabel(QStringLiteral("Export")));
    QFile exported(file);
    QVERIFY(exported.open(QIODevice::ReadOnly));
    QCOMPARE(exported.readAll(), QByteArray("language en\nfax header Accounts, room 104\n"));

    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    const UserRecord stored = Store().GetUser("fxmaster", "jmueller");
    QCOMPARE(stored.extras_size(), 2);
    QCOMPARE(stored.extras(0).name() + "=" + stored.extras(0).value(), std::string("language=en"));
    QCOMPARE(stored.extras(1).value(), std::string("Accounts, room 104"));
}

void TestUserEditor::PasswordSetKeepsTheEdits() {
    const auto passwordSet = [this] {
        return Store().GetUser("fxmaster", "jmueller").password_set();
    };
    QVERIFY(!passwordSet());
    UserEditor editor(Open(QStringLiteral("jmueller")));
    editor.Type("edtComment", QStringLiteral("Julia Mueller, Treasury"));
    // Entries that differ are the dialog's to refuse (tst_admineditor).
    fx_->prompter.Answer(Answer::OK);
    WhenAskedForPassword(QStringLiteral("Harbour-Light-42"), QStringLiteral("Harbour-Light-42"));
    editor.Click("cmdChangePassword");
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("NewPasswordSet")));
    QCOMPARE(fx_->prompter.LastPrompt().icon, PromptIcon::Information);
    QVERIFY(passwordSet());
    // The edits made before still save over the new password.
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    QCOMPARE(Store().GetUser("fxmaster", "jmueller").comment(),
             std::string("Julia Mueller, Treasury"));
    QVERIFY(passwordSet());
}

QTEST_MAIN(TestUserEditor)
#include "tst_usereditor.moc"

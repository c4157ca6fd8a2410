// The printer editor against the demo installation: its type and paper
// lists, the rule that a Windows printer has neither paper size nor split
// page, the validation order, and a printer created from the explorer.

#include <QComboBox>
#include <QTest>

#include "common/FormParameters.h"
#include "common/Labels.h"
#include "editors/frmPrinterDetails.h"
#include "shell/frmMain.h"
#include "store/Store.h"
#include "support/EditorDriver.h"
#include "support/EditorLifecycle.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

const QString kMaster = QStringLiteral("fxmaster");

FormParameterList OpenRequest(const QString& printer, const QString& host = kMaster) {
    return {{QStringLiteral("PrinterName"), printer}, {QStringLiteral("HostName"), host}};
}

FormParameterList NewRequest(const QString& host = kMaster) {
    return {{QStringLiteral("New"), QString()}, {QStringLiteral("HostName"), host}};
}

using PrinterEditor = ShownEditor<frmPrinterDetails>;

QString TypeText(const char* key) {
    return GetLabel(QLatin1String(key));
}

}  // namespace

class TestPrinterEditor : public ExplorerSuite {
    Q_OBJECT

private slots:
    void Lifecycle();
    void TypeAndPaperListsKeepTheServersCodes();
    void WindowsPrinterHasNoPaperSizeOrSplitPage();
    void SplitPageStopsAt999();
    void ValidationOrder_data();
    void ValidationOrder();
    void CreateFromTheExplorer();
};

void TestPrinterEditor::Lifecycle() {
    LifecycleSubject subject;
    subject.make = [] { return std::make_unique<frmPrinterDetails>(); };
    subject.open = OpenRequest(QStringLiteral("lj-acc"));
    subject.missing = OpenRequest(QStringLiteral("lj-acc"), QStringLiteral("fxprint01"));
    subject.notExistText = GetLabel(QStringLiteral("PrinterNotExist"));
    subject.missingServer = OpenRequest(QStringLiteral("lj-acc"), QStringLiteral("nowhere"));
    subject.create = NewRequest();
    subject.keyField = "edtPrinterName";
    subject.takenKey = QStringLiteral("ps-board");
    subject.existsText = GetLabel(QStringLiteral("PrinterExist"));
    int edits = 0;
    subject.edit = [&edits](EditorDriver& editor) {
        editor.Type("edtComment", QStringLiteral("Accounts laser %1").arg(++edits));
    };
    subject.storedVersion = [this] { return Store().GetPrinter("fxmaster", "lj-acc").version(); };
    CheckLifecycle(subject, fx_->prompter);
}

void TestPrinterEditor::TypeAndPaperListsKeepTheServersCodes() {
    PrinterEditor editor(OpenRequest(QStringLiteral("ljfast"), QStringLiteral("fxprint01")));
    auto* types = editor.Field<QComboBox>("cboPrinterType");
    // In the order of the server's codes (not alphabetical, 10 after 9).
    QCOMPARE(types->count(), 12);
    for (int i = 0; i < 12; ++i) QCOMPARE(types->itemData(i).toInt(), i);
    // The stored code selects its entry, and a choice is stored by code.
    QCOMPARE(types->currentText(), TypeText("PRN_HP_LJ_FAST"));
    auto* paper = editor.Field<QComboBox>("cboPaperSize");
    QCOMPARE(paper->count(), 3);
    QCOMPARE(paper->itemText(2), TypeText("PAPER_LETTER"));
    editor.Set("cboPrinterType=" + TypeText("PRN_PS_COMP"));
    editor.Set("cboPaperSize=" + TypeText("PAPER_LEGAL"));
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    const auto stored = Store().GetPrinter("fxprint01", "ljfast");
    QCOMPARE(stored.type(), 9);
    QCOMPARE(stored.paper_size(), 1);
}

void TestPrinterEditor::WindowsPrinterHasNoPaperSizeOrSplitPage() {
    PrinterEditor editor(OpenRequest(QStringLiteral("ps-board")));
    QVERIFY(editor.Enabled("cboPaperSize") && editor.Enabled("edtSplitPage"));
    // An empty split page is not checked while the type has none.
    editor.Type("edtSplitPage", QString());
    editor.Set("cboPrinterType=" + TypeText("PRN_WINDOWS"));
    for (const char* control : {"cboPaperSize", "edtSplitPage", "updSplitPage"})
        QVERIFY2(!editor.Enabled(control), control);
    QCOMPARE(editor.dialog.State(), EditorState::Changed);
    // Any other type brings them back, with their check.
    editor.Set("cboPrinterType=" + TypeText("PRN_PS"));
    QVERIFY(editor.Enabled("cboPaperSize") && editor.Enabled("updSplitPage"));
    editor.ExpectOK(fx_->prompter, EmptyMessage("Split Page"));

    editor.Set("cboPrinterType=" + TypeText("PRN_WINDOWS"));
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    // A disabled field is not written: the stored split page stays.
    const auto stored = Store().GetPrinter("fxmaster", "ps-board");
    QCOMPARE(stored.type(), 11);
    QCOMPARE(stored.split_page(), 20);

    // Opened again, the stored Windows printer starts with them disabled.
    PrinterEditor again(OpenRequest(QStringLiteral("ps-board")));
    QVERIFY(!again.Enabled("cboPaperSize") && !again.Enabled("edtSplitPage"));
}

void TestPrinterEditor::SplitPageStopsAt999() {
    PrinterEditor editor(OpenRequest(QStringLiteral("lj-acc")));
    // A fourth digit cannot be typed, and the arrows stop at the bound.
    const int beeps = fx_->prompter.BeepCount();
    editor.Type("edtSplitPage", QStringLiteral("999"));
    QTest::keyClicks(editor.Field("edtSplitPage"), QStringLiteral("9"));
    QCOMPARE(editor.Field("edtSplitPage")->text(), QStringLiteral("999"));
    QCOMPARE(fx_->prompter.BeepCount(), beeps + 1);
    editor.Key("updSplitPage", Qt::Key_Up);
    QCOMPARE(editor.Field("edtSplitPage")->text(), QStringLiteral("999"));
    editor.Key("updSplitPage", Qt::Key_Down);
    QCOMPARE(editor.Field("edtSplitPage")->text(), QStringLiteral("998"));
    // Letters do not get in either.
    QTest::keyClicks(editor.Field("edtSplitPage"), QStringLiteral("x"));
    QCOMPARE(editor.Field("edtSplitPage")->text(), QStringLiteral("998"));
}

void TestPrinterEditor::ValidationOrder_data() {
    QTest::addColumn<QStringList>("assignments");
    QTest::addColumn<QString>("message");  // "" when the printer is saved
    QTest::addColumn<QString>("focus");
    const auto row = [](const char* name, QStringList assignments, const QString& message,
                        const char* focus) {
        QTest::newRow(name) << assignments << message << QString::fromLatin1(focus);
    };
    row("empty comment first", {"edtComment=", "edtFilterCommand="}, EmptyMessage("Comment"),
        "edtComment");
    // The split page takes the focus through its spin box.
    row("empty split page before filter", {"edtSplitPage=", "edtFilterCommand="},
        EmptyMessage("Split Page"), "updSplitPage");
    row("empty filter command", {"edtFilterCommand="}, EmptyMessage("Filter Command"),
        "edtFilterCommand");
    row("split page 999", {"edtSplitPage=999"}, "", "");
    row("split page 0", {"edtSplitPage=0"}, "", "");
}

void TestPrinterEditor::ValidationOrder() {
    QFETCH(QStringList, assignments);
    QFETCH(QString, message);
    QFETCH(QString, focus);
    const int64_t before = Store().GetPrinter("fxmaster", "lj-acc").version();
    PrinterEditor editor(OpenRequest(QStringLiteral("lj-acc")));
    for (const QString& assignment : assignments) editor.Set(assignment);
    editor.ExpectOK(fx_->prompter, message, focus);
    const auto stored = Store().GetPrinter("fxmaster", "lj-acc");
    if (message.isEmpty())
        QCOMPARE(QString::number(stored.split_page()), assignments.first().section(u'=', 1));
    else
        QCOMPARE(stored.version(), before);
}

void TestPrinterEditor::CreateFromTheExplorer() {
    auto main = fx_->OpenMain();
    QVERIFY(ExplorerFixture::Click(*main, QStringLiteral("fxprint01Printers")));
    WhenShown<frmPrinterDetails>([](frmPrinterDetails& dialog) {
        EditorDriver editor(dialog);
        QTRY_COMPARE(dialog.State(), EditorState::NewKey);
        editor.Type("edtPrinterName", QStringLiteral("lj-new"));
        editor.Key("edtPrinterName", Qt::Key_Return);
        editor.Set("edtComment=Second floor");
        editor.Set("edtFilterCommand=/opt/veldrano/filters/pcl");
        editor.Set("edtSplitPage=10");
        editor.Click("cmdOK");
    });
    main->MenuEntry(QStringLiteral("mnuFileNew"))->trigger();
    const auto stored = Store().GetPrinter("fxprint01", "lj-new");
    QVERIFY(!stored.is_new());
    // A new printer starts as the server's default type.
    QCOMPARE(stored.type(), 8);
    QCOMPARE(stored.split_page(), 10);
    QTRY_COMPARE(SelectedRowText(*main), QStringLiteral("lj-new"));
    // Deleting from the explorer is tst_objectcommands'.
}

QTEST_MAIN(TestPrinterEditor)
#include "tst_printereditor.moc"

// The printer editor against the demo installation: its type and paper
// lists, the rule that a Windows printer has neither paper size nor split
// page, the split page's bounds and the validation order.

#include <QComboBox>
#include <QTest>

#include "common/FormParameters.h"
#include "common/Labels.h"
#include "editors/frmPrinterDetails.h"
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
    void SplitPageBoundsAndValidationOrder();
};

void TestPrinterEditor::Lifecycle() {
    CheckLifecycle(
        {.make = [] { return std::make_unique<frmPrinterDetails>(); },
         .open = OpenRequest(QStringLiteral("lj-acc")),
         .missing = OpenRequest(QStringLiteral("lj-acc"), QStringLiteral("fxprint01")),
         .notExistText = GetLabel(QStringLiteral("PrinterNotExist")),
         .missingServer = OpenRequest(QStringLiteral("lj-acc"), QStringLiteral("nowhere")),
         .create = NewRequest(),
         .keyField = "edtPrinterName",
         .takenKey = QStringLiteral("ps-board"),
         .existsText = GetLabel(QStringLiteral("PrinterExist")),
         .edit = TypeCounted("edtComment", QStringLiteral("Accounts laser ")),
         .storedVersion = [this] { return Store().GetPrinter("fxmaster", "lj-acc").version(); }},
        fx_->prompter);
}

void TestPrinterEditor::TypeAndPaperListsKeepTheServersCodes() {
    PrinterEditor editor(OpenRequest(QStringLiteral("ljfast"), QStringLiteral("fxprint01")));
    auto* types = editor.Field<QComboBox>("cboPrinterType");
    // In the order of the server's codes (not alphabetical, 10 after 9).
    QCOMPARE(types->count(), 12);
    for (int i = 0; i < 12; ++i) QCOMPARE(types->itemData(i).toInt(), i);
    QCOMPARE(types->currentText(), TypeText("PRN_HP_LJ_FAST"));
    editor.Set("cboPrinterType=" + TypeText("PRN_PS_COMP"));
    editor.Set("cboPaperSize=" + TypeText("PAPER_LEGAL"));
    editor.ExpectOK(fx_->prompter, {});
    const auto stored = Store().GetPrinter("fxprint01", "ljfast");
    QCOMPARE(stored.type(), 9);
    QCOMPARE(stored.paper_size(), 1);
}

void TestPrinterEditor::WindowsPrinterHasNoPaperSizeOrSplitPage() {
    PrinterEditor editor(OpenRequest(QStringLiteral("ps-board")));
    // An empty split page is not checked while the type has none.
    editor.Type("edtSplitPage", QString());
    editor.Set("cboPrinterType=" + TypeText("PRN_WINDOWS"));
    QVERIFY(!editor.Enabled("cboPaperSize") && !editor.Enabled("updSplitPage"));
    // Any other type brings them back, with their check.
    editor.Set("cboPrinterType=" + TypeText("PRN_PS"));
    editor.ExpectOK(fx_->prompter, EmptyMessage("Split Page"));
    editor.Set("cboPrinterType=" + TypeText("PRN_WINDOWS"));
    editor.ExpectOK(fx_->prompter, {});
    // A disabled field is not written: the stored split page stays.
    const auto stored = Store().GetPrinter("fxmaster", "ps-board");
    QCOMPARE(stored.type(), 11);
    QCOMPARE(stored.split_page(), 20);
}

void TestPrinterEditor::SplitPageBoundsAndValidationOrder() {
    PrinterEditor editor(OpenRequest(QStringLiteral("lj-acc")));
    const int beeps = fx_->prompter.BeepCount();
    editor.Type("edtSplitPage", QStringLiteral("999"));
    QTest::keyClicks(editor.Field("edtSplitPage"), QStringLiteral("9"));
    QCOMPARE(fx_->prompter.BeepCount(), beeps + 1);
    editor.Key("updSplitPage", Qt::Key_Up);
    QCOMPARE(editor.Field("edtSplitPage")->text(), QStringLiteral("999"));
    for (const char* empty : {"edtComment=", "edtSplitPage=", "edtFilterCommand="})
        editor.Set(QLatin1String(empty));
    editor.ExpectOK(fx_->prompter, EmptyMessage("Comment"), QStringLiteral("edtComment"));
    editor.Set(QStringLiteral("edtComment=Accounts laser"));
    // The split page takes the focus through its spin box.
    editor.ExpectOK(fx_->prompter, EmptyMessage("Split Page"), QStringLiteral("updSplitPage"));
    editor.Set(QStringLiteral("edtFilterCommand=/opt/veldrano/filters/pcl"));
    editor.Set(QStringLiteral("edtSplitPage=0"));
    editor.ExpectOK(fx_->prompter, {});
    QCOMPARE(Store().GetPrinter("fxmaster", "lj-acc").split_page(), 0);
}

QTEST_MAIN(TestPrinterEditor)
#include "tst_printereditor.moc"

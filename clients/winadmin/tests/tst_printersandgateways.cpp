// The printer editor and the gateway user editor against the demo
// installation: the printer's type and paper codes, the rule that a Windows
// printer has neither paper size nor split page, the validation order; a
// gateway user addressed by its gateway as well as its address.

#include <QComboBox>
#include <QTest>

#include "common/FormParameters.h"
#include "common/Labels.h"
#include "editors/frmGatewayUser.h"
#include "editors/frmPrinterDetails.h"
#include "store/Store.h"
#include "support/EditorDriver.h"
#include "support/EditorLifecycle.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

const QString kMaster = QStringLiteral("fxmaster");
const QString kSmtp = QStringLiteral("smtp.example.com");
const QString kX400 = QStringLiteral("x400.example.net");

FormParameterList OpenRequest(const QString& printer, const QString& host = kMaster) {
    return {{QStringLiteral("PrinterName"), printer}, {QStringLiteral("HostName"), host}};
}

// An empty address starts a new gateway user.
FormParameterList GatewayRequest(const QString& address, const QString& gateway) {
    return {{address.isEmpty() ? QStringLiteral("New") : QStringLiteral("GatewayUser"), address},
            {QStringLiteral("GatewayAddress"), gateway}};
}

using PrinterEditor = ShownEditor<frmPrinterDetails>;
using GatewayEditor = ShownEditor<frmGatewayUser>;

QString TypeText(const char* key) {
    return GetLabel(QLatin1String(key));
}

}  // namespace

class TestPrinterEditor : public ExplorerSuite {
    Q_OBJECT

private slots:
    void Lifecycle();
    void WindowsPrinterHasNoPaperSizeOrSplitPage();
    void ValidationOrderAndTheServersCodes();
    void GatewayUserLifecycle();
    void GatewayUserKeyedByItsGateway();
};

void TestPrinterEditor::Lifecycle() {
    CheckLifecycle(
        {.make = [] { return std::make_unique<frmPrinterDetails>(); },
         .open = OpenRequest(QStringLiteral("lj-acc")),
         .missing = OpenRequest(QStringLiteral("lj-acc"), QStringLiteral("fxprint01")),
         .notExistText = GetLabel(QStringLiteral("PrinterNotExist")),
         .missingServer = OpenRequest(QStringLiteral("lj-acc"), QStringLiteral("nowhere")),
         .create = {{QStringLiteral("New"), QString()}, {QStringLiteral("HostName"), kMaster}},
         .keyField = "edtPrinterName",
         .takenKey = QStringLiteral("ps-board"),
         .existsText = GetLabel(QStringLiteral("PrinterExist")),
         .edit = TypeCounted("edtComment", QStringLiteral("Accounts laser ")),
         .storedVersion = [this] { return Store().GetPrinter("fxmaster", "lj-acc").version(); }},
        fx_->prompter);
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

void TestPrinterEditor::ValidationOrderAndTheServersCodes() {
    PrinterEditor editor(OpenRequest(QStringLiteral("ljfast"), QStringLiteral("fxprint01")));
    // The lists hold the server's codes in their order (10 after 9).
    QCOMPARE(editor.Field<QComboBox>("cboPrinterType")->currentText(), TypeText("PRN_HP_LJ_FAST"));
    for (const char* empty : {"edtComment=", "edtSplitPage=", "edtFilterCommand="})
        editor.Set(QLatin1String(empty));
    editor.ExpectOK(fx_->prompter, EmptyMessage("Comment"), QStringLiteral("edtComment"));
    editor.Set(QStringLiteral("edtComment=Fast LaserJet"));
    // The split page takes the focus through its spin box.
    editor.ExpectOK(fx_->prompter, EmptyMessage("Split Page"), QStringLiteral("updSplitPage"));
    editor.Set(QStringLiteral("edtFilterCommand=/opt/veldrano/filters/pcl"));
    editor.Set(QStringLiteral("edtSplitPage=0"));
    editor.Set("cboPrinterType=" + TypeText("PRN_PS_COMP"));
    editor.Set("cboPaperSize=" + TypeText("PAPER_LEGAL"));
    editor.ExpectOK(fx_->prompter, {});
    const auto stored = Store().GetPrinter("fxprint01", "ljfast");
    QCOMPARE(stored.split_page(), 0);
    QCOMPARE(stored.type(), 9);
    QCOMPARE(stored.paper_size(), 1);
}

void TestPrinterEditor::GatewayUserLifecycle() {
    const QString address = QStringLiteral("sales@example.com");
    CheckLifecycle(
        {.make = [] { return std::make_unique<frmGatewayUser>(); },
         .open = GatewayRequest(address, kSmtp),
         .missing = GatewayRequest(address, kX400),  // known to the other gateway only
         .notExistText = GetLabel(QStringLiteral("GtwUsrNotExist")),
         .missingServer = {},
         .create = GatewayRequest({}, kSmtp),
         .keyField = "edtMailAddress",
         .takenKey = address,
         .existsText = GetLabel(QStringLiteral("GtwUsrExist")),
         .edit = TypeCounted("edtExtension", QStringLiteral("30")),
         .storedVersion =
             [this] {
                 return Store().GetGatewayUser("smtp.example.com", "sales@example.com").version();
             }},
        fx_->prompter);
}

void TestPrinterEditor::GatewayUserKeyedByItsGateway() {
    // The other gateway's address (its lifecycle's taken key) is free here.
    const QString address = QStringLiteral("sales@example.com");
    const auto stored = [&] {
        return Store().GetGatewayUser(kX400.toStdString(), address.toStdString());
    };
    {
        GatewayEditor editor(GatewayRequest({}, kX400));
        editor.Type("edtMailAddress", address);
        editor.Key("edtMailAddress", Qt::Key_Return);
        editor.Type("edtExtension", QStringLiteral("4711"));
        editor.ExpectOK(fx_->prompter, {});
        QCOMPARE(stored().extension(), std::string("4711"));
    }
    // Deleted from the dialog: the other gateway's users, that address's
    // among them, are never touched.
    GatewayEditor editor(GatewayRequest(address, kX400));
    fx_->prompter.Answer(Answer::Yes);
    editor.Click("cmdDelete");
    QVERIFY(stored().is_new());
    QCOMPARE(Store().ListGatewayUsers(kSmtp.toStdString()).size(), size_t(4));
    QVERIFY(!Store().GetGatewayUser(kSmtp.toStdString(), address.toStdString()).is_new());
}

QTEST_MAIN(TestPrinterEditor)
#include "tst_printersandgateways.moc"

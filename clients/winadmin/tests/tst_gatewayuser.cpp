// The gateway user editor, driven through its fields against the demo
// installation's two mail gateways.

#include <QLineEdit>
#include <QPushButton>
#include <QTest>

#include "common/FormParameters.h"
#include "common/Labels.h"
#include "editors/frmGatewayUser.h"
#include "shell/ObjectEditors.h"
#include "store/Store.h"
#include "support/EditorDriver.h"
#include "support/EditorLifecycle.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

const QString kSmtp = QStringLiteral("smtp.example.com");
const QString kX400 = QStringLiteral("x400.example.net");

FormParameterList NewRequest(const QString& gateway) {
    return {{QStringLiteral("New"), QString()}, {QStringLiteral("GatewayAddress"), gateway}};
}

FormParameterList OpenRequest(const QString& address, const QString& gateway) {
    return {{QStringLiteral("GatewayUser"), address}, {QStringLiteral("GatewayAddress"), gateway}};
}

using GatewayEditor = ShownEditor<frmGatewayUser>;

}  // namespace

class TestGatewayUser : public ExplorerSuite {
    Q_OBJECT

private slots:
    void Lifecycle();
    void AddressTakesNoParenthesesAndEightyCharacters();
    void TakenAddressAsksOnlyInItsOwnGateway();
    void CreateEditDeleteRoundTrip();
};

void TestGatewayUser::Lifecycle() {
    const QString address = QStringLiteral("sales@example.com");
    LifecycleSubject subject;
    subject.make = [] { return std::make_unique<frmGatewayUser>(); };
    subject.open = OpenRequest(address, kSmtp);
    subject.missing = OpenRequest(address, kX400);  // known to the other gateway only
    subject.notExistText = GetLabel(QStringLiteral("GtwUsrNotExist"));
    subject.create = NewRequest(kSmtp);
    subject.keyField = "edtMailAddress";
    subject.takenKey = address;
    subject.existsText = GetLabel(QStringLiteral("GtwUsrExist"));
    int edits = 0;
    subject.edit = [&edits](EditorDriver& editor) {
        editor.Type("edtExtension", QString::number(300 + ++edits));
    };
    subject.storedVersion = [this, address] {
        return Store().GetGatewayUser(kSmtp.toStdString(), address.toStdString()).version();
    };
    CheckLifecycle(subject, fx_->prompter);
}

void TestGatewayUser::AddressTakesNoParenthesesAndEightyCharacters() {
    GatewayEditor editor(NewRequest(kSmtp));
    QCOMPARE(editor.dialog.State(), EditorState::NewKey);
    editor.Type("edtMailAddress", QStringLiteral("a(b)c@example.com"));
    QCOMPARE(editor.Field("edtMailAddress")->text(), QStringLiteral("abc@example.com"));
    // Up to 80 characters; the 81st is refused with a beep (pasted text
    // meets the same filter, tst_fieldhelpers).
    const QString eighty = QString(68, QLatin1Char('m')) + QStringLiteral("@example.com");
    editor.Type("edtMailAddress", eighty);
    const int beeps = fx_->prompter.BeepCount();
    QTest::keyClicks(editor.Field("edtMailAddress"), QStringLiteral("z"));
    QCOMPARE(editor.Field("edtMailAddress")->text(), eighty);
    QCOMPARE(fx_->prompter.BeepCount(), beeps + 1);
}

void TestGatewayUser::TakenAddressAsksOnlyInItsOwnGateway() {
    // Another gateway's address is free here; in its own gateway it is the
    // lifecycle's taken key.
    GatewayEditor editor(NewRequest(kX400));
    editor.Type("edtMailAddress", QStringLiteral("sales@example.com"));
    editor.Key("edtMailAddress", Qt::Key_Return);
    QCOMPARE(editor.dialog.State(), EditorState::NewObject);
    QVERIFY(editor.Field("edtExtension")->text().isEmpty());
}

void TestGatewayUser::CreateEditDeleteRoundTrip() {
    const QString address = QStringLiteral("night@hq.example.net");
    const auto stored = [&] {
        return Store().GetGatewayUser(kX400.toStdString(), address.toStdString());
    };
    {
        GatewayEditor editor(NewRequest(kX400));
        editor.Type("edtMailAddress", address);
        editor.Key("edtMailAddress", Qt::Key_Return);
        editor.Type("edtExtension", QStringLiteral("4711"));
        editor.Click("cmdOK");
        QVERIFY(!editor.dialog.isVisible());
        QCOMPARE(editor.Answer(), QStringLiteral("-1"));
        QCOMPARE(stored().extension(), std::string("4711"));
    }
    // As the explorer opens it: the address, then its gateway.
    QString title;
    WhenShown<frmGatewayUser>([&](frmGatewayUser& editor) {
        QTRY_COMPARE(editor.State(), EditorState::Shown);
        title = editor.windowTitle();
        EditorDriver shown(editor);
        QVERIFY(shown.Field("edtMailAddress")->isReadOnly());
        shown.Type("edtExtension", QStringLiteral("4712"));
        shown.Click("cmdOK");
    });
    ObjectRequest request;
    request.kind = QStringLiteral("GatewayUser");
    request.name = address;
    request.gatewayAddress = kX400;
    QVERIFY(OpenObjectEditor(nullptr, request));
    QVERIFY(title.contains(kX400));
    QCOMPARE(stored().extension(), std::string("4712"));
    // Deleted from the dialog (its question is the frame's, tst_servereditor):
    // the other gateway's users are never touched.
    GatewayEditor editor(OpenRequest(address, kX400));
    fx_->prompter.Answer(Answer::Yes);
    editor.Click("cmdDelete");
    QVERIFY(stored().is_new());
    QCOMPARE(Store().ListGatewayUsers(kSmtp.toStdString()).size(), size_t(4));
}

QTEST_MAIN(TestGatewayUser)
#include "tst_gatewayuser.moc"

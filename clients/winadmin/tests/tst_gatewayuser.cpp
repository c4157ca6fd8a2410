// The gateway user editor, driven through its fields against the demo
// installation's two mail gateways.

#include <QLineEdit>
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
    void AddressTakesEightyCharacters();
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
    subject.edit = TypeCounted("edtExtension", QStringLiteral("30"));
    subject.storedVersion = [this, address] {
        return Store().GetGatewayUser(kSmtp.toStdString(), address.toStdString()).version();
    };
    CheckLifecycle(subject, fx_->prompter);
}

void TestGatewayUser::AddressTakesEightyCharacters() {
    GatewayEditor editor(NewRequest(kSmtp));
    const QString eighty = QString(68, QLatin1Char('m')) + QStringLiteral("@example.com");
    editor.Type("edtMailAddress", eighty);
    const int beeps = fx_->prompter.BeepCount();
    QTest::keyClicks(editor.Field("edtMailAddress"), QStringLiteral("z"));
    QCOMPARE(editor.Field("edtMailAddress")->text(), eighty);
    QCOMPARE(fx_->prompter.BeepCount(), beeps + 1);
}

void TestGatewayUser::CreateEditDeleteRoundTrip() {
    // The other gateway's address (its lifecycle's taken key) is free here.
    const QString address = QStringLiteral("sales@example.com");
    const auto stored = [&] {
        return Store().GetGatewayUser(kX400.toStdString(), address.toStdString());
    };
    {
        GatewayEditor editor(NewRequest(kX400));
        editor.Type("edtMailAddress", address);
        editor.Key("edtMailAddress", Qt::Key_Return);
        editor.Type("edtExtension", QStringLiteral("4711"));
        editor.ExpectOK(fx_->prompter, {});
        QCOMPARE(stored().extension(), std::string("4711"));
    }
    WhenShown<frmGatewayUser>([&](frmGatewayUser& editor) {
        QTRY_COMPARE(editor.State(), EditorState::Shown);
        EditorDriver shown(editor);
        shown.Type("edtExtension", QStringLiteral("4712"));
        shown.Click("cmdOK");
    });
    ObjectRequest request;
    request.kind = QStringLiteral("GatewayUser");
    request.name = address;
    request.gatewayAddress = kX400;
    QVERIFY(OpenObjectEditor(nullptr, request));
    QCOMPARE(stored().extension(), std::string("4712"));
    // Deleted from the dialog: the other gateway's users, that address's
    // among them, are never touched.
    GatewayEditor editor(OpenRequest(address, kX400));
    fx_->prompter.Answer(Answer::Yes);
    editor.Click("cmdDelete");
    QVERIFY(stored().is_new());
    QCOMPARE(Store().ListGatewayUsers(kSmtp.toStdString()).size(), size_t(4));
    QVERIFY(!Store().GetGatewayUser(kSmtp.toStdString(), address.toStdString()).is_new());
}

QTEST_MAIN(TestGatewayUser)
#include "tst_gatewayuser.moc"

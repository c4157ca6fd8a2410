// The device editor against the demo installation: the lines and what is
// kept of their edits, the restart question and its answers, the checks,
// the type change, what older servers no longer store, and a new device
// made as the server makes it.

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QTabWidget>
#include <QTest>
#include <QTimer>

#include "common/Labels.h"
#include "editors/frmAskRestartDevice.h"
#include "editors/frmDeviceDetails.h"
#include "editors/frmServerSelection.h"
#include "session/ServerSession.h"
#include "store/Store.h"
#include "support/EditorDriver.h"
#include "support/EditorLifecycle.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;
namespace pb = veldrano::admin::v1;

namespace {

using DeviceEditor = ShownEditor<frmDeviceDetails>;

struct DeviceId {
    QString host;
    QString name;
};

FormParameterList Open(const DeviceId& device) {
    return {{QStringLiteral("DeviceName"), device.name}, {QStringLiteral("HostName"), device.host}};
}
FormParameterList New(const QString& host) {
    return {{QStringLiteral("New"), QString()}, {QStringLiteral("HostName"), host}};
}

// The first demo device of the type (the demo has one multi-line device of
// each type, with lines both stored and only counted).
DeviceId DeviceOfType(veldrano::server::Store& store, int type) {
    for (const pb::Server& server : store.ListServers())
        for (const pb::Device& device : store.ListDevices(server.name()))
            if (device.type() == type)
                return {QString::fromStdString(server.name()),
                        QString::fromStdString(device.name())};
    return {};
}

pb::Device Stored(veldrano::server::Store& store, const DeviceId& device) {
    return store.GetDevice(device.host.toStdString(), device.name.toStdString());
}

// Answers every restart question asked while it lives with one button, and
// counts the questions.
class RestartAnswerer {
public:
    explicit RestartAnswerer(const char* button) {
        timer_.setInterval(5);
        QObject::connect(&timer_, &QTimer::timeout, [this, button] {
            for (QWidget* window : QApplication::topLevelWidgets()) {
                auto* question = qobject_cast<frmAskRestartDevice*>(window);
                if (!question || !question->isVisible()) continue;
                ++count_;
                Child<QAbstractButton>(*question, button)->click();
            }
        });
        timer_.start();
    }
    int Count() const { return count_; }

private:
    QTimer timer_;
    int count_ = 0;
};

}  // namespace

class TestDeviceEditor : public ExplorerSuite {
    Q_OBJECT

private slots:
    void Lifecycle();
    void LinesKeepTheirEditsAndSaveWithoutTheQuestion();
    void RestartAnswers_data();
    void RestartAnswers();
    void ChecksInOrderThenAGoneDevice();
    void LineDelete();
    void TypeChange();
    void OlderServersRetireFields();
    void NewDeviceAsTheServerMakesIt();
};

void TestDeviceEditor::Lifecycle() {
    RestartAnswerer save("cmdSave");
    const DeviceId fax = DeviceOfType(Store(), 1);
    CheckLifecycle({.make = [] { return std::make_unique<frmDeviceDetails>(); },
                    .open = Open(fax),
                    .missing = Open({fax.host, QStringLiteral("nosuchdev")}),
                    .notExistText = GetLabel(QStringLiteral("DeviceNotExist")),
                    .missingServer = New(QStringLiteral("nosuchhost")),
                    .create = New(fax.host),
                    .keyField = "edtDeviceName",
                    .takenKey = fax.name,
                    .existsText = GetLabel(QStringLiteral("DeviceAlreadyExist")),
                    .edit = TypeCounted("edtComment", QStringLiteral("Edit ")),
                    .storedVersion = [&] { return Stored(Store(), fax).version(); }},
                   fx_->prompter);
}

void TestDeviceEditor::LinesKeepTheirEditsAndSaveWithoutTheQuestion() {
    RestartAnswerer save("cmdSave");
    const DeviceId isdn = DeviceOfType(Store(), 3);
    const pb::Device before = Stored(Store(), isdn);
    DeviceEditor editor(Open(isdn));
    auto* lines = editor.Field<QComboBox>("cboLine");
    editor.Type("edtComment", QStringLiteral("Primary edited"));
    lines->setCurrentIndex(1);
    editor.Type("edtTSI", QStringLiteral("+49 1 2"));
    lines->setCurrentIndex(0);
    lines->setCurrentIndex(1);
    // OK saves the line shown, and only that line; the restart question is
    // the primary line's. Its edits are shown, the dialog open for them.
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdOK");
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("SelectedLineSaved")));
    QCOMPARE(save.Count(), 0);
    QVERIFY(editor.dialog.isVisible());
    const pb::Device lineSaved = Stored(Store(), isdn);
    QCOMPARE(lineSaved.secondary_lines(0).settings().tsi(), std::string("+49 1 2"));
    QCOMPARE(lineSaved.primary().comment(), before.primary().comment());
    QCOMPARE(editor.Field("edtComment")->text(), QStringLiteral("Primary edited"));
    editor.ExpectOK(fx_->prompter, {});
    QCOMPARE(save.Count(), 1);
    QCOMPARE(Stored(Store(), isdn).primary().comment(), std::string("Primary edited"));
}

void TestDeviceEditor::RestartAnswers_data() {
    // Save alone is every other test's answer.
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("written");
    QTest::addColumn<bool>("stillOpen");
    QTest::newRow("save and restart") << "cmdSaveRestart" << true << false;
    QTest::newRow("don't save") << "cmdDontSave" << false << false;
    QTest::newRow("cancel") << "cmdCancel" << false << true;
}

void TestDeviceEditor::RestartAnswers() {
    QFETCH(QString, button);
    QFETCH(bool, written);
    QFETCH(bool, stillOpen);
    // A stopped device shows the restart: it runs afterwards.
    const DeviceId stopped = DeviceOfType(Store(), 1);
    Store().SetDeviceState(stopped.host.toStdString(), stopped.name.toStdString(),
                           pb::DEVICE_STOPPED);
    const QByteArray name = button.toLatin1();
    RestartAnswerer answer(name.constData());
    DeviceEditor editor(Open(stopped));
    editor.Type("edtPhisicalDevice", QStringLiteral("/dev/ttyS7"));
    editor.Click("cmdOK");
    QCOMPARE(answer.Count(), 1);
    QCOMPARE(editor.dialog.isVisible(), stillOpen);
    const pb::Device after = Stored(Store(), stopped);
    QCOMPARE(after.primary().physical_device() == "/dev/ttyS7", written);
    QCOMPARE(after.state(),
             button == QLatin1String("cmdSaveRestart") ? pb::DEVICE_RUNNING : pb::DEVICE_STOPPED);
    if (!stillOpen) {
        QCOMPARE(editor.Answer(), written ? QStringLiteral("-1") : QStringLiteral("0"));
        return;
    }
    // Cancel keeps every edit.
    QCOMPARE(editor.Field("edtPhisicalDevice")->text(), QStringLiteral("/dev/ttyS7"));
}

void TestDeviceEditor::ChecksInOrderThenAGoneDevice() {
    RestartAnswerer save("cmdSave");
    const DeviceId fax = DeviceOfType(Store(), 1);
    DeviceEditor editor(Open(fax));
    auto* pages = editor.Field<QTabWidget>("tabDetails");
    // A refusal brings the field's page to the front, whichever was shown.
    const auto refused = [&](const QString& message, const char* page, const char* field) {
        pages->setCurrentWidget(editor.Field<QWidget>("picTelex"));
        editor.ExpectOK(fx_->prompter, message, QLatin1String(field));
        QCOMPARE(pages->currentWidget()->objectName(), QLatin1String(page));
    };
    // The comment comes before the digits.
    editor.Set("edtSkipDigits=21");
    editor.Set("edtComment=");
    refused(EmptyMessage("Comment"), "tabGeneral", "edtComment");
    editor.Set("edtComment=Checked");
    refused(RangeMessage("Skip Digits", "0", "20"), "picInboundRouting", "edtSkipDigits");
    // A value at its bound passes the check and reaches the server, which
    // no longer has the device: deleted by another console meanwhile. Said,
    // nothing written, the dialog keeps the edits.
    editor.Set("edtSkipDigits=20");
    Store().DeleteDevice(fax.host.toStdString(), fax.name.toStdString(), 0);
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdOK");
    QCOMPARE(fx_->prompter.LastPrompt().icon, PromptIcon::Critical);
    QVERIFY(editor.dialog.isVisible());
    QCOMPARE(editor.Field("edtComment")->text(), QStringLiteral("Checked"));
    QVERIFY(Stored(Store(), fax).is_new());
}

void TestDeviceEditor::LineDelete() {
    const DeviceId trunk = DeviceOfType(Store(), 3);
    const int storedLines = Stored(Store(), trunk).secondary_lines_size();
    DeviceEditor editor(Open(trunk));
    auto* lines = editor.Field<QComboBox>("cboLine");
    // A line counted but not stored: said, nothing deleted.
    lines->setCurrentIndex(lines->count() - 1);
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdDelete");
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("LineNotConfigured")));
    // A stored line: asked with its name, No the default.
    lines->setCurrentIndex(1);
    const QString name = lines->currentText();
    fx_->prompter.Answer(Answer::Yes);
    editor.Click("cmdDelete");
    QCOMPARE(fx_->prompter.LastPrompt().text,
             GetLabel(QStringLiteral("DeleteDeviceLine")) + name + " ?");
    QCOMPARE(fx_->prompter.LastPrompt().defaultButton, 2);
    QCOMPARE(Stored(Store(), trunk).secondary_lines_size(), storedLines - 1);
    editor.Click("cmdCancel");
    QCOMPARE(editor.Answer(), QStringLiteral("-1"));
}

void TestDeviceEditor::TypeChange() {
    RestartAnswerer save("cmdSave");
    // Several lines: asked, and No puts the old type back.
    const DeviceId isdn = DeviceOfType(Store(), 3);
    const pb::Device before = Stored(Store(), isdn);
    {
        DeviceEditor editor(Open(isdn));
        auto* type = editor.Field<QComboBox>("cboDeviceType");
        const QString old = type->currentText();
        fx_->prompter.Answer(Answer::No);
        type->setCurrentIndex(type->findData(2));
        QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("DeleteSecondaryLines")));
        QCOMPARE(fx_->prompter.LastPrompt().defaultButton, 2);
        QCOMPARE(type->currentText(), old);
        QCOMPARE(Stored(Store(), isdn).version(), before.version());
        // Yes: the lines go and the type is stored in one commit; an edit
        // of the primary line stays, not yet saved.
        editor.Type("edtComment", QStringLiteral("Now basic rate"));
        fx_->prompter.Answer(Answer::Yes);
        type->setCurrentIndex(type->findData(2));
        const pb::Device changed = Stored(Store(), isdn);
        QCOMPARE(changed.type(), 2);
        QCOMPARE(changed.secondary_lines_size(), 0);
        QCOMPARE(changed.primary().comment(), before.primary().comment());
        editor.Click("cmdOK");
    }
    QCOMPARE(Stored(Store(), isdn).primary().comment(), std::string("Now basic rate"));
    // One line: nothing asked, the type is saved with the device.
    const DeviceId fax = DeviceOfType(Store(), 1);
    DeviceEditor editor(Open(fax));
    auto* type = editor.Field<QComboBox>("cboDeviceType");
    type->setCurrentIndex(type->findData(9));
    editor.ExpectOK(fx_->prompter, {});
    QCOMPARE(Stored(Store(), fax).type(), 9);
    QCOMPARE(fx_->prompter.Prompts().size(), 2);  // the No and the Yes above, nothing since
}

void TestDeviceEditor::OlderServersRetireFields() {
    const DeviceId fax = DeviceOfType(Store(), 1);
    // Before the seventh version there is no CSI prefix: it is stored empty.
    pb::Device device = Stored(Store(), fax);
    device.mutable_primary()->set_csi_prefix("CSI");
    Store().CommitDevice(device);
    Store().SetMeta("second_version", "6");
    TheSession()->Login();
    {
        RestartAnswerer save("cmdSave");
        DeviceEditor editor(Open(fax));
        editor.Type("edtComment", QStringLiteral("Older release"));
        editor.ExpectOK(fx_->prompter, {});
    }
    QCOMPARE(Stored(Store(), fax).primary().csi_prefix(), std::string());
}

void TestDeviceEditor::NewDeviceAsTheServerMakesIt() {
    RestartAnswerer save("cmdSave");
    const DeviceId fax = DeviceOfType(Store(), 1);
    DeviceEditor editor(New(fax.host));
    auto* type = editor.Field<QComboBox>("cboDeviceType");
    type->setCurrentIndex(type->findData(4));
    editor.Type("edtDeviceName", QStringLiteral("did9"));
    editor.Key("edtDeviceName", Qt::Key_Return);
    // Lines and values as the server makes a device of that type.
    const pb::Device fresh = TheSession()->GetDevice(fax.host, QStringLiteral("did9"), 4);
    QVERIFY(fresh.configured_lines() > 1);
    QCOMPARE(editor.Field<QComboBox>("cboLine")->count(), fresh.configured_lines());
    // No user server yet: refused.
    editor.Type("edtComment", QStringLiteral("DID trunk 9"));
    editor.ExpectOK(fx_->prompter, EmptyMessage("User Server"));
    WhenShown<frmServerSelection>([host = fax.host](frmServerSelection& dialog) {
        EditorDriver selection(dialog);
        QTRY_VERIFY(selection.Names("lvServers").contains(host));
        selection.Select("lvServers", {host}, true);
    });
    editor.Click("cmdUserServer");
    editor.ExpectOK(fx_->prompter, {});
    const pb::Device stored = Stored(Store(), {fax.host, QStringLiteral("did9")});
    QCOMPARE(stored.type(), 4);
    QCOMPARE(stored.primary().user_server(), fax.host.toStdString());
}

QTEST_MAIN(TestDeviceEditor)
#include "tst_deviceeditor.moc"

// The device editor against the demo installation: the lines and what is
// kept of their edits, the restart question and its answers, and the type
// change.

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QTest>
#include <QTimer>

#include "common/Labels.h"
#include "editors/frmAskRestartDevice.h"
#include "editors/frmDeviceDetails.h"
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
    void LinesKeepTheirEditsAndSaveOrGoAlone();
    void RestartAnswers();
    void TypeChange();
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

void TestDeviceEditor::LinesKeepTheirEditsAndSaveOrGoAlone() {
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
    // the primary line's. Its edits are shown again, the dialog open for
    // them.
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdOK");
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("SelectedLineSaved")));
    QCOMPARE(save.Count(), 0);
    QVERIFY(editor.dialog.isVisible());
    const pb::Device lineSaved = Stored(Store(), isdn);
    QCOMPARE(lineSaved.secondary_lines(0).settings().tsi(), std::string("+49 1 2"));
    QCOMPARE(lineSaved.primary().comment(), before.primary().comment());
    QCOMPARE(editor.Field("edtComment")->text(), QStringLiteral("Primary edited"));
    // Deleting a stored line asks with its name, No the default.
    lines->setCurrentIndex(1);
    const QString name = lines->currentText();
    fx_->prompter.Answer(Answer::Yes);
    editor.Click("cmdDelete");
    QCOMPARE(fx_->prompter.LastPrompt().text,
             GetLabel(QStringLiteral("DeleteDeviceLine")) + name + " ?");
    QCOMPARE(fx_->prompter.LastPrompt().defaultButton, 2);
    QCOMPARE(Stored(Store(), isdn).secondary_lines_size(), before.secondary_lines_size() - 1);
    lines->setCurrentIndex(0);
    editor.ExpectOK(fx_->prompter, {});
    QCOMPARE(save.Count(), 1);
    QCOMPARE(Stored(Store(), isdn).primary().comment(), std::string("Primary edited"));
}

void TestDeviceEditor::RestartAnswers() {
    // Save alone is every other test's answer. A stopped device shows the
    // restart: it runs afterwards.
    const DeviceId stopped = DeviceOfType(Store(), 1);
    Store().SetDeviceState(stopped.host.toStdString(), stopped.name.toStdString(),
                           pb::DEVICE_STOPPED);
    for (const char* button : {"cmdCancel", "cmdDontSave", "cmdSaveRestart"}) {
        const bool cancel = button == std::string_view("cmdCancel");
        const bool written = button == std::string_view("cmdSaveRestart");
        RestartAnswerer answer(button);
        DeviceEditor editor(Open(stopped));
        editor.Type("edtPhisicalDevice", QStringLiteral("/dev/ttyS7"));
        editor.Click("cmdOK");
        QCOMPARE(answer.Count(), 1);
        const pb::Device after = Stored(Store(), stopped);
        QCOMPARE(after.primary().physical_device() == "/dev/ttyS7", written);
        QCOMPARE(after.state(), written ? pb::DEVICE_RUNNING : pb::DEVICE_STOPPED);
        QCOMPARE(editor.dialog.isVisible(), cancel);
        // Cancel keeps every edit.
        if (cancel)
            QCOMPARE(editor.Field("edtPhisicalDevice")->text(), QStringLiteral("/dev/ttyS7"));
        else
            QCOMPARE(editor.Answer(), written ? QStringLiteral("-1") : QStringLiteral("0"));
    }
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
        QCOMPARE(type->currentText(), old);
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
}

QTEST_MAIN(TestDeviceEditor)
#include "tst_deviceeditor.moc"

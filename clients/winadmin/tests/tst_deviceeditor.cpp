// The device editor against the demo installation: the lines and what is
// kept of their edits, the restart question and its four answers, the
// checks and their order, the type change, the enable rules of the device
// types and of older servers, and a new device made as the server makes it.

#include <QAbstractButton>
#include <QComboBox>
#include <QLineEdit>
#include <QPlainTextEdit>
#include <QScopeGuard>
#include <QTabWidget>
#include <QTest>
#include <QTimer>
#include <QTreeView>

#include "common/AppContext.h"
#include "common/FieldHelpers.h"
#include "common/Labels.h"
#include "common/Pages.h"
#include "editors/frmAskRestartDevice.h"
#include "editors/frmDeviceDetails.h"
#include "editors/frmServerSelection.h"
#include "editors/frmUserSelection.h"
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

// The first demo device of the type; with stored secondary lines, or with
// lines counted but not stored, when asked for.
DeviceId DeviceOfType(veldrano::server::Store& store, int type, bool storedLines = false,
                      bool freshLines = false) {
    for (const pb::Server& server : store.ListServers())
        for (const pb::Device& device : store.ListDevices(server.name())) {
            const int stored = device.secondary_lines_size();
            if (device.type() != type || (storedLines && stored == 0) ||
                (freshLines && device.configured_lines() <= stored + 1))
                continue;
            return {QString::fromStdString(server.name()), QString::fromStdString(device.name())};
        }
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

// Sets a control as EditorDriver::Set does; "edtScannerUser=pick" chooses
// the first user the selection offers.
void Set(EditorDriver& editor, const QString& assignment) {
    if (assignment != QLatin1String("edtScannerUser=pick")) return editor.Set(assignment);
    ShowPageOf(editor.Field<QWidget>("edtScannerUser"));
    WhenShown<frmUserSelection>([](frmUserSelection& dialog) {
        // The list fills a moment after the dialog shows.
        auto* users = Child<QTreeView>(dialog, "lvUsers");
        QTRY_VERIFY(users->model()->rowCount() > 1);
        ClickRow(users, 1, {}, true);
    });
    editor.Click("cmdScannerUser");
}

void ChooseServer(EditorDriver& editor, const QString& host) {
    WhenShown<frmServerSelection>([host](frmServerSelection& dialog) {
        EditorDriver selection(dialog);
        QTRY_VERIFY(selection.Names("lvServers").contains(host));
        selection.Select("lvServers", {host}, true);
    });
    editor.Click("cmdUserServer");
}

}  // namespace

class TestDeviceEditor : public ExplorerSuite {
    Q_OBJECT

private slots:
    void Lifecycle();
    void RestartQuestionOnlyForThePrimaryLine();
    void RestartAnswers_data();
    void RestartAnswers();
    void RestartQuestionClosedLeavesTheChoice();
    void ValidationOrderAndBounds_data();
    void ValidationOrderAndBounds();
    void LinesKeepTheirEditsAcrossSwitches();
    void LineDelete();
    void TypeChange();
    void EnableRulesFollowTheType();
    void OlderServersRetireFields();
    void NewDeviceAsTheServerMakesIt();
    void GoneDeviceOrServer();
};

void TestDeviceEditor::Lifecycle() {
    RestartAnswerer save("cmdSave");
    const DeviceId fax = DeviceOfType(Store(), 1);
    LifecycleSubject subject;
    subject.make = [] { return std::make_unique<frmDeviceDetails>(); };
    subject.open = Open(fax);
    subject.missing = Open({fax.host, QStringLiteral("nosuchdev")});
    subject.notExistText = GetLabel(QStringLiteral("DeviceNotExist"));
    subject.missingServer = New(QStringLiteral("nosuchhost"));
    subject.create = New(fax.host);
    subject.keyField = "edtDeviceName";
    subject.takenKey = fax.name;
    subject.existsText = GetLabel(QStringLiteral("DeviceAlreadyExist"));
    int edits = 0;
    subject.edit = [&edits](EditorDriver& editor) {
        editor.Type("edtComment", QStringLiteral("Edit %1").arg(++edits));
    };
    subject.storedVersion = [&] { return Stored(Store(), fax).version(); };
    CheckLifecycle(subject, fx_->prompter);
}

void TestDeviceEditor::RestartQuestionOnlyForThePrimaryLine() {
    RestartAnswerer save("cmdSave");
    const DeviceId isdn = DeviceOfType(Store(), 3, true);
    const pb::Device before = Stored(Store(), isdn);
    {
        DeviceEditor editor(Open(isdn));
        editor.Type("edtComment", QStringLiteral("Primary changed"));
        editor.Click("cmdOK");
        QVERIFY(!editor.dialog.isVisible());
        QCOMPARE(save.Count(), 1);
        QCOMPARE(editor.dialog.RestartChoice(), DeviceRestartChoice::Save);
    }
    QCOMPARE(Stored(Store(), isdn).primary().comment(), std::string("Primary changed"));
    {
        DeviceEditor editor(Open(isdn));
        auto* lines = editor.Field<QComboBox>("cboLine");
        QCOMPARE(lines->count(), before.configured_lines());
        QVERIFY(lines->itemText(1).startsWith(QLatin1String("2 ")));
        lines->setCurrentIndex(1);
        QCOMPARE(editor.dialog.Line(), 2);
        QCOMPARE(editor.Field("edtComment")->text(),
                 QString::fromStdString(before.secondary_lines(0).settings().comment()));
        editor.Type("edtPhisicalDevice", QStringLiteral("/dev/isdn9"));
        fx_->prompter.Answer(Answer::OK);
        editor.Click("cmdOK");
        QVERIFY(!editor.dialog.isVisible());
        QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("SelectedLineSaved")));
        QCOMPARE(fx_->prompter.LastPrompt().icon, PromptIcon::Information);
        QCOMPARE(editor.Answer(), QStringLiteral("-1"));
    }
    QCOMPARE(save.Count(), 1);
    const pb::Device after = Stored(Store(), isdn);
    QCOMPARE(after.secondary_lines(0).settings().physical_device(), std::string("/dev/isdn9"));
    QVERIFY(after.secondary_lines(0).version() > before.secondary_lines(0).version());
    // Only the line was written.
    QCOMPARE(after.primary().comment(), std::string("Primary changed"));
}

void TestDeviceEditor::RestartAnswers_data() {
    QTest::addColumn<QString>("button");
    QTest::addColumn<bool>("written");
    QTest::addColumn<bool>("stillOpen");
    QTest::newRow("save") << "cmdSave" << true << false;
    QTest::newRow("save and restart") << "cmdSaveRestart" << true << false;
    QTest::newRow("don't save") << "cmdDontSave" << false << false;
    QTest::newRow("cancel") << "cmdCancel" << false << true;
}

void TestDeviceEditor::RestartAnswers() {
    QFETCH(QString, button);
    QFETCH(bool, written);
    QFETCH(bool, stillOpen);
    // A stopped device shows the restart: it runs afterwards.
    DeviceId stopped;
    for (const pb::Server& server : Store().ListServers())
        for (const pb::Device& device : Store().ListDevices(server.name()))
            if (stopped.name.isEmpty() && device.state() == pb::DEVICE_STOPPED && server.online())
                stopped = {QString::fromStdString(server.name()),
                           QString::fromStdString(device.name())};
    QVERIFY(!stopped.name.isEmpty());
    const int64_t version = Stored(Store(), stopped).version();
    const QByteArray name = button.toLatin1();
    RestartAnswerer answer(name.constData());
    DeviceEditor editor(Open(stopped));
    editor.Type("edtPhisicalDevice", QStringLiteral("/dev/ttyS7"));
    editor.Click("cmdOK");
    QCOMPARE(answer.Count(), 1);
    QCOMPARE(editor.dialog.isVisible(), stillOpen);
    const pb::Device after = Stored(Store(), stopped);
    QCOMPARE(after.version() > version, written);
    QCOMPARE(after.primary().physical_device() == "/dev/ttyS7", written);
    QCOMPARE(after.state(),
             button == QLatin1String("cmdSaveRestart") ? pb::DEVICE_RUNNING : pb::DEVICE_STOPPED);
    if (!stillOpen) {
        QCOMPARE(editor.Answer(), written ? QStringLiteral("-1") : QStringLiteral("0"));
        return;
    }
    // Cancel keeps every edit, and the question comes again with the
    // save question of the close box.
    QCOMPARE(editor.Field("edtPhisicalDevice")->text(), QStringLiteral("/dev/ttyS7"));
    QCOMPARE(editor.dialog.State(), EditorState::Changed);
    fx_->prompter.Answer(Answer::Yes);
    editor.dialog.close();
    QCOMPARE(answer.Count(), 2);
    QVERIFY(editor.dialog.isVisible());
}

void TestDeviceEditor::RestartQuestionClosedLeavesTheChoice() {
    DeviceRestartChoice choice = DeviceRestartChoice::SaveAndRestart;
    frmAskRestartDevice question(nullptr, &choice);
    WhenShown<frmAskRestartDevice>([](frmAskRestartDevice& shown) { shown.close(); });
    question.exec();
    QCOMPARE(choice, DeviceRestartChoice::SaveAndRestart);
    QCOMPARE(question.findChild<QPlainTextEdit*>("txtMessageText")->toPlainText(),
             GetLabel(QStringLiteral("AskRestartDeviceMsg")));
    QCOMPARE(Child<QAbstractButton>(question, "cmdSaveRestart")->text(),
             QStringLiteral("Save && &Restart"));
    // Asked without an answer, nothing is saved.
    WhenShown<frmAskRestartDevice>([](frmAskRestartDevice& shown) { shown.close(); });
    QCOMPARE(frmAskRestartDevice::Ask(nullptr), DeviceRestartChoice::Cancel);
}

void TestDeviceEditor::ValidationOrderAndBounds_data() {
    QTest::addColumn<QStringList>("edits");
    QTest::addColumn<QString>("message");  // "" when the save goes through
    QTest::addColumn<QString>("page");
    QTest::addColumn<QString>("field");
    const auto row = [](const char* name, QStringList edits, const QString& message = {},
                        const char* page = "", const char* field = "") {
        QTest::newRow(name) << edits << message << QString(page) << QString(field);
    };
    row("min digits 31, skip 20, wait 30",
        {"edtMinDigits=31", "edtSkipDigits=20", "edtWaitDigitTimeout=30"});
    row("skip 21", {"edtSkipDigits=21"}, RangeMessage("Skip Digits", "0", "20"),
        "picInboundRouting", "edtSkipDigits");
    row("max digits empty", {"edtMaxDigits="}, EmptyMessage("Max. Digits"), "picInboundRouting",
        "edtMaxDigits");
    row("reservation 0", {"edtScannerUser=pick", "edtReservationTimeout=0"},
        RangeMessage("Reservation Timeout", "1", "3600"), "picScanner", "edtReservationTimeout");
    row("reservation 3600", {"edtScannerUser=pick", "edtReservationTimeout=3600"});
    row("page wait 0", {"edtScannerPageWait=0"}, RangeMessage("Scanner Page Wait", "1", "60"),
        "picScanner", "edtScannerPageWait");
    row("comment before the digits", {"edtSkipDigits=21", "edtComment="}, EmptyMessage("Comment"),
        "tabGeneral", "edtComment");
    row("digits before the factor", {"edtAccountFactor=", "edtWaitDigitTimeout=31"},
        RangeMessage("Wait Digit Timeout", "0", "30"), "picInboundRouting", "edtWaitDigitTimeout");
    row("factor before the reservation", {"edtScannerPageWait=0", "edtAccountFactor="},
        EmptyMessage("Account Factor"), "picAccounting", "edtAccountFactor");
}

void TestDeviceEditor::ValidationOrderAndBounds() {
    QFETCH(QStringList, edits);
    QFETCH(QString, message);
    RestartAnswerer save("cmdSave");
    const DeviceId fax = DeviceOfType(Store(), 1);
    const int64_t before = Stored(Store(), fax).version();
    DeviceEditor editor(Open(fax));
    for (const QString& edit : edits) Set(editor, edit);
    auto* pages = editor.Field<QTabWidget>("tabDetails");
    pages->setCurrentWidget(editor.Field<QWidget>("picTelex"));
    QFETCH(QString, field);
    editor.ExpectOK(fx_->prompter, message, field);
    QCOMPARE(Stored(Store(), fax).version() > before, message.isEmpty());
    if (message.isEmpty()) return;
    QTEST(pages->currentWidget()->objectName(), "page");
    QCOMPARE(save.Count(), 0);
}

void TestDeviceEditor::LinesKeepTheirEditsAcrossSwitches() {
    RestartAnswerer save("cmdSave");
    const DeviceId isdn = DeviceOfType(Store(), 3, true);
    DeviceEditor editor(Open(isdn));
    auto* lines = editor.Field<QComboBox>("cboLine");
    editor.Type("edtComment", QStringLiteral("Primary edited"));
    lines->setCurrentIndex(1);
    QVERIFY(editor.Field("edtComment")->text() != QStringLiteral("Primary edited"));
    editor.Type("edtTSI", QStringLiteral("+49 1 2"));
    lines->setCurrentIndex(0);
    QCOMPARE(editor.Field("edtComment")->text(), QStringLiteral("Primary edited"));
    lines->setCurrentIndex(1);
    QCOMPARE(editor.Field("edtTSI")->text(), QStringLiteral("+49 1 2"));
    // OK saves the line shown; the primary line's edits are not lost but
    // shown, and the dialog stays open for them.
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdOK");
    QVERIFY(editor.dialog.isVisible());
    QCOMPARE(Stored(Store(), isdn).secondary_lines(0).settings().tsi(), std::string("+49 1 2"));
    QCOMPARE(editor.dialog.Line(), 1);
    QCOMPARE(editor.Field("edtComment")->text(), QStringLiteral("Primary edited"));
    QCOMPARE(editor.dialog.State(), EditorState::Changed);
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    QCOMPARE(save.Count(), 1);
    QCOMPARE(Stored(Store(), isdn).primary().comment(), std::string("Primary edited"));
}

void TestDeviceEditor::LineDelete() {
    const DeviceId trunk = DeviceOfType(Store(), 3, true, true);
    const pb::Device before = Stored(Store(), trunk);
    DeviceEditor editor(Open(trunk));
    auto* lines = editor.Field<QComboBox>("cboLine");
    // The primary line cannot go.
    QVERIFY(!editor.Enabled("cmdDelete"));
    // A line counted but not stored: said, nothing deleted.
    lines->setCurrentIndex(lines->count() - 1);
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdDelete");
    QCOMPARE(fx_->prompter.LastPrompt().text, GetLabel(QStringLiteral("LineNotConfigured")));
    // A stored line: asked with its name, No first.
    lines->setCurrentIndex(1);
    const QString name = lines->currentText();
    fx_->prompter.Answer(Answer::No);
    editor.Click("cmdDelete");
    const Prompt& question = fx_->prompter.LastPrompt();
    QCOMPARE(question.text, GetLabel(QStringLiteral("DeleteDeviceLine")) + name + " ?");
    QCOMPARE(question.defaultButton, 2);
    QCOMPARE(Stored(Store(), trunk).secondary_lines_size(), before.secondary_lines_size());
    fx_->prompter.Answer(Answer::Yes);
    editor.Click("cmdDelete");
    QCOMPARE(Stored(Store(), trunk).secondary_lines_size(), before.secondary_lines_size() - 1);
    QCOMPARE(editor.dialog.Line(), 1);
    QCOMPARE(lines->count(), before.configured_lines());
    editor.Click("cmdCancel");
    QCOMPARE(editor.Answer(), QStringLiteral("-1"));
}

void TestDeviceEditor::TypeChange() {
    RestartAnswerer save("cmdSave");
    // Several lines: asked, and No puts the old type back.
    const DeviceId isdn = DeviceOfType(Store(), 3, true);
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
        QCOMPARE(editor.dialog.State(), EditorState::Shown);
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
        QCOMPARE(editor.Field<QComboBox>("cboLine")->count(), changed.configured_lines());
        QCOMPARE(editor.Field("edtComment")->text(), QStringLiteral("Now basic rate"));
        QCOMPARE(editor.dialog.State(), EditorState::Changed);
        editor.Click("cmdOK");
        QCOMPARE(editor.Answer(), QStringLiteral("-1"));
    }
    QCOMPARE(Stored(Store(), isdn).primary().comment(), std::string("Now basic rate"));
    // One line: nothing asked, the type is saved with the device.
    const DeviceId fax = DeviceOfType(Store(), 1);
    DeviceEditor editor(Open(fax));
    auto* type = editor.Field<QComboBox>("cboDeviceType");
    type->setCurrentIndex(type->findData(9));
    QCOMPARE(editor.dialog.State(), EditorState::Changed);
    QVERIFY(editor.Enabled("picBuiltinPrinter"));
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    QCOMPARE(Stored(Store(), fax).type(), 9);
    QCOMPARE(fx_->prompter.Prompts().size(), 2);  // the No and the Yes above, nothing since
}

void TestDeviceEditor::EnableRulesFollowTheType() {
    // What each type offers, page by page. The enable options belong to the
    // voice group; the SMS box inside them to its own.
    const struct {
        int type;
        QStringList enabled;
        QStringList disabled;
    } cases[] = {
        {1,
         {"edtTSI", "edtHeadline", "picInboundRouting", "picAccounting", "picISDN", "picScanner",
          "fraDialType", "picExtras"},
         {"picBuiltinPrinter", "picTelex", "picVoice", "fraEnableOptions"}},
        {5,
         {"picTelex", "picAccounting"},
         {"edtTSI", "edtHeadline", "picInboundRouting", "picScanner", "picVoice"}},
        {6,
         {"picVoice", "fraEnableOptions", "picInboundRouting"},
         {"edtTSI", "picAccounting", "picISDN", "picTelex", "picScanner", "chkEnableSMS"}},
        {9, {"picBuiltinPrinter", "picScanner", "edtTSI"}, {"picInboundRouting", "picTelex"}},
    };
    for (const auto& rules : cases) {
        const DeviceId device = DeviceOfType(Store(), rules.type);
        DeviceEditor editor(Open(device));
        for (const QString& control : rules.enabled)
            QVERIFY2(editor.Enabled(qPrintable(control)),
                     qPrintable(QStringLiteral("type %1: %2").arg(rules.type).arg(control)));
        for (const QString& control : rules.disabled)
            QVERIFY2(!editor.Enabled(qPrintable(control)),
                     qPrintable(QStringLiteral("type %1: %2").arg(rules.type).arg(control)));
        auto* sms = editor.Field<QWidget>("chkEnableSMS");
        QCOMPARE(sms->isEnabledTo(editor.Field<QWidget>("fraEnableOptions")), rules.type == 7);
    }
    // The check boxes govern their fields, live.
    DeviceEditor voice(Open(DeviceOfType(Store(), 6)));
    auto* recording = voice.Field("edtMaxRecordingTime");
    Set(voice, "chkEnableVoice=1");
    QVERIFY(recording->isEnabled());
    Set(voice, "chkEnableVoice=0");
    QVERIFY(!recording->isEnabled());
    QVERIFY(!voice.Enabled("chkEnableSilenceCompression"));
    // A line without fax has no fax fields, and a disabled field is grey.
    const DeviceId faxId = DeviceOfType(Store(), 1);
    pb::Device noFax = Stored(Store(), faxId);
    noFax.mutable_primary()->set_enable_fax(false);
    Store().CommitDevice(noFax);
    DeviceEditor fax(Open(faxId));
    QVERIFY(!fax.Enabled("edtTSI") && !fax.Enabled("edtGetExternalLine"));
    QCOMPARE(fax.Field("edtTSI")->palette().color(QPalette::Base),
             QApplication::palette().color(QPalette::Button));
    QCOMPARE(fax.Field("edtNumberPrefix")->palette().color(QPalette::Base),
             QApplication::palette().color(QPalette::Base));
    // The reservation time-out waits for a scanner user.
    QVERIFY(!fax.Enabled("edtReservationTimeout"));
    Set(fax, "edtScannerUser=pick");
    QVERIFY(fax.Enabled("edtReservationTimeout"));
}

void TestDeviceEditor::OlderServersRetireFields() {
    const DeviceId fax = DeviceOfType(Store(), 1);
    const auto restore = qScopeGuard([this] {
        Store().SetMeta("second_version", "7");
        Store().SetMeta("server_level", "5");
        TheSession()->Login();
    });
    // Before the seventh version there is no CSI prefix: emptied, and
    // stored empty.
    {
        pb::Device device = Stored(Store(), fax);
        device.mutable_primary()->set_csi_prefix("CSI");
        device.mutable_primary()->set_enable_did(true);
        Store().CommitDevice(device);
    }
    Store().SetMeta("second_version", "6");
    TheSession()->Login();
    {
        RestartAnswerer save("cmdSave");
        DeviceEditor editor(Open(fax));
        QVERIFY(editor.Enabled("picInboundRouting"));
        QVERIFY(!editor.Enabled("edtCsiPrefix"));
        QCOMPARE(editor.Field("edtCsiPrefix")->text(), QString());
        editor.Type("edtComment", QStringLiteral("Older release"));
        editor.Click("cmdOK");
        QVERIFY(!editor.dialog.isVisible());
    }
    QCOMPARE(Stored(Store(), fax).primary().csi_prefix(), std::string());
    // Below level 5 no inbound routing and no extras, whatever the type.
    Store().SetMeta("second_version", "7");
    Store().SetMeta("server_level", "4");
    TheSession()->Login();
    DeviceEditor editor(Open(fax));
    QVERIFY(!editor.Enabled("picInboundRouting") && !editor.Enabled("picExtras"));
    QVERIFY(editor.Enabled("picAccounting"));
}

void TestDeviceEditor::NewDeviceAsTheServerMakesIt() {
    RestartAnswerer save("cmdSave");
    const DeviceId fax = DeviceOfType(Store(), 1);
    DeviceEditor editor(New(fax.host));
    auto* type = editor.Field<QComboBox>("cboDeviceType");
    QVERIFY(type->isEnabled() && !editor.Enabled("cboLine"));
    type->setCurrentIndex(type->findData(4));
    editor.Type("edtDeviceName", QStringLiteral("(did)9"));
    QCOMPARE(editor.Field("edtDeviceName")->text(), QStringLiteral("did9"));
    editor.Key("edtDeviceName", Qt::Key_Return);
    QCOMPARE(editor.dialog.State(), EditorState::NewObject);
    // Lines and values as the server makes a device of that type.
    const pb::Device fresh = TheSession()->GetDevice(fax.host, QStringLiteral("did9"), 4);
    QCOMPARE(editor.Field<QComboBox>("cboLine")->count(), fresh.configured_lines());
    QVERIFY(fresh.configured_lines() > 1);
    QCOMPARE(editor.Field("edtMaxLines")->text(), QString::number(fresh.configured_lines()));
    QCOMPARE(editor.Field("edtAccountFactor")->text(), FormatDecimal(0, 4));
    QCOMPARE(editor.Field("edtReservationTimeout")->text(), QStringLiteral("1"));
    QVERIFY(editor.Field<QAbstractButton>("chkEnableFax")->isChecked());
    QVERIFY(editor.Field<QAbstractButton>("optNone")->isChecked());
    // No user server yet: a beep and the field's message.
    editor.Type("edtComment", QStringLiteral("DID trunk 9"));
    Set(editor, "edtAccountFactor=" + FormatDecimal(1.25, 2));
    const int beeps = fx_->prompter.BeepCount();
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdOK");
    QCOMPARE(fx_->prompter.LastPrompt().text, EmptyMessage("User Server"));
    QCOMPARE(fx_->prompter.BeepCount(), beeps + 1);
    QCOMPARE(save.Count(), 0);
    ChooseServer(editor, fax.host);
    QCOMPARE(editor.Field("edtUserServer")->text(), fax.host);
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    QCOMPARE(save.Count(), 1);
    const pb::Device stored = Stored(Store(), {fax.host, QStringLiteral("did9")});
    QCOMPARE(stored.type(), 4);
    QCOMPARE(stored.primary().user_server(), fax.host.toStdString());
    QCOMPARE(stored.primary().account_factor(), 1.25);
    QCOMPARE(editor.Answer(), QStringLiteral("-1"));
}

void TestDeviceEditor::GoneDeviceOrServer() {
    const DeviceId fax = DeviceOfType(Store(), 1);
    DeviceEditor editor(Open(fax));
    editor.Type("edtComment", QStringLiteral("Too late"));
    // Deleted by another console while this one edits: said, nothing
    // written, the dialog keeps the edit.
    Store().DeleteDevice(fax.host.toStdString(), fax.name.toStdString(), 0);
    RestartAnswerer save("cmdSave");
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdOK");
    QVERIFY(editor.dialog.isVisible());
    QCOMPARE(fx_->prompter.LastPrompt().icon, PromptIcon::Critical);
    QCOMPARE(editor.Field("edtComment")->text(), QStringLiteral("Too late"));
    QVERIFY(Stored(Store(), fax).is_new());
}

QTEST_MAIN(TestDeviceEditor)
#include "tst_deviceeditor.moc"

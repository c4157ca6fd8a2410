// The options dialog: server time-out and event severity, driven through its
// fields against the reference server.

#include <QAction>
#include <QApplication>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <memory>

#include "common/Labels.h"
#include "common/Settings.h"
#include "shell/ViewSettings.h"
#include "shell/frmMain.h"
#include "shell/frmOptions.h"
#include "support/ScriptedPrompter.h"
#include "support/TestServer.h"

using namespace winadmin;

namespace {

const QString kUnset = QStringLiteral("<unset>");
const QString kTimeout = QStringLiteral("Server Timeout");
const QString kSeverity = QStringLiteral("Severity");

QString StoredMain(const QString& name) {
    return GetSectionSetting(kVendor, GetProductKeyName(), kMainFormSection, name, kUnset);
}

void StoreMain(const QString& name, const QString& value) {
    SaveSectionSetting(kVendor, GetProductKeyName(), kMainFormSection, name, value);
}

}  // namespace

class TestOptions : public QObject {
    Q_OBJECT

private slots:
    void init();
    void cleanup();

    void LoadsStoredValues_data();
    void LoadsStoredValues();
    void FormFollowsServerLanguage();
    void EmptyTimeoutRefused_data();
    void EmptyTimeoutRefused();
    void TimeoutOutOfRangeRefused_data();
    void TimeoutOutOfRangeRefused();
    void TimeoutFieldTakesDigitsOnly();
    void OkSavesBothAndLastsToNextStart();
    void CancelWritesNothing_data();
    void CancelWritesNothing();
    void MenuOpensOptionsModally();

private:
    void StartServer(const std::string& brand = {}, const std::string& language = {});
    std::unique_ptr<frmOptions> ShowOptions();
    QLineEdit* TimeoutField(frmOptions& dialog) const;
    QComboBox* SeverityList(frmOptions& dialog) const;

    std::unique_ptr<QTemporaryDir> dir_;
    std::unique_ptr<TestServer> server_;
    std::unique_ptr<ScriptedPrompter> prompter_;
    int sessionDefault_ = 0;
};

void TestOptions::init() {
    dir_ = std::make_unique<QTemporaryDir>();
    QVERIFY(dir_->isValid());
    UseSettingsFile(dir_->filePath(QStringLiteral("settings.ini")));
    prompter_ = std::make_unique<ScriptedPrompter>();
    StartServer();
}

void TestOptions::cleanup() {
    if (prompter_) QCOMPARE(prompter_->UnusedAnswers(), 0);
    SetTheSession(nullptr);
    server_.reset();
    prompter_.reset();
    UseNativeSettings();
    dir_.reset();
}

void TestOptions::StartServer(const std::string& brand, const std::string& language) {
    SetTheSession(nullptr);
    TestServer::Options options;
    options.brand = brand;
    options.language = language;
    server_ = std::make_unique<TestServer>(options);
    SetTheSession(server_->Login());
    sessionDefault_ = TheSession()->GetTimeout();
}

std::unique_ptr<frmOptions> TestOptions::ShowOptions() {
    auto dialog = std::make_unique<frmOptions>();
    dialog->show();
    dialog->activateWindow();
    if (!QTest::qWaitForWindowActive(dialog.get())) qWarning("options dialog not activated");
    return dialog;
}

QLineEdit* TestOptions::TimeoutField(frmOptions& dialog) const {
    return dialog.findChild<QLineEdit*>(QStringLiteral("edtServerTimeout"));
}

QComboBox* TestOptions::SeverityList(frmOptions& dialog) const {
    return dialog.findChild<QComboBox*>(QStringLiteral("cboSeverity"));
}

void TestOptions::LoadsStoredValues_data() {
    QTest::addColumn<QString>("timeout");       // stored; "" for none
    QTest::addColumn<QString>("severity");      // stored; "" for none
    QTest::addColumn<QString>("shownTimeout");  // "" for the session's time-out
    QTest::addColumn<int>("shownSeverity");
    QTest::newRow("fresh profile") << ""
                                   << ""
                                   << "" << 0;
    QTest::newRow("stored values") << "45"
                                   << "3"
                                   << "45" << 3;
    QTest::newRow("highest severity") << "600"
                                      << "5"
                                      << "600" << 5;
    QTest::newRow("trailing letters") << "12abc"
                                      << "4x"
                                      << "12" << 4;
    QTest::newRow("severity beyond the list") << "30"
                                              << "9"
                                              << "30" << 0;
    QTest::newRow("unusable time-out") << "0"
                                       << "-1"
                                       << "" << 0;
}

void TestOptions::LoadsStoredValues() {
    QFETCH(QString, timeout);
    QFETCH(QString, severity);
    QFETCH(QString, shownTimeout);
    QFETCH(int, shownSeverity);
    if (!timeout.isEmpty()) StoreMain(kTimeout, timeout);
    if (!severity.isEmpty()) StoreMain(kSeverity, severity);

    auto dialog = ShowOptions();
    QCOMPARE(TimeoutField(*dialog)->text(),
             shownTimeout.isEmpty() ? QString::number(sessionDefault_) : shownTimeout);
    QComboBox* list = SeverityList(*dialog);
    QCOMPARE(list->currentIndex(), shownSeverity);
    QCOMPARE(list->currentData().toInt(), shownSeverity);
    // Opening alone changes nothing.
    QCOMPARE(StoredMain(kTimeout), timeout.isEmpty() ? kUnset : timeout);
    QCOMPARE(TheSession()->GetTimeout(), sessionDefault_);
}

void TestOptions::FormFollowsServerLanguage() {
    StartServer({}, "de");
    auto dialog = ShowOptions();
    QCOMPARE(dialog->windowTitle(), QStringLiteral("Optionen"));
    QVERIFY(dialog->isModal());
    auto* timeoutLabel = dialog->findChild<QLabel*>(QStringLiteral("lblServerTimeout"));
    auto* severityLabel = dialog->findChild<QLabel*>(QStringLiteral("lblSeverity"));
    QCOMPARE(timeoutLabel->text(), QStringLiteral("Server-Zeitlimit:"));
    QCOMPARE(timeoutLabel->buddy(), TimeoutField(*dialog));
    QCOMPARE(severityLabel->buddy(), SeverityList(*dialog));

    QComboBox* list = SeverityList(*dialog);
    const QStringList expected = {"Keine",  "Hinweis",       "Warnung",
                                  "Fehler", "Schwerwiegend", "Panik"};
    QCOMPARE(list->count(), expected.size());
    for (int i = 0; i < list->count(); ++i) {
        QCOMPARE(list->itemText(i), expected.at(i));
        QCOMPARE(list->itemData(i).toInt(), i);
    }

    // Tab walks the form top to bottom, then OK and Cancel.
    auto* ok = dialog->findChild<QPushButton*>(QStringLiteral("cmdOK"));
    auto* cancel = dialog->findChild<QPushButton*>(QStringLiteral("cmdCancel"));
    QVERIFY(ok->isDefault());
    TimeoutField(*dialog)->setFocus();
    const QList<QWidget*> order = {list, ok, cancel, TimeoutField(*dialog)};
    for (QWidget* next : order) {
        QTest::keyClick(QApplication::focusWidget(), Qt::Key_Tab);
        QCOMPARE(QApplication::focusWidget(), next);
    }
}

void TestOptions::EmptyTimeoutRefused_data() {
    QTest::addColumn<QString>("language");
    QTest::addColumn<QString>("message");
    QTest::newRow("en") << "en"
                        << "The field 'Server Timeout' cannot be empty.";
    QTest::newRow("de") << "de"
                        << "Das Feld 'Server-Zeitlimit' darf nicht leer sein.";
}

void TestOptions::EmptyTimeoutRefused() {
    QFETCH(QString, language);
    QFETCH(QString, message);
    StartServer({}, language.toStdString());
    auto dialog = ShowOptions();
    QLineEdit* field = TimeoutField(*dialog);
    field->setFocus();
    field->selectAll();
    QTest::keyClick(field, Qt::Key_Backspace);
    QTest::keyClick(SeverityList(*dialog), Qt::Key_Down);

    prompter_->Answer(Answer::OK);
    // Enter presses the default button, OK.
    QTest::keyClick(field, Qt::Key_Return);

    QCOMPARE(prompter_->Prompts().size(), 1);
    const Prompt& shown = prompter_->LastPrompt();
    QCOMPARE(shown.text, message);
    QCOMPARE(shown.icon, PromptIcon::Exclamation);
    QCOMPARE(shown.buttons, PromptButtons::OK);
    QCOMPARE(shown.title, dialog->windowTitle());
    QVERIFY(dialog->isVisible());
    QCOMPARE(QApplication::focusWidget(), field);
    QCOMPARE(StoredMain(kTimeout), kUnset);
    QCOMPARE(StoredMain(kSeverity), kUnset);
    QCOMPARE(TheSession()->GetTimeout(), sessionDefault_);
}

void TestOptions::TimeoutOutOfRangeRefused_data() {
    QTest::addColumn<QString>("typed");
    QTest::newRow("zero") << "0";
    QTest::newRow("beyond 16 bits") << "99999";
}

void TestOptions::TimeoutOutOfRangeRefused() {
    QFETCH(QString, typed);
    auto dialog = ShowOptions();
    QLineEdit* field = TimeoutField(*dialog);
    field->clear();
    QTest::keyClicks(field, typed);

    prompter_->Answer(Answer::OK);
    QTest::mouseClick(dialog->findChild<QPushButton*>(QStringLiteral("cmdOK")), Qt::LeftButton);
    QCOMPARE(prompter_->Prompts().size(), 1);
    QCOMPARE(prompter_->LastPrompt().text,
             QStringLiteral("The valid range for 'Server Timeout' is from 1 to 32767."));
    QCOMPARE(prompter_->LastPrompt().icon, PromptIcon::Exclamation);
    QVERIFY(dialog->isVisible());
    QCOMPARE(StoredMain(kTimeout), kUnset);
    QCOMPARE(TheSession()->GetTimeout(), sessionDefault_);
}

void TestOptions::TimeoutFieldTakesDigitsOnly() {
    auto dialog = ShowOptions();
    QLineEdit* field = TimeoutField(*dialog);
    field->clear();
    QTest::keyClicks(field, QStringLiteral("4a-5 .,+"));
    QCOMPARE(field->text(), QStringLiteral("45"));
    field->clear();
    QTest::keyClicks(field, QStringLiteral("1234567"));
    QCOMPARE(field->text(), QStringLiteral("12345"));
}

void TestOptions::OkSavesBothAndLastsToNextStart() {
    {
        auto dialog = ShowOptions();
        QLineEdit* field = TimeoutField(*dialog);
        field->clear();
        QTest::keyClicks(field, QStringLiteral("45"));
        QComboBox* list = SeverityList(*dialog);
        for (int i = 0; i < 4; ++i) QTest::keyClick(list, Qt::Key_Down);
        QCOMPARE(list->currentIndex(), 4);
        QTest::mouseClick(dialog->findChild<QPushButton*>(QStringLiteral("cmdOK")), Qt::LeftButton);

        QVERIFY(!dialog->isVisible());
        QCOMPARE(dialog->result(), int(QDialog::Accepted));
        QCOMPARE(StoredMain(kTimeout), QStringLiteral("45"));
        QCOMPARE(StoredMain(kSeverity), QStringLiteral("4"));
        QCOMPARE(TheSession()->GetTimeout(), 45);
    }
    // The next start: a new session with its own default, then the main
    // window's load hands it the chosen time-out.
    SetTheSession(server_->Login());
    QCOMPARE(TheSession()->GetTimeout(), sessionDefault_);
    frmMain main;
    QCOMPARE(TheSession()->GetTimeout(), 45);
    auto dialog = ShowOptions();
    QCOMPARE(TimeoutField(*dialog)->text(), QStringLiteral("45"));
    QCOMPARE(SeverityList(*dialog)->currentIndex(), 4);
    QCOMPARE(StoredSeverity(), 4);
}

void TestOptions::CancelWritesNothing_data() {
    QTest::addColumn<bool>("byEscape");
    QTest::newRow("Escape") << true;
    QTest::newRow("Cancel button") << false;
}

void TestOptions::CancelWritesNothing() {
    QFETCH(bool, byEscape);
    StoreMain(kTimeout, QStringLiteral("20"));
    auto dialog = ShowOptions();
    QLineEdit* field = TimeoutField(*dialog);
    field->clear();
    QTest::keyClicks(field, QStringLiteral("99"));
    QTest::keyClick(SeverityList(*dialog), Qt::Key_Down);
    if (byEscape)
        QTest::keyClick(field, Qt::Key_Escape);
    else
        QTest::mouseClick(dialog->findChild<QPushButton*>(QStringLiteral("cmdCancel")),
                          Qt::LeftButton);

    QVERIFY(!dialog->isVisible());
    QCOMPARE(dialog->result(), int(QDialog::Rejected));
    QCOMPARE(StoredMain(kTimeout), QStringLiteral("20"));
    QCOMPARE(StoredMain(kSeverity), kUnset);
    QCOMPARE(TheSession()->GetTimeout(), sessionDefault_);
}

void TestOptions::MenuOpensOptionsModally() {
    frmMain main;
    main.show();
    QVERIFY(QTest::qWaitForWindowExposed(&main));
    QWidget* parent = nullptr;
    bool modal = false;
    QTimer::singleShot(0, this, [&] {
        frmOptions* dialog = nullptr;
        for (QWidget* window : QApplication::topLevelWidgets())
            if (auto* options = qobject_cast<frmOptions*>(window); options && options->isVisible())
                dialog = options;
        if (!dialog) return;
        parent = dialog->parentWidget();
        modal = dialog->isModal();
        dialog->reject();
    });
    main.findChild<QAction*>(QStringLiteral("mnuViewOptions"))->trigger();
    QCOMPARE(parent, &main);
    QVERIFY(modal);
    QVERIFY(main.findChildren<frmOptions*>().isEmpty());
}

QTEST_MAIN(TestOptions)
#include "tst_options.moc"

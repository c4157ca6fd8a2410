// The common error dialog through a scripted prompter; then the real
// message boxes and save dialog, answered the way a person would: a timer
// finds the box once it is up, notes what it shows, then presses a key. What
// was seen is checked after the box has gone, so a failed check never leaves
// a modal box waiting.

#include <QFileDialog>
#include <QGuiApplication>
#include <QInputDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>

#include "common/AppContext.h"
#include "common/QtPrompter.h"
#include "session/ErrorDialog.h"
#include "session/ServerSession.h"
#include "support/ConsoleFixture.h"
#include "support/ScriptedPrompter.h"
#include "support/TestServer.h"

using namespace winadmin;

namespace {

namespace pb = veldrano::admin::v1;

const QString kBuiltInTitle = QStringLiteral("VELDRANO Administrator");

// Makes session the process's one session until the end of the scope.
struct SessionScope {
    explicit SessionScope(std::unique_ptr<ServerSession> session) {
        SetTheSession(std::move(session));
    }
    ~SessionScope() { SetTheSession(nullptr); }
};

struct Seen {
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QString title;
    QString text;
    Qt::TextFormat format = Qt::AutoText;
    QMessageBox::StandardButtons buttons;
    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
    Qt::CursorShape pointer = Qt::BitmapCursor;
    bool openAfterEscape = false;
};

// Shows prompt in a real box; once it is up, notes what it shows and sends
// key to whatever has the focus, as from the keyboard.
int ShowAndPress(const Prompt& prompt, Qt::Key key, Seen& seen) {
    WhenShown<QMessageBox>([&seen, key](QMessageBox& box) {
        seen.icon = box.icon();
        seen.title = box.windowTitle();
        seen.text = box.text();
        seen.format = box.textFormat();
        seen.buttons = box.standardButtons();
        seen.defaultButton = box.standardButton(box.defaultButton());
        if (const QCursor* cursor = QGuiApplication::overrideCursor())
            seen.pointer = cursor->shape();
        QTest::keyClick(box.focusWidget() ? box.focusWidget() : &box, key);
        // A box without Cancel or No must be answered with a button.
        seen.openAfterEscape = key == Qt::Key_Escape && box.isVisible();
        if (seen.openAfterEscape) {
            box.close();
            QTest::keyClick(box.focusWidget() ? box.focusWidget() : &box, Qt::Key_Return);
        }
    });
    QtPrompter prompter;
    return prompter.Show(prompt);
}

}  // namespace

Q_DECLARE_METATYPE(PromptButtons)
Q_DECLARE_METATYPE(PromptIcon)

class TestQtPrompter : public QObject {
    Q_OBJECT

private slots:
    // First: the application title the real boxes set below is not the
    // built-in one these expect.
    void ChoosesButtonsByFamily_data();
    void ChoosesButtonsByFamily();
    void ShowsSessionErrorOverBusyWork();
    void TitleIsTheProductTitleOfTheSessionsBrand();
    void BoxShowsWhatWasAskedAndAnswersTheKey_data();
    void BoxShowsWhatWasAskedAndAnswersTheKey();
    void UntitledBoxShowsPlainTextAndTheNormalPointer();
    void SaveDialogOffersTheFiltersAndAnswersTheFile();
    void PasswordPromptHidesTheEntryAndAnswersIt();
};

void TestQtPrompter::BoxShowsWhatWasAskedAndAnswersTheKey_data() {
    QTest::addColumn<PromptButtons>("buttons");
    QTest::addColumn<PromptIcon>("icon");
    QTest::addColumn<int>("defaultPosition");
    QTest::addColumn<bool>("escape");  // Escape rather than Enter
    QTest::addColumn<QMessageBox::StandardButtons>("shownButtons");
    QTest::addColumn<QMessageBox::StandardButton>("shownDefault");
    QTest::addColumn<QMessageBox::Icon>("shownIcon");
    QTest::addColumn<int>("answer");
    QTest::addColumn<bool>("openAfterEscape");

    using B = QMessageBox;
    const auto row = [](const char* name, PromptButtons buttons, PromptIcon icon, int position,
                        bool escape, B::StandardButtons shown, B::StandardButton shownDefault,
                        B::Icon shownIcon, int answer, bool openAfterEscape = false) {
        QTest::newRow(name) << buttons << icon << position << escape << shown << shownDefault
                            << shownIcon << answer << openAfterEscape;
    };
    row("OK/Cancel, second default", PromptButtons::OKCancel, PromptIcon::Critical, 2, false,
        B::Ok | B::Cancel, B::Cancel, B::Critical, Answer::Cancel);
    row("Yes/No, Escape is No", PromptButtons::YesNo, PromptIcon::Question, 1, true, B::Yes | B::No,
        B::Yes, B::Question, Answer::No);
    row("Retry/Cancel, default out of range is the first", PromptButtons::RetryCancel,
        PromptIcon::Exclamation, 7, false, B::Retry | B::Cancel, B::Retry, B::Warning,
        Answer::Retry);
    row("Abort/Retry/Ignore, Escape does nothing", PromptButtons::AbortRetryIgnore,
        PromptIcon::Critical, 3, true, B::Abort | B::Retry | B::Ignore, B::Ignore, B::Critical,
        Answer::Ignore, true);
}

void TestQtPrompter::BoxShowsWhatWasAskedAndAnswersTheKey() {
    QFETCH(PromptButtons, buttons);
    QFETCH(PromptIcon, icon);
    QFETCH(int, defaultPosition);
    QFETCH(bool, escape);

    Seen seen;
    const int answer = ShowAndPress({QStringLiteral("Stop server mx-01?"),
                                     QStringLiteral("Servers"), icon, buttons, defaultPosition},
                                    escape ? Qt::Key_Escape : Qt::Key_Return, seen);
    QTEST(answer, "answer");
    QTEST(seen.buttons, "shownButtons");
    QTEST(seen.defaultButton, "shownDefault");
    QTEST(seen.icon, "shownIcon");
    QTEST(seen.openAfterEscape, "openAfterEscape");
    QCOMPARE(seen.title, QStringLiteral("Servers"));
}

void TestQtPrompter::UntitledBoxShowsPlainTextAndTheNormalPointer() {
    SetApplicationTitle(QStringLiteral("Quorel Administrator"));
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    // Label texts quote names in angle brackets; they are text, not markup.
    const QString text = QStringLiteral("Printer type <Unknown> <b>x</b>");
    Seen seen;
    ShowAndPress({text, QString(), PromptIcon::Exclamation, PromptButtons::OK, 1}, Qt::Key_Return,
                 seen);
    // The work that set the hourglass still owns it after the box.
    const QCursor* after = QGuiApplication::overrideCursor();
    const Qt::CursorShape afterShape = after ? after->shape() : Qt::BitmapCursor;
    QGuiApplication::restoreOverrideCursor();

    QCOMPARE(seen.title, QStringLiteral("Quorel Administrator"));
    QCOMPARE(seen.text, text);
    QCOMPARE(seen.format, Qt::PlainText);
    QCOMPARE(seen.pointer, Qt::ArrowCursor);
    QCOMPARE(afterShape, Qt::WaitCursor);
}

void TestQtPrompter::SaveDialogOffersTheFiltersAndAnswersTheFile() {
    QTemporaryDir dir;
    const QString target = dir.filePath(QStringLiteral("extras.txt"));

    QStringList filters;
    QFileDialog::AcceptMode mode = QFileDialog::AcceptOpen;
    WhenShown<QFileDialog>([&, target](QFileDialog& dialog) {
        filters = dialog.nameFilters();
        mode = dialog.acceptMode();
        auto* name = Child<QLineEdit>(dialog, "fileNameEdit");
        if (!name) return dialog.reject();
        // Pasted rather than typed: typing would open the completer's list,
        // which then takes the Enter.
        name->setText(target);
        QTest::keyClick(name, Qt::Key_Return);
    });
    QtPrompter prompter;
    const QString chosen = prompter.AskSaveFileName(
        QStringLiteral("Export"), QStringLiteral("Text Files(*.txt)|*.txt|All Files|*.*"));
    QCOMPARE(chosen, target);
    QCOMPARE(mode, QFileDialog::AcceptSave);
    QCOMPARE(filters,
             (QStringList{QStringLiteral("Text Files(*.txt)"), QStringLiteral("All Files (*.*)")}));

    // Cancelling answers an empty name.
    WhenShown<QFileDialog>([](QFileDialog& dialog) { dialog.reject(); });
    QCOMPARE(prompter.AskSaveFileName(QStringLiteral("Export"), QString()), QString());
}

void TestQtPrompter::PasswordPromptHidesTheEntryAndAnswersIt() {
    QtPrompter prompter;
    QLineEdit::EchoMode echo = QLineEdit::Normal;
    WhenShown<QInputDialog>([&](QInputDialog& dialog) {
        echo = dialog.textEchoMode();
        dialog.setTextValue(QStringLiteral("new secret"));
        dialog.accept();
    });
    QCOMPARE(prompter.AskPassword(QStringLiteral("Login"), QStringLiteral("Log in again")),
             std::optional<QString>(QStringLiteral("new secret")));
    QCOMPARE(echo, QLineEdit::Password);
    // A cancel answers nothing, not an empty password.
    WhenShown<QInputDialog>([](QInputDialog& dialog) { dialog.reject(); });
    QCOMPARE(prompter.AskPassword(QStringLiteral("Login"), QString()), std::nullopt);
}

void TestQtPrompter::ChoosesButtonsByFamily_data() {
    QTest::addColumn<uint>("number");
    QTest::addColumn<PromptButtons>("buttons");
    QTest::addColumn<int>("answer");  // passed through as the prompter gives it
    QTest::addColumn<QString>("text");
    // Through the protocol's table: what repeating can cure offers Retry, a
    // conflict (the same commit would be refused again) does not.
    QTest::newRow("time-out") << ErrorNumber(pb::ERROR_TIMEOUT) << PromptButtons::RetryCancel
                              << int(Answer::Retry) << QStringLiteral("Failed (81000001).");
    QTest::newRow("version conflict")
        << ErrorNumber(pb::ERROR_VERSION_CONFLICT) << PromptButtons::OK << int(Answer::Ignore)
        << QStringLiteral("Failed (8101000E).");
    // Seven digits that start like the transient family are still no prefix.
    QTest::newRow("seven digits") << 0x08100001u << PromptButtons::OK << int(Answer::OK)
                                  << QStringLiteral("Failed (8100001).");
}

void TestQtPrompter::ChoosesButtonsByFamily() {
    QFETCH(uint, number);
    QFETCH(int, answer);
    ScriptedPrompter prompter;
    prompter.Answer(answer);
    QCOMPARE(ShowErrorMessage(number, QStringLiteral("Failed"), QStringLiteral("Some.Component")),
             answer);
    const Prompt& shown = prompter.LastPrompt();
    QTEST(shown.buttons, "buttons");
    QTEST(shown.text, "text");
    QCOMPARE(shown.icon, PromptIcon::Critical);
    // No session: the built-in product, never the component.
    QCOMPARE(shown.title, kBuiltInTitle);
    QCOMPARE(shown.defaultButton, 1);
}

void TestQtPrompter::ShowsSessionErrorOverBusyWork() {
    // The description comes from the protocol's error table, once; a detail
    // follows it.
    const SessionError conflict = SessionError::FromCode(pb::ERROR_VERSION_CONFLICT);
    QCOMPARE(
        conflict.Description().count(QStringLiteral("another administrator"), Qt::CaseInsensitive),
        1);
    const SessionError denied =
        SessionError::FromCode(pb::ERROR_ACCESS_DENIED, QStringLiteral("not logged in"));
    QCOMPARE(denied.Description(), QStringLiteral("Access is denied: not logged in"));

    ScriptedPrompter prompter;
    prompter.Answer(Answer::OK);
    // Nested busy sections, as a failing editor leaves them.
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    QCOMPARE(ShowErrorMessage(conflict), int(Answer::OK));
    const ScriptedPrompter::Record& shown = prompter.Prompts().constFirst();
    QVERIFY(!shown.busyPointer);
    QVERIFY(!QGuiApplication::overrideCursor());
    QCOMPARE(shown.prompt.text, conflict.Description() + QStringLiteral(" (8101000E)."));
}

void TestQtPrompter::TitleIsTheProductTitleOfTheSessionsBrand() {
    TestServer::Options options;
    options.brand = "quorel";
    TestServer server(options);
    ScriptedPrompter prompter;
    {
        // A session that has not logged in yet knows no brand.
        SessionScope scope(std::make_unique<GrpcServerSession>(server.Channel()));
        prompter.Answer(Answer::OK);
        ShowErrorMessage(1u, QStringLiteral("Failed"), QStringLiteral("Some.Component"));
        QCOMPARE(prompter.LastPrompt().title, kBuiltInTitle);
    }
    SessionScope scope(server.Login());
    // An error the server raised: the box names the product, the error
    // object keeps its source for whoever handles it.
    SessionError refused(0, {}, {});
    try {
        TheSession()->StartServer(QStringLiteral("no-such-host"));
        QFAIL("the call was expected to fail");
    } catch (const SessionError& error) {
        refused = error;
    }
    QCOMPARE(refused.Source(), QStringLiteral("Kelvar.Administrator"));
    prompter.Answer(Answer::OK);
    QCOMPARE(ShowErrorMessage(refused), int(Answer::OK));
    QCOMPARE(prompter.LastPrompt().title, QStringLiteral("Quorel Administrator"));
    QVERIFY(!prompter.LastPrompt().text.contains(refused.Source()));
}

QTEST_MAIN(TestQtPrompter)
#include "tst_qtprompter.moc"

// The common error dialog through a scripted prompter; then the real
// message boxes and password prompt, answered the way a person would: a timer
// finds the box once it is up, notes what it shows, then presses a key. What
// was seen is checked after the box has gone, so a failed check never leaves
// a modal box waiting.

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

class TestQtPrompter : public QObject {
    Q_OBJECT

private slots:
    // First: the application title the real boxes set below is not the
    // built-in one these expect.
    void ChoosesButtonsByFamily();
    void ShowsSessionErrorUnderTheSessionsBrandOverBusyWork();
    void BoxShowsWhatWasAskedAndAnswersTheKey();
    void UntitledBoxShowsPlainTextAndTheNormalPointer();
    void PasswordPromptHidesTheEntryAndAnswersIt();
};

void TestQtPrompter::BoxShowsWhatWasAskedAndAnswersTheKey() {
    using B = QMessageBox;
    const struct {
        PromptButtons buttons;
        PromptIcon icon;
        int defaultPosition;
        bool escape;  // Escape rather than Enter
        B::StandardButtons shownButtons;
        B::StandardButton shownDefault;
        B::Icon shownIcon;
        int answer;
    } cases[] = {// Escape is No.
                 {PromptButtons::YesNo, PromptIcon::Question, 1, true, B::Yes | B::No, B::Yes,
                  B::Question, Answer::No},
                 // A default out of range is the first button.
                 {PromptButtons::RetryCancel, PromptIcon::Exclamation, 7, false,
                  B::Retry | B::Cancel, B::Retry, B::Warning, Answer::Retry},
                 // Escape does nothing without Cancel or No: it must be a button.
                 {PromptButtons::AbortRetryIgnore, PromptIcon::Critical, 3, true,
                  B::Abort | B::Retry | B::Ignore, B::Ignore, B::Critical, Answer::Ignore}};
    for (const auto& c : cases) {
        Seen seen;
        QCOMPARE(ShowAndPress({QStringLiteral("Stop server mx-01?"), QStringLiteral("Servers"),
                               c.icon, c.buttons, c.defaultPosition},
                              c.escape ? Qt::Key_Escape : Qt::Key_Return, seen),
                 c.answer);
        QCOMPARE(seen.buttons, c.shownButtons);
        QCOMPARE(seen.defaultButton, c.shownDefault);
        QCOMPARE(seen.icon, c.shownIcon);
        QCOMPARE(seen.openAfterEscape, c.buttons == PromptButtons::AbortRetryIgnore);
        QCOMPARE(seen.title, QStringLiteral("Servers"));
    }
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

void TestQtPrompter::ChoosesButtonsByFamily() {
    // Through the protocol's table: what repeating can cure offers Retry, a
    // conflict (the same commit would be refused again) does not. Seven
    // digits that start like the transient family are still no prefix. The
    // answer is passed through as the prompter gives it.
    const struct {
        uint number;
        PromptButtons buttons;
        int answer;
        const char* text;
    } cases[] = {{ErrorNumber(pb::ERROR_TIMEOUT), PromptButtons::RetryCancel, Answer::Retry,
                  "Failed (81000001)."},
                 {ErrorNumber(pb::ERROR_VERSION_CONFLICT), PromptButtons::OK, Answer::Ignore,
                  "Failed (8101000E)."},
                 {0x08100001u, PromptButtons::OK, Answer::OK, "Failed (8100001)."}};
    for (const auto& c : cases) {
        ScriptedPrompter prompter;
        prompter.Answer(c.answer);
        QCOMPARE(
            ShowErrorMessage(c.number, QStringLiteral("Failed"), QStringLiteral("Some.Component")),
            c.answer);
        const Prompt& shown = prompter.LastPrompt();
        QCOMPARE(shown.buttons, c.buttons);
        QCOMPARE(shown.text, QLatin1String(c.text));
        QCOMPARE(shown.icon, PromptIcon::Critical);
        // No session: the built-in product, never the component.
        QCOMPARE(shown.title, kBuiltInTitle);
        QCOMPARE(shown.defaultButton, 1);
    }
}

void TestQtPrompter::ShowsSessionErrorUnderTheSessionsBrandOverBusyWork() {
    // The description comes from the protocol's error table, once; a detail
    // follows it.
    const SessionError conflict = SessionError::FromCode(pb::ERROR_VERSION_CONFLICT);
    QCOMPARE(
        conflict.Description().count(QStringLiteral("another administrator"), Qt::CaseInsensitive),
        1);
    QCOMPARE(SessionError::FromCode(pb::ERROR_ACCESS_DENIED, QStringLiteral("not logged in"))
                 .Description(),
             QStringLiteral("Access is denied: not logged in"));

    TestServer::Options options;
    options.brand = "quorel";
    TestServer server(options);
    ScriptedPrompter prompter;
    prompter.Answer({Answer::OK, Answer::OK});
    {
        // A session that has not logged in yet knows no brand.
        SessionScope scope(std::make_unique<GrpcServerSession>(server.Channel()));
        ShowErrorMessage(conflict);
        QCOMPARE(prompter.LastPrompt().title, kBuiltInTitle);
    }
    SessionScope scope(server.Login());
    // An error the server raised names the product, not its source; over
    // nested busy sections, as a failing editor leaves them.
    const SessionError refused(conflict.Number(), conflict.Description(),
                               QStringLiteral("Kelvar.Administrator"));
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    QCOMPARE(ShowErrorMessage(refused), int(Answer::OK));
    const ScriptedPrompter::Record& shown = prompter.Prompts().constLast();
    QVERIFY(!shown.busyPointer);
    QVERIFY(!QGuiApplication::overrideCursor());
    QCOMPARE(shown.prompt.title, QStringLiteral("Quorel Administrator"));
    QCOMPARE(shown.prompt.text, conflict.Description() + QStringLiteral(" (8101000E)."));
}

QTEST_MAIN(TestQtPrompter)
#include "tst_qtprompter.moc"

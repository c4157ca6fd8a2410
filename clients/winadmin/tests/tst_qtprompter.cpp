// The real message boxes and save dialog, answered the way a person would:
// a timer finds the box once it is up, notes what it shows, then clicks or
// presses a key. What was seen is checked after the box has gone, so a
// failed check never leaves a modal box waiting.

#include <QApplication>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>
#include <functional>

#include "common/AppContext.h"
#include "common/QtPrompter.h"

using namespace winadmin;

namespace {

// Calls act with the first visible modal window of type T.
template <class T>
void WhenShown(std::function<void(T*)> act) {
    auto* timer = new QTimer(qApp);
    timer->setInterval(10);
    QObject::connect(timer, &QTimer::timeout, timer, [timer, act] {
        auto* window = qobject_cast<T*>(QApplication::activeModalWidget());
        if (!window || !window->isVisible()) return;
        timer->stop();
        timer->deleteLater();
        act(window);
    });
    timer->start();
}

struct Seen {
    QMessageBox::Icon icon = QMessageBox::NoIcon;
    QString title;
    QString text;
    Qt::TextFormat format = Qt::AutoText;
    QMessageBox::StandardButtons buttons;
    QMessageBox::StandardButton defaultButton = QMessageBox::NoButton;
    Qt::CursorShape pointer = Qt::BitmapCursor;
    bool stillOpenAfterEscape = false;
};

void Note(QMessageBox* box, Seen& seen) {
    seen.icon = box->icon();
    seen.title = box->windowTitle();
    seen.text = box->text();
    seen.format = box->textFormat();
    seen.buttons = box->standardButtons();
    seen.defaultButton = box->standardButton(box->defaultButton());
    if (const QCursor* cursor = QGuiApplication::overrideCursor()) seen.pointer = cursor->shape();
}

// Enter goes to whatever has the focus, as from the keyboard.
void PressEnter(QMessageBox* box) {
    QWidget* target = box->focusWidget() ? box->focusWidget() : box;
    QTest::keyClick(target, Qt::Key_Return);
}

void PressEscape(QMessageBox* box) {
    QWidget* target = box->focusWidget() ? box->focusWidget() : box;
    QTest::keyClick(target, Qt::Key_Escape);
}

enum class Act { Enter, Escape, ClickYes, ClickNo };

}  // namespace

Q_DECLARE_METATYPE(Act)
Q_DECLARE_METATYPE(PromptButtons)
Q_DECLARE_METATYPE(PromptIcon)

class TestQtPrompter : public QObject {
    Q_OBJECT

private slots:
    void BoxShowsWhatWasAskedAndAnswersTheButton_data();
    void BoxShowsWhatWasAskedAndAnswersTheButton();
    void UntitledBoxCarriesTheApplicationTitle();
    void AbortRetryIgnoreMustBeAnswered();
    void BoxShowsTheNormalPointerOverBusyWork();
    void SaveDialogOffersTheFiltersAndAnswersTheFile();
    void ClassicFiltersBecomeQtFilters_data();
    void ClassicFiltersBecomeQtFilters();
};

void TestQtPrompter::BoxShowsWhatWasAskedAndAnswersTheButton_data() {
    QTest::addColumn<PromptButtons>("buttons");
    QTest::addColumn<PromptIcon>("icon");
    QTest::addColumn<int>("defaultPosition");
    QTest::addColumn<Act>("act");
    QTest::addColumn<QMessageBox::StandardButtons>("shownButtons");
    QTest::addColumn<QMessageBox::StandardButton>("shownDefault");
    QTest::addColumn<QMessageBox::Icon>("shownIcon");
    QTest::addColumn<int>("answer");

    using B = QMessageBox;
    QTest::newRow("OK, Enter") << PromptButtons::OK << PromptIcon::Information << 1 << Act::Enter
                               << B::StandardButtons(B::Ok) << B::Ok << B::Information
                               << Answer::OK;
    QTest::newRow("OK, Escape") << PromptButtons::OK << PromptIcon::None << 1 << Act::Escape
                                << B::StandardButtons(B::Ok) << B::Ok << B::NoIcon << Answer::OK;
    QTest::newRow("OK/Cancel, second default")
        << PromptButtons::OKCancel << PromptIcon::Critical << 2 << Act::Enter << (B::Ok | B::Cancel)
        << B::Cancel << B::Critical << Answer::Cancel;
    QTest::newRow("Yes/No, Escape is No")
        << PromptButtons::YesNo << PromptIcon::Question << 1 << Act::Escape << (B::Yes | B::No)
        << B::Yes << B::Question << Answer::No;
    QTest::newRow("exclamation is a warning")
        << PromptButtons::YesNo << PromptIcon::Exclamation << 2 << Act::ClickYes << (B::Yes | B::No)
        << B::No << B::Warning << Answer::Yes;
    QTest::newRow("Yes/No/Cancel, Escape is Cancel")
        << PromptButtons::YesNoCancel << PromptIcon::Question << 2 << Act::Escape
        << (B::Yes | B::No | B::Cancel) << B::No << B::Question << Answer::Cancel;
    QTest::newRow("Yes/No/Cancel, No clicked")
        << PromptButtons::YesNoCancel << PromptIcon::Question << 3 << Act::ClickNo
        << (B::Yes | B::No | B::Cancel) << B::Cancel << B::Question << Answer::No;
    QTest::newRow("Retry/Cancel, Enter on Retry")
        << PromptButtons::RetryCancel << PromptIcon::Critical << 1 << Act::Enter
        << (B::Retry | B::Cancel) << B::Retry << B::Critical << Answer::Retry;
    QTest::newRow("Abort/Retry/Ignore, third default")
        << PromptButtons::AbortRetryIgnore << PromptIcon::Critical << 3 << Act::Enter
        << (B::Abort | B::Retry | B::Ignore) << B::Ignore << B::Critical << Answer::Ignore;
    QTest::newRow("default out of range is the first")
        << PromptButtons::YesNo << PromptIcon::Question << 7 << Act::Enter << (B::Yes | B::No)
        << B::Yes << B::Question << Answer::Yes;
}

void TestQtPrompter::BoxShowsWhatWasAskedAndAnswersTheButton() {
    QFETCH(PromptButtons, buttons);
    QFETCH(PromptIcon, icon);
    QFETCH(int, defaultPosition);
    QFETCH(Act, act);

    Seen seen;
    WhenShown<QMessageBox>([&seen, act](QMessageBox* box) {
        Note(box, seen);
        switch (act) {
            case Act::Enter:
                PressEnter(box);
                break;
            case Act::Escape:
                PressEscape(box);
                break;
            case Act::ClickYes:
                QTest::mouseClick(box->button(QMessageBox::Yes), Qt::LeftButton);
                break;
            case Act::ClickNo:
                QTest::mouseClick(box->button(QMessageBox::No), Qt::LeftButton);
                break;
        }
    });
    QtPrompter prompter;
    const int answer = prompter.Show({QStringLiteral("Stop server mx-01?"),
                                      QStringLiteral("Servers"), icon, buttons, defaultPosition});

    QTEST(answer, "answer");
    QTEST(seen.buttons, "shownButtons");
    QTEST(seen.defaultButton, "shownDefault");
    QTEST(seen.icon, "shownIcon");
    QCOMPARE(seen.title, QStringLiteral("Servers"));
    QCOMPARE(seen.text, QStringLiteral("Stop server mx-01?"));
}

void TestQtPrompter::UntitledBoxCarriesTheApplicationTitle() {
    SetApplicationTitle(QStringLiteral("Quorel Administrator"));
    Seen seen;
    WhenShown<QMessageBox>([&seen](QMessageBox* box) {
        Note(box, seen);
        PressEnter(box);
    });
    // Label texts quote names in angle brackets; they are text, not markup.
    QtPrompter prompter;
    const int answer = prompter.Show({QStringLiteral("Printer type <Unknown> <b>x</b>"), QString(),
                                      PromptIcon::Exclamation, PromptButtons::OK, 1});
    QCOMPARE(answer, Answer::OK);
    QCOMPARE(seen.title, QStringLiteral("Quorel Administrator"));
    QCOMPARE(seen.text, QStringLiteral("Printer type <Unknown> <b>x</b>"));
    QCOMPARE(seen.format, Qt::PlainText);
}

void TestQtPrompter::AbortRetryIgnoreMustBeAnswered() {
    Seen seen;
    WhenShown<QMessageBox>([&seen](QMessageBox* box) {
        Note(box, seen);
        PressEscape(box);
        box->close();
        seen.stillOpenAfterEscape = box->isVisible();
        QTest::mouseClick(box->button(QMessageBox::Retry), Qt::LeftButton);
    });
    QtPrompter prompter;
    const int answer = prompter.Show({QStringLiteral("Device busy"), QStringLiteral("Devices"),
                                      PromptIcon::Critical, PromptButtons::AbortRetryIgnore, 1});
    QVERIFY(seen.stillOpenAfterEscape);
    QCOMPARE(answer, Answer::Retry);
}

void TestQtPrompter::BoxShowsTheNormalPointerOverBusyWork() {
    QGuiApplication::setOverrideCursor(Qt::WaitCursor);
    Seen seen;
    WhenShown<QMessageBox>([&seen](QMessageBox* box) {
        Note(box, seen);
        PressEnter(box);
    });
    QtPrompter prompter;
    prompter.Show(
        {QStringLiteral("Failed"), QString(), PromptIcon::Critical, PromptButtons::OK, 1});
    // The work that set the hourglass still owns it after the box.
    const QCursor* after = QGuiApplication::overrideCursor();
    const Qt::CursorShape afterShape = after ? after->shape() : Qt::BitmapCursor;
    QGuiApplication::restoreOverrideCursor();
    QCOMPARE(seen.pointer, Qt::ArrowCursor);
    QCOMPARE(afterShape, Qt::WaitCursor);
    QVERIFY(!QGuiApplication::overrideCursor());
}

void TestQtPrompter::SaveDialogOffersTheFiltersAndAnswersTheFile() {
    QTemporaryDir dir;
    QVERIFY(dir.isValid());
    const QString target = dir.filePath(QStringLiteral("extras.txt"));

    QString title;
    QStringList filters;
    QFileDialog::AcceptMode mode = QFileDialog::AcceptOpen;
    WhenShown<QFileDialog>([&, target](QFileDialog* dialog) {
        title = dialog->windowTitle();
        filters = dialog->nameFilters();
        mode = dialog->acceptMode();
        auto* name = dialog->findChild<QLineEdit*>(QStringLiteral("fileNameEdit"));
        if (!name) return dialog->reject();
        // Pasted rather than typed: typing would open the completer's list,
        // which then takes the Enter.
        name->setText(target);
        QTest::keyClick(name, Qt::Key_Return);
    });
    QtPrompter prompter;
    const QString chosen = prompter.AskSaveFileName(
        QStringLiteral("Export"), QStringLiteral("Text Files(*.txt)|*.txt|All Files|*.*"));
    QCOMPARE(chosen, target);
    QCOMPARE(title, QStringLiteral("Export"));
    QCOMPARE(mode, QFileDialog::AcceptSave);
    QCOMPARE(filters,
             (QStringList{QStringLiteral("Text Files(*.txt)"), QStringLiteral("All Files (*.*)")}));

    // Cancelling answers an empty name.
    WhenShown<QFileDialog>([](QFileDialog* dialog) { dialog->reject(); });
    QCOMPARE(prompter.AskSaveFileName(QStringLiteral("Export"), QString()), QString());
}

void TestQtPrompter::ClassicFiltersBecomeQtFilters_data() {
    QTest::addColumn<QString>("classic");
    QTest::addColumn<QString>("qt");

    QTest::newRow("patterns in the name")
        << QStringLiteral("Text Files(*.txt)|*.txt") << QStringLiteral("Text Files(*.txt)");
    QTest::newRow("patterns appended")
        << QStringLiteral("Logs|*.log;*.txt") << QStringLiteral("Logs (*.log *.txt)");
    QTest::newRow("two filters") << QStringLiteral("Text (*.txt)|*.txt|All Files|*.*")
                                 << QStringLiteral("Text (*.txt);;All Files (*.*)");
    QTest::newRow("name without patterns")
        << QStringLiteral("Everything") << QStringLiteral("Everything");
    QTest::newRow("parenthesis inside the name") << QStringLiteral("Users (export) file|*.usr")
                                                 << QStringLiteral("Users (export) file (*.usr)");
    QTest::newRow("empty") << QString() << QString();
}

void TestQtPrompter::ClassicFiltersBecomeQtFilters() {
    QFETCH(QString, classic);
    QTEST(QtFileFilter(classic), "qt");
}

QTEST_MAIN(TestQtPrompter)
#include "tst_qtprompter.moc"

// The field helpers on real widgets: what gets into a field by typing,
// pasting and dropping, editing keys as the platform sends them, the empty
// and range checks with their messages, and the reference formats.

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLineEdit>
#include <QMimeData>
#include <QTabWidget>
#include <QTest>
#include <QVBoxLayout>

#include "common/AppContext.h"
#include "common/FieldHelpers.h"
#include "support/ConsoleFixture.h"
#include "support/PlatformKeys.h"

using namespace winadmin;

namespace {

// A small form: one field under test, a combo box, and a second tab page
// that is not shown.
struct Form {
    Form() {
        dialog.setWindowTitle(QStringLiteral("Test Form"));
        auto* layout = new QVBoxLayout(&dialog);
        layout->addWidget(field);
        layout->addWidget(combo);
        layout->addWidget(tabs);
        tabs->addTab(new QWidget, QStringLiteral("one"));
        auto* hiddenPage = new QWidget;
        hidden = new QLineEdit(hiddenPage);
        tabs->addTab(hiddenPage, QStringLiteral("two"));
        ShowActive(dialog);
    }
    void Type(const QString& text) { QTest::keyClicks(field, text); }
    QDialog dialog;
    QLineEdit* field = new QLineEdit;
    QComboBox* combo = new QComboBox;
    QTabWidget* tabs = new QTabWidget;
    QLineEdit* hidden = nullptr;
};

}  // namespace

class TestFieldHelpers : public ConsoleSuite {
    Q_OBJECT

private slots:
    void KeyFilterKinds_data();
    void KeyFilterKinds();
    void LengthLimitUnlessSelected();
    void EditingKeysPassAsThePlatformSendsThem();
    void PasteAndDropHeldToTheFilter();
    void EnterHandling();
    void RangeCheck();
    void DisabledFieldsPassAndHiddenPagesComeForward();
    void ReferenceFormats();

private:
    // A separator of the user's that differs from the built-in one.
    void SetUp() override { SetDecimalSeparator(QStringLiteral(",")); }
    void TearDown() override { SetDecimalSeparator(QStringLiteral(".")); }
};

void TestFieldHelpers::KeyFilterKinds_data() {
    QTest::addColumn<int>("kind");
    QTest::addColumn<QString>("typed");
    QTest::addColumn<QString>("kept");
    QTest::addColumn<int>("beeps");
    const auto row = [](const char* name, int kind, const char* typed, const char* kept,
                        int beeps) {
        QTest::newRow(name) << kind << QString(typed) << QString(kept) << beeps;
    };
    row("digits", 1, "1a2.3", "123", 2);
    row("number forms", 3, "1.2/3-4,", "1.2/34", 2);
    row("decimal with the user's separator", 4, "1,5.2", "1,52", 1);
    row("no parentheses", 5, "x(y)z", "xyz", 2);
    row("unknown kind takes anything", 9, "(1)", "(1)", 0);
}

void TestFieldHelpers::KeyFilterKinds() {
    QFETCH(int, kind);
    QFETCH(QString, typed);
    Form form;
    InstallKeyFilter(form.field, kind, 0);
    form.Type(typed);
    QTEST(form.field->text(), "kept");
    QTEST(fx_->prompter.BeepCount(), "beeps");
}

void TestFieldHelpers::LengthLimitUnlessSelected() {
    Form form;
    InstallKeyFilter(form.field, kKeyAnyText, 4);
    form.Type(QStringLiteral("abcde"));
    QCOMPARE(form.field->text(), QStringLiteral("abcd"));
    QCOMPARE(fx_->prompter.BeepCount(), 1);
    // With text selected the key replaces it.
    form.field->setSelection(1, 2);
    form.Type(QStringLiteral("X"));
    QCOMPARE(form.field->text(), QStringLiteral("aXd"));
    QCOMPARE(fx_->prompter.BeepCount(), 1);
}

void TestFieldHelpers::EditingKeysPassAsThePlatformSendsThem() {
    // In a full field: Delete and Backspace carry U+007F and U+0008 on X11;
    // other platforms, and some input methods, send no text with them.
    Form form;
    InstallKeyFilter(form.field, kKeyDigits, 3);
    form.field->setText(QStringLiteral("123"));
    form.field->setCursorPosition(0);
    PlatformDelete(form.field);
    QCOMPARE(form.field->text(), QStringLiteral("23"));
    form.field->setText(QStringLiteral("123"));
    PlatformBackspace(form.field);
    QCOMPARE(form.field->text(), QStringLiteral("12"));
    form.field->setText(QStringLiteral("123"));
    form.field->setCursorPosition(2);
    PlatformKey(form.field, Qt::Key_Delete, QString());
    QCOMPARE(form.field->text(), QStringLiteral("12"));
    QCOMPARE(fx_->prompter.BeepCount(), 0);
    // The filter still holds what is typed.
    form.Type(QStringLiteral("x"));
    QCOMPARE(form.field->text(), QStringLiteral("12"));
    QCOMPARE(fx_->prompter.BeepCount(), 1);
}

void TestFieldHelpers::PasteAndDropHeldToTheFilter() {
    Form form;
    InstallKeyFilter(form.field, kKeyNoParentheses, 10);
    Paste(form.field, QStringLiteral("Name (user@host)"));
    QCOMPARE(form.field->text(), QString());
    Paste(form.field, QStringLiteral("a-much-longer-text"));
    QCOMPARE(form.field->text(), QStringLiteral("a-much-lon"));
    // A drop inserts through the same checks.
    form.field->clear();
    QMimeData data;
    data.setText(QStringLiteral("(x)"));
    QDropEvent drop(QPointF(5, 5), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QApplication::sendEvent(form.field, &drop);
    QCOMPARE(form.field->text(), QString());
}

void TestFieldHelpers::EnterHandling() {
    Form form;
    int keyAscii = 13;
    form.field->setAlignment(Qt::AlignRight);
    QVERIFY(FilterKey(form.field, kKeyDigits, 5, keyAscii));
    QCOMPARE(keyAscii, 0);
    keyAscii = 13;
    form.field->setAlignment(Qt::AlignLeft);
    FilterKey(form.field, kKeyDigits, 5, keyAscii);
    QCOMPARE(keyAscii, 13);
    // Enter in a dropped-down combo closes the list and goes no further.
    form.combo->addItems({QStringLiteral("rpc"), QStringLiteral("rrpc")});
    form.combo->showPopup();
    QTRY_VERIFY(form.combo->view()->isVisible());
    ComboKeyPress(form.combo, kKeyAnyText, 0, keyAscii);
    QCOMPARE(keyAscii, 0);
    QTRY_VERIFY(!form.combo->view()->isVisible());
}

void TestFieldHelpers::RangeCheck() {
    Form form;
    const auto check = [&form](const char* text) {
        form.field->setText(QLatin1String(text));
        return CheckFieldRange(form.field, QStringLiteral("Dispatch Count:"), 1, 99);
    };
    QVERIFY(check("99"));
    QVERIFY(check("1,5"));
    fx_->prompter.Answer({Answer::OK, Answer::OK});
    QVERIFY(!check("12abc"));
    QVERIFY(!check("100"));
    // The editors' tests compare the whole text; here the box and the field.
    const Prompt& shown = fx_->prompter.LastPrompt();
    QCOMPARE(shown.icon, PromptIcon::Exclamation);
    QCOMPARE(shown.title, QStringLiteral("Test Form"));
    QCOMPARE(fx_->prompter.BeepCount(), 2);
    QVERIFY(form.field->hasFocus());
    QCOMPARE(form.field->selectedText(), QStringLiteral("100"));
}

void TestFieldHelpers::DisabledFieldsPassAndHiddenPagesComeForward() {
    Form form;
    form.field->setText(QStringLiteral("x"));
    form.field->setEnabled(false);
    QVERIFY(CheckFieldRange(form.field, QStringLiteral("A:"), 1, 2));
    form.field->clear();
    QVERIFY(!IsFieldEmpty(form.field, QStringLiteral("never shown")));
    // The focus routine leaves a field on a page not shown alone.
    CTRLSetFocus(form.hidden);
    QVERIFY(!form.hidden->hasFocus());
    QCOMPARE(form.tabs->currentIndex(), 0);
    // A failed check brings that page to the front and focuses the field.
    fx_->prompter.Answer(Answer::OK);
    QVERIFY(IsFieldEmpty(form.hidden, FieldEmptyMessage(QStringLiteral("Comment:"))));
    QCOMPARE(form.tabs->currentIndex(), 1);
    QVERIFY(form.hidden->hasFocus());
    // Containers: a disabled page greys its text fields, an enabled one
    // keeps read-only fields grey.
    form.hidden->setReadOnly(true);
    EnableContainer(form.hidden->parentWidget());
    const QColor grey = QApplication::palette().color(QPalette::Button);
    QCOMPARE(form.hidden->palette().color(QPalette::Base), grey);
    form.hidden->setReadOnly(false);
    DisableContainer(form.hidden->parentWidget());
    QVERIFY(!form.hidden->isEnabled());
    QCOMPARE(form.hidden->palette().color(QPalette::Base), grey);
    EnableContainer(form.hidden->parentWidget());
    QCOMPARE(form.hidden->palette().color(QPalette::Base),
             QApplication::palette().color(QPalette::Base));
}

void TestFieldHelpers::ReferenceFormats() {
    const QString ref = FormatUserRef("Ann Lee", "ann", "fx");
    QCOMPARE(ref, QStringLiteral("Ann Lee (ann@fx)"));
    QCOMPARE(ExtractParenthesized(ref), QStringLiteral("ann@fx"));
    QCOMPARE(ExtractParenthesized("no (closing"), QString());
    QCOMPARE(FormatNamed(" Sales ", "s@fx "), QStringLiteral("Sales (s@fx)"));
    // The "(None)" text is the language's, and is no user.
    fx_->LogIn(ServerOptions("", "de"));
    for (const QStringList& none : {QStringList(), QStringList{"", ""}}) {
        QCOMPARE(ParenthesizedUserAtHost(none), QString());
        QCOMPARE(ParenthesizedUserAtHostOrNone(none), QStringLiteral("(Keine)"));
    }
    QCOMPARE(FormatUserAtHost({}, {}), QStringLiteral("(Keine)"));
    QCOMPARE(ExtractParenthesized("(Keine)"), QString());
}

QTEST_MAIN(TestFieldHelpers)
#include "tst_fieldhelpers.moc"

// The field helpers on real widgets: what gets into a field by typing,
// pasting and dropping, editing keys as the platform sends them, the empty
// and range checks with their messages, and the reference formats.

#include <QAbstractItemView>
#include <QApplication>
#include <QComboBox>
#include <QDialog>
#include <QLabel>
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
    void EditingKeysPass_data();
    void EditingKeysPass();
    void PasteAndDropHeldToTheFilter();
    void EnterHandling();
    void EmptyAndRangeChecks_data();
    void EmptyAndRangeChecks();
    void DisabledFieldsPassAndHiddenPagesComeForward();
    void ComboItemData();
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
    QTest::newRow("digits") << 1 << "1a2.3"
                            << "123" << 2;
    QTest::newRow("any text") << 2 << "a (b)"
                              << "a (b)" << 0;
    QTest::newRow("number forms") << 3 << "1.2/3-4,"
                                  << "1.2/34" << 2;
    QTest::newRow("decimal with the user's separator") << 4 << "1,5.2"
                                                       << "1,52" << 1;
    QTest::newRow("no parentheses") << 5 << "x(y)z"
                                    << "xyz" << 2;
    QTest::newRow("unknown kind takes anything") << 9 << "(1)"
                                                 << "(1)" << 0;
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

void TestFieldHelpers::EditingKeysPass_data() {
    QTest::addColumn<int>("kind");
    QTest::addColumn<int>("maxLength");
    QTest::addColumn<QString>("text");
    QTest::addColumn<int>("cursor");
    QTest::addColumn<QString>("key");
    QTest::addColumn<QString>("kept");
    QTest::addColumn<QString>("refused");  // a character the field still refuses after
    QTest::newRow("Delete in a full digits field") << 1 << 3 << "123" << 0 << "Delete"
                                                   << "23"
                                                   << "x";
    QTest::newRow("Delete in a full text field") << 2 << 3 << "abc" << 1 << "Delete"
                                                 << "ac"
                                                 << "";
    QTest::newRow("Delete in a decimal field") << 4 << 4 << "1,50" << 1 << "Delete"
                                               << "150"
                                               << ".";
    QTest::newRow("Backspace in a full digits field") << 1 << 3 << "123" << 3 << "Backspace"
                                                      << "12"
                                                      << "x";
    // Other platforms, and some input methods, send no text with the keys.
    QTest::newRow("Delete without text") << 1 << 3 << "123" << 2 << "Delete bare"
                                         << "12"
                                         << "x";
    QTest::newRow("Backspace without text") << 1 << 3 << "123" << 1 << "Backspace bare"
                                            << "23"
                                            << "x";
}

void TestFieldHelpers::EditingKeysPass() {
    QFETCH(int, kind);
    QFETCH(int, maxLength);
    QFETCH(QString, text);
    QFETCH(int, cursor);
    QFETCH(QString, key);
    QFETCH(QString, refused);
    Form form;
    InstallKeyFilter(form.field, kind, maxLength);
    form.field->setText(text);
    form.field->setCursorPosition(cursor);
    if (key == QLatin1String("Delete"))
        PlatformDelete(form.field);
    else if (key == QLatin1String("Backspace"))
        PlatformBackspace(form.field);
    else if (key == QLatin1String("Delete bare"))
        PlatformKey(form.field, Qt::Key_Delete, QString());
    else
        PlatformKey(form.field, Qt::Key_Backspace, QString());
    QTEST(form.field->text(), "kept");
    QCOMPARE(fx_->prompter.BeepCount(), 0);
    if (refused.isEmpty()) return;
    // The filter still holds what is typed.
    const QString before = form.field->text();
    form.Type(refused);
    QCOMPARE(form.field->text(), before);
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
    keyAscii = 13;
    ComboKeyPress(form.combo, kKeyAnyText, 0, keyAscii);
    QCOMPARE(keyAscii, 0);
    QTRY_VERIFY(!form.combo->view()->isVisible());
    QCOMPARE(fx_->prompter.BeepCount(), 0);
}

void TestFieldHelpers::EmptyAndRangeChecks_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<bool>("valid");
    QTest::newRow("lower bound") << "1" << true;
    QTest::newRow("upper bound") << "99" << true;
    QTest::newRow("decimal with the user's separator") << "1,5" << true;
    QTest::newRow("below") << "0" << false;
    QTest::newRow("above") << "100" << false;
    QTest::newRow("trailing letters") << "12abc" << false;
    QTest::newRow("empty") << "" << false;
}

void TestFieldHelpers::EmptyAndRangeChecks() {
    QFETCH(QString, text);
    QFETCH(bool, valid);
    Form form;
    form.field->setText(text);
    if (!valid) fx_->prompter.Answer(Answer::OK);
    QCOMPARE(CheckFieldRange(form.field, QStringLiteral("Dispatch Count:"), 1, 99), valid);
    if (valid) return;
    const Prompt& shown = fx_->prompter.LastPrompt();
    QCOMPARE(shown.text, QStringLiteral("The valid range for 'Dispatch Count' is from 1 to 99."));
    QCOMPARE(shown.icon, PromptIcon::Exclamation);
    QCOMPARE(shown.title, QStringLiteral("Test Form"));
    QCOMPARE(fx_->prompter.BeepCount(), 1);
    QVERIFY(form.field->hasFocus());
    QCOMPARE(form.field->selectedText(), text);
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
    QCOMPARE(fx_->prompter.LastPrompt().text,
             QStringLiteral("The field 'Comment' cannot be empty."));
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

void TestFieldHelpers::ComboItemData() {
    QComboBox combo;
    QCOMPARE(FindItemData(&combo, 0), -1);
    combo.addItem(QStringLiteral("a"), 7);
    combo.addItem(QStringLiteral("b"), 3);
    combo.addItem(QStringLiteral("c"), 3);
    QCOMPARE(FindItemData(&combo, 3), 1);
    QCOMPARE(FindItemData(&combo, 4), -1);
}

void TestFieldHelpers::ReferenceFormats() {
    QCOMPARE(FormatRange(1, 99), QStringLiteral("1..99"));
    QCOMPARE(FormatUserAtHost({}, {}), QStringLiteral("(None)"));
    QCOMPARE(FormatUserAtHost("ann", "fx"), QStringLiteral("ann@fx"));
    const QString ref = FormatUserRef("Ann Lee", "ann", "fx");
    QCOMPARE(ref, QStringLiteral("Ann Lee (ann@fx)"));
    QCOMPARE(ExtractParenthesized(ref), QStringLiteral("ann@fx"));
    QCOMPARE(ExtractParenthesized("(None)"), QString());
    QCOMPARE(ExtractParenthesized(QString()), QString());
    QCOMPARE(ExtractParenthesized("no (closing"), QString());
    QCOMPARE(FormatNamed(" Sales ", "s@fx "), QStringLiteral("Sales (s@fx)"));
    QCOMPARE(FormatNamed({}, "x"), QStringLiteral("(None)"));
    QCOMPARE(AppendParenthesized("a", "  "), QStringLiteral("a"));
    QCOMPARE(CutAtNul(QStringLiteral("abc") + QChar(0) + "junk"), QStringLiteral("abc"));
    QCOMPARE(ParenthesizedUserAtHost({"ann", "fx"}), QStringLiteral("(ann@fx)"));
    QCOMPARE(ParenthesizedUserAtHostOrNone({"ann", "fx"}), QStringLiteral("(ann@fx)"));
    QCOMPARE(AppendParenthesized("Ann Lee",
                                 ExtractParenthesized(ParenthesizedUserAtHost({"ann", "fx"}))),
             ref);
    // The "(None)" text is the language's.
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

// Code tables against the real label tables of the reference server: every
// code maps to its key's text, codes outside a table to "<Unknown>", and no
// text is cached across a change of language.

#include <QTest>

#include "common/CodeTables.h"
#include "common/Labels.h"
#include "session/ServerSession.h"
#include "support/ConsoleFixture.h"

using namespace winadmin;

class TestCodeTables : public ConsoleSuite {
    Q_OBJECT

private slots:
    void TablesFallBackToUnknown();
    void MessageClassBitsInFixedOrder();
    void ProcessStatusLooksAtRunStateFirst();
    void CountsAndFlags();
    void TextsFollowALanguageChangeAtOnce();

private:
    static QString Label(const char* key) {
        return TheSession()->GetLabel(QString::fromLatin1(key));
    }
};

void TestCodeTables::TablesFallBackToUnknown() {
    // The printer types keep the server's numbering.
    QCOMPARE(PrinterTypeText(11), Label("PRN_WINDOWS"));
    QCOMPARE(PrinterTypeText(12), Label("<Unknown>"));
    QCOMPARE(PrinterTypeText(-1), Label("<Unknown>"));
    // The texts are real translations, not the keys coming back.
    QVERIFY(PrinterTypeText(8) != QStringLiteral("PRN_PS"));
    QCOMPARE(SeverityText(5), Label("SeverityPanic"));
    QCOMPARE(SeverityText(6), Label("<Unknown>"));
    QCOMPARE(OriginatorText(19), Label("OriginatorPi"));
    QCOMPARE(OriginatorText(20), Label("<Unknown>"));
}

void TestCodeTables::MessageClassBitsInFixedOrder() {
    // Application comes before Unix although Unix is bit 0; each text is
    // followed by one blank.
    QCOMPARE(MessageClassText(0x41),
             Label("MsgClassAppl") + QLatin1Char(' ') + Label("MsgClassUnix") + QLatin1Char(' '));
    // Bits outside the ten are ignored.
    QCOMPARE(MessageClassText(0x400), QString());
    QCOMPARE(MessageClassText(0x7FF), MessageClassText(0x3FF));
}

void TestCodeTables::ProcessStatusLooksAtRunStateFirst() {
    QCOMPARE(ProcessStatusText(-1, 0), Label("ProcessStarting"));
    QCOMPARE(ProcessStatusText(-1, -1), Label("ProcessFailed"));
    QCOMPARE(ProcessStatusText(-2, 1), Label("ProcessInit"));
    QCOMPARE(ProcessStatusText(-1, 1), Label("ProcessRun"));
    QCOMPARE(ProcessStatusText(0, 1), Label("ProcessTerminated"));
    QCOMPARE(ProcessStatusText(3, 5), Label("ProcessExit") + QStringLiteral(" (0x3)"));
    QCOMPARE(ProcessStatusText(-5, 1), Label("ProcessExit") + QStringLiteral(" (0xFFFFFFFB)"));
}

void TestCodeTables::CountsAndFlags() {
    QCOMPARE(CountOrDashText(0), QStringLiteral("---"));
    QCOMPARE(CountOrDashText(7), QStringLiteral(" 7"));
    QCOMPARE(YesNoText(false), Label("No"));
}

void TestCodeTables::TextsFollowALanguageChangeAtOnce() {
    const QString english = SeverityText(3);
    TestServer german(ServerOptions("", "de"));
    auto germanSession = german.Login();
    SetLabelSource(germanSession.get());
    QCOMPARE(SeverityText(3), germanSession->GetLabel(QStringLiteral("SeverityError")));
    QVERIFY(SeverityText(3) != english);
    SetLabelSource(TheSession());
    QCOMPARE(SeverityText(3), english);
}

QTEST_GUILESS_MAIN(TestCodeTables)
#include "tst_codetables.moc"

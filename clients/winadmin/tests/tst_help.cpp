// The help window over the shipped user guide.

#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRegularExpression>
#include <QSet>
#include <QTest>
#include <QTextBrowser>

#include "lists/KindIcons.h"
#include "shell/HelpViewer.h"
#include "support/ConsoleFixture.h"

using namespace winadmin;

class TestHelp : public QObject {
    Q_OBJECT

private slots:
    void cleanup();

    void ContentsAndSearchOpenOneWindow();
    void SearchListsTheSectionsWithEveryWord();
    void FindNextWrapsAroundThePage();
    void EveryLinkOfTheGuideLeadsSomewhere();

private:
    ScriptedPrompter prompter_;
};

void TestHelp::cleanup() {
    if (HelpViewer* viewer = HelpViewer::Current()) {
        viewer->close();
        QTRY_VERIFY(!HelpViewer::Current());
    }
}

void TestHelp::ContentsAndSearchOpenOneWindow() {
    QWidget owner;
    ShowHelpContents(&owner);
    HelpViewer* viewer = HelpViewer::Current();
    QVERIFY(viewer && viewer->isWindow());

    ShowHelpSearch(&owner);
    QCOMPARE(HelpViewer::Current(), viewer);
    QCOMPARE(viewer->CurrentPage(), HelpViewer::IndexPage);
    // Escape closes the window.
    QVERIFY(QTest::qWaitForWindowActive(viewer));
    QTest::keyClick(viewer, Qt::Key_Escape);
    QTRY_VERIFY(!HelpViewer::Current());
}

void TestHelp::SearchListsTheSectionsWithEveryWord() {
    ShowHelpSearch(nullptr);
    HelpViewer* viewer = HelpViewer::Current();
    auto* field = Child<QLineEdit>(*viewer, "edtFind");
    auto* results = Child<QListWidget>(*viewer, "lvResults");
    auto* page = Child<QTextBrowser>(*viewer, "brwPage");

    QTest::keyClicks(field, QStringLiteral("HOST selected"));
    QTest::keyClick(field, Qt::Key_Return);
    QStringList titles;
    for (int row = 0; row < results->count(); ++row) titles << results->item(row)->text();
    QVERIFY2(titles.contains(QStringLiteral("Logging in")), qPrintable(titles.join(u'|')));
    // The section about settings names the host too, but not the other word.
    QVERIFY(!titles.contains(QStringLiteral("Where settings are kept")));

    QUrl login = HelpViewer::ContentsPage;
    login.setFragment(QStringLiteral("login"));
    const int row = int(titles.indexOf(QStringLiteral("Logging in")));
    QTest::mouseClick(results->viewport(), Qt::LeftButton, {},
                      results->visualItemRect(results->item(row)).center());
    QCOMPARE(viewer->CurrentPage(), login);
    // The word selected inside the section, not in the table of contents
    // above it.
    QCOMPARE(page->textCursor().selectedText().toLower(), QStringLiteral("host"));
    const QString before = page->toPlainText().left(page->textCursor().selectionStart());
    QVERIFY(before.contains(QStringLiteral("When the console starts")));

    // Words that no section has together: a beep and a line that says so.
    field->setText(QStringLiteral("password xylophone"));
    const int beeps = prompter_.BeepCount();
    QCOMPARE(viewer->Search(), 0);
    QCOMPARE(prompter_.BeepCount(), beeps + 1);
}

void TestHelp::FindNextWrapsAroundThePage() {
    ShowHelpContents(nullptr);
    HelpViewer* viewer = HelpViewer::Current();
    auto* page = Child<QTextBrowser>(*viewer, "brwPage");
    QTest::keyClicks(Child<QLineEdit>(*viewer, "edtFind"), QStringLiteral("Tarnex"));
    const int beeps = prompter_.BeepCount();

    const int occurrences = int(page->toPlainText().count(QStringLiteral("Tarnex")));
    QVERIFY(occurrences >= 2);
    QList<int> positions;
    for (int i = 0; i <= occurrences; ++i) {
        QTest::mouseClick(Child<QPushButton>(*viewer, "cmdFindNext"), Qt::LeftButton);
        positions << page->textCursor().selectionStart();
    }
    // Forward through the page, then back to the first one.
    for (int i = 1; i < occurrences; ++i) QVERIFY(positions[i] > positions[i - 1]);
    QCOMPARE(positions.last(), positions.first());
    QCOMPARE(prompter_.BeepCount(), beeps);
}

void TestHelp::EveryLinkOfTheGuideLeadsSomewhere() {
    LoadConsoleResources();
    QSet<QString> targets;
    for (const HelpSection& section : HelpSections())
        targets << section.url.toString() << section.url.adjusted(QUrl::RemoveFragment).toString();
    static const QRegularExpression link(QStringLiteral("href=\"([^\"]+)\""));
    const QDir folder(QStringLiteral(":/help"));
    const QStringList pages = folder.entryList({QStringLiteral("*.html")});
    int links = 0;
    for (const QString& name : pages) {
        QFile file(folder.filePath(name));
        QVERIFY(file.open(QIODevice::ReadOnly));
        const QUrl base(QStringLiteral("qrc:/help/") + name);
        for (auto it = link.globalMatch(QString::fromUtf8(file.readAll())); it.hasNext(); ++links) {
            const QUrl target = base.resolved(QUrl(it.next().captured(1)));
            QVERIFY2(targets.contains(target.toString()), qPrintable(target.toString()));
        }
    }
    QVERIFY(links > 20);
}

QTEST_MAIN(TestHelp)
#include "tst_help.moc"

// The help window over the shipped user guide, and the pictures of the
// object kinds that tree and lists show.

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLineEdit>
#include <QListWidget>
#include <QPushButton>
#include <QRegularExpression>
#include <QSet>
#include <QTest>
#include <QTextBrowser>

#include "shell/HelpViewer.h"
#include "shell/KindIcons.h"
#include "support/ScriptedPrompter.h"

using namespace winadmin;

namespace {

template <class W>
W* FindChild(QWidget* parent, const char* name) {
    return parent->findChild<W*>(QLatin1String(name));
}

QString PageText(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
}

// Every kind word the explorer uses, folders and rows.
const QStringList& ExplorerKinds() {
    static const QStringList kinds = {
        "Administrator", "Servers",  "Server",       "Users",       "User",   "Groups",
        "Group",         "Printers", "Printer",      "Devices",     "Device", "Processes",
        "Process",       "Events",   "Event",        "Routes",      "Route",  "NumberMappings",
        "NumberMapping", "Gateways", "Gateway",      "GatewayUser", "LCR",    "Zone",
        "Rates",         "Rate",     "Destinations", "Destination"};
    return kinds;
}

}  // namespace

class TestHelp : public QObject {
    Q_OBJECT

private slots:
    void cleanup();

    void ContentsAndSearchOpenOneWindow();
    void SearchListsTheSectionsWithEveryWord();
    void SearchWithoutMatchBeeps();
    void FindNextWrapsAroundThePage();
    void EveryLinkOfTheGuideLeadsSomewhere();
    void EveryKindHasItsOwnPicture();
    void UnknownKindsHaveNoPicture();

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
    QVERIFY(viewer);
    QVERIFY(viewer->isVisible());
    QVERIFY(viewer->isWindow());
    QCOMPARE(viewer->CurrentPage(), HelpViewer::ContentsPage);
    auto* page = FindChild<QTextBrowser>(viewer, "brwPage");
    QVERIFY(page->toPlainText().contains(QStringLiteral("Logging in")));

    ShowHelpSearch(&owner);
    QCOMPARE(HelpViewer::Current(), viewer);
    QCOMPARE(viewer->CurrentPage(), HelpViewer::IndexPage);
    QVERIFY(QTest::qWaitForWindowActive(viewer));
    QCOMPARE(QApplication::focusWidget(), FindChild<QLineEdit>(viewer, "edtFind"));

    // The buttons go back and forth; Escape closes the window.
    QTest::mouseClick(FindChild<QPushButton>(viewer, "cmdContents"), Qt::LeftButton);
    QCOMPARE(viewer->CurrentPage(), HelpViewer::ContentsPage);
    QTest::mouseClick(FindChild<QPushButton>(viewer, "cmdIndex"), Qt::LeftButton);
    QCOMPARE(viewer->CurrentPage(), HelpViewer::IndexPage);
    QTest::keyClick(viewer, Qt::Key_Escape);
    QTRY_VERIFY(!HelpViewer::Current());
}

void TestHelp::SearchListsTheSectionsWithEveryWord() {
    ShowHelpSearch(nullptr);
    HelpViewer* viewer = HelpViewer::Current();
    auto* field = FindChild<QLineEdit>(viewer, "edtFind");
    auto* results = FindChild<QListWidget>(viewer, "lvResults");
    auto* page = FindChild<QTextBrowser>(viewer, "brwPage");

    QTest::keyClicks(field, QStringLiteral("HOST selected"));
    QTest::keyClick(field, Qt::Key_Return);
    QStringList titles;
    for (int row = 0; row < results->count(); ++row) titles << results->item(row)->text();
    QVERIFY2(titles.contains(QStringLiteral("Logging in")), qPrintable(titles.join(u'|')));
    // The section about settings names the host too, but not the other word.
    QVERIFY(!titles.contains(QStringLiteral("Where settings are kept")));

    // The first result is opened at its section with the word selected.
    QCOMPARE(results->currentRow(), 0);
    QCOMPARE(page->textCursor().selectedText().toLower(), QStringLiteral("host"));

    QUrl login = HelpViewer::ContentsPage;
    login.setFragment(QStringLiteral("login"));
    const int row = int(titles.indexOf(QStringLiteral("Logging in")));
    QTest::mouseClick(results->viewport(), Qt::LeftButton, {},
                      results->visualItemRect(results->item(row)).center());
    QCOMPARE(viewer->CurrentPage(), login);
    // Selected inside the section, not in the table of contents above it.
    const QString before = page->toPlainText().left(page->textCursor().selectionStart());
    QVERIFY(before.contains(QStringLiteral("When the console starts")));
}

void TestHelp::SearchWithoutMatchBeeps() {
    ShowHelpSearch(nullptr);
    HelpViewer* viewer = HelpViewer::Current();
    auto* field = FindChild<QLineEdit>(viewer, "edtFind");
    QTest::keyClicks(field, QStringLiteral("password xylophone"));
    const int beeps = prompter_.BeepCount();
    QCOMPARE(viewer->Search(), 0);
    QCOMPARE(prompter_.BeepCount(), beeps + 1);
    auto* results = FindChild<QListWidget>(viewer, "lvResults");
    QCOMPARE(results->count(), 1);
    QCOMPARE(results->item(0)->flags(), Qt::NoItemFlags);
    QVERIFY(FindHelpSections(QStringLiteral("   ")).isEmpty());
}

void TestHelp::FindNextWrapsAroundThePage() {
    ShowHelpContents(nullptr);
    HelpViewer* viewer = HelpViewer::Current();
    auto* field = FindChild<QLineEdit>(viewer, "edtFind");
    auto* page = FindChild<QTextBrowser>(viewer, "brwPage");
    auto* next = FindChild<QPushButton>(viewer, "cmdFindNext");
    QTest::keyClicks(field, QStringLiteral("Tarnex"));
    const int beeps = prompter_.BeepCount();

    const int occurrences = int(page->toPlainText().count(QStringLiteral("Tarnex")));
    QVERIFY(occurrences >= 2);
    QList<int> positions;
    for (int i = 0; i <= occurrences; ++i) {
        QTest::mouseClick(next, Qt::LeftButton);
        QCOMPARE(page->textCursor().selectedText(), QStringLiteral("Tarnex"));
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
    for (const HelpSection& section : HelpSections()) {
        targets << section.url.toString();
        targets << section.url.adjusted(QUrl::RemoveFragment).toString();
    }
    static const QRegularExpression link(QStringLiteral("href=\"([^\"]+)\""));
    const QDir folder(QStringLiteral(":/help"));
    const QStringList pages = folder.entryList({QStringLiteral("*.html")});
    QVERIFY(pages.contains(QStringLiteral("index.html")));
    QVERIFY(pages.contains(QStringLiteral("search.html")));
    int links = 0;
    for (const QString& name : pages) {
        const QUrl base(QStringLiteral("qrc:/help/") + name);
        for (auto it = link.globalMatch(PageText(folder.filePath(name))); it.hasNext();) {
            const QUrl target = base.resolved(QUrl(it.next().captured(1)));
            QVERIFY2(targets.contains(target.toString()), qPrintable(target.toString()));
            ++links;
        }
    }
    QVERIFY(links > 20);
}

void TestHelp::EveryKindHasItsOwnPicture() {
    QCOMPARE(QSet<QString>(KnownKinds().cbegin(), KnownKinds().cend()),
             QSet<QString>(ExplorerKinds().cbegin(), ExplorerKinds().cend()));
    QSet<QByteArray> pictures;
    for (const QString& kind : ExplorerKinds()) {
        const QIcon icon = KindIcon(kind);
        QVERIFY2(!icon.isNull(), qPrintable(kind));
        // Drawn at list and tree sizes, with something on it.
        for (int size : {16, 32}) {
            const QImage image = icon.pixmap(size, size).toImage();
            QCOMPARE(image.size(), QSize(size, size));
            int inked = 0;
            for (int y = 0; y < size; ++y)
                for (int x = 0; x < size; ++x) inked += qAlpha(image.pixel(x, y)) > 0;
            QVERIFY2(inked > size * size / 8, qPrintable(kind));
        }
        const QImage large = icon.pixmap(32, 32).toImage();
        pictures << QByteArray(reinterpret_cast<const char*>(large.constBits()),
                               large.sizeInBytes());
        // The same icon again, not a new one per row.
        QCOMPARE(KindIcon(kind).cacheKey(), icon.cacheKey());
    }
    QCOMPARE(pictures.size(), ExplorerKinds().size());
}

void TestHelp::UnknownKindsHaveNoPicture() {
    for (const QString& word :
         {QStringLiteral("user"), QStringLiteral("USERS"), QString(), QStringLiteral("Lcr"),
          QStringLiteral("../brand/veldrano"), QStringLiteral("Zones")})
        QVERIFY2(KindIcon(word).isNull(), qPrintable(word));
}

QTEST_MAIN(TestHelp)
#include "tst_help.moc"

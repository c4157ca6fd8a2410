// Process-wide start-up state: decimal separator, brand and title, and the
// twips of stored window geometry. The test runs under a German locale, so
// the separator read from it differs from the built-in one.

#include <QApplication>
#include <QFile>
#include <QScreen>
#include <QTest>

#include "common/AppContext.h"
#include "common/Twips.h"

using namespace winadmin;

class TestAppContext : public QObject {
    Q_OBJECT

private slots:
    // Runs first: nothing has set the state yet.
    void StartsWithBuiltInTitleAndPoint();
    void SeparatorComesFromTheUserLocale();
    void BrandTable_data();
    void BrandTable();
    void SplashTitleBecomesTheApplicationTitle();
    void TwipsFollowTheScreen();
};

void TestAppContext::StartsWithBuiltInTitleAndPoint() {
    QCOMPARE(ApplicationTitle(), QStringLiteral("VELDRANO"));
    QCOMPARE(DecimalSeparator(), QStringLiteral("."));
    QCOMPARE(NumericCharacters(), QStringLiteral(".0123456789"));
}

void TestAppContext::SeparatorComesFromTheUserLocale() {
    QCOMPARE(QLocale::system().decimalPoint(), QStringLiteral(","));  // the test's own set-up
    LoadDecimalSeparator();
    QCOMPARE(DecimalSeparator(), QStringLiteral(","));
    QCOMPARE(NumericCharacters(), QStringLiteral(",0123456789"));
    QCOMPARE(NumericCharacters().size(), 11);

    // A locale without a separator leaves numeric fields with the point.
    SetDecimalSeparator(QString());
    QCOMPARE(DecimalSeparator(), QStringLiteral("."));
    QCOMPARE(NumericCharacters(), QStringLiteral(".0123456789"));
}

void TestAppContext::BrandTable_data() {
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("logo");
    QTest::addColumn<QString>("product");

    const QString veldranoLogo = QStringLiteral(":/brand/veldrano.svg");
    const QString quorelLogo = QStringLiteral(":/brand/quorel.svg");
    QTest::newRow("kelvar") << QStringLiteral("kelvar") << QStringLiteral("VELDRANO")
                            << veldranoLogo << QStringLiteral("VELDRANO Administrator");
    QTest::newRow("upper case") << QStringLiteral("KELVAR") << QStringLiteral("VELDRANO")
                                << veldranoLogo << QStringLiteral("VELDRANO Administrator");
    QTest::newRow("quorel") << QStringLiteral("Quorel") << QStringLiteral("Quorel") << quorelLogo
                            << QStringLiteral("Quorel Administrator");
    // An unknown brand keeps the built-in title and has no logo; the product
    // title names the brand as the server spelled it.
    QTest::newRow("unknown") << QStringLiteral("Acme") << QStringLiteral("VELDRANO") << QString()
                             << QStringLiteral("Acme Administrator");
    QTest::newRow("near miss") << QStringLiteral("kelvar ") << QStringLiteral("VELDRANO")
                               << QString() << QStringLiteral("kelvar  Administrator");
    QTest::newRow("empty") << QString() << QStringLiteral("VELDRANO") << QString()
                           << QStringLiteral(" Administrator");
}

void TestAppContext::BrandTable() {
    QFETCH(QString, word);
    QFETCH(QString, title);
    QFETCH(QString, logo);
    QFETCH(QString, product);
    const Brand brand = BrandFor(word);
    QCOMPARE(brand.title, title);
    QCOMPARE(brand.logoPath, logo);
    QCOMPARE(ProductTitle(word), product);
    // The logo must be one the program carries.
    if (!logo.isEmpty()) QVERIFY2(QFile::exists(logo), qPrintable(logo));
}

void TestAppContext::SplashTitleBecomesTheApplicationTitle() {
    SetApplicationTitle(BrandFor(QStringLiteral("QUOREL")).title +
                        QStringLiteral(" Administrator"));
    QCOMPARE(ApplicationTitle(), QStringLiteral("Quorel Administrator"));
    SetApplicationTitle(BrandFor(QStringLiteral("acme")).title + QStringLiteral(" Administrator"));
    QCOMPARE(ApplicationTitle(), QStringLiteral("VELDRANO Administrator"));
}

void TestAppContext::TwipsFollowTheScreen() {
    const QScreen* screen = QGuiApplication::primaryScreen();
    QVERIFY(screen);
    const double dpi = screen->logicalDotsPerInch();
    // An inch is 1440 twips, whatever the screen.
    QCOMPARE(TwipsToPixels(1440), qRound(dpi));
    QCOMPARE(PixelsToTwips(qRound(dpi)), qRound(qRound(dpi) * 1440.0 / dpi));
    if (qFuzzyCompare(dpi, 96.0)) {
        QCOMPARE(TwipsPerPixel(), 15.0);
        QCOMPARE(TwipsToPixels(9600), 640);
        QCOMPARE(TwipsToPixels(22), 1);  // 1.47 pixels
        QCOMPARE(TwipsToPixels(23), 2);  // 1.53 pixels
    }
    // Geometry saved and read again lands on the same pixel.
    for (int pixels = -50; pixels <= 4000; ++pixels)
        QCOMPARE(TwipsToPixels(PixelsToTwips(pixels)), pixels);
}

int main(int argc, char** argv) {
    // The administrator's locale, as the console would find it at start-up.
    qputenv("LC_ALL", "de_DE.UTF-8");
    QApplication app(argc, argv);
    Q_INIT_RESOURCE(resources);
    TestAppContext test;
    QTEST_SET_MAIN_SOURCE_PATH
    return QTest::qExec(&test, argc, argv);
}

#include "tst_appcontext.moc"

// Process-wide start-up state: decimal separator, brand and title, and the
// twips of stored window geometry. The test runs under a German locale, so
// the separator read from it differs from the built-in one.

#include <QApplication>
#include <QFile>
#include <QTest>

#include "common/AppContext.h"

using namespace winadmin;

class TestAppContext : public QObject {
    Q_OBJECT

private slots:
    void SeparatorComesFromTheUserLocale();
    void BrandTable_data();
    void BrandTable();
};

void TestAppContext::SeparatorComesFromTheUserLocale() {
    // Runs first: nothing has set the state yet.
    QCOMPARE(ApplicationTitle(), QStringLiteral("VELDRANO"));

    QCOMPARE(QLocale::system().decimalPoint(), QStringLiteral(","));  // the test's own set-up
    LoadDecimalSeparator();
    QCOMPARE(NumericCharacters(), QStringLiteral(",0123456789"));

    // A locale without a separator leaves numeric fields with the point.
    SetDecimalSeparator(QString());
    QCOMPARE(NumericCharacters(), QStringLiteral(".0123456789"));
}

void TestAppContext::BrandTable_data() {
    QTest::addColumn<QString>("word");
    QTest::addColumn<QString>("title");
    QTest::addColumn<QString>("logo");
    QTest::addColumn<QString>("product");
    const auto row = [](const char* name, const char* word, const char* title, const char* logo,
                        const char* product) {
        QTest::newRow(name) << QString(word) << QString(title) << QString(logo) << QString(product);
    };
    // Splash and About show the known brands (tst_startup); the product
    // title of an unknown one names the brand as the server spelled it.
    row("mixed case", "QuoRel", "Quorel", ":/brand/quorel.svg", "Quorel Administrator");
    row("kelvar", "kelvar", "VELDRANO", ":/brand/veldrano.svg", "VELDRANO Administrator");
    row("near miss", "kelvar ", "VELDRANO", "", "kelvar  Administrator");
}

void TestAppContext::BrandTable() {
    QFETCH(QString, word);
    QFETCH(QString, logo);
    const Brand brand = BrandFor(word);
    QTEST(brand.title, "title");
    QCOMPARE(brand.logoPath, logo);
    QTEST(ProductTitle(word), "product");
    // The logo must be one the program carries.
    if (!logo.isEmpty()) QVERIFY2(QFile::exists(logo), qPrintable(logo));
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

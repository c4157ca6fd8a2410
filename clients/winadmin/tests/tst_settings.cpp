// The settings store over a settings file of the test's own.

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QLocale>
#include <QSettings>
#include <QTest>

#include "common/Settings.h"
#include "support/ConsoleFixture.h"

using namespace winadmin;

namespace {

const QString kProduct = QStringLiteral("VELDRANO Administrator");
const QString kMain = QStringLiteral("MainForm");
const QString kLastServer = QStringLiteral("LastAdminServer");
const QString kLastServerKey = QStringLiteral("Software/Tarnex/LastAdminServer/Default");
const QString kLeftKey =
    QStringLiteral("Software/Tarnex/VELDRANO Administrator/MainForm/Left/Default");

}  // namespace

class TestSettings : public ConsoleSuite {
    Q_OBJECT

public:
    TestSettings() : ConsoleSuite(Server::None) {}

private slots:
    void SavedValuesAreTrimmedAndLiveAsDefaultValuesOfSubkeys();
    void StoredTextIsReadAsTheClassicBufferHeldIt_data();
    void StoredTextIsReadAsTheClassicBufferHeldIt();
    void SectionsAndPlainNamesDoNotCollide();
    void StoreThatCannotBeWrittenThrowsOnSaveOnly();
    void BatchWritesTheStoreOnceAtItsEnd();
    void LeadingNumber_data();
    void LeadingNumber();

private:
    // What a program other than the console left in the store.
    void StoreRaw(const QString& key, const QString& value) {
        QSettings(file_, QSettings::IniFormat).setValue(key, value);
    }
    // QSettings objects of one process share unwritten changes, so batches
    // are checked on the file itself.
    QString FileText() const {
        QFile file(file_);
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString();
    }

    void SetUp() override { file_ = fx_->SettingsFile(); }
    // A file in the folder of the test's settings file.
    QString Beside(const char* name) const {
        return QFileInfo(file_).dir().filePath(QLatin1String(name));
    }

    QString file_;
};

void TestSettings::SavedValuesAreTrimmedAndLiveAsDefaultValuesOfSubkeys() {
    // What was written is the trimmed text, as the default value of a subkey:
    // a value beside the subkey would not be found by an older console.
    QVERIFY(SaveSetting(kVendor, kLastServer, QStringLiteral("  mx-01  ")));
    QSettings raw(file_, QSettings::IniFormat);
    QCOMPARE(raw.value(kLastServerKey).toString(), QStringLiteral("mx-01"));
    QVERIFY(!raw.contains(QStringLiteral("Software/Tarnex/LastAdminServer")));

    // Saving blanks leaves a value that reads as absent.
    QVERIFY(SaveSetting(kVendor, kLastServer, QStringLiteral("   ")));
    QCOMPARE(GetSetting(kVendor, kLastServer, QStringLiteral("dflt")), QStringLiteral("dflt"));
}

void TestSettings::StoredTextIsReadAsTheClassicBufferHeldIt_data() {
    QTest::addColumn<QString>("stored");
    QTest::addColumn<QString>("expected");

    const QString dflt = QStringLiteral("<default>");
    QTest::newRow("blanks only") << QStringLiteral("     ") << dflt;
    QTest::newRow("text after NUL") << QStringLiteral("mx-01\0junk") << QStringLiteral("mx-01");
    const QString longValue = QString(250, u'a');
    QTest::newRow("250 characters") << longValue << longValue.left(199);
    // The cut comes before the trim: blanks that end up last go as well.
    QTest::newRow("cut at a blank")
        << QString(198, u'x') + QStringLiteral("  tail") << QString(198, u'x');
}

void TestSettings::StoredTextIsReadAsTheClassicBufferHeldIt() {
    QFETCH(QString, stored);
    QFETCH(QString, expected);
    // Plain and section settings share the reading.
    StoreRaw(kLeftKey, stored);
    QCOMPARE(GetSectionSetting(kVendor, kProduct, kMain, QStringLiteral("Left"),
                               QStringLiteral("<default>")),
             expected);
}

void TestSettings::SectionsAndPlainNamesDoNotCollide() {
    // Products apart are tst_mainwindow's (the brand chooses the key).
    const QString name = QStringLiteral("Left");
    const QString view = QStringLiteral("AdmView");
    QVERIFY(SaveSetting(kVendor, name, QStringLiteral("plain")));
    QVERIFY(SaveSetting(kVendor, kMain, QStringLiteral("section as a name")));
    QVERIFY(SaveSectionSetting(kVendor, kProduct, kMain, name, QStringLiteral("main")));
    QVERIFY(SaveSectionSetting(kVendor, kProduct, view, name, QStringLiteral("view")));

    QCOMPARE(GetSetting(kVendor, name, {}), QStringLiteral("plain"));
    QCOMPARE(GetSetting(kVendor, kMain, {}), QStringLiteral("section as a name"));
    QCOMPARE(GetSectionSetting(kVendor, kProduct, kMain, name, {}), QStringLiteral("main"));
    QCOMPARE(GetSectionSetting(kVendor, kProduct, view, name, {}), QStringLiteral("view"));
}

void TestSettings::StoreThatCannotBeWrittenThrowsOnSaveOnly() {
    // A path below a plain file cannot be created, whoever runs the test.
    QFile blocker(Beside("blocker"));
    QVERIFY(blocker.open(QIODevice::WriteOnly));
    blocker.close();
    UseSettingsFile(Beside("blocker/settings.ini"));

    QCOMPARE(GetSetting(kVendor, kLastServer, QStringLiteral("dflt")), QStringLiteral("dflt"));
    try {
        SaveSetting(kVendor, kLastServer, QStringLiteral("mx-01"));
        QFAIL("a store that cannot be written must refuse the save");
    } catch (const SettingsError& error) {
        // The message names the store that failed.
        QVERIFY2(QString::fromUtf8(error.what()).contains(QStringLiteral("blocker")), error.what());
    }
}

void TestSettings::BatchWritesTheStoreOnceAtItsEnd() {
    {
        SettingsBatch batch;
        {
            SettingsBatch nested;  // a batch inside a batch does not write early
            SaveSectionSetting(kVendor, kProduct, kMain, QStringLiteral("Left"), " 1200 ");
            nested.Finish();
        }
        QVERIFY(!FileText().contains(QStringLiteral("1200")));
        // What was saved is read back at once, before the store is written.
        QCOMPARE(GetSectionSetting(kVendor, kProduct, kMain, QStringLiteral("Left"), {}),
                 QStringLiteral("1200"));
        batch.Finish();
    }
    QCOMPARE(QSettings(file_, QSettings::IniFormat).value(kLeftKey).toString(),
             QStringLiteral("1200"));
    // A batch left by an exception still writes what was set.
    try {
        SettingsBatch batch;
        SaveSetting(kVendor, kLastServer, QStringLiteral("mx-02"));
        throw std::runtime_error("interrupted");
    } catch (const std::runtime_error&) {
    }
    QVERIFY(FileText().contains(QStringLiteral("mx-02")));
}

void TestSettings::LeadingNumber_data() {
    QTest::addColumn<QString>("text");
    QTest::addColumn<double>("expected");

    const double fallback = -99.0;
    QTest::newRow("negative, blanks around") << QStringLiteral("  -42  ") << -42.0;
    QTest::newRow("fraction then letter") << QStringLiteral("1.5x") << 1.5;
    QTest::newRow("letters") << QStringLiteral("abc") << fallback;
    QTest::newRow("comma is no decimal point") << QStringLiteral("1,5") << 1.0;
    QTest::newRow("exponent") << QStringLiteral("2e3 px") << 2000.0;
    QTest::newRow("exponent without digits") << QStringLiteral("2e") << 2.0;
}

void TestSettings::LeadingNumber() {
    QFETCH(QString, text);
    QFETCH(double, expected);
    // Stored numbers use "." whatever the administrator's locale says.
    QLocale::setDefault(QLocale(QLocale::German, QLocale::Germany));
    const double value = winadmin::LeadingNumber(text, -99.0);
    QLocale::setDefault(QLocale::c());
    QCOMPARE(value, expected);
}

QTEST_MAIN(TestSettings)
#include "tst_settings.moc"

// Form translation and the code tables against the label table of the
// reference server, German so that every translated caption differs from its
// key.

#include <QTest>
#include <QtWidgets>

#include "common/CodeTables.h"
#include "common/Labels.h"
#include "session/ServerSession.h"
#include "support/ConsoleFixture.h"

using namespace winadmin;

namespace {

template <class T>
T* Add(QWidget* parent, const char* name, const QString& caption = {}) {
    auto* widget = new T(parent);
    widget->setObjectName(QLatin1String(name));
    if constexpr (std::is_base_of_v<QGroupBox, T>)
        widget->setTitle(caption);
    else if constexpr (requires { widget->setText(caption); })
        widget->setText(caption);
    if (!parent->layout()) new QVBoxLayout(parent);
    parent->layout()->addWidget(widget);
    return widget;
}

std::unique_ptr<QWidget> NewForm(const QString& caption) {
    auto form = std::make_unique<QWidget>();
    form->setObjectName(QStringLiteral("frmTest"));
    form->setWindowTitle(caption);
    return form;
}

}  // namespace

class TestLabels : public ConsoleSuite {
    Q_OBJECT

public:
    TestLabels() : ConsoleSuite(Server::LoggedIn, "de") {}

private slots:
    void CaptionsAreLookedUpWithoutOneTrailingColon();
    void LabelLendsItsTextToItsBuddy();
    void WithoutTableEveryKeyIsItsOwnText();
    void CodeTablesFallBackToUnknown();
    void ProcessStatusLooksAtRunStateFirst();
    void CodeTextsFollowALanguageChangeAtOnce();

private:
    static QString Label(const char* key) {
        return TheSession()->GetLabel(QString::fromLatin1(key));
    }
};

void TestLabels::CaptionsAreLookedUpWithoutOneTrailingColon() {
    QMainWindow window;
    window.setWindowTitle(QStringLiteral("Login"));
    auto* form = new QWidget(&window);
    window.setCentralWidget(form);
    auto* twice = Add<QLabel>(form, "lblTwice", QStringLiteral("Comment::"));
    auto* unknown = Add<QLabel>(form, "lblUnknown", QStringLiteral("No such caption:"));
    auto* frame = Add<QGroupBox>(form, "fraGeneral", QStringLiteral("General:"));
    // A page that translates itself inside a form that translates everything
    // in it, twice: the control keeps its design key.
    auto* page = Add<QWidget>(form, "fraPage");
    auto* host = Add<QLabel>(page, "lblHostName", QStringLiteral("Host name:"));

    QMenu* file = window.menuBar()->addMenu(QStringLiteral("&File"));
    QMenu* view = file->addMenu(QStringLiteral("&View"));
    QAction* large = view->addAction(QStringLiteral("Lar&ge Icons"));
    // Pop-up menus are not in the bar; they are menus of the window all the same.
    QAction* stop = (new QMenu(QStringLiteral("Edit"), &window))->addAction("S&top");

    QVERIFY(ApplyFormLabels(page));
    QVERIFY(ApplyFormLabels(&window));
    QVERIFY(ApplyFormLabels(&window));

    QCOMPARE(window.windowTitle(), QStringLiteral("Anmeldung"));
    // The table's text replaces the caption as it stands: its colon is the
    // table's, none is added or kept.
    QCOMPARE(host->text(), QStringLiteral("Hostname:"));
    QCOMPARE(frame->title(), QStringLiteral("Allgemein"));
    QCOMPARE(unknown->text(), QStringLiteral("No such caption"));
    // Only one colon goes; "Comment:" is no key of the table.
    QCOMPARE(twice->text(), QStringLiteral("Comment:"));
    QCOMPARE(view->title(), QStringLiteral("&Ansicht"));
    QCOMPARE(large->text(), QStringLiteral("&Gro\u00DFe Symbole"));
    QCOMPARE(stop->text(), QStringLiteral("S&toppen"));
}

void TestLabels::LabelLendsItsTextToItsBuddy() {
    auto form = NewForm(QStringLiteral("Login"));
    auto* host = Add<QLabel>(form.get(), "lblHostName", QStringLiteral("Host name:"));
    auto* field = Add<QLineEdit>(form.get(), "edtHostName");
    host->setBuddy(field);
    auto* loose = Add<QLineEdit>(form.get(), "edtLoose");
    QVERIFY(ApplyFormLabels(form.get()));
    QCOMPARE(field->accessibleName(), QStringLiteral("Hostname"));
    QVERIFY(loose->accessibleName().isEmpty());
}

void TestLabels::WithoutTableEveryKeyIsItsOwnText() {
    SetLabelSource(nullptr);
    QCOMPARE(GetLabel(QStringLiteral("Users")), QStringLiteral("Users"));
    auto form = NewForm(QStringLiteral("Login"));
    QVERIFY(ApplyFormLabels(form.get()));
    QCOMPARE(form->windowTitle(), QStringLiteral("Login"));
}

// The texts of whole rows are tst_listfill's and tst_monitors'.
void TestLabels::CodeTablesFallBackToUnknown() {
    QCOMPARE(PrinterTypeText(12), Label("<Unknown>"));
    QCOMPARE(PrinterTypeText(-1), Label("<Unknown>"));
    QCOMPARE(SeverityText(5), Label("SeverityPanic"));
    QCOMPARE(SeverityText(6), Label("<Unknown>"));
    QCOMPARE(OriginatorText(19), Label("OriginatorPi"));
    QCOMPARE(OriginatorText(20), Label("<Unknown>"));
    // Message class bits outside the ten are ignored.
    QCOMPARE(MessageClassText(0x400), QString());
    QCOMPARE(MessageClassText(0x7FF), MessageClassText(0x3FF));
    QCOMPARE(CountOrDashText(7), QStringLiteral(" 7"));
}

void TestLabels::ProcessStatusLooksAtRunStateFirst() {
    QCOMPARE(ProcessStatusText(-1, 0), Label("ProcessStarting"));
    QCOMPARE(ProcessStatusText(-1, -1), Label("ProcessFailed"));
    QCOMPARE(ProcessStatusText(-2, 1), Label("ProcessInit"));
    QCOMPARE(ProcessStatusText(-1, 1), Label("ProcessRun"));
    QCOMPARE(ProcessStatusText(0, 1), Label("ProcessTerminated"));
    QCOMPARE(ProcessStatusText(-5, 1), Label("ProcessExit") + QStringLiteral(" (0xFFFFFFFB)"));
}

void TestLabels::CodeTextsFollowALanguageChangeAtOnce() {
    const QString german = SeverityText(3);
    TestServer english(ServerOptions());
    auto englishSession = english.Login();
    SetLabelSource(englishSession.get());
    QCOMPARE(SeverityText(3), englishSession->GetLabel(QStringLiteral("SeverityError")));
    QVERIFY(SeverityText(3) != german);
    SetLabelSource(TheSession());
    QCOMPARE(SeverityText(3), german);
}

QTEST_MAIN(TestLabels)
#include "tst_labels.moc"

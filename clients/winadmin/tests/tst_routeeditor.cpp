// The route and number mapping editors against the demo installation: the
// choosers and "(None)", the polling checks that depend on the server level,
// and references the server refuses.

#include <QComboBox>
#include <QTest>
#include <QTreeView>

#include "common/FormParameters.h"
#include "common/Labels.h"
#include "editors/frmGroupSelection.h"
#include "editors/frmNumberMappingsDetails.h"
#include "editors/frmRouteDetails.h"
#include "lists/ListModel.h"
#include "session/ServerSession.h"
#include "shell/frmMain.h"
#include "store/Store.h"
#include "support/EditorDriver.h"
#include "support/EditorLifecycle.h"
#include "support/ExplorerFixture.h"

using namespace winadmin;

namespace {

FormParameterList Request(const char* key, const QString& value) {
    return {{QLatin1String(key), value}};
}
FormParameterList NewRequest() {
    return {{QStringLiteral("New"), QString()}};
}

using RouteEditor = ShownEditor<frmRouteDetails>;
using MappingEditor = ShownEditor<frmNumberMappingsDetails>;

// Chooses the row named name in the next selection dialog of type W.
template <class W>
void WhenChoosing(const char* list, const QString& name) {
    WhenShown<W>([list, name](W& dialog) {
        auto* view = Child<QTreeView>(dialog, list);
        QTRY_VERIFY(view->model()->rowCount() > 0);
        const int row = static_cast<const ListModel*>(view->model())->FindText(name);
        QVERIFY2(row >= 0, qPrintable(name));
        ClickRow(view, row, {}, true);
    });
}

}  // namespace

class TestRouteEditor : public ExplorerSuite {
    Q_OBJECT

private slots:
    void Lifecycles();
    void ChoosersAndNoneAreStoredAsEmptyNames();
    void PollingIsCheckedFromLevelFive();
    void ReferenceDeletedMeanwhileKeepsTheEdits();
    void NamedUserIsNotDeletedFromTheExplorer();
    void MappingNeedsReplace();
};

void TestRouteEditor::Lifecycles() {
    const auto routes = Store().ListRoutes().size();
    LifecycleSubject route;
    route.make = [] { return std::make_unique<frmRouteDetails>(); };
    route.open = Request("RouteName", QStringLiteral("orders"));
    route.missing = Request("RouteName", QStringLiteral("no-route"));
    route.notExistText = GetLabel(QStringLiteral("RouteNotExist"));
    route.create = NewRequest();
    route.keyField = "edtRouteName";
    route.takenKey = QStringLiteral("legal-in");
    route.existsText = GetLabel(QStringLiteral("RouteAlreadyExist"));
    route.edit = TypeCounted("edtComment", QStringLiteral("Order forms "));
    route.storedVersion = [this] { return Store().GetRoute("orders").version(); };
    CheckLifecycle(route, fx_->prompter);
    // Asking about a taken name created nothing.
    QCOMPARE(Store().ListRoutes().size(), routes);
    if (QTest::currentTestFailed()) return;

    LifecycleSubject mapping;
    mapping.make = [] { return std::make_unique<frmNumberMappingsDetails>(); };
    mapping.open = Request("NumMapMatch", QStringLiteral("0041"));
    mapping.missing = Request("NumMapMatch", QStringLiteral("0042"));
    mapping.notExistText = GetLabel(QStringLiteral("MapNotExist"));
    mapping.create = NewRequest();
    mapping.keyField = "edtMatch";
    mapping.takenKey = QStringLiteral("110");
    mapping.existsText = GetLabel(QStringLiteral("MapExist"));
    mapping.edit = TypeCounted("edtReplace", QStringLiteral("+4"));
    mapping.storedVersion = [this] { return Store().GetNumberMapping("0041").version(); };
    CheckLifecycle(mapping, fx_->prompter);
}

void TestRouteEditor::ChoosersAndNoneAreStoredAsEmptyNames() {
    // "(None)" through the user selection is tst_admineditor's.
    RouteEditor editor(Request("RouteName", QStringLiteral("orders")));
    // The group chooser offers "(None)" first and starts on the group shown.
    WhenShown<frmGroupSelection>([](frmGroupSelection& dialog) {
        auto* view = Child<QTreeView>(dialog, "lvGroups");
        QTRY_VERIFY(view->model()->rowCount() > 1);
        QCOMPARE(view->model()->index(0, 0).data().toString(), NoneText());
        QCOMPARE(dialog.SelectedName(), QStringLiteral("SalesTeam"));
        ClickRow(view, 0, {}, true);
    });
    editor.Click("cmdGroupSelection");
    editor.Set("cboPollServer=" + NoneText());
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    auto stored = Store().GetRoute("orders");
    QVERIFY(stored.group().empty() && stored.poll_server().empty());

    // And back: names chosen are stored by name.
    RouteEditor again(Request("RouteName", QStringLiteral("orders")));
    WhenChoosing<frmGroupSelection>("lvGroups", QStringLiteral("Legal"));
    again.Click("cmdGroupSelection");
    again.Set("cboPollServer=remote-hq.example.net");
    again.Click("cmdOK");
    QVERIFY(!again.dialog.isVisible());
    stored = Store().GetRoute("orders");
    QCOMPARE(stored.group(), std::string("Legal"));
    QCOMPARE(stored.poll_server(), std::string("remote-hq.example.net"));
}

void TestRouteEditor::PollingIsCheckedFromLevelFive() {
    // acc-in polls nothing: "(None)" and no document.
    {
        RouteEditor editor(Request("RouteName", QStringLiteral("acc-in")));
        editor.Type("edtComment", QString());
        editor.ExpectOK(fx_->prompter, EmptyMessage("Comment"));
        editor.Type("edtComment", QStringLiteral("Invoices"));
        editor.ExpectOK(fx_->prompter, EmptyMessage("Poll Document"), "edtPollDocument");
    }
    // Below level 5 the polling fields are not checked at all.
    Store().SetMeta("server_level", "4");
    TheSession()->Login();
    RouteEditor editor(Request("RouteName", QStringLiteral("acc-in")));
    editor.Type("edtComment", QStringLiteral("Invoices"));
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    QCOMPARE(Store().GetRoute("acc-in").comment(), std::string("Invoices"));
}

void TestRouteEditor::ReferenceDeletedMeanwhileKeepsTheEdits() {
    RouteEditor editor(Request("RouteName", QStringLiteral("orders")));
    WhenChoosing<frmGroupSelection>("lvGroups", QStringLiteral("Legal"));
    editor.Click("cmdGroupSelection");
    editor.Type("edtComment", QStringLiteral("To legal now"));
    // Another console changes the route that named the group, then deletes
    // the group.
    Store().DeleteRoute("legal-in", Store().GetRoute("legal-in").version());
    Store().DeleteGroup("Legal", Store().GetGroup("Legal").version());
    fx_->prompter.Answer(Answer::OK);
    editor.Click("cmdOK");
    const Prompt& refused = fx_->prompter.LastPrompt();
    QVERIFY2(refused.text.contains(QStringLiteral("(81010007)")), qPrintable(refused.text));
    QVERIFY(refused.text.contains(QStringLiteral("'Legal'")));
    QVERIFY(editor.dialog.isVisible());
    QCOMPARE(editor.Field("edtGroup")->text(), QStringLiteral("Legal"));
    QCOMPARE(editor.Field("edtComment")->text(), QStringLiteral("To legal now"));
    QCOMPARE(Store().GetRoute("orders").group(), std::string("SalesTeam"));
}

void TestRouteEditor::NamedUserIsNotDeletedFromTheExplorer() {
    // "night" delivers to reception@fxmaster.
    auto main = fx_->OpenMain();
    QVERIFY(ExplorerFixture::Click(*main, QStringLiteral("fxmasterUsers")));
    QVERIFY(ClickRow(*main, QStringLiteral("reception")));
    fx_->prompter.Answer({Answer::Yes, Answer::OK});
    main->MenuEntry(QStringLiteral("mnuFileDelete"))->trigger();
    const Prompt& refused = fx_->prompter.LastPrompt();
    QVERIFY2(refused.text.contains(QStringLiteral("(81010011)")), qPrintable(refused.text));
    QVERIFY(refused.text.contains(QStringLiteral("'night'")));
    QVERIFY(!Store().GetUser("fxmaster", "reception").is_new());
    QVERIFY(RowOf(*main, QStringLiteral("reception")) >= 0);
}

void TestRouteEditor::MappingNeedsReplace() {
    MappingEditor editor(Request("NumMapMatch", QStringLiteral("00")));
    editor.Type("edtReplace", QString());
    editor.ExpectOK(fx_->prompter, EmptyMessage("Replace"));
    QCOMPARE(Store().GetNumberMapping("00").replace(), std::string("+"));
    editor.Type("edtReplace", QStringLiteral("+41"));
    editor.Click("cmdOK");
    QVERIFY(!editor.dialog.isVisible());
    QCOMPARE(Store().GetNumberMapping("00").replace(), std::string("+41"));
}

QTEST_MAIN(TestRouteEditor)
#include "tst_routeeditor.moc"

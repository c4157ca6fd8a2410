#include "support/EditorDriver.h"

#include <QAbstractButton>
#include <QTest>
#include <QTimer>
#include <QTreeView>

#include "lists/ListModel.h"

namespace winadmin {

void EditorDriver::Key(const char* field, Qt::Key key) {
    QTest::keyClick(Field<QWidget>(field), key);
}

void EditorDriver::Click(const char* button) {
    QTest::mouseClick(Field<QAbstractButton>(button), Qt::LeftButton);
}

const ListModel& EditorDriver::List(const char* list) const {
    return *static_cast<const ListModel*>(Field<QTreeView>(list)->model());
}

QStringList EditorDriver::Names(const char* list) const {
    QStringList names;
    const ListModel& rows = List(list);
    for (int row = 0; row < rows.rowCount(); ++row) names << rows.Row(row).cells.value(0);
    return names;
}

void EditorDriver::Select(const char* list, const QStringList& names, bool doubleClick) {
    Qt::KeyboardModifiers modifiers;
    for (const QString& name : names) {
        const int row = List(list).FindText(name);
        QVERIFY2(row >= 0, qPrintable(name));
        ClickRow(Field<QTreeView>(list), row, modifiers, doubleClick);
        modifiers = Qt::ControlModifier;
    }
}

void EditorDriver::Show(const FormParameterList& request) {
    SetFormParameters(request);
    ShowActive(window_);
    QTRY_VERIFY(!Child<QTimer>(window_, "timStartUp")->isActive());
}

}  // namespace winadmin

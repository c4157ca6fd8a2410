#include "support/EditorDriver.h"

#include <QAbstractButton>
#include <QComboBox>
#include <QTest>
#include <QTimer>
#include <QTreeView>

#include "common/FieldHelpers.h"
#include "common/Pages.h"
#include "editors/frmChangePassword.h"
#include "lists/ListModel.h"

namespace winadmin {

void EditorDriver::Key(const char* field, Qt::Key key) {
    QTest::keyClick(Field<QWidget>(field), key);
}

void EditorDriver::Click(const char* button) {
    QTest::mouseClick(Field<QAbstractButton>(button), Qt::LeftButton);
}

void EditorDriver::ExpectOK(ScriptedPrompter& prompter, const QString& message,
                            const QString& focus) {
    if (!message.isEmpty()) prompter.Answer(Answer::OK);
    Click("cmdOK");
    if (message.isEmpty()) {
        QVERIFY(!window_.isVisible());
        return;
    }
    QCOMPARE(prompter.LastPrompt().text, message);
    QCOMPARE(prompter.LastPrompt().icon, PromptIcon::Exclamation);
    QVERIFY(window_.isVisible());
    if (focus.isEmpty()) return;
    QWidget* focused = window_.focusWidget();
    QWidget* expected = Field<QWidget>(qPrintable(focus));
    QVERIFY2(focused && expected && (focused == expected || focused->isAncestorOf(expected)),
             qPrintable(focused ? focused->objectName() : QStringLiteral("no focus")));
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

void EditorDriver::Set(const QString& assignment) {
    const QString value = assignment.section(u'=', 1);
    auto* control = Field<QWidget>(qPrintable(assignment.section(u'=', 0, 0)));
    QVERIFY2(control && ShowPageOf(control), qPrintable(assignment));
    if (auto* combo = qobject_cast<QComboBox*>(control))
        combo->setCurrentIndex(combo->findText(value));
    else if (qobject_cast<QAbstractButton*>(control) && Shown(control) != value)
        QTest::keyClick(control, Qt::Key_Space);
    else if (auto* field = qobject_cast<QLineEdit*>(control))
        Retype(field, value);
}

QString EditorDriver::Shown(const QWidget* control) {
    if (auto* box = qobject_cast<const QAbstractButton*>(control))
        return box->isChecked() ? QStringLiteral("1") : QStringLiteral("0");
    return FieldText(control);
}

void WhenAskedForPassword(const QString& entry, const QString& confirmation, bool cancel) {
    WhenShown<frmChangePassword>([=](frmChangePassword& dialog) {
        Retype(Child<QLineEdit>(dialog, "edtEnterNewPassword"), entry);
        Retype(Child<QLineEdit>(dialog, "edtConfirmNewPassword"), confirmation);
        QTest::mouseClick(Child<QAbstractButton>(dialog, cancel ? "cmdCancel" : "cmdOK"),
                          Qt::LeftButton);
        if (dialog.isVisible()) dialog.reject();
    });
}

QString EmptyMessage(const char* field) {
    return QStringLiteral("The field '%1' cannot be empty.").arg(QLatin1String(field));
}

void EditorDriver::Show(const FormParameterList& request) {
    SetFormParameters(request);
    ShowActive(window_);
    QTRY_VERIFY(!Child<QTimer>(window_, "timStartUp")->isActive());
}

}  // namespace winadmin

#include "support/EditorLifecycle.h"

#include <QAbstractButton>
#include <QLineEdit>
#include <QTest>

#include "common/Labels.h"
#include "support/EditorDriver.h"
#include "support/ScriptedPrompter.h"

namespace winadmin {

namespace {

const QString kSaveChanges = QStringLiteral("Do you want to save the changes?");

// A dialog of the subject's, shown with the request and past its start-up.
struct Opened {
    Opened(const LifecycleSubject& subject, const FormParameterList& request)
        : dialog(subject.make()), driver(*dialog) {
        driver.Show(request);
    }
    std::unique_ptr<EditorFrame> dialog;
    EditorDriver driver;
};

QWidget* DetailsOf(EditorFrame& dialog) {
    // Every form names its details container one of these ways.
    if (auto* tabs = dialog.findChild<QWidget*>(QStringLiteral("tabDetails"))) return tabs;
    if (auto* frame = dialog.findChild<QWidget*>(QStringLiteral("fraDetails"))) return frame;
    return dialog.findChild<QWidget*>(QStringLiteral("fraGeneralData"));
}

void CheckNotExistClosesWithZero(const LifecycleSubject& subject, ScriptedPrompter& prompter) {
    const std::pair<const FormParameterList*, QString> requests[] = {
        {&subject.missing, subject.notExistText},
        {&subject.missingServer, GetLabel(QStringLiteral("ServerNotExist"))}};
    for (const auto& [request, text] : requests) {
        if (request->isEmpty()) continue;
        prompter.Answer(Answer::OK);
        Opened editor(subject, *request);
        QTRY_VERIFY(!editor.dialog->isVisible());
        const Prompt& shown = prompter.LastPrompt();
        QCOMPARE(shown.text, text);
        QCOMPARE(shown.icon, PromptIcon::Exclamation);
        QCOMPARE(editor.driver.Answer(), QStringLiteral("0"));
    }
}

void CheckLoadingIsNoEdit(const LifecycleSubject& subject, ScriptedPrompter& prompter) {
    const int64_t before = subject.storedVersion();
    const qsizetype prompts = prompter.Prompts().size();
    Opened editor(subject, subject.open);
    QCOMPARE(editor.dialog->State(), EditorState::Shown);
    QVERIFY(DetailsOf(*editor.dialog) && DetailsOf(*editor.dialog)->isEnabled());
    if (subject.keyField) {
        // Enter in the key field reloads; it never reaches OK.
        auto* key = editor.driver.Field(subject.keyField);
        QVERIFY(key->isReadOnly());
        editor.driver.Key(subject.keyField, Qt::Key_Return);
        QVERIFY(editor.dialog->isVisible());
        QCOMPARE(editor.dialog->State(), EditorState::Shown);
    }
    // Escape outside a new key leaves the dialog alone.
    QTest::keyClick(editor.dialog.get(), Qt::Key_Escape);
    QVERIFY(editor.dialog->isVisible());
    editor.driver.Click("cmdCancel");
    QVERIFY(!editor.dialog->isVisible());
    QCOMPARE(editor.driver.Answer(), QStringLiteral("0"));
    QCOMPARE(prompter.Prompts().size(), prompts);
    QCOMPARE(subject.storedVersion(), before);
}

void CheckSaveChangesAnswers(const LifecycleSubject& subject, ScriptedPrompter& prompter) {
    struct Case {
        int answer;
        bool open;   // the dialog stays
        bool saved;  // the store took the edit
        const char* refresh;
    };
    const Case cases[] = {
        {Answer::Cancel, true, false, ""},
        {Answer::No, false, false, "0"},
        {Answer::Yes, false, true, "-1"},
    };
    for (const Case& expected : cases) {
        const int64_t before = subject.storedVersion();
        Opened editor(subject, subject.open);
        SetFormParameters({});
        subject.edit(editor.driver);
        QCOMPARE(editor.dialog->State(), EditorState::Changed);
        prompter.Answer(expected.answer);
        editor.driver.Click("cmdCancel");
        const Prompt& asked = prompter.LastPrompt();
        QCOMPARE(asked.text, kSaveChanges);
        QCOMPARE(asked.buttons, PromptButtons::YesNoCancel);
        QCOMPARE(asked.icon, PromptIcon::Question);
        QCOMPARE(editor.dialog->isVisible(), expected.open);
        QCOMPARE(subject.storedVersion() > before, expected.saved);
        QCOMPARE(editor.driver.Answer(), QLatin1String(expected.refresh));
        // Cancel keeps the edits.
        if (expected.open) QCOMPARE(editor.dialog->State(), EditorState::Changed);
    }
}

void CheckSaveThenNoAnswersSaved(const LifecycleSubject& subject, ScriptedPrompter& prompter) {
    const int64_t before = subject.storedVersion();
    Opened editor(subject, subject.open);
    subject.edit(editor.driver);
    QVERIFY(EditorFrameProbe::Save(*editor.dialog));
    QCOMPARE(editor.dialog->State(), EditorState::Shown);
    const int64_t saved = subject.storedVersion();
    QVERIFY(saved > before);
    subject.edit(editor.driver);
    prompter.Answer(Answer::No);
    editor.driver.Click("cmdCancel");
    QVERIFY(!editor.dialog->isVisible());
    QCOMPARE(subject.storedVersion(), saved);
    QCOMPARE(editor.driver.Answer(), QStringLiteral("-1"));
}

void CheckNewKey(const LifecycleSubject& subject, ScriptedPrompter& prompter) {
    if (subject.create.isEmpty() || !subject.keyField) return;
    Opened editor(subject, subject.create);
    EditorDriver& driver = editor.driver;
    QCOMPARE(editor.dialog->State(), EditorState::NewKey);
    QVERIFY(!DetailsOf(*editor.dialog)->isEnabled());
    QVERIFY(!driver.Field<QAbstractButton>("cmdOK")->isEnabled());
    // Enter with no key: the mandatory message, and the dialog stays.
    prompter.Answer(Answer::OK);
    driver.Key(subject.keyField, Qt::Key_Return);
    QVERIFY(prompter.LastPrompt().text.endsWith(QLatin1String("cannot be empty.")));
    QCOMPARE(editor.dialog->State(), EditorState::NewKey);
    QVERIFY(editor.dialog->isVisible());
    // A taken key: No leaves it selected for typing over, Yes opens it.
    driver.Type(subject.keyField, subject.takenKey);
    prompter.Answer(Answer::No);
    driver.Key(subject.keyField, Qt::Key_Return);
    QCOMPARE(prompter.LastPrompt().text, subject.existsText);
    QCOMPARE(prompter.LastPrompt().buttons, PromptButtons::YesNo);
    QCOMPARE(prompter.LastPrompt().icon, PromptIcon::Question);
    QCOMPARE(editor.dialog->State(), EditorState::NewKey);
    QCOMPARE(driver.Field(subject.keyField)->selectedText(), subject.takenKey);
    prompter.Answer(Answer::Yes);
    driver.Key(subject.keyField, Qt::Key_Return);
    QCOMPARE(editor.dialog->State(), EditorState::Shown);
    QCOMPARE(driver.Field(subject.keyField)->text(), subject.takenKey);
    QVERIFY(driver.Field<QAbstractButton>("cmdOK")->isEnabled());
    QVERIFY(DetailsOf(*editor.dialog)->isEnabled());
}

}  // namespace

bool EditorFrameProbe::Save(EditorFrame& editor) {
    return editor.SaveIfModified() == EditorFrame::SaveResult::Saved;
}

std::function<void(EditorDriver&)> TypeCounted(const char* field, const QString& prefix) {
    return [field, prefix, count = 0](EditorDriver& editor) mutable {
        editor.Type(field, prefix + QString::number(++count));
    };
}

void CheckLifecycle(const LifecycleSubject& subject, ScriptedPrompter& prompter) {
    using Check = void (*)(const LifecycleSubject&, ScriptedPrompter&);
    for (Check check : {&CheckNotExistClosesWithZero, &CheckLoadingIsNoEdit,
                        &CheckSaveChangesAnswers, &CheckSaveThenNoAnswersSaved, &CheckNewKey}) {
        check(subject, prompter);
        if (QTest::currentTestFailed()) return;
    }
}

}  // namespace winadmin

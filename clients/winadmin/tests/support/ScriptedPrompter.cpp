#include "support/ScriptedPrompter.h"

#include <QGuiApplication>
#include <QTest>

namespace winadmin {

ScriptedPrompter::ScriptedPrompter() : previous_(SetPrompter(this)) {}

ScriptedPrompter::~ScriptedPrompter() {
    SetPrompter(previous_);
}

void ScriptedPrompter::Answer(std::initializer_list<int> answers) {
    for (int answer : answers) answers_.enqueue(answer);
}

const Prompt& ScriptedPrompter::LastPrompt() const {
    static const Prompt none;
    return prompts_.isEmpty() ? none : prompts_.constLast().prompt;
}

int ScriptedPrompter::Show(const Prompt& prompt) {
    if (whileShown) whileShown();
    const bool busy = qobject_cast<QGuiApplication*>(QCoreApplication::instance()) &&
                      QGuiApplication::overrideCursor() != nullptr;
    prompts_.append(Record{prompt, busy});
    if (answers_.isEmpty()) {
        const QByteArray message = "unexpected prompt \"" + prompt.text.toUtf8() + "\" titled \"" +
                                   prompt.title.toUtf8() + "\"";
        QTest::qFail(message.constData(), __FILE__, __LINE__);
        return winadmin::Answer::Cancel;
    }
    return answers_.dequeue();
}

std::optional<QString> ScriptedPrompter::AskPassword(const QString& title, const QString& text) {
    Record record;
    record.prompt.title = title;
    record.prompt.text = text;
    prompts_.append(record);
    if (passwords_.isEmpty()) {
        const QByteArray message = "unexpected password prompt \"" + text.toUtf8() + "\"";
        QTest::qFail(message.constData(), __FILE__, __LINE__);
        return std::nullopt;
    }
    return passwords_.dequeue();
}

QString ScriptedPrompter::AskSaveFileName(const QString& title, const QString& /*filter*/) {
    const QByteArray message = "unexpected save dialog \"" + title.toUtf8() + "\"";
    QTest::qFail(message.constData(), __FILE__, __LINE__);
    return {};
}

}  // namespace winadmin

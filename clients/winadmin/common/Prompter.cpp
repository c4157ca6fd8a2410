#include "common/Prompter.h"

#include <QDebug>
#include <QGuiApplication>
#include <QList>
#include <utility>

namespace winadmin {

namespace {

// Used while no interactive prompter is installed: nothing must wait for a
// person who cannot see a window, but the message must not be lost either.
class LoggingPrompter final : public Prompter {
public:
    int Show(const Prompt& prompt) override {
        const QList<int> answers = AnswersOf(prompt.buttons);
        const int index = prompt.defaultButton - 1;
        const int answer = index >= 0 && index < answers.size() ? answers[index] : answers[0];
        qWarning().noquote() << "prompt:" << prompt.title << "-" << prompt.text << "answered"
                             << answer;
        return answer;
    }
    void Beep() override {}
    QString AskSaveFileName(const QString& title, const QString&) override {
        qWarning().noquote() << "save-file dialog declined:" << title;
        return {};
    }
    std::optional<QString> AskPassword(const QString& title, const QString&) override {
        qWarning().noquote() << "password prompt declined:" << title;
        return std::nullopt;
    }
};

LoggingPrompter fallbackPrompter;
Prompter* currentPrompter = nullptr;

}  // namespace

QList<int> AnswersOf(PromptButtons buttons) {
    switch (buttons) {
        case PromptButtons::OK:
            return {Answer::OK};
        case PromptButtons::OKCancel:
            return {Answer::OK, Answer::Cancel};
        case PromptButtons::AbortRetryIgnore:
            return {Answer::Abort, Answer::Retry, Answer::Ignore};
        case PromptButtons::YesNoCancel:
            return {Answer::Yes, Answer::No, Answer::Cancel};
        case PromptButtons::YesNo:
            return {Answer::Yes, Answer::No};
        case PromptButtons::RetryCancel:
            return {Answer::Retry, Answer::Cancel};
    }
    return {Answer::OK};
}

Prompter& ThePrompter() {
    return currentPrompter ? *currentPrompter : fallbackPrompter;
}

Prompter* SetPrompter(Prompter* prompter) {
    return std::exchange(currentPrompter, prompter);
}

void ResetBusyPointer() {
    // Busy sections may nest; the message must appear with the normal pointer
    // whatever depth the failed work reached.
    if (!qobject_cast<QGuiApplication*>(QCoreApplication::instance())) return;
    while (QGuiApplication::overrideCursor()) QGuiApplication::restoreOverrideCursor();
}

}  // namespace winadmin

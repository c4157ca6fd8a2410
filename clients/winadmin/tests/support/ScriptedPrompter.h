#pragma once
// The prompter of the test suites: answers prompts from a script, records
// everything it was asked, and fails the running test on a prompt that the
// script did not foresee.

#include <QList>
#include <QQueue>
#include <QStringList>
#include <functional>

#include "common/Prompter.h"

namespace winadmin {

class ScriptedPrompter final : public Prompter {
public:
    struct Record {
        Prompt prompt;
        // Whether an override cursor (the hourglass) was up while the box showed.
        bool busyPointer = false;
    };

    // Installs itself as the process's prompter; the destructor puts back the
    // prompter that was current before.
    ScriptedPrompter();
    ~ScriptedPrompter() override;
    ScriptedPrompter(const ScriptedPrompter&) = delete;
    ScriptedPrompter& operator=(const ScriptedPrompter&) = delete;

    // Answers for the coming prompts, in order.
    void Answer(int answer) { answers_.enqueue(answer); }
    void Answer(std::initializer_list<int> answers);
    // Passwords for the coming password prompts; nothing answers a cancel.
    void AnswerPassword(std::optional<QString> password) { passwords_.enqueue(password); }

    const QList<Record>& Prompts() const { return prompts_; }
    const Prompt& LastPrompt() const;
    int BeepCount() const { return beeps_; }
    // Scripted answers that no prompt has used yet.
    int UnusedAnswers() const { return int(answers_.size() + passwords_.size()); }

    int Show(const Prompt& prompt) override;
    void Beep() override { ++beeps_; }
    // No suite scripts a save dialog: one that opens fails the test.
    QString AskSaveFileName(const QString& title, const QString& filter) override;
    std::optional<QString> AskPassword(const QString& title, const QString& text) override;

    // Runs each time a box shows, before it is answered: what a modal box's
    // event loop would let timers do meanwhile. Cleared by assigning {}.
    std::function<void()> whileShown;

private:
    Prompter* previous_;
    QQueue<int> answers_;
    QQueue<std::optional<QString>> passwords_;
    QList<Record> prompts_;
    int beeps_ = 0;
};

}  // namespace winadmin

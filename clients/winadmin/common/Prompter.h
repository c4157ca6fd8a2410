#pragma once
// Every message box, beep and file dialog of the console goes through the
// current Prompter, so that tests can answer them from a script and check what
// the administrator would have been asked.

#include <QString>
#include <optional>

namespace winadmin {

enum class PromptIcon { None, Critical, Question, Exclamation, Information };

enum class PromptButtons { OK, OKCancel, AbortRetryIgnore, YesNoCancel, YesNo, RetryCancel };

// The answer codes of a message box. Callers compare against these numbers
// (Retry repeats a failed call, Ignore goes on with the next step), so they are
// kept exactly as the classic message-box results.
namespace Answer {
constexpr int OK = 1;
constexpr int Cancel = 2;
constexpr int Abort = 3;
constexpr int Retry = 4;
constexpr int Ignore = 5;
constexpr int Yes = 6;
constexpr int No = 7;
}  // namespace Answer

struct Prompt {
    QString text;
    QString title;
    PromptIcon icon = PromptIcon::None;
    PromptButtons buttons = PromptButtons::OK;
    int defaultButton = 1;  // 1-based position among the buttons
};

class Prompter {
public:
    virtual ~Prompter() = default;
    // Shows a modal message and answers one of the Answer codes.
    virtual int Show(const Prompt& prompt) = 0;
    virtual void Beep() = 0;
    // Asks for a file to write; an empty string means the administrator cancelled.
    virtual QString AskSaveFileName(const QString& title, const QString& filter) = 0;
    // Asks for a password with a message above the field; nothing when the
    // administrator cancelled.
    virtual std::optional<QString> AskPassword(const QString& title, const QString& text) = 0;
};

// The answer codes that a prompt with these buttons can give, in button order.
QList<int> AnswersOf(PromptButtons buttons);

// The process-wide prompter. Until one is set, prompts are written to the log
// and answered with their default button, so that code running without a user
// interface (for example a benchmark) does not block.
Prompter& ThePrompter();
// Does not take ownership; passing nullptr goes back to the logging fallback.
// Answers the prompter set before (nullptr for the fallback), so that a
// temporary prompter can put it back.
Prompter* SetPrompter(Prompter* prompter);

// Removes every override cursor, so that a message shown after failed work is
// not covered by the hourglass that the work left behind.
void ResetBusyPointer();

}  // namespace winadmin

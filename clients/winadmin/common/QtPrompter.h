#pragma once
// The prompter of the running console: real message boxes, the system beep
// and the save-file dialog, each parented to the window the administrator is
// working in.

#include <QString>

#include "common/Prompter.h"

namespace winadmin {

class QtPrompter final : public Prompter {
public:
    // Shows the box modally. The buttons are those of prompt.buttons, the
    // default one is the button at prompt.defaultButton (1-based), Escape
    // answers Cancel or No where the box has one and does nothing otherwise;
    // an untitled prompt carries the application title.
    int Show(const Prompt& prompt) override;
    void Beep() override;
    // filter in the classic form "Text Files(*.txt)|*.txt|All Files|*.*".
    QString AskSaveFileName(const QString& title, const QString& filter) override;
    std::optional<QString> AskPassword(const QString& title, const QString& text) override;
};

// The classic description|pattern filter as Qt's name filters, joined by
// ";;": "Text Files(*.txt)|*.txt" gives "Text Files(*.txt)"; a description
// without its patterns gets them appended, "All Files|*.*" gives
// "All Files (*.*)".
QString QtFileFilter(const QString& classicFilter);

}  // namespace winadmin

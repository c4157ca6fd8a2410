#pragma once
// Find in list: the search behind the find dialog, the main window's Find and
// Find Next, and the lists of the selection dialogs.
//
// A window that offers Find registers its list under a caller code; the find
// dialog and Find Next name only the code. The registry holds the window
// weakly: an entry disappears with its window, and a newer window registering
// the same code replaces the older one.
//
// Matching. The cell text is compared with a wildcard pattern in which "*"
// stands for any run of characters, the empty run included. Every other
// character stands for itself: administrators look for names, numbers and
// addresses, where "?", "[" or "#" are part of what they type (a comment
// asking a question, a "#" in a mapping), not a pattern. Without whole word the
// pattern is "*" + text + "*", so the text may sit anywhere in the cell; with
// whole word it is the text itself, and the cell must also be exactly as long
// as the text. Without match case both sides are compared in upper case,
// character by character (the one-to-one mapping, so no cell changes length).

#include <QString>
#include <functional>

class QAbstractItemView;
class QObject;
class QWidget;

namespace winadmin {

// The caller codes of the lists that offer Find.
inline const QString kFindMain = QStringLiteral("FMAIN");
inline const QString kFindGroupSelection = QStringLiteral("FGROUPSELECTION");
inline const QString kFindUserSelection = QStringLiteral("FUSERSELECTION");

struct FindOptions {
    bool matchCase = false;
    bool wholeWord = false;
};

// Answers the view to search now (a window may show its list in more than one
// view; they share the model and the selection). nullptr means no list.
using FindListSource = std::function<QAbstractItemView*()>;

// Registers the list of owner under callerCode until owner is destroyed.
void RegisterFindList(const QString& callerCode, QObject* owner, FindListSource list);
// The usual case: the view is the list and its own owner.
void RegisterFindList(const QString& callerCode, QAbstractItemView* list);
// The list registered under callerCode now; nullptr when none is.
QAbstractItemView* FindList(const QString& callerCode);

// Searches one list from the row after the selected one to the end, offering
// once to go on from the top, and selects the first row one of whose cells
// matches (see above). Prompts "MsgFindAgain" and "MsgNotFound" under title.
// Answers whether a row was found.
bool PressFindOnePart(const QString& text, bool wholeWord, bool ignoreCase, QAbstractItemView* list,
                      const QString& title);

// The find command: an empty text prompts "MsgFindEmpty"; otherwise searches
// the list registered under callerCode (a beep when there is none). The title
// of its prompts is title, or the application title when it is empty.
bool PressFind(const QString& callerCode, const QString& text, FindOptions options,
               const QString& title = QString());

// Shows the find dialog for the list of callerCode, its text selected for
// typing over. owner is the window the list is in when that is not the main
// window (a modal selection dialog): the dialog is lent to it while it shows,
// so that the modal window does not block it. Without a dialog to show (a
// program that has none) it beeps.
void ShowFindDialog(const QString& callerCode, QWidget* owner = nullptr);

// The find dialog belongs to the main window, above the lists that offer it;
// it tells the search how to show it.
using FindDialogPresenter = void (*)(const QString& callerCode, QWidget* owner);
void SetFindDialogPresenter(FindDialogPresenter presenter);

}  // namespace winadmin

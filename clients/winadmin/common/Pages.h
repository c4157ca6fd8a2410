#pragma once
// Pages of a dialog: a check that fails on a field must show that field, and
// the field may sit on a tab page that is not the one in front.

class QTabWidget;
class QWidget;

namespace winadmin {

// Brings every tab page that holds the control to the front, innermost last.
// A control outside any tab control is left alone. Answers whether the
// control is now visible (false for one in a hidden frame, say).
bool ShowPageOf(QWidget* control);

// Ctrl+Tab and Ctrl+Shift+Tab turn the pages of tabs from anywhere in its
// window, skipping disabled pages and wrapping round. The tab control does
// this itself only for keys that reach it: on X11 the keys carry a tab
// character, which a drop-down list takes for a search and keeps.
void InstallPageKeys(QTabWidget* tabs);

}  // namespace winadmin

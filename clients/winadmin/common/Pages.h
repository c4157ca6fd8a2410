#pragma once
// Pages of a dialog: a check that fails on a field must show that field, and
// the field may sit on a tab page that is not the one in front.

class QWidget;

namespace winadmin {

// Brings every tab page that holds the control to the front, innermost last.
// A control outside any tab control is left alone. Answers whether the
// control is now visible (false for one in a hidden frame, say).
bool ShowPageOf(QWidget* control);

}  // namespace winadmin

#pragma once
// Where a window opens, given the screens there are: the main window from its
// stored position, viewers and dialogs wherever their parent or the platform
// put them; on any monitor, never out of reach.

#include <QList>
#include <QRect>
#include <QSize>

class QWidget;

namespace winadmin {

// The frame geometry a window gets for its stored frame. screens are the
// available geometries of the screens, the primary one first; minimum is
// the least frame size.
//
// A frame wholly visible stays where it is, on whichever screen it lies and
// also across adjacent ones. Otherwise it is moved (and shrunk when it is
// larger) onto the screen that shows most of it, or the primary one when
// none shows any. Without screens the frame stays as it is.
QRect PlaceOnScreens(const QRect& frame, const QSize& minimum, const QList<QRect>& screens);

// Brings a top-level window wholly onto the available geometry of the screens
// (see PlaceOnScreens), keeping its minimum size.
void KeepOnScreen(QWidget* window);

// From now on every viewer and dialog is kept on screen as it is shown: a
// viewer opened from a main window near the screen's corner, or one larger
// than a small screen, would otherwise open partly out of reach. Installing
// it again changes nothing.
void KeepWindowsOnScreen();

}  // namespace winadmin

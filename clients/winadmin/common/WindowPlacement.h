#pragma once
// Where a main window opens from a stored position, given the screens there
// are: on any monitor, never out of reach.

#include <QList>
#include <QRect>
#include <QSize>

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

}  // namespace winadmin

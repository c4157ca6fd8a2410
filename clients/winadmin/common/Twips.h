#pragma once
// Window geometry and column widths are stored in twips, as the console has
// always kept them. Every conversion between twips and pixels goes through
// here, so the two units are never mixed by hand.
//
// The stored defaults were laid out for the classic 8-point dialog font, whose
// average character is 6 pixels wide at 96 dots per inch (15 twips a pixel).
// The console's own font is usually larger (and a screen of more dots per
// inch makes it larger still in pixels), so a twip is worth as many pixels
// more as that font's average character is wider: windows and columns grow
// with the text they have to show.

namespace winadmin {

// Average character width of the classic dialog font at 96 dots per inch.
constexpr double kClassicAverageCharWidth = 6.0;

// The average character width, in pixels, of the application font: the width
// of the Latin letters divided by their number, as dialog units are measured.
double AverageCharWidth();
// Twips per pixel for the application font (15 for the classic font at 96
// dots per inch, fewer for a larger one); 15 without a GUI application. Never
// below 1, so that pixels -> twips -> pixels is the identity.
double TwipsPerPixel();
int TwipsToPixels(int twips);
int PixelsToTwips(int pixels);

}  // namespace winadmin

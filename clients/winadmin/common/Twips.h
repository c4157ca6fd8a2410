#pragma once
// Window geometry is stored in twips (1/1440 inch), as the console has always
// kept it. Every conversion between twips and pixels goes through here, so
// the two units are never mixed by hand.

namespace winadmin {

// Twips per pixel of the primary screen (15 at 96 dots per inch).
double TwipsPerPixel();
int TwipsToPixels(int twips);
int PixelsToTwips(int pixels);

}  // namespace winadmin

#pragma once
// Process-wide state set up at start-up and read everywhere: the decimal
// separator of the user's locale and the application title chosen by brand.

#include <QPixmap>
#include <QString>

namespace winadmin {

// The user's decimal separator ("." when the locale gives none) and the
// characters accepted by numeric fields: the separator followed by the digits.
QString DecimalSeparator();
QString NumericCharacters();
void SetDecimalSeparator(const QString& separator);
// Reads the separator from the user's locale.
void LoadDecimalSeparator();

// The title that captions and untitled message boxes use, e.g.
// "VELDRANO Administrator". Before the brand is known it is the built-in one.
QString ApplicationTitle();
void SetApplicationTitle(const QString& title);

// The brand table: "kelvar" -> "VELDRANO" with its logo, "quorel" -> "Quorel"
// with its logo, any other word -> the built-in title and no logo. The word is
// compared in lower case.
struct Brand {
    QString title;     // without " Administrator"
    QString logoPath;  // a resource path, empty when the brand has no logo
};
Brand BrandFor(const QString& brandWord);

// The caption base of the main window by brand word: "VELDRANO Administrator",
// "Quorel Administrator", or the word followed by " Administrator".
QString ProductTitle(const QString& brandWord);

}  // namespace winadmin

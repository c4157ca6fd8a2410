#pragma once
// Language labels: every caption, tooltip, column header and message is a key
// whose text comes from the server's label table. Forms are designed with the
// keys as captions and translated when they load.

#include <QList>
#include <QString>

class QWidget;
class QLabel;
class QTabWidget;

namespace winadmin {

// A dynamic property of a label's buddy that stands in for another field
// (a QObject*): translating the label names that field as well.
inline constexpr char kNamesFieldProperty[] = "winadminNamesField";

// Whoever holds the label table (the server session after login).
class LabelSource {
public:
    virtual ~LabelSource() = default;
    virtual QString GetLabel(const QString& key) const = 0;
};

// Does not take ownership; nullptr makes every key its own text.
void SetLabelSource(const LabelSource* source);

// The text of key; the key itself when no table is loaded or the key is unknown.
QString GetLabel(const QString& key);

// Translates one form: its caption, and every label, frame (group box), button,
// check box, option button and menu entry (caption key = the caption without
// one trailing ":"), and the tooltips of toolbar buttons that have one. The
// frame named "fraHiddenLabels" keeps its own caption (the labels inside it are
// translated). Text fields, lists, trees and combo boxes are never touched.
// Answers true when the walk ran to its end.
//
// What counts as part of the form: its child widgets, except other windows
// parented to it (dialogs translate themselves when they load), status-bar
// panels and the insides of fields, lists and tab bars. Menus count when they
// are children of the form or of its menu bar, pop-up menus included. A label
// with a buddy also names the buddy for screen readers (its text without the
// mnemonic marker and the colon) and, when its caption has no mnemonic, gets
// one that no other control of its window (or tab page) uses. Picture labels
// are left alone. Each control
// remembers the caption it was designed with, so translating a form again (or
// a page that its frame translates too) looks up the design keys once more.
// A toolbar action's tooltip that Qt made up from a menu entry's text follows
// that text and is not looked up on its own.
bool ApplyFormLabels(QWidget* form);

// Copies the (translated) captions of labels into the tabs, tab i from labels[i].
bool ApplyTabCaptions(QTabWidget* tabs, const QList<QLabel*>& labels);

// A field label's caption without its mnemonic marker and its trailing colon,
// as messages that name a field show it.
QString CaptionWithoutColon(const QString& caption);

}  // namespace winadmin

#include "common/Labels.h"

#include <QAbstractButton>
#include <QAbstractItemView>
#include <QAbstractSpinBox>
#include <QAction>
#include <QComboBox>
#include <QGroupBox>
#include <QHash>
#include <QLabel>
#include <QLineEdit>
#include <QMenu>
#include <QMenuBar>
#include <QPlainTextEdit>
#include <QSet>
#include <QStatusBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTextEdit>
#include <QToolBar>
#include <QToolButton>
#include <exception>

namespace winadmin {

namespace {

const LabelSource* labelSource = nullptr;

// The design-time text is kept on the object the first time it is
// translated. A form that is translated again (a page embedded in a frame
// that translates itself as well, or a language switch) then looks up the
// key it was designed with and not a text that was already translated.
QString DesignText(QObject* object, const char* property, const QString& current) {
    const QVariant kept = object->property(property);
    if (kept.isValid()) return kept.toString();
    object->setProperty(property, current);
    return current;
}

constexpr char kCaptionKey[] = "winadminCaptionKey";
constexpr char kToolTipKey[] = "winadminToolTipKey";

QString CaptionKey(const QString& caption) {
    return caption.endsWith(u':') ? caption.chopped(1) : caption;
}

QString TranslatedCaption(QObject* object, const QString& current) {
    return GetLabel(CaptionKey(DesignText(object, kCaptionKey, current)));
}

// A caption as text: the mnemonic marker goes, "&&" stands for one ampersand.
QString WithoutMarker(const QString& caption) {
    QString text;
    text.reserve(caption.size());
    for (qsizetype i = 0; i < caption.size(); ++i) {
        if (caption.at(i) == u'&' && ++i == caption.size()) break;
        text += caption.at(i);
    }
    return text;
}

// The field name as a screen reader should speak it: no mnemonic marker and
// no colon.
QString AccessibleCaption(const QString& caption) {
    return CaptionKey(WithoutMarker(caption).trimmed()).trimmed();
}

// The letter a caption's marker underlines, in lower case; none for a
// caption without one.
QChar MnemonicOf(const QString& caption) {
    for (qsizetype i = 0; i + 1 < caption.size(); ++i) {
        if (caption.at(i) != u'&') continue;
        if (caption.at(i + 1) != u'&') return caption.at(i + 1).toLower();
        ++i;
    }
    return {};
}

// Where the letters of Alt+letter must differ: the page of a tab control a
// control sits on (a hidden page's keys do not fire), else the window.
QWidget* MnemonicScope(QWidget* widget) {
    for (QWidget* w = widget; w && !w->isWindow(); w = w->parentWidget()) {
        QWidget* up = w->parentWidget();
        if (up && up->parentWidget() && qobject_cast<QTabWidget*>(up->parentWidget()))
            return w;  // w is a page: its parent is the tab control's stack
    }
    return widget->window();
}

// The label table's field captions carry no marker, and in another language
// a fixed letter would not fit anyway: every field label without one is
// given the first letter of its caption (then any later letter or digit)
// that no other control of its window, or of its page, uses yet. A label
// whose letters are all taken stays without; its field is still reached by
// Tab.
void GiveFieldLabelsMnemonics(QWidget* form) {
    QHash<QWidget*, QSet<QChar>> used;  // per page; the window's own under form
    auto scopeOf = [form](QWidget* widget) {
        QWidget* scope = MnemonicScope(widget);
        return scope == widget->window() ? form : scope;
    };
    QList<QLabel*> bare;
    for (QWidget* widget : form->findChildren<QWidget*>()) {
        if (widget->window() != form->window()) continue;
        QString caption;
        if (auto* label = qobject_cast<QLabel*>(widget)) {
            if (!label->buddy()) continue;
            caption = label->text();
            if (MnemonicOf(caption).isNull() && !caption.isEmpty()) {
                bare.append(label);
                continue;
            }
        } else if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
            caption = button->text();
        } else if (auto* group = qobject_cast<QGroupBox*>(widget)) {
            caption = group->title();
        } else {
            continue;
        }
        const QChar letter = MnemonicOf(caption);
        if (!letter.isNull()) used[scopeOf(widget)].insert(letter);
    }
    for (QLabel* label : bare) {
        QSet<QChar>& taken = used[scopeOf(label)];
        // Letters of controls outside any page are taken on every page.
        const QSet<QChar>& window = used[form];
        const QString caption = label->text();
        for (qsizetype i = 0; i < caption.size(); ++i) {
            const QChar c = caption.at(i).toLower();
            if (!c.isLetterOrNumber() || taken.contains(c) || window.contains(c)) continue;
            taken.insert(c);
            label->setText(caption.left(i) + u'&' + caption.mid(i));
            break;
        }
    }
}

class FormTranslator {
public:
    void Walk(QWidget* parent) {
        for (QObject* child : parent->children()) {
            auto* widget = qobject_cast<QWidget*>(child);
            if (!widget) continue;
            try {
                if (Visit(widget)) Walk(widget);
            } catch (const std::exception&) {
                // A control that cannot be translated keeps its key; the
                // rest of the form still gets its texts.
            }
        }
    }

private:
    // Answers whether the children of widget belong to the form's walk.
    bool Visit(QWidget* widget) {
        if (auto* menu = qobject_cast<QMenu*>(widget)) {
            TranslateAction(menu->menuAction());
            for (QAction* action : menu->actions()) TranslateAction(action);
            return true;
        }
        // Another window parented to this one is a form of its own.
        if (widget->isWindow()) return false;
        if (auto* bar = qobject_cast<QMenuBar*>(widget)) {
            for (QAction* action : bar->actions()) TranslateAction(action);
            // Only the menus: the bar's own extension button is no caption.
            for (QMenu* menu : bar->findChildren<QMenu*>(Qt::FindDirectChildrenOnly)) {
                Visit(menu);
                Walk(menu);
            }
            return false;
        }
        if (auto* toolBar = qobject_cast<QToolBar*>(widget)) {
            TranslateToolTips(toolBar);
            return false;
        }
        // Fields and lists hold data, not captions; their inner buttons and
        // labels are parts of the control. Tab captions come from hidden
        // labels (ApplyTabCaptions), status panels are set by code.
        if (qobject_cast<QLineEdit*>(widget) || qobject_cast<QTextEdit*>(widget) ||
            qobject_cast<QPlainTextEdit*>(widget) || qobject_cast<QAbstractSpinBox*>(widget) ||
            qobject_cast<QComboBox*>(widget) || qobject_cast<QAbstractItemView*>(widget) ||
            qobject_cast<QTabBar*>(widget) || qobject_cast<QStatusBar*>(widget))
            return false;
        if (auto* label = qobject_cast<QLabel*>(widget)) {
            TranslateLabel(label);
            return true;
        }
        if (auto* group = qobject_cast<QGroupBox*>(widget)) {
            if (group->objectName() != QLatin1String("fraHiddenLabels"))
                group->setTitle(TranslatedCaption(group, group->title()));
            return true;
        }
        if (auto* tool = qobject_cast<QToolButton*>(widget); tool && tool->defaultAction()) {
            // The button shows its action's text; translating the button
            // alone would be undone by the next change of the action.
            TranslateAction(tool->defaultAction());
            return true;
        }
        if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
            const QString text = TranslatedCaption(button, button->text());
            if (text != button->text()) button->setText(text);
            return true;
        }
        return true;
    }

    static void TranslateLabel(QLabel* label) {
        // A label that shows a picture has no caption, and setting a text
        // would drop the picture.
        if (!label->pixmap().isNull() || label->movie()) return;
        const QString text = TranslatedCaption(label, label->text());
        if (text != label->text()) label->setText(text);
        QWidget* buddy = label->buddy();
        if (!buddy) return;
        buddy->setAccessibleName(AccessibleCaption(text));
        // A buddy that stands in for a field (a spin box beside its number
        // field) names the field too: a screen reader meets both.
        if (auto* field =
                qobject_cast<QWidget*>(buddy->property(kNamesFieldProperty).value<QObject*>()))
            field->setAccessibleName(AccessibleCaption(text));
    }

    void TranslateAction(QAction* action) {
        if (!action || action->isSeparator() || done_.contains(action)) return;
        done_.insert(action);
        const QString text = TranslatedCaption(action, action->text());
        if (text != action->text()) action->setText(text);
    }

    void TranslateToolTips(QToolBar* toolBar) {
        for (QAction* action : toolBar->actions()) {
            if (action->isSeparator() || !OwnToolTip(action)) continue;
            const QString key = DesignText(action, kToolTipKey, action->toolTip());
            if (key.isEmpty()) continue;
            action->setToolTip(GetLabel(key));
        }
    }

    // Qt makes up a tooltip from an action's text when none was set. Such a
    // tooltip is no caption of its own: for an action that is also a menu
    // entry it follows the translated text; a button without text or tooltip
    // has none and gets no lookup.
    static bool OwnToolTip(const QAction* action) {
        if (action->property(kToolTipKey).isValid()) return true;
        QAction probe;
        probe.setText(action->text());
        probe.setIconText(action->iconText());
        if (action->toolTip() != probe.toolTip()) return true;
        if (action->toolTip().isEmpty()) return false;
        for (const QObject* user : action->associatedObjects()) {
            if (qobject_cast<const QMenu*>(user) || qobject_cast<const QMenuBar*>(user))
                return false;
        }
        return true;
    }

    QSet<QAction*> done_;
};

}  // namespace

void SetLabelSource(const LabelSource* source) {
    labelSource = source;
}

QString GetLabel(const QString& key) {
    return labelSource ? labelSource->GetLabel(key) : key;
}

bool ApplyFormLabels(QWidget* form) {
    if (!form) return false;
    try {
        form->setWindowTitle(GetLabel(DesignText(form, kCaptionKey, form->windowTitle())));
    } catch (const std::exception&) {
        // The form keeps its key as caption; its controls are still translated.
    }
    FormTranslator().Walk(form);
    GiveFieldLabelsMnemonics(form);
    return true;
}

bool ApplyTabCaptions(QTabWidget* tabs, const QList<QLabel*>& labels) {
    if (!tabs) return false;
    const int count = std::min<qsizetype>(tabs->count(), labels.size());
    for (int i = 0; i < count; ++i) {
        if (labels.at(i)) tabs->setTabText(i, labels.at(i)->text());
    }
    return true;
}

QString CaptionWithoutColon(const QString& caption) {
    // A message names the field, it does not underline a letter of it.
    const QString text = WithoutMarker(caption);
    return text.endsWith(u':') ? text.chopped(1) : text;
}

}  // namespace winadmin

#include "common/DialogHelp.h"

#include <QKeySequence>
#include <QShortcut>
#include <QWidget>

namespace winadmin {

namespace {

HelpHandler& Handler() {
    static HelpHandler handler;
    return handler;
}

constexpr char kHelpTopic[] = "winadminHelpTopic";

}  // namespace

void SetHelpHandler(HelpHandler handler) {
    Handler() = std::move(handler);
}

void InstallHelpKey(QWidget* dialog, const QString& topic) {
    if (!dialog) return;
    dialog->setProperty(kHelpTopic, topic);
    auto* key = new QShortcut(QKeySequence::HelpContents, dialog);
    key->setContext(Qt::WindowShortcut);
    QObject::connect(key, &QShortcut::activated, dialog, [dialog] {
        // Looked up on every press: the shell may install its viewer after
        // a dialog was built.
        if (const HelpHandler& handler = Handler()) handler(dialog, HelpTopicOf(dialog));
    });
}

QString HelpTopicOf(const QWidget* dialog) {
    return dialog ? dialog->property(kHelpTopic).toString() : QString();
}

}  // namespace winadmin

#pragma once
// Editing keys as X11 delivers them: Delete carries the text U+007F and
// Backspace U+0008, which QTest::keyClick does not send. Key filters that
// look at the text of a key must be tried with these events.

#include <QApplication>
#include <QKeyEvent>

namespace winadmin {

// Press and release of key with the given text, sent to target as the
// platform sends it to the focus widget.
inline void PlatformKey(QWidget* target, Qt::Key key, const QString& text,
                        Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    QKeyEvent press(QEvent::KeyPress, key, modifiers, text);
    QApplication::sendEvent(target, &press);
    QKeyEvent release(QEvent::KeyRelease, key, modifiers, text);
    QApplication::sendEvent(target, &release);
}

inline void PlatformDelete(QWidget* target) {
    PlatformKey(target, Qt::Key_Delete, QString(QChar(0x7f)));
}

inline void PlatformBackspace(QWidget* target) {
    PlatformKey(target, Qt::Key_Backspace, QString(QChar(0x08)));
}

// The widget that has the keyboard focus: where the platform sends keys.
inline QWidget* FocusTarget() {
    return QApplication::focusWidget();
}

}  // namespace winadmin

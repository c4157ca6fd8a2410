#include "common/WindowPlacement.h"

#include <QApplication>
#include <QEvent>
#include <QGuiApplication>
#include <QRegion>
#include <QScreen>
#include <QWidget>

namespace winadmin {

namespace {

qint64 Area(const QRect& rect) {
    return rect.isEmpty() ? 0 : qint64(rect.width()) * rect.height();
}

class OnScreenKeeper : public QObject {
public:
    using QObject::QObject;

    bool eventFilter(QObject* watched, QEvent* event) override {
        if (event->type() != QEvent::Show || !watched->isWidgetType()) return false;
        auto* widget = static_cast<QWidget*>(watched);
        // Only windows of their own; menus, tips and combo box lists are
        // placed by Qt already.
        const Qt::WindowType type = widget->windowType();
        if (widget->isWindow() && (type == Qt::Window || type == Qt::Dialog)) KeepOnScreen(widget);
        return false;
    }
};

}  // namespace

QRect PlaceOnScreens(const QRect& frame, const QSize& minimum, const QList<QRect>& screens) {
    if (screens.isEmpty()) return frame;
    QRect wanted(frame.topLeft(), frame.size().expandedTo(minimum));

    QRegion visible;
    for (const QRect& screen : screens) visible += screen;
    if (QRegion(wanted).subtracted(visible).isEmpty()) return wanted;

    // The screen that shows most of the window is the one the administrator
    // left it on; the primary screen takes a window that none shows.
    QRect target = screens.first();
    qint64 shown = 0;
    for (const QRect& screen : screens) {
        const qint64 area = Area(screen.intersected(wanted));
        if (area > shown) {
            shown = area;
            target = screen;
        }
    }
    const int width = qMax(minimum.width(), qMin(wanted.width(), target.width()));
    const int height = qMax(minimum.height(), qMin(wanted.height(), target.height()));
    // A window larger than the screen even at its least size shows its top
    // left corner, where the title bar and the menus are.
    const int left = qMax(target.left(), qMin(wanted.left(), target.right() + 1 - width));
    const int top = qMax(target.top(), qMin(wanted.top(), target.bottom() + 1 - height));
    return QRect(left, top, width, height);
}

void KeepOnScreen(QWidget* window) {
    QList<QRect> screens;
    if (const QScreen* primary = QGuiApplication::primaryScreen())
        screens.append(primary->availableGeometry());
    for (const QScreen* screen : QGuiApplication::screens())
        if (screen != QGuiApplication::primaryScreen()) screens.append(screen->availableGeometry());
    const QRect frame = window->frameGeometry();
    const QSize border = frame.size() - window->size();
    const QRect placed = PlaceOnScreens(frame, window->minimumSize() + border, screens);
    if (placed == frame) return;
    window->resize(placed.size() - border);
    window->move(placed.topLeft());
}

void KeepWindowsOnScreen() {
    auto* app = QCoreApplication::instance();
    // Found by name: the keeper has no meta-object of its own, so a search by
    // type would take any child of the application for it.
    const QString name = QStringLiteral("OnScreenKeeper");
    if (!app || app->findChild<QObject*>(name, Qt::FindDirectChildrenOnly)) return;
    auto* keeper = new OnScreenKeeper(app);
    keeper->setObjectName(name);
    app->installEventFilter(keeper);
}

}  // namespace winadmin

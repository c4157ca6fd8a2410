#include "common/Pages.h"

#include <QShortcut>
#include <QStackedWidget>
#include <QTabWidget>
#include <vector>

namespace winadmin {

bool ShowPageOf(QWidget* control) {
    if (!control) return false;
    // Outermost first: an inner tab control's page shows only once the outer
    // page that holds it is in front.
    std::vector<std::pair<QTabWidget*, QWidget*>> pages;
    for (QWidget* child = control; child && !child->isWindow(); child = child->parentWidget()) {
        QWidget* parent = child->parentWidget();
        auto* stack = qobject_cast<QStackedWidget*>(parent);
        if (!stack) continue;
        if (auto* tabs = qobject_cast<QTabWidget*>(stack->parentWidget()))
            pages.emplace_back(tabs, child);
    }
    for (auto page = pages.rbegin(); page != pages.rend(); ++page)
        page->first->setCurrentWidget(page->second);
    return control->isVisible();
}

void InstallPageKeys(QTabWidget* tabs) {
    QWidget* window = tabs->window();
    const auto turn = [tabs](int step) {
        const int count = tabs->count();
        for (int i = 1; i < count; ++i) {
            const int page = (tabs->currentIndex() + step * i + count) % count;
            if (tabs->isTabEnabled(page)) {
                tabs->setCurrentIndex(page);
                return;
            }
        }
    };
    const QKeySequence forward(Qt::CTRL | Qt::Key_Tab);
    // Shift turns the tab key into a back tab on some platforms, not on others.
    const QKeySequence backward[] = {QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Tab),
                                     QKeySequence(Qt::CTRL | Qt::SHIFT | Qt::Key_Backtab)};
    auto* next = new QShortcut(forward, window);
    QObject::connect(next, &QShortcut::activated, tabs, [turn] { turn(1); });
    for (const QKeySequence& keys : backward) {
        auto* previous = new QShortcut(keys, window);
        QObject::connect(previous, &QShortcut::activated, tabs, [turn] { turn(-1); });
    }
}

}  // namespace winadmin

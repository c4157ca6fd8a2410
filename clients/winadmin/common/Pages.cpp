#include "common/Pages.h"

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

}  // namespace winadmin

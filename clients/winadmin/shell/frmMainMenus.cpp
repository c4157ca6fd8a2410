// The pop-up menus of the explorer. Their New, Properties, Delete, Copy, Cut
// and Paste entries forward to the main menu's commands, so each command has
// one handler and one enabled state to keep right.

#include <QAction>
#include <QMenu>

#include "shell/HelpViewer.h"
#include "shell/frmMain.h"
#include "ui_frmMain.h"

namespace winadmin {

namespace {

struct EntryDef {
    const char* name;
    const char* captionKey;
};

struct PopupDef {
    const char* name;
    std::initializer_list<EntryDef> entries;
};

// The list's menus by what is selected, then the tree's least-cost-routing
// menu. Entry names are the control names the commands are known by.
const PopupDef kPopups[] = {
    {"mnuPopup1", {{"mnuPopup1New", "New"}}},
    {"mnuPopup2", {{"mnuPopup2Properties", "Properties"}}},
    {"mnuPopup3",
     {{"mnuPopup3Copy", "Copy"},
      {"mnuPopup3Cut", "Cut"},
      {"mnuPopup3Paste", "Paste"},
      {"mnuPopup3Delete", "Delete"},
      {"mnuPopup3New", "New"},
      {"mnuPopup3Properties", "Properties"}}},
    {"mnuPopupServer",
     {{"mnuPopupServerCopy", "Copy"},
      {"mnuPopupServerCut", "Cut"},
      {"mnuPopupServerPaste", "Paste"},
      {"mnuPopupServerDelete", "Delete"},
      {"mnuPopupServerNew", "New"},
      {"mnuPopupServerProperties", "Properties"},
      {"mnuPopupServerStart", "&Start"},
      {"mnuPopupServerStop", "S&top"}}},
    {"mnuPopupDevice",
     {{"mnuPopupDeviceCopy", "Copy"},
      {"mnuPopupDeviceCut", "Cut"},
      {"mnuPopupDevicePaste", "Paste"},
      {"mnuPopupDeviceDelete", "Delete"},
      {"mnuPopupDeviceNew", "New"},
      {"mnuPopupDeviceProperties", "Properties"},
      {"mnuPopupDeviceStart", "&Start"},
      {"mnuPopupDeviceStop", "S&top"},
      {"mnuPopupDeviceTerminate", "&Terminate"}}},
    {"mnuPopupProcess",
     {{"mnuPopupProcessProperties", "Properties"},
      {"mnuPopupProcessStart", "&Start"},
      {"mnuPopupProcessStop", "S&top"}}},
    {"mnuRatePopup",
     {{"mnuRateNew", "New"},
      {"mnuRateProperties", "Properties"},
      {"mnuRateDel", "Delete"},
      {"mnuRateHelp", "Help"}}},
    {"mnuDestsPopup",
     {{"mnuDestsNew", "New"},
      {"mnuDestsProperties", "Properties"},
      {"mnuDestsDelete", "Delete"},
      {"mnuDestsHelp", "Help"}}},
    {"mnuZonePopup",
     {{"mnuZoneNew", "New"},
      {"mnuZoneProperties", "Properties"},
      {"mnuZoneDelete", "Delete"},
      {"mnuZoneHelp", "Help"}}},
    {"mnuPopupLCR", {{"mnuPopupLCRReload", "&Reload"}, {"mnuPopupLCRNew", "New"}}},
};

bool EndsWith(const QString& name, const char* suffix) {
    return name.endsWith(QLatin1String(suffix));
}

}  // namespace

void frmMain::BuildPopupMenus() {
    // Built before the form's labels are applied: the captions are keys,
    // translated with the rest of the form.
    for (const PopupDef& popup : kPopups) {
        auto* menu = new QMenu(this);
        menu->setObjectName(QLatin1String(popup.name));
        for (const EntryDef& entry : popup.entries) {
            QAction* action = menu->addAction(QLatin1String(entry.captionKey));
            const QString name = QLatin1String(entry.name);
            action->setObjectName(name);
            if (EndsWith(name, "Help")) {
                connect(action, &QAction::triggered, this, [this] { ShowHelpContents(this); });
                continue;
            }
            // Start, stop, terminate and reload get their handlers with the
            // commands that decide when they apply; until then they are off.
            action->setEnabled(false);
            QAction* target = nullptr;
            if (EndsWith(name, "New"))
                target = ui->mnuFileNew;
            else if (EndsWith(name, "Properties"))
                target = ui->mnuFileProperties;
            else if (EndsWith(name, "Delete") || EndsWith(name, "Del"))
                target = ui->mnuFileDelete;
            else if (EndsWith(name, "Copy"))
                target = ui->mnuEditCopy;
            else if (EndsWith(name, "Cut"))
                target = ui->mnuEditCut;
            else if (EndsWith(name, "Paste"))
                target = ui->mnuEditPaste;
            if (target) connect(action, &QAction::triggered, target, &QAction::trigger);
        }
    }
}

QMenu* frmMain::PopupMenu(const QString& name) const {
    return findChild<QMenu*>(name, Qt::FindDirectChildrenOnly);
}

QAction* frmMain::MenuEntry(const QString& name) const {
    return findChild<QAction*>(name);
}

}  // namespace winadmin

// The list's pop-up menu by what is selected, and the start, stop and
// terminate commands of servers, processes and devices.

#include <QAction>
#include <QListView>
#include <QMenu>
#include <QStatusBar>
#include <QTreeView>

#include "common/Labels.h"
#include "common/Prompter.h"
#include "lists/ExplorerListView.h"
#include "lists/Kinds.h"
#include "session/CallSession.h"
#include "session/ServerSession.h"
#include "shell/frmMain.h"

namespace winadmin {

namespace {

constexpr int kStart = 1;
constexpr int kStop = 2;
constexpr int kTerminate = 3;
constexpr int kStatusMessageMs = 10000;

// Starting asks nothing and leaves the explorer as it is: nothing is lost by
// a start, and what it brings up shows once the server has brought it up.
// Stopping and terminating cut off work in progress, so they ask first and
// show the new state at once. The asymmetry is deliberate.
struct StartStopCommand {
    const char* entry;
    int action;
    const char* question;  // the label key of the Yes/No question; none for a start
};

const StartStopCommand kCommands[] = {
    {"mnuPopupServerStart", kStart, nullptr},
    {"mnuPopupServerStop", kStop, "WANT_STOP_SERVER"},
    {"mnuPopupProcessStart", kStart, nullptr},
    {"mnuPopupProcessStop", kStop, "WANT_STOP_PROCESS"},
    {"mnuPopupDeviceStart", kStart, nullptr},
    {"mnuPopupDeviceStop", kStop, "WANT_STOP_DEVICE"},
    {"mnuPopupDeviceTerminate", kTerminate, "WANT_TERMINATE_DEVICE"},
};

bool Is(const QString& kind, const char* word) {
    return kind == QLatin1String(word);
}

// Only Yes goes on. The question carries no icon and the application's title.
bool Confirmed(const char* questionKey) {
    Prompt question;
    question.text = GetLabel(QLatin1String(questionKey));
    question.buttons = PromptButtons::YesNo;
    return ThePrompter().Show(question) == Answer::Yes;
}

// A process row's text is its zero-based slot number; the slot is what the
// session's process calls take. -1 when the text is no slot.
int SlotOf(const frmMain::Selection& selection) {
    bool ok = false;
    const int slot = selection.text.trimmed().toInt(&ok);
    return ok && slot >= 0 ? slot : -1;
}

// The server's collection holds its slots in order, so the process at
// position slot + 1 (counted from one) is the one with that slot number. It is
// found by the number, so that a gap in the slots cannot pick a neighbour.
const ProcessRecord* ProcessInSlot(const std::vector<ProcessRecord>& processes, int slot) {
    for (const ProcessRecord& process : processes)
        if (process.slot() == slot) return &process;
    return nullptr;
}

// A device row names its device; a device node in the tree names it in its
// scope.
QString DeviceOf(const frmMain::Selection& selection) {
    if (Is(selection.control, "TreeView") && !selection.scope.object.isEmpty())
        return selection.scope.object;
    return selection.text;
}

QString ServerOf(const frmMain::Selection& selection) {
    return Is(selection.control, "TreeView") ? selection.key : selection.text;
}

void RunStartStop(frmMain& main, const StartStopCommand& command) {
    if (main.SelectedObject().IsEmpty()) {
        ThePrompter().Beep();
        return;
    }
    if (command.question && !Confirmed(command.question)) return;
    const frmMain::Selection selection = main.SelectedObject();
    // A failed call was reported; the tree and list keep their state.
    if (!main.StartStopObject(command.action)) return;
    // The server has taken the request; what it brings about shows in the
    // lists once it has happened. Until then the status bar says what was
    // asked, so a start (which changes nothing on screen) is not left mute.
    const char* key = command.action == kStart  ? "StatusStartSent"
                      : command.action == kStop ? "StatusStopSent"
                                                : "StatusTerminateSent";
    QString object = Is(selection.kind, "Server")   ? ServerOf(selection)
                     : Is(selection.kind, "Device") ? DeviceOf(selection)
                                                    : selection.text.trimmed();
    if (!Is(selection.kind, "Server")) object += QLatin1Char('@') + selection.Server();
    main.statusBar()->showMessage(GetLabel(QLatin1String(key)).arg(object), kStatusMessageMs);
    if (command.question) main.RefreshExplorer();
}

}  // namespace

void frmMain::ConnectStartStop() {
    for (QAbstractItemView* view : {static_cast<QAbstractItemView*>(List()->DetailsView()),
                                    static_cast<QAbstractItemView*>(List()->IconView())}) {
        view->setContextMenuPolicy(Qt::CustomContextMenu);
        connect(view, &QWidget::customContextMenuRequested, this, &frmMain::ShowListMenu);
    }
    for (const StartStopCommand& command : kCommands) {
        QAction* entry = MenuEntry(QLatin1String(command.entry));
        if (!entry) continue;
        // Servers and devices keep both entries enabled whatever their
        // state; a process's pair is set each time its menu opens.
        entry->setEnabled(true);
        connect(entry, &QAction::triggered, this,
                [this, &command] { RunStartStop(*this, command); });
    }
}

void frmMain::ShowListMenu(const QPoint& position) {
    // The right button was pressed in the list: the commands act on it now.
    activeControl_ = QStringLiteral("ListView");
    UpdateObjectCommands();
    const Selection selection = SelectedObject();
    // Nothing selected: the menu of the list itself; a row of a kind without
    // a menu of its own: the common one.
    QString menuName = QStringLiteral("mnuPopup1");
    if (!selection.IsEmpty()) {
        const KindListMenu& choice = TraitsOfKind(selection.kind).listMenu;
        menuName = choice.menu ? QLatin1String(choice.menu) : QLatin1String("mnuPopup3");
        if (choice.first)
            UpdateStartStopItems(MenuEntry(QLatin1String(choice.first)),
                                 MenuEntry(QLatin1String(choice.second)));
    }
    QMenu* menu = PopupMenu(menuName);
    if (!menu) return;
    menu->popup(List()->CurrentView()->viewport()->mapToGlobal(position));
}

void frmMain::UpdateStartStopItems(QAction* start, QAction* stop) {
    const Selection selection = SelectedObject();
    if (selection.IsEmpty()) {
        ThePrompter().Beep();
        return;
    }
    // Servers and devices can be asked to start or stop whatever the state
    // they were last seen in; routing objects have no such entries.
    switch (TraitsOfKind(selection.kind).startStop) {
        case StartStopEntries::FollowRunState:
            break;
        case StartStopEntries::AlwaysEnabled:
        case StartStopEntries::Untouched:
            return;
        case StartStopEntries::None:
            ThePrompter().Beep();
            return;
    }
    ServerSession* session = TheSession();
    const int slot = SlotOf(selection);
    if (!session || slot < 0 || !start || !stop) return;
    std::vector<ProcessRecord> processes;
    if (!CallSession([&] { processes = session->Processes(selection.Server()); })) return;
    const ProcessRecord* process = ProcessInSlot(processes, slot);
    if (!process) return;
    // Running is the exit status -1 ("ProcessRun"): only a running process
    // can be stopped, and only one that does not run can be started.
    const bool running = process->exit_status() == -1;
    stop->setEnabled(running);
    start->setEnabled(!running);
}

bool frmMain::StartStopObject(int action) {
    const Selection selection = SelectedObject();
    ServerSession* session = TheSession();
    if (selection.IsEmpty() || !session) {
        ThePrompter().Beep();
        return false;
    }
    const QString& kind = selection.kind;
    const QString server = selection.Server();
    if (Is(kind, "Server") && (action == kStart || action == kStop)) {
        const QString name = ServerOf(selection);
        return CallSession([&] {
            if (action == kStart)
                session->StartServer(name);
            else
                session->StopServer(name);
        });
    }
    if (Is(kind, "Process") && (action == kStart || action == kStop) && SlotOf(selection) >= 0) {
        const int slot = SlotOf(selection);
        return CallSession([&] {
            if (action == kStart)
                session->StartProcess(server, slot);
            else
                session->StopProcess(server, slot);
        });
    }
    if (Is(kind, "Device") && action >= kStart && action <= kTerminate) {
        const QString device = DeviceOf(selection);
        return CallSession([&] {
            if (action == kStart)
                session->StartDevice(server, device);
            else if (action == kStop)
                session->StopDevice(server, device);
            else
                session->TerminateDevice(server, device);
        });
    }
    ThePrompter().Beep();
    return false;
}

}  // namespace winadmin

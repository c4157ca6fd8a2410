#pragma once
// What the process and event viewers have in common: a window of its own that
// lists what runs on one server and refreshes itself. The administrator picks
// the server (cboServer), refreshes by hand (cmdUpdate) and sets the refresh
// period in whole seconds (edtUpdateSpeed with its up-down control); timLoad
// refreshes on that period, 0 meaning by hand only. The period is kept per
// viewer under its list view's settings section.
//
// A refresh is one call on the session. It never nests: a tick that comes
// while any viewer is filling (a modal error box runs an event loop) does
// nothing, and the timer is off while the fill runs, so a server that stops
// answering costs one error box per period, never a pile of them. A viewer
// that can tell what changed since its last fill brings its rows up to date
// in place (UpdateRows); F5 fills the list whole.

#include <QPointer>
#include <QString>
#include <QWidget>
#include <vector>

#include "lists/ListModel.h"

class QComboBox;
class QLineEdit;
class QPushButton;
class QTimer;
class QTreeView;

namespace winadmin {

class ServerSession;
class UpDown;

class MonitorWindow : public QWidget {
    Q_OBJECT

public:
    ~MonitorWindow() override;

    // Update periods, seconds.
    static constexpr int kMaxUpdateSpeed = 60;
    // Often enough to follow a process being started or stopped, seldom
    // enough that a viewer left open is no load on the server.
    static constexpr int kDefaultUpdateSpeed = 5;

    // Lists the servers, selects the named one (an unknown name is reported
    // with "ServerNotExist" and leaves none selected), fills the list and
    // starts the timer. Opening a shown viewer again switches its server.
    void Open(const QString& hostName);

    // timLoad's tick, also run at once by cmdUpdate, by a change of server and
    // by a new non-zero period: fills the list again, then restarts the timer
    // with the period (0 leaves it off). Does nothing while a fill runs.
    void Tick();
    // A tick that fetches every row again rather than what changed (F5).
    void TickWhole();

    QString SelectedServer() const;
    // The period edtUpdateSpeed holds, 0 when it holds no usable number.
    int UpdatePeriod() const;
    bool IsFilling() const { return busy_; }
    QTimer* LoadTimer() const { return timLoad_; }
    ListModel* Rows() const { return model_; }

protected:
    // The shared controls of the derived form, made by its setupUi.
    struct Controls {
        QComboBox* server;
        QPushButton* update;
        QLineEdit* updateSpeed;
        UpDown* updateSpeedUpDown;
        QTreeView* list;
        const char* helpTopic;  // the guide's section that F1 shows
    };

    // section: the settings section of the viewer's list ("ProcessView"),
    // which holds its "Update Speed"; listKind: the explorer kind whose
    // columns and cells the viewer shows ("Processes").
    MonitorWindow(const QString& section, const QString& listKind, QWidget* parent);

    // Wires the controls and reads "Update Speed". Call once, after setupUi
    // and the form's labels.
    void AttachControls(const Controls& controls);

    // The rows for the server, fetched in one call. Throws SessionError.
    virtual std::vector<ListRow> FetchRows(ServerSession& session, const QString& server) = 0;
    // Brings the rows the list holds (Rows()) up to date where they stand,
    // in one call, when the viewer can tell what changed since it fetched
    // them; answers false when only FetchRows will do (having called
    // nothing, or having found that the rows held are of something gone).
    // Throws SessionError, after which the list is emptied.
    virtual bool UpdateRows(ServerSession& session, const QString& server);
    // What names a row across refreshes, so the selected row stays selected
    // while the list changes under it.
    virtual QString RowIdentity(const ListRow& row) const = 0;
    // Writes the viewer's settings; derived viewers add theirs. Throws
    // SettingsError when the store cannot be written.
    virtual void SaveSettings();

    QString Section() const { return section_; }
    QString ReadSetting(const QString& name, const QString& defaultValue) const;
    void WriteSetting(const QString& name, const QString& value) const;
    // Whether Open has run: before it, control changes do not refresh.
    bool IsOpen() const { return open_; }

    void closeEvent(QCloseEvent* event) override;

private:
    void UpdateClicked();
    void UpdateSpeedChanged();
    void ServerChanged();
    void Fill();
    void SortByHeader(int column);

    QString section_;
    QString listKind_;
    Controls controls_{};
    ListModel* model_;
    QTimer* timLoad_;
    bool busy_ = false;
    bool fillWhole_ = false;
    bool open_ = false;
    bool closed_ = false;
};

// Shows the one viewer of its kind for the server named by "HostName" in the
// form-parameter list, making the window on first use and switching it to
// that server later. Nothing is saved by a viewer, so the answer left for the
// explorer asks for no refresh.
void ShowViewerFor(MonitorWindow* viewer);
template <class Viewer>
void ShowViewer(QPointer<Viewer>& viewer, QWidget* parent) {
    if (!viewer) viewer = new Viewer(parent);
    ShowViewerFor(viewer);
}

}  // namespace winadmin

#pragma once
// The event viewer: the newest events of one server's log from a minimum
// severity up, at most a set number of them, refreshed on a timer
// (MonitorWindow). It is opened from the explorer for a server's "Events"
// node or an event row.
//
// The filter and the maximum travel with the request: the server leaves out
// what the filter hides and stops at the maximum, so however long the log
// has grown, a refresh moves and lists only what the window shows. The log
// only grows, so while the server, the filter and the maximum stay as they
// were, a refresh asks only for the events newer than the newest it holds
// and puts them in front, dropping the oldest rows beyond the maximum: the
// list shows what fetching it whole would show.

#include <cstdint>
#include <memory>
#include <optional>

#include "monitor/MonitorWindow.h"
#include "session/Records.h"

namespace Ui {
class frmEvents;
}

namespace winadmin {

class frmEvents : public MonitorWindow {
    Q_OBJECT

public:
    // The most events listed (edtMaxEvents, kept as "Max Events" under
    // "EventView"). A thousand covers hours of a busy server's log and
    // refreshes every second without weighing on the console; more can be
    // asked for, up to the explorer's event list cap.
    static constexpr int kDefaultMaxEvents = 1000;
    static constexpr int kMinMaxEvents = 1;

    explicit frmEvents(QWidget* parent = nullptr);
    ~frmEvents() override;

    // The severity code of the selected cboSeverity entry (0 to 5).
    int MinimumSeverity() const;
    // What edtMaxEvents holds, held to its range.
    int MaxEvents() const;

protected:
    std::vector<ListRow> FetchRows(ServerSession& session, const QString& server) override;
    bool UpdateRows(ServerSession& session, const QString& server) override;
    QString RowIdentity(const ListRow& row) const override;
    void SaveSettings() override;

private:
    // What the rows were fetched with; a refresh with another filter
    // fetches them whole.
    struct Filter {
        QString server;
        int minSeverity = 0;
        int maxEvents = 0;
        bool operator==(const Filter&) const = default;
    };
    Filter CurrentFilter(const QString& server) const;
    // The rows of the events answered, held to the maximum; newestId_ moves
    // to the newest of them.
    std::vector<ListRow> RowsOf(std::vector<EventRecord>&& events, const Filter& filter);
    void MaxEventsEdited();

    std::unique_ptr<Ui::frmEvents> ui;
    // The maximum the list was last filled with, so that leaving the field
    // unchanged does not refresh.
    int appliedMaxEvents_ = kDefaultMaxEvents;
    // The filter the list holds the newest events of, up to newestId_; none
    // while the list is not known to be current (before the first fill,
    // after a failed one).
    std::optional<Filter> held_;
    int64_t newestId_ = 0;
    // The oldest id of the log the held rows are of; a server made again
    // starts another log.
    int64_t logStart_ = 0;
};

// Shows the event viewer for the server named by the "HostName" form
// parameter, non-modal. There is one: opening it again switches its server
// and brings it to the front.
void OpenEventViewer(QWidget* parent);

}  // namespace winadmin

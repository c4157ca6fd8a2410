#include "monitor/frmEvents.h"

#include <QComboBox>
#include <QLineEdit>
#include <QPointer>
#include <QRegularExpressionValidator>
#include <algorithm>

#include "common/CodeTables.h"
#include "common/Labels.h"
#include "lists/ListFill.h"
#include "lists/ListFillKinds.h"
#include "lists/ViewSettings.h"
#include "session/ServerSession.h"
#include "ui_frmEvents.h"

namespace winadmin {

namespace {

const QString kMaxEventsSetting = QStringLiteral("Max Events");

// A typed or stored maximum held to its range; no number gives fallback.
int MaxEventsOf(const QString& text, int fallback) {
    bool ok = false;
    const int value = text.trimmed().toInt(&ok);
    return ok ? std::clamp(value, frmEvents::kMinMaxEvents, kEventListCap) : fallback;
}

}  // namespace

frmEvents::frmEvents(QWidget* parent)
    : MonitorWindow(QStringLiteral("EventView"), QStringLiteral("Events"), parent),
      ui(std::make_unique<Ui::frmEvents>()) {
    ui->setupUi(this);
    ApplyFormLabels(this);

    const QStringList severities = SeverityKeys();
    for (int code = 0; code < severities.size(); ++code)
        ui->cboSeverity->addItem(GetLabel(severities.at(code)), code);
    // Shared with the explorer's event list; a stored code that is none of
    // the six shows everything.
    ui->cboSeverity->setCurrentIndex(std::max(0, ui->cboSeverity->findData(StoredSeverity())));

    ui->edtMaxEvents->setValidator(new QRegularExpressionValidator(
        QRegularExpression(QStringLiteral("[0-9]{0,5}")), ui->edtMaxEvents));
    appliedMaxEvents_ = MaxEventsOf(
        ReadSetting(kMaxEventsSetting, QString::number(kDefaultMaxEvents)), kDefaultMaxEvents);
    ui->edtMaxEvents->setText(QString::number(appliedMaxEvents_));

    AttachControls({ui->cboServer, ui->cmdUpdate, ui->edtUpdateSpeed, ui->updUpdateSpeed,
                    ui->lvEventView, "events"});
    // A new filter shows at once. It is not written back to "Severity": that
    // is the explorer's setting, changed in the options dialog, and a look at
    // the errors here should not hide the notes there.
    connect(ui->cboSeverity, &QComboBox::currentIndexChanged, this, [this] {
        if (IsOpen()) Tick();
    });
    connect(ui->edtMaxEvents, &QLineEdit::editingFinished, this, &frmEvents::MaxEventsEdited);
}

frmEvents::~frmEvents() = default;

int frmEvents::MinimumSeverity() const {
    return ui->cboSeverity->currentData().toInt();
}

int frmEvents::MaxEvents() const {
    return MaxEventsOf(ui->edtMaxEvents->text(), appliedMaxEvents_);
}

void frmEvents::MaxEventsEdited() {
    const int value = MaxEvents();
    // The field shows the number the list is filled with, an empty or
    // out-of-range entry corrected to it.
    ui->edtMaxEvents->setText(QString::number(value));
    if (value == appliedMaxEvents_) return;
    appliedMaxEvents_ = value;
    if (IsOpen()) Tick();
}

frmEvents::Filter frmEvents::CurrentFilter(const QString& server) const {
    return {server, MinimumSeverity(), MaxEvents()};
}

std::vector<ListRow> frmEvents::RowsOf(std::vector<EventRecord>&& events, const Filter& filter) {
    // Every answered event counts for what was seen, even one the severity
    // filter below leaves out.
    for (const EventRecord& event : events) newestId_ = std::max(newestId_, event.id());
    std::vector<ListRow> rows = EventRows(std::move(events), QString(), filter.minSeverity);
    // A server that answers more than was asked for still shows no more.
    if (rows.size() > size_t(filter.maxEvents)) rows.resize(size_t(filter.maxEvents));
    return rows;
}

std::vector<ListRow> frmEvents::FetchRows(ServerSession& session, const QString& server) {
    const Filter filter = CurrentFilter(server);
    held_.reset();
    newestId_ = 0;
    std::vector<ListRow> rows =
        RowsOf(session.Events(server, filter.minSeverity, filter.maxEvents, 0, &logStart_), filter);
    held_ = filter;
    return rows;
}

bool frmEvents::UpdateRows(ServerSession& session, const QString& server) {
    const Filter filter = CurrentFilter(server);
    if (held_ != filter) return false;
    // Until the answer is in, the list is not known to be current: a failed
    // call empties it, and the next refresh fetches it whole.
    held_.reset();
    int64_t logStart = 0;
    std::vector<EventRecord> events =
        session.Events(server, filter.minSeverity, filter.maxEvents, newestId_, &logStart);
    // The log began anew since (the server deleted and made again under its
    // name), or had its first event: what the list holds may be of a log
    // that is gone, and a whole fetch shows the one there is.
    if (logStart != logStart_) return false;
    Rows()->AddNewestRows(RowsOf(std::move(events), filter), size_t(filter.maxEvents));
    held_ = filter;
    return true;
}

QString frmEvents::RowIdentity(const ListRow& row) const {
    return QString::number(row.id);
}

void frmEvents::SaveSettings() {
    MonitorWindow::SaveSettings();
    WriteSetting(kMaxEventsSetting, QString::number(MaxEvents()));
}

void OpenEventViewer(QWidget* parent) {
    static QPointer<frmEvents> viewer;
    ShowViewer(viewer, parent);
}

}  // namespace winadmin

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

std::vector<ListRow> frmEvents::FetchRows(ServerSession& session, const QString& server) {
    const int minSeverity = MinimumSeverity();
    const int maxEvents = MaxEvents();
    std::vector<ListRow> rows =
        EventRows(session.Events(server, minSeverity, maxEvents), QString(), minSeverity);
    // A server that answers more than was asked for still shows no more.
    if (rows.size() > size_t(maxEvents)) rows.resize(size_t(maxEvents));
    return rows;
}

QString frmEvents::RowIdentity(const ListRow& row) const {
    // Time, originator and text: events carry no key in their cells, and
    // these together tell one from its neighbours.
    return row.cells.value(0) + QLatin1Char('\n') + row.cells.value(2) + QLatin1Char('\n') +
           row.cells.value(3);
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

#include "monitor/MonitorWindow.h"

#include <QCloseEvent>
#include <QComboBox>
#include <QHeaderView>
#include <QItemSelectionModel>
#include <QLayout>
#include <QLineEdit>
#include <QPointer>
#include <QPushButton>
#include <QRegularExpressionValidator>
#include <QScrollBar>
#include <QShortcut>
#include <QSignalBlocker>
#include <QTimer>
#include <QTreeView>
#include <algorithm>
#include <utility>

#include "common/DialogHelp.h"
#include "common/FormParameters.h"
#include "common/Labels.h"
#include "common/Prompter.h"
#include "common/Settings.h"
#include "common/UpDown.h"
#include "lists/ColumnWidths.h"
#include "lists/ListFill.h"
#include "lists/ViewSettings.h"
#include "session/CallSession.h"
#include "session/ServerSession.h"

namespace winadmin {

namespace {

// Viewers filling right now, across all of them. A fill that reports a
// failure waits in a modal box whose event loop runs the other viewers'
// timers; they keep still until the box is answered, so a server that has
// gone away shows one box at a time.
int fillingViewers = 0;

// The period as it may be shown: a stored or typed number held to 0..60;
// anything that is no number gives fallback.
int PeriodOf(const QString& text, int fallback) {
    bool ok = false;
    const int value = text.trimmed().toInt(&ok);
    return ok ? std::clamp(value, 0, MonitorWindow::kMaxUpdateSpeed) : fallback;
}

}  // namespace

MonitorWindow::MonitorWindow(const QString& section, const QString& listKind, QWidget* parent)
    : QWidget(parent, Qt::Window),
      section_(section),
      listKind_(listKind),
      model_(new ListModel(this)),
      timLoad_(new QTimer(this)) {
    setAttribute(Qt::WA_DeleteOnClose);
    timLoad_->setObjectName(QStringLiteral("timLoad"));
    connect(timLoad_, &QTimer::timeout, this, &MonitorWindow::Tick);
}

MonitorWindow::~MonitorWindow() = default;

void MonitorWindow::AttachControls(const Controls& controls) {
    controls_ = controls;
    InstallHelpKey(this, QString::fromLatin1(controls_.helpTopic));

    QTreeView* list = controls_.list;
    list->setModel(model_);
    list->setRootIsDecorated(false);
    list->setItemsExpandable(false);
    list->setUniformRowHeights(true);
    list->setAllColumnsShowFocus(true);
    list->setSelectionMode(QAbstractItemView::SingleSelection);
    list->setSelectionBehavior(QAbstractItemView::SelectRows);
    list->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list->setSortingEnabled(false);  // the model sorts on a header click
    list->header()->setStretchLastSection(true);
    list->header()->setSectionsClickable(true);
    connect(list->header(), &QHeaderView::sectionClicked, this, &MonitorWindow::SortByHeader);

    // The explorer's columns for the same kind, at the widths the
    // administrator left them there.
    ColumnWidths widths;
    widths.Load(GetProductKeyName());
    model_->SetColumns(BuildListColumns(listKind_, widths));
    for (size_t i = 0; i < model_->Columns().size(); ++i)
        list->header()->resizeSection(int(i), model_->Columns()[i].width);
    // The window opens wide enough for the columns (and no narrower than its
    // form); one too wide for the screen is brought back onto it when shown.
    const QMargins margins = layout() ? layout()->contentsMargins() : QMargins();
    const int columnsWidth = list->header()->length() + 2 * list->frameWidth() +
                             list->verticalScrollBar()->sizeHint().width() + margins.left() +
                             margins.right();
    resize(qMax(width(), columnsWidth), height());

    // A minus may be typed so that a negative number can be corrected to 0
    // rather than refused key by key.
    QLineEdit* speed = controls_.updateSpeed;
    speed->setValidator(
        new QRegularExpressionValidator(QRegularExpression(QStringLiteral("-?[0-9]{0,3}")), speed));
    speed->setText(QString::number(
        PeriodOf(ReadSetting(QStringLiteral("Update Speed"), QString::number(kDefaultUpdateSpeed)),
                 kDefaultUpdateSpeed)));
    controls_.updateSpeedUpDown->Bind(speed, 0, kMaxUpdateSpeed);

    auto* refresh = new QShortcut(QKeySequence(Qt::Key_F5), this);
    refresh->setObjectName(QStringLiteral("scRefresh"));
    connect(refresh, &QShortcut::activated, this, &MonitorWindow::TickWhole);

    connect(speed, &QLineEdit::textChanged, this, &MonitorWindow::UpdateSpeedChanged);
    connect(controls_.update, &QPushButton::clicked, this, &MonitorWindow::UpdateClicked);
    connect(controls_.server, &QComboBox::currentIndexChanged, this, &MonitorWindow::ServerChanged);
}

QString MonitorWindow::ReadSetting(const QString& name, const QString& defaultValue) const {
    return GetSectionSetting(kVendor, GetProductKeyName(), section_, name, defaultValue).trimmed();
}

void MonitorWindow::WriteSetting(const QString& name, const QString& value) const {
    SaveSectionSetting(kVendor, GetProductKeyName(), section_, name, value);
}

void MonitorWindow::Open(const QString& hostName) {
    QComboBox* servers = controls_.server;
    {
        // Listing and selecting the server is part of opening, not a change
        // the administrator made: one fill follows, below.
        const QSignalBlocker quiet(servers);
        std::vector<ServerRecord> records;
        ServerSession* session = TheSession();
        // A failed listing was reported already; it says nothing of the name.
        const bool listed = session && CallSession([&] { records = session->Servers(); });
        servers->clear();
        for (const ServerRecord& server : records)
            servers->addItem(QString::fromStdString(server.name()));
        const int index = servers->findText(hostName, Qt::MatchExactly | Qt::MatchCaseSensitive);
        // An unknown server leaves none selected rather than showing another
        // one in its place: the administrator picks the next one knowingly.
        servers->setCurrentIndex(index);
        if (index < 0 && listed) {
            ThePrompter().Show({GetLabel(QStringLiteral("ServerNotExist")), windowTitle(),
                                PromptIcon::Exclamation, PromptButtons::OK, 1});
        }
    }
    open_ = true;
    // The server list was read again: whatever was shown is fetched anew.
    TickWhole();
}

QString MonitorWindow::SelectedServer() const {
    return controls_.server && controls_.server->currentIndex() >= 0
               ? controls_.server->currentText()
               : QString();
}

int MonitorWindow::UpdatePeriod() const {
    return controls_.updateSpeed ? PeriodOf(controls_.updateSpeed->text(), 0) : 0;
}

void MonitorWindow::Tick() {
    if (busy_ || fillingViewers > 0 || closed_) return;
    // The timer fires while another window's call waits for the server; a
    // second call would only queue behind it. The next period tries again.
    if (const ServerSession* session = TheSession(); session && session->CallInProgress()) return;
    QPointer<MonitorWindow> alive(this);
    busy_ = true;
    ++fillingViewers;
    // Off while the fill runs: a failure's box must not find the next tick
    // already waiting when it is answered.
    timLoad_->stop();
    Fill();
    --fillingViewers;
    if (!alive) return;
    busy_ = false;
    // A timer with interval 0 would fire without pause; period 0 means off.
    const int period = UpdatePeriod();
    if (period > 0 && !closed_) timLoad_->start(period * 1000);
}

void MonitorWindow::TickWhole() {
    fillWhole_ = true;
    Tick();
}

bool MonitorWindow::UpdateRows(ServerSession&, const QString&) {
    return false;
}

void MonitorWindow::Fill() {
    const QString server = SelectedServer();
    ServerSession* session = TheSession();
    // A tick skipped while another call waited keeps the request for a
    // whole fill for the next one.
    if (!std::exchange(fillWhole_, false) && session && !server.isEmpty()) {
        bool updated = false;
        if (!CallSession([&] { updated = UpdateRows(*session, server); })) {
            model_->Clear();
            return;
        }
        if (updated) return;
    }

    QTreeView* list = controls_.list;
    QItemSelectionModel* selection = list->selectionModel();
    QString kept;
    const QModelIndex current = selection->currentIndex();
    if (current.isValid() && selection->isRowSelected(current.row()))
        kept = RowIdentity(model_->Row(current.row()));
    const int scrolled = list->verticalScrollBar()->value();

    // A failed call leaves the list empty rather than showing stale rows as
    // if they were current.
    std::vector<ListRow> rows;
    if (session && !server.isEmpty()) CallSession([&] { rows = FetchRows(*session, server); });
    model_->SetRows(std::move(rows));

    list->verticalScrollBar()->setValue(scrolled);
    if (kept.isEmpty()) return;
    for (int row = 0; row < model_->rowCount(); ++row) {
        if (RowIdentity(model_->Row(row)) != kept) continue;
        selection->setCurrentIndex(model_->index(row, 0),
                                   QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
        break;
    }
}

void MonitorWindow::UpdateClicked() {
    // An empty period reads as 0: refreshing by hand from now on.
    if (controls_.updateSpeed->text().trimmed().isEmpty())
        controls_.updateSpeed->setText(QStringLiteral("0"));
    Tick();
}

void MonitorWindow::UpdateSpeedChanged() {
    bool ok = false;
    const int value = controls_.updateSpeed->text().trimmed().toInt(&ok);
    // An empty field or a lone minus is a number still being typed.
    if (!ok) return;
    // Correcting the text comes back here with the corrected value.
    if (value < 0) {
        controls_.updateSpeed->setText(QStringLiteral("0"));
        return;
    }
    if (value > kMaxUpdateSpeed) {
        controls_.updateSpeed->setText(QString::number(kMaxUpdateSpeed));
        return;
    }
    // 0 stops the refreshing at once instead of one period later.
    if (value == 0) {
        timLoad_->stop();
        return;
    }
    if (open_ && !busy_) Tick();
}

void MonitorWindow::ServerChanged() {
    if (open_) Tick();
}

void MonitorWindow::SortByHeader(int column) {
    const Qt::SortOrder order = model_->SortByHeaderClick(column);
    QHeaderView* header = controls_.list->header();
    header->setSortIndicatorShown(true);
    header->setSortIndicator(column, order);
}

void MonitorWindow::SaveSettings() {
    WriteSetting(QStringLiteral("Update Speed"), controls_.updateSpeed->text());
}

void MonitorWindow::closeEvent(QCloseEvent* event) {
    timLoad_->stop();
    closed_ = true;
    try {
        SaveSettings();
    } catch (const SettingsError&) {
        // The viewer closes all the same; its period is only what the next
        // opening starts with.
    }
    event->accept();
}

void ShowViewerFor(MonitorWindow* viewer) {
    const QString host = FormParameterValue(QStringLiteral("HostName"));
    AnswerRefresh(false);
    viewer->show();
    viewer->raise();
    viewer->activateWindow();
    viewer->Open(host);
}

}  // namespace winadmin

#include "shell/HelpViewer.h"

#include <QDir>
#include <QFile>
#include <QKeySequence>
#include <QListWidget>
#include <QPushButton>
#include <QRegularExpression>
#include <QShortcut>
#include <QTextBlock>
#include <QTextBrowser>
#include <QTextDocumentFragment>

#include "common/DialogHelp.h"
#include "common/Labels.h"
#include "common/Prompter.h"
#include "lists/KindIcons.h"
#include "ui_HelpViewer.h"

namespace winadmin {

namespace {

constexpr int SectionRole = Qt::UserRole + 1;

QString PlainText(const QString& html) {
    return QTextDocumentFragment::fromHtml(html).toPlainText().simplified();
}

// Cuts one page into its sections: the part before the first second-level
// heading is titled by the page's main heading, every other part by its own.
QList<HelpSection> PageSections(const QString& fileName, const QString& html) {
    static const QRegularExpression heading(QStringLiteral("<h2 id=\"([^\"]+)\">(.*?)</h2>"),
                                            QRegularExpression::DotMatchesEverythingOption);
    static const QRegularExpression mainHeading(QStringLiteral("<h1>(.*?)</h1>"),
                                                QRegularExpression::DotMatchesEverythingOption);
    const QUrl page(QStringLiteral("qrc:/help/") + fileName);
    QList<HelpSection> sections;

    const QRegularExpressionMatch title = mainHeading.match(html);
    const QString pageTitle = title.hasMatch() ? PlainText(title.captured(1)) : fileName;
    // Sections of the guide itself are known by their headings; those of
    // other pages (the index's "M to Z") need their page's name as well.
    const QString prefix =
        page == HelpViewer::ContentsPage ? QString() : pageTitle + QStringLiteral(": ");
    qsizetype start = title.hasMatch() ? title.capturedEnd() : 0;
    QString sectionTitle = pageTitle;
    QUrl sectionUrl = page;

    auto add = [&](qsizetype end) {
        const QString text = PlainText(html.mid(start, end - start));
        if (!text.isEmpty()) sections.append({sectionUrl, sectionTitle, text});
    };
    for (auto it = heading.globalMatch(html); it.hasNext();) {
        const QRegularExpressionMatch match = it.next();
        add(match.capturedStart());
        sectionUrl = page;
        sectionUrl.setFragment(match.captured(1));
        sectionTitle = prefix + PlainText(match.captured(2));
        start = match.capturedEnd();
    }
    const qsizetype bodyEnd = html.indexOf(QStringLiteral("</body>"));
    add(bodyEnd < 0 ? html.size() : bodyEnd);
    return sections;
}

// The position in the document of a named anchor; 0 when it has none.
int AnchorPosition(const QTextDocument* document, const QString& anchor) {
    if (anchor.isEmpty()) return 0;
    for (QTextBlock block = document->begin(); block.isValid(); block = block.next()) {
        for (auto it = block.begin(); !it.atEnd(); ++it) {
            if (it.fragment().charFormat().anchorNames().contains(anchor))
                return it.fragment().position();
        }
    }
    return 0;
}

}  // namespace

const QUrl HelpViewer::ContentsPage(QStringLiteral("qrc:/help/index.html"));
const QUrl HelpViewer::IndexPage(QStringLiteral("qrc:/help/search.html"));
QPointer<HelpViewer> HelpViewer::current_;

const QList<HelpSection>& HelpSections() {
    static const QList<HelpSection> sections = [] {
        QList<HelpSection> all;
        LoadConsoleResources();
        const QDir folder(QStringLiteral(":/help"));
        for (const QString& name :
             folder.entryList({QStringLiteral("*.html")}, QDir::Files, QDir::Name)) {
            QFile file(folder.filePath(name));
            if (!file.open(QIODevice::ReadOnly)) continue;
            all += PageSections(name, QString::fromUtf8(file.readAll()));
        }
        return all;
    }();
    return sections;
}

QList<HelpSection> FindHelpSections(const QString& words) {
    const QStringList wanted = words.simplified().split(u' ', Qt::SkipEmptyParts);
    QList<HelpSection> found;
    if (wanted.isEmpty()) return found;
    for (const HelpSection& section : HelpSections()) {
        const QString haystack = section.title + u' ' + section.text;
        const bool all = std::all_of(wanted.cbegin(), wanted.cend(), [&](const QString& word) {
            return haystack.contains(word, Qt::CaseInsensitive);
        });
        if (all) found.append(section);
    }
    return found;
}

HelpViewer* HelpViewer::Open(QWidget* parent) {
    if (!current_) current_ = new HelpViewer(parent);
    current_->show();
    current_->raise();
    current_->activateWindow();
    return current_;
}

HelpViewer::HelpViewer(QWidget* parent)
    : QWidget(parent, Qt::Window), ui(std::make_unique<Ui::HelpViewer>()) {
    ui->setupUi(this);
    setAttribute(Qt::WA_DeleteOnClose);
    ui->splHelp->setSizes({220, 640});
    // The result list takes room only once there is something to list.
    ui->lvResults->hide();

    connect(ui->cmdContents, &QPushButton::clicked, this, [this] { ShowPage(ContentsPage); });
    connect(ui->cmdIndex, &QPushButton::clicked, this, [this] { ShowPage(IndexPage); });
    connect(ui->edtFind, &QLineEdit::returnPressed, this, &HelpViewer::Search);
    connect(ui->cmdFindNext, &QPushButton::clicked, this, &HelpViewer::cmdFindNext_Click);
    connect(ui->lvResults, &QListWidget::itemActivated, this, &HelpViewer::lvResults_Activated);
    connect(ui->lvResults, &QListWidget::itemClicked, this, &HelpViewer::lvResults_Activated);
    connect(ui->cmdClose, &QPushButton::clicked, this, &QWidget::close);
    // A window of its own, not a dialog: Escape and the find key are wired
    // by hand.
    connect(new QShortcut(QKeySequence::Cancel, this), &QShortcut::activated, this,
            &QWidget::close);
    connect(new QShortcut(QKeySequence::Find, this), &QShortcut::activated, this,
            &HelpViewer::FocusSearch);
    connect(new QShortcut(QKeySequence::FindNext, this), &QShortcut::activated, this,
            &HelpViewer::cmdFindNext_Click);
    Form_Load();
}

HelpViewer::~HelpViewer() = default;

void HelpViewer::Form_Load() {
    ApplyFormLabels(this);
    ShowPage(ContentsPage);
}

void HelpViewer::ShowPage(const QUrl& url) {
    ui->brwPage->setSource(url);
}

QUrl HelpViewer::CurrentPage() const {
    return ui->brwPage->source();
}

void HelpViewer::FocusSearch() {
    ui->edtFind->setFocus();
    ui->edtFind->selectAll();
}

int HelpViewer::Search() {
    ui->lvResults->clear();
    ui->lvResults->show();
    const QList<HelpSection> found = FindHelpSections(ui->edtFind->text());
    for (const HelpSection& section : found) {
        auto* item = new QListWidgetItem(section.title, ui->lvResults);
        item->setData(SectionRole, section.url);
        item->setToolTip(section.url.fileName());
    }
    if (found.isEmpty()) {
        ThePrompter().Beep();
        auto* item = new QListWidgetItem(GetLabel(QStringLiteral("MsgNotFound")), ui->lvResults);
        item->setFlags(Qt::NoItemFlags);
        return 0;
    }
    ui->lvResults->setCurrentRow(0);
    lvResults_Activated(ui->lvResults->item(0));
    return int(found.size());
}

void HelpViewer::lvResults_Activated(QListWidgetItem* item) {
    if (!item) return;
    const QUrl url = item->data(SectionRole).toUrl();
    if (url.isEmpty()) return;
    ShowPage(url);
    const QStringList words = ui->edtFind->text().simplified().split(u' ', Qt::SkipEmptyParts);
    if (!words.isEmpty()) SelectInPage(url, words.first());
}

void HelpViewer::SelectInPage(const QUrl& url, const QString& text) {
    QTextDocument* document = ui->brwPage->document();
    const QTextCursor found = document->find(text, AnchorPosition(document, url.fragment()));
    if (!found.isNull()) ui->brwPage->setTextCursor(found);
}

void HelpViewer::cmdFindNext_Click() {
    const QString text = ui->edtFind->text().simplified();
    if (text.isEmpty()) {
        FocusSearch();
        return;
    }
    if (ui->brwPage->find(text)) return;
    // From the top once more, as a find that reached the end of a page
    // usually means "show me the first one again".
    ui->brwPage->moveCursor(QTextCursor::Start);
    if (!ui->brwPage->find(text)) ThePrompter().Beep();
}

void ShowHelpContents(QWidget* parent) {
    HelpViewer::Open(parent)->ShowPage(HelpViewer::ContentsPage);
}

void ShowHelpSearch(QWidget* parent) {
    HelpViewer* viewer = HelpViewer::Open(parent);
    viewer->ShowPage(HelpViewer::IndexPage);
    viewer->FocusSearch();
}

void ShowHelpTopic(QWidget* dialog, const QString& topic) {
    // A modal dialog blocks every window but its own children: a viewer
    // that belongs to the main window could be seen but not scrolled.
    if (HelpViewer* viewer = HelpViewer::Current();
        viewer && dialog && viewer->parent() != dialog) {
        viewer->setParent(dialog, viewer->windowFlags());
    }
    QUrl page = HelpViewer::ContentsPage;
    if (!topic.isEmpty()) page.setFragment(topic);
    HelpViewer::Open(dialog)->ShowPage(page);
}

void InstallDialogHelp() {
    SetHelpHandler(&ShowHelpTopic);
}

}  // namespace winadmin

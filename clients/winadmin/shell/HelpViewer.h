#pragma once
// The console's help: the user guide shipped in the program's resources,
// shown in one help window with a search over its sections.

#include <QList>
#include <QPointer>
#include <QString>
#include <QUrl>
#include <QWidget>
#include <memory>

class QListWidgetItem;

namespace Ui {
class HelpViewer;
}

namespace winadmin {

// Help Contents: the guide's first page.
void ShowHelpContents(QWidget* parent);
// Help Search: the index of topics, with the cursor in the search field.
void ShowHelpSearch(QWidget* parent);
// The guide's section about a dialog (an anchor of the first page), over
// that dialog; the whole first page for an empty topic.
void ShowHelpTopic(QWidget* dialog, const QString& topic);
// Makes F1 in every dialog that names a topic show it (DialogHelp.h).
void InstallDialogHelp();

// One section of a help page: the part below one heading.
struct HelpSection {
    QUrl url;  // the page, with the heading's anchor as fragment
    QString title;
    QString text;  // plain text, for searching
};

// Every section of every help page, pages in name order.
const QList<HelpSection>& HelpSections();
// The sections that contain every word of words, letters compared without
// regard to case. No words, no sections.
QList<HelpSection> FindHelpSections(const QString& words);

class HelpViewer : public QWidget {
    Q_OBJECT

public:
    static const QUrl ContentsPage;
    static const QUrl IndexPage;

    // The one help window, created on the first call (under parent) and
    // brought to the front on every call.
    static HelpViewer* Open(QWidget* parent);
    static HelpViewer* Current() { return current_; }

    ~HelpViewer() override;

    void ShowPage(const QUrl& url);
    QUrl CurrentPage() const;
    // Lists the sections found for the search field's words; answers how
    // many there are.
    int Search();
    void FocusSearch();

private:
    explicit HelpViewer(QWidget* parent);
    void Form_Load();
    void lvResults_Activated(QListWidgetItem* item);
    void cmdFindNext_Click();
    // Selects the first match of text at or after the anchor of url.
    void SelectInPage(const QUrl& url, const QString& text);

    static QPointer<HelpViewer> current_;
    std::unique_ptr<Ui::HelpViewer> ui;
};

}  // namespace winadmin

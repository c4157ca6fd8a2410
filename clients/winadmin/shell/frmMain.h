#pragma once
// The main explorer window: the tree of object kinds on the left, the list of
// objects on the right, a divider between them that the administrator drags,
// menus, toolbar and status bar. It remembers its bounds, the divider, the
// list mode and the column widths between runs (ViewSettings), and closing it
// ends the console.

#include <QMainWindow>
#include <QString>
#include <memory>

#include "shell/ColumnWidths.h"

class QActionGroup;
class QLabel;
class QMenu;
class QTreeWidget;
class QTreeWidgetItem;

namespace Ui {
class frmMain;
}

namespace winadmin {

class ExplorerListView;

class frmMain : public QMainWindow {
    Q_OBJECT

public:
    // Tree nodes carry their key and their kind word (the image name that
    // every command reads to know what is selected).
    enum NodeRole { NodeKeyRole = Qt::UserRole + 1, NodeKindRole };

    // The window's load: labels, tree, view settings. Needs the logged-in
    // session.
    explicit frmMain(QWidget* parent = nullptr);
    ~frmMain() override;

    void BuildTree();
    QTreeWidgetItem* AddNode(QTreeWidgetItem* parent, const QString& key, const QString& text,
                             const QString& kind);
    QTreeWidgetItem* FindNode(const QString& key) const;

    void LoadViewSettings();
    void SaveViewSettings();

    // Lays out tree, divider and list with the divider's left edge at the
    // given position (twips), kept at least SplitLimit from either side.
    void SizeControls(int splitterTwips);
    // The divider's left edge in twips, as laid out.
    int SplitterPosition() const { return splitterTwips_; }
    bool IsDraggingSplitter() const { return dragging_; }

    int ListViewMode() const;
    void SetListViewMode(int mode);

    ColumnWidths& Widths() { return widths_; }
    QTreeWidget* Tree() const;
    ExplorerListView* List() const;
    // Status bar panels from 1; panel 1 shows running counts while lists fill.
    QLabel* StatusPanel(int panel) const;

    // Pop-up menus and their entries by control name (nullptr when unknown).
    QMenu* PopupMenu(const QString& name) const;
    QAction* MenuEntry(const QString& name) const;

    // Nearest the divider may come to either side of the window.
    static constexpr int SplitLimit = 1500;
    // Where the drag bar is put relative to the divider when a drag starts.
    static constexpr int DragBarOffset = 20;
    // Room for the tree and the list at their least widths, and for a few rows.
    static constexpr int MinimumWidthTwips = 2 * SplitLimit + 1500;
    static constexpr int MinimumHeightTwips = 3000;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override;
    void changeEvent(QEvent* event) override;
    void showEvent(QShowEvent* event) override;
    void closeEvent(QCloseEvent* event) override;

private:
    void ApplyLabels();
    void ConnectMenus();
    void BuildPopupMenus();
    void BuildViewModeGroup();
    void BuildStatusBar();
    void ShowOptions();

    void ApplyBounds(int leftTwips, int topTwips, int widthTwips, int heightTwips);
    void KeepOnScreen();
    int ClampSplitter(int splitterTwips) const;
    void BeginSplitterDrag();
    void MoveSplitterDrag(int pointerXPixels);
    void EndSplitterDrag();
    void CloseOtherWindows();

    std::unique_ptr<Ui::frmMain> ui;
    QActionGroup* viewModes_ = nullptr;
    QList<QLabel*> statusPanels_;
    ColumnWidths widths_;
    int splitterTwips_ = 2500;
    int dragBarTwips_ = 0;
    bool dragging_ = false;
    // The stored list mode is applied when the window is first activated.
    bool activatedOnce_ = false;
    bool shownOnce_ = false;
};

}  // namespace winadmin

#pragma once
// The main explorer window: the tree of object kinds on the left, the list of
// objects on the right, a divider between them that the administrator drags,
// menus, toolbar and status bar. It remembers its bounds, the divider, the
// list mode and the column widths between runs (ViewSettings), and closing it
// ends the console.

#include <QMainWindow>
#include <QString>
#include <memory>
#include <optional>

#include "lists/ColumnWidths.h"
#include "shell/ExplorerTree.h"

class QActionGroup;
class QDropEvent;
class QLabel;
class QMenu;
class QTreeWidget;
class QTreeWidgetItem;

namespace Ui {
class frmMain;
}

namespace winadmin {

class ExplorerListView;
class ListModel;

class frmMain : public QMainWindow {
    Q_OBJECT

public:
    // Tree nodes carry their key and their kind word (the image name that
    // every command reads to know what is selected).
    enum NodeRole { NodeKeyRole = winadmin::NodeKeyRole, NodeKindRole = winadmin::NodeKindRole };

    // The window's load: labels, tree, view settings. Needs the logged-in
    // session.
    explicit frmMain(QWidget* parent = nullptr);
    ~frmMain() override;

    // Builds the tree anew from the session and makes the root current; the
    // list is left as it is (RefreshExplorer keeps both in step). A session
    // that cannot be read leaves the root and its fixed branches, or, when
    // keepOnFailure, the tree as it was. Answers whether the session was read.
    bool BuildTree(bool keepOnFailure = false);
    QTreeWidgetItem* AddNode(QTreeWidgetItem* parent, const QString& key, const QString& text,
                             const QString& kind);
    QTreeWidgetItem* FindNode(const QString& key) const;

    // Gives the list the column set of the node's kind and fills it with the
    // node's objects; the first row becomes current. A failed call is shown
    // and leaves the list empty.
    void ShowNode(QTreeWidgetItem* node);
    // Rebuilds tree and list from the session and keeps the view: expanded
    // nodes, the selected node, the selected row and the list's order. A
    // saved name selects the row of that name instead (an editor's object).
    // When the session cannot be read, the failure is shown once and tree
    // and list stay as they were.
    void RefreshExplorer(const QString& savedName = {});
    // The rows the list shows, in every mode.
    ListModel* ListRows() const { return listModel_; }

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

    // What the commands act on: the tree's current node or the list's
    // selected row, whichever of the two had the focus last ("TreeView" or
    // "ListView"). A list row counts only while it is selected.
    struct Selection {
        QString control;  // "TreeView", "ListView", or empty: nothing to act on
        QString kind;     // the node's image name or the row's icon key
        QString key;
        QString text;
        QString tag;  // the row's server
        // Zones, rates, destinations: the record the row or node showed.
        int64_t id = 0;
        int64_t version = 0;
        // The tree node the list shows (or the selected node itself): its
        // server and its object (zone, gateway, printer, device).
        NodeScope scope;
        QString nodeKey;
        int zoneIndex = 0;  // the routing zone the node belongs to
        bool IsEmpty() const { return control.isEmpty(); }
        // The server the object belongs to: the row's tag, else the node's.
        QString Server() const { return tag.isEmpty() ? scope.server : tag; }
    };
    Selection SelectedObject() const;
    QString ActiveControl() const { return activeControl_; }
    void SetActiveControl(const QString& control) { activeControl_ = control; }

    // The object commands (frmMainObjects.cpp): New for the selected tree
    // node, Properties and Delete for the selection.
    void NewObject();
    void OpenProperties();
    void DeleteSelection();

    // The clipboard of objects (frmMainClipboard.cpp): Copy and Cut take the
    // selected user, printer, device or gateway user; Paste copies or moves
    // it to the selected tree node, as a drop of list rows on a node does.
    struct ClipboardItem {
        QString kind;    // "User", "Printer", "Device", "GatewayUser"
        QString name;    // its name (a gateway user's mail address)
        QString source;  // its server (a gateway user's gateway)
    };
    void CopyObject(bool cut);
    void PasteObject();
    const std::optional<ClipboardItem>& Clipboard() const { return clipboard_; }
    bool ClipboardIsCut() const { return cut_; }
    // Copies (or, cut, moves) item to the object of the node; answers
    // whether the server carried out the request (a refusal has been shown
    // and changed nothing; a No to the question asked nothing).
    bool TransferObject(const ClipboardItem& item, const QTreeWidgetItem* target, bool cut);

    // The list's pop-up menu and the start, stop and terminate commands
    // (frmMainStartStop.cpp). Action codes: 1 start, 2 stop, 3 terminate.
    void ShowListMenu(const QPoint& position);
    void UpdateStartStopItems(QAction* start, QAction* stop);
    bool StartStopObject(int action);

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
    // The name screen readers announce for the list.
    void NameList(const QString& name);
    void ShowOptions();

    void ApplyBounds(int leftTwips, int topTwips, int widthTwips, int heightTwips);
    void KeepOnScreen();
    int ClampSplitter(int splitterTwips) const;
    void BeginSplitterDrag();
    void MoveSplitterDrag(int pointerXPixels);
    void EndSplitterDrag();
    void CloseOtherWindows();

    // The explorer's wiring: tree selection, list header, drag over the tree,
    // the tree's pop-up menu (frmMainExplorer.cpp).
    void ConnectExplorer();
    void ApplyColumnWidths();
    void KeepColumnWidth(int column, int oldPixels, int newPixels);
    void SortByHeader(int column);
    // Enter or a double click on a list row: a branch row opens its branch.
    void OpenListRow(const QModelIndex& index);
    void ShowSortIndicator();
    void SelectRow(int row);
    void ShowFillCount(int rows);
    bool FilterTreeDrag(QEvent* event);
    void ShowTreeMenu(const QPoint& position);
    void ReloadLcr();
    void ConnectObjectCommands();
    // Enables New, Properties and Delete for what is selected: a kind whose
    // window is not in the catalog is not offered.
    void UpdateObjectCommands();
    void ConnectStartStop();
    void ConnectClipboard();
    // Part of UpdateObjectCommands: Copy and Cut for a movable selection,
    // Paste where the clipboard's object fits.
    void UpdateClipboardCommands(const Selection& selection, const QString& nodeKind);
    // A drop of list rows on a tree node: a copy, or a move with Shift.
    void DropOnTree(QDropEvent* event);

    std::unique_ptr<Ui::frmMain> ui;
    QActionGroup* viewModes_ = nullptr;
    QList<QLabel*> statusPanels_;
    ColumnWidths widths_;
    ListModel* listModel_ = nullptr;
    // Set while the tree is rebuilt or a node made current by the program, so
    // that only the node finally chosen fills the list.
    bool treeQuiet_ = false;
    // Set while the list's columns are laid out by the program: only widths
    // the administrator drags are kept in the width table.
    bool layingOutColumns_ = false;
    int splitterTwips_ = 2500;
    int dragBarTwips_ = 0;
    bool dragging_ = false;
    // The stored list mode is applied when the window is first activated.
    bool activatedOnce_ = false;
    // Which of tree and list the commands act on (see Selection).
    QString activeControl_ = QStringLiteral("TreeView");
    bool shownOnce_ = false;
    std::optional<ClipboardItem> clipboard_;
    bool cut_ = false;
};

}  // namespace winadmin

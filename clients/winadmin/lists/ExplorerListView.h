#pragma once
// The explorer's list: one model shown in the four classic list modes. Details
// is a report view with column headers (a QTreeView); large icons, small icons
// and list are a QListView in its icon or list arrangement. Both views share
// the model and one selection model, so a mode switch keeps the selection and
// the current row, and commands read the selection without asking which view
// is showing.

#include <QStackedWidget>

class QAbstractItemModel;
class QAbstractItemView;
class QItemSelectionModel;
class QListView;
class QTreeView;

namespace winadmin {

class ExplorerListView : public QStackedWidget {
    Q_OBJECT

public:
    // The list modes with the numbers under which "ListView Mode" stores them.
    enum Mode { LargeIcons = 0, SmallIcons = 1, List = 2, Details = 3 };
    static bool IsMode(int mode) { return mode >= LargeIcons && mode <= Details; }

    explicit ExplorerListView(QWidget* parent = nullptr);

    // Does not take ownership. The model's first column is what the icon
    // and list modes show; its Qt::DecorationRole icon is drawn at the mode's
    // size.
    void SetModel(QAbstractItemModel* model);
    QAbstractItemModel* Model() const;
    // The one selection model of both views (nullptr without a model).
    QItemSelectionModel* SelectionModel() const;

    int GetMode() const { return mode_; }
    // A number outside the four modes is ignored.
    void SetMode(int mode);

    QTreeView* DetailsView() const { return details_; }
    QListView* IconView() const { return icons_; }
    QAbstractItemView* CurrentView() const;
    // Whether the keyboard focus is in the list, whichever mode shows it: the
    // commands that act on "the active control" need to know.
    bool HasListFocus() const;

signals:
    void ModeChanged(int mode);

private:
    QTreeView* details_;
    QListView* icons_;
    int mode_ = Details;
};

}  // namespace winadmin

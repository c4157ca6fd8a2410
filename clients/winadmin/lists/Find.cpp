#include "lists/Find.h"

#include <QAbstractItemView>
#include <QHash>
#include <QPointer>
#include <QStringList>

#include "common/AppContext.h"
#include "common/Labels.h"
#include "common/Prompter.h"

namespace winadmin {

namespace {

struct RegisteredList {
    QPointer<QObject> owner;
    FindListSource list;
};

QHash<QString, RegisteredList>& Registry() {
    static QHash<QString, RegisteredList> registry;
    return registry;
}

// A pattern whose only wildcard is "*", split once into the literal pieces
// between the stars, so that a cell costs a few substring searches and no
// allocation. Without match case the pieces are kept in upper case and each
// cell is upper-cased into one reused buffer.
class WildcardPattern {
public:
    WildcardPattern(const QString& pattern, bool ignoreCase) : ignoreCase_(ignoreCase) {
        const QString prepared = ignoreCase ? UpperCase(pattern) : pattern;
        pieces_ = prepared.split(QLatin1Char('*'));
        for (const QString& piece : std::as_const(pieces_)) leastLength_ += piece.size();
    }

    bool Matches(const QString& cell) {
        if (cell.size() < leastLength_) return false;
        if (!ignoreCase_) return MatchesPrepared(cell);
        upper_.resize(cell.size());
        QChar* out = upper_.data();
        for (const QChar c : cell) *out++ = c.toUpper();
        return MatchesPrepared(upper_);
    }

private:
    static QString UpperCase(const QString& text) {
        QString upper(text.size(), Qt::Uninitialized);
        for (qsizetype i = 0; i < text.size(); ++i) upper[i] = text[i].toUpper();
        return upper;
    }

    bool MatchesPrepared(QStringView cell) const {
        if (pieces_.size() == 1) return cell == QStringView(pieces_.front());
        // The first piece is anchored at the start, the last at the end; the
        // ones between may sit anywhere in order, and taking each at its
        // leftmost place leaves the most room for the rest.
        const QStringView first = pieces_.front();
        const QStringView last = pieces_.back();
        if (!cell.startsWith(first) || !cell.endsWith(last)) return false;
        const QStringView middle = cell.mid(first.size(), cell.size() - first.size() - last.size());
        qsizetype from = 0;
        for (qsizetype i = 1; i + 1 < pieces_.size(); ++i) {
            const QStringView piece = pieces_[i];
            if (piece.isEmpty()) continue;
            const qsizetype at = middle.indexOf(piece, from);
            if (at < 0) return false;
            from = at + piece.size();
        }
        return true;
    }

    bool ignoreCase_;
    QStringList pieces_;
    qsizetype leastLength_ = 0;
    QString upper_;
};

// The row after the selected one; with several selected, after the current
// one if it is among them, else after the topmost. 0 when none is selected.
int StartRow(const QItemSelectionModel& selection) {
    const QModelIndex current = selection.currentIndex();
    if (current.isValid() && selection.isSelected(current)) return current.row() + 1;
    int top = -1;
    for (const QItemSelectionRange& range : selection.selection())
        if (top < 0 || range.top() < top) top = range.top();
    return top + 1;
}

// The first row from `from` on that has a matching cell, -1 when none has.
int SearchRows(const QAbstractItemModel& model, int from, WildcardPattern& pattern,
               qsizetype wholeWordLength) {
    const int rows = model.rowCount();
    const int columns = model.columnCount();
    for (int row = from; row < rows; ++row) {
        for (int column = 0; column < columns; ++column) {
            const QVariant value = model.index(row, column).data(Qt::DisplayRole);
            // A string cell is read in place; only other types are converted.
            const QString text = value.typeId() == QMetaType::QString
                                     ? *static_cast<const QString*>(value.constData())
                                     : value.toString();
            if (wholeWordLength >= 0 && text.size() != wholeWordLength) continue;
            if (pattern.Matches(text)) return row;
        }
    }
    return -1;
}

void SelectRow(QAbstractItemView& list, int row) {
    const QModelIndex index = list.model()->index(row, 0);
    list.selectionModel()->setCurrentIndex(
        index, QItemSelectionModel::ClearAndSelect | QItemSelectionModel::Rows);
    list.scrollTo(index);
}

int Exclaim(const QString& key, PromptButtons buttons, const QString& title) {
    return ThePrompter().Show({GetLabel(key), title, PromptIcon::Exclamation, buttons, 1});
}

FindDialogPresenter& Presenter() {
    static FindDialogPresenter presenter = nullptr;
    return presenter;
}

}  // namespace

void RegisterFindList(const QString& callerCode, QObject* owner, FindListSource list) {
    Registry().insert(callerCode, {owner, std::move(list)});
}

void RegisterFindList(const QString& callerCode, QAbstractItemView* list) {
    RegisterFindList(callerCode, list, [list] { return list; });
}

QAbstractItemView* FindList(const QString& callerCode) {
    auto& registry = Registry();
    const auto entry = registry.find(callerCode);
    if (entry == registry.end()) return nullptr;
    if (!entry->owner) {
        registry.erase(entry);
        return nullptr;
    }
    return entry->list ? entry->list() : nullptr;
}

bool PressFindOnePart(const QString& text, bool wholeWord, bool ignoreCase, QAbstractItemView* list,
                      const QString& title) {
    const QString star = QStringLiteral("*");
    WildcardPattern pattern(wholeWord ? text : star + text + star, ignoreCase);
    const qsizetype wholeWordLength = wholeWord ? text.size() : -1;

    // The prompt runs an event loop, in which the list may go away.
    const QPointer<QAbstractItemView> guard(list);
    int from = list && list->selectionModel() ? StartRow(*list->selectionModel()) : 0;
    for (;;) {
        const QAbstractItemModel* model = guard ? guard->model() : nullptr;
        const int found = model ? SearchRows(*model, from, pattern, wholeWordLength) : -1;
        if (found >= 0) {
            SelectRow(*guard, found);
            return true;
        }
        if (from == 0) {
            Exclaim(QStringLiteral("MsgNotFound"), PromptButtons::OK, title);
            return false;
        }
        if (Exclaim(QStringLiteral("MsgFindAgain"), PromptButtons::YesNo, title) != Answer::Yes)
            return false;
        from = 0;
    }
}

bool PressFind(const QString& callerCode, const QString& text, FindOptions options,
               const QString& title) {
    const QString caption = title.isEmpty() ? ApplicationTitle() : title;
    if (text.isEmpty()) {
        Exclaim(QStringLiteral("MsgFindEmpty"), PromptButtons::OK, caption);
        return false;
    }
    QAbstractItemView* list = FindList(callerCode);
    if (!list) {
        // Only a window that forgot to register gets here.
        qWarning("Find: no list registered as %s", qPrintable(callerCode));
        ThePrompter().Beep();
        return false;
    }
    return PressFindOnePart(text, options.wholeWord, !options.matchCase, list, caption);
}

void ShowFindDialog(const QString& callerCode, QWidget* owner) {
    if (FindDialogPresenter presenter = Presenter()) {
        presenter(callerCode, owner);
        return;
    }
    qWarning("Find: no find dialog in this program");
    ThePrompter().Beep();
}

void SetFindDialogPresenter(FindDialogPresenter presenter) {
    Presenter() = presenter;
}

}  // namespace winadmin

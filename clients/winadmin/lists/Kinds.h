#pragma once
// The object kinds of the explorer. Every tree node and every list row carries
// its kind word as its icon key, and the commands decide from the word alone
// what they may do with the selection: whether New creates something under a
// node, whether Properties and Delete apply to a node or a row, how the object
// is named to its window, which pop-up menu a row gets. All of that is one
// table, so that a kind is described in one place and the commands cannot
// disagree about it.
//
// Words are compared exactly (case-sensitive), as the explorer compares them;
// a word the table does not hold answers a kind that offers nothing.

#include <QString>
#include <QStringList>
#include <cstdint>

namespace winadmin {

// What a kind is and which of the object commands it offers. A kind may be
// both a folder and a row: a server is a node of the tree and a row of the
// servers list.
enum KindFlag : uint16_t {
    // A node of the tree, whose list the explorer fills.
    kFolder = 1 << 0,
    // A list row that stands for one object.
    kRow = 1 << 1,
    // New creates an object under a node of this kind.
    kNewUnder = 1 << 2,
    // Properties opens the node's (the row's) window.
    kOpensFromTree = 1 << 3,
    kOpensFromList = 1 << 4,
    // Delete removes the node's (the row's) object.
    kDeletesFromTree = 1 << 5,
    kDeletesFromList = 1 << 6,
};

// How the object's window and the delete command name the object.
enum class KindAddress : uint8_t {
    ByName,         // its name (a server node: its key)
    ByIndex,        // its place in the routing list (zones)
    ByIndexInZone,  // its place in its zone, with the zone's place (rates, destinations)
    ByServer,       // the server it belongs to (the process and event viewers)
};

// What the start and stop entries of the row's pop-up menu do for the kind.
enum class StartStopEntries : uint8_t {
    None,            // the kind has none; asking to set them beeps
    Untouched,       // the menu's pair is no start/stop pair (routing objects)
    AlwaysEnabled,   // start and stop are offered whatever the object's state
    FollowRunState,  // start only when it does not run, stop only when it does
};

// The pop-up menu of the main window's list for a row of the kind, by the
// names of the menu and of the pair of its entries that follow the selection
// (none for a menu without such a pair).
struct KindListMenu {
    const char* menu = nullptr;
    const char* first = nullptr;
    const char* second = nullptr;
};

struct KindTraits {
    const char* word;
    const char* icon;  // resource path of the kind's picture
    uint16_t flags;
    KindAddress address = KindAddress::ByName;
    KindListMenu listMenu = {};  // no menu: the list's common one
    StartStopEntries startStop = StartStopEntries::None;

    bool Has(KindFlag flag) const { return (flags & flag) != 0; }
    bool IsIndexed() const {
        return address == KindAddress::ByIndex || address == KindAddress::ByIndexInZone;
    }
};

// The traits of a kind word; a word the table does not hold answers traits
// without flags, menu or icon.
const KindTraits& TraitsOfKind(const QString& word);

// Every kind word that has an icon, folder kinds and row kinds alike.
const QStringList& KnownKinds();

// Shorthands for the commands' questions.
inline bool CreatesUnder(const QString& kind) {
    return TraitsOfKind(kind).Has(kNewUnder);
}
inline bool OpensFrom(const QString& kind, bool fromTree) {
    return TraitsOfKind(kind).Has(fromTree ? kOpensFromTree : kOpensFromList);
}
inline bool DeletesFrom(const QString& kind, bool fromTree) {
    return TraitsOfKind(kind).Has(fromTree ? kDeletesFromTree : kDeletesFromList);
}

}  // namespace winadmin

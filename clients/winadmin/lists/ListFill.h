#pragma once
// The explorer's list for the node selected in the tree: the column set of the
// node's kind (translated headers, persisted widths, alignment) and one row
// per object of the collection that belongs to the node, every cell formatted
// as the administrator reads it.

#include <QString>
#include <functional>
#include <vector>

#include "lists/ColumnWidths.h"
#include "lists/ExplorerNodes.h"
#include "lists/ListModel.h"

namespace winadmin {

class ServerSession;

// Called with the number of rows made so far while the event list fills (the
// one list that takes a while to make), and once with the total at the end.
using FillProgress = std::function<void(int rowsSoFar)>;

// The most events an event list shows, newest first. The log of a busy server
// grows without end; the list is for a look at what happened lately (the
// event viewer pages through the rest), and ten thousand rows are what the
// administrator can still scroll. The server applies the cap, so the rest
// never travels.
constexpr int kEventListCap = 10000;

// The column set of a node kind; an unknown kind has none.
std::vector<ListColumn> BuildListColumns(const QString& kind, const ColumnWidths& widths);

// The rows of a node, fetched through the session (one call for the
// collection, one more for devices' type names). The scope names the node's
// server and object; for the server's branch nodes the server can also be
// read from the key, and for the rates and destinations of a zone the zone is
// looked up by the key's index when the scope does not name it. An unknown
// kind has no rows. Throws SessionError when a call fails.
ListRowSet FillListView(const QString& kind, const QString& key, ServerSession& session,
                        const NodeScope& scope = {}, const FillProgress& progress = {});

}  // namespace winadmin

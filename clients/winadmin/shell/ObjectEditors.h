#pragma once
// The windows that New and Properties open, by object kind. Each editor or
// viewer has one entry in the catalog (ObjectEditorCatalog.cpp) naming the
// kinds it serves (singular and plural), the name of its request pair and the
// routine that shows it; a kind without an entry is not offered.

#include <QString>
#include <QStringList>
#include <vector>

class QWidget;

namespace winadmin {

// Shows the window for the request in the form-parameter list. An editor runs
// modally and leaves its answer in the list; a viewer shows itself and
// returns at once.
using OpenWindow = void (*)(QWidget* parent);

struct ObjectWindow {
    QStringList kinds;
    // The name of the request pair that carries an existing object's key
    // ("HostName" for a server, "GroupName" for a group).
    QString keyName;
    OpenWindow open = nullptr;
};

// Every entry (ObjectEditorCatalog.cpp).
const std::vector<ObjectWindow>& ObjectWindowCatalog();

// nullptr when no window serves the kind (yet).
const ObjectWindow* FindObjectWindow(const QString& kind);

// What the explorer asks of a window.
struct ObjectRequest {
    QString kind;
    bool create = false;
    QString name;  // the object's key: name, address or index; unused for New
    // Context: the server the object belongs to, the gateway of a gateway
    // user, the zone of a rate or destination.
    QString hostName;
    QString gatewayAddress;
    QString zoneIndex;
};

// Fills the form-parameter list with the request (the key pair or ("New",
// ""), then the context pairs that are set), opens the kind's window and
// answers whether it reports a save (("Refresh", "-1")). A kind without a
// window does nothing and answers false.
bool OpenObjectEditor(QWidget* parent, const ObjectRequest& request);

// The key of the object a closed editor saved last; "" when it names none.
QString SavedObjectKey();

}  // namespace winadmin

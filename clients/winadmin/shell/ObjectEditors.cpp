#include "shell/ObjectEditors.h"

#include "common/FormParameters.h"

namespace winadmin {

const ObjectWindow* FindObjectWindow(const QString& kind) {
    for (const ObjectWindow& window : ObjectWindowCatalog())
        if (window.kinds.contains(kind)) return &window;
    return nullptr;
}

bool OpenObjectEditor(QWidget* parent, const ObjectRequest& request) {
    const ObjectWindow* window = FindObjectWindow(request.kind);
    if (!window || !window->open) return false;
    FormParameterList parameters;
    if (request.create)
        parameters.append({QStringLiteral("New"), QString()});
    else
        parameters.append({window->keyName, request.name});
    const QString hostName = QStringLiteral("HostName");
    if (!request.hostName.isEmpty() && parameters.front().name != hostName)
        parameters.append({hostName, request.hostName});
    if (!request.gatewayAddress.isEmpty())
        parameters.append({QStringLiteral("GatewayAddress"), request.gatewayAddress});
    if (!request.zoneIndex.isEmpty())
        parameters.append({QStringLiteral("ZoneIndex"), request.zoneIndex});
    SetFormParameters(std::move(parameters));
    window->open(parent);
    return AnsweredRefresh();
}

QString SavedObjectKey() {
    return FormParameterValue(QStringLiteral("SavedKey"));
}

}  // namespace winadmin

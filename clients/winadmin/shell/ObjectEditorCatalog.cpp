// The catalog of the windows that New and Properties open. A new editor or
// viewer adds its one line here.

#include "editors/frmGatewayUser.h"
#include "editors/frmGroupDetails.h"
#include "editors/frmServerDetails.h"
#include "shell/ObjectEditors.h"

namespace winadmin {

const std::vector<ObjectWindow>& ObjectWindowCatalog() {
    static const std::vector<ObjectWindow> catalog = {
        {{QStringLiteral("Server"), QStringLiteral("Servers")}, QStringLiteral("HostName"),
         &OpenServerEditor},
        {{QStringLiteral("Group"), QStringLiteral("Groups")}, QStringLiteral("GroupName"),
         &OpenGroupEditor},
        {{QStringLiteral("GatewayUser"), QStringLiteral("Gateway")}, QStringLiteral("GatewayUser"),
         &OpenGatewayUserEditor},
    };
    return catalog;
}

}  // namespace winadmin

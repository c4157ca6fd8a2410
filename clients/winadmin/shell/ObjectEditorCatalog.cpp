// The catalog of the windows that New and Properties open. A new editor or
// viewer adds its one line here.

#include "editors/frmAdministratorDetails.h"
#include "editors/frmDestination.h"
#include "editors/frmDeviceDetails.h"
#include "editors/frmGatewayUser.h"
#include "editors/frmGroupDetails.h"
#include "editors/frmNumberMappingsDetails.h"
#include "editors/frmPrinterDetails.h"
#include "editors/frmRateDetails.h"
#include "editors/frmRouteDetails.h"
#include "editors/frmServerDetails.h"
#include "editors/frmUserDetails.h"
#include "editors/frmZoneDetails.h"
#include "monitor/frmEvents.h"
#include "monitor/frmProcesses.h"
#include "shell/ObjectEditors.h"

namespace winadmin {

const std::vector<ObjectWindow>& ObjectWindowCatalog() {
    static const std::vector<ObjectWindow> catalog = {
        {{QStringLiteral("Server"), QStringLiteral("Servers")},
         QStringLiteral("HostName"),
         &OpenEditor<frmServerDetails>},
        {{QStringLiteral("User"), QStringLiteral("Users")},
         QStringLiteral("UserName"),
         &OpenEditor<frmUserDetails>},
        {{QStringLiteral("Group"), QStringLiteral("Groups")},
         QStringLiteral("GroupName"),
         &OpenEditor<frmGroupDetails>},
        {{QStringLiteral("Printer"), QStringLiteral("Printers")},
         QStringLiteral("PrinterName"),
         &OpenEditor<frmPrinterDetails>},
        {{QStringLiteral("Route"), QStringLiteral("Routes")},
         QStringLiteral("RouteName"),
         &OpenEditor<frmRouteDetails>},
        {{QStringLiteral("NumberMapping"), QStringLiteral("NumberMappings")},
         QStringLiteral("NumMapMatch"),
         &OpenEditor<frmNumberMappingsDetails>},
        {{QStringLiteral("Zone"), QStringLiteral("LCR")},
         QStringLiteral("ZoneModify"),
         &OpenEditor<frmZoneDetails>},
        {{QStringLiteral("Rate"), QStringLiteral("Rates")},
         QStringLiteral("RateModify"),
         &OpenEditor<frmRateDetails>},
        {{QStringLiteral("Destination"), QStringLiteral("Destinations")},
         QStringLiteral("DestinationModify"),
         &OpenEditor<frmDestination>},
        {{QStringLiteral("Device"), QStringLiteral("Devices")},
         QStringLiteral("DeviceName"),
         &OpenEditor<frmDeviceDetails>},
        {{QStringLiteral("Administrator")},
         QStringLiteral("Administrator"),
         &OpenEditor<frmAdministratorDetails>},
        {{QStringLiteral("GatewayUser"), QStringLiteral("Gateway")},
         QStringLiteral("GatewayUser"),
         &OpenEditor<frmGatewayUser>},
        {{QStringLiteral("Process"), QStringLiteral("Processes")},
         QStringLiteral("HostName"),
         &OpenProcessViewer},
        {{QStringLiteral("Event"), QStringLiteral("Events")},
         QStringLiteral("HostName"),
         &OpenEventViewer},
    };
    return catalog;
}

}  // namespace winadmin

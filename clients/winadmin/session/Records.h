#pragma once
// The records that the console shows and edits are the administration
// protocol's own messages; these names say what they are in the console's terms.

#include <QString>
#include <string>

#include "admin.pb.h"

namespace winadmin {

namespace pb = veldrano::admin::v1;

using ServerRecord = pb::Server;
using ServerObjectsRecord = pb::ServerObjects;
using UserRecord = pb::User;
using UserRefRecord = pb::UserRef;
using GroupRecord = pb::Group;
using PrinterRecord = pb::Printer;
using DeviceRecord = pb::Device;
using DeviceLineRecord = pb::DeviceLine;
using LineSettingsRecord = pb::LineSettings;
using DeviceTypeRecord = pb::DeviceType;
using DeviceFeaturesRecord = pb::DeviceFeatures;
using ProcessRecord = pb::Process;
using EventRecord = pb::Event;
using RouteRecord = pb::Route;
using NumberMappingRecord = pb::NumberMapping;
using GatewayRecord = pb::Gateway;
using GatewayUserRecord = pb::GatewayUser;
using AdminSettingsRecord = pb::AdminSettings;
using ZoneRecord = pb::Zone;
using ZoneListRecord = pb::ZoneList;
using RateRecord = pb::Rate;
using DestinationRecord = pb::Destination;

// What committing a rate or destination answers: the new version and the
// record's index in its zone after the commit.
struct IndexedCommit {
    int64_t version = 0;
    int index = 0;
};

// Record fields hold UTF-8; the console's texts are QStrings.
inline QString Text(const std::string& value) {
    return QString::fromStdString(value);
}
// What a field's text is stored as: trimmed, as the checks saw it.
inline std::string FieldValue(const QString& text) {
    return text.trimmed().toStdString();
}

}  // namespace winadmin

#pragma once
// The demo installation that a fresh server can start with, and the record
// builders it shares with the benchmark generator. The builders fill every
// field that has a range so that the records pass the store's checks as they
// stand; callers then set what makes each record particular.

#include <string>

#include "store/Store.h"

namespace veldrano::server {

// Fills an empty store with a complete installation: servers of every role and
// net type (one remote), users with extras and substitutes, groups across
// servers, printers of every type, devices of every device type, routes,
// number mappings, gateways, least-cost routing, administrator settings,
// process slots and a first batch of events. Everything is written through the
// store's commits in one transaction, so a refusal leaves the store empty.
// Throws ServiceError ERROR_ALREADY_EXISTS when the store holds servers.
void FillDemo(Store& store);

namespace demo {

pb::Server MakeServer(const std::string& name, const std::string& comment, bool users,
                      bool printers, bool devices, const std::string& netType);

pb::User MakeUser(const std::string& host, const std::string& name, const std::string& comment);

pb::Printer MakePrinter(const std::string& host, const std::string& name,
                        const std::string& comment, int type);

// A primary line for a device of the given type: the enable flags follow the
// type's features so that a line never claims a facility its hardware lacks.
pb::LineSettings MakeLine(const pb::DeviceType& type, const std::string& userServer,
                          const std::string& comment);

pb::Device MakeDevice(const std::string& host, const std::string& name, const pb::DeviceType& type,
                      const std::string& userServer, const std::string& comment);

pb::Event MakeEvent(int64_t time, int severity, int originatorType, int originatorId,
                    int messageClass, const std::string& text);

}  // namespace demo
}  // namespace veldrano::server

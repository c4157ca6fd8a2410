#pragma once
// Large installations for benchmarks and load tests.
//
// Sizes are given as a comma list of name=number pairs, for example
//   users=100000,events=1000000,servers=200,printers=100,devices=100,zones=1000
// Accepted names:
//   servers    number of servers; each has every role (at least 1 when anything else is asked)
//   users      users on the first server (the one the benchmarks list)
//   printers   printers on every server
//   devices    devices on every server, cycling through the device types
//   zones      least-cost zones, each with two rates and two destinations
//   events     events in the log of the first server (or of eventhost): mostly notes
//              and warnings, 1 in 100 an error or worse, 1 in 10,000 a panic; one a
//              second up to now
//   eventhost  the server that gets the events, by name; it must exist afterwards
// Unknown names, missing "=" and bad numbers throw std::invalid_argument.

#include <string>

#include "store/Store.h"

namespace veldrano::server {

struct GenerateSizes {
    int servers = 0, firstServerUsers = 0, printersPerServer = 0, devicesPerServer = 0, zones = 0;
    long events = 0;
    std::string eventHost;
};

GenerateSizes ParseGenerateSizes(const std::string& text);

// Adds the generated installation to the store. Server names start with
// "srv" and end in ".bench.example.net", so generating into a store that
// already holds a generated installation is refused with ERROR_ALREADY_EXISTS.
void Generate(Store& store, const GenerateSizes& sizes);

// The accepted names, for the command line's help text.
const char* GenerateHelp();

}  // namespace veldrano::server

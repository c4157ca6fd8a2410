#pragma once
// A device record's lines by number: line 1 is the primary line, carried by
// the device itself; the others are its secondary lines.

#include <QString>

#include "session/Records.h"

namespace winadmin {

// The settings of line number (the defaults for a number the record lacks).
const LineSettingsRecord& LineOf(const DeviceRecord& device, int number);
// The same for writing; a secondary number the record lacks is added.
LineSettingsRecord* MutableLineOf(DeviceRecord& device, int number);
// The secondary line number; nullptr for 1 or a number the record lacks.
const DeviceLineRecord* SecondaryLineOf(const DeviceRecord& device, int number);
DeviceLineRecord* MutableSecondaryLineOf(DeviceRecord& device, int number);
// The line number at the start of a line selector entry ("2 B-channel"); 0
// when the text does not start with one.
int LineNumberOf(const QString& entry);

}  // namespace winadmin

#include "editors/DeviceLines.h"

namespace winadmin {

const DeviceLineRecord* SecondaryLineOf(const DeviceRecord& device, int number) {
    for (const DeviceLineRecord& line : device.secondary_lines())
        if (line.number() == number) return &line;
    return nullptr;
}

DeviceLineRecord* MutableSecondaryLineOf(DeviceRecord& device, int number) {
    for (DeviceLineRecord& line : *device.mutable_secondary_lines())
        if (line.number() == number) return &line;
    return nullptr;
}

const LineSettingsRecord& LineOf(const DeviceRecord& device, int number) {
    if (number == 1) return device.primary();
    const DeviceLineRecord* line = SecondaryLineOf(device, number);
    return line ? line->settings() : LineSettingsRecord::default_instance();
}

LineSettingsRecord* MutableLineOf(DeviceRecord& device, int number) {
    if (number == 1) return device.mutable_primary();
    DeviceLineRecord* line = MutableSecondaryLineOf(device, number);
    if (!line) {
        line = device.add_secondary_lines();
        line->set_number(number);
    }
    return line->mutable_settings();
}

int LineNumberOf(const QString& entry) {
    qsizetype digits = 0;
    const QString text = entry.trimmed();
    while (digits < text.size() && text.at(digits).isDigit()) ++digits;
    return text.left(digits).toInt();
}

}  // namespace winadmin

#pragma once
// Display texts of the numeric codes that the server hands out. Every table
// maps a code to a label key and the text is looked up at each call, so a
// change of language shows at the next fill; nothing is cached.

#include <QString>
#include <QStringList>
#include <cstdint>

namespace winadmin {

// Printer type in the server's own numbering (0 ASCII .. 11 Windows).
QString PrinterTypeText(int16_t code);
// Event severity 0 none .. 5 panic.
QString SeverityText(int16_t code);
// Event originator 0 .. 19.
QString OriginatorText(int16_t code);
// Every set bit of the message class contributes its text and a blank, in a
// fixed order (application first, Unix last); no known bit gives "".
QString MessageClassText(int32_t bits);
// The state of a process slot from its exit status and run state; the run
// state decides first.
QString ProcessStatusText(int32_t exitStatus, int32_t runState);
// A count or identifier: positive values with a leading blank (the sign
// position), 0 and below as "---".
QString CountOrDashText(int32_t value);
QString YesNoText(bool flag);

// The label keys of the printer types and paper sizes, in list order (the
// list position is the code).
QStringList PrinterTypeKeys();
QStringList PaperSizeKeys();
// The label keys of the six severities, in code order.
QStringList SeverityKeys();

}  // namespace winadmin

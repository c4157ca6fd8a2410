#pragma once
// The common error dialog: how a failed call reaches the administrator when the
// handler that got it does not treat the number itself.

#include <QString>
#include <cstdint>

#include "session/SessionError.h"

namespace winadmin {

// description + " (" + number in upper-case hexadecimal + ")."
QString FormatErrorText(const QString& description, uint32_t number);

// Shows the error with the critical icon, titled by its source. Only the
// 0x8100 family (transient failures) offers Retry and Cancel; every other
// number offers OK. Answers the prompter's Answer code.
int ShowErrorMessage(uint32_t number, const QString& description, const QString& source);
int ShowErrorMessage(const SessionError& error);

}  // namespace winadmin

#pragma once
// The common error dialog: how a failed call reaches the administrator when the
// handler that got it does not treat the number itself.

#include <QString>
#include <cstdint>

#include "session/SessionError.h"

namespace winadmin {

// description + " (" + number in upper-case hexadecimal + ")."
QString FormatErrorText(const QString& description, uint32_t number);

// Shows the error with the critical icon, titled with the product title of the
// brand that the session reports ("VELDRANO Administrator" before login). Only
// the 0x8100 family (failures that repeating can cure) offers Retry and
// Cancel; every other number offers OK. Answers the prompter's Answer code.
// The source is not shown; it stays in the error for the handlers.
int ShowErrorMessage(uint32_t number, const QString& description, const QString& source);
int ShowErrorMessage(const SessionError& error);

}  // namespace winadmin

#pragma once
// Running one call on the session from a window: the hourglass while it runs,
// and a failure goes to the common error dialog, which offers Retry for
// transient failures (the call is then made again).

#include "common/FieldHelpers.h"
#include "common/Prompter.h"
#include "session/ErrorDialog.h"
#include "session/SessionError.h"

namespace winadmin {

// Runs call until it succeeds or the administrator gives up. Answers whether
// it succeeded.
template <class Call>
bool CallSession(Call&& call) {
    for (;;) {
        try {
            BusyPointer busy;
            call();
            return true;
        } catch (const SessionError& error) {
            if (ShowErrorMessage(error) != Answer::Retry) return false;
        }
    }
}

}  // namespace winadmin

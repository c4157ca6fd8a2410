#include "session/ServerSession.h"

namespace winadmin {

namespace {
std::unique_ptr<ServerSession>& Holder() {
    static std::unique_ptr<ServerSession> session;
    return session;
}
}  // namespace

ServerSession* TheSession() {
    return Holder().get();
}

void SetTheSession(std::unique_ptr<ServerSession> session) {
    SetLabelSource(session.get());
    Holder() = std::move(session);
}

}  // namespace winadmin

#pragma once
// The one error type of the console's session: what the administrator is shown
// (number, description, source) for every failed call, whether the server
// refused it or the transport failed.

#include <QString>
#include <cstdint>
#include <exception>
#include <string>

#include "admin.pb.h"

namespace winadmin {

class SessionError : public std::exception {
public:
    SessionError(uint32_t number, QString description, QString source);

    // An error of the protocol's own table; detail, when given, is appended to
    // the table's description.
    static SessionError FromCode(veldrano::admin::v1::Error code, const QString& detail = {});

    uint32_t Number() const { return number_; }
    const QString& Description() const { return description_; }
    const QString& Source() const { return source_; }

    const char* what() const noexcept override { return what_.c_str(); }

private:
    uint32_t number_;
    QString description_;
    QString source_;
    std::string what_;
};

// The number that the protocol's table gives an error code; 0 for none.
// Callers compare error numbers through this, never through literals, so the
// table in the protocol stays the only place that states them.
uint32_t ErrorNumber(veldrano::admin::v1::Error code);

}  // namespace winadmin

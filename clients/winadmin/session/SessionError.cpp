#include "session/SessionError.h"

#include <QStringLiteral>
#include <utility>

namespace winadmin {

namespace pb = veldrano::admin::v1;

namespace {

const google::protobuf::EnumValueOptions* OptionsOf(pb::Error code) {
    const google::protobuf::EnumValueDescriptor* value =
        pb::Error_descriptor()->FindValueByNumber(code);
    return value ? &value->options() : nullptr;
}

}  // namespace

SessionError::SessionError(uint32_t number, QString description, QString source)
    : number_(number), description_(std::move(description)), source_(std::move(source)) {
    what_ = QStringLiteral("%1 (%2, %3)")
                .arg(description_)
                .arg(QString::number(number_, 16).toUpper(), source_)
                .toStdString();
}

SessionError SessionError::FromCode(pb::Error code, const QString& detail) {
    const google::protobuf::EnumValueOptions* options = OptionsOf(code);
    if (!options) return SessionError(ErrorNumber(pb::ERROR_PROTOCOL), detail, {});
    QString description = QString::fromStdString(options->GetExtension(pb::error_description));
    if (!detail.isEmpty()) description += QStringLiteral(": ") + detail;
    return SessionError(options->GetExtension(pb::error_number), description,
                        QString::fromStdString(options->GetExtension(pb::error_source)));
}

uint32_t ErrorNumber(pb::Error code) {
    const google::protobuf::EnumValueOptions* options = OptionsOf(code);
    return options ? options->GetExtension(pb::error_number) : 0;
}

}  // namespace winadmin

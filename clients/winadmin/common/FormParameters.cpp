#include "common/FormParameters.h"

namespace winadmin {

FormParameterList& FormParameters() {
    static FormParameterList parameters;
    return parameters;
}

void SetFormParameters(FormParameterList parameters) {
    FormParameters() = std::move(parameters);
}

QString FormParameterValue(const QString& name) {
    for (const FormParameter& pair : FormParameters())
        if (pair.name == name) return pair.value;
    return {};
}

bool HasFormParameter(const QString& name) {
    for (const FormParameter& pair : FormParameters())
        if (pair.name == name) return true;
    return false;
}

FormParameter FirstFormParameter() {
    return FormParameters().isEmpty() ? FormParameter{} : FormParameters().front();
}

void AnswerRefresh(bool saved) {
    // The answer is the editor's Saved flag written as a whole number.
    SetFormParameters(
        {{QStringLiteral("Refresh"), saved ? QStringLiteral("-1") : QStringLiteral("0")}});
}

bool AnsweredRefresh() {
    const FormParameter first = FirstFormParameter();
    return first.name == QLatin1String("Refresh") && first.value == QLatin1String("-1");
}

}  // namespace winadmin

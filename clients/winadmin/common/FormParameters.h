#pragma once
// The form-parameter list: how the explorer and a dialog hand each other a
// request and an answer. The caller fills it before it shows a dialog (the
// first pair says what is asked: a key name and the key, or "New"; further
// pairs give context such as "HostName" or "ZoneIndex"), and a dialog that
// closes replaces the whole list with its answer, ("Refresh", "-1") when it
// saved something and ("Refresh", "0") otherwise.

#include <QList>
#include <QString>

namespace winadmin {

struct FormParameter {
    QString name;
    QString value;
};
using FormParameterList = QList<FormParameter>;

// The one list of the process.
FormParameterList& FormParameters();
void SetFormParameters(FormParameterList parameters);

// The value of the first pair with this name; "" when there is none.
QString FormParameterValue(const QString& name);
bool HasFormParameter(const QString& name);
// The first pair, or an empty one.
FormParameter FirstFormParameter();

// The answer a dialog leaves: ("Refresh", "-1") or ("Refresh", "0").
void AnswerRefresh(bool saved);
// Whether the list holds the answer ("Refresh", "-1").
bool AnsweredRefresh();

}  // namespace winadmin

#pragma once
// The properties of one least-cost-routing rate: a time window of the day,
// from a start time to a stop time ("24:00" for the end of the day), on a
// set of weekdays. Rates are opened by their place in their zone; the dialog
// keeps the rate's identity, so that its save reaches this rate even when
// another console deletes an earlier one meanwhile.

#include <memory>

#include "editors/RecordEditor.h"
#include "session/Records.h"

namespace Ui {
class frmRateDetails;
}

namespace winadmin {

class frmRateDetails : public RecordEditor<RateRecord> {
    Q_OBJECT

public:
    explicit frmRateDetails(QWidget* parent = nullptr);
    ~frmRateDetails() override;

    QString Zone() const { return zone_; }

protected:
    bool ReadRequest() override;
    QString ObjectName() const override { return QString::number(Index()); }
    RateRecord Fetch() override;
    Committed Commit(Action action) override;

private:
    std::unique_ptr<Ui::frmRateDetails> ui;
    QString zone_;
};

}  // namespace winadmin

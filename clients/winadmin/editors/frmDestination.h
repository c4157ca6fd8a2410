#pragma once
// The properties of one least-cost-routing destination of a zone: a named
// number prefix of a transmission type, internal or external. Within a zone
// no two destinations share prefix and type. Destinations are opened by
// their place in the zone and keep their identity as rates do.

#include <memory>

#include "editors/RecordEditor.h"
#include "session/Records.h"

namespace Ui {
class frmDestination;
}

namespace winadmin {

class frmDestination : public RecordEditor<DestinationRecord> {
    Q_OBJECT

public:
    explicit frmDestination(QWidget* parent = nullptr);
    ~frmDestination() override;

    static constexpr int kTextLength = 30;

    QString Zone() const { return zone_; }

protected:
    bool ReadRequest() override;
    void FillFixedLists() override;
    QString ObjectName() const override { return QString::number(Index()); }
    DestinationRecord Fetch() override;
    Committed Commit(Action action) override;

private:
    // No other destination of the zone has the prefix and type shown.
    bool CheckUnique();

    std::unique_ptr<Ui::frmDestination> ui;
    QString zone_;
};

}  // namespace winadmin

#pragma once
// One number mapping: a number that matches the match text (the key) is
// replaced by the replace text.

#include <memory>

#include "editors/RecordEditor.h"
#include "session/Records.h"

namespace Ui {
class frmNumberMappingsDetails;
}

namespace winadmin {

class frmNumberMappingsDetails : public RecordEditor<NumberMappingRecord> {
    Q_OBJECT

public:
    explicit frmNumberMappingsDetails(QWidget* parent = nullptr);
    ~frmNumberMappingsDetails() override;

    static constexpr int kMatchLength = 20;
    static constexpr int kReplaceLength = 20;

protected:
    NumberMappingRecord Fetch() override;
    Committed Commit(Action action) override;

private:
    std::unique_ptr<Ui::frmNumberMappingsDetails> ui;
};

}  // namespace winadmin

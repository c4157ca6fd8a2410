#pragma once
// The properties of one printer of a server: the name under which the server
// prints, its language (type), paper size, a filter command and the page
// count after which a print job is split. A Windows printer does its own
// paper handling, so it has neither paper size nor split page.

#include <memory>

#include "editors/RecordEditor.h"
#include "session/Records.h"

namespace Ui {
class frmPrinterDetails;
}

namespace winadmin {

class frmPrinterDetails : public RecordEditor<PrinterRecord> {
    Q_OBJECT

public:
    explicit frmPrinterDetails(QWidget* parent = nullptr);
    ~frmPrinterDetails() override;

    static constexpr int kPrinterNameLength = 10;
    static constexpr int kCommentLength = 30;
    static constexpr int kFilterCommandLength = 80;
    static constexpr int kSplitPageLength = 3;
    static constexpr int kMaxSplitPage = 999;
    // The type code of a printer driven by the host's own print system.
    static constexpr int kWindowsPrinter = 11;

    QString Host() const { return host_; }

protected:
    bool ReadRequest() override;
    void FillFixedLists() override;
    void EnableRules() override;
    PrinterRecord Fetch() override;
    Committed Commit(Action action) override;

private:
    std::unique_ptr<Ui::frmPrinterDetails> ui;
    QString host_;
};

}  // namespace winadmin

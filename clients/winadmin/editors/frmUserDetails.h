#pragma once
// The properties of one user of a server: general data, sending and scanning
// properties, a substitute, what happens on the message events (a mail, a
// print, the signal light, a voice call), background values and a free list
// of extra name/value settings. A user is keyed by its name within its
// server, which the request names ("HostName"); the scanners and printers
// offered are that server's.

#include <memory>

#include "editors/RecordEditor.h"
#include "session/Records.h"

namespace Ui {
class frmUserDetails;
}

class QComboBox;

namespace winadmin {

class ListModel;

class frmUserDetails : public RecordEditor<UserRecord> {
    Q_OBJECT

public:
    explicit frmUserDetails(QWidget* parent = nullptr);
    ~frmUserDetails() override;

    static constexpr int kUserNameLength = 10;
    static constexpr int kCommentLength = 30;
    static constexpr int kCodeLength = 20;      // bar code, CPI, PIN code, TSI, phone signal
    static constexpr int kLongTextLength = 80;  // headlines, mail address, extra values
    static constexpr int kExtraNameLength = 40;
    static constexpr int kPaperCount = 9;

    QString Host() const { return host_; }

    // The extras page: puts edtName = edtValue into the list (cmdSet), takes
    // the selected pair out after asking (cmdDelete), writes the list to a
    // text file, one "name value" line per pair (cmdExport).
    void SetExtra();
    void DeleteExtra();
    void ExportExtras();
    // Sets a new password for the stored user (cmdChangePassword).
    void ChangePassword();

protected:
    void FillFixedLists() override;
    bool ReadRequest() override;
    void ClearMore() override;
    void LoadMore() override;
    bool WriteMore() override;
    void EnableRules() override;
    UserRecord Fetch() override;
    Committed Commit(Action action) override;

private:
    // Selects the stored name among the server's entries; a name the server
    // no longer has leaves "(None)" selected and says so.
    void SelectStored(QComboBox* combo, const std::string& name, const char* missingMessage);
    // A message of the extras page, with its own title.
    void TellExtras(const char* message, const char* title, QWidget* focus);
    int SelectedExtra() const;
    void ShowSelectedExtra();

    std::unique_ptr<Ui::frmUserDetails> ui;
    ListModel* extras_;
    QString host_;
};

}  // namespace winadmin

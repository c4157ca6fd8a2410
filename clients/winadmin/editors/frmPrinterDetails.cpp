#include "editors/frmPrinterDetails.h"

#include "common/FieldHelpers.h"
#include "common/FormParameters.h"
#include "common/Labels.h"
#include "session/ServerSession.h"
#include "ui_frmPrinterDetails.h"

namespace winadmin {

namespace {

// The server's printer languages in the order the list shows them; the codes
// are the server's, which is why 10 comes last.
constexpr std::pair<int, const char*> kPrinterTypes[] = {
    {0, "PRN_ASCII"},     {1, "PRN_FAX"},       {2, "PRN_HP_LJ"},       {3, "PRN_HP_LJ_COMP"},
    {4, "PRN_HP_LJ_IIP"}, {5, "PRN_HP_LJ_III"}, {6, "PRN_HP_DJ"},       {7, "PRN_HP_DJ500"},
    {8, "PRN_PS"},        {9, "PRN_PS_COMP"},   {10, "PRN_HP_LJ_FAST"}, {11, "PRN_WINDOWS"},
};
constexpr std::pair<int, const char*> kPaperSizes[] = {
    {0, "PAPER_A4"}, {1, "PAPER_LEGAL"}, {2, "PAPER_LETTER"}};

template <size_t N>
void FillCodes(QComboBox* combo, const std::pair<int, const char*> (&entries)[N]) {
    combo->clear();
    for (const auto& [code, key] : entries) combo->addItem(GetLabel(QLatin1String(key)), code);
    combo->setCurrentIndex(-1);
}

}  // namespace

frmPrinterDetails::frmPrinterDetails(QWidget* parent)
    : RecordEditor(parent), ui(std::make_unique<Ui::frmPrinterDetails>()) {
    ui->setupUi(this);
    using P = PrinterRecord;
    // Declared in the order the checks run; paper size and split page are
    // disabled for a Windows printer, and a disabled field skips its checks.
    Bind(ui->edtPrinterName, ui->lblPrinterName, false).KeyField().Text(&P::name, &P::set_name);
    Bind(ui->edtComment, ui->lblComment)
        .Filter(kKeyAnyText, kCommentLength)
        .Text(&P::comment, &P::set_comment)
        .Mandatory();
    Bind(ui->cboPrinterType, ui->lblPrinterType).ItemCode(&P::type, &P::set_type).Mandatory();
    Bind(ui->cboPaperSize, ui->lblPaperSize)
        .ItemCode(&P::paper_size, &P::set_paper_size)
        .Mandatory();
    Bind(ui->edtSplitPage, ui->lblSplitPage)
        .Filter(kKeyDigits, kSplitPageLength)
        .Range(0, kMaxSplitPage)
        .Spin(ui->updSplitPage)
        .Number(&P::split_page, &P::set_split_page)
        .Mandatory();
    Bind(ui->edtFilterCommand, ui->lblFilterCommand)
        .Filter(kKeyAnyText, kFilterCommandLength)
        .Text(&P::filter_command, &P::set_filter_command)
        .Mandatory();
    connect(ui->cboPrinterType, &QComboBox::currentIndexChanged, this, [this] {
        if (!IsLoading()) EnableRules();
    });
    SetUpFrame({.keyField = ui->edtPrinterName,
                .keyLabel = ui->lblPrinterName,
                .keyFilter = kKeyNoParentheses,
                .keyMaxLength = kPrinterNameLength,
                .details = ui->fraGeneralData,
                .firstDetail = ui->edtComment,
                .ok = ui->cmdOK,
                .cancel = ui->cmdCancel,
                .remove = ui->cmdDelete,
                .helpTopic = "printers"},
               {QStringLiteral("PrinterName"), QStringLiteral("PrinterNotExist"),
                QStringLiteral("PrinterExist")});
}

frmPrinterDetails::~frmPrinterDetails() = default;

bool frmPrinterDetails::ReadRequest() {
    // The name is a key only within its server, which the caption names.
    host_ = FormParameterValue(QStringLiteral("HostName"));
    return FindOwningServer(host_, QStringLiteral("Printer Details"));
}

void frmPrinterDetails::FillFixedLists() {
    Loading([&] {
        FillCodes(ui->cboPrinterType, kPrinterTypes);
        FillCodes(ui->cboPaperSize, kPaperSizes);
    });
}

void frmPrinterDetails::EnableRules() {
    const bool paper = ui->cboPrinterType->currentData().toInt() != kWindowsPrinter;
    for (QWidget* control : std::initializer_list<QWidget*>{ui->cboPaperSize, ui->lblPaperSize,
                                                            ui->lblSplitPage, ui->updSplitPage})
        control->setEnabled(paper);
    SetContainerEnabled(ui->edtSplitPage, paper);
}

PrinterRecord frmPrinterDetails::Fetch() {
    PrinterRecord printer = TheSession()->GetPrinter(host_, Key());
    printer.set_host_name(host_.toStdString());
    return printer;
}

Committed frmPrinterDetails::Commit(Action action) {
    ServerSession& session = *TheSession();
    if (action == Delete) {
        session.DeletePrinter(host_, Text(Kept().name()), Kept().version());
        return {};
    }
    return {session.CommitPrinter(Edited())};
}

}  // namespace winadmin

// The pages of the device dialog: which record field each control shows,
// the checks in the order they run, and which controls the device type and
// the check boxes leave enabled.

#include "common/FieldHelpers.h"
#include "common/Labels.h"
#include "common/Pages.h"
#include "common/Prompter.h"
#include "editors/DeviceLines.h"
#include "editors/frmDeviceDetails.h"
#include "session/ServerSession.h"
#include "ui_frmDeviceDetails.h"

namespace winadmin {

namespace {

using D = DeviceRecord;

constexpr int kCommentLength = 30;
constexpr int kCodeLength = 20;  // TSI, line codes, prefixes, ISDN numbers, key pad one
constexpr int kLongTextLength = 80;
constexpr double kMaxInt32 = 2147483647;

// A feature flag offers its group only when it is exactly 1.
bool Offered(int flag) {
    return flag == 1;
}

}  // namespace

FieldBinding<D>& frmDeviceDetails::LineText(QLineEdit* field, QLabel* label, KeyFilter kind,
                                            int maxLength, const std::string& (L::*get)() const,
                                            void (L::*set)(const std::string&)) {
    return Bind(field, label)
        .Filter(kind, maxLength)
        .Loads([this, field, get](const D& d) { field->setText(Text((LineOf(d, line_).*get)())); })
        .Writes([this, field, set](D& d) {
            (MutableLineOf(d, line_)->*set)(FieldValue(field->text()));
        });
}

FieldBinding<D>& frmDeviceDetails::LineNumber(QLineEdit* field, QLabel* label, UpDown* spin,
                                              int maxLength, double from, double to,
                                              int32_t (L::*get)() const, void (L::*set)(int32_t)) {
    // Every ranged field is cleared to its lower bound.
    return Bind(field, label)
        .Filter(kKeyDigits, maxLength)
        .Range(from, to)
        .Spin(spin)
        .Cleared(QString::number(qint64(from)))
        .Loads([this, field, get](const D& d) {
            field->setText(QString::number((LineOf(d, line_).*get)()));
        })
        .Writes([this, field, set](D& d) {
            bool ok = false;
            const qlonglong value = field->text().trimmed().toLongLong(&ok);
            if (ok) (MutableLineOf(d, line_)->*set)(int32_t(value));
        })
        .Mandatory();
}

FieldBinding<D>& frmDeviceDetails::LineFlag(QAbstractButton* box, bool (L::*get)() const,
                                            void (L::*set)(bool)) {
    return Bind(box)
        .Loads([this, box, get](const D& d) { box->setChecked((LineOf(d, line_).*get)()); })
        .Writes([this, box, set](D& d) { (MutableLineOf(d, line_)->*set)(box->isChecked()); });
}

void frmDeviceDetails::BindOptions(std::initializer_list<std::pair<QAbstractButton*, int>> options,
                                   int32_t (L::*get)() const, void (L::*set)(int32_t)) {
    for (const auto& [option, code] : options) {
        Bind(option)
            .Loads([this, option, code, get](const D& d) {
                option->setChecked((LineOf(d, line_).*get)() == code);
            })
            .Writes([this, option, code, set](D& d) {
                if (option->isChecked()) (MutableLineOf(d, line_)->*set)(code);
            });
    }
}

// Declared in the order the checks run; fields without checks where they
// sit on the pages.
void frmDeviceDetails::BindFields() {
    Bind(ui->edtDeviceName, ui->lblDeviceName, false).KeyField().Text(&D::name, &D::set_name);
    // A type change is handled (and counted as a change) by TypeChanged.
    Bind(ui->cboDeviceType, ui->lblDeviceType, false).ItemCode(&D::type, &D::set_type).Mandatory();
    Bind(ui->edtMaxLines, ui->lblMaxLines)
        .Filter(kKeyDigits, 5)
        .Number(&D::configured_lines, &D::set_configured_lines);
    Check([this] {
        const DeviceTypeRecord* type = TypeShown();
        if (type && type->lines_editable()) {
            const QString caption = ui->lblMaxLines->text();
            return !IsFieldEmpty(ui->edtMaxLines, FieldEmptyMessage(caption)) &&
                   CheckFieldRange(ui->edtMaxLines, caption, 1, ui->updMaxLines->Maximum());
        }
        return !IsFieldEmpty(ui->cboLine, FieldEmptyMessage(ui->lblLine->text()));
    });

    LineText(ui->edtComment, ui->lblComment, kKeyAnyText, kCommentLength, &L::comment,
             &L::set_comment)
        .Mandatory();
    LineText(ui->edtPhisicalDevice, ui->lblPhisicalDevice, kKeyAnyText, kCommentLength,
             &L::physical_device, &L::set_physical_device);
    Bind(ui->edtUserServer, ui->lblUserServer)
        .Loads([this](const D& d) {
            const QString host = Text(LineOf(d, line_).user_server());
            ui->edtUserServer->setText(host.isEmpty() ? NoneText() : host);
        })
        .Writes([this](D& d) {
            const QString shown = ui->edtUserServer->text();
            MutableLineOf(d, line_)->set_user_server(shown == NoneText() ? std::string()
                                                                         : FieldValue(shown));
        });
    Check([this] { return CheckUserServer(); });
    LineFlag(ui->chkEnableSend, &L::enable_send, &L::set_enable_send);
    LineFlag(ui->chkEnableReceive, &L::enable_receive, &L::set_enable_receive);
    LineFlag(ui->chkEnableFax, &L::enable_fax, &L::set_enable_fax);
    LineFlag(ui->chkEnableSMS, &L::enable_sms, &L::set_enable_sms);
    LineFlag(ui->chkEnableSpeaker, &L::enable_speaker, &L::set_enable_speaker);
    LineFlag(ui->chkEnableDebugFeature1, &L::enable_debug_feature1, &L::set_enable_debug_feature1);
    LineFlag(ui->chkEnableDebugFeature2, &L::enable_debug_feature2, &L::set_enable_debug_feature2);

    LineText(ui->edtTSI, ui->lblTSI, kKeyAnyText, kCodeLength, &L::tsi, &L::set_tsi);
    LineText(ui->edtHeadline, ui->lblHeadline, kKeyAnyText, kLongTextLength, &L::headline,
             &L::set_headline);
    LineText(ui->edtGetExternalLine, ui->lblGetExternalLine, kKeyAnyText, 10, &L::get_external_line,
             &L::set_get_external_line);
    LineText(ui->edtGetInternalLine, ui->lblGetInternalLine, kKeyAnyText, kCodeLength,
             &L::get_internal_line, &L::set_get_internal_line);
    // The codes are the server's: 0 flash, 1 ground, 2 dial strings, 3 none;
    // 0 tone, 1 pulse.
    BindOptions({{ui->optFlash, 0}, {ui->optGround, 1}, {ui->optDialStrings, 2}, {ui->optNone, 3}},
                &L::get_line_type, &L::set_get_line_type);
    BindOptions({{ui->optTone, 0}, {ui->optPulse, 1}}, &L::dial_type, &L::set_dial_type);

    LineFlag(ui->chkEnableDID, &L::enable_did, &L::set_enable_did);
    LineNumber(ui->edtMinDigits, ui->lblMinDigits, ui->updMinDigits, 2, 0, 31, &L::min_digits,
               &L::set_min_digits);
    LineNumber(ui->edtMaxDigits, ui->lblMaxDigits, ui->updMaxDigits, 2, 0, 31, &L::max_digits,
               &L::set_max_digits);
    LineNumber(ui->edtSkipDigits, ui->lblSkipDigits, ui->updSkipDigits, 2, 0, 20, &L::skip_digits,
               &L::set_skip_digits);
    LineNumber(ui->edtWaitDigitTimeout, ui->lblWaitDigitTimeout, ui->updWaitDigitTimeout, 2, 0, 30,
               &L::wait_digit_timeout, &L::set_wait_digit_timeout);
    LineText(ui->edtNumberPrefix, ui->lblNumberPrefix, kKeyAnyText, kCodeLength, &L::number_prefix,
             &L::set_number_prefix);
    LineText(ui->edtCsiPrefix, ui->lblCSI, kKeyAnyText, kCodeLength, &L::csi_prefix,
             &L::set_csi_prefix);

    Bind(ui->edtAccountFactor, ui->lblAccountFactor)
        .Filter(kKeyDecimal, 15)
        .Cleared(FormatDecimal(0, 4))
        .Loads([this](const D& d) {
            ui->edtAccountFactor->setText(FormatDecimal(LineOf(d, line_).account_factor(), 4));
        })
        .Writes([this](D& d) {
            if (const auto value = ParseDecimal(ui->edtAccountFactor->text()))
                MutableLineOf(d, line_)->set_account_factor(*value);
        })
        .Mandatory()
        .Range(0, kMaxAccountFactor);
    LineText(ui->edtAccountUnit, ui->lblAccountUnit, kKeyAnyText, 10, &L::account_unit,
             &L::set_account_unit);
    LineText(ui->edtCalledPartyNumber, ui->lblCalledPartyNumber, kKeyAnyText, kCodeLength,
             &L::called_party_number, &L::set_called_party_number);
    LineText(ui->edtCalledPartySubaddress, ui->lblCalledPartySubaddress, kKeyAnyText, kCodeLength,
             &L::called_party_subaddress, &L::set_called_party_subaddress);
    LineText(ui->edtCallingPartyNumber, ui->lblCallingPartyNumber, kKeyAnyText, kCodeLength,
             &L::calling_party_number, &L::set_calling_party_number);
    LineText(ui->edtCallingPartySubaddress, ui->lblCallingPartySubaddress, kKeyAnyText, kCodeLength,
             &L::calling_party_subaddress, &L::set_calling_party_subaddress);

    LineFlag(ui->chkEnableSendHardCopy, &L::enable_send_hard_copy, &L::set_enable_send_hard_copy);
    LineFlag(ui->chkEnableReceiveHardCopy, &L::enable_receive_hard_copy,
             &L::set_enable_receive_hard_copy);
    LineFlag(ui->chkEnableJournalPrint, &L::enable_journal_print, &L::set_enable_journal_print);
    LineFlag(ui->chkEnablePrint, &L::enable_print, &L::set_enable_print);

    LineFlag(ui->chkEnableScan, &L::enable_scan, &L::set_enable_scan);
    Bind(ui->edtScannerUser, ui->lblScannerUser)
        .Loads([this](const D& d) {
            const UserRefRecord& user = LineOf(d, line_).scanner_user();
            ui->edtScannerUser->SetValue(Text(user.user_name()), Text(user.host_name()));
        })
        .Writes([this](D& d) {
            const UserReference value = ui->edtScannerUser->Value();
            UserRefRecord* user = MutableLineOf(d, line_)->mutable_scanner_user();
            user->set_user_name(FieldValue(value.user));
            user->set_host_name(FieldValue(value.host));
        });
    LineNumber(ui->edtReservationTimeout, ui->lblReservationTimeout, ui->updReservationTimeout, 4,
               1, 3600, &L::reservation_timeout, &L::set_reservation_timeout);
    LineNumber(ui->edtScannerPageWait, ui->lblScannerPageWait, ui->updScannerPageWait, 2, 1, 60,
               &L::scanner_page_wait, &L::set_scanner_page_wait);

    LineFlag(ui->chkEnableVoice, &L::enable_voice, &L::set_enable_voice);
    LineNumber(ui->edtMaxRecordingTime, ui->lblMaxRecordingTime, ui->updMaxRecordingTime, 10, 0,
               kMaxInt32, &L::max_recording_time, &L::set_max_recording_time);
    LineNumber(ui->edtSilenceTimeout, ui->lblSilenceTimeout, ui->updSilenceTimeout, 10, 0,
               kMaxInt32, &L::silence_timeout, &L::set_silence_timeout);
    LineFlag(ui->chkEnableSilenceCompression, &L::enable_silence_compression,
             &L::set_enable_silence_compression);

    // The two key pads differ in length on purpose.
    LineText(ui->edtTelexKeyPadOne, ui->lblTelexKeyPadOne, kKeyAnyText, kCodeLength,
             &L::telex_key_pad_one, &L::set_telex_key_pad_one);
    LineText(ui->edtTelexKeyPadTwo, ui->lblTelexKeyPadTwo, kKeyAnyText, kLongTextLength,
             &L::telex_key_pad_two, &L::set_telex_key_pad_two);
    LineText(ui->edtExtraParameters, ui->lblExtraParameters, kKeyAnyText, kLongTextLength,
             &L::extra_parameters, &L::set_extra_parameters);
}

void frmDeviceDetails::ClearMore() {
    // The values of a line that says nothing; they pass every check.
    ui->edtUserServer->setText(NoneText());
    ui->edtScannerUser->Clear();
    ui->chkEnableFax->setChecked(true);
    ui->optNone->setChecked(true);
    ui->optTone->setChecked(true);
    Loading([&] { ui->cboLine->clear(); });
    edits_.clear();
    line_ = 1;
    // Until a device is shown only its name and, for a new one, its type
    // can be given.
    ui->cboDeviceType->setEnabled(State() == EditorState::NewKey);
    for (QWidget* header :
         {static_cast<QWidget*>(ui->cboLine), static_cast<QWidget*>(ui->cmdDelete),
          static_cast<QWidget*>(ui->updMaxLines)})
        SetContainerEnabled(header, false);
}

bool frmDeviceDetails::CheckUserServer() {
    const QString shown = ui->edtUserServer->text().trimmed();
    if (!shown.isEmpty() && shown != NoneText()) return true;
    ThePrompter().Beep();
    Prompt prompt;
    prompt.text = FieldEmptyMessage(ui->lblUserServer->text());
    prompt.title = windowTitle();
    prompt.icon = PromptIcon::Exclamation;
    ThePrompter().Show(prompt);
    ShowPageOf(ui->edtUserServer);
    CTRLSetFocus(ui->edtUserServer);
    return false;
}

bool frmDeviceDetails::CsiPrefixRetired() const {
    const DeviceTypeRecord* type = TypeShown();
    return type && Offered(type->features().fax()) && TheSession()->SecondVersion() < 7;
}

void frmDeviceDetails::EnableRules() {
    const DeviceTypeRecord* type = TypeShown();
    const DeviceFeaturesRecord features = type ? type->features() : DeviceFeaturesRecord();
    const bool modifying = State() != EditorState::NewKey && State() != EditorState::Empty;
    ui->cboDeviceType->setEnabled(true);
    SetContainerEnabled(ui->cboLine, modifying);
    SetContainerEnabled(ui->cmdDelete, modifying && line_ != 1);
    SetContainerEnabled(ui->updMaxLines, modifying && type && type->lines_editable());

    // The groups in the order they are applied.
    for (QWidget* fax : std::initializer_list<QWidget*>{ui->chkEnableFax, ui->edtTSI,
                                                        ui->edtHeadline, ui->edtCsiPrefix})
        SetContainerEnabled(fax, Offered(features.fax()));
    SetContainerEnabled(ui->picInboundRouting, Offered(features.inbound_routing()));
    SetContainerEnabled(ui->picExtras, Offered(features.inbound_routing()));
    SetContainerEnabled(ui->picAccounting, Offered(features.accounting()));
    SetContainerEnabled(ui->picISDN, Offered(features.accounting()));
    SetContainerEnabled(ui->picBuiltinPrinter, Offered(features.builtin_printer()));
    SetContainerEnabled(ui->picScanner, Offered(features.scanner()));
    SetContainerEnabled(ui->fraDialType, Offered(features.scanner()));
    SetContainerEnabled(ui->picTelex, Offered(features.telex()));
    SetContainerEnabled(ui->chkEnableSMS, Offered(features.sms()));
    SetContainerEnabled(ui->picVoice, Offered(features.voice()));
    SetContainerEnabled(ui->fraEnableOptions, Offered(features.voice()));

    // Servers of an older release have no CSI prefix, and below level 5 no
    // inbound routing at all.
    if (CsiPrefixRetired()) ui->edtCsiPrefix->clear();
    if (TheSession()->ServerLevel() < 5) {
        SetContainerEnabled(ui->picInboundRouting, false);
        SetContainerEnabled(ui->picExtras, false);
    }
    CheckBoxRules();
}

void frmDeviceDetails::CheckBoxRules() {
    const DeviceTypeRecord* type = TypeShown();
    const DeviceFeaturesRecord features = type ? type->features() : DeviceFeaturesRecord();
    // A field on a page that its group disabled stays disabled whatever
    // its own rule says.
    const bool faxOn = ui->chkEnableFax->isChecked();
    for (QWidget* field : {ui->edtTSI, ui->edtHeadline})
        SetContainerEnabled(field, faxOn && Offered(features.fax()));
    for (QWidget* field : {ui->edtGetExternalLine, ui->edtGetInternalLine})
        SetContainerEnabled(field, faxOn);
    // The CSI prefix is what a DID fax call is answered with.
    SetContainerEnabled(ui->edtCsiPrefix, faxOn && ui->chkEnableDID->isChecked() &&
                                              Offered(features.csi_prefix()) &&
                                              !CsiPrefixRetired());
    SetContainerEnabled(ui->updReservationTimeout, !ui->edtScannerUser->Value().IsNone());
    const bool voiceOn = ui->chkEnableVoice->isChecked();
    for (QWidget* field : std::initializer_list<QWidget*>{
             ui->chkEnableSilenceCompression, ui->updMaxRecordingTime, ui->updSilenceTimeout})
        SetContainerEnabled(field, voiceOn);
}

}  // namespace winadmin

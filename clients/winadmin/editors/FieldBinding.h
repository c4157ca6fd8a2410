#pragma once
// One declaration per field of a properties dialog: its key filter and
// length, its spin control, how it is cleared, loaded from the record and
// written back, and its mandatory and range checks. The editor declares its
// fields in validation order; the frame does the rest. A field is loaded and
// written, or declared ShownOnly: a binding that loads without writing and
// does not say so stops the dialog at set-up.

#include <QAbstractButton>
#include <QComboBox>
#include <QLabel>
#include <QLineEdit>
#include <QString>
#include <functional>
#include <string>

#include "common/FieldHelpers.h"
#include "common/UpDown.h"
#include "common/UserReferenceField.h"
#include "session/Records.h"

namespace winadmin {

// What a binding does, untyped: the frame runs these in declaration order.
struct FieldSteps {
    QWidget* field = nullptr;
    QLabel* label = nullptr;
    std::function<void()> clear;
    std::function<bool()> check;  // true: the field passes
    bool shownOnly = false;
    bool hasLoad = false;
    bool hasWrite = false;
};

// The text the field shows or holds, and how to set it.
void SetFieldText(QWidget* field, const QString& text);
// The caption that names a field in messages (its label's text).
QString CaptionOf(const FieldSteps& steps);
// The mandatory check (when required answers true) and the range check.
bool CheckMandatory(const FieldSteps& steps);
bool CheckRange(const FieldSteps& steps, double from, double to);

template <class Record>
class FieldBinding {
public:
    using Load = std::function<void(const Record&)>;
    using Write = std::function<void(Record&)>;

    FieldBinding(QWidget* field, QLabel* label) {
        steps_.field = field;
        steps_.label = label;
        steps_.clear = [field] { SetFieldText(field, QString()); };
    }

    // --- Input --------------------------------------------------------------
    FieldBinding& Filter(KeyFilter kind, int maxLength) {
        InstallKeyFilter(steps_.field, kind, maxLength);
        return *this;
    }
    // The spin control steps within the field's range (Range first).
    FieldBinding& Spin(UpDown* spin, int step = 1) {
        spin->Bind(qobject_cast<QLineEdit*>(steps_.field), int(from_), int(to_), step);
        return *this;
    }
    // The key field: the frame clears and locks it, ClearFields leaves it.
    FieldBinding& KeyField() {
        steps_.clear = [] {};
        return *this;
    }
    FieldBinding& Cleared(const QString& text) {
        QWidget* field = steps_.field;
        steps_.clear = [field, text] { SetFieldText(field, text); };
        return *this;
    }

    // --- Record -------------------------------------------------------------
    FieldBinding& Text(const std::string& (Record::*get)() const,
                       void (Record::*set)(const std::string&)) {
        QWidget* field = steps_.field;
        return Loads([=](const Record& r) { SetFieldText(field, winadmin::Text((r.*get)())); })
            .Writes([=](Record& r) { (r.*set)(FieldValue(FieldText(field))); });
    }
    template <class Int>
    FieldBinding& Number(Int (Record::*get)() const, void (Record::*set)(Int)) {
        QWidget* field = steps_.field;
        return Loads([=](const Record& r) { SetFieldText(field, QString::number((r.*get)())); })
            .Writes([=](Record& r) {
                // The checks ran before; a field that holds no number keeps
                // the stored value.
                bool ok = false;
                const qlonglong value = FieldText(field).trimmed().toLongLong(&ok);
                if (ok) (r.*set)(Int(value));
            });
    }
    FieldBinding& Checked(bool (Record::*get)() const, void (Record::*set)(bool)) {
        auto* box = qobject_cast<QAbstractButton*>(steps_.field);
        steps_.clear = [box] { box->setChecked(false); };
        return Loads([=](const Record& r) { box->setChecked((r.*get)()); }).Writes([=](Record& r) {
            (r.*set)(box->isChecked());
        });
    }
    // A drop-down list whose entries carry the stored word as item data.
    FieldBinding& ItemData(const std::string& (Record::*get)() const,
                           void (Record::*set)(const std::string&)) {
        auto* combo = qobject_cast<QComboBox*>(steps_.field);
        steps_.clear = [combo] { combo->setCurrentIndex(-1); };
        return Loads([=](const Record& r) {
                   combo->setCurrentIndex(combo->findData(winadmin::Text((r.*get)())));
               })
            .Writes([=](Record& r) { (r.*set)(FieldValue(combo->currentData().toString())); });
    }
    // A drop-down list whose entries carry a stored code as item data.
    template <class Int>
    FieldBinding& ItemCode(Int (Record::*get)() const, void (Record::*set)(Int)) {
        auto* combo = qobject_cast<QComboBox*>(steps_.field);
        steps_.clear = [combo] { combo->setCurrentIndex(-1); };
        return Loads([=](const Record& r) {
                   combo->setCurrentIndex(FindItemData(combo, int((r.*get)())));
               })
            .Writes([=](Record& r) {
                if (combo->currentIndex() >= 0) (r.*set)(Int(combo->currentData().toInt()));
            });
    }
    // A user reference with its chooser: user@host, or "(None)".
    FieldBinding& Reference(const UserRefRecord& (Record::*get)() const,
                            UserRefRecord* (Record::*edit)()) {
        auto* field = qobject_cast<UserReferenceField*>(steps_.field);
        steps_.clear = [field] { field->Clear(); };
        return Loads([=](const Record& r) {
                   const UserRefRecord& ref = (r.*get)();
                   field->SetValue(winadmin::Text(ref.user_name()),
                                   winadmin::Text(ref.host_name()));
               })
            .Writes([=](Record& r) {
                const UserReference value = field->Value();
                UserRefRecord* ref = (r.*edit)();
                ref->set_user_name(FieldValue(value.user));
                ref->set_host_name(FieldValue(value.host));
            });
    }
    // Anything else: how the record fills the field and the field the record.
    FieldBinding& Loads(Load load) {
        load_ = std::move(load);
        steps_.hasLoad = true;
        return *this;
    }
    FieldBinding& Writes(Write write) {
        write_ = std::move(write);
        steps_.hasWrite = true;
        return *this;
    }
    // Loaded for the administrator to see, never written back.
    FieldBinding& ShownOnly() {
        steps_.shownOnly = true;
        return *this;
    }

    // --- Checks, in the order they are declared -------------------------------
    FieldBinding& Mandatory(std::function<bool()> when = {}) {
        required_ = when ? std::move(when) : [] { return true; };
        return *this;
    }
    FieldBinding& Range(double from, double to) {
        from_ = from;
        to_ = to;
        ranged_ = true;
        return *this;
    }

    // Called by the editor once every binding is declared.
    FieldSteps Finish() {
        auto required = required_;
        const bool ranged = ranged_;
        const double from = from_, to = to_;
        FieldSteps steps = steps_;
        steps.check = [steps, required, ranged, from, to] {
            if (required && required() && !CheckMandatory(steps)) return false;
            return !ranged || CheckRange(steps, from, to);
        };
        return steps;
    }
    void LoadFrom(const Record& record) const {
        if (load_) load_(record);
    }
    // A disabled field skipped its checks, so what it holds is not written:
    // the record keeps the stored value.
    void WriteTo(Record& record) const {
        if (write_ && !steps_.shownOnly && steps_.field->isEnabled()) write_(record);
    }

private:
    FieldSteps steps_;
    Load load_;
    Write write_;
    std::function<bool()> required_;
    bool ranged_ = false;
    double from_ = 0;
    double to_ = 0;
};

}  // namespace winadmin

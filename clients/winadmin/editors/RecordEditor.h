#pragma once
// The frame with a record: what the server sent (the kept record), the copy a
// save writes into, and the field bindings. An editor declares its fields in
// validation order with Bind and its other checks with Check, and supplies
// the calls that fetch, commit and delete its kind of record.

#include <memory>
#include <stdexcept>
#include <string>
#include <vector>

#include "editors/EditorFrame.h"
#include "editors/FieldBinding.h"

namespace winadmin {

template <class Record>
class RecordEditor : public EditorFrame {
protected:
    using EditorFrame::EditorFrame;

    // Declares a field; the checks of its binding run at this place in the
    // validation order.
    FieldBinding<Record>& Bind(QWidget* field, QLabel* label = nullptr, bool watched = true) {
        bindings_.push_back(std::make_unique<FieldBinding<Record>>(field, label));
        checks_.push_back({bindings_.size() - 1, {}});
        if (watched) WatchField(field);
        return *bindings_.back();
    }
    // A check that is not one field's mandatory or range rule (at least one
    // role checked, say); false stops the validation.
    void Check(std::function<bool()> check) { checks_.push_back({npos, std::move(check)}); }

    // The record as the server sent it, and the copy that a save writes.
    const Record& Kept() const { return kept_; }
    Record& Edited() { return edited_; }

    // For an editor that shows parts of its record in turn (a device's
    // lines): the fields written into record as a save writes them, and
    // filled from record as a load fills them.
    void CollectFields(Record& record) const {
        for (const auto& binding : bindings_) binding->WriteTo(record);
    }
    void ShowFields(const Record& record) {
        Loading([&] {
            for (const auto& binding : bindings_) binding->LoadFrom(record);
        });
    }

    // --- What the editor supplies --------------------------------------------
    // The record that Key() or Index() names (is_new with defaults when none).
    virtual Record Fetch() = 0;
    // Commits Edited() for insert and update; deletes Kept() for delete.
    virtual Committed Commit(Action action) = 0;
    // Fields that are no simple binding: lists, references.
    virtual void ClearMore() {}
    virtual void LoadMore() {}
    virtual bool WriteMore() { return true; }

private:
    static constexpr size_t npos = size_t(-1);
    struct CheckStep {
        size_t binding;  // npos: the function below
        std::function<bool()> check;
    };

    void ClearFields() final {
        for (const FieldSteps& steps : Steps()) steps.clear();
        ClearMore();
    }
    void LoadFields() final {
        for (const auto& binding : bindings_) binding->LoadFrom(kept_);
        LoadMore();
    }
    bool ValidateFields() final {
        const std::vector<FieldSteps>& steps = Steps();
        for (const CheckStep& step : checks_) {
            const bool passed = step.binding == npos ? step.check() : steps[step.binding].check();
            if (!passed) return false;
        }
        return true;
    }
    Lookup FetchRecord() final {
        kept_ = Fetch();
        // A kind with one object per installation is never new.
        if constexpr (requires { kept_.is_new(); })
            return kept_.is_new() ? Lookup::NoSuchObject : Lookup::Exists;
        return Lookup::Exists;
    }
    void ReleaseRecord() final {
        kept_ = Record();
        edited_ = Record();
    }
    bool WriteFields() final {
        edited_ = kept_;
        for (const auto& binding : bindings_) binding->WriteTo(edited_);
        return WriteMore();
    }
    Committed CommitRecord(Action action) final { return Commit(action); }
    void AcceptCommit(const Committed& committed) final {
        kept_ = edited_;
        kept_.set_version(committed.version);
        if constexpr (requires { kept_.set_is_new(false); }) kept_.set_is_new(false);
        if constexpr (requires { kept_.set_index(0); })
            if (committed.index) kept_.set_index(committed.index);
    }
    // A field loaded but neither written nor declared ShownOnly is a field
    // whose edits would be lost: the dialog is refused at set-up.
    void FinishSetUp() final {
        steps_.clear();
        for (const auto& binding : bindings_) {
            steps_.push_back(binding->Finish());
            const FieldSteps& steps = steps_.back();
            const std::string name = std::string(metaObject()->className()) + ": " +
                                     steps.field->objectName().toStdString();
            if (steps.hasLoad && !steps.hasWrite && !steps.shownOnly)
                throw std::logic_error(name + " is loaded but never written");
            if (!steps.hasLoad) throw std::logic_error(name + " is bound to no record field");
        }
    }
    const std::vector<FieldSteps>& Steps() const { return steps_; }

    Record kept_;
    Record edited_;
    std::vector<std::unique_ptr<FieldBinding<Record>>> bindings_;
    std::vector<FieldSteps> steps_;
    std::vector<CheckStep> checks_;
};

}  // namespace winadmin

#pragma once
// The lifecycle every properties dialog shares, checked once here and run by
// each editor's test in a few lines: a request that names no object (or no
// server) closes with "0"; the save question's three answers; a save, then
// edits, then No still answers "-1"; a taken key asks and Yes opens that
// object; a new key keeps the details and OK disabled; loading never counts
// as an edit; Enter in the key field never presses OK.

#include <QString>
#include <functional>
#include <memory>

#include "common/FormParameters.h"
#include "editors/EditorFrame.h"

namespace winadmin {

class EditorDriver;
class ScriptedPrompter;

// The tests' view of the frame's lifecycle routines, which the dialog keeps
// to itself.
class EditorFrameProbe {
public:
    // Saves what is modified without closing; answers whether it was saved.
    static bool Save(EditorFrame& editor);
};

// What the checks need to know of one editor.
struct LifecycleSubject {
    std::function<std::unique_ptr<EditorFrame>()> make;
    FormParameterList open;     // opens a stored object
    FormParameterList missing;  // names no object; empty for a keyless editor
    QString notExistText;
    FormParameterList missingServer;  // names a server that is not there, if the editor has one
    FormParameterList create;         // starts a new object; empty when there is none
    // Keyed editors: the key field, a key that is taken, its message.
    const char* keyField = nullptr;
    QString takenKey;
    QString existsText;
    // One edit that passes validation, made as a person makes it, and the
    // version of the stored object that open names (it grows with a save).
    std::function<void(EditorDriver&)> edit;
    std::function<int64_t()> storedVersion;
};

// An edit for LifecycleSubject::edit: types the prefix and a number that
// grows with each call, so that every call changes the field.
std::function<void(EditorDriver&)> TypeCounted(const char* field, const QString& prefix);

// Runs every check that fits the subject; a failed check ends the test case
// with its message.
void CheckLifecycle(const LifecycleSubject& subject, ScriptedPrompter& prompter);

}  // namespace winadmin

#pragma once
// The image list of the explorer: one icon per object kind word, the picture
// the kinds table names. Tree nodes and list rows carry their kind word as
// icon key, so every view asks here.

#include <QIcon>
#include <QString>

#include "lists/Kinds.h"

namespace winadmin {

// The icon drawn for a kind word ("Users", "User", "LCR", ...). Words are
// compared exactly, as the explorer compares them; an unknown word answers
// an empty icon. Icons are loaded once and shared.
QIcon KindIcon(const QString& kind);

// Registers the console's pictures and help pages (":/kinds", ":/brand",
// ":/app", ":/help"). They live in a static library, whose resources the
// linker keeps only when something asks for them; every user of a resource
// path calls this first. Cheap after the first call.
void LoadConsoleResources();

}  // namespace winadmin

#pragma once
// F1 in a dialog: the page of the user guide about that dialog. The guide and
// its viewer belong to the shell, which sits above every dialog; the shell
// hands its viewer in at start-up and the dialogs only name their topic.

#include <QString>
#include <functional>

class QWidget;

namespace winadmin {

// Shows the guide at topic (an anchor of the guide's first page) over dialog.
using HelpHandler = std::function<void(QWidget* dialog, const QString& topic)>;

// Replaces the handler; an empty one leaves F1 without effect.
void SetHelpHandler(HelpHandler handler);

// F1 anywhere in dialog's window shows topic. The key is the dialog's own,
// so that it still answers while the dialog is modal over the main window.
void InstallHelpKey(QWidget* dialog, const QString& topic);

// What F1 shows for dialog; "" for a dialog without a topic.
QString HelpTopicOf(const QWidget* dialog);

}  // namespace winadmin

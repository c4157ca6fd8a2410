#pragma once
// What the console's window tests set up around each case: settings in a
// file of their own, the scripted prompter, and the reference server with
// the console's one session on it. Plus the few steps every such test takes:
// finding a named control, typing and clicking as a person does, acting on a
// window that a modal loop shows.

#include <QApplication>
#include <QTemporaryDir>
#include <QTimer>
#include <functional>
#include <memory>

#include "lists/ViewSettings.h"
#include "support/ScriptedPrompter.h"
#include "support/TestServer.h"

class QAbstractItemView;
class QLineEdit;

namespace winadmin {

class ServerSession;

TestServer::Options ServerOptions(const char* brand = "", const char* language = "",
                                  bool tcp = false);

// The console's settings under the product key of the session's brand, in
// the main window's section unless another is named; kUnset for a value
// never saved.
inline const QString kUnset = QStringLiteral("<unset>");
QString StoredSetting(const QString& name, const QString& section = kMainFormSection);
void StoreSetting(const QString& name, const QString& value,
                  const QString& section = kMainFormSection);

// Shows the window and waits until it is active; false when it never is.
bool ShowActive(QWidget& window);

// Replaces the field's text from the keyboard: select all, type (an empty
// text deletes the selection). The focus stays where it is.
void Retype(QLineEdit* field, const QString& text);
// Ctrl+V with the text on the clipboard.
void Paste(QLineEdit* field, const QString& text);

// The centre of a list row, scrolled into view.
QPoint RowPoint(QAbstractItemView* view, int row);
// A click on the row; a double click starts as a click, as a person's does.
void ClickRow(QAbstractItemView* view, int row, Qt::KeyboardModifiers modifiers = {},
              bool doubleClick = false);

template <class W>
W* Child(const QObject& parent, const char* name) {
    return parent.findChild<W*>(QLatin1String(name));
}

// Calls act with the first visible top-level window of type W once there is
// one. Modal loops (dialogs, message boxes, the start-up) leave a test only a
// timer to act from.
template <class W>
void WhenShown(std::function<void(W&)> act) {
    auto* poll = new QTimer(qApp);
    poll->setInterval(5);
    QObject::connect(poll, &QTimer::timeout, poll, [poll, act] {
        for (QWidget* window : QApplication::topLevelWidgets()) {
            auto* wanted = qobject_cast<W*>(window);
            if (!wanted || !wanted->isVisible()) continue;
            poll->stop();
            poll->deleteLater();
            act(*wanted);
            return;
        }
    });
    poll->start();
}

class ConsoleFixture {
public:
    ConsoleFixture();
    ~ConsoleFixture();
    ConsoleFixture(const ConsoleFixture&) = delete;
    ConsoleFixture& operator=(const ConsoleFixture&) = delete;

    // For cleanup(): tears the fixture down, then answers the scripted
    // answers no prompt used, so that a failed check still leaves the next
    // case a clean process.
    static int Close(std::unique_ptr<ConsoleFixture>& fixture);

    // A fresh server (the session of an earlier one goes); login dialogs
    // open their session on it.
    TestServer& StartServer(const TestServer::Options& options = {});
    // A fresh server and, logged in to it, the console's session.
    ServerSession& LogIn(const TestServer::Options& options = {});

    QString SettingsFile() const;

    ScriptedPrompter prompter;
    std::unique_ptr<TestServer> server;

private:
    QTemporaryDir settingsDir_;
};

// The test object of a suite on this fixture: a fresh fixture for each case,
// with a server (logged in, or only listening for a login dialog) in the
// language the suite names, and after the case no scripted answer left
// unused. SetUp and TearDown add what a suite needs around each case.
class ConsoleSuite : public QObject {
    Q_OBJECT

protected:
    enum class Server { None, Listening, LoggedIn };
    explicit ConsoleSuite(Server server = Server::LoggedIn, const char* language = "")
        : server_(server), language_(language) {}
    virtual void SetUp() {}
    virtual void TearDown() {}

    std::unique_ptr<ConsoleFixture> fx_;

private slots:
    void init();
    void cleanup();

private:
    Server server_;
    const char* language_;
};

}  // namespace winadmin

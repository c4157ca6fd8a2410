#include "common/QtPrompter.h"

#include <QApplication>
#include <QCloseEvent>
#include <QFileDialog>
#include <QInputDialog>
#include <QKeyEvent>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QRegularExpression>
#include <utility>

#include "common/AppContext.h"

namespace winadmin {

namespace {

// One table for both directions, so an answer and its button never disagree.
constexpr std::pair<int, QMessageBox::StandardButton> kButtons[] = {
    {Answer::OK, QMessageBox::Ok},         {Answer::Cancel, QMessageBox::Cancel},
    {Answer::Abort, QMessageBox::Abort},   {Answer::Retry, QMessageBox::Retry},
    {Answer::Ignore, QMessageBox::Ignore}, {Answer::Yes, QMessageBox::Yes},
    {Answer::No, QMessageBox::No},
};

QMessageBox::StandardButton ButtonFor(int answer) {
    for (const auto& [code, button] : kButtons)
        if (code == answer) return button;
    return QMessageBox::NoButton;
}

int AnswerFor(QMessageBox::StandardButton button) {
    for (const auto& [code, standard] : kButtons)
        if (standard == button) return code;
    return 0;
}

QMessageBox::Icon IconFor(PromptIcon icon) {
    switch (icon) {
        case PromptIcon::None:
            return QMessageBox::NoIcon;
        case PromptIcon::Critical:
            return QMessageBox::Critical;
        case PromptIcon::Question:
            return QMessageBox::Question;
        case PromptIcon::Exclamation:
            return QMessageBox::Warning;
        case PromptIcon::Information:
            return QMessageBox::Information;
    }
    return QMessageBox::NoIcon;
}

// QMessageBox would let Escape and the close button answer Abort in an
// Abort/Retry/Ignore box; the administrator has to choose one of the three.
class PromptBox final : public QMessageBox {
public:
    using QMessageBox::QMessageBox;
    bool escapable = true;

protected:
    void keyPressEvent(QKeyEvent* event) override {
        if (!escapable && event->matches(QKeySequence::Cancel)) {
            event->accept();
            return;
        }
        QMessageBox::keyPressEvent(event);
    }
    void closeEvent(QCloseEvent* event) override {
        if (!escapable) {
            event->ignore();
            return;
        }
        QMessageBox::closeEvent(event);
    }
};

// Work that failed may leave the hourglass up; the box needs the normal
// pointer while it shows, and the work's own busy state must be intact
// afterwards.
class NormalPointer {
public:
    NormalPointer() : active_(QGuiApplication::overrideCursor() != nullptr) {
        if (active_) QGuiApplication::setOverrideCursor(Qt::ArrowCursor);
    }
    ~NormalPointer() {
        if (active_) QGuiApplication::restoreOverrideCursor();
    }
    NormalPointer(const NormalPointer&) = delete;
    NormalPointer& operator=(const NormalPointer&) = delete;

private:
    bool active_;
};

}  // namespace

int QtPrompter::Show(const Prompt& prompt) {
    const QList<int> answers = AnswersOf(prompt.buttons);
    PromptBox box(QApplication::activeWindow());
    box.setIcon(IconFor(prompt.icon));
    box.setWindowTitle(prompt.title.isEmpty() ? ApplicationTitle() : prompt.title);
    // Messages quote names such as "<Unknown>"; they must never be read as markup.
    box.setTextFormat(Qt::PlainText);
    // Messages break their lines with a carriage return alone, which a plain
    // text label does not take for a line break.
    QString text = prompt.text;
    text.replace(QLatin1String("\r\n"), QLatin1String("\n"))
        .replace(QLatin1Char('\r'), QLatin1Char('\n'));
    box.setText(text);

    int escapeAnswer = 0;
    for (int answer : answers) {
        QAbstractButton* button = box.addButton(ButtonFor(answer));
        if (answer == Answer::Cancel || (answer == Answer::No && escapeAnswer == 0)) {
            escapeAnswer = answer;
            box.setEscapeButton(button);
        }
    }
    if (answers.size() == 1) escapeAnswer = answers.first();
    box.escapable = escapeAnswer != 0;
    if (!box.escapable) box.setWindowFlag(Qt::WindowCloseButtonHint, false);

    const int index = prompt.defaultButton - 1;
    const int defaultAnswer = index >= 0 && index < answers.size() ? answers[index] : answers[0];
    box.setDefaultButton(ButtonFor(defaultAnswer));

    const NormalPointer pointer;
    box.exec();
    const int answer = AnswerFor(box.standardButton(box.clickedButton()));
    // A box closed from outside (the application quitting) counts as
    // dismissed the way Escape would have done it.
    if (answer != 0) return answer;
    return escapeAnswer != 0 ? escapeAnswer : defaultAnswer;
}

void QtPrompter::Beep() {
    QApplication::beep();
}

QString QtPrompter::AskSaveFileName(const QString& title, const QString& filter) {
    const NormalPointer pointer;
    return QFileDialog::getSaveFileName(QApplication::activeWindow(), title, QString(),
                                        QtFileFilter(filter));
}

std::optional<QString> QtPrompter::AskPassword(const QString& title, const QString& text) {
    const NormalPointer pointer;
    bool ok = false;
    const QString password = QInputDialog::getText(QApplication::activeWindow(), title, text,
                                                   QLineEdit::Password, QString(), &ok);
    if (!ok) return std::nullopt;
    return password;
}

QString QtFileFilter(const QString& classicFilter) {
    if (classicFilter.isEmpty()) return {};
    // Qt reads the patterns from a parenthesised list at the end of the name.
    static const QRegularExpression namesPatterns(QStringLiteral("\\([^()]*\\)\\s*$"));
    const QStringList parts = classicFilter.split(u'|');
    QStringList filters;
    for (qsizetype i = 0; i < parts.size(); i += 2) {
        const QString description = parts.at(i).trimmed();
        const QString patterns = i + 1 < parts.size()
                                     ? parts.at(i + 1).split(u';', Qt::SkipEmptyParts).join(u' ')
                                     : QString();
        if (description.contains(namesPatterns) || patterns.isEmpty())
            filters << description;
        else
            filters << QStringLiteral("%1 (%2)").arg(description, patterns.trimmed());
    }
    return filters.join(QStringLiteral(";;"));
}

}  // namespace winadmin

#pragma once
// The options dialog: the server time-out the session uses for every call and
// the lowest event severity the event views show.

#include <QDialog>
#include <memory>

namespace Ui {
class frmOptions;
}

namespace winadmin {

class frmOptions : public QDialog {
    Q_OBJECT

public:
    explicit frmOptions(QWidget* parent = nullptr);
    ~frmOptions() override;

    // Severity codes in the order the list offers them.
    static const QStringList& SeverityKeys();

public slots:
    void accept() override;

private:
    // Answers false after telling the administrator what is wrong, with the
    // focus on the field to correct.
    bool ValidateFields();
    void RefuseTimeout(const QString& message);

    std::unique_ptr<Ui::frmOptions> ui;
};

}  // namespace winadmin

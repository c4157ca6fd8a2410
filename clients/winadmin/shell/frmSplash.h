#pragma once
// The splash window shown while the main window loads. Loading it settles
// the brand: the application title and the logo follow the word the server
// reports.

#include <QPixmap>
#include <QSize>
#include <QWidget>
#include <memory>

namespace Ui {
class frmSplash;
}

namespace winadmin {

class frmSplash : public QWidget {
    Q_OBJECT

public:
    explicit frmSplash(QWidget* parent = nullptr);
    ~frmSplash() override;

private:
    void Form_Load();

    std::unique_ptr<Ui::frmSplash> ui;
};

// A brand logo drawn from its resource at the size it is shown, sharp on
// screens with more than one device pixel per pixel. A null pixmap when the
// picture cannot be read.
QPixmap LogoPixmap(const QString& resourcePath, const QSize& size, qreal devicePixelRatio = 1.0);

// "Version " followed by the server's version label, as splash and About
// box show it.
QString VersionLine();

}  // namespace winadmin

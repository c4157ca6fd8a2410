#include "shell/frmSplash.h"

#include <QPainter>
#include <QSvgRenderer>
#include <exception>

#include "common/AppContext.h"
#include "common/Labels.h"
#include "lists/KindIcons.h"
#include "session/ServerSession.h"
#include "ui_frmSplash.h"

namespace winadmin {

namespace {

// Each step of the load stands alone: a splash that cannot show the logo or
// the version must not keep the console from starting.
template <class F>
void IgnoringErrors(F&& step) {
    try {
        step();
    } catch (const std::exception&) {
    }
}

}  // namespace

QPixmap LogoPixmap(const QString& resourcePath, const QSize& size, qreal devicePixelRatio) {
    QSvgRenderer renderer(resourcePath);
    if (!renderer.isValid() || size.isEmpty()) return {};
    // Kept in proportion inside size, so a logo is never stretched.
    QSize drawn = renderer.defaultSize();
    drawn.scale(size, Qt::KeepAspectRatio);
    QPixmap pixmap(drawn * devicePixelRatio);
    pixmap.setDevicePixelRatio(devicePixelRatio);
    pixmap.fill(Qt::transparent);
    QPainter painter(&pixmap);
    painter.setRenderHint(QPainter::Antialiasing);
    renderer.render(&painter, QRectF(QPointF(0, 0), QSizeF(drawn)));
    return pixmap;
}

QString VersionLine() {
    return QStringLiteral("Version ") + GetLabel(QStringLiteral("version"));
}

frmSplash::frmSplash(QWidget* parent)
    : QWidget(parent, Qt::SplashScreen | Qt::FramelessWindowHint),
      ui(std::make_unique<Ui::frmSplash>()) {
    LoadConsoleResources();
    ui->setupUi(this);
    Form_Load();
}

frmSplash::~frmSplash() = default;

void frmSplash::Form_Load() {
    IgnoringErrors([&] { ApplyFormLabels(this); });

    QString brandWord;
    IgnoringErrors([&] {
        if (ServerSession* session = TheSession()) brandWord = session->GetBrand().toLower();
    });
    IgnoringErrors([&] {
        const Brand brand = BrandFor(brandWord);
        SetApplicationTitle(brand.title);
        // An unknown brand shows no picture at all rather than another
        // brand's logo.
        ui->picLogo->clear();
        if (!brand.logoPath.isEmpty())
            ui->picLogo->setPixmap(
                LogoPixmap(brand.logoPath, ui->picLogo->minimumSize(), devicePixelRatioF()));
    });
    IgnoringErrors(
        [&] { SetApplicationTitle(ApplicationTitle() + QStringLiteral(" Administrator")); });
    IgnoringErrors([&] { ui->lblVersion->setText(VersionLine()); });
    IgnoringErrors([&] { ui->lblProductName->setText(ApplicationTitle()); });
}

}  // namespace winadmin

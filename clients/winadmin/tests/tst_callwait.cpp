// A call that waits on a server that does not answer: the console keeps
// painting, shows the wait pointer, tells periodic work that a call waits,
// and the session's time-out still ends the call.

#include <QApplication>
#include <QElapsedTimer>
#include <QTest>
#include <QTimer>
#include <QWidget>

#include "session/GrpcServerSession.h"
#include "support/Loopback.h"

using namespace winadmin;

namespace {

class PaintCounter : public QWidget {
public:
    int paints = 0;

protected:
    void paintEvent(QPaintEvent*) override { ++paints; }
};

}  // namespace

class TestCallWait : public QObject {
    Q_OBJECT

private slots:
    void HungServerKeepsTheConsolePainting();
};

void TestCallWait::HungServerKeepsTheConsolePainting() {
    QTcpServer silent;
    const QString host = SilentLoopbackHost(silent);
    QVERIFY(!host.isEmpty());
    GrpcServerSession session(grpc::CreateCustomChannel(host.toStdString(),
                                                        grpc::InsecureChannelCredentials(),
                                                        GrpcServerSession::ChannelArguments()));
    session.SetTimeout(2);

    PaintCounter window;
    window.resize(200, 100);
    window.show();
    QVERIFY(QTest::qWaitForWindowExposed(&window));
    QTimer repaint;
    repaint.setInterval(50);
    connect(&repaint, &QTimer::timeout, &window, qOverload<>(&QWidget::update));
    repaint.start();
    bool waitingSeen = false;
    Qt::CursorShape pointer = Qt::ArrowCursor;
    QTimer::singleShot(1200, &window, [&] {
        waitingSeen = session.CallInProgress();
        if (const QCursor* cursor = QApplication::overrideCursor()) pointer = cursor->shape();
    });
    const int paintsBefore = window.paints;
    QElapsedTimer clock;
    clock.start();
    uint number = 0;
    try {
        session.Servers();
    } catch (const SessionError& error) {
        number = error.Number();
    }
    const qint64 elapsed = clock.elapsed();

    // The time-out ended the call, as it does when the call blocks.
    QCOMPARE(QString::number(number, 16), QStringLiteral("81000001"));
    QVERIFY2(elapsed >= 1900 && elapsed < 10000, qPrintable(QString::number(elapsed)));
    // Meanwhile the window painted and timers ran, and they saw the call
    // waiting under the wait pointer.
    QVERIFY2(window.paints - paintsBefore >= 5, qPrintable(QString::number(window.paints)));
    QVERIFY(waitingSeen);
    QCOMPARE(pointer, Qt::WaitCursor);
    // Nothing of the wait is left behind.
    QVERIFY(!session.CallInProgress());
    QCOMPARE(QApplication::overrideCursor(), nullptr);
}

QTEST_MAIN(TestCallWait)
#include "tst_callwait.moc"

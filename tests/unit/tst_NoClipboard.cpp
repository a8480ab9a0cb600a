#include "app/AppState.h"
#include "support/TestMain.h"

#include <QCoreApplication>
#include <QSignalSpy>
#include <QTest>

using namespace Qt::StringLiterals;

/// Runs in a program without a display, and so without a clipboard.
class TestNoClipboard : public QObject
{
    Q_OBJECT

private slots:
    void copyText_statusIsSetAllTheSame();
};

void TestNoClipboard::copyText_statusIsSetAllTheSame()
{
    AppState state;
    QSignalSpy changes(&state, &AppState::statusChanged);
    state.copyText(u"ABC"_s, u"VIN"_s);
    QCOMPARE(state.status(), u"VIN copied."_s);
    QCOMPARE(state.statusOK(), 1);
    QCOMPARE(changes.count(), 1);
}

int main(int argc, char **argv)
{
    const TestEnvironment environment;
    const QCoreApplication application(argc, argv);
    TestNoClipboard test;
    return QTest::qExec(&test, argc, argv);
}
#include "tst_NoClipboard.moc"

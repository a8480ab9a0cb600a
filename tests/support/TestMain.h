#pragma once

#include <QApplication>
#include <QList>
#include <QObject>
#include <QString>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

/// Gives the process its own home, configuration and temporary folder, and no display, proxy or deployment
/// file. Created before the application object, which reads some of these once.
class TestEnvironment
{
public:
    TestEnvironment();

    static QString home();
    /// The folder that the platform reports for documents in this home. It does not exist at first.
    static QString documents();

private:
    QTemporaryDir m_root;
};

/// Whether to try every operation with every fault, and as many files as are promised
/// (KVTEDITOR_EXHAUSTIVE=1), which takes minutes.
bool isExhaustive();

/// Stands in for the desktop: records every address that the program asks it to open.
class UrlRecorder : public QObject
{
    Q_OBJECT

public:
    /// From now on receives addresses of the schemes file, http and https.
    UrlRecorder();
    ~UrlRecorder() override;

    QList<QUrl> opened;

public slots:
    void open(const QUrl &url);
};

template <typename Test> int runTestProgram(int argc, char **argv)
{
    const TestEnvironment environment;
    QApplication application(argc, argv);
    // In every test program, so that no mistake can open a browser.
    const UrlRecorder recorder;
    Test test;
    return QTest::qExec(&test, argc, argv);
}

#define KVTEDITOR_TEST_MAIN(TestClass)                                                                       \
    int main(int argc, char **argv)                                                                          \
    {                                                                                                        \
        return runTestProgram<TestClass>(argc, argv);                                                        \
    }

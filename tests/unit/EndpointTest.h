#pragma once

#include "EndpointFixture.h"
#include "support/RawHttpServer.h"
#include "support/TestMain.h"

#include <QByteArray>
#include <QList>
#include <QObject>
#include <QString>
#include <QStringList>

#include <memory>

/// What the status line has to say; "!" at its end stands for one of Qt's error texts.
struct EndpointOutcome
{
    QString status;
    int level = 0;
    /// Whether the body was saved as a file.
    bool saved = false;
};

/// A worker's shortest good answer: {"status":"ok"}.
extern const QByteArray bareObject;
/// The same with its member twice: the last one counts.
extern const QByteArray bareObjectTwice;

/// What the operation makes of this body, `failed` when it came beside a transport error.
EndpointOutcome expectedOutcome(const EndpointOperation &operation, bool failed, const QByteArray &body,
                                int httpStatus = 200);
const EndpointOperation &operationAt(int index);
const EndpointOperation &operationNamed(QByteArrayView name);
/// Whether everything is to meet every fault, as KVTEDITOR_EXHAUSTIVE=1 asks for; that takes minutes.
bool isExhaustive();
/// The operations that meet every fault: one for each way in which the client sends. What an operation makes
/// of an answer hangs on the outcome alone, and the few faults that stand for the outcomes are met by all.
QList<int> operationsToTry();
QList<int> allOperations();
/// A column "operation" with an index into all of them, and a row for each to try.
void addOperationRows();
/// The differences of two snapshots, for comparing with an empty list.
QStringList differences(const Snapshot &before, const Snapshot &after);
/// Only what belongs to the open file and the disk.
Snapshot fileAndDisk(Snapshot snapshot);
/// Where the operation puts the file that comes.
QString savedPath(const EndpointOperation &operation);
/// The snapshot as it is after the operation saved these bytes. A file without any is never opened.
Snapshot withSavedFile(const EndpointOperation &operation, Snapshot snapshot, const QByteArray &body);

/// A controller at work before a server of the test's own, anew for each row. Its test functions start an
/// operation, let something go wrong, and check what has to follow.
class EndpointTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

protected:
    /// Starts it and notes what must still be there when it has failed.
    void begin(const EndpointOperation &operation);
    void checkExactly(const EndpointOperation &operation, const EndpointOutcome &outcome,
                      const QByteArray &body);
    /// Whatever came of it: it failed and changed nothing, or it worked and touched only its own things.
    void checkLoosely(const EndpointOperation &operation);
    /// One text for each step that was done, and none that the operation does not say.
    void checkStatuses(const EndpointOperation &operation);
    /// How often the server, which gave this answer, was connected to and asked.
    void checkRequests(const EndpointOperation &operation, const RawAnswer &answer);
    /// Before the test's own server again.
    void checkNextGoodOne(const EndpointOperation &operation);

    std::unique_ptr<RawHttpServer> m_server;
    std::unique_ptr<UrlRecorder> m_desktop;
    std::unique_ptr<EndpointFixture> m_fixture;
    Snapshot m_before;
    /// What the status line said since the operation was started.
    QStringList m_said;

private:
    QMetaObject::Connection m_listening;
};

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

/// The expected status text; "!" at its end stands for one of Qt's error texts.
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

/// The expected outcome for this body; `failed` when there was also a transport error.
EndpointOutcome expectedOutcome(const EndpointOperation &operation, bool failed, const QByteArray &body,
                                int httpStatus = 200);
const EndpointOperation &operationAt(int index);
const EndpointOperation &operationNamed(QByteArrayView name);
/// The operations to try with every fault: one for each way of sending. How an operation handles an answer
/// depends only on the outcome, and the few faults that represent the outcomes are tried with all operations.
QList<int> operationsToTry();
QList<int> allOperations();
/// A column "operation" with an index into all of them, and a row for each to try.
void addOperationRows();
/// The differences of two snapshots, for comparing with an empty list.
QStringList differences(const Snapshot &before, const Snapshot &after);
/// Only what belongs to the open file and the disk.
Snapshot fileAndDisk(Snapshot snapshot);
/// Where the operation saves the received file.
QString savedPath(const EndpointOperation &operation);
/// The snapshot after the operation saved these bytes. An empty file is never opened.
Snapshot withSavedFile(const EndpointOperation &operation, Snapshot snapshot, const QByteArray &body);

/// A controller in use with the test's own server, new for each row. Test functions start an operation, cause
/// a fault, and check the consequences.
class EndpointTest : public QObject
{
    Q_OBJECT

private slots:
    void init();
    void cleanup();

protected:
    /// Starts the operation and records what must be unchanged if it fails.
    void begin(const EndpointOperation &operation);
    void checkExactly(const EndpointOperation &operation, const EndpointOutcome &outcome,
                      const QByteArray &body);
    /// Either it failed and changed nothing, or it succeeded and changed only what belongs to it.
    void checkLoosely(const EndpointOperation &operation);
    /// One text for each step done, and no others.
    void checkStatuses(const EndpointOperation &operation);
    /// Number of connections to the server that gave this answer, and of requests.
    void checkRequests(const EndpointOperation &operation, const RawAnswer &answer);
    /// Replaces the test's server by a new one.
    void checkNextGoodOne(const EndpointOperation &operation);

    std::unique_ptr<RawHttpServer> m_server;
    std::unique_ptr<UrlRecorder> m_desktop;
    std::unique_ptr<EndpointFixture> m_fixture;
    Snapshot m_before;
    /// The status texts since the operation was started.
    QStringList m_said;

private:
    QMetaObject::Connection m_listening;
};

#pragma once

#include "app/AppState.h"

#include <QByteArray>
#include <QMap>
#include <QString>
#include <QTemporaryDir>

#include <span>

/// How an operation reads what comes back.
enum class Decoding
{
    /// A JSON object or nothing, and no word on the status line.
    Silent,
    /// A JSON object; a transport error, or a body that is none, is a failure.
    Json,
    /// A JSON object; a body that is none counts as an empty one.
    Get,
    /// Whatever bytes came; a transport error counts only without any.
    Bytes,
    /// A file, saved, or a worker's JSON.
    Worker,
    /// A worker's JSON; a file counts as an empty one.
    Preview
};

/// What becomes of a file that came.
enum class Destination
{
    Documents,
    DocumentsAndOpened,
    TemporaryAndOpened
};

/// One thing that the user can do and that asks the service.
struct EndpointOperation
{
    const char *name;
    /// Below the API base.
    const char *path;
    Decoding decoding;
    void (*start)(AppState &state, const QString &folder);
    const char *goodAnswer;
    const char *goodStatus;
    /// Requests in all when the first one is answered well.
    int goodRequests;
    /// What {"status":"ok"} leads to.
    const char *bareStatus;
    int bareLevel;
    /// The name of the file that comes of bytes, and what the status line says then.
    const char *savedName = "";
    const char *savedStatus = "";
    Destination destination = Destination::Documents;
};

std::span<const EndpointOperation> endpointOperations();

/// All that an operation that failed has to leave alone, by name.
using Snapshot = QMap<QString, QVariant>;

/// A controller at work: an edited file is open, and each feature holds what an earlier answer brought.
class EndpointFixture
{
public:
    EndpointFixture();
    ~EndpointFixture();

    /// Fills the features from a server of its own; false when one of them stayed empty.
    bool fill();
    /// From now on every file that an operation sends has so many bytes.
    void resizeInputs(int size);
    void setApiBase(const QString &base) { m_state->findChild<VoxApiClient *>()->setApiBase(base); }
    void start(const EndpointOperation &operation) { operation.start(*m_state, m_folder.path()); }
    /// Waits until no request is under way.
    bool settle();
    Snapshot snapshot() const;
    AppState &state() { return *m_state; }
    /// Where the files are that the operations send.
    QString folder() const { return m_folder.path(); }
    void destroyController() { m_state.reset(); }
    /// From now on the controller is the caller's to destroy, and the fixture has none.
    AppState *releaseController() { return m_state.release(); }

private:
    QTemporaryDir m_folder;
    std::unique_ptr<AppState> m_state = std::make_unique<AppState>();
};

/// Every file in the documents and the temporary folder, with its content.
QMap<QString, QByteArray> filesOnDisk();

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
    /// A JSON object or nothing, and no text on the status line.
    Silent,
    /// A JSON object; a transport error, or any other body, is a failure.
    Json,
    /// A JSON object; any other body counts as an empty one.
    Get,
    /// All bytes received; a transport error counts only without any.
    Bytes,
    /// A file, saved, or a worker's JSON.
    Worker,
    /// A worker's JSON; a file counts as an empty one.
    Preview
};

/// Where a received file goes.
enum class Destination
{
    Documents,
    DocumentsAndOpened,
    TemporaryAndOpened
};

/// A user action that sends a request to the service.
struct EndpointOperation
{
    const char *name;
    /// Below the API base.
    const char *path;
    Decoding decoding;
    void (*start)(AppState &state, const QString &folder);
    const char *goodAnswer;
    const char *goodStatus;
    /// Number of requests when the first one gets a good answer.
    int goodRequests;
    /// What {"status":"ok"} leads to.
    const char *bareStatus;
    int bareLevel;
    /// The file that received bytes are saved as, and the status text then.
    const char *savedName = "";
    const char *savedStatus = "";
    Destination destination = Destination::Documents;
};

std::span<const EndpointOperation> endpointOperations();

/// Everything that a failed operation must not change, by name.
using Snapshot = QMap<QString, QVariant>;

/// A controller in use: an edited file is open, and each feature holds the data of an earlier answer.
class EndpointFixture
{
public:
    EndpointFixture();
    ~EndpointFixture();

    /// Fills the features from a server of its own; false when one of them stayed empty.
    bool fill();
    /// From now on every file that an operation sends has this size.
    void resizeInputs(int size);
    void setApiBase(const QString &base) { m_state->findChild<VoxApiClient *>()->setApiBase(base); }
    void start(const EndpointOperation &operation) { operation.start(*m_state, m_folder.path()); }
    /// Waits until no request is in progress.
    bool settle();
    Snapshot snapshot() const;
    AppState &state() { return *m_state; }
    /// The folder with the files that the operations send.
    QString folder() const { return m_folder.path(); }
    void destroyController() { m_state.reset(); }
    /// From now on the caller owns the controller, and the fixture has none.
    AppState *releaseController() { return m_state.release(); }

private:
    QTemporaryDir m_folder;
    std::unique_ptr<AppState> m_state = std::make_unique<AppState>();
};

/// Every file in the documents and the temporary folder, with its content.
QMap<QString, QByteArray> filesOnDisk();

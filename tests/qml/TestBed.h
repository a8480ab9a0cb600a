#pragma once

#include "app/AppState.h"
#include "support/RawHttpServer.h"
#include "support/TestMain.h"

#include <QList>
#include <QObject>
#include <QPointF>
#include <QQmlEngine>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

/// What the view tests need beside the views, known to them as `bed`: a fresh controller as `app`, whose
/// service is a loopback server that takes every request and never answers.
class TestBed : public QObject
{
    Q_OBJECT

public:
    explicit TestBed(const UrlRecorder *opened);

public slots:
    void qmlEngineAvailable(QQmlEngine *engine);

public:
    /// Gives the views a controller as at the start of the program.
    Q_INVOKABLE void reset();
    /// Writes a file of zeros that ends in `tail`, and opens it in the workspace.
    Q_INVOKABLE void openFile(const QString &name, int size, const QString &tail = {});
    /// Writes a file of zeros into the bed's folder, or a folder below it.
    Q_INVOKABLE void writeFile(const QString &name, int size = 32);
    /// Drags what is at these addresses into the window and lets go of it there; tells whether it was taken.
    Q_INVOKABLE bool drop(QObject *window, const QPointF &place, const QList<QUrl> &urls);
    /// Fills the hex editor's buffer with bytes that count from 0.
    Q_INVOKABLE void fillHex(int size);
    Q_INVOKABLE void applyInfo(const QVariantMap &answer);
    /// Keeps the controller busy with a conversion.
    Q_INVOKABLE void startConversion();
    Q_INVOKABLE QUrl urlOf(const QString &path) const { return QUrl::fromLocalFile(path); }
    /// As text, with everything encoded that a URL may not hold.
    Q_INVOKABLE QString encodedUrlOf(const QString &path) const;
    Q_INVOKABLE QString tempPath(const QString &name) const;
    Q_INVOKABLE bool fileExists(const QString &path) const;
    /// The bodies of all requests so far.
    Q_INVOKABLE QString requestBodies() const;
    Q_INVOKABLE QString lastRequestLine() const;
    Q_INVOKABLE int requestCount() const { return m_server.requestCount(); }
    Q_INVOKABLE int connectionCount() const { return m_server.connectionCount(); }
    /// An address on the server, for texts that must not be fetched.
    Q_INVOKABLE QString address(const QString &path) const;
    Q_INVOKABLE QStringList openedUrls() const;

private:
    const UrlRecorder *m_opened;
    RawHttpServer m_server;
    QQmlEngine *m_engine = nullptr;
    AppState *m_app = nullptr;
    QTemporaryDir m_folder;
};

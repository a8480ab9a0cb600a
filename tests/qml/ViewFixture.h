#pragma once

#include "app/AppState.h"
#include "support/RawHttpServer.h"
#include "support/TestMain.h"

#include <QList>
#include <QObject>
#include <QPointF>
#include <QQmlEngine>
#include <QQuickItem>
#include <QString>
#include <QStringList>
#include <QUrl>
#include <QVariantMap>

/// What the view tests need beside the views, known to them as `fixture`: a fresh controller as `app`, whose
/// service is a loopback server that takes every request and never answers.
class ViewFixture : public QObject
{
    Q_OBJECT

public:
    explicit ViewFixture(const UrlRecorder *opened);

public slots:
    void qmlEngineAvailable(QQmlEngine *engine);

public:
    /// Gives the views a controller as at the start of the program.
    Q_INVOKABLE void reset();
    /// Writes a file of zeros that ends in `tail`, and opens it in the workspace.
    Q_INVOKABLE void openFile(const QString &name, int size, const QString &tail = {});
    /// Writes a file of zeros into the fixture's folder, or a folder below it.
    Q_INVOKABLE void writeFile(const QString &name, int size = 32);
    Q_INVOKABLE void removeFile(const QString &name);
    Q_INVOKABLE void link(const QString &target, const QString &name);
    Q_INVOKABLE void removeFolder(const QString &name);
    /// Writes a file whose name is not valid text, "caf\xe9.kvt", into a folder of the fixture's.
    Q_INVOKABLE void writeUndecodable(const QString &folder);
    /// Removes it, which Qt's own clearing up cannot; tells whether there was one.
    Q_INVOKABLE bool removeUndecodable(const QString &folder);
    /// The files of a folder that Qt lists: Qt 6.8 stops at a name that is no text.
    Q_INVOKABLE QStringList files(const QString &folder) const;
    /// The first bytes of a file.
    Q_INVOKABLE QString start(const QString &path, int size) const;
    /// Drags what is at these addresses to a place in the window, from outside, with the key for moving held;
    /// tells whether it would be taken.
    Q_INVOKABLE bool dragTo(QObject *window, const QPointF &place, const QList<QUrl> &urls);
    /// Goes on with what `dragTo` began; tells whether it would be taken, and not moved. What the drag enters
    /// now says so from the next time on.
    Q_INVOKABLE bool dragOn(QObject *window, const QPointF &place, const QList<QUrl> &urls);
    Q_INVOKABLE void dragAway(QObject *window);
    /// As `dragTo`, and lets go of it there; tells whether it was taken, and not moved.
    Q_INVOKABLE bool drop(QObject *window, const QPointF &place, const QList<QUrl> &urls);
    /// Draws the window, and tells whether that gave a picture. Quick Test's own way keeps two copies of
    /// each.
    Q_INVOKABLE bool draw(QObject *window) const;
    /// What a key that is held down sends after its first press.
    Q_INVOKABLE void repeatKey(QObject *window, int key, int modifiers);
    /// Fills the hex editor's buffer with bytes that count from 0.
    Q_INVOKABLE void fillHex(int size);
    /// Writes the hex editor's bytes, longer or shorter by `longer` and with every byte at one of `positions`
    /// inverted, to a file. Its path.
    Q_INVOKABLE QString writeOther(const QList<int> &positions, int longer = 0);
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
    Q_INVOKABLE QString lastRequestBody() const;
    /// What the next request gets, with status 200.
    Q_INVOKABLE void answerNext(const QString &body);
    /// A part of an answer to a request, counted from 0, that has none yet; more may follow.
    Q_INVOKABLE void answerPart(int request, const QString &bytes);
    Q_INVOKABLE int requestCount() const { return m_server.requestCount(); }
    /// Whether every request that the controllers sent has come, whole.
    Q_INVOKABLE bool allArrived() const;
    /// The addresses of what was asked for beside the service, without the server's own: pictures in texts.
    Q_INVOKABLE QStringList fetchedPaths() const;
    /// The item of that name at or below `within`, nearer ones first, or else an object that an item owns, as
    /// a dialog; null where there is none. Quick Test's own search visits every item of the window in
    /// JavaScript, which takes most of a test's time.
    Q_INVOKABLE QObject *find(QObject *within, const QString &name) const;
    /// An item and all below it that are visible, parents first.
    Q_INVOKABLE QList<QObject *> visibleItems(QQuickItem *item) const;
    /// All that an item tells an assistive tool about itself, a line for each text.
    Q_INVOKABLE QString spokenTexts(QObject *item) const;
    /// An address on the server, for texts that must not be fetched.
    Q_INVOKABLE QString address(const QString &path) const;
    Q_INVOKABLE QStringList openedUrls() const;
    Q_INVOKABLE QString clipboardText() const;

private:
    const UrlRecorder *m_opened;
    RawHttpServer m_server;
    QQmlEngine *m_engine = nullptr;
    AppState *m_app = nullptr;
    QTemporaryDir m_folder;
    int m_sentCount = 0;
};

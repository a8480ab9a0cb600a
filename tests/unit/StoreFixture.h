#pragma once

#include "app/AppState.h"
#include "support/RawHttpServer.h"
#include "support/TestMain.h"

#include <QStringList>
#include <QTemporaryDir>

#include <memory>
#include <utility>

/// A controller with a raw server, and all its signals in order: a status as its level and text, any other
/// change as the name of its signal.
class StoreFixture
{
public:
    StoreFixture();
    ~StoreFixture();
    Q_DISABLE_COPY_MOVE(StoreFixture)

    /// Configures authentication fields for the whole process. The store's requests must not contain them.
    static void deployWithAuthFields(const QTemporaryDir &dir);

    VoxApiClient *client() const { return state->findChild<VoxApiClient *>(); }
    /// Whether every request was answered; each has a manager of its own.
    bool idle() const;
    RecordedRequest lastRequest() const { return server.request(server.requestCount() - 1); }
    /// Takes the signals so far.
    QStringList takeAnnounced() { return std::exchange(announced, {}); }

    /// A folder of this test's own, for its input files.
    QString inDir(const QString &name) const { return dir.filePath(name); }
    static QString inDocuments(const QString &name);
    static QStringList documents();
    /// What the desktop shows after a file was saved: the documents folder, opened once.
    static QList<QUrl> documentsShown();
    /// Every file in the home and temporary folders and beside them, below the one root that they share.
    static QStringList filesEverywhere();

    QTemporaryDir dir;
    RawHttpServer server;
    UrlRecorder desktop;
    std::unique_ptr<AppState> state;
    QStringList announced;

private:
    void noteAnnouncements();
};

/// Each part of a form as its header lines and its body.
QByteArrayList formLines(const RecordedRequest &request);

/// Stands for one of Qt's error texts.
inline const QString qtText = QStringLiteral("(Qt's text)");

/// A table of the answers that make any JSON request fail: columns "answer" (RawAnswer) and "status"
/// (QString).
void addFailedJsonAnswers();
/// Whether `announced` is one failure with that text and nothing else.
bool isOneFailure(const QStringList &announced, const QString &text);

Q_DECLARE_METATYPE(RawAnswer)

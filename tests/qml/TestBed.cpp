#include "TestBed.h"

#include <QDir>
#include <QDragEnterEvent>
#include <QFile>
#include <QFileInfo>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMimeData>
#include <QQmlContext>

TestBed::TestBed(const UrlRecorder *opened)
    : m_opened(opened)
{
    m_server.answerAlways(holdRequest());
}

void TestBed::qmlEngineAvailable(QQmlEngine *engine)
{
    m_engine = engine;
    // The engine of an earlier file took its controller with it.
    m_app = nullptr;
    engine->addImportPath(QStringLiteral("qrc:/qt/qml"));
    engine->rootContext()->setContextProperty(QStringLiteral("bed"), this);
    reset();
}

void TestBed::reset()
{
    AppState *const before = m_app;
    m_app = new AppState(m_engine);
    m_app->findChild<VoxApiClient *>()->setApiBase(m_server.baseUrl());
    m_engine->rootContext()->setContextProperty(QStringLiteral("app"), m_app);
    if (before)
        before->deleteLater();
}

void TestBed::openFile(const QString &name, int size, const QString &tail)
{
    const QByteArray end = tail.toUtf8();
    QFile file(tempPath(name));
    if (!file.open(QIODevice::WriteOnly))
        qFatal("Cannot write %s", qPrintable(file.fileName()));
    file.write(QByteArray(size - end.size(), '\0') + end);
    file.close();
    m_app->openKvt(file.fileName());
}

void TestBed::writeFile(const QString &name, int size)
{
    const QString path = tempPath(name);
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    if (!file.open(QIODevice::WriteOnly) || file.write(QByteArray(size, '\0')) != size)
        qFatal("Cannot write %s", qPrintable(path));
}

bool TestBed::drop(QObject *window, const QPointF &place, const QList<QUrl> &urls)
{
    QMimeData data;
    data.setUrls(urls);
    QDragEnterEvent enter(place.toPoint(), Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &enter);
    if (!enter.isAccepted()) {
        QDragLeaveEvent leave;
        QCoreApplication::sendEvent(window, &leave);
        return false;
    }
    QDropEvent dropped(place, Qt::CopyAction, &data, Qt::LeftButton, Qt::NoModifier);
    QCoreApplication::sendEvent(window, &dropped);
    return dropped.isAccepted();
}

void TestBed::fillHex(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    char next = 0;
    for (char &byte : bytes)
        byte = next++;
    m_app->hexModel()->setBytes(bytes);
}

void TestBed::applyInfo(const QVariantMap &answer)
{
    m_app->applyKvtInfoJson(QString::fromUtf8(QJsonDocument(QJsonObject::fromVariantMap(answer)).toJson()));
}

void TestBed::startConversion()
{
    m_app->workerConvert(QStringLiteral("kvt2bin"), QByteArrayLiteral("bytes"), QStringLiteral("a.kvt"), {},
                         {}, QStringLiteral("a.bin"));
}

QString TestBed::encodedUrlOf(const QString &path) const
{
    const qsizetype nameStart = path.lastIndexOf(QLatin1Char('/')) + 1;
    return QStringLiteral("file://") + path.left(nameStart)
        + QString::fromLatin1(QUrl::toPercentEncoding(path.mid(nameStart), "!*'()"));
}

QString TestBed::tempPath(const QString &name) const
{
    return m_folder.filePath(name);
}

bool TestBed::fileExists(const QString &path) const
{
    return QFileInfo::exists(path);
}

QString TestBed::requestBodies() const
{
    QByteArray bodies;
    for (int i = 0; i < m_server.requestCount(); ++i)
        bodies += m_server.request(i).body;
    return QString::fromUtf8(bodies);
}

QString TestBed::lastRequestLine() const
{
    return QString::fromLatin1(m_server.request(m_server.requestCount() - 1).requestLine());
}

QString TestBed::address(const QString &path) const
{
    return QStringLiteral("http://127.0.0.1:%1/%2").arg(m_server.port()).arg(path);
}

QStringList TestBed::openedUrls() const
{
    QStringList urls;
    for (const QUrl &url : m_opened->opened)
        urls.append(url.toString());
    return urls;
}

#include "ViewFixture.h"

#include "support/TestFiles.h"

#include <QAccessible>
#include <QClipboard>
#include <QDir>
#include <QDragEnterEvent>
#include <QFile>
#include <QFileInfo>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMimeData>
#include <QQmlContext>
#include <QQuickWindow>
#include <QTest>
#include <QWindow>

#include <filesystem>
#include <fstream>

using namespace Qt::StringLiterals;

namespace {

constexpr Qt::DropActions dragActions = Qt::CopyAction | Qt::MoveAction;
constexpr Qt::KeyboardModifiers moveKey = Qt::ShiftModifier;

std::filesystem::path undecodableIn(const QString &folder)
{
    return std::filesystem::path(QFile::encodeName(folder).constData()) / "caf\xe9.kvt";
}

QQuickItem *itemNamed(const QString &name, const QQuickItem *parent)
{
    const QList<QQuickItem *> children = parent->childItems();
    for (QQuickItem *const child : children) {
        if (child->objectName() == name)
            return child;
    }
    for (const QQuickItem *const child : children) {
        if (QQuickItem *const found = itemNamed(name, child))
            return found;
    }
    return nullptr;
}

QObject *ownedObjectNamed(const QString &name, const QObject *parent)
{
    if (QObject *const found = parent->findChild<QObject *>(name))
        return found;
    if (const auto *const item = qobject_cast<const QQuickItem *>(parent)) {
        for (const QQuickItem *const child : item->childItems()) {
            if (QObject *const found = ownedObjectNamed(name, child))
                return found;
        }
    }
    return nullptr;
}

void addVisibleItems(QQuickItem *item, QList<QObject *> *items)
{
    if (!item->isVisible())
        return;
    items->append(item);
    for (QQuickItem *const child : item->childItems())
        addVisibleItems(child, items);
}

} // namespace

ViewFixture::ViewFixture(const UrlRecorder *opened)
    : m_opened(opened)
{
    m_server.answerAlways(holdRequest());
}

void ViewFixture::qmlEngineAvailable(QQmlEngine *engine)
{
    m_engine = engine;
    // The engine of an earlier file took its controller with it.
    m_app = nullptr;
    engine->addImportPath(u"qrc:/qt/qml"_s);
    engine->rootContext()->setContextProperty(u"fixture"_s, this);
    reset();
}

void ViewFixture::reset()
{
    // What a controller sent is not to come in the time of the next one.
    if (!QTest::qWaitFor([this] { return allArrived(); }))
        qFatal("A request did not arrive");
    AppState *const before = m_app;
    m_app = new AppState(m_engine);
    auto *const client = m_app->findChild<VoxApiClient *>();
    client->setApiBase(m_server.baseUrl());
    connect(client, &VoxApiClient::requestSent, this, [this] { ++m_sentCount; });
    m_engine->rootContext()->setContextProperty(u"app"_s, m_app);
    if (before)
        before->deleteLater();
}

void ViewFixture::openFile(const QString &name, int size, const QString &tail)
{
    const QByteArray end = tail.toUtf8();
    m_app->openKvt(makeFile(tempPath(name), QByteArray(size - end.size(), '\0') + end));
}

void ViewFixture::writeFile(const QString &name, int size)
{
    makeFile(tempPath(name), QByteArray(size, '\0'));
}

void ViewFixture::removeFile(const QString &name)
{
    if (!QFile::remove(tempPath(name)))
        qFatal("Cannot remove %s", qPrintable(tempPath(name)));
}

void ViewFixture::link(const QString &target, const QString &name)
{
    if (!QFile::link(tempPath(target), tempPath(name)))
        qFatal("Cannot link %s", qPrintable(tempPath(name)));
}

void ViewFixture::removeFolder(const QString &name)
{
    if (!QDir(tempPath(name)).removeRecursively())
        qFatal("Cannot remove %s", qPrintable(tempPath(name)));
}

void ViewFixture::writeUndecodable(const QString &folder)
{
    QDir().mkpath(tempPath(folder));
    std::ofstream(undecodableIn(tempPath(folder))) << "bytes";
}

bool ViewFixture::removeUndecodable(const QString &folder)
{
    return std::filesystem::remove(undecodableIn(tempPath(folder)));
}

QStringList ViewFixture::files(const QString &folder) const
{
    return QDir(tempPath(folder)).entryList(QDir::Files);
}

QString ViewFixture::start(const QString &path, int size) const
{
    return QString::fromUtf8(contentOf(path).left(size));
}

bool ViewFixture::dragTo(QObject *window, const QPointF &place, const QList<QUrl> &urls)
{
    QMimeData data;
    data.setUrls(urls);
    QDragEnterEvent enter(place.toPoint(), dragActions, &data, Qt::LeftButton, moveKey);
    QCoreApplication::sendEvent(window, &enter);
    return enter.isAccepted();
}

bool ViewFixture::dragOn(QObject *window, const QPointF &place, const QList<QUrl> &urls)
{
    QMimeData data;
    data.setUrls(urls);
    QDragMoveEvent move(place.toPoint(), dragActions, &data, Qt::LeftButton, moveKey);
    QCoreApplication::sendEvent(window, &move);
    return move.isAccepted() && move.dropAction() == Qt::CopyAction;
}

void ViewFixture::dragAway(QObject *window)
{
    QDragLeaveEvent leave;
    QCoreApplication::sendEvent(window, &leave);
}

bool ViewFixture::drop(QObject *window, const QPointF &place, const QList<QUrl> &urls)
{
    if (!dragTo(window, place, urls)) {
        dragAway(window);
        return false;
    }
    QMimeData data;
    data.setUrls(urls);
    QDropEvent dropped(place, dragActions, &data, Qt::LeftButton, moveKey);
    QCoreApplication::sendEvent(window, &dropped);
    return dropped.isAccepted() && dropped.dropAction() == Qt::CopyAction;
}

bool ViewFixture::draw(QObject *window) const
{
    return !qobject_cast<QQuickWindow *>(window)->grabWindow().isNull();
}

void ViewFixture::repeatKey(QObject *window, int key, int modifiers)
{
    for (const bool press : {false, true})
        QTest::simulateEvent(qobject_cast<QWindow *>(window), press, key, Qt::KeyboardModifiers(modifiers),
                             {}, true);
}

void ViewFixture::fillHex(int size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    char next = 0;
    for (char &byte : bytes)
        byte = next++;
    m_app->hexModel()->setBytes(bytes);
}

QString ViewFixture::writeOther(const QList<int> &positions, int longer)
{
    QByteArray bytes = m_app->hexModel()->bytes();
    for (const int position : positions)
        bytes[position] = static_cast<char>(~bytes[position]);
    bytes = longer < 0 ? bytes.chopped(-longer) : bytes + QByteArray(longer, '-');
    return makeFile(tempPath(u"other.bin"_s), bytes);
}

void ViewFixture::applyInfo(const QVariantMap &answer)
{
    m_app->applyKvtInfoJson(QString::fromUtf8(QJsonDocument(QJsonObject::fromVariantMap(answer)).toJson()));
}

void ViewFixture::startConversion()
{
    m_app->workerConvert(u"kvt2bin"_s, "bytes"_ba, u"a.kvt"_s, {}, {}, u"a.bin"_s);
}

QString ViewFixture::encodedUrlOf(const QString &path) const
{
    const qsizetype nameStart = path.lastIndexOf('/'_L1) + 1;
    return u"file://"_s + path.left(nameStart)
        + QString::fromLatin1(QUrl::toPercentEncoding(path.mid(nameStart), "!*'()"));
}

QString ViewFixture::tempPath(const QString &name) const
{
    return m_folder.filePath(name);
}

bool ViewFixture::fileExists(const QString &path) const
{
    return QFileInfo::exists(path);
}

QString ViewFixture::requestBodies() const
{
    QByteArray bodies;
    for (int i = 0; i < m_server.requestCount(); ++i)
        bodies += m_server.request(i).body;
    return QString::fromUtf8(bodies);
}

QString ViewFixture::lastRequestLine() const
{
    return QString::fromLatin1(m_server.request(m_server.requestCount() - 1).requestLine());
}

QString ViewFixture::lastRequestBody() const
{
    return QString::fromUtf8(m_server.request(m_server.requestCount() - 1).body);
}

void ViewFixture::answerNext(const QString &body)
{
    m_server.answerNext(answerWith(body.toUtf8()));
}

void ViewFixture::answerPart(int request, const QString &bytes)
{
    m_server.answerHeld(request, {bytes.toUtf8(), RawAnswer::Ending::KeepOpen});
}

bool ViewFixture::allArrived() const
{
    return m_server.completeRequestCount() - fetchedPaths().size() == m_sentCount;
}

QStringList ViewFixture::fetchedPaths() const
{
    QStringList paths;
    for (int i = 0; i < m_server.requestCount(); ++i) {
        const QByteArray path = m_server.request(i).requestLine().split(' ').value(1);
        if (!path.startsWith("/api/"))
            paths.append(QString::fromLatin1(path));
    }
    return paths;
}

QObject *ViewFixture::find(QObject *within, const QString &name) const
{
    const auto *const item = qobject_cast<QQuickItem *>(within);
    QObject *found = item ? itemNamed(name, item) : nullptr;
    if (!found)
        found = ownedObjectNamed(name, within);
    // Otherwise JavaScript would own, and destroy, what a slot returns.
    if (found)
        QQmlEngine::setObjectOwnership(found, QQmlEngine::CppOwnership);
    return found;
}

QList<QObject *> ViewFixture::visibleItems(QQuickItem *item) const
{
    QList<QObject *> items;
    addVisibleItems(item, &items);
    return items;
}

QString ViewFixture::spokenTexts(QObject *item) const
{
    QAccessibleInterface *const spoken = QAccessible::queryAccessibleInterface(item);
    if (!spoken)
        return {};
    QStringList texts;
    for (const QAccessible::Text kind : {QAccessible::Name, QAccessible::Description, QAccessible::Value})
        texts.append(spoken->text(kind));
    if (QAccessibleTextInterface *const text = spoken->textInterface())
        texts.append(text->text(0, text->characterCount()));
    return texts.join('\n'_L1);
}

QString ViewFixture::address(const QString &path) const
{
    return u"http://127.0.0.1:%1/%2"_s.arg(m_server.port()).arg(path);
}

QStringList ViewFixture::openedUrls() const
{
    QStringList urls;
    for (const QUrl &url : m_opened->opened)
        urls.append(url.toString());
    return urls;
}

QString ViewFixture::clipboardText() const
{
    return QGuiApplication::clipboard()->text();
}

#include "app/AppState.h"

#include "app/ScanLink.h"
#include "core/FileTools.h"

#include <QFileInfo>
#include <QMetaObject>
#include <QMutexLocker>

#include <thread>

using namespace Qt::StringLiterals;

namespace {

constexpr int hitLimit = 5000;

} // namespace

QString AppState::searchRecursive() const
{
    return m_search.recursive ? u"1"_s : u"0"_s;
}

void AppState::setSearchRecursive(const QString &text)
{
    m_search.recursive = text != "0"_L1;
    emit searchChanged();
}

void AppState::scanFolder(const QString &root, bool recursive, const QString &nameQ, const QString &osQ,
                          const QString &makeQ, const QString &yearQ)
{
    if (m_search.busy) {
        setStatus(u"A search is already running."_s, 0);
        return;
    }
    if (root.isEmpty()) {
        setStatus(u"Pick a search folder first."_s, 0);
        return;
    }
    m_search.link->cancel = false;
    m_search.busy = true;
    emit searchChanged();
    setStatus(u"Searching %1 ..."_s.arg(root), -1);

    // The thread never touches the controller: it holds the link, through which it posts its result for as
    // long as the controller is there to take it. The destructor cancels and takes itself out of the link,
    // and so never waits for the disk.
    std::thread([link = m_search.link, root, recursive, nameQ, osQ, makeQ, yearQ] {
        QVariantList hits;
        try {
            hits =
                FileTools::scanCalFolder(root, recursive, nameQ, osQ, makeQ, yearQ, hitLimit, &link->cancel);
        } catch (...) {
            hits.clear();
        }
        const bool cancelled = link->cancel;
        const QMutexLocker lock(&link->mutex);
        if (AppState *const owner = link->owner) {
            QMetaObject::invokeMethod(
                owner, [owner, hits, cancelled] { owner->finishScan(hits, cancelled, hitLimit); },
                Qt::QueuedConnection);
        }
    }).detach();
}

void AppState::finishScan(const QVariantList &hits, bool cancelled, int limit)
{
    m_search.busy = false;
    m_search.hits = hits;
    emit searchChanged();
    if (cancelled)
        setStatus(u"Search cancelled. %1 file(s) kept."_s.arg(hits.size()), 0);
    else if (hits.size() < limit)
        setStatus(u"Found %1 file(s)."_s.arg(hits.size()), 1);
    else
        setStatus(u"Found %1 file(s) (limit reached, narrow the filters)."_s.arg(hits.size()), 1);
}

void AppState::cancelScan()
{
    if (!m_search.busy)
        return;
    m_search.link->cancel = true;
    setStatus(u"Cancelling search ..."_s, -1);
}

void AppState::clearSearch()
{
    m_search.link->cancel = true;
    m_search.hits.clear();
    emit searchChanged();
}

bool AppState::isFolder(const QString &path) const
{
    return QFileInfo(path).isDir();
}

void AppState::showFolder(const QString &path)
{
    FileTools::revealInExplorer(path);
}

bool AppState::isKvtFile(const QString &path) const
{
    return FileTools::isKvtFile(path);
}

void AppState::openSearchHit(int index)
{
    if (index < 0 || index >= m_search.hits.size())
        return;
    const QString path = m_search.hits.at(index).toMap().value(u"path"_s).toString();
    if (!FileTools::isKvtFile(path))
        return;
    openKvt(path);
    setTab(u"main"_s);
}

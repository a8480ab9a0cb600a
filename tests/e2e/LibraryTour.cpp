#include "LibraryTour.h"

#include "app/AppState.h"
#include "support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QQuickItem>

using namespace Qt::StringLiterals;

namespace {

// Enough that a scan is usually still running when the next click arrives.
constexpr int manyFiles = 20000;
constexpr int attempts = 200;

void makeFiles(const QString &folder, int count)
{
    for (int i = 0; i < count; ++i)
        makeFile(u"%1/e38_%2.kvt"_s.arg(folder).arg(i, 8, 10, '0'_L1));
}

} // namespace

LibraryTour::LibraryTour(const WindowDriver &window, const QString &samples,
                         const std::function<void(const QString &)> &picture)
    : m_window(window)
    , m_samples(samples)
    , m_picture(picture)
{
}

void LibraryTour::run()
{
    search();
    // A scan is over before Tab has come to the button that ends it.
    if (m_window.hasPointer())
        cancelSearch();
    openHit();
    sort();
    decodeFaults();
    convertVin();
    showManual();
}

void LibraryTour::search()
{
    m_window.click(u"nav_search"_s);
    m_picture(u"search-empty"_s);
    m_window.click(u"searchBrowseButton"_s);
    m_window.chooseFolder(u"library"_s);
    m_window.waitForStatus(u"Found 200 file(s)."_s);
    m_picture(u"search"_s);
}

void LibraryTour::cancelSearch()
{
    makeFiles(m_samples + u"/many"_s, manyFiles);
    m_window.click(u"searchBrowseButton"_s);
    m_window.chooseFolder(u"many"_s);
    AppState *const app = m_window.app();
    m_window.waitFor([app] { return app->status().contains("limit reached"_L1); },
                     u"the search of many files"_s);
    for (int i = 0; i < attempts && !app->status().startsWith("Search cancelled."_L1); ++i) {
        m_window.click(u"searchButton"_s);
        m_window.tap(m_window.item(u"searchCancelButton"_s));
        m_window.waitFor([app] { return !app->searchBusy(); }, u"the search to end"_s);
    }
    check(app->status() == u"Search cancelled. %1 file(s) kept."_s.arg(app->searchHits().size()),
          u"no search was cancelled"_s);
    m_picture(u"search-cancelled"_s);
}

void LibraryTour::openHit()
{
    m_window.click(u"searchBrowseButton"_s);
    m_window.chooseFolder(u"library"_s);
    m_window.waitForStatus(u"Found 200 file(s)."_s);
    m_window.type(u"searchNameField"_s, u".kvt"_s);
    m_window.type(u"searchYearField"_s, u"2015"_s);
    m_window.key(Qt::Key_Return);
    AppState *const app = m_window.app();
    m_window.waitFor([app] { return app->searchHits().size() < 200 && !app->searchBusy(); },
                     u"fewer files"_s);
    const QString name = app->searchHits().constFirst().toMap().value(u"name"_s).toString();
    m_picture(u"search-filtered"_s);
    m_window.click(u"searchHit0"_s);
    m_window.waitFor([&] { return app->fileName() == name && app->tab() == "main"_L1; },
                     u"the hit to open"_s);
    m_picture(u"hit-opened"_s);
}

void LibraryTour::sort()
{
    const QString source = m_samples + u"/e38_12654321_2014.kvt"_s;
    check(QFile::copy(m_samples + u"/one-module.kvt"_s, source), source);
    check(QDir().mkpath(m_samples + u"/sorted"_s), m_samples);
    // So that the dialogs start among the samples again.
    m_window.app()->openKvt(source);

    m_window.click(u"nav_sorter"_s);
    m_window.click(u"sorterBrowseFilesButton"_s);
    m_window.chooseFile(u"e38_12654321_2014.kvt"_s);
    m_window.click(u"sorterBrowseFolderButton"_s);
    m_window.chooseFolder(u"sorted"_s);
    m_window.click(u"sorterStartButton"_s);
    m_window.waitForStatus(u"Copied 1 of 1 file(s)."_s);
    m_window.waitFor([this] { return m_window.item(u"sorterStartButton"_s)->isEnabled(); },
                     u"the sorter to be ready again"_s);
    m_picture(u"sorter"_s);
    check(contentOf(m_samples + u"/sorted/2014/UnknownMake/12654321/e38_12654321_2014.kvt"_s)
              == contentOf(source),
          u"the sorted copy"_s);
}

void LibraryTour::decodeFaults()
{
    m_window.click(u"nav_tools"_s);
    m_window.type(u"dtcField"_s, u"04 FF 5B 00 03 01 64 00 12 7F"_s);
    m_window.click(u"dtcDecodeButton"_s);
    m_window.waitForStatus(u"2 DTC(s)."_s);
    m_picture(u"tools"_s);
}

void LibraryTour::convertVin()
{
    m_window.click(u"tile_vin2hex"_s);
    m_window.type(u"vinTextField"_s, u"1GC"_s);
    m_window.waitFor(
        [this] { return m_window.item(u"vinHexField"_s)->property("text").toString() == "31 47 43"_L1; },
        u"the VIN as hex bytes"_s);
    m_picture(u"vin2hex"_s);
    m_window.click(u"vinHexCloseButton"_s);
    m_window.waitFor([this] { return !m_window.isVisible(u"vinTextField"_s); }, u"the popup to close"_s);
}

void LibraryTour::showManual()
{
    m_window.click(u"helpButton"_s);
    m_window.waitForStatus(u"Opened User Manual."_s);
    m_picture(u"manual"_s);
}

#include "LibraryTour.h"

#include "app/AppState.h"

#include <QDir>
#include <QFile>
#include <QQuickItem>

namespace {

// Enough for a scan to be still under way when the next click arrives, most of the time.
constexpr int manyFiles = 20000;
constexpr int attempts = 200;

void makeFiles(const QString &folder, int count)
{
    check(QDir().mkpath(folder), folder);
    for (int i = 0; i < count; ++i) {
        QFile file(QStringLiteral("%1/e38_%2.kvt").arg(folder).arg(i, 8, 10, QLatin1Char('0')));
        check(file.open(QIODevice::WriteOnly), file.errorString());
    }
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
    m_window.click(QStringLiteral("nav_search"));
    m_picture(QStringLiteral("search-empty"));
    m_window.click(QStringLiteral("searchBrowseButton"));
    m_window.chooseFolder(QStringLiteral("library"));
    m_window.waitForStatus(QStringLiteral("Found 200 file(s)."));
    m_picture(QStringLiteral("search"));
}

void LibraryTour::cancelSearch()
{
    makeFiles(m_samples + QStringLiteral("/many"), manyFiles);
    m_window.click(QStringLiteral("searchBrowseButton"));
    m_window.chooseFolder(QStringLiteral("many"));
    AppState *const app = m_window.app();
    m_window.waitFor([app] { return app->status().contains(QLatin1String("limit reached")); },
                     QStringLiteral("the search of many files"));
    for (int i = 0; i < attempts && !app->status().startsWith(QLatin1String("Search cancelled.")); ++i) {
        m_window.click(QStringLiteral("searchButton"));
        m_window.tap(m_window.item(QStringLiteral("searchCancelButton")));
        m_window.waitFor([app] { return !app->searchBusy(); }, QStringLiteral("the search to end"));
    }
    check(app->status() == QStringLiteral("Search cancelled. %1 file(s) kept.").arg(app->searchHits().size()),
          QStringLiteral("no search was cancelled"));
    m_picture(QStringLiteral("search-cancelled"));
}

void LibraryTour::openHit()
{
    m_window.click(QStringLiteral("searchBrowseButton"));
    m_window.chooseFolder(QStringLiteral("library"));
    m_window.waitForStatus(QStringLiteral("Found 200 file(s)."));
    m_window.type(QStringLiteral("searchNameField"), QStringLiteral(".kvt"));
    m_window.type(QStringLiteral("searchYearField"), QStringLiteral("2015"));
    m_window.key(Qt::Key_Return);
    AppState *const app = m_window.app();
    m_window.waitFor([app] { return app->searchHits().size() < 200 && !app->searchBusy(); },
                     QStringLiteral("fewer files"));
    const QString name = app->searchHits().constFirst().toMap().value(QStringLiteral("name")).toString();
    m_picture(QStringLiteral("search-filtered"));
    m_window.click(QStringLiteral("searchHit0"));
    m_window.waitFor([&] { return app->fileName() == name && app->tab() == QLatin1String("main"); },
                     QStringLiteral("the hit to open"));
    m_picture(QStringLiteral("hit-opened"));
}

void LibraryTour::sort()
{
    const QString source = m_samples + QStringLiteral("/e38_12654321_2014.kvt");
    check(QFile::copy(m_samples + QStringLiteral("/one-module.kvt"), source), source);
    check(QDir().mkpath(m_samples + QStringLiteral("/sorted")), m_samples);
    // So that the dialogs start among the samples again.
    m_window.app()->openKvt(source);

    m_window.click(QStringLiteral("nav_sorter"));
    m_window.click(QStringLiteral("sorterBrowseFilesButton"));
    m_window.chooseFile(QStringLiteral("e38_12654321_2014.kvt"));
    m_window.click(QStringLiteral("sorterBrowseFolderButton"));
    m_window.chooseFolder(QStringLiteral("sorted"));
    m_window.click(QStringLiteral("sorterStartButton"));
    m_window.waitForStatus(QStringLiteral("Copied 1 of 1 file(s)."));
    m_window.waitFor([this] { return m_window.item(QStringLiteral("sorterStartButton"))->isEnabled(); },
                     QStringLiteral("the sorter to be ready again"));
    m_picture(QStringLiteral("sorter"));
    check(contents(m_samples + QStringLiteral("/sorted/2014/UnknownMake/12654321/e38_12654321_2014.kvt"))
              == contents(source),
          QStringLiteral("the sorted copy"));
}

void LibraryTour::decodeFaults()
{
    m_window.click(QStringLiteral("nav_tools"));
    m_window.type(QStringLiteral("dtcField"), QStringLiteral("04 FF 5B 00 03 01 64 00 12 7F"));
    m_window.click(QStringLiteral("dtcDecodeButton"));
    m_window.waitForStatus(QStringLiteral("2 DTC(s)."));
    m_picture(QStringLiteral("tools"));
}

void LibraryTour::convertVin()
{
    m_window.click(QStringLiteral("tile_vin2hex"));
    m_window.type(QStringLiteral("vinTextField"), QStringLiteral("1GC"));
    m_window.waitFor(
        [this] {
            return m_window.item(QStringLiteral("vinHexField"))->property("text").toString()
                == QLatin1String("31 47 43");
        },
        QStringLiteral("the VIN as hex bytes"));
    m_picture(QStringLiteral("vin2hex"));
    m_window.click(QStringLiteral("vinHexCloseButton"));
    m_window.waitFor([this] { return !m_window.isVisible(QStringLiteral("vinTextField")); },
                     QStringLiteral("the popup to close"));
}

void LibraryTour::showManual()
{
    m_window.click(QStringLiteral("helpButton"));
    m_window.waitForStatus(QStringLiteral("Opened User Manual."));
    m_picture(QStringLiteral("manual"));
}

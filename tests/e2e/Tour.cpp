// Drives the real program through its main job, by clicks and keys, against the stand-in service in this
// process. Prints each status line and leaves a picture of each step in the folder that KVTEDITOR_TOUR_DIR
// names. With KVTEDITOR_TOUR_KEYBOARD set, all of it is done by keys; with
// KVTEDITOR_TOUR_SMALL, in a window as small as it can be.

#include "DevService.h"
#include "KeyboardDriver.h"
#include "LibraryTour.h"
#include "SampleData.h"
#include "ServiceTour.h"
#include "WindowDriver.h"
#include "app/AppState.h"
#include "support/TestMain.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTimer>

#include <cstdio>
#include <cstdlib>
#include <memory>

namespace {

/// A home of its own like that of every test, but shown where the caller wants it.
class TourEnvironment
{
public:
    TourEnvironment()
    {
        if (platform.isEmpty())
            qunsetenv("QT_QPA_PLATFORM");
        else
            qputenv("QT_QPA_PLATFORM", platform);
    }

    const QByteArray platform = qgetenv("QT_QPA_PLATFORM");

private:
    TestEnvironment m_environment;
};

// Before main, so that not even the program's log lands outside.
const TourEnvironment environment;

class Tour
{
public:
    Tour();
    int run();

private:
    void start();
    void openSample();
    void editIdentifier();
    void findAndPatch();
    void saveAndReopen();
    void openSeveralModules();
    void checkFoldersShown();
    void shrinkWindow();

    void expectStatus(const QString &text);
    void picture(const QString &name);

    DevService m_service;
    UrlRecorder m_desktop;
    std::unique_ptr<WindowDriver> m_window;
    QString m_samples;
    SampleTune m_sample;
    QString m_sampleVin;
    QString m_patchedVin;
    QString m_pictures = qEnvironmentVariable("KVTEDITOR_TOUR_DIR");
    bool m_small = qEnvironmentVariableIsSet("KVTEDITOR_TOUR_SMALL");
    int m_pictureCount = 0;
};

const QString sampleName = QStringLiteral("one-module.kvt");
const QString severalModulesName = QStringLiteral("two-modules.kvt");
const QString patchedName = QStringLiteral("patched copy #1.kvt");

Tour::Tour()
{
    m_samples = TestEnvironment::documents();
    QString error;
    check(SampleData::generate(m_samples, &error) && m_service.start(&error), error);
    m_sample = SampleContainer::read(contents(m_samples + QLatin1Char('/') + sampleName)).value();
    m_sampleVin = m_sample.modules.constFirst().vin;
    m_patchedVin = m_sampleVin.first(11) + QStringLiteral("999999");
    const QString configuration = TestEnvironment::home() + QStringLiteral("/service.json");
    QFile file(configuration);
    check(file.open(QIODevice::WriteOnly), file.errorString());
    file.write(QJsonDocument(QJsonObject{{QStringLiteral("apiBase"), m_service.apiBase()}}).toJson());
    qputenv("KVTEDITOR_SERVICE_CONFIG", QFile::encodeName(configuration));
}

int Tour::run()
{
    try {
        start();
        openSample();
        editIdentifier();
        findAndPatch();
        saveAndReopen();
        openSeveralModules();
        const auto takePicture = [this](const QString &name) { picture(name); };
        LibraryTour(*m_window, m_samples, takePicture).run();
        check(m_desktop.opened.size() == 1
                  && m_desktop.opened.constFirst().fileName().endsWith(QLatin1String(".pdf")),
              QStringLiteral("the manual was not opened"));
        m_desktop.opened.clear();
        ServiceTour(*m_window, m_samples, takePicture).run();
        checkFoldersShown();
        shrinkWindow();
    } catch (const DriveError &error) {
        std::fprintf(stderr, "tour: %s (status line: %s)\n", error.what(),
                     m_window ? qPrintable(m_window->app()->status()) : "none");
        if (m_window && !m_pictures.isEmpty())
            m_window->savePicture(m_pictures + QStringLiteral("/failed.png"));
        // The window may be in the midst of anything, and must not keep the program from ending.
        std::fflush(nullptr);
        std::_Exit(1);
    }
    std::printf("tour: done, %d picture(s)\n", m_pictureCount);
    return 0;
}

void Tour::start()
{
    check(environment.platform.isEmpty()
              || QGuiApplication::platformName().toLatin1() == environment.platform,
          QStringLiteral("the window on the platform \"%1\"").arg(QLatin1String(environment.platform)));
    if (qEnvironmentVariableIsSet("KVTEDITOR_TOUR_KEYBOARD"))
        m_window = std::make_unique<KeyboardDriver>();
    else
        m_window = std::make_unique<WindowDriver>();
    AppState *const app = m_window->app();
    QObject::connect(app, &AppState::statusChanged, app, [app] {
        std::printf("status: %s\n", qPrintable(app->status()));
        std::fflush(stdout);
    });
    if (m_small)
        m_window->window()->resize(m_window->window()->minimumSize());
    m_window->where(
        [](const QQuickItem *item) {
            return item->inherits("QQuickImage") && item->property("progress").toReal() >= 1;
        },
        QStringLiteral("the logo"));
    picture(QStringLiteral("start"));
    m_window->click(QStringLiteral("hexEditorButton"));
    expectStatus(QStringLiteral("Open an KVT first."));
    check(!m_window->isVisible(QStringLiteral("hexOverlay")),
          QStringLiteral("the hex editor opened on nothing"));
}

void Tour::openSample()
{
    m_window->click(QStringLiteral("openFileButton"));
    m_window->item(QStringLiteral("fileDialogDelegate0"));
    picture(QStringLiteral("open-dialog"));

    m_window->chooseFile(sampleName);
    m_window->waitFor([this] { return m_window->app()->fileName() == sampleName; },
                      QStringLiteral("the file to open"));
    m_window->waitFor([this] { return m_window->app()->vin() == m_sampleVin; },
                      QStringLiteral("the identifiers of the service"));
    check(m_window->app()->created() == m_sample.created, QStringLiteral("the time of creation"));
    picture(QStringLiteral("identifiers"));
}

void Tour::editIdentifier()
{
    m_window->type(QStringLiteral("fuelField"), QStringLiteral("Flex fuel"));
    check(m_window->app()->fuel() == QStringLiteral("Flex fuel"), QStringLiteral("the edited identifier"));
    picture(QStringLiteral("identifier-edited"));
}

void Tour::findAndPatch()
{
    m_window->click(QStringLiteral("hexEditorButton"));
    picture(QStringLiteral("hex-editor"));
    m_window->type(QStringLiteral("hexSearchField"), m_sampleVin);
    m_window->click(QStringLiteral("hexFindButton"));
    const qsizetype position =
        contents(m_samples + QLatin1Char('/') + sampleName).indexOf(m_sampleVin.toLatin1());
    expectStatus(QStringLiteral("FOUND AT 0X%1").arg(QString::number(position, 16).toUpper()));
    picture(QStringLiteral("found"));

    m_window->type(QStringLiteral("hexPatchField"), m_patchedVin);
    m_window->click(QStringLiteral("hexApplyButton"));
    expectStatus(QStringLiteral("Patched 17 byte(s)."));
    picture(QStringLiteral("patched"));
    m_window->click(QStringLiteral("hexWriteBackButton"));
    expectStatus(QStringLiteral("Hex written back into the open file buffer."));
    check(!m_window->app()->showHex(), QStringLiteral("the hex editor to close"));
}

void Tour::saveAndReopen()
{
    m_window->click(QStringLiteral("saveFileButton"));
    m_window->item(QStringLiteral("fileNameTextField"));
    picture(QStringLiteral("save-dialog"));
    m_window->saveAs(patchedName);
    expectStatus(QStringLiteral("Saved."));
    picture(QStringLiteral("saved"));

    QByteArray expected = contents(m_samples + QLatin1Char('/') + sampleName);
    expected.replace(m_sampleVin.toLatin1(), m_patchedVin.toLatin1());
    check(contents(m_samples + QLatin1Char('/') + patchedName) == expected,
          QStringLiteral("the saved file differs from the sample in more than the VIN"));

    m_window->click(QStringLiteral("openFileButton"));
    m_window->chooseFile(patchedName);
    m_window->waitFor([this] { return m_window->app()->vin() == m_patchedVin; },
                      QStringLiteral("the service to read the patched VIN"));
    check(m_window->app()->fileName() == patchedName, QStringLiteral("the patched copy to be open"));
    picture(QStringLiteral("reopened"));
}

void Tour::openSeveralModules()
{
    m_window->click(QStringLiteral("openFileButton"));
    m_window->chooseFile(severalModulesName);
    m_window->waitFor([this] { return m_window->app()->modules().size() > 1; },
                      QStringLiteral("several modules"));
    picture(QStringLiteral("several-modules"));
}

// The folder of each file that came from the service: two conversions, a swap, a definition and a patched
// BIN.
void Tour::checkFoldersShown()
{
    check(m_desktop.opened == QList<QUrl>(5, QUrl::fromLocalFile(m_samples)),
          QStringLiteral("the documents folder was not shown for each saved file"));
}

// Only where a window manager can hold a window to its smallest size.
void Tour::shrinkWindow()
{
    if (m_small || QGuiApplication::platformName() != QLatin1String("xcb"))
        return;
    QQuickWindow *const window = m_window->window();
    const QSize usual = window->size();
    const auto resizeTo = [&](const QSize &size, const QSize &outcome) {
        window->resize(size);
        m_window->waitFor([&] { return window->size() == outcome; },
                          QStringLiteral("a size of %1 x %2").arg(outcome.width()).arg(outcome.height()));
    };
    check(usual == QSize(1440, 900), QStringLiteral("the size at the start"));
    resizeTo(QSize(800, 600), QSize(1100, 720));
    picture(QStringLiteral("smallest"));
    resizeTo(usual, usual);
}

void Tour::expectStatus(const QString &text)
{
    m_window->waitFor([&] { return m_window->app()->status() == text; },
                      QStringLiteral("the status \"%1\"").arg(text));
}

void Tour::picture(const QString &name)
{
    ++m_pictureCount;
    if (m_pictures.isEmpty())
        return;
    const QString file =
        QStringLiteral("%1/%2-%3.png")
            .arg(m_pictures, QString::number(m_pictureCount).rightJustified(2, QLatin1Char('0')), name);
    m_window->savePicture(file);
    std::printf("picture: %s\n", qPrintable(file));
}

// Called as soon as there is an application object: early enough to say where the service is, and the tour
// itself begins with the event loop.
void beginTour()
{
    static Tour tour;
    QTimer::singleShot(0, QCoreApplication::instance(), [] { QCoreApplication::exit(tour.run()); });
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(beginTour)

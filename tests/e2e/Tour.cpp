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
#include "support/TestFiles.h"
#include "support/TestMain.h"

#include <QCoreApplication>
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

using namespace Qt::StringLiterals;

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
    void editBytes();
    void compareBytes();
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

const QString sampleName = u"one-module.kvt"_s;
const QString severalModulesName = u"two-modules.kvt"_s;
const QString patchedName = u"patched copy #1.kvt"_s;

Tour::Tour()
{
    m_samples = TestEnvironment::documents();
    QString error;
    check(SampleData::generate(m_samples, &error) && m_service.start(&error), error);
    m_sample = SampleContainer::read(contentOf(m_samples + '/'_L1 + sampleName)).value();
    m_sampleVin = m_sample.modules.constFirst().vin;
    m_patchedVin = m_sampleVin.first(11) + u"999999"_s;
    const QString configuration =
        makeFile(TestEnvironment::home() + u"/service.json"_s,
                 QJsonDocument(QJsonObject{{u"apiBase"_s, m_service.apiBase()}}).toJson());
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
        editBytes();
        compareBytes();
        openSeveralModules();
        const auto takePicture = [this](const QString &name) { picture(name); };
        LibraryTour(*m_window, m_samples, takePicture).run();
        check(m_desktop.opened.size() == 1 && m_desktop.opened.constFirst().fileName().endsWith(".pdf"_L1),
              u"the manual was not opened"_s);
        m_desktop.opened.clear();
        ServiceTour(*m_window, m_samples, takePicture).run();
        checkFoldersShown();
        shrinkWindow();
    } catch (const DriveError &error) {
        std::fprintf(stderr, "tour: %s (status line: %s)\n", error.what(),
                     m_window ? qPrintable(m_window->app()->status()) : "none");
        if (m_window && !m_pictures.isEmpty())
            m_window->savePicture(m_pictures + u"/failed.png"_s);
        // The window may be in any state and must not keep the program from ending.
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
          u"the window on the platform \"%1\""_s.arg(QLatin1String(environment.platform)));
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
        u"the logo"_s);
    picture(u"start"_s);
    m_window->click(u"hexEditorButton"_s);
    expectStatus(u"Open an KVT first."_s);
    check(!m_window->isVisible(u"hexOverlay"_s), u"the hex editor opened on nothing"_s);
}

void Tour::openSample()
{
    m_window->click(u"openFileButton"_s);
    m_window->item(u"chooserRow"_s);
    picture(u"open-dialog"_s);

    m_window->chooseFile(sampleName);
    m_window->waitFor([this] { return m_window->app()->fileName() == sampleName; }, u"the file to open"_s);
    m_window->waitFor([this] { return m_window->app()->vin() == m_sampleVin; },
                      u"the identifiers of the service"_s);
    check(m_window->app()->created() == m_sample.created, u"the time of creation"_s);
    picture(u"identifiers"_s);
}

void Tour::editIdentifier()
{
    m_window->type(u"fuelField"_s, u"Flex fuel"_s);
    check(m_window->app()->fuel() == u"Flex fuel"_s, u"the edited identifier"_s);
    picture(u"identifier-edited"_s);
}

void Tour::findAndPatch()
{
    m_window->click(u"hexEditorButton"_s);
    picture(u"hex-editor"_s);
    m_window->type(u"hexSearchField"_s, m_sampleVin);
    m_window->click(u"hexFindButton"_s);
    const qsizetype position = contentOf(m_samples + '/'_L1 + sampleName).indexOf(m_sampleVin.toLatin1());
    expectStatus(u"FOUND AT 0X%1"_s.arg(QString::number(position, 16).toUpper()));
    picture(u"found"_s);

    m_window->type(u"hexPatchField"_s, m_patchedVin);
    m_window->click(u"hexApplyButton"_s);
    expectStatus(u"Patched 17 byte(s)."_s);
    picture(u"patched"_s);
    m_window->click(u"hexWriteBackButton"_s);
    expectStatus(u"Hex written back into the open file buffer."_s);
    check(!m_window->app()->showHex(), u"the hex editor to close"_s);
}

void Tour::saveAndReopen()
{
    m_window->click(u"saveFileButton"_s);
    m_window->item(u"chooserRow"_s);
    picture(u"save-dialog"_s);
    m_window->saveAs(patchedName);
    expectStatus(u"Saved."_s);
    picture(u"saved"_s);

    QByteArray expected = contentOf(m_samples + '/'_L1 + sampleName);
    expected.replace(m_sampleVin.toLatin1(), m_patchedVin.toLatin1());
    check(contentOf(m_samples + '/'_L1 + patchedName) == expected,
          u"the saved file differs from the sample in more than the VIN"_s);

    m_window->click(u"openFileButton"_s);
    m_window->chooseFile(patchedName);
    m_window->waitFor([this] { return m_window->app()->vin() == m_patchedVin; },
                      u"the service to read the patched VIN"_s);
    check(m_window->app()->fileName() == patchedName, u"the patched copy to be open"_s);
    picture(u"reopened"_s);
}

// All of it is undone again.
void Tour::editBytes()
{
    const HexModel *const model = m_window->app()->hexModel();
    const QByteArray before = model->bytes();
    m_window->click(u"hexEditorButton"_s);
    m_window->type(u"hexGoToField"_s, u"10:8"_s);
    m_window->key(Qt::Key_Return);
    expectStatus(u"Selected 0x10\u20130x17, 8 bytes."_s);
    m_window->key(Qt::Key_C, Qt::ControlModifier);
    expectStatus(u"8 bytes copied."_s);
    m_window->key(Qt::Key_B, Qt::ControlModifier);
    expectStatus(u"Bookmark set at 0x10."_s);
    m_window->key(Qt::Key_I, Qt::ControlModifier);
    m_window->item(u"hexInspector"_s);
    picture(u"hex-inspector"_s);
    m_window->key(Qt::Key_I, Qt::ControlModifier);

    m_window->key(Qt::Key_Down);
    m_window->key(Qt::Key_V, Qt::ControlModifier);
    expectStatus(u"Pasted 8 bytes."_s);
    m_window->key(Qt::Key_Right, Qt::ShiftModifier);
    m_window->type(u"hexPatchField"_s, u"AA 55"_s);
    m_window->click(u"hexFillButton"_s);
    expectStatus(u"Filled 2 bytes."_s);
    m_window->type(u"hexGoToField"_s, u"40"_s);
    m_window->key(Qt::Key_Return);
    for (const Qt::Key key : {Qt::Key_4, Qt::Key_B, Qt::Key_5, Qt::Key_6, Qt::Key_5})
        m_window->key(key);
    check(model->bytes().sliced(0x40, 2) == "KV", u"what was typed"_s);
    m_window->key(Qt::Key_F2);
    expectStatus(u"Bookmark 1 of 1 at 0x10."_s);
    picture(u"hex-typed"_s);
    m_window->key(Qt::Key_F7, Qt::ShiftModifier);
    m_window->key(Qt::Key_F7);
    m_window->waitFor([this] { return m_window->app()->status().startsWith("Change "_L1); },
                      u"the changes"_s);
    for (int step = 0; step < 3; ++step)
        m_window->key(Qt::Key_Z, Qt::ControlModifier);
    check(model->bytes() == before, u"the bytes after all was undone"_s);
    m_window->key(Qt::Key_Z, Qt::ControlModifier | Qt::ShiftModifier);
    check(model->bytes() != before, u"the step that was done again"_s);
    m_window->key(Qt::Key_Z, Qt::ControlModifier);
}

void Tour::compareBytes()
{
    const HexModel *const model = m_window->app()->hexModel();
    const QByteArray before = model->bytes();
    m_window->key(Qt::Key_K, Qt::ControlModifier);
    m_window->chooseFile(sampleName);
    expectStatus(u"Compared with %1."_s.arg(sampleName));
    m_window->key(Qt::Key_F6);
    m_window->waitFor([this] { return m_window->app()->status().startsWith("Difference 1 of "_L1); },
                      u"the first difference"_s);
    m_window->key(Qt::Key_L, Qt::ControlModifier);
    m_window->item(u"hexDifferencesList"_s);
    picture(u"hex-compare"_s);
    m_window->key(Qt::Key_T, Qt::ControlModifier);
    check(model->bytes() != before, u"what was taken over"_s);
    m_window->key(Qt::Key_Z, Qt::ControlModifier);
    check(model->bytes() == before, u"the bytes as they were"_s);
    m_window->key(Qt::Key_K, Qt::ControlModifier | Qt::ShiftModifier);
    m_window->key(Qt::Key_Escape);
    check(!m_window->app()->showHex(), u"the hex editor to close"_s);
}

void Tour::openSeveralModules()
{
    m_window->click(u"openFileButton"_s);
    m_window->chooseFile(severalModulesName);
    m_window->waitFor([this] { return m_window->app()->modules().size() > 1; }, u"several modules"_s);
    picture(u"several-modules"_s);
}

// The folder of each file that came from the service: two conversions, a swap, a definition and a patched
// BIN.
void Tour::checkFoldersShown()
{
    check(m_desktop.opened == QList<QUrl>(5, QUrl::fromLocalFile(m_samples)),
          u"the documents folder was not shown for each saved file"_s);
}

// Only where a window manager can hold a window to its smallest size.
void Tour::shrinkWindow()
{
    if (m_small || QGuiApplication::platformName() != "xcb"_L1)
        return;
    QQuickWindow *const window = m_window->window();
    const QSize usual = window->size();
    const auto resizeTo = [&](const QSize &size, const QSize &outcome) {
        window->resize(size);
        m_window->waitFor([&] { return window->size() == outcome; },
                          u"a size of %1 x %2"_s.arg(outcome.width()).arg(outcome.height()));
    };
    check(usual == QSize(1440, 900), u"the size at the start"_s);
    resizeTo(QSize(800, 600), QSize(1100, 720));
    picture(u"smallest"_s);
    resizeTo(usual, usual);
}

void Tour::expectStatus(const QString &text)
{
    m_window->waitFor([&] { return m_window->app()->status() == text; }, u"the status \"%1\""_s.arg(text));
}

void Tour::picture(const QString &name)
{
    ++m_pictureCount;
    if (m_pictures.isEmpty())
        return;
    const QString file =
        u"%1/%2-%3.png"_s.arg(m_pictures, QString::number(m_pictureCount).rightJustified(2, '0'_L1), name);
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

// Opens and saves files of difficult names through the program's real file dialogs, by clicks and keys.

#include "WindowDriver.h"
#include "app/AppState.h"
#include "support/TestFiles.h"
#include "support/TestMain.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QLibraryInfo>
#include <QQuickItem>
#include <QTimer>
#include <QVersionNumber>

#include <cstdio>
#include <filesystem>
#include <fstream>

using namespace Qt::StringLiterals;

namespace {

const TestEnvironment environment;

const QStringList names{
    u"plain.kvt"_s,      u"two words.kvt"_s,     u"größe é.kvt"_s,  u"number #1.kvt"_s, u"100%.kvt"_s,
    u"a%20b.kvt"_s,      u"what?.kvt"_s,         u"a&b.kvt"_s,      u"[set] (2).kvt"_s, u"<b>bold.kvt"_s,
    u"two\nlines.kvt"_s, u"<img src='x'>.kvt"_s, u"a\u202Eb.kvt"_s,
};

QStringList files(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files);
}

void openAndSave(const WindowDriver &window, const QString &name)
{
    const QString folder = TestEnvironment::documents();
    const QString path = makeFile(folder + '/'_L1 + name, "bytes of " + name.toUtf8());

    window.click(u"openFileButton"_s);
    window.chooseFile(name);
    window.waitFor([&] { return window.app()->fileName() == name; }, u"the file to open"_s);

    // Saved under the name that the dialog proposes: over itself, and nothing else appears.
    window.app()->hexPatch(u"BYTES"_s);
    window.click(u"saveFileButton"_s);
    window.item(u"fileNameTextField"_s);
    window.click(window.button(u"Save"_s));
    // From Qt 6.8 on, the dialog asks before it writes over a file.
    if (QLibraryInfo::version() >= QVersionNumber(6, 8))
        window.click(window.button(u"Yes"_s));
    window.waitFor([&] { return window.app()->status() == "Saved."_L1; }, u"the save"_s);
    check(files(folder) == QStringList{name}, files(folder).join('|'_L1));
    check(contentOf(path) == "BYTES of " + name.toUtf8(), u"the bytes"_s);
    check(window.app()->fileName() == name, window.app()->fileName());
    QFile::remove(path);
}

void saveTyped(const WindowDriver &window, const QString &name)
{
    const QString folder = TestEnvironment::documents();
    window.click(u"saveFileButton"_s);
    window.saveAs(name);
    window.waitFor([&] { return !files(folder).isEmpty(); }, u"the file"_s);
    check(files(folder) == QStringList{name}, files(folder).join('|'_L1));
    QFile::remove(folder + '/'_L1 + name);
}

// A file whose name the dialog cannot show as text, and its neighbours.
void openBesideUndecodable(const WindowDriver &window, const QString &name)
{
    const QString folder = TestEnvironment::documents();
    const std::filesystem::path undecodable =
        std::filesystem::path(QFile::encodeName(folder).constData()) / "caf\xe9.kvt";
    check(QDir().mkpath(folder), folder);
    std::ofstream(undecodable) << "bytes of another";
    check(std::filesystem::exists(undecodable), u"the file of undecodable name"_s);
    for (const QString &neighbour : {u"a "_s + name, u"z "_s + name}) {
        const QString path = makeFile(folder + '/'_L1 + neighbour, "bytes of " + neighbour.toUtf8());
        // Qt 6.8 and its dialog list few files or none in a folder with such a name.
        if (files(folder).contains(neighbour)) {
            window.click(u"openFileButton"_s);
            window.chooseFile(neighbour);
        } else {
            window.app()->openKvt(path);
        }
        window.waitFor([&] { return window.app()->fileName() == neighbour; }, u"the file to open"_s);
        check(window.app()->currentKvtBytes() == "bytes of " + neighbour.toUtf8(), u"the bytes"_s);
    }
    check(std::filesystem::file_size(undecodable) == 16, u"the file of undecodable name"_s);
    std::filesystem::remove(undecodable);
}

int run()
{
    int failed = 0;
    const WindowDriver window;
    for (const QString &name : names) {
        for (const auto &step : {openAndSave, saveTyped, openBesideUndecodable}) {
            if (step == saveTyped && name.contains('\n'_L1))
                continue;
            if (step == openBesideUndecodable && name != names.constFirst())
                continue;
            try {
                step(window, name);
                std::printf("passed: %s\n", qPrintable(name));
            } catch (const DriveError &error) {
                std::printf("FAILED: %s: %s (%s)\n", qPrintable(name), error.what(),
                            qPrintable(window.app()->status()));
                ++failed;
            }
            std::fflush(stdout);
            for (const QString &left : files(TestEnvironment::documents()))
                QFile::remove(TestEnvironment::documents() + '/'_L1 + left);
        }
    }
    return failed == 0 ? 0 : 1;
}

void begin()
{
    QTimer::singleShot(0, QCoreApplication::instance(), [] { QCoreApplication::exit(run()); });
}

} // namespace

Q_COREAPP_STARTUP_FUNCTION(begin)

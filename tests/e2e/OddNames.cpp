// Opens and saves files of difficult names through the program's real file dialogs, by clicks and keys.

#include "WindowDriver.h"
#include "app/AppState.h"
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

namespace {

const TestEnvironment environment;

const QStringList names{
    QStringLiteral("plain.kvt"),     QStringLiteral("two words.kvt"),  QStringLiteral("größe é.kvt"),
    QStringLiteral("number #1.kvt"), QStringLiteral("100%.kvt"),       QStringLiteral("a%20b.kvt"),
    QStringLiteral("what?.kvt"),     QStringLiteral("a&b.kvt"),        QStringLiteral("[set] (2).kvt"),
    QStringLiteral("<b>bold.kvt"),   QStringLiteral("two\nlines.kvt"), QStringLiteral("<img src='x'>.kvt"),
    QStringLiteral("a\u202Eb.kvt"),
};

QStringList files(const QString &folder)
{
    return QDir(folder).entryList(QDir::Files);
}

void openAndSave(const WindowDriver &window, const QString &name)
{
    const QString folder = TestEnvironment::documents();
    check(QDir().mkpath(folder), folder);
    QFile file(folder + QLatin1Char('/') + name);
    check(file.open(QIODevice::WriteOnly), file.errorString());
    file.write("bytes of " + name.toUtf8());
    file.close();

    window.click(QStringLiteral("openFileButton"));
    window.chooseFile(name);
    window.waitFor([&] { return window.app()->fileName() == name; }, QStringLiteral("the file to open"));

    // Saved under the name that the dialog proposes: over itself, and nothing else appears.
    window.app()->hexPatch(QStringLiteral("BYTES"));
    window.click(QStringLiteral("saveFileButton"));
    window.item(QStringLiteral("fileNameTextField"));
    window.click(window.button(QStringLiteral("Save")));
    // From Qt 6.8 on, the dialog asks before it writes over a file.
    if (QLibraryInfo::version() >= QVersionNumber(6, 8))
        window.click(window.button(QStringLiteral("Yes")));
    window.waitFor([&] { return window.app()->status() == QLatin1String("Saved."); },
                   QStringLiteral("the save"));
    check(files(folder) == QStringList{name}, files(folder).join(QLatin1Char('|')));
    check(file.open(QIODevice::ReadOnly) && file.readAll() == "BYTES of " + name.toUtf8(),
          QStringLiteral("the bytes"));
    check(window.app()->fileName() == name, window.app()->fileName());
    file.close();
    file.remove();
}

void saveTyped(const WindowDriver &window, const QString &name)
{
    const QString folder = TestEnvironment::documents();
    window.click(QStringLiteral("saveFileButton"));
    window.saveAs(name);
    window.waitFor([&] { return !files(folder).isEmpty(); }, QStringLiteral("the file"));
    check(files(folder) == QStringList{name}, files(folder).join(QLatin1Char('|')));
    QFile::remove(folder + QLatin1Char('/') + name);
}

// A file whose name is no text the dialog can show, and its neighbours.
void openBesideUndecodable(const WindowDriver &window, const QString &name)
{
    const QString folder = TestEnvironment::documents();
    const std::filesystem::path undecodable =
        std::filesystem::path(QFile::encodeName(folder).constData()) / "caf\xe9.kvt";
    check(QDir().mkpath(folder), folder);
    std::ofstream(undecodable) << "bytes of another";
    check(std::filesystem::exists(undecodable), QStringLiteral("the file of undecodable name"));
    for (const QString &neighbour : {QStringLiteral("a ") + name, QStringLiteral("z ") + name}) {
        QFile file(folder + QLatin1Char('/') + neighbour);
        check(file.open(QIODevice::WriteOnly), file.errorString());
        file.write("bytes of " + neighbour.toUtf8());
        file.close();
        // Qt 6.8 lists few files or none beside such a name, and so does its dialog.
        if (files(folder).contains(neighbour)) {
            window.click(QStringLiteral("openFileButton"));
            window.chooseFile(neighbour);
        } else {
            window.app()->openKvt(file.fileName());
        }
        window.waitFor([&] { return window.app()->fileName() == neighbour; },
                       QStringLiteral("the file to open"));
        check(window.app()->currentKvtBytes() == "bytes of " + neighbour.toUtf8(),
              QStringLiteral("the bytes"));
    }
    check(std::filesystem::file_size(undecodable) == 16, QStringLiteral("the file of undecodable name"));
    std::filesystem::remove(undecodable);
}

int run()
{
    int failed = 0;
    const WindowDriver window;
    for (const QString &name : names) {
        for (const auto &step : {openAndSave, saveTyped, openBesideUndecodable}) {
            if (step == saveTyped && name.contains(QLatin1Char('\n')))
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
                QFile::remove(TestEnvironment::documents() + QLatin1Char('/') + left);
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

#include "DevService.h"
#include "SampleData.h"

#include <QCommandLineParser>
#include <QCoreApplication>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>
#include <QTextStream>

#include <csignal>

using namespace Qt::StringLiterals;

namespace {

const QString whatItIs =
    u"A local stand-in of the editor's remote service, for trying the editor. It reads only its own "
    "sample container; it is not the real service and knows no real file formats."_s;

void say(const QString &line)
{
    QTextStream(stdout) << line << Qt::endl;
}

int complain(const QString &line)
{
    QTextStream(stderr) << line << Qt::endl;
    return 1;
}

void addOptions(QCommandLineParser &parser)
{
    parser.setApplicationDescription(whatItIs);
    parser.addOptions({
        {{u"h"_s, u"help"_s}, u"Show this help."_s},
        {u"port"_s, u"Listen on this port of 127.0.0.1; any free one by default."_s, u"N"_s, u"0"_s},
        {u"tls"_s, u"Speak TLS with this certificate and the key that follows it."_s, u"CERT> <KEY"_s},
        {u"update-version"_s, u"The latest version that the update check is told."_s, u"V"_s, u"4.0.2"_s},
        {u"sample-data"_s, u"Write the sample files into this folder first."_s, u"DIR"_s},
        {u"exit"_s, u"End after writing the sample files."_s},
        {u"port-file"_s, u"Write the port into this file once it listens."_s, u"FILE"_s},
        {u"config-file"_s,
         u"Write a configuration for the editor into this file once it listens; name the file in the "
         u"environment "
         "variable KVTEDITOR_SERVICE_CONFIG when you start the editor."_s,
         u"FILE"_s},
    });
}

/// Whole or not at all: who waits for the file must never read half of it.
bool writeWhole(const QString &path, const QByteArray &bytes)
{
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

int run(const QCommandLineParser &parser, const sigset_t &endings)
{
    const QStringList rest = parser.positionalArguments();
    const bool usesTls = parser.isSet(u"tls"_s);
    bool isNumber = false;
    const quint16 port = parser.value(u"port"_s).toUShort(&isNumber);
    if (!isNumber)
        return complain(u"--port takes a number from 0 to 65535"_s);
    if (rest.size() != (usesTls ? 1 : 0))
        return complain(usesTls ? u"--tls takes a certificate and a key"_s
                                : u"Unknown argument: %1"_s.arg(rest.first()));
    QString error;
    if (parser.isSet(u"sample-data"_s) && !SampleData::generate(parser.value(u"sample-data"_s), &error))
        return complain(error);
    if (parser.isSet(u"exit"_s))
        return 0;
    DevService service({.port = port,
                        .certificate = parser.value(u"tls"_s),
                        .key = rest.value(0),
                        .updateVersion = parser.value(u"update-version"_s)});
    if (!service.start(&error))
        return complain(error);
    const QByteArray config =
        QJsonDocument(QJsonObject{{u"apiBase"_s, service.apiBase()}}).toJson(QJsonDocument::Indented);
    for (const auto &[name, content] : {std::pair(u"port-file"_s, QByteArray::number(service.port()) + '\n'),
                                        std::pair(u"config-file"_s, config)}) {
        if (parser.isSet(name) && !writeWhole(parser.value(name), content))
            return complain(u"Cannot write "_s + parser.value(name));
    }
    say(u"Listening at "_s + service.apiBase());
    int signal = 0;
    sigwait(&endings, &signal);
    return 0;
}

} // namespace

int main(int argc, char **argv)
{
    // Before any thread is made, so that all of them leave these signals to the main thread.
    sigset_t endings;
    sigemptyset(&endings);
    for (const int signal : {SIGTERM, SIGINT})
        sigaddset(&endings, signal);
    pthread_sigmask(SIG_BLOCK, &endings, nullptr);

    const QCoreApplication application(argc, argv);
    say(whatItIs);
    QCommandLineParser parser;
    addOptions(parser);
    if (!parser.parse(QCoreApplication::arguments()))
        return complain(parser.errorText());
    if (parser.isSet(u"help"_s)) {
        say(parser.helpText());
        return 0;
    }
    return run(parser, endings);
}

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

struct Order
{
    DevService::Options service;
    QString sampleFolder;
    QString portFile;
    QString configFile;
    bool exits = false;
};

void say(const QString &line)
{
    QTextStream(stdout) << line << Qt::endl;
}

int complain(const QString &line)
{
    QTextStream(stderr) << line << Qt::endl;
    return 1;
}

/// Nothing, with the reason in `error`, when a value cannot be used.
std::optional<Order> readOrder(QCommandLineParser &parser, QString *error)
{
    Order order;
    bool isNumber = true;
    const int port = parser.isSet(u"port"_s) ? parser.value(u"port"_s).toInt(&isNumber) : 0;
    const QStringList rest = parser.positionalArguments();
    const bool tls = parser.isSet(u"tls"_s);
    if (!isNumber || port < 0 || port > 65535)
        *error = u"--port takes a number from 0 to 65535"_s;
    else if (rest.size() != (tls ? 1 : 0))
        *error = tls ? u"--tls takes a certificate and a key"_s : u"Unknown argument: %1"_s.arg(rest.first());
    if (!error->isEmpty())
        return std::nullopt;
    order.service.port = quint16(port);
    order.service.certificate = parser.value(u"tls"_s);
    order.service.key = rest.value(0);
    if (parser.isSet(u"update-version"_s))
        order.service.updateVersion = parser.value(u"update-version"_s);
    order.sampleFolder = parser.value(u"sample-data"_s);
    order.portFile = parser.value(u"port-file"_s);
    order.configFile = parser.value(u"config-file"_s);
    order.exits = parser.isSet(u"exit"_s);
    return order;
}

void addOptions(QCommandLineParser &parser)
{
    parser.setApplicationDescription(whatItIs);
    parser.addOptions({
        {{u"h"_s, u"help"_s}, u"Show this help."_s},
        {u"port"_s, u"Listen on this port of 127.0.0.1; any free one by default."_s, u"N"_s},
        {u"tls"_s, u"Speak TLS with this certificate and the key that follows it."_s, u"CERT> <KEY"_s},
        {u"update-version"_s, u"The latest version that the update check is told."_s, u"V"_s},
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
    if (path.isEmpty())
        return true;
    QSaveFile file(path);
    return file.open(QIODevice::WriteOnly) && file.write(bytes) == bytes.size() && file.commit();
}

int run(const Order &order, const sigset_t &endings)
{
    QString error;
    if (!order.sampleFolder.isEmpty() && !SampleData::generate(order.sampleFolder, &error))
        return complain(error);
    if (order.exits)
        return 0;
    DevService service(order.service);
    if (!service.start(&error))
        return complain(error);
    const QByteArray config =
        QJsonDocument(QJsonObject{{u"apiBase"_s, service.apiBase()}}).toJson(QJsonDocument::Indented);
    if (!writeWhole(order.portFile, QByteArray::number(service.port()) + '\n')
        || !writeWhole(order.configFile, config))
        return complain(u"Cannot write %1 or %2"_s.arg(order.portFile, order.configFile));
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
    QString error;
    const std::optional<Order> order = readOrder(parser, &error);
    return order ? run(*order, endings) : complain(error);
}

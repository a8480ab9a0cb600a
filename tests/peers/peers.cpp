// Runs the service's client against programs of others, and prints a row of a table for each check. run.sh
// starts them, and says in arguments of the form KEY=VALUE where they are.

#include "api/VoxApiClient.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QFile>
#include <QHash>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QNetworkAccessManager>
#include <QNetworkProxy>
#include <QNetworkReply>
#include <QProcess>
#include <QRandomGenerator>
#include <QRegularExpression>
#include <QSslCertificate>
#include <QSslConfiguration>
#include <QThread>
#include <QTimer>
#include <QUrl>

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <functional>
#include <optional>
#include <tuple>
#include <utility>

using namespace Qt::StringLiterals;

namespace {

constexpr std::chrono::seconds patience(20);
constexpr int sentOnceCalls = 50;
constexpr int redirectCalls = 20;
constexpr int earlyCalls = 5;
constexpr qsizetype largeUpload = 20'000'000;

QHash<QString, QString> arguments;
int checks = 0;
int failures = 0;

QString argument(const QString &name)
{
    return arguments.value(name);
}

QString authorityFile()
{
    return argument(u"folder"_s) + u"/certificates/ca.pem"_s;
}

// A row of the table; ports differ from run to run, so they are left out. What `isLimit` is a limit of Qt's
// that is documented; it is no failure, and shows when it has gone.
void report(const QString &what, const QString &peer, const QString &expected, QString seen, bool ok,
            bool isLimit = false)
{
    static const QRegularExpression port(u":\\d{4,5}\\b"_s);
    seen.remove(port).replace('|'_L1, "\\|"_L1);
    const QString verdict = ok ? u"ok"_s : isLimit ? u"Qt's limit"_s : u"**FAILED**"_s;
    const QString row = u"| %1 | %2 | %3 | %4 | %5 |"_s.arg(what, peer, expected, seen, verdict);
    std::puts(row.simplified().toUtf8().constData());
    std::fflush(stdout);
    ++checks;
    failures += ok || isLimit ? 0 : 1;
}

// Many cases that share a row: how many went well, and what was seen in the others.
class Tally
{
public:
    void add(const QString &name, bool ok, const QString &seen)
    {
        ++m_all;
        if (!ok)
            m_bad.append(name + ": "_L1 + seen);
    }

    void report(const QString &what, const QString &peer, const QString &expected) const
    {
        constexpr qsizetype shown = 4;
        QString seen = u"%1 of %2"_s.arg(m_all - m_bad.size()).arg(m_all);
        if (!m_bad.isEmpty())
            seen += "; "_L1 + m_bad.first(std::min(shown, m_bad.size())).join("; "_L1);
        if (m_bad.size() > shown)
            seen += "; ..."_L1;
        ::report(what, peer, expected, seen, m_all > 0 && m_bad.isEmpty());
    }

private:
    qsizetype m_all = 0;
    QStringList m_bad;
};

const QString neverEnded = u"never ended: 20 s"_s;

/// What one call of the client came to.
struct Outcome
{
    QByteArray body;
    QJsonObject object;
    QString error = neverEnded;

    QString text() const { return error.isEmpty() ? u"no error"_s : error; }
    QString status() const { return object["status"_L1].toString(); }
};

/// A part of a form: a file if it has a file name.
struct Part
{
    QString name;
    std::optional<QString> fileName;
    QByteArray value;

    bool operator==(const Part &) const = default;
};

// Of every request, where set. Qt asks no application-wide proxy for a loopback address.
std::optional<QNetworkProxy> proxyForAll;

Outcome outcomeOf(const QString &base, const std::function<void(VoxApiClient &, BytesCallback)> &send)
{
    Outcome outcome;
    QEventLoop loop;
    VoxApiClient client;
    client.setApiBase(base);
    QObject::connect(&client, &VoxApiClient::requestSent, &client, [](QNetworkReply *reply) {
        if (proxyForAll)
            reply->manager()->setProxy(*proxyForAll);
    });
    send(client, [&](const QByteArray &body, const QJsonObject &object, const QString &error) {
        outcome = {body, object, error};
        loop.quit();
    });
    QTimer::singleShot(patience, &loop, &QEventLoop::quit);
    loop.exec();
    return outcome;
}

JsonCallback asJson(const BytesCallback &callback)
{
    return [callback](const QJsonObject &object, const QString &error) { callback({}, object, error); };
}

Outcome postForm(const QString &base, const QString &path, const QList<Part> &parts)
{
    QVariantMap fields;
    QList<WorkerFile> files;
    for (const Part &part : parts) {
        if (part.fileName)
            files.append({part.name, *part.fileName, part.value});
        else
            fields.insert(part.name, QString::fromUtf8(part.value));
    }
    return outcomeOf(base, [&](VoxApiClient &client, const BytesCallback &callback) {
        client.postMultipart(path, fields, files, callback);
    });
}

Outcome postJson(const QString &base, const QString &path)
{
    return outcomeOf(base, [&](VoxApiClient &client, const BytesCallback &callback) {
        client.postJson(path, {{u"a"_s, u"b"_s}}, asJson(callback));
    });
}

Outcome getJson(const QString &base, const QString &path)
{
    return outcomeOf(base, [&](VoxApiClient &client, const BytesCallback &callback) {
        client.getJson(path, asJson(callback));
    });
}

Outcome download(const QString &url)
{
    return outcomeOf(
        {}, [&](VoxApiClient &client, const BytesCallback &callback) { client.downloadFile(url, callback); });
}

QByteArray contentOf(const QString &name)
{
    QFile file(argument(u"folder"_s) + '/'_L1 + name);
    if (!file.open(QIODevice::ReadOnly))
        qFatal("%s: %s", qPrintable(file.fileName()), qPrintable(file.errorString()));
    return file.readAll();
}

// Waits for another process; it tells nobody.
bool waitFor(const std::function<bool()> &condition)
{
    const QDeadlineTimer deadline(patience);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QThread::msleep(10);
    }
    return true;
}

/// nginx's "METHOD PATH STATUS" lines since the object was made.
class RequestLog
{
public:
    RequestLog() { m_start = upToNow().size(); }

    /// How many lines begin with the text.
    qsizetype count(const QString &beginning) const
    {
        return std::ranges::count_if(upToNow().sliced(m_start), [&](const QByteArray &line) {
            return line.startsWith(beginning.toUtf8());
        });
    }

private:
    // Its only worker writes a line as a request ends: all earlier ones precede that of a last request.
    static QByteArrayList upToNow()
    {
        static int marks = 0;
        const QString path = u"file?mark=%1"_s.arg(++marks);
        download(argument(u"nginx"_s) + path);
        const QByteArray mark = "GET /" + path.toUtf8() + ' ';
        if (!waitFor([&] { return contentOf(u"nginx-access.log"_s).contains(mark); }))
            qFatal("nginx logs nothing");
        return contentOf(u"nginx-access.log"_s).trimmed().split('\n');
    }

    qsizetype m_start = 0;
};

// How often the raw server got the header of a request.
qsizetype rawCount(const QString &request)
{
    return contentOf(u"raw.log"_s).count("request " + request.toUtf8() + '\n');
}

// Forms

// A server that keeps what arrives.
const QString raw = u"raw"_s;
const QStringList everyParser{u"php"_s, u"werkzeug"_s, u"busboy"_s, raw};

// What a parser read, in order.
QList<Part> partsIn(const QJsonObject &answer)
{
    QList<Part> parts;
    for (const QJsonValue &value : answer["parts"_L1].toArray()) {
        Part part{
            value["name"_L1].toString(), {}, QByteArray::fromBase64(value["value"_L1].toString().toLatin1())};
        if (value["fileName"_L1].isString())
            part.fileName = value["fileName"_L1].toString();
        parts.append(part);
    }
    return parts;
}

// A form as it has to be on the wire, between the boundaries that the client chose.
QByteArray wireForm(const QList<Part> &parts, const QByteArray &boundary)
{
    QByteArray wire;
    for (const Part &part : parts) {
        wire += "--" + boundary + "\r\nContent-Disposition: form-data; name=\"" + part.name.toUtf8() + '"';
        if (part.fileName)
            wire +=
                "; filename=\"" + part.fileName->toUtf8() + "\"\r\nContent-Type: application/octet-stream";
        wire += "\r\n\r\n" + part.value + "\r\n";
    }
    return wire + "--" + boundary + "--\r\n";
}

QString shortText(const QByteArray &bytes)
{
    QString text = QString::fromUtf8(bytes.first(std::min<qsizetype>(bytes.size(), 60)));
    for (QChar &c : text) {
        if (!c.isPrint())
            c = QChar(0x2400 + std::min<int>(c.unicode(), 0x21));
    }
    return text;
}

QString description(const QList<Part> &parts)
{
    QStringList texts;
    for (const Part &part : parts)
        texts.append(u"[%1][%2] %3 bytes"_s.arg(shortText(part.name.toUtf8()),
                                                part.fileName ? shortText(part.fileName->toUtf8()) : u"-"_s,
                                                QString::number(part.value.size())));
    return texts.isEmpty() ? u"no part"_s : texts.join(", "_L1);
}

// Sends a form and adds whether it was read as expected.
void tryForm(const QString &row, const QString &parser, const QList<Part> &sent, const QList<Part> &expected,
             Tally &tally)
{
    if (parser == raw) {
        const Outcome outcome = postForm(argument(u"server"_s), u"echo"_s, sent);
        const QString type = outcome.object["type"_L1].toString();
        const QByteArray boundary = type.section('"'_L1, 1, 1).toLatin1();
        const QByteArray body = QByteArray::fromBase64(outcome.object["body"_L1].toString().toLatin1());
        const bool ok = outcome.error.isEmpty() && type.startsWith("multipart/form-data; boundary="_L1)
            && !boundary.isEmpty() && body == wireForm(expected, boundary);
        tally.add(row, ok,
                  outcome.text() + ": "_L1
                      + shortText(body.sliced(std::min<qsizetype>(body.size(), boundary.size() + 4))));
        return;
    }
    const Outcome outcome = postForm(argument(u"nginx"_s), parser, sent);
    const QList<Part> read = partsIn(outcome.object);
    tally.add(row, outcome.error.isEmpty() && read == expected,
              outcome.error.isEmpty() ? description(read) : outcome.error);
}

using Named = std::pair<QString, QString>;

// Whoever reads a form leaves these as they are.
const QList<Named> fieldNames{
    {u"plain"_s, u"version"_s},    {u"backslash"_s, u"a\\b"_s}, {u"semicolon"_s, u"a;b=c"_s},
    {u"percent"_s, u"a%22b%0d"_s}, {u"umlauts"_s, u"größe"_s},  {u"emoji"_s, u"🚚"_s},
};
const QList<Named> fileNames{
    {u"plain"_s, u"tune.kvt"_s},
    {u"blanks inside"_s, u"my tune 2.kvt"_s},
    {u"blanks around"_s, u"  tune.kvt  "_s},
    {u"backslash"_s, u"a\\b.kvt"_s},
    {u"apostrophe"_s, u"a'b.kvt"_s},
    {u"slash"_s, u"a/b.kvt"_s},
    {u"semicolon"_s, u"a; name=x; b.kvt"_s},
    {u"percent"_s, u"a%22%0Db%.kvt"_s},
    {u"umlauts"_s, u"Größe äÖü é.kvt"_s},
    {u"decomposed umlaut"_s, u"u\u0308.kvt"_s},
    {u"two scripts"_s, u"настройка 調整.kvt"_s},
    {u"emoji"_s, u"🚚🇩🇪.kvt"_s},
    {u"right-to-left override"_s, u"a\u202etvk.kvt"_s},
    {u"200 characters"_s, u"x"_s.repeated(200)},
};
// For these each has rules of its own.
const QList<Named> oddFieldNames{
    {u"double quote"_s, u"a\"b"_s}, {u"two backslashes"_s, u"a\\\\b"_s},
    {u"blanks"_s, u" a b "_s},      {u"dot"_s, u"a.b"_s},
    {u"bracket"_s, u"a[b"_s},
};
const QList<Named> oddFileNames{
    {u"double quote"_s, u"a\"b.kvt"_s},
    {u"double quotes around"_s, u"\"a\".kvt"_s},
    {u"backslash before a quote"_s, u"a\\\"b.kvt"_s},
    {u"backslash at the end"_s, u"a\\"_s},
    {u"two backslashes"_s, u"a\\\\b.kvt"_s},
    {u"line separators"_s, u"a\u2028b\u0085c.kvt"_s},
    {u"empty"_s, u""_s},
};

QList<Named> controlNames()
{
    QList<Named> names;
    for (int code = 0; code <= 0x7f; code = code == 0x1f ? 0x7f : code + 1)
        names.append({u"0x%1"_s.arg(code, 2, 16, '0'_L1), u"a"_s + QChar(code) + 'b'_L1});
    return names;
}

// A form of one field, or of one file.
QList<Part> oneNamed(const QString &name, bool isFile)
{
    return {isFile ? Part{u"f"_s, name, "x"_ba} : Part{name, {}, "x"_ba}};
}

// What a parser reads in a form that curl takes over as it is.
QList<Part> readFromCurl(const QString &parser, const QList<Part> &parts)
{
    QProcess curl;
    curl.start(u"curl"_s,
               {u"--silent"_s, u"--fail"_s, u"--cacert"_s, authorityFile(), u"--noproxy"_s, u"*"_s,
                u"--header"_s, u"Content-Type: multipart/form-data; boundary=curl"_s, u"--data-binary"_s,
                u"@-"_s, argument(u"nginx"_s) + parser});
    curl.write(wireForm(parts, "curl"_ba));
    curl.closeWriteChannel();
    if (!curl.waitForFinished() || curl.exitCode() != 0)
        qFatal("curl: %s", qPrintable(curl.errorString()));
    return partsIn(QJsonDocument::fromJson(curl.readAllStandardOutput()).object());
}

void checkNames(bool ofFiles)
{
    const QString whose = ofFiles ? u"names of files"_s : u"names of fields"_s;
    for (const QString &parser : everyParser) {
        Tally plain, odd, controls;
        for (const auto &[row, name] : ofFiles ? fileNames : fieldNames)
            tryForm(row, parser, oneNamed(name, ofFiles), oneNamed(name, ofFiles), plain);
        for (const auto &[row, name] : ofFiles ? oddFileNames : oddFieldNames) {
            const QList<Part> form = oneNamed(name, ofFiles);
            tryForm(row, parser, form, parser == raw ? form : readFromCurl(parser, form), odd);
        }
        for (const auto &[row, name] : controlNames())
            tryForm(row, parser, oneNamed(name, ofFiles), oneNamed(u"a_b"_s, ofFiles), controls);
        plain.report(whose, parser, u"as sent"_s);
        odd.report(u"quotes and the like in "_s + whose, parser,
                   parser == raw ? u"as sent"_s : u"as from curl, by rules of its own"_s);
        controls.report(u"control characters in "_s + whose, parser, u"each a \"_\""_s);
    }
}

QByteArray randomBytes(qsizetype size)
{
    QByteArray bytes(size, Qt::Uninitialized);
    QRandomGenerator(1).generate(bytes.begin(), bytes.end());
    return bytes;
}

void checkContents()
{
    QByteArray everyByte;
    for (int byte = 0; byte < 256; ++byte)
        everyByte.append(static_cast<char>(byte));
    const QList<std::pair<QString, QByteArray>> texts{
        {u"empty"_s, ""_ba},
        {u"blanks"_s, "  a  "_ba},
        {u"line breaks"_s, "\r\na\rb\nc\r\n\r\n"_ba},
        {u"NUL"_s, "a\0b"_ba},
        {u"control characters"_s, everyByte.first(32) + '\x7f'},
        {u"quotes"_s, R"("a\"b' & <c> %22 +)"_ba},
        {u"umlauts, emoji"_s, u"Größe 🚚 調整"_s.toUtf8()},
        {u"like a boundary"_s,
         "\r\n--boundary_.oOo._\r\nContent-Disposition: form-data; name=\"b\"\r\n\r\nc\r\n--"_ba},
        {u"1 MiB"_s, "0123456789abcdef"_ba.repeated(65536)},
    };
    QList<std::pair<QString, QByteArray>> contents = texts;
    contents.append({{u"every byte"_s, everyByte}, {u"1 MiB of noise"_s, randomBytes(1 << 20)}});
    const QList<Part> five{{u"a"_s, {}, "1"_ba},
                           {u"b"_s, {}, ""_ba},
                           {u"c"_s, {}, "3"_ba},
                           {u"z"_s, u"z.kvt"_s, "4"_ba},
                           {u"f"_s, u"f.kvt"_s, "5"_ba}};
    for (const QString &parser : everyParser) {
        Tally values, files, order;
        for (const auto &[row, text] : texts)
            tryForm(row, parser, {{u"v"_s, {}, text}}, {{u"v"_s, {}, text}}, values);
        values.report(u"values of fields"_s, parser, u"as sent"_s);
        for (const auto &[row, content] : contents) {
            const QList<Part> parts{{u"v"_s, {}, "1"_ba}, {u"f"_s, u"f.kvt"_s, content}};
            tryForm(row, parser, parts, parts, files);
        }
        files.report(u"contents of files"_s, parser, u"as sent"_s);
        tryForm(u"five parts"_s, parser, five, five, order);
        order.report(u"three fields, two files"_s, parser, u"all, in order"_s);
    }
}

void checkForms()
{
    checkContents();
    checkNames(false);
    checkNames(true);
}

// Requests

void checkOnce()
{
    const RequestLog log;
    Tally forms, objects;
    for (int i = 0; i < sentOnceCalls; ++i) {
        const QString n = QString::number(i);
        const Outcome form = postForm(argument(u"nginx"_s), u"busboy?n="_s + n,
                                      {{u"a"_s, {}, "b"_ba}, {u"f"_s, u"f.kvt"_s, randomBytes(100'000)}});
        const Outcome object = postJson(argument(u"nginx"_s), u"php?n="_s + n);
        const qsizetype formCount = log.count(u"POST /busboy?n=%1 "_s.arg(n));
        const qsizetype objectCount = log.count(u"POST /php?n=%1 "_s.arg(n));
        forms.add(n, form.error.isEmpty() && formCount == 1,
                  u"%1, sent %2 times"_s.arg(form.text()).arg(formCount));
        objects.add(n, object.error.isEmpty() && objectCount == 1,
                    u"%1, sent %2 times"_s.arg(object.text()).arg(objectCount));
    }
    forms.report(u"a form is sent once"_s, u"nginx"_s, u"one line in its log"_s);
    objects.report(u"JSON is sent once"_s, u"nginx"_s, u"one line in its log"_s);
}

void checkRedirects()
{
    const QString nginx = argument(u"nginx"_s);
    const QByteArray content = contentOf(u"files/file"_s);
    for (const QString &place : {u"here"_s, u"there"_s}) {
        for (const int status : {301, 302, 303, 307, 308}) {
            const QString path = u"%1/%2"_s.arg(place).arg(status);
            const RequestLog log;
            int whole = 0;
            for (int i = 0; i < redirectCalls; ++i) {
                const Outcome outcome = download(nginx + path);
                whole += outcome.error.isEmpty() && outcome.body == content ? 1 : 0;
            }
            const qsizetype first = log.count(u"GET /%1 "_s.arg(path));
            const qsizetype second = log.count(u"GET /file "_s);
            report(
                u"%1 to %2, %3 calls"_s.arg(status)
                    .arg(place == "here"_L1 ? u"the same host"_s : u"another port"_s)
                    .arg(redirectCalls),
                u"nginx"_s, u"file; each address asked for once"_s,
                u"%1 files; first address asked for %2 times, second %3"_s.arg(whole).arg(first).arg(second),
                whole == redirectCalls && first == redirectCalls && second == redirectCalls,
                // Some of them twice.
                whole == redirectCalls && first > redirectCalls && first <= 2 * redirectCalls
                    && second == redirectCalls);
        }
    }
    const RequestLog log;
    const Outcome insecure = download(nginx + "plain"_L1);
    const qsizetype asked = log.count(u"GET /file "_s);
    report(u"302 to http"_s, u"nginx"_s, u"insecure redirect; not asked for"_s,
           u"%1; asked for %2 times"_s.arg(insecure.text()).arg(asked),
           insecure.error.contains("insecure redirect"_L1, Qt::CaseInsensitive) && asked == 0);
    const Outcome loop = download(nginx + "loop"_L1);
    report(u"302 to itself"_s, u"nginx"_s, u"too many redirects"_s,
           u"%1; asked for %2 times"_s.arg(loop.text()).arg(log.count(u"GET /loop "_s)),
           loop.error.contains("too many redirects"_L1, Qt::CaseInsensitive));
}

// The answer's status, by number or name, or at least that the upload did not get through.
void checkEarly()
{
    struct Early
    {
        QString what;
        QString server;
        QString path;
        QString answer;
    };
    const QString unauthorized = u"server replied: Unauthorized|requires authentication"_s;
    const QString tooLarge = u"server replied: .*Too Large"_s;
    const Early cases[] = {
        {u"413, lingering close"_s, u"nginx"_s, u"large/keep"_s, tooLarge},
        {u"413, closed at once"_s, u"nginx"_s, u"large/drop"_s, tooLarge},
        {u"401, closed at once"_s, u"server"_s, u"close/401"_s, unauthorized},
        {u"413, closed at once"_s, u"server"_s, u"close/413"_s, tooLarge},
        {u"401, kept open, reads no more"_s, u"server"_s, u"hold/401"_s, unauthorized},
        {u"413, kept open, reads no more"_s, u"server"_s, u"hold/413"_s, tooLarge},
    };
    for (const Early &each : cases) {
        const QRegularExpression expected(u"(%1)$|^Connection closed$"_s.arg(each.answer),
                                          QRegularExpression::CaseInsensitiveOption);
        QMap<QString, int> texts;
        bool ok = true;
        // Qt reads an answer only after it has sent everything.
        const bool isHeld = each.path.startsWith("hold/"_L1);
        for (int i = 0; i < earlyCalls && !texts.contains(neverEnded); ++i) {
            const QString request = "POST /"_L1 + each.path;
            const qsizetype before = rawCount(request);
            const Outcome outcome = postForm(argument(each.server), each.path,
                                             {{u"f"_s, u"f.kvt"_s, QByteArray(largeUpload, 'x')}});
            ++texts[outcome.text()];
            ok = ok && expected.match(outcome.error).hasMatch();
            if (each.server == "server"_L1 && rawCount(request) != before + 1) {
                ++texts[u"not sent once"_s];
                ok = false;
            }
        }
        QStringList seen;
        for (auto it = texts.cbegin(); it != texts.cend(); ++it)
            seen.append(u"%1 times \"%2\""_s.arg(it.value()).arg(it.key()));
        report(u"20 MB: "_s + each.what, each.server == "nginx"_L1 ? each.server : raw,
               u"the status, or that it was closed"_s, seen.join("; "_L1), ok,
               isHeld && texts.keys() == QStringList{neverEnded});
    }
}

void checkInterim()
{
    for (const QString &status : {u"100"_s, u"102"_s, u"103"_s}) {
        for (const QString &method : {u"POST"_s, u"GET"_s}) {
            Tally tally;
            for (const QString &pace : {u"together"_s, u"apart"_s}) {
                const QString path = u"interim/%1/%2?%3"_s.arg(status, pace, method);
                const QString base = argument(u"server"_s);
                const Outcome outcome = method == "POST"_L1 ? postJson(base, path) : getJson(base, path);
                const qsizetype sent = rawCount(method + " /"_L1 + path);
                const bool isFinal = outcome.error.isEmpty() && outcome.status() == "final"_L1;
                tally.add(pace,
                          (isFinal || (status != "100"_L1 && outcome.error.contains("outcome"_L1)))
                              && sent == 1,
                          u"\"%1\", status \"%2\", sent %3 times"_s.arg(outcome.text(), outcome.status())
                              .arg(sent));
            }
            tally.report(u"%1 before 200, %2"_s.arg(status, method), raw,
                         status == "100"_L1 ? u"the 200, sent once"_s
                                            : u"the 200, or that the outcome is unknown; sent once"_s);
        }
    }
}

void checkAlert()
{
    const QString base = argument(u"server"_s);
    const std::pair<QString, Outcome> outcomes[] = {
        {u"GET"_s, download(base + "alert"_L1)},
        {u"POST"_s, postForm(base, u"alert"_s, {{u"a"_s, {}, "b"_ba}})}};
    for (const auto &[method, outcome] : outcomes)
        report(u"%1, no length, ends by close-notify alone"_s.arg(method), raw, u"whole body"_s,
               u"%1, %2 bytes"_s.arg(outcome.text()).arg(outcome.body.size()),
               outcome.error.isEmpty() && outcome.body == "whole"_ba, outcome.error == neverEnded);
}

void checkTls()
{
    const QList<Part> form{{u"session_token"_s, {}, "secret"_ba}};
    for (const auto &[what, server, path] : {std::tuple(u"address"_s, u"nginx"_s, u"php"_s),
                                             std::tuple(u"host name"_s, u"byName"_s, u"php"_s)}) {
        const Outcome outcome = postForm(argument(server), path, form);
        report(u"good certificate, by "_s + what, u"nginx"_s, u"the form arrives"_s, outcome.text(),
               outcome.error.isEmpty() && partsIn(outcome.object) == form);
    }
    const std::pair<QString, QString> refused[] = {{u"self-signed"_s, u"self-signed"_s},
                                                   {u"unknown-ca"_s, u"issuer"_s},
                                                   {u"other-host"_s, u"host name"_s},
                                                   {u"expired"_s, u"expired"_s}};
    for (const auto &[name, cause] : refused) {
        const Outcome outcome = postForm(argument(name), u"echo"_s, form);
        const QRegularExpression end(u"^ended %1 (\\d+)$"_s.arg(name), QRegularExpression::MultilineOption);
        const bool ended =
            waitFor([&] { return end.match(QString::fromUtf8(contentOf(u"raw.log"_s))).hasMatch(); });
        qint64 bytes = 0;
        for (const QRegularExpressionMatch &match :
             end.globalMatch(QString::fromUtf8(contentOf(u"raw.log"_s))))
            bytes += match.captured(1).toLongLong();
        report(name + " certificate"_L1, raw, u"the cause; no byte arrives"_s,
               u"%1; %2 bytes"_s.arg(outcome.text()).arg(bytes),
               outcome.error.contains(cause) && ended && bytes == 0);
    }
}

void checkProxy()
{
    const QString nginx = argument(u"nginx"_s);
    const QList<Part> form{{u"a"_s, {}, "b"_ba}, {u"f"_s, u"f.kvt"_s, randomBytes(1 << 20)}};
    const auto useProxy = [](const QString &port) {
        proxyForAll = QNetworkProxy(QNetworkProxy::HttpProxy, u"127.0.0.1"_s, port.toUShort());
    };
    const auto connects = [](const QString &base) {
        return contentOf(u"proxy.log"_s).count(u"CONNECT 127.0.0.1:%1 "_s.arg(QUrl(base).port()).toUtf8());
    };
    const qsizetype before = connects(nginx);
    useProxy(argument(u"proxy"_s));
    const Outcome arrived = postForm(nginx, u"busboy"_s, form);
    report(u"a form through a proxy"_s, u"tinyproxy"_s, u"arrives"_s,
           u"%1; %2 CONNECT"_s.arg(arrived.text()).arg(connects(nginx) - before),
           arrived.error.isEmpty() && partsIn(arrived.object) == form && connects(nginx) > before);
    const Outcome refused = postForm(argument(u"server"_s), u"echo"_s, form);
    report(u"a proxy that refuses"_s, u"tinyproxy"_s, u"the proxy's refusal"_s, refused.text(),
           refused.error.contains("proxy"_L1, Qt::CaseInsensitive));
    useProxy(argument(u"closed"_s));
    const Outcome absent = postForm(nginx, u"busboy"_s, form);
    report(u"no proxy at its address"_s, u"-"_s, u"the proxy's refusal"_s, absent.text(),
           absent.error.contains("proxy"_L1, Qt::CaseInsensitive));
    proxyForAll.reset();
}

const std::pair<const char *, void (*)()> groups[] = {
    {"forms", checkForms}, {"once", checkOnce},       {"redirects", checkRedirects},
    {"early", checkEarly}, {"interim", checkInterim}, {"alert", checkAlert},
    {"tls", checkTls},     {"proxy", checkProxy},
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication app(argc, argv);
    for (const QString &each : QCoreApplication::arguments().sliced(1))
        arguments.insert(each.section('='_L1, 0, 0), each.section('='_L1, 1));

    const QStringList wanted = argument(u"only"_s).split(','_L1);
    for (const QString &name : wanted) {
        if (std::ranges::none_of(groups,
                                 [&](const auto &group) { return name == QLatin1String(group.first); })) {
            std::fprintf(stderr, "peers: there is no group \"%s\"\n", qPrintable(name));
            return 2;
        }
    }

    QSslConfiguration configuration = QSslConfiguration::defaultConfiguration();
    if (!configuration.addCaCertificates(authorityFile()))
        qFatal("%s is no authority", qPrintable(authorityFile()));
    QSslConfiguration::setDefaultConfiguration(configuration);

    std::printf("Qt %s\n\n| what | peer | expected | seen | |\n|---|---|---|---|---|\n", qVersion());
    for (const auto &[name, check] : groups) {
        if (wanted.contains(QLatin1String(name)))
            check();
    }
    std::printf("\n%d checks, %d failed\n", checks, failures);
    return checks > 0 && failures == 0 ? 0 : 1;
}

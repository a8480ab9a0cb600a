#include "Faults.h"

#include <zlib.h>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

using Phase = FaultKind::Phase;
using End = FaultScript::End;

constexpr qint64 mebibyte = qint64(1) << 20;

QByteArray okJson()
{
    return R"({"status":"ok"})";
}

QByteArray html()
{
    return "<!DOCTYPE html><html><body><h1>Gateway</h1></body></html>\n";
}

QByteArray head(const QByteArray &statusLine, const QByteArray &headers)
{
    return "HTTP/1.1 " + statusLine + "\r\nConnection: close\r\n" + headers + "\r\n";
}

QByteArray sized(const QByteArray &statusLine, const QByteArray &type, const QByteArray &body)
{
    return head(statusLine,
                "Content-Type: " + type + "\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n")
        + body;
}

FaultScript json(const QByteArray &body)
{
    return {.bytes = sized("200 OK", "application/json", body)};
}

FaultScript okWith(const QByteArray &headers, const QByteArray &body)
{
    return {.bytes = head("200 OK", "Content-Type: application/json\r\n" + headers) + body};
}

/// The header and the first half of the ordinary body, or of its header when it has none.
QByteArray firstHalf(const QByteArray &answer)
{
    const qsizetype body = answer.indexOf("\r\n\r\n") + 4;
    return answer.left(body + (answer.size() - body) / 2);
}

FaultScript statusScript(const FaultInput &input)
{
    const QByteArray line = input.arguments.value(0).toLatin1() + " Fault";
    const QString form = input.arguments.value(1, u"json"_s);
    if (form == "html"_L1)
        return {.bytes = sized(line, "text/html", html())};
    if (form == "empty"_L1)
        return {.bytes = sized(line, "text/plain", {})};
    return {.bytes = sized(line, "application/json",
                           R"({"status":"error","message":"Switched fault","error":"Switched fault"})")};
}

FaultScript redirect(const QByteArray &location)
{
    return {.bytes = head("302 Found", "Location: " + location + "\r\nContent-Length: 0\r\n")};
}

QByteArray gzipped(qint64 size)
{
    z_stream stream = {};
    deflateInit2(&stream, Z_BEST_SPEED, Z_DEFLATED, MAX_WBITS + 16, 8, Z_DEFAULT_STRATEGY);
    QByteArray input(mebibyte, '0');
    QByteArray output(mebibyte, Qt::Uninitialized);
    QByteArray result;
    for (qint64 left = size; left > 0 || stream.avail_out == 0;) {
        if (stream.avail_in == 0 && left > 0) {
            stream.next_in = reinterpret_cast<Bytef *>(input.data());
            stream.avail_in = static_cast<uInt>(std::min(left, mebibyte));
            left -= stream.avail_in;
        }
        stream.next_out = reinterpret_cast<Bytef *>(output.data());
        stream.avail_out = static_cast<uInt>(output.size());
        deflate(&stream, left > 0 ? Z_NO_FLUSH : Z_FINISH);
        result.append(output.constData(), output.size() - qsizetype(stream.avail_out));
    }
    deflateEnd(&stream);
    return result;
}

FaultScript gzipScript(const QByteArray &body, qsizetype sent)
{
    return {.bytes = head("200 OK",
                          "Content-Type: application/json\r\nContent-Encoding: gzip\r\nContent-Length: "
                              + QByteArray::number(body.size()) + "\r\n")
                + body.left(sent)};
}

FaultScript largeScript(const QByteArray &type, const QByteArray &before, const QByteArray &after)
{
    const qint64 size = 64 * mebibyte;
    return {.bytes =
                head("200 OK",
                     "Content-Type: " + type + "\r\nContent-Length: " + QByteArray::number(size) + "\r\n")
                + before,
            .fillerSize = size - before.size() - after.size(),
            .tail = after};
}

FaultScript nothing(const FaultInput &)
{
    return {};
}

constexpr FaultKind kinds[] = {
    {"refuse"_L1, Phase::WholeService, nothing},
    {"hold"_L1, Phase::Held, [](const FaultInput &in) { return FaultScript{.bytes = in.ordinary}; }},
    {"close"_L1, Phase::Instead, nothing},
    {"close-early"_L1, Phase::BeforeBody, [](const FaultInput &) { return FaultScript{.end = End::Close}; }},
    {"reset"_L1, Phase::Instead, [](const FaultInput &) { return FaultScript{.end = End::Reset}; }},
    {"reset-early"_L1, Phase::BeforeBody, [](const FaultInput &) { return FaultScript{.end = End::Reset}; }},
    {"reset-mid-body"_L1, Phase::Bent,
     [](const FaultInput &in) { return FaultScript{.bytes = firstHalf(in.ordinary), .end = End::Reset}; }},
    {"short-body"_L1, Phase::Bent,
     [](const FaultInput &in) { return FaultScript{.bytes = firstHalf(in.ordinary)}; }},
    {"long-body"_L1, Phase::Bent,
     [](const FaultInput &in) { return FaultScript{.bytes = in.ordinary + "more than announced"}; }},
    {"slow"_L1, Phase::Bent,
     [](const FaultInput &in) { return FaultScript{.bytes = in.ordinary, .slow = true}; }},
    {"status"_L1, Phase::Instead, statusScript},
    {"unauthorized"_L1, Phase::Instead,
     [](const FaultInput &) {
         return FaultScript{.bytes =
                                head("401 Unauthorized",
                                     "WWW-Authenticate: Basic realm=\"stand-in\"\r\nContent-Length: 0\r\n")};
     }},
    {"html-200"_L1, Phase::Instead,
     [](const FaultInput &) { return FaultScript{.bytes = sized("200 OK", "text/html", html())}; }},
    {"bad-json"_L1, Phase::Instead, [](const FaultInput &) { return json(R"({"status":"ok",)"); }},
    {"trailing-json"_L1, Phase::Instead, [](const FaultInput &) { return json(okJson() + " and more"); }},
    {"array-json"_L1, Phase::Instead, [](const FaultInput &) { return json("[1,2,3]"); }},
    {"deep-json"_L1, Phase::Instead, [](const FaultInput &) { return json(QByteArray(100'000, '[')); }},
    {"bom-json"_L1, Phase::Instead, [](const FaultInput &) { return json("\xef\xbb\xbf" + okJson()); }},
    {"empty-body"_L1, Phase::Instead, [](const FaultInput &) { return json({}); }},
    {"body-64m"_L1, Phase::Instead,
     [](const FaultInput &) { return largeScript("application/octet-stream", {}, {}); }},
    {"json-64m"_L1, Phase::Instead,
     [](const FaultInput &) {
         return largeScript("application/json", R"({"status":"ok","padding":")", R"("})");
     }},
    {"endless-body"_L1, Phase::Instead,
     [](const FaultInput &) {
         return FaultScript{.bytes = head("200 OK", "Content-Type: application/octet-stream\r\n"),
                            .fillerSize = -1};
     }},
    {"redirect-loop"_L1, Phase::Instead, [](const FaultInput &in) { return redirect(in.url); }},
    {"redirect-plain"_L1, Phase::Instead, [](const FaultInput &in) { return redirect(in.plainUrl); }},
    {"garbage"_L1, Phase::Instead,
     [](const FaultInput &) { return FaultScript{.bytes = QByteArray("\x00\x01\xfe garbage\r\n\r\n", 15)}; }},
    {"empty-status-line"_L1, Phase::Instead,
     [](const FaultInput &) { return FaultScript{.bytes = "\r\n\r\n" + okJson()}; }},
    {"long-header"_L1, Phase::Instead,
     [](const FaultInput &) { return okWith("X-Long: " + QByteArray(200 * 1024, 'x') + "\r\n", okJson()); }},
    {"many-headers"_L1, Phase::Instead,
     [](const FaultInput &) {
         return okWith(QByteArray("X-Many: one\r\n").repeated(200) + "Content-Length: 15\r\n", okJson());
     }},
    {"no-length"_L1, Phase::Instead, [](const FaultInput &) { return okWith({}, okJson()); }},
    {"bad-length"_L1, Phase::Instead,
     [](const FaultInput &) { return okWith("Content-Length: banana\r\n", okJson()); }},
    {"negative-length"_L1, Phase::Instead,
     [](const FaultInput &) { return okWith("Content-Length: -5\r\n", okJson()); }},
    {"two-lengths"_L1, Phase::Instead,
     [](const FaultInput &) { return okWith("Content-Length: 15\r\nContent-Length: 4\r\n", okJson()); }},
    {"bad-chunk"_L1, Phase::Instead,
     [](const FaultInput &) {
         return okWith("Transfer-Encoding: chunked\r\n", "zzz\r\n" + okJson() + "\r\n0\r\n\r\n");
     }},
    {"cut-chunk"_L1, Phase::Instead,
     [](const FaultInput &) { return okWith("Transfer-Encoding: chunked\r\n", "ff\r\n" + okJson()); }},
    {"no-last-chunk"_L1, Phase::Instead,
     [](const FaultInput &) {
         return okWith("Transfer-Encoding: chunked\r\n", "f\r\n" + okJson() + "\r\n");
     }},
    {"bad-gzip"_L1, Phase::Instead, [](const FaultInput &) { return gzipScript(okJson(), 15); }},
    {"cut-gzip"_L1, Phase::Instead,
     [](const FaultInput &) { return gzipScript(gzipped(4 * mebibyte), 1000); }},
    {"gzip-bomb"_L1, Phase::Instead,
     [](const FaultInput &) {
         const QByteArray bomb = gzipped(200 * mebibyte);
         return gzipScript(bomb, bomb.size());
     }},
};

bool argumentsFit(const FaultKind &kind, const QStringList &arguments)
{
    if (kind.name != "status"_L1)
        return arguments.isEmpty();
    const int code = arguments.value(0).toInt();
    const QStringList forms = {u"json"_s, u"html"_s, u"empty"_s};
    return code >= 200 && code <= 999 && arguments.size() <= 2
        && forms.contains(arguments.value(1, u"json"_s));
}

} // namespace

std::span<const FaultKind> faultKinds()
{
    return kinds;
}

const FaultKind *findFault(const QString &fault)
{
    QStringList parts = fault.split(u':');
    const QString name = parts.takeFirst();
    const auto found =
        std::ranges::find_if(kinds, [&name](const FaultKind &kind) { return kind.name == name; });
    return found != std::end(kinds) && argumentsFit(*found, parts) ? found : nullptr;
}

bool FaultBoard::set(const QString &path, const QString &fault, int times)
{
    const bool removes = fault == "none"_L1 || times == 0;
    if (fault != "none"_L1 && !findFault(fault))
        return false;
    const std::lock_guard lock(m_mutex);
    if (removes)
        m_entries.remove(path);
    else
        m_entries.insert(path, {fault, times});
    return true;
}

void FaultBoard::clear()
{
    const std::lock_guard lock(m_mutex);
    m_entries.clear();
}

QString FaultBoard::take(const QString &path)
{
    const std::lock_guard lock(m_mutex);
    auto entry = m_entries.find(path);
    if (entry == m_entries.end())
        entry = m_entries.find(u"*"_s);
    if (entry == m_entries.end())
        return {};
    const QString fault = entry->fault;
    if (entry->times > 0 && --entry->times == 0)
        m_entries.erase(entry);
    return fault;
}

bool FaultBoard::refuses() const
{
    const std::lock_guard lock(m_mutex);
    return std::ranges::any_of(m_entries, [](const Entry &entry) { return entry.fault == "refuse"_L1; });
}

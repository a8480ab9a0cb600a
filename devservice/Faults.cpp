#include "Faults.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

using Delivery = ServiceAnswer::Delivery;

constexpr qsizetype mebibyte = qsizetype(1) << 20;
const QByteArray okJson = R"({"status":"ok"})";
const QByteArray html = "<!DOCTYPE html><html><body><h1>Gateway</h1></body></html>\n";

ServiceAnswer json(const QByteArray &body)
{
    return {200, "application/json", body};
}

ServiceAnswer encoded(const QByteArray &encoding, const QByteArray &body)
{
    return {200, "application/json", body, {{"Content-Encoding", encoding}}};
}

QByteArray deflated(qsizetype size)
{
    // After the four bytes of length that Qt puts first.
    return qCompress(QByteArray(size, '0'), 1).sliced(4);
}

ServiceAnswer delivered(Delivery delivery, ServiceAnswer answer)
{
    answer.delivery = delivery;
    return answer;
}

ServiceAnswer redirect(const QByteArray &location)
{
    return {302, "text/plain", {}, {{"Location", location}}};
}

ServiceAnswer page(const FaultInput &)
{
    return {200, "text/html", html};
}

ServiceAnswer status(const FaultInput &input)
{
    const int code = input.arguments.value(0).toInt();
    const QString form = input.arguments.value(1);
    if (form == "html"_L1)
        return {code, "text/html", html};
    if (form == "empty"_L1)
        return {code};
    return {code, "application/json",
            R"({"status":"error","message":"Switched fault","error":"Switched fault"})"};
}

constexpr FaultKind kinds[] = {
    {"hold"_L1, true, [](const FaultInput &in) { return in.ordinary; }},
    {"slow"_L1, true, [](const FaultInput &in) { return delivered(Delivery::Slow, in.ordinary); }},
    {"short-body"_L1, true, [](const FaultInput &in) { return delivered(Delivery::Half, in.ordinary); }},
    {"status"_L1, false, status},
    {"unauthorized"_L1, false,
     [](const FaultInput &) {
         return ServiceAnswer{401, "text/plain", {}, {{"WWW-Authenticate", "Basic realm=\"stand-in\""}}};
     }},
    {"html-200"_L1, false, page},
    {"bad-json"_L1, false, [](const FaultInput &) { return json(okJson.chopped(1) + ','); }},
    {"trailing-json"_L1, false, [](const FaultInput &) { return json(okJson + " and more"); }},
    {"array-json"_L1, false, [](const FaultInput &) { return json("[1,2,3]"); }},
    {"deep-json"_L1, false, [](const FaultInput &) { return json(QByteArray(100'000, '[')); }},
    {"bom-json"_L1, false, [](const FaultInput &) { return json("\xef\xbb\xbf" + okJson); }},
    {"empty-body"_L1, false, [](const FaultInput &) { return json({}); }},
    {"body-64m"_L1, false,
     [](const FaultInput &) {
         return ServiceAnswer{200, "application/octet-stream", QByteArray(64 * mebibyte, 'K')};
     }},
    {"json-64m"_L1, false,
     [](const FaultInput &) {
         return json(R"({"status":"ok","padding":")" + QByteArray(64 * mebibyte, 'K') + "\"}");
     }},
    {"endless-body"_L1, false, [](const FaultInput &) { return delivered(Delivery::Endless, {}); }},
    {"redirect-loop"_L1, false, [](const FaultInput &in) { return redirect(in.url); }},
    {"redirect-plain"_L1, false, [](const FaultInput &in) { return redirect(in.plainUrl); }},
    {"long-header"_L1, false,
     [](const FaultInput &) {
         return ServiceAnswer{200, "application/json", okJson, {{"X-Long", QByteArray(200 * 1024, 'x')}}};
     }},
    {"many-headers"_L1, false,
     [](const FaultInput &) {
         ServiceAnswer answer = json(okJson);
         answer.headers.fill({"X-Many", "one"}, 200);
         return answer;
     }},
    {"bad-gzip"_L1, false, [](const FaultInput &) { return encoded("gzip", okJson); }},
    {"cut-deflate"_L1, false,
     [](const FaultInput &) {
         return delivered(Delivery::Half, encoded("deflate", deflated(4 * mebibyte)));
     }},
    {"deflate-bomb"_L1, false,
     [](const FaultInput &) { return encoded("deflate", deflated(200 * mebibyte)); }},
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

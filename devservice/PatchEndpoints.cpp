#include "Endpoints.h"
#include "SampleData.h"
#include "StoreAccount.h"

#include <QJsonArray>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

/// Writes bytes over a BIN's own at a fixed place.
struct BinPatch
{
    int id;
    QLatin1StringView variant;
    int credits;
    qsizetype offset;
    /// In hexadecimal; empty for a patch that changes nothing.
    const char *bytes;

    QByteArray written() const { return QByteArray::fromHex(bytes); }
};
constexpr BinPatch binPatches[] = {
    {301, "Speed limit"_L1, 5, 0x0100, "FFFF"},        {302, "Idle speed"_L1, 10, 0x0240, "02BC02BC"},
    {303, "Marker"_L1, 0, 0x0000, "4B56545041544348"}, {304, "Check only"_L1, 0, 0x0000, ""},
    {305, "Everything"_L1, 500, 0x0400, "00000000"},
};

QString description(const BinPatch &patch)
{
    const qsizetype size = patch.written().size();
    if (size == 0)
        return u"Changes nothing"_s;
    return u"Writes %1 bytes at offset 0x%2"_s.arg(size).arg(patch.offset, 4, 16, QChar(u'0'));
}

/// The editor takes any JSON of status 200 for a list, so refusals have a status of their own.
ServiceAnswer list(const StoreAccount &account, const ServiceRequest &request)
{
    QString error;
    const std::optional<QJsonObject> body = textBody(request, {"session_token"_L1, "cal_id"_L1}, &error);
    if (!body)
        return errorAnswer(error, 400);
    if (!account.hasSession(body->value("session_token"_L1).toString()))
        return errorAnswer(u"Not signed in"_s, 403);
    QJsonArray patches;
    if (SampleData::mainOsNumbers().contains(body->value("cal_id"_L1).toString())) {
        for (const BinPatch &patch : binPatches)
            patches.append(QJsonObject{{u"id"_s, patch.id},
                                       {u"variant"_s, QString(patch.variant)},
                                       {u"description"_s, description(patch)},
                                       {u"credits_cost"_s, patch.credits}});
    }
    return jsonAnswer({{u"status"_s, u"ok"_s}, {u"patches"_s, patches}, {u"credits"_s, account.credits()}});
}

/// Empty when it does not come as standard Base64.
QByteArray binOf(const QJsonObject &body)
{
    const auto decoded = QByteArray::fromBase64Encoding(body.value("file_data"_L1).toString().toUtf8(),
                                                        QByteArray::AbortOnBase64DecodingErrors);
    return decoded ? *decoded : QByteArray();
}

ServiceAnswer patchedAnswer(StoreAccount &account, const BinPatch &patch, QByteArray bin)
{
    const QByteArray written = patch.written();
    if (patch.offset + written.size() > bin.size())
        return errorAnswer(u"The BIN is too short for this patch"_s);
    if (!account.pay(patch.credits))
        return errorAnswer(u"Not enough credits"_s);
    bin.replace(patch.offset, written.size(), written);
    const QByteArray answered = written.isEmpty() ? QByteArray() : bin.toBase64();
    return jsonAnswer({{u"status"_s, u"ok"_s},
                       {u"message"_s, description(patch)},
                       {u"file_data"_s, QString::fromLatin1(answered)},
                       {u"credits"_s, account.credits()}});
}

ServiceAnswer process(StoreAccount &account, const ServiceRequest &request)
{
    QString error;
    const std::optional<QJsonObject> body =
        textBody(request, {"session_token"_L1, "patch_id"_L1, "file_data"_L1, "cal_id"_L1}, &error);
    if (!body)
        return errorAnswer(error);
    if (!account.hasSession(body->value("session_token"_L1).toString()))
        return errorAnswer(u"Not signed in"_s);
    const QString id = body->value("patch_id"_L1).toString();
    const QString os = body->value("cal_id"_L1).toString();
    const auto *patch = std::ranges::find(binPatches, id.toInt(), &BinPatch::id);
    if (patch == std::end(binPatches) || !SampleData::mainOsNumbers().contains(os))
        return errorAnswer(u"No patch %1 for %2"_s.arg(id, os));
    const QByteArray bin = binOf(*body);
    return bin.isEmpty() ? errorAnswer(u"file_data holds no Base64"_s) : patchedAnswer(account, *patch, bin);
}

} // namespace

void addPatchEndpoints(EndpointTable &table, std::shared_ptr<StoreAccount> account)
{
    table.add("POST", apiRoot() + "patches/patches.aspx"_L1,
              [account](const ServiceRequest &request) { return list(*account, request); });
    table.add("POST", apiRoot() + "patches/patch_process.aspx"_L1,
              [account](const ServiceRequest &request) { return process(*account, request); });
}

#include "BinPatches.h"
#include "Endpoints.h"
#include "SampleData.h"
#include "StoreAccount.h"

#include <QJsonArray>

using namespace Qt::StringLiterals;

namespace {

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
        for (const BinPatch &patch : BinPatches::all())
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

ServiceAnswer patchedAnswer(StoreAccount &account, const BinPatch &patch, const QByteArray &bin)
{
    const std::optional<QByteArray> patched = BinPatches::applied(patch, bin);
    if (!patched)
        return errorAnswer(u"The BIN is too short for this patch"_s);
    if (!account.pay(patch.credits))
        return errorAnswer(u"Not enough credits"_s);
    const QByteArray answered = patch.bytes.isEmpty() ? QByteArray() : patched->toBase64();
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
    const BinPatch *patch = BinPatches::find(id.toInt());
    if (!patch || !SampleData::mainOsNumbers().contains(os))
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

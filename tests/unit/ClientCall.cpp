#include "ClientCall.h"

using namespace Qt::StringLiterals;

void start(VoxApiClient &client, Primitive primitive, Outcome &outcome, qsizetype bodySize)
{
    const auto json = [&outcome](const QJsonObject &object, const QString &error) {
        ++outcome.calls;
        outcome.object = object;
        outcome.error = error;
    };
    const auto body = [&outcome](const QByteArray &bytes, const QJsonObject &object, const QString &error) {
        ++outcome.calls;
        outcome.bytes = bytes;
        outcome.object = object;
        outcome.error = error;
    };
    const auto worker = [&outcome](const WorkerResult &result) {
        ++outcome.calls;
        outcome.worker = result;
    };
    const QList<WorkerFile> files{{u"file"_s, u"in.kvt"_s, QByteArray(bodySize, 'x')}};
    switch (primitive) {
    case Primitive::PostJson:
        client.postJson(u"x"_s, {{u"a"_s, QString(bodySize, u'x')}}, json);
        break;
    case Primitive::GetJson:
        client.getJson(u"x"_s, json);
        break;
    case Primitive::PostMultipart:
        client.postMultipart(u"x"_s, {{u"a"_s, 1}}, files, body);
        break;
    case Primitive::DownloadFile:
        client.downloadFile(client.url(u"x"_s), body);
        break;
    case Primitive::KvtWorker:
        client.kvtWorker(u"4.0.2"_s, u"op"_s, {}, files, worker);
        break;
    }
}

// What the service's answers mean: the whole input is a body, and is given to the decoder of every endpoint.

#include "FuzzSupport.h"
#include "api/JsonReading.h"
#include "api/SegmentSwap.h"
#include "api/StoreAnswers.h"
#include "api/Tickets.h"
#include "api/UpdateCheck.h"

#include <QJsonDocument>
#include <QMetaType>
#include <QStringList>

#include <initializer_list>

using namespace Qt::StringLiterals;

namespace {

QString memberOf(const QJsonObject &object, const char *key)
{
    return jsonString(object, QLatin1String(key));
}

qsizetype arraySize(const QJsonObject &object, std::initializer_list<const char *> keys)
{
    for (const char *key : keys) {
        if (object.value(QLatin1String(key)).isArray())
            return object.value(QLatin1String(key)).toArray().size();
    }
    return 0;
}

// Every entry is a map of exactly these members: texts, then whole numbers.
void expectMaps(const QVariantList &maps, const QStringList &texts, const QStringList &numbers)
{
    for (const QVariant &entry : maps) {
        const QVariantMap map = entry.toMap();
        FUZZ_EXPECT(map.size() == texts.size() + numbers.size());
        for (const QString &key : texts)
            FUZZ_EXPECT(map.value(key).typeId() == QMetaType::QString);
        for (const QString &key : numbers)
            FUZZ_EXPECT(map.value(key).typeId() == QMetaType::Int);
    }
}

void login(const QJsonObject &answer)
{
    const XdfLogin outcome = decodeXdfLogin(answer);
    FUZZ_EXPECT(outcome.token.isEmpty() != outcome.error.isEmpty());
    FUZZ_EXPECT(outcome.token.isEmpty() == outcome.credits.isEmpty());
    FUZZ_EXPECT(outcome.token.isEmpty()
                == (memberOf(answer, "session_token").isEmpty() && memberOf(answer, "token").isEmpty()));
}

void catalog(const QJsonObject &answer)
{
    const XdfCatalog outcome = decodeXdfCatalog(answer);
    FUZZ_EXPECT(outcome.items.size() == arraySize(answer, {"items", "catalog"}));
    expectMaps(outcome.items, {u"id"_s, u"title"_s, u"os"_s}, {u"credits"_s});
    FUZZ_EXPECT(outcome.text.startsWith('{'_L1) && outcome.text.size() <= 4000);
    FUZZ_EXPECT(threadTextOf(answer).startsWith(outcome.text));
    FUZZ_EXPECT(outcome.text.size() == 4000 || outcome.text == threadTextOf(answer));
}

void patches(const QJsonObject &answer)
{
    const PatchList list = decodePatchList(answer);
    FUZZ_EXPECT(list.items.size() == arraySize(answer, {"patches"}));
    FUZZ_EXPECT(list.credits == memberOf(answer, "credits"));
    expectMaps(list.items, {u"variant"_s, u"description"_s}, {u"id"_s, u"credits"_s});
}

void patchOutcome(const QJsonObject &answer)
{
    const PatchOutcome outcome = decodePatchOutcome(answer);
    const bool isOk = memberOf(answer, "status") == u"ok"_s;
    FUZZ_EXPECT(!outcome.status.isEmpty());
    FUZZ_EXPECT(outcome.level == (isOk || !outcome.file.isEmpty() ? 1 : 0));
    FUZZ_EXPECT(outcome.file.isEmpty() || outcome.status == u"Patch applied."_s);

    QJsonObject patched = answer;
    const QByteArray file = QJsonDocument(answer).toJson();
    patched.insert(u"file_data"_s, QString::fromLatin1(file.toBase64()));
    FUZZ_EXPECT(decodePatchOutcome(patched).file == file);
}

void stock(const QJsonObject &answer)
{
    const QVariantList rows = decodeStockList(answer);
    FUZZ_EXPECT(rows.size() == arraySize(answer, {"files", "items", "results"}));
    expectMaps(rows, {u"id"_s, u"filename"_s, u"os"_s, u"module"_s, u"year"_s, u"make"_s, u"model"_s}, {});
}

void tickets(const QJsonObject &answer, const QByteArray &body)
{
    const QString text = threadTextOf(answer);
    FUZZ_EXPECT(!keepsItsTexts(body) || jsonObjectFromBody(text.toUtf8()) == answer);
    FUZZ_EXPECT(ticketAccepted(answer) == (memberOf(answer, "status") == u"ok"_s));
    const bool saysTrue = answer.value(u"ok"_s) == QJsonValue(true);
    FUZZ_EXPECT(replyAccepted(answer) == (ticketAccepted(answer) || saysTrue));

    const QString email = memberOf(answer, "email");
    const QString nobody = u"nobody@example.invalid"_s;
    const QJsonObject ticket = supportTicket(text, {}, email, {}, nobody);
    FUZZ_EXPECT(ticket.size() == 6 && memberOf(ticket, "type") == text);
    FUZZ_EXPECT(memberOf(ticket, "email") == (email.isEmpty() ? nobody : email));
}

void swaps(const QJsonObject &answer)
{
    QVariantList candidates = decodeSwapCandidates(answer);
    FUZZ_EXPECT(candidates.size() == arraySize(answer, {"candidates"}));
    QStringList indices;
    for (qsizetype i = 0; i < candidates.size(); ++i) {
        const QVariantMap candidate = candidates.at(i).toMap();
        FUZZ_EXPECT(candidate.value(u"index"_s) == QVariant(static_cast<int>(i)));
        FUZZ_EXPECT(candidate.value(u"selected"_s) == QVariant(true));
        FUZZ_EXPECT(candidate.contains(u"label"_s));
        indices.append(QString::number(i));
    }
    FUZZ_EXPECT(selectedCandidateIndices(candidates) == indices.join(','_L1));

    for (QVariant &entry : candidates) {
        QVariantMap candidate = entry.toMap();
        candidate.insert(u"selected"_s, false);
        entry = candidate;
    }
    FUZZ_EXPECT(selectedCandidateIndices(candidates).isEmpty());
}

void update(const QJsonObject &answer)
{
    const QString current = u"4.0.2"_s;
    const QString latest = memberOf(answer, "latest_version");
    const UpdateOutcome outcome = decodeUpdateAnswer(answer, current);
    const bool isNewer = !latest.isEmpty() && isNewerVersion(latest, current);
    FUZZ_EXPECT(!outcome.status.isEmpty() && (outcome.level == 0 || outcome.level == 1));
    FUZZ_EXPECT(outcome.level == 1 || outcome.link.isEmpty());
    FUZZ_EXPECT(outcome.link == (isNewer ? memberOf(answer, "download_url") : QString()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    const QByteArray body = FuzzInput(data, size).takeRest();
    // As the client hands it on: anything but an object becomes an empty one.
    const QJsonObject answer = jsonObjectFromBody(body).value_or(QJsonObject());
    login(answer);
    catalog(answer);
    patches(answer);
    patchOutcome(answer);
    stock(answer);
    tickets(answer, body);
    swaps(answer);
    update(answer);
    return 0;
}

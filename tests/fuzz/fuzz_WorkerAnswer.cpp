// What a worker's answer means: the transport's error as a field, then the body.

#include "FuzzSupport.h"
#include "api/JsonReading.h"
#include "api/VoxApiClient.h"

using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const QString error = input.takeTextField();
    const QByteArray body = input.takeRest();
    const QJsonObject object = jsonObjectFromBody(body).value_or(QJsonObject());

    const WorkerResult result = classifyWorkerAnswer(body, object, error);
    FUZZ_EXPECT(result.ok == result.error.isEmpty());
    FUZZ_EXPECT(result.isJson == (body.startsWith('{') || !object.isEmpty()));
    if (result.isJson) {
        FUZZ_EXPECT(result.data.isEmpty() && result.text == QString::fromUtf8(body));
        FUZZ_EXPECT(result.ok == (jsonString(object, u"status"_s) == u"ok"_s));
        const QString message = jsonString(object, u"message"_s);
        FUZZ_EXPECT(result.ok || message.isEmpty() || result.error == message);
        FUZZ_EXPECT(!object.isEmpty() || result.error == u"Worker error: "_s);
    } else {
        FUZZ_EXPECT(result.text.isEmpty() && result.data == body);
        FUZZ_EXPECT(result.ok == !body.isEmpty());
    }
    if (body.isEmpty() && !error.isEmpty())
        FUZZ_EXPECT(result.error == error);
    // A transport error beside a body says nothing.
    if (!body.isEmpty()) {
        const WorkerResult alone = classifyWorkerAnswer(body, object, {});
        FUZZ_EXPECT(alone.ok == result.ok && alone.error == result.error && alone.text == result.text
                    && alone.data == result.data);
    }
    return 0;
}

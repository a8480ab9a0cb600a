// The merging of a worker's answer into the identifiers: what one field held before, then the answer.

#include "FuzzSupport.h"
#include "api/JsonReading.h"
#include "api/KvtInfo.h"
#include "core/FileTools.h"

#include <QMetaType>
#include <QVariantList>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr const char *textKeys[] = {
    "vin",        "serial",   "mainOS",      "system",  "fuel",          "speedometer",
    "engineDiag", "engineOp", "interfaceID", "created", "editorVersion",
};

QString modulesKey()
{
    return u"modules"_s;
}

bool isTextKey(const QString &key)
{
    return std::any_of(std::begin(textKeys), std::end(textKeys),
                       [&key](const char *known) { return key == QLatin1String(known); });
}

void expectModule(const QVariantMap &module)
{
    FUZZ_EXPECT(module.size() == 5);
    for (const char *key : {"title", "vin", "serial", "mainOs"})
        FUZZ_EXPECT(module.value(QLatin1String(key)).typeId() == QMetaType::QString);
    const QVariantList rows = module.value(u"rows"_s).toList();
    for (const QVariant &row : rows) {
        FUZZ_EXPECT(row.toMap().size() == 2 && row.toMap().contains(u"label"_s));
        FUZZ_EXPECT(!row.toMap().value(u"value"_s).toString().isEmpty());
    }
}

// What an answer says by itself.
void expectFindings(const QVariantMap &findings)
{
    for (auto it = findings.begin(); it != findings.end(); ++it) {
        if (it.key() == modulesKey()) {
            const QVariantList modules = it.value().toList();
            FUZZ_EXPECT(!modules.isEmpty());
            for (const QVariant &module : modules)
                expectModule(module.toMap());
            continue;
        }
        FUZZ_EXPECT(isTextKey(it.key()) && it.value().typeId() == QMetaType::QString);
        // Only a serial number may be taken back.
        FUZZ_EXPECT(!it.value().toString().isEmpty() || it.key() == u"serial"_s);
    }
    // The first module's serial is taken as it is; any other is never an OS number.
    if (!findings.contains(modulesKey()))
        FUZZ_EXPECT(!FileTools::isCumminsStyleOs(findings.value(u"serial"_s).toString()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    QVariantMap before{{u"modules"_s, QVariantList{QVariantMap{}}}, {u"something else"_s, 7}};
    const QString held = input.takeTextField();
    for (const char *key : textKeys)
        before.insert(QLatin1String(key), held);
    const QString answer = input.takeRestAsText();

    const auto merge = [](const QVariantMap &identifiers, const QString &text) {
        return mergeKvtInfo(identifiers, jsonObjectInText(text));
    };

    const QVariantMap findings = merge({}, answer);
    expectFindings(findings);

    // What the answer does not name stays.
    QVariantMap expected = before;
    expected.insert(findings);
    const QVariantMap merged = merge(before, answer);
    FUZZ_EXPECT(merged == expected);
    FUZZ_EXPECT(merge(merged, answer) == merged);
    // Lines ahead of the answer say nothing.
    FUZZ_EXPECT(merge(before, u"reading...\n"_s + answer) == merged);
    FUZZ_EXPECT(merge(before, answer + u"\nx"_s) == before);
    return 0;
}

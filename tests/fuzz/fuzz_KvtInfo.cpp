// The merging of a worker's answer into the identifiers: what one field held before, then the answer.

#include "FuzzSupport.h"
#include "api/KvtInfo.h"
#include "core/FileTools.h"

#include <QMetaType>
#include <QVariantList>

#include <algorithm>

namespace {

constexpr const char *textKeys[] = {
    "vin",        "serial",   "mainOS",      "system",  "fuel",          "speedometer",
    "engineDiag", "engineOp", "interfaceID", "created", "editorVersion",
};

QString modulesKey()
{
    return QStringLiteral("modules");
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
    const QVariantList rows = module.value(QStringLiteral("rows")).toList();
    for (const QVariant &row : rows) {
        FUZZ_EXPECT(row.toMap().size() == 2 && row.toMap().contains(QStringLiteral("label")));
        FUZZ_EXPECT(!row.toMap().value(QStringLiteral("value")).toString().isEmpty());
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
        FUZZ_EXPECT(!it.value().toString().isEmpty() || it.key() == QStringLiteral("serial"));
    }
    // The first module's serial is taken as it is; any other is never an OS number.
    if (!findings.contains(modulesKey()))
        FUZZ_EXPECT(!FileTools::isCumminsStyleOs(findings.value(QStringLiteral("serial")).toString()));
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    QVariantMap before{{QStringLiteral("modules"), QVariantList{QVariantMap{}}},
                       {QStringLiteral("something else"), 7}};
    const QString held = input.takeTextField();
    for (const char *key : textKeys)
        before.insert(QLatin1String(key), held);
    const QString answer = input.takeRestAsText();

    const QVariantMap findings = mergeKvtInfo({}, answer);
    expectFindings(findings);

    // What the answer does not name stays.
    QVariantMap expected = before;
    expected.insert(findings);
    const QVariantMap merged = mergeKvtInfo(before, answer);
    FUZZ_EXPECT(merged == expected);
    FUZZ_EXPECT(mergeKvtInfo(merged, answer) == merged);
    // Lines ahead of the answer say nothing.
    FUZZ_EXPECT(mergeKvtInfo(before, QStringLiteral("reading...\n") + answer) == merged);
    FUZZ_EXPECT(mergeKvtInfo(before, answer + QStringLiteral("\nx")) == before);
    return 0;
}

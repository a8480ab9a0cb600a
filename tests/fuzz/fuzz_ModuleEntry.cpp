// Records of a control module: title, VIN, serial and OS as fields, then labels and values in turn. A byte
// ahead of them says how many values are left out at the end.

#include "FuzzSupport.h"
#include "core/FileTools.h"

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

QVariantMap rowOf(const QString &label, const QString &value)
{
    return {{u"label"_s, label}, {u"value"_s, value}};
}

QVariantList expectedRows(const QStringList &labels, const QStringList &values)
{
    QVariantList rows;
    for (qsizetype i = 0; i < labels.size() && i < values.size(); ++i) {
        if (values.at(i).size() > 0)
            rows << rowOf(labels.at(i), values.at(i));
    }
    return rows;
}

} // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const qsizetype missing = input.takeByte() % 4;
    const QString title = input.takeTextField();
    const QString vin = input.takeTextField();
    const QString serial = input.takeTextField();
    const QString mainOs = input.takeTextField();
    QStringList labels;
    QStringList values;
    while (!input.atEnd()) {
        labels.append(input.takeTextField());
        values.append(input.takeTextField());
    }
    values.resize(std::max<qsizetype>(values.size() - missing, 0));

    const QVariantMap entry = FileTools::makeModuleEntry(title, vin, serial, mainOs, labels, values);
    FUZZ_EXPECT(entry
                == QVariantMap({{u"title"_s, title},
                                {u"vin"_s, vin},
                                {u"serial"_s, serial},
                                {u"mainOs"_s, mainOs},
                                {u"rows"_s, expectedRows(labels, values)}}));
    // Labels without a value change nothing.
    FUZZ_EXPECT(FileTools::makeModuleEntry(title, vin, serial, mainOs, labels.mid(0, values.size()), values)
                == entry);

    QStringList groupA = labels;
    QStringList groupB = values;
    FUZZ_EXPECT(!FileTools::groupGmOsCandidates(labels, &groupA, &groupB));
    FUZZ_EXPECT(groupA.isEmpty() && groupB.isEmpty());
    FUZZ_EXPECT(!FileTools::groupGmOsCandidates(values, nullptr, nullptr));
    FUZZ_EXPECT(FileTools::extractKvtIdentifiers(title.toUtf8()).isEmpty());
    return 0;
}

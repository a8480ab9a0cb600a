// The folders of a sorted file: the file's name, the known OS, make and date, one key of another kind with
// its value, and the order, each a field.

#include "FuzzSupport.h"
#include "core/FileTools.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const QString fileName = input.takeTextField();
    QVariantMap meta{{QStringLiteral("mainOS"), input.takeTextField()},
                     {QStringLiteral("system"), input.takeTextField()},
                     {QStringLiteral("created"), input.takeTextField()}};
    const QString otherKey = input.takeTextField();
    meta.insert(otherKey, input.takeTextField());
    const QStringList keys = input.takeRestAsText().split(QLatin1Char(','));

    const QStringList parts = FileTools::folderParts(fileName, meta, keys);
    FUZZ_EXPECT(parts.size() == keys.size());
    for (qsizetype i = 0; i < parts.size(); ++i) {
        const QString &part = parts.at(i);
        FUZZ_EXPECT(!part.isEmpty() && FileTools::sanitizeName(part) == part);
        FUZZ_EXPECT(!part.contains(QLatin1Char('/')) && !part.contains(QLatin1Char('\\')));
        // Each key counts for itself, whatever its case and the white space around it.
        const QString shouted = QLatin1Char(' ') + keys.at(i).toUpper() + QLatin1Char('\t');
        FUZZ_EXPECT(FileTools::folderParts(fileName, meta, {keys.at(i)}) == QStringList{part});
        if (keys.at(i).toUpper().toLower() == keys.at(i).toLower())
            FUZZ_EXPECT(FileTools::folderParts(fileName, meta, {shouted}) == QStringList{part});
    }

    const QStringList unknown = FileTools::folderParts(
        {}, {}, {QStringLiteral("Year"), QStringLiteral("make"), QStringLiteral("OS"), otherKey});
    FUZZ_EXPECT(unknown.first(3)
                == QStringList({QStringLiteral("UnknownYear"), QStringLiteral("UnknownMake"),
                                QStringLiteral("UnknownOS")}));
    FUZZ_EXPECT(unknown.at(3).startsWith(QStringLiteral("Unknown")));
    FUZZ_EXPECT(FileTools::folderParts(fileName, meta, {}).isEmpty());
    return 0;
}

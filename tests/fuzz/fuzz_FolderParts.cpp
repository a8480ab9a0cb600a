// The folders of a sorted file: the file's name, the known OS, make and date, one key of another kind with
// its value, and the order, each a field.

#include "FuzzSupport.h"
#include "core/FileTools.h"

using namespace Qt::StringLiterals;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    const QString fileName = input.takeTextField();
    QVariantMap meta{{u"mainOS"_s, input.takeTextField()},
                     {u"system"_s, input.takeTextField()},
                     {u"created"_s, input.takeTextField()}};
    const QString otherKey = input.takeTextField();
    meta.insert(otherKey, input.takeTextField());
    const QStringList keys = input.takeRestAsText().split(','_L1);

    const QStringList parts = FileTools::folderParts(fileName, meta, keys);
    FUZZ_EXPECT(parts.size() == keys.size());
    for (qsizetype i = 0; i < parts.size(); ++i) {
        const QString &part = parts.at(i);
        FUZZ_EXPECT(!part.isEmpty() && FileTools::sanitizeName(part) == part);
        FUZZ_EXPECT(!part.contains('/'_L1) && !part.contains('\\'_L1));
        // Each key counts for itself, whatever its case and the white space around it.
        const QString shouted = ' '_L1 + keys.at(i).toUpper() + '\t'_L1;
        FUZZ_EXPECT(FileTools::folderParts(fileName, meta, {keys.at(i)}) == QStringList{part});
        if (keys.at(i).toUpper().toLower() == keys.at(i).toLower())
            FUZZ_EXPECT(FileTools::folderParts(fileName, meta, {shouted}) == QStringList{part});
    }

    const QStringList unknown = FileTools::folderParts({}, {}, {u"Year"_s, u"make"_s, u"OS"_s, otherKey});
    FUZZ_EXPECT(unknown.first(3) == QStringList({u"UnknownYear"_s, u"UnknownMake"_s, u"UnknownOS"_s}));
    FUZZ_EXPECT(unknown.at(3).startsWith(u"Unknown"_s));
    FUZZ_EXPECT(FileTools::folderParts(fileName, meta, {}).isEmpty());
    return 0;
}

#pragma once

#include "SampleContainer.h"

#include <QByteArray>
#include <QString>
#include <QStringList>

/// Made-up files for trying the editor; the same ones every time.
namespace SampleData {

/// 17 characters with a right check digit, a different one for each index.
QString vin(int index);

/// A tune with that many modules. Tunes of different seeds have the same segments with different bytes.
SampleTune tune(int modules, int seed);

/// A tune of one module with these segments; the same identifiers every time but the title.
SampleTune imported(const QString &title, const QList<SampleSegment> &segments);

/// Bytes without a pattern, the same ones for each seed.
QByteArray noise(int size, int seed);

/// The main OS numbers of the first modules of one-module.kvt, two-modules.kvt, five-modules.kvt, donor.kvt
/// and one-module.ctz, in this order.
const QStringList &mainOsNumbers();

/// Writes into `folder`, which is made when missing, and over files of the same names:
/// one-module.kvt, two-modules.kvt, five-modules.kvt, donor.kvt, one-module.ctz, flash.bin and a tree
/// "library" of 200 small files. False with the reason in `error` (may be null).
bool generate(const QString &folder, QString *error = nullptr);

} // namespace SampleData

// A list of maps as a model: lists of the same kind one after the other, each a JSON array as a field.

#include "FuzzSupport.h"
#include "core/RowModel.h"

#include <QAbstractItemModelTester>
#include <QJsonArray>
#include <QJsonDocument>
#include <QObject>
#include <QSet>

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size)
{
    FuzzInput input(data, size);
    RowModel model;
    const QAbstractItemModelTester tester(&model, QAbstractItemModelTester::FailureReportingMode::Fatal);
    const int role = model.roleNames().key("row");
    int resets = 0;
    int announced = 0;
    int renewals = 0;
    QSet<int> changed;
    RowModel resetting;
    resetting.setProperty("resetting", true);
    QObject::connect(&resetting, &RowModel::modelReset, &resetting, [&renewals] { ++renewals; });
    QObject::connect(&model, &RowModel::modelReset, &model, [&resets] { ++resets; });
    QObject::connect(&model, &RowModel::rowsChanged, &model, [&announced] { ++announced; });
    QObject::connect(&model, &RowModel::dataChanged, &model,
                     [&changed](const QModelIndex &first, const QModelIndex &last) {
                         for (int row = first.row(); row <= last.row(); ++row)
                             changed.insert(row);
                     });

    while (!input.atEnd()) {
        const QVariantList before = model.rows();
        const QVariantList rows = QJsonDocument::fromJson(input.takeField()).array().toVariantList();
        resets = announced = 0;
        changed.clear();
        model.setRows(rows);

        FUZZ_EXPECT(model.rows() == rows && model.rowCount() == rows.size());
        FUZZ_EXPECT(announced == (rows.isSharedWith(before) ? 0 : 1));
        FUZZ_EXPECT(resets == (before.size() == rows.size() ? 0 : 1));
        for (int row = 0; row < model.rowCount(); ++row) {
            FUZZ_EXPECT(model.data(model.index(row), role) == rows.at(row));
            FUZZ_EXPECT(changed.contains(row) == (resets == 0 && before.at(row) != rows.at(row)));
        }
        renewals = 0;
        resetting.setRows(rows);
        FUZZ_EXPECT(resetting.rows() == rows && renewals == (rows == before ? 0 : 1));
        FUZZ_EXPECT(!model.data({}, role).isValid());
        FUZZ_EXPECT(!model.data(model.index(0), Qt::DisplayRole).isValid());
    }
    return 0;
}

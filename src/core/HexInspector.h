#pragma once

#include "core/ByteDifferences.h"
#include "core/ByteValues.h"
#include "core/HexModel.h"
#include "core/Job.h"

#include <QObject>
#include <QPointer>
#include <QVariantList>

#include <optional>

/// Says what the bytes at a hex model's cursor mean, and what the selected ones add up to. A selection of
/// more than one piece is counted on another thread, which lets go of the bytes before they are written to.
class HexInspector : public QObject
{
    Q_OBJECT
    Q_PROPERTY(HexModel *hexModel READ hexModel WRITE setHexModel NOTIFY hexModelChanged FINAL)
    Q_PROPERTY(bool active READ isActive WRITE setActive NOTIFY activeChanged FINAL)
    Q_PROPERTY(QVariantList values READ values NOTIFY valuesChanged FINAL)
    Q_PROPERTY(QVariantList sums READ sums NOTIFY sumsChanged FINAL)
    Q_PROPERTY(bool counting READ isCounting NOTIFY sumsChanged FINAL)

public:
    explicit HexInspector(QObject *parent = nullptr);
    /// Waits for the other thread to give up.

    HexModel *hexModel() const { return m_hexModel; }
    /// Not owned; may be null, and may be destroyed first.
    void setHexModel(HexModel *hexModel);
    bool isActive() const { return m_active; }
    /// While it is not active, nothing is read, and the rows stay as they are.
    void setActive(bool active);
    /// A row for each way to read the bytes at the cursor: "name", "first" for little endian, "second" for
    /// big endian, and a true "single" where only the first counts. Empty texts have no value.
    QVariantList values() const { return m_values; }
    /// A row for each sum of the selection: "first" in hexadecimal, "second" in decimal, or "single". The
    /// texts are empty without a selection, and while it is being counted.
    QVariantList sums() const { return m_sums; }
    bool isCounting() const { return m_counting.isRunning(); }

signals:
    void hexModelChanged();
    void activeChanged();
    void valuesChanged();
    void sumsChanged();

private:
    void update();
    void updateValues();
    void updateSums();
    void showSums(const std::optional<ByteSums> &sums);
    void giveUp();

    QPointer<HexModel> m_hexModel;
    bool m_active = false;
    QVariantList m_values;
    QVariantList m_sums;
    /// What the sums are those of; empty while they are out of date.
    std::optional<ByteRange> m_range;
    /// Keeps the bytes that the other thread reads, should the model go.
    QByteArray m_counted;
    Job<ByteSums> m_counting;
};

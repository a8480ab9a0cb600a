#pragma once

#include "core/Job.h"
#include "core/MatchCount.h"

#include <QByteArray>
#include <QList>
#include <QObject>

#include <optional>

class HexModel;

/// All occurrences of what was searched for last: where they are among some rows, and how many there are.
/// They are counted on another thread, which is given up when the needle changes. A small edit is counted at
/// once, around itself.
class HexMatches : public QObject
{
    Q_OBJECT
    /// "3 of 17" at a match, else "17 matches"; empty until counted.
    Q_PROPERTY(QString text READ text NOTIFY changed FINAL)

public:
    /// `model` outlives this object.
    explicit HexMatches(HexModel *model, QObject *parent = nullptr);

    /// An empty needle is found nowhere.
    void setNeedle(const QByteArray &needle);
    /// As for an empty needle.
    Q_INVOKABLE void forget() { setNeedle({}); }
    QString text() const;
    /// For each of `rows` rows from `firstRow` on, which of its sixteen bytes belong to a match; bit 0 is the
    /// first byte. Only the current match is shown of a needle beyond 256 bytes.
    QList<quint16> masks(int firstRow, int rows) const;

signals:
    /// What `masks` or `text` tell is new.
    void changed();

private:
    void forgetCount();
    void countAround(int offset, qsizetype length);
    void count();

    HexModel *m_model;
    QByteArray m_needle;
    std::optional<MatchCount> m_count;
    Job<MatchCount> m_counting;
    /// Whether a count is to begin when the event loop is reached.
    bool m_isDue = false;
};

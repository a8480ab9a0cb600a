#pragma once

#include "core/ByteDifferences.h"
#include "core/Job.h"

#include <QByteArray>
#include <QFutureWatcher>
#include <QObject>
#include <QString>
#include <QVariantList>

class HexModel;

/// Compares the open file with another one, byte for byte, up to the end of the shorter. The other file is
/// read and compared on other threads, and its differences then follow every edit.
class HexCompare : public QObject
{
    Q_OBJECT
    /// The other file's name; empty while nothing is compared.
    Q_PROPERTY(QString name READ name NOTIFY otherChanged FINAL)
    /// From the start on; false once the differences are known.
    Q_PROPERTY(bool busy READ isBusy NOTIFY changed FINAL)
    Q_PROPERTY(bool active READ isActive NOTIFY otherChanged FINAL)
    Q_PROPERTY(int differingBytes READ differingBytes NOTIFY changed FINAL)
    Q_PROPERTY(int places READ places NOTIFY changed FINAL)
    /// "12 bytes differ in 3 places", and by how much the other file is longer or shorter.
    Q_PROPERTY(QString text READ text NOTIFY changed FINAL)

public:
    /// `model` holds the open file, and outlives this object.
    explicit HexCompare(HexModel *model, QObject *parent = nullptr);

    /// Starts over with another file. `failed` tells why it could not be read; what was compared before then
    /// stays.
    Q_INVOKABLE void start(const QString &path);
    Q_INVOKABLE void stop();

    QString name() const { return m_name; }
    bool isActive() const { return !m_name.isEmpty(); }
    bool isBusy() const
    {
        return m_reading.isRunning() || (isActive() && (m_comparing.isRunning() || m_isDue));
    }
    int differingBytes() const { return m_differences.bytes(); }
    int places() const { return m_differences.places(); }
    QString text() const;
    /// The other file's bytes.
    QByteArray bytes() const { return m_bytes; }
    /// The texts of a row of the other file, as HexModel shows them.
    Q_INVOKABLE QString digits(int row) const;
    Q_INVOKABLE QString characters(int row) const;

    /// The place at `index` from the start of the file.
    ByteRange place(int index) const;
    /// "0001F3A0   12 bytes"
    Q_INVOKABLE QString placeText(int index) const;
    ByteRange placeAt(int position) const;
    ByteRange next(int position) const;
    ByteRange previous(int position) const;
    /// The number, from 1, of the place that begins at `start`.
    int numberAt(int start) const;
    /// The lines of a map of the file, `lines` high, that hold a difference: first and end of each run in
    /// turn.
    Q_INVOKABLE QVariantList map(int lines) const;

signals:
    void otherChanged();
    /// The differences, or what is known of them.
    void changed();
    void failed(const QString &error);
    /// The first comparison with a file is done.
    void finished();

private:
    struct OtherFile
    {
        QString name;
        QByteArray bytes;
        QString error;
    };

    void take(const OtherFile &other);
    void giveUp();
    void compare();

    HexModel *m_model;
    QString m_name;
    QByteArray m_bytes;
    ByteDifferences m_differences;
    QFutureWatcher<OtherFile> m_reading;
    Job<ByteDifferences> m_comparing;
    /// Whether a comparison is to begin when the event loop is reached.
    bool m_isDue = false;
    /// Whether `finished` is still to be emitted for this file.
    bool m_isNew = false;
};

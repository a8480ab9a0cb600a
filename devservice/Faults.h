#pragma once

#include <QByteArray>
#include <QHash>
#include <QLatin1StringView>
#include <QString>
#include <QStringList>

#include <mutex>
#include <span>

/// What goes over a connection in place of the ordinary answer.
struct FaultScript
{
    enum class End
    {
        Finish,
        Reset,
        Close
    };

    QByteArray bytes = {};
    /// So many more bytes of `filler` after `bytes`; negative: until the peer leaves.
    qint64 fillerSize = 0;
    char filler = 'K';
    /// After the filler.
    QByteArray tail = {};
    /// The body leaves in small pieces with pauses.
    bool slow = false;
    End end = End::Finish;
};

struct FaultInput
{
    /// The ordinary answer as it would go over the wire; empty unless the kind asks for it.
    QByteArray ordinary;
    /// The request's own URL, and the same one without TLS.
    QByteArray url;
    QByteArray plainUrl;
    /// What stands behind the fault's name: "status:404:json" has two.
    QStringList arguments;
};

struct FaultKind
{
    enum class Phase
    {
        WholeService, ///< nothing is accepted any more
        BeforeBody, ///< as soon as the request's headers are there
        Held, ///< the ordinary answer, when released
        Instead, ///< after the whole request; the endpoint never sees it
        Bent, ///< the endpoint has done its work, and its answer is broken on the way
    };

    QLatin1StringView name;
    Phase phase;
    FaultScript (*script)(const FaultInput &input);
};

std::span<const FaultKind> faultKinds();
/// Null for an unknown fault; `fault` may carry arguments behind colons.
const FaultKind *findFault(const QString &fault);

/// Which endpoint has which fault, for how many more requests. Any thread.
class FaultBoard
{
public:
    /// Negative `times`: until cleared. "none" takes a fault away. False for an unknown fault.
    bool set(const QString &path, const QString &fault, int times);
    void clear();
    /// The fault of the path, else of "*", else empty; counts as one use of it.
    QString take(const QString &path);
    bool refuses() const;

private:
    struct Entry
    {
        QString fault;
        int times = -1;
    };
    mutable std::mutex m_mutex;
    QHash<QString, Entry> m_entries;
};

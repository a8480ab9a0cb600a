#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QList>
#include <QString>

/// What happens to a file system call.
enum class DiskFault
{
    /// It does nothing and reports an error that fits; a close lets go of the descriptor all the same.
    Fails,
    /// So does each call after it, as on a disk that was pulled out.
    FailsForGood,
    /// It does nothing because of a signal; asked again it works.
    Interrupted,
    /// It moves half of the bytes.
    Short,
    /// It moves half of the bytes, and the next on that descriptor fail.
    ShortThenFails
};

/// While it lives, counts the file system calls that this process makes, in whatever thread, on anything
/// below a folder, and lets some of them go wrong. One at a time. A program that links its source has the
/// calls of all of its libraries pass through here, those apart that the C library makes of itself.
class FailingCalls
{
public:
    /// The calls are numbered from 0, and only those count that the fault can happen to.
    FailingCalls(const QString &folder, DiskFault fault, const QList<int> &numbers);
    ~FailingCalls();
    Q_DISABLE_COPY_MOVE(FailingCalls)

    /// From now on no entry of a folder tells its kind, as on some file systems.
    void hideKinds();

    /// The calls of those numbers that went wrong, such as "write 3 /tmp/a.kvt". Fewer than the numbers when
    /// there were not as many calls.
    QByteArrayList failed() const;
    /// What calls that failed reported, each once.
    QList<int> errors() const;
    /// The names of all calls in their order, "open" for each of its forms.
    QByteArrayList calls() const;
};

#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QList>
#include <QString>

/// What happens to a file system call.
enum class DiskFault
{
    /// It does nothing and reports a fitting error; a close still releases the descriptor.
    Fails,
    /// It and all later calls fail, as on a disk that was pulled out.
    FailsForGood,
    /// It is interrupted by a signal; the next try works.
    Interrupted,
    /// It transfers half of the bytes.
    Short,
    /// It transfers half of the bytes, and later calls on that descriptor fail.
    ShortThenFails
};

/// While it lives, counts this process's file system calls, in any thread, on anything below a folder, and
/// makes some of them fail. Only one may exist at a time. In a program that links FailingCalls.cpp, it
/// intercepts the calls of all libraries, except those that the C library makes internally.
class FailingCalls
{
public:
    /// `numbers`: which calls fail, counted from 0 among those that can have this fault.
    FailingCalls(const QString &folder, DiskFault fault, const QList<int> &numbers);
    ~FailingCalls();
    Q_DISABLE_COPY_MOVE(FailingCalls)

    /// From now on folder entries do not contain their type, as on some file systems.
    void hideKinds();

    /// The calls that failed, such as "write 3 /tmp/a.kvt"; shorter than `numbers` if there were fewer calls.
    QByteArrayList failed() const;
    /// The errors that failed calls reported, each once.
    QList<int> errors() const;
    /// The names of all calls in order, "open" for all its variants.
    QByteArrayList calls() const;
};

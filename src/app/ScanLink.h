#pragma once

#include <QMutex>

#include <atomic>

class AppState;

/// Shared by a scan's thread and the controller, so that it outlives both: the thread is detached, and the
/// window may be closed while the thread waits for the disk.
struct ScanLink
{
    std::atomic<bool> cancel = false;
    /// Guards `owner` while a completion is posted to it.
    QMutex mutex;
    /// Null once the controller is destroyed.
    AppState *owner = nullptr;
};

#pragma once

#include <QMutex>

#include <atomic>

class AppState;

/// What a scan's thread and the controller share. Each holds it, so whichever ends first leaves the other
/// something to look at: the thread is detached, and the window may be closed while the disk keeps it
/// waiting.
struct ScanLink
{
    std::atomic<bool> cancel = false;
    /// Guards `owner` while a completion is posted to it.
    QMutex mutex;
    /// Null once the controller is gone.
    AppState *owner = nullptr;
};

#pragma once

#include <QFutureWatcher>
#include <QPromise>
#include <QtConcurrent/QtConcurrentRun>

#include <functional>
#include <memory>
#include <new>
#include <optional>
#include <utility>

/// Work on another thread that can be given up at once. It may look at data of its owner, as long as the
/// owner stops it before they change or go. Used on one thread, whose event loop gets the result.
template <typename Result> class Job
{
public:
    /// Asked now and then by the work, which ends when it returns true.
    using GivenUp = std::function<bool()>;
    using Work = std::function<std::optional<Result>(const GivenUp &)>;

    /// `done` gets the result; nothing if the memory did not suffice. It is not called for work given up.
    explicit Job(std::function<void(std::optional<Result> &&)> done)
    {
        QObject::connect(&m_watcher, &QFutureWatcherBase::finished, [this, done = std::move(done)] {
            if (m_watcher.isCanceled() || !m_result)
                return;
            const auto result = std::exchange(m_result, nullptr);
            done(std::move(*result));
        });
    }

    ~Job() { stop(); }
    Job(const Job &) = delete;
    Job &operator=(const Job &) = delete;

    /// Gives up what is at work.
    void start(const Work &work)
    {
        stop();
        // Not a result of the future: of that the other thread may hold a reference for a moment longer.
        m_result = std::make_shared<std::optional<Result>>();
        m_watcher.setFuture(QtConcurrent::run([work, result = m_result](QPromise<void> &promise) {
            try {
                *result = work([&promise] { return promise.isCanceled(); });
            } catch (const std::bad_alloc &) {
                result->reset();
            }
        }));
    }

    /// Returns when the work has ended, which looks at nothing any more.
    void stop()
    {
        m_watcher.cancel();
        m_watcher.waitForFinished();
        m_watcher.setFuture({});
        m_result.reset();
    }

    /// Until `done` is called.
    bool isRunning() const { return m_result != nullptr; }

private:
    QFutureWatcher<void> m_watcher;
    std::shared_ptr<std::optional<Result>> m_result;
};

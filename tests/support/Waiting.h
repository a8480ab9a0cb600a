#pragma once

#include <QTest>

#include <functional>

/// Runs the event loop until the condition holds; false after a minute. The condition is
/// checked after every event, and a few times a second as well, for changes by another thread or program.
bool waitUntil(const std::function<bool()> &condition);

/// Used instead of Qt Test's QTRY_*, which sleep between two checks.
#define WAIT_VERIFY(condition)                                                                               \
    QVERIFY2(waitUntil([&] { return static_cast<bool>(condition); }), "Waited in vain for " #condition)

#define WAIT_COMPARE(actual, expected)                                                                       \
    do {                                                                                                     \
        waitUntil([&] { return (actual) == (expected); });                                                   \
        QCOMPARE(actual, expected);                                                                          \
    } while (false)

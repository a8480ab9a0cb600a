#pragma once

#include <QTest>

#include <functional>

/// Runs the event loop until the condition holds; false once a minute has passed in vain. The condition is
/// looked at after every event, and a few times a second besides, for what another thread or another program
/// changes.
bool waitUntil(const std::function<bool()> &condition);

/// These take the place of Qt Test's QTRY_*, which sleep between two looks.
#define WAIT_VERIFY(condition)                                                                               \
    QVERIFY2(waitUntil([&] { return static_cast<bool>(condition); }), "Waited in vain for " #condition)

#define WAIT_COMPARE(actual, expected)                                                                       \
    do {                                                                                                     \
        waitUntil([&] { return (actual) == (expected); });                                                   \
        QCOMPARE(actual, expected);                                                                          \
    } while (false)

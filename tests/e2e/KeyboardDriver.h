#pragma once

#include "WindowDriver.h"

/// Uses the window as a person without a mouse: Tab moves to a control, the arrow keys to a row, and the
/// space bar or Return does what a click would.
class KeyboardDriver : public WindowDriver
{
public:
    bool hasPointer() const override { return false; }
    using WindowDriver::click;
    void click(QQuickItem *item) const override;

protected:
    void focus(QQuickItem *textInput) const override;
    void chooseRow(const QString &name) const override;

private:
    /// Presses Tab until the item, or one inside it, has the focus; throws when that never happens.
    void reach(QQuickItem *item) const;
    void reachRow(QQuickItem *row) const;
    /// Presses an arrow key once; throws when the list does not move.
    void step(QQuickItem *list, Qt::Key arrow) const;
};

#include "KeyboardDriver.h"

#include <QQuickItem>
#include <QQuickWindow>

using namespace Qt::StringLiterals;

namespace {

// More than any view has stops.
constexpr int mostStops = 300;

// The row of a list that the item is, or is in; none for the items of a form.
QQuickItem *rowAround(QQuickItem *item)
{
    while (item && !(item->property("index").isValid() && item->property("list").value<QQuickItem *>()))
        item = item->parentItem();
    return item;
}

bool isInside(const QQuickItem *item, const QQuickItem *ancestor)
{
    return item && (item == ancestor || ancestor->isAncestorOf(item));
}

// Replaces a click. The arrow keys alone select a row.
Qt::Key keyFor(const QQuickItem *item, const QQuickItem *row)
{
    const bool isButton = item->inherits("QQuickAbstractButton");
    if (!row || item->inherits("QQuickCheckBox"))
        return Qt::Key_Space;
    return !isButton && row->property("selected").isValid() ? Qt::Key_unknown : Qt::Key_Return;
}

} // namespace

void KeyboardDriver::click(QQuickItem *item) const
{
    waitUntilUsable(item);
    QQuickItem *const row = rowAround(item);
    const Qt::Key action = keyFor(item, row);
    if (row)
        reachRow(row);
    else
        reach(item);
    if (action != Qt::Key_unknown)
        key(action);
}

void KeyboardDriver::focus(QQuickItem *textInput) const
{
    reach(textInput);
}

void KeyboardDriver::reach(QQuickItem *item) const
{
    for (int i = 0; i < mostStops; ++i) {
        if (isInside(window()->activeFocusItem(), item))
            return;
        key(Qt::Key_Tab);
    }
    check(false,
          u"Tab does not come to %1 \"%2\""_s.arg(item->objectName(), item->property("text").toString()));
}

void KeyboardDriver::reachRow(QQuickItem *row) const
{
    auto *const list = row->property("list").value<QQuickItem *>();
    const int wanted = row->property("index").toInt();
    reach(list);
    while (list->property("currentIndex").toInt() != wanted)
        step(list, list->property("currentIndex").toInt() < wanted ? Qt::Key_Down : Qt::Key_Up);
}

void KeyboardDriver::step(QQuickItem *list, Qt::Key arrow) const
{
    const int before = list->property("currentIndex").toInt();
    key(arrow);
    check(list->property("currentIndex").toInt() != before,
          u"%1 does not move by the arrow keys"_s.arg(list->objectName()));
}

void KeyboardDriver::chooseRow(const QString &rows, const QString &name) const
{
    QQuickItem *const list = item(QString(rows).replace("Delegate"_L1, "ListView"_L1));
    // The dialog may reload its folder and recreate its rows: so each try starts from the current row, and
    // only a chosen row counts.
    const QQuickItem *chosen = nullptr;
    Qt::Key arrow = Qt::Key_Down;
    const auto choose = [&] {
        reach(list);
        const auto *const current = list->property("currentItem").value<QQuickItem *>();
        if (current && current->property("fileName").toString() == name) {
            if (current == chosen)
                return true;
            key(Qt::Key_Space);
            chosen = current;
            return false;
        }
        const int row = list->property("currentIndex").toInt();
        if (row <= 0)
            arrow = Qt::Key_Down;
        else if (row >= list->property("count").toInt() - 1)
            arrow = Qt::Key_Up;
        key(arrow);
        return false;
    };
    waitFor(choose, u"%1 to be chosen in the dialog"_s.arg(name));
}

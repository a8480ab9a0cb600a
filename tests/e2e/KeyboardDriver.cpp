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

void KeyboardDriver::chooseRow(const QString &name) const
{
    // The arrow keys mark a row. The folder may be read anew, and the row made again.
    const auto choose = [&] {
        QQuickItem *const row = chooserRow(name);
        if (!row->property("marked").toBool())
            reachRow(row);
        return row->property("marked").toBool();
    };
    waitFor(choose, u"%1 to be chosen in the dialog"_s.arg(name));
}

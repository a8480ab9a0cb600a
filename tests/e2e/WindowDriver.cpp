#include "WindowDriver.h"

#include "app/AppState.h"

#include <QDir>
#include <QFileInfo>
#include <QGuiApplication>
#include <QImage>
#include <QQmlContext>
#include <QQmlEngine>
#include <QQuickItem>
#include <QQuickWindow>
#include <QTest>

#include <algorithm>

using namespace Qt::StringLiterals;

namespace {

constexpr int patienceInMilliseconds = 60000;

[[noreturn]] void fail(const QString &what)
{
    throw DriveError(what.toStdString());
}

QQuickItem *search(QQuickItem *parent, const std::function<bool(const QQuickItem *)> &matches)
{
    const QList<QQuickItem *> children = parent->childItems();
    // The last one created is on top.
    for (auto it = children.rbegin(); it != children.rend(); ++it) {
        if (!(*it)->isVisible())
            continue;
        if (matches(*it))
            return *it;
        if (QQuickItem *const found = search(*it, matches))
            return found;
    }
    return nullptr;
}

QQuickWindow *shownWindow()
{
    for (QWindow *const window : QGuiApplication::topLevelWindows()) {
        auto *const quickWindow = qobject_cast<QQuickWindow *>(window);
        if (quickWindow && quickWindow->isExposed())
            return quickWindow;
    }
    return nullptr;
}

} // namespace

void check(bool holds, const QString &what)
{
    if (!holds)
        throw DriveError(what.toStdString());
}

WindowDriver::WindowDriver()
{
    waitFor([this] { return (m_window = shownWindow()) != nullptr; }, u"the window"_s);
    QQmlContext *const context = QQmlEngine::contextForObject(m_window);
    m_app = context->engine()->rootContext()->contextProperty(u"app"_s).value<AppState *>();
    m_window->requestActivate();
    waitFor([this] { return m_window->isActive(); }, u"the window to become active"_s);
}

QQuickItem *WindowDriver::where(const std::function<bool(const QQuickItem *)> &matches,
                                const QString &what) const
{
    QQuickItem *found = nullptr;
    waitFor([&] { return (found = search(m_window->contentItem(), matches)) != nullptr; }, what);
    return found;
}

QQuickItem *WindowDriver::inside(const QString &objectName,
                                 const std::function<bool(const QQuickItem *)> &matches,
                                 const QString &what) const
{
    QQuickItem *const ancestor = item(objectName);
    QQuickItem *found = nullptr;
    waitFor([&] { return (found = search(ancestor, matches)) != nullptr; }, what);
    return found;
}

QQuickItem *WindowDriver::item(const QString &objectName) const
{
    return where([&objectName](const QQuickItem *candidate) { return candidate->objectName() == objectName; },
                 objectName);
}

bool WindowDriver::isVisible(const QString &objectName) const
{
    return search(m_window->contentItem(), [&objectName](const QQuickItem *candidate) {
        return candidate->objectName() == objectName;
    });
}

void WindowDriver::waitUntilUsable(const QQuickItem *item) const
{
    waitFor([item] { return item->isEnabled() && item->width() > 0 && item->height() > 0; },
            u"%1 to be enabled"_s.arg(item->objectName()));
}

void WindowDriver::click(QQuickItem *item) const
{
    waitUntilUsable(item);
    tap(item);
}

void WindowDriver::focus(QQuickItem *textInput) const
{
    click(textInput);
}

void WindowDriver::tap(QQuickItem *item) const
{
    const QPointF centre = item->mapToScene(QPointF(item->width() / 2, item->height() / 2));
    if (!QRectF(QPointF(), m_window->size()).contains(centre))
        fail(u"%1 is out of sight"_s.arg(item->objectName()));
    QTest::mouseClick(m_window, Qt::LeftButton, {}, centre.toPoint());
}

void WindowDriver::type(const QString &objectName, const QString &text) const
{
    QQuickItem *const control = item(objectName);
    QQuickItem *const field = control->property("text").isValid() && control->inherits("QQuickTextInput")
        ? control
        : search(control, [](const QQuickItem *candidate) { return candidate->inherits("QQuickTextInput"); });
    if (!field)
        fail(u"%1 takes no text"_s.arg(objectName));
    typeInto(field, text);
}

void WindowDriver::typeInto(QQuickItem *textInput, const QString &text) const
{
    focus(textInput);
    waitFor([textInput] { return textInput->hasActiveFocus(); }, u"the keyboard focus"_s);
    key(Qt::Key_A, Qt::ControlModifier);
    for (const QChar character : text)
        QTest::sendKeyEvent(QTest::Click, m_window, Qt::Key_unknown, QString(character), Qt::NoModifier);
    waitFor([&] { return textInput->property("text").toString() == text; },
            u"the field to hold the text typed"_s);
}

void WindowDriver::key(Qt::Key key, Qt::KeyboardModifiers modifiers) const
{
    QTest::keyClick(m_window, key, modifiers);
}

void WindowDriver::chooseFile(const QString &fileName) const
{
    chooseRow(fileName);
    click(button(u"Open"_s));
}

void WindowDriver::chooseFolder(const QString &name) const
{
    chooseRow(name);
    click(button(u"Open"_s));
}

QQuickItem *WindowDriver::chooserRow(const QString &name) const
{
    return where(
        [&name](const QQuickItem *candidate) {
            return candidate->objectName() == "chooserRow"_L1
                && candidate->property("name").toString() == name;
        },
        u"%1 in the dialog"_s.arg(name));
}

void WindowDriver::chooseRow(const QString &name) const
{
    // The folder may be read anew, and the row made again.
    const auto choose = [&] {
        QQuickItem *const row = chooserRow(name);
        if (!row->property("marked").toBool())
            click(row);
        return row->property("marked").toBool();
    };
    waitFor(choose, u"%1 to be chosen in the dialog"_s.arg(name));
}

void WindowDriver::saveAs(const QString &fileName) const
{
    typeInto(item(u"chooserName"_s), fileName);
    click(button(u"Save"_s));
}

QQuickItem *WindowDriver::button(const QString &text) const
{
    return where(
        [&text](const QQuickItem *candidate) {
            return candidate->inherits("QQuickAbstractButton") && candidate->isEnabled()
                && candidate->property("text").toString().remove('&'_L1) == text;
        },
        u"the button %1"_s.arg(text));
}

void WindowDriver::waitFor(const std::function<bool()> &condition, const QString &what) const
{
    if (!QTest::qWaitFor(condition, patienceInMilliseconds))
        fail(u"waited in vain for %1"_s.arg(what));
}

void WindowDriver::waitForStatus(const QString &text) const
{
    waitFor([&] { return m_app->status() == text; }, u"the status \"%1\""_s.arg(text));
}

void WindowDriver::waitForStatusEnding(const QString &text) const
{
    waitFor([&] { return m_app->status().endsWith(text); }, u"a status \"... %1\""_s.arg(text));
}

void WindowDriver::savePicture(const QString &path) const
{
    QDir().mkpath(QFileInfo(path).absolutePath());
    // A new status fades in.
    const auto isShown = [this](const QString &name) {
        const QList<QObject *> lines = m_window->findChildren<QObject *>(name);
        return std::ranges::all_of(lines, [](const QObject *line) { return line->property("fade") == 1.0; });
    };
    waitFor([&] { return isShown(u"statusLine"_s) && isShown(u"hexStatus"_s); }, u"the status line"_s);
    const QImage picture = m_window->grabWindow();
    if (picture.isNull() || !picture.save(path))
        fail(u"no picture could be saved as %1"_s.arg(path));
}

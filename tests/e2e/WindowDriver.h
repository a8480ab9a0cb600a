#pragma once

#include <QByteArray>
#include <QString>

#include <functional>
#include <stdexcept>

class AppState;
class QQuickItem;
class QQuickWindow;

/// Thrown when the window does not do what its user expects.
class DriveError : public std::runtime_error
{
public:
    using std::runtime_error::runtime_error;
};

/// Throws an error with this text unless the condition holds.
void check(bool holds, const QString &what);

/// Uses the program's window as a person would: looks for visible controls, clicks and types.
class WindowDriver
{
public:
    /// Waits for the window.
    WindowDriver();
    virtual ~WindowDriver() = default;
    WindowDriver(const WindowDriver &) = delete;
    WindowDriver &operator=(const WindowDriver &) = delete;

    /// Whether this user has a mouse.
    virtual bool hasPointer() const { return true; }

    QQuickWindow *window() const { return m_window; }
    /// The controller, as the views know it.
    AppState *app() const { return m_app; }

    /// The visible item of that object name, or of that text and type; waits for it.
    QQuickItem *item(const QString &objectName) const;
    QQuickItem *where(const std::function<bool(const QQuickItem *)> &matches, const QString &what) const;
    QQuickItem *button(const QString &text) const;
    /// The first visible item inside the one of that object name; waits for both.
    QQuickItem *inside(const QString &objectName, const std::function<bool(const QQuickItem *)> &matches,
                       const QString &what) const;
    bool isVisible(const QString &objectName) const;

    /// Waits until the control can be used.
    virtual void click(QQuickItem *item) const;
    /// Clicks at once, whether the control can be used or not.
    void tap(QQuickItem *item) const;
    void click(const QString &objectName) const { click(item(objectName)); }
    /// Clicks the control, which keeps the focus, and replaces its text.
    void type(const QString &objectName, const QString &text) const;
    void typeInto(QQuickItem *textInput, const QString &text) const;
    void key(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) const;

    /// Chooses a file by name in the open file dialog.
    void chooseFile(const QString &fileName) const;
    /// Chooses a folder by name in the open folder dialog.
    void chooseFolder(const QString &name) const;
    /// Types a name into the save dialog and accepts it.
    void saveAs(const QString &fileName) const;

    void waitFor(const std::function<bool()> &condition, const QString &what) const;
    void waitForStatus(const QString &text) const;
    void waitForStatusEnding(const QString &text) const;
    void savePicture(const QString &path) const;

protected:
    void waitUntilUsable(const QQuickItem *item) const;
    /// Gives a text field the focus.
    virtual void focus(QQuickItem *textInput) const;
    /// Marks a row of the open dialog.
    virtual void chooseRow(const QString &name) const;
    QQuickItem *chooserRow(const QString &name) const;

private:
    QQuickWindow *m_window = nullptr;
    AppState *m_app = nullptr;
};

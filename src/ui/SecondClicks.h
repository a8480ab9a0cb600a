#pragma once

#include <QObject>
#include <QPointer>

class QQuickItem;

/// Prevents double-click click-through. When the first click opens or closes something, the second one would
/// hit what is there then, such as a row of a save dialog, which would choose that file. Installed on the
/// application, this drops such a second click in Qt Quick windows.
class SecondClicks : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    /// The target of the last click.
    QPointer<QQuickItem> m_clicked;
};

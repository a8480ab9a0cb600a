#pragma once

#include <QObject>
#include <QPointer>

class QQuickItem;

/// Prevents double-click click-through. Where a first click opens or closes something, the second one lands
/// on whatever is there then: in a save dialog, a row would take it for the choice of its file. Installed on
/// the application, it drops such a second click in Qt Quick windows, and every second click on a dialog's
/// button: Save may only have entered a folder.
class SecondClicks : public QObject
{
    Q_OBJECT

public:
    using QObject::QObject;

    bool eventFilter(QObject *watched, QEvent *event) override;

private:
    /// What the last click was on.
    QPointer<QQuickItem> m_clicked;
};

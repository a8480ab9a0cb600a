#pragma once

#include <QObject>
#include <QPointer>

class QQuickItem;

/// Sees to it that a double click acts on one thing only. Where its first click opens or closes something,
/// the second one falls on whatever is there then: a row of a dialog for saving would take it for the choice
/// of its file. Installed on the application, it drops such a second click in windows of Qt Quick, and every
/// second click on a dialog's answer: Save may only have entered a folder.
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

#include "platform/WebToolWindow.h"

#include <QDesktopServices>
#include <QUrl>

struct WebToolWindow::Private
{
};

WebToolWindow::WebToolWindow()
    : d(std::make_unique<Private>())
{
}

WebToolWindow::~WebToolWindow() = default;

void WebToolWindow::openUrl(const QString &url, const QString &title)
{
    setWindowTitle(title);
    QDesktopServices::openUrl(QUrl(url, QUrl::TolerantMode));
}

void WebToolWindow::showEvent(QShowEvent *event)
{
    QWidget::showEvent(event);
}

void WebToolWindow::resizeEvent(QResizeEvent *event)
{
    QWidget::resizeEvent(event);
}

void WebToolWindow::ensureWebView() { }

void WebToolWindow::updateBounds() { }

void WebToolWindow::navigatePending() { }

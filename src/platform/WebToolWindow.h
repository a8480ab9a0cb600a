#pragma once

#include <QString>
#include <QWidget>

#include <memory>

/// Opens the user manual and the web pages of tools. It is designed to host a web view later; for now it
/// opens every address with the desktop and stays hidden.
class WebToolWindow : public QWidget
{
    Q_OBJECT

public:
    WebToolWindow();
    ~WebToolWindow() override;

    /// Sets the window title and asks the desktop to open `url`, parsed tolerantly. The outcome is not known.
    void openUrl(const QString &url, const QString &title);

protected:
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    // A native web view would be created here, fitted to the window, and load the pending address.
    void ensureWebView();
    void updateBounds();
    void navigatePending();

    struct Private;
    std::unique_ptr<Private> d;
};

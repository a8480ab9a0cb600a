#pragma once

#include <QString>
#include <QWidget>

#include <memory>

/// The one place through which web pages and documents are shown. It is prepared to host a web view, but
/// hands every address to the desktop and never shows itself.
class WebToolWindow : public QWidget
{
    Q_OBJECT

public:
    WebToolWindow();
    ~WebToolWindow() override;

    /// Takes `title` as its own and asks the desktop to open `url`, read leniently. The outcome is not known.
    void openUrl(const QString &url, const QString &title);

protected:
    void showEvent(QShowEvent *event) override;
    void resizeEvent(QResizeEvent *event) override;

private:
    // Where a native web view would be made, fitted to the window and sent to the pending address.
    void ensureWebView();
    void updateBounds();
    void navigatePending();

    struct Private;
    std::unique_ptr<Private> d;
};

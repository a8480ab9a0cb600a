#pragma once

#include <QQmlAbstractUrlInterceptor>
#include <QUrl>

/// Where the platform has no file dialog, Qt shows its own, which treats file and folder names as markup and
/// may crash over them. This interceptor makes the engine use our QML files for the parts that show names.
class PlainFileDialogs : public QQmlAbstractUrlInterceptor
{
public:
    QUrl intercept(const QUrl &url, DataType type) override;
};

#pragma once

#include <QQmlAbstractUrlInterceptor>
#include <QUrl>

/// Where the platform has no file dialog, Qt shows one of its own, which takes the names of files and folders
/// for markup and may crash over them. An engine with this interceptor builds those parts of it that show
/// names from files of ours.
class PlainFileDialogs : public QQmlAbstractUrlInterceptor
{
public:
    QUrl intercept(const QUrl &url, DataType type) override;
};

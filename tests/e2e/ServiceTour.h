#pragma once

#include "WindowDriver.h"

#include <QString>

#include <functional>

/// The part of the tour that needs the service: conversions, segment swap, store, patches, stock files,
/// tickets and the update check.
class ServiceTour
{
public:
    /// `samples` is the folder of the sample files, and the documents folder. `picture` takes a step's name.
    ServiceTour(const WindowDriver &window, const QString &samples,
                const std::function<void(const QString &)> &picture);

    void run();

private:
    void convert();
    void swapSegments();
    void buyDefinition();
    void patchBin();
    void openStockFile();
    void writeTicket();
    void checkForUpdate();

    void press(const QString &view, const QString &text) const;
    void type(const QString &view, const QString &title, const QString &text) const;
    QByteArray sample(const QString &name) const;

    const WindowDriver &m_window;
    QString m_samples;
    std::function<void(const QString &)> m_picture;
};

#pragma once

#include "WindowDriver.h"

#include <QString>

#include <functional>

/// The part of the tour that needs no service: folder search, sorter, fault codes, VIN2HEX and the manual.
class LibraryTour
{
public:
    /// `samples` is the folder of the sample files, where the dialogs start. `picture` takes a step's name.
    LibraryTour(const WindowDriver &window, const QString &samples,
                const std::function<void(const QString &)> &picture);

    void run();

private:
    void search();
    void cancelSearch();
    void openHit();
    void sort();
    void decodeFaults();
    void convertVin();
    void showManual();

    const WindowDriver &m_window;
    QString m_samples;
    std::function<void(const QString &)> m_picture;
};

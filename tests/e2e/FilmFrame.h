#pragma once

#include <QImage>
#include <QPoint>
#include <vector>

namespace tavrel::e2e {

/// What is to be seen at one moment.
struct Moment {
    /// Whether each monitor is on, from left to right.
    std::vector<bool> monitors;
    QImage window;
    /// From the window's corner.
    QPoint pointer;
};

/// A picture of the moment: the monitors in a row, below them the window with the pointer.
/// Needs a QGuiApplication.
QImage draw(const Moment& moment);

}  // namespace tavrel::e2e

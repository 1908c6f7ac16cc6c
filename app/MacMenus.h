#pragma once

class QMenuBar;
class QWidget;

namespace tavrel {

/// The menus that every application on a Mac has, but for what this one cannot do: there is no
/// second window to open, and its only one has one size. The application's own menu, with Quit,
/// the system adds itself. Main thread only.
///
/// Both act on `window`, which must outlive the menu bar, while that is shown.
void addMacFileMenu(QMenuBar& menuBar, QWidget& window);
void addMacWindowMenu(QMenuBar& menuBar, QWidget& window);

}  // namespace tavrel

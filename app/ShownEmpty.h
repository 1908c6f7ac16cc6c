#pragma once

class QWidget;

namespace tavrel {

/// Shows a window that is filled only later. Until it is painted it has its palette's colour, and
/// not what the screen showed in its place, also when that takes seconds: the fonts of a system
/// may have to be searched for first. Main thread only.
void showEmpty(QWidget& window);

}  // namespace tavrel

#pragma once

#include <QProxyStyle>

namespace tavrel::theme {

/// How the toolkit's own widgets are drawn where the desktop's style may ignore the palette,
/// which this one never does.
class DesignStyle : public QProxyStyle {
public:
    DesignStyle();

    /// Draws the arrow of a menu bar that is too narrow for its menus, instead of loading a
    /// picture: each menu bar wants it from the first, and every plug-in for pictures with it.
    QIcon standardIcon(StandardPixmap which, const QStyleOption* option = nullptr,
                       const QWidget* widget = nullptr) const override;
};

}  // namespace tavrel::theme

#pragma once

#include <QColor>
#include <QFont>
#include <QPalette>
#include <QString>

/// The look shared by everything in the window. It is dark, whatever the system's setting.
///
/// Sizes are in points of the design, which are Qt's logical pixels. Colours are the
/// named ones of a dark appearance.
namespace tavrel::theme {

inline constexpr QColor indigo{94, 92, 230};
inline constexpr QColor red{255, 69, 58};
inline constexpr QColor orange{255, 159, 10};
inline constexpr QColor green{48, 209, 88};
/// The accent: switches that are on, and the focus ring.
inline constexpr QColor blue{10, 132, 255};

/// `color` at `opacity`, 0 to 1.
QColor withAlpha(QColor color, double opacity);
QColor white(double opacity = 1);

/// The opacity of a disabled control as a whole.
inline constexpr double disabledOpacity = 0.5;

enum class FontDesign { standard, rounded, monospaced };

/// A font of the design. Half sizes are exact.
struct FontSpec {
    double size;
    QFont::Weight weight;
    FontDesign design = FontDesign::standard;
    /// Space added after each letter.
    double tracking = 0;
};

/// The font for `spec`, `scale` times as large, in the best family installed: the system's
/// rounded font or Quicksand, Inter (on a Mac the system font), the system's fixed font; where
/// that is missing, the system font.
///
/// REQUIRES: the scaled size is a whole number of pixels; Qt knows no others.
QFont font(const FontSpec& spec, double scale);

/// A scale at which each size of the design is a whole number of pixels.
inline constexpr double wholeScale = 2;

/// Reads the system's settings of fonts, which is the greater part of what `findFonts` does. For
/// any thread; an application need not exist yet.
void readFontConfiguration();

/// Reads which fonts are installed, which takes as long as all else until the window is shown. For
/// any thread, before the first font is wanted: a thread that wants one before this has returned
/// reads them a second time.
///
/// REQUIRES: the application exists, and goes on existing until this returns.
void findFonts();

/// `spec` in its own design if that one's font has every letter of `text`, else in the first
/// design whose font has them: so that a text of rare letters is drawn in one hand, not patched
/// together from several fonts. `spec` itself where no font has them all.
FontSpec specFor(const QString& text, const FontSpec& spec);

QPalette darkPalette();

/// Gives all windows, menus and tooltips of the application, which must exist, the dark look.
void apply();

/// The style sheet of a menu bar that lies in the free strip above the header, and of
/// its menus.
QString menuBarStyleSheet();

/// The height of that strip.
inline constexpr int menuBarHeight = 28;

/// The style sheet of the slim scroll bar beside the rows.
QString scrollBarStyleSheet();

}  // namespace tavrel::theme

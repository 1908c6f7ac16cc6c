#include "ui/paint/Theme.h"

#include <QApplication>
#include <QFontDatabase>
#include <QRawFont>
#include <QStringList>
#include <QStyleHints>
#include <QToolTip>
#include <algorithm>

#include "ui/paint/DesignStyle.h"

#ifndef Q_OS_MACOS
#include <fontconfig/fontconfig.h>
#endif

namespace tavrel::theme {
namespace {

constexpr QColor surface{28, 31, 43};
constexpr QColor backdrop{14, 18, 30};

QString systemFamily() {
    return QFontDatabase::systemFont(QFontDatabase::GeneralFont).family();
}

#ifdef Q_OS_MACOS
/// The Mac's own rounded font, which cannot be asked for by name.
QStringList systemRoundedFamilies() {
    const int font =
        QFontDatabase::addApplicationFont(QStringLiteral("/System/Library/Fonts/SFNSRounded.ttf"));
    return font < 0 ? QStringList() : QFontDatabase::applicationFontFamilies(font);
}
#else
QStringList systemRoundedFamilies() {
    return {};
}
#endif

QStringList families(FontDesign design) {
    switch (design) {
        case FontDesign::rounded:
            return systemRoundedFamilies() +
                   QStringList{QStringLiteral("Quicksand"), systemFamily()};
        case FontDesign::monospaced:
            return {QFontDatabase::systemFont(QFontDatabase::FixedFont).family()};
        case FontDesign::standard:
            break;
    }
#ifdef Q_OS_MACOS
    // The system's own design, also where somebody has installed the other one.
    return {systemFamily()};
#else
    return {QStringLiteral("Inter"), systemFamily()};
#endif
}

/// The last of them, the system's own, needs no check.
QStringList installed(QStringList wanted) {
    const QString last = wanted.takeLast();
    QStringList result;
    for (const QString& family : wanted) {
        // A family whose name starts with a dot is never listed, yet can be asked for.
        if (family.startsWith(u'.') || QFontDatabase::hasFamily(family)) {
            result += family;
        }
    }
    return result + QStringList{last};
}

/// Looked up once: each question takes the font system longer than all else that a label does.
const QStringList& installedFamilies(FontDesign design) {
    static const QStringList standard = installed(families(FontDesign::standard));
    static const QStringList rounded = installed(families(FontDesign::rounded));
    static const QStringList monospaced = installed(families(FontDesign::monospaced));
    switch (design) {
        case FontDesign::rounded:
            return rounded;
        case FontDesign::monospaced:
            return monospaced;
        case FontDesign::standard:
            break;
    }
    return standard;
}

}  // namespace

QColor withAlpha(QColor color, double opacity) {
    color.setAlphaF(static_cast<float>(opacity));
    return color;
}

QColor white(double opacity) {
    return withAlpha(QColor(255, 255, 255), opacity);
}

QFont font(const FontSpec& spec, double scale) {
    QFont font;
    font.setFamilies(installedFamilies(spec.design));
    font.setPixelSize(qRound(spec.size * scale));
    font.setWeight(spec.weight);
    font.setHintingPreference(QFont::PreferNoHinting);
    if (spec.design == FontDesign::monospaced) {
        font.setStyleHint(QFont::Monospace);
    }
    if (spec.tracking != 0) {
        font.setLetterSpacing(QFont::AbsoluteSpacing, spec.tracking * scale);
    }
    return font;
}

void readFontConfiguration() {
#ifndef Q_OS_MACOS
    // The toolkit calls this too when it is first asked for a font, and then finds it done. If both
    // call it at the same time, the library makes one wait for the other.
    FcInit();
#endif
}

void findFonts() {
    // Guarded by the toolkit. What the desktop's theme says of fonts is not.
    static_cast<void>(QFontDatabase::families());
}

FontSpec specFor(const QString& text, const FontSpec& spec) {
    const auto letters = text.toUcs4();
    for (const FontDesign design :
         {spec.design, FontDesign::standard, FontDesign::monospaced, FontDesign::rounded}) {
        FontSpec candidate = spec;
        candidate.design = design;
        // The font itself; a QFont would borrow what it lacks from others.
        const QRawFont raw = QRawFont::fromFont(font(candidate, wholeScale));
        if (std::all_of(letters.begin(), letters.end(),
                        [&](char32_t letter) { return raw.supportsCharacter(letter); })) {
            return candidate;
        }
    }
    return spec;
}

QPalette darkPalette() {
    QPalette palette;
    palette.setColor(QPalette::Window, backdrop);
    palette.setColor(QPalette::WindowText, white());
    palette.setColor(QPalette::Base, surface);
    palette.setColor(QPalette::AlternateBase, backdrop);
    palette.setColor(QPalette::Text, white());
    palette.setColor(QPalette::PlaceholderText, white(0.4));
    palette.setColor(QPalette::Button, surface);
    palette.setColor(QPalette::ButtonText, white());
    palette.setColor(QPalette::BrightText, red);
    palette.setColor(QPalette::Light, surface.lighter(150));
    palette.setColor(QPalette::Midlight, surface.lighter(125));
    palette.setColor(QPalette::Mid, surface.darker(125));
    palette.setColor(QPalette::Dark, surface.darker(150));
    palette.setColor(QPalette::Shadow, QColor(0, 0, 0));
    palette.setColor(QPalette::Highlight, blue);
    palette.setColor(QPalette::HighlightedText, white());
    palette.setColor(QPalette::Link, blue);
    palette.setColor(QPalette::LinkVisited, indigo);
    palette.setColor(QPalette::ToolTipBase, surface);
    palette.setColor(QPalette::ToolTipText, white(0.85));
    for (const QPalette::ColorRole role :
         {QPalette::WindowText, QPalette::Text, QPalette::ButtonText}) {
        palette.setColor(QPalette::Disabled, role, white(0.4));
    }
    return palette;
}

void apply() {
#ifndef Q_OS_MACOS
    QApplication::setStyle(new DesignStyle);
#endif
#if QT_VERSION >= QT_VERSION_CHECK(6, 8, 0)
    // For what the system draws: title bars and native menus.
    QGuiApplication::styleHints()->setColorScheme(Qt::ColorScheme::Dark);
#endif
    QApplication::setPalette(darkPalette());
    QToolTip::setPalette(darkPalette());
}

QString menuBarStyleSheet() {
    return QStringLiteral(R"(
QMenuBar { background: transparent; color: rgba(255, 255, 255, 0.72); padding: 2px 14px; }
QMenuBar::item { background: transparent; padding: 4px 8px; border-radius: 5px; }
QMenuBar::item:selected { background: rgba(255, 255, 255, 0.10); color: white; }
QMenu { background: %1; color: white; padding: 5px;
        border: 1px solid rgba(255, 255, 255, 0.14); }
QMenu::item { padding: 5px 24px 5px 12px; border-radius: 5px; }
QMenu::item:selected { background: %2; }
QMenu::item:disabled { color: rgba(255, 255, 255, 0.4); background: transparent; }
QMenu::separator { height: 1px; margin: 5px 8px; background: rgba(255, 255, 255, 0.12); }
)")
        .arg(surface.name(), blue.name());
}

QString scrollBarStyleSheet() {
    return QStringLiteral(R"(
QScrollBar:vertical { background: transparent; width: 8px; margin: 0; border: none; }
QScrollBar::handle:vertical { background: rgba(255, 255, 255, 0.22); border-radius: 3px;
                              margin: 1px; min-height: 28px; }
QScrollBar::handle:vertical:hover { background: rgba(255, 255, 255, 0.36); }
QScrollBar::add-line:vertical, QScrollBar::sub-line:vertical { height: 0; border: none; }
QScrollBar::add-page:vertical, QScrollBar::sub-page:vertical { background: transparent; }
)");
}

}  // namespace tavrel::theme

#include "ui/controls/PlainButton.h"

#include <QPainter>

#include "ui/paint/Layer.h"
#include "ui/paint/Theme.h"

namespace tavrel {
namespace {

constexpr double restingFill = 0.08;
constexpr double hoveredFill = 0.13;

}  // namespace

double PlainButton::fillOpacity() const {
    return isHovered() ? hoveredFill : restingFill;
}

void PlainButton::paintEvent(QPaintEvent*) {
    QPainter painter(this);
    painter.setRenderHint(QPainter::Antialiasing);
    if (isEnabled()) {
        paintFace(painter, face());
    } else {
        paintLayer(painter, face(), theme::disabledOpacity,
                   [this](QPainter& layer) { paintFace(layer, face()); });
    }
    paintFocusRing(painter);
}

}  // namespace tavrel

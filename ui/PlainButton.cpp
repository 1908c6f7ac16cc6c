#include "ui/PlainButton.h"

#include <QPainter>

#include "ui/Layer.h"
#include "ui/Theme.h"

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
